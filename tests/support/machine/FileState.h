#ifndef VORNIC_TESTS_SUPPORT_MACHINE_FILE_STATE_H
#define VORNIC_TESTS_SUPPORT_MACHINE_FILE_STATE_H

#include <iosfwd>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace vornic::test {

/// Everything about a file that a program must keep.
struct FileState {
    std::string bytes;
    /// Kind and permission bits.
    mode_t mode = 0;
    uid_t owner = 0;
    gid_t group = 0;
    /// The extended attributes of the user's name space.
    std::map<std::string, std::string> attributes;
    friend bool operator==(const FileState&, const FileState&) = default;
};

std::ostream& operator<<(std::ostream& stream, const FileState& state);

/// The state of what stands at the path: of a link itself, with its target as the bytes. A failure
/// fails the running test.
[[nodiscard]] FileState fileState(const std::string& path);

/// The names in a folder, sorted byte for byte; none when there is no such folder.
[[nodiscard]] std::vector<std::string> namesIn(const std::string& folder);

/// Removes the Trash of a home folder, the desktop's with it.
void removeTrash(const std::string& home);

/// Writes a file. A failure fails the running test.
void writeBytes(const std::string& path, std::string_view bytes);

/// Sets an extended attribute. @return false when the volume has none.
[[nodiscard]] bool setAttribute(const std::string& path, const std::string& name,
                                const std::string& value);

/// The type and creator codes that every written XMEML file carries, as the attribute's value.
[[nodiscard]] std::string xmemlFinderInfo();

inline constexpr const char* kFinderInfo = "user.com.apple.FinderInfo";

}  // namespace vornic::test

#endif
