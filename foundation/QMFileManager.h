#ifndef VORNIC_FOUNDATION_QM_FILE_MANAGER_H
#define VORNIC_FOUNDATION_QM_FILE_MANAGER_H

#include <memory>
#include <optional>
#include <string>

#include "foundation/ChecksumDelegate.h"
#include "platform/Digest.h"
#include "platform/PropertyList.h"

namespace vornic {

/// The library's operations on files. Class-level, without state; any thread. Paths are byte
/// strings as the system gives them; nothing raises to the caller: a failure is a false or missing
/// result and, where it is said, a line in the log.
class QMFileManager {
  public:
    using Path = std::optional<std::string>;
    using Dictionary = platform::PropertyList::Dictionary;
    using Checksum = std::optional<std::string>;

    QMFileManager() = delete;

    // Checksums: lower-case hexadecimal, two characters a byte.

    /// The checksum of what the context has been fed so far; the caller's own can be fed on.
    /// @return nothing when the context is of another kind, or the digest failed.
    [[nodiscard]] static Checksum md5HashWithContext(platform::Digest context);
    [[nodiscard]] static Checksum sha1HashWithContext(platform::Digest context);
    [[nodiscard]] static Checksum sha256HashWithContext(platform::Digest context);
    [[nodiscard]] static Checksum sha512HashWithContext(platform::Digest context);

    /// The checksum of a file's contents, links followed, read in blocks of 64 KiB on the calling
    /// thread. Anything but a regular file cannot be opened; that is told on the console, a fault
    /// while reading in the log and on standard output.
    /// @param delegate is asked after each 50 MiB whether to go on; null: nobody is
    /// @return nothing on failure or when the delegate cancelled.
    [[nodiscard]] static Checksum md5HashForFile(const std::string& path);
    [[nodiscard]] static Checksum md5HashForFile(const std::string& path,
                                                 const std::shared_ptr<ChecksumDelegate>& delegate);
    [[nodiscard]] static Checksum sha1HashForFile(const std::string& path);
    [[nodiscard]] static Checksum sha1HashForFile(
        const std::string& path, const std::shared_ptr<ChecksumDelegate>& delegate);
    [[nodiscard]] static Checksum sha512HashForFile(const std::string& path);
    [[nodiscard]] static Checksum sha512HashForFile(
        const std::string& path, const std::shared_ptr<ChecksumDelegate>& delegate);

    // Volumes. Paths are compared as text: links in them are not followed.

    /// False when the path lies below a folder of "/Volumes" that does not exist, where only a
    /// volume that is not mounted can have been. `isVolumeMountedForPath` asks the same of every
    /// path that begins with the letters "/Volumes".
    [[nodiscard]] static bool isDriveMountedForPath(const std::string& path);
    [[nodiscard]] static bool isVolumeMountedForPath(const std::string& path);
    /// The mount point of the volume that the path lies on.
    /// @return "/" when that is the system's own; nothing when it is, and the path begins with
    ///     "/Volumes".
    [[nodiscard]] static Path volumeMountPointForPath(const std::string& path);
    /// What is known about the volume at a mount point: "VolumeName", "MountPoint",
    /// "FilesystemType", "DeviceIdentifier" (texts), "TotalSize", "FreeSpace" (bytes) and
    /// "WritableVolume" (a boolean). A volume without a label is called like its mount point's last
    /// component. Blocks for up to 5 seconds while the volume does not answer.
    /// @return nothing when no volume is mounted there, or it does not answer; a volume that
    ///     answers with an error is logged too.
    [[nodiscard]] static std::optional<Dictionary> infoForDiskAtMountpoint(
        const std::string& mountPoint);
    /// The type of the file system that the path lies on ("ext4", "apfs"); nothing when the path
    /// lies on no volume.
    [[nodiscard]] static std::optional<std::string> filesystemForPath(const std::string& path);
    /// Whether that is one of Apple's: "hfs", "hfs+" or "apfs", in any case.
    [[nodiscard]] static bool isMacFilesystemAtPath(const std::string& path);
};

}  // namespace vornic

#endif
