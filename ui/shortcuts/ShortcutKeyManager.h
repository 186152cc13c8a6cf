#ifndef VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_MANAGER_H
#define VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_MANAGER_H

#include <chrono>
#include <optional>
#include <string>

namespace vornic {

/// The shortcut key manager, a program of its own that waits for the keys of the watch list and
/// tells the applications. Any thread.
class ShortcutKeyManager {
  public:
    /// How long a run is waited for.
    static constexpr std::chrono::seconds kTimeLimit{10};

    /// Where it is installed, whether it is there or not; nothing when the user has no folder for
    /// the support files of applications.
    [[nodiscard]] static std::optional<std::string> path();
    /// True when it is there and can be run.
    [[nodiscard]] static bool exists();
    /// Has it load the watch list: runs it with "-setup" on threads of their own and returns at
    /// once. A run that takes longer than the limit is reported in the log and left to itself,
    /// since nothing ends it. The end of this program waits a moment for a run that has just begun.
    /// A manager that is missing is reported on the console.
    static void setup();
    static void setup(std::chrono::milliseconds limit);
};

}  // namespace vornic

#endif
