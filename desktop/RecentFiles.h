#ifndef VORNIC_DESKTOP_RECENT_FILES_H
#define VORNIC_DESKTOP_RECENT_FILES_H

#include <QObject>
#include <QString>
#include <functional>
#include <string>
#include <vector>

namespace vornic {

/// The files that were opened last, the latest first, in the user's preferences under
/// "recentFiles". A path that is no text is not remembered. Main thread.
class RecentFiles {
  public:
    static constexpr std::size_t kMost = 10;

    /// Those that are not known to have gone. No file is looked at: one on a server that does not
    /// answer would hold up the windows.
    [[nodiscard]] static std::vector<std::string> paths();
    /// Looks at each of them on a thread of its own and returns at once. What is never answered is
    /// taken to be there.
    /// @param owner nothing is called after its end.
    /// @param changed called for each answer that changes what `paths` returns.
    static void look(QObject& owner, const std::function<void()>& changed);
    static void add(const std::string& path);
    /// Keeps how the last run, or what a window did last, ended with a file on the list.
    static void setOutcome(const std::string& path, const std::string& outcome);
    /// The folder of a file and its last outcome, on one line.
    [[nodiscard]] static QString about(const std::string& path);
    static void forget(const std::string& path);
    static void clear();
};

}  // namespace vornic

#endif
