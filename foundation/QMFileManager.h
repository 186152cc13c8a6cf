#ifndef VORNIC_FOUNDATION_QM_FILE_MANAGER_H
#define VORNIC_FOUNDATION_QM_FILE_MANAGER_H

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/ChecksumDelegate.h"
#include "foundation/FinderColor.h"
#include "platform/Digest.h"
#include "platform/FileDates.h"
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
    using Date = platform::FileDate;

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

    // Extended attributes, on Apple's file systems alone; elsewhere they refuse with a line in the
    // log. Links are followed. An attribute is stored under its name with "user." before it.

    /// The text of an attribute. Each call that gets as far writes the value's size, and an error,
    /// to the console.
    /// @return nothing when the file or the attribute is missing, and for a value that is empty,
    ///     longer than 255 bytes or no UTF-8.
    [[nodiscard]] static std::optional<std::string> metadataValueForKey(const std::string& key,
                                                                        const std::string& file);
    /// @return false, with a line on the console unless the file is missing or refused, when the
    ///     attribute cannot be set.
    static bool setMetadataValue(std::string_view value, const std::string& forKey,
                                 const std::string& file);

    /// Shows a progress bar on a file's icon: the fraction in an attribute, and 1984-01-24 08:00
    /// UTC for its creation date. A negative fraction takes the bar away and makes the date of the
    /// last change the creation date. Without the file nothing happens; a failure is not told.
    static void setFinderProgress(float fraction, const std::string& forFile);
    static void removeFinderProgressForFile(const std::string& path);

    // Colour labels, on every volume with extended attributes: 0 for none, 1 grey, 2 green,
    // 3 purple, 4 blue, 5 yellow, 6 red, 7 orange.

    /// The number of the file's label; 0 when there is none or it cannot be read.
    [[nodiscard]] static int finderColorIndexForPath(const std::string& path);
    /// Does nothing without a path; a number that is no label, and a failure, change nothing.
    static void setFinderColorIndex(int index, const Path& forPath);
    /// The colour of a label; nothing for other numbers than 1 to 7.
    [[nodiscard]] static std::optional<FinderColor> finderColorForColorIndex(int index);
    [[nodiscard]] static std::optional<FinderColor> finderColorForPath(const std::string& path);

    // Time stamps.

    /// Sets the dates of a file to now with "/usr/bin/touch", which makes no missing file; one that
    /// the user may not write is touched with administrator rights, which may ask the user. Then
    /// the desktop is told. Without a path nothing happens.
    /// @param setCreationDate make now the creation date too, where that can be done without rights
    /// @return whether the tool was run; not whether it succeeded, nor whether the creation date
    ///     could be set.
    static bool touchFile(const Path& path);
    static bool touchFile(const Path& path, bool setCreationDate);
    static bool setModificationDate(Date date, const std::string& forFile);

    // Waiting for other programs. These block the calling thread without dispatching its events;
    // keep them off the main thread.

    /// Looks once: when the file is missing or empty, that is logged, and half a millisecond later
    /// the call returns, whatever the time limit.
    static void waitForFileCreation(const std::string& path, std::chrono::seconds timeout);
    /// Returns when the file has not been changed for 5 seconds; waits without a limit for a file
    /// that goes on changing. What is waited for is logged. A missing file is not waited for.
    /// @param lockFile a file whose existence, looked at once, means that the other one is being
    ///     written
    static void waitForFileWrites(const std::string& path);
    static void waitForFileWrites(const std::string& path, const Path& lockFile);
    /// Always false.
    [[nodiscard]] static bool fileIsOpenForWriting(const std::string& path);

    // Types and the desktop.

    /// The MIME type of a file by its extension alone; nothing when the file is missing.
    [[nodiscard]] static std::optional<std::string> mimeTypeForFileAtPath(const std::string& path);
    /// @param extension without its dot, in any case
    /// @return "application/octet-stream" when no type is known.
    [[nodiscard]] static std::string mimeTypeForFileExtension(std::string_view extension);
    /// Tells the desktop that something has changed at the path; nothing: anywhere.
    static void notifyFileSystemChanged(const Path& path);
    /// Makes an application bundle known to the desktop. Nothing has to be done for that here.
    /// @return true when there is an application bundle with an identifier at the path.
    static bool registerApplicationWithLaunchServices(const std::string& path);
};

}  // namespace vornic

#endif
