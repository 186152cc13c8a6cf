#ifndef VORNIC_PLATFORM_FILES_FILE_SYSTEM_H
#define VORNIC_PLATFORM_FILES_FILE_SYSTEM_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/ErrnoOr.h"
#include "base/Error.h"

/// Plain operations on files. Paths are byte strings as the system gives them (no encoding is
/// assumed; a NUL byte inside one makes every operation fail). Each operation may be called from
/// any thread and fills the error slot, which it never clears, when it fails.
namespace vornic::platform {

/// Which file a path leads to, whatever its name: two paths with equal identities are one file.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// True when a file, folder or other node exists at the end of the path, links followed. A dangling
/// link counts as nothing.
[[nodiscard]] bool fileExists(const std::string& path);

/// True when anything stands at the path itself, a dangling link included.
[[nodiscard]] bool nodeExists(const std::string& path);

/// True when the path, links followed, is a folder.
[[nodiscard]] bool isDirectory(const std::string& path);

/// True when the path, links followed, is an executable file that this process may run. A folder is
/// not one, whatever its mode, nor is a bundle.
[[nodiscard]] bool isExecutableFile(const std::string& path);

/// Follows the links at the end of a path, a dangling one included, to the path of what is no link.
/// @return the errno value when the links lead in a circle or cannot be read.
[[nodiscard]] ErrnoOr<std::string> resolveFinalLink(std::string path);

/// The identity of what stands at the path itself (a link is not followed), or nothing.
[[nodiscard]] std::optional<FileIdentity> fileIdentity(const std::string& path);

/// The names in a folder (links followed), without "." and "..", sorted byte for byte.
/// @return nothing when it is no folder or cannot be read, with the slot filled.
[[nodiscard]] std::optional<std::vector<std::string>> namesInFolder(const std::string& path,
                                                                    ErrorSlot& error);

/// The current working directory, or "" when it has been removed.
[[nodiscard]] std::string currentDirectory();

/// The path as it is when it is absolute, else from the working folder, so that no tool takes it
/// for an option and it means the same wherever it is used.
/// @return nothing for "", and for a relative path when the working folder has been removed.
[[nodiscard]] std::optional<std::string> absolutePath(const std::string& path);

/// The whole contents of a regular file, links followed. Anything but a regular file (folder, pipe,
/// device) is refused without opening it for reading, so the call never hangs.
/// @return nothing on failure, with the slot filled.
[[nodiscard]] std::optional<std::string> readFile(const std::string& path, ErrorSlot& error);

/// Copies a regular file (links followed) to a path at which nothing may exist, not even a dangling
/// link. Mode, access and modification times (nanoseconds), extended attributes and, when
/// permitted, the owner are carried over; an owner or attribute that cannot be kept is no failure.
/// The data are copied inside the kernel where it can. A copy that fails leaves nothing at the
/// destination.
[[nodiscard]] bool copyFile(const std::string& source, const std::string& destination,
                            ErrorSlot& error);

/// Renames within a volume; across volumes a verified copy (data read back and compared, metadata
/// as `copyFile`, a link as a link, a folder with everything in it) followed by removal of the
/// source. Fails when anything exists at the destination, which is never replaced and never seen in
/// part. After a failure a file is still in its place and only there; of a folder whose removal
/// failed half-way after its copy, the complete copy stays too.
[[nodiscard]] bool moveFile(const std::string& source, const std::string& destination,
                            ErrorSlot& error);

/// Removes a file or link (not a folder).
[[nodiscard]] bool removeFile(const std::string& path, ErrorSlot& error);

/// Copies a file, a link (as a link), a named pipe, or a folder with everything in it, to a path at
/// which nothing may exist. Metadata as `copyFile`. A folder into which another volume is mounted,
/// and a folder that would go into itself, are refused. A copy that fails leaves nothing at the
/// destination.
[[nodiscard]] bool copyItem(const std::string& source, const std::string& destination,
                            ErrorSlot& error);

/// Removes a file, a link, or a folder with everything in it. No link is followed and nothing on
/// another volume that is mounted in the folder is touched. A failure in a folder leaves what was
/// not yet removed.
[[nodiscard]] bool removeItem(const std::string& path, ErrorSlot& error);

/// Makes a folder with all folders above it, with the process's usual mode. An existing folder is
/// success.
[[nodiscard]] bool createDirectory(const std::string& path, ErrorSlot& error);

/// Sets the permission bits of a file or folder (links followed); other bits are ignored.
[[nodiscard]] bool setPermissions(const std::string& path, unsigned long permissions,
                                  ErrorSlot& error);

/// Writes what a file and the entry of its folder hold through to the disk (fsync of both).
[[nodiscard]] bool synchronizeFile(const std::string& path, ErrorSlot& error);

}  // namespace vornic::platform

#endif
