#ifndef VORNIC_PLATFORM_RIGHTS_HELD_PATH_H
#define VORNIC_PLATFORM_RIGHTS_HELD_PATH_H

#include <optional>
#include <string>
#include <string_view>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

/// An entry of a folder that is held open: whatever is renamed or linked anew above it, the folder
/// stays the one that was looked at.
struct HeldPath {
    FileDescriptor folder;
    /// Where the folder lies, links resolved.
    std::string folderPath;
    /// The entry itself, which may be a link, whether or not the path ended in a slash.
    std::string name;

    /// The path of the entry as it was when it was taken hold of.
    [[nodiscard]] std::string path() const;
};

/// Takes hold of the folder of an absolute path's last component. Needs no right but to reach it.
/// @return nothing when it cannot be reached, or the last component is none ("/", ".", "..").
[[nodiscard]] std::optional<HeldPath> holdPath(const std::string& path);

/// What somebody saw at one end of a path.
struct SeenNode {
    enum class State { unknown, missing, there };
    State state = State::unknown;
    /// Of what is there.
    FileIdentity identity;
    friend bool operator==(const SeenNode&, const SeenNode&) = default;
};

/// What stood at a path when it was looked at: the folder of its last component, links followed,
/// and the entry itself, no link followed. What could not be looked at is unknown.
struct SeenPath {
    SeenNode folder;
    SeenNode item;
    friend bool operator==(const SeenPath&, const SeenPath&) = default;
};

/// Looks at an absolute path. Any thread.
[[nodiscard]] SeenPath lookAtPath(const std::string& path);

/// Looks at the nearest folder of a path that exists, the path itself among them, as the `folder`
/// of the result. Any thread.
[[nodiscard]] SeenPath lookAtNearestFolder(const std::string& path);

/// "?" for what is unknown, "-" for what is missing, else two numbers; folder and item separated by
/// a blank.
[[nodiscard]] std::string describe(const SeenPath& seen);
[[nodiscard]] std::optional<SeenPath> seenPathFrom(std::string_view text);

}  // namespace vornic::platform

#endif
