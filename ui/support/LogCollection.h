#ifndef VORNIC_UI_SUPPORT_LOG_COLLECTION_H
#define VORNIC_UI_SUPPORT_LOG_COLLECTION_H

#include <cstddef>
#include <string>
#include <vector>

namespace vornic {

/// Copies of what belongs to some applications, in a folder that mirrors where each file came from:
/// a copy stands below the folder under the full path of its original. One thread.
class LogCollection {
  public:
    using Names = std::vector<std::string>;
    using Paths = std::vector<std::string>;

    /// @param folder where the copies go; it exists and is the collection's own
    /// @param appNames the names that files are taken for; an empty one stands for no application
    LogCollection(std::string folder, Names appNames);

    /// Adds the logs, crash reports and preference files of the applications, the user's and then
    /// the machine's. A link is replaced by what it leads to, unless it dangles. A folder that
    /// cannot be read counts as empty.
    /// @return false, reported on the console, at the first file that cannot be copied.
    [[nodiscard]] bool addLogs();
    /// Adds files or folders, each as it is, a link as a link. What has been copied already is a
    /// failure. @return false, reported on the console, at the first one that cannot be copied.
    [[nodiscard]] bool addFiles(const Paths& paths);

    /// How many files and folders have been added.
    [[nodiscard]] std::size_t count() const { return count_; }

  private:
    [[nodiscard]] bool addLogsOfDomain(bool userDomain);
    [[nodiscard]] bool addMatches(const std::string& folder,
                                  bool (*matches)(const std::string& entry,
                                                  const std::string& appName));
    [[nodiscard]] bool addPreferences(const std::string& folder);
    [[nodiscard]] bool addLog(const std::string& path);
    [[nodiscard]] bool addFile(const std::string& path);
    [[nodiscard]] std::string placeOf(const std::string& path) const;

    std::string folder_;
    Names appNames_;
    std::size_t count_ = 0;
};

}  // namespace vornic

#endif
