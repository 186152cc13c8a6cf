#ifndef VORNIC_DESKTOP_RECENT_FILES_H
#define VORNIC_DESKTOP_RECENT_FILES_H

#include <string>
#include <vector>

namespace vornic {

/// The files that were opened last, the latest first, in the user's preferences under
/// "recentFiles". A path that is no text is not remembered. Main thread.
class RecentFiles {
  public:
    static constexpr std::size_t kMost = 10;

    /// Those that are still there.
    [[nodiscard]] static std::vector<std::string> paths();
    static void add(const std::string& path);
    static void clear();
};

}  // namespace vornic

#endif
