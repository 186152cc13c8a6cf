#ifndef VORNIC_FOUNDATION_FILES_QM_FILE_MANAGER_H
#define VORNIC_FOUNDATION_FILES_QM_FILE_MANAGER_H

#include <any>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/copies/FileCopyDelegate.h"
#include "platform/files/Digest.h"
#include "platform/items/FileDates.h"
#include "platform/settings/PropertyList.h"

namespace vornic {

/// What can be asked while a file's checksum is computed. An operation that is left empty is never
/// called. Set them before the checksum is begun; they are called on background threads and must
/// not throw.
struct ChecksumDelegate {
    /// Asked with the file's path each time that another 50 MiB have been read, while the reading
    /// goes on; the answer false ends it a few blocks later.
    std::function<bool(const std::string& path)> checksumShouldContinue;
};

/// A calibrated colour; each part lies between 0 and 1.
struct FinderColor {
    double hue = 0;
    double saturation = 0;
    double brightness = 0;
    double alpha = 1.0;
    friend bool operator==(const FinderColor&, const FinderColor&) = default;
};

/// The library's operations on files. Class-level, without state; any thread. Paths are byte
/// strings as the system gives them; nothing raises to the caller: a failure is a false or missing
/// result and, where it is said, a line in the log. Nothing is rolled back after a failure in the
/// middle.
///
/// Changes come in three forms. The plain one is `shouldAuth` true: what the process's own rights
/// do not allow is tried again with administrator rights (`QMAuthorization`), for which the user
/// may be asked. The form with a timeout calls the plain one and then waits until the change can be
/// seen: on the main thread it dispatches one pending event a round, elsewhere it sleeps 0.3 s. Its
/// result is whether the change was seen within that time. Folders and files that belong to the
/// system are never removed, trashed or moved (`isGuardedSystemPath`), nor replaced
/// (`leadsToProtectedPath`).
class QMFileManager {
  public:
    using Path = std::optional<std::string>;
    using Paths = std::vector<std::string>;
    using Dictionary = platform::PropertyList::Dictionary;
    using Checksum = std::optional<std::string>;
    using Date = platform::FileDate;

    QMFileManager() = delete;

    // Existence and kind.

    /// True when anything exists at the path. A link counts as its target: a dangling one is
    /// nothing, here and wherever an operation asks whether something exists.
    [[nodiscard]] static bool fileExistsAtPath(const std::string& path);
    /// True for folders, packages too, and links to them.
    [[nodiscard]] static bool isDirectoryAtPath(const std::string& path);
    /// True for a folder that is shown to users as one file.
    [[nodiscard]] static bool isPackageAtPath(const std::string& path);
    /// True for a link, a dangling one too.
    [[nodiscard]] static bool isSymbolicLinkAtPath(const std::string& path);
    /// Dates of the item itself, a link is not followed. The creation date is the one that was
    /// chosen for the item, else the true one. Nothing without an item, and without a chosen date
    /// also where the volume does not keep the true one.
    [[nodiscard]] static std::optional<Date> modificationDateForFile(const std::string& path);
    [[nodiscard]] static std::optional<Date> creationDateForFile(const std::string& path);

    // Trash.

    /// Unlocks the item and moves it to the user's Trash under a free name. True when nothing
    /// exists there. Failures are not logged.
    static bool trashFile(const std::string& path);
    static bool trashFile(const std::string& path, bool shouldAuth);
    static bool trashFile(const std::string& path, std::chrono::seconds timeout);
    /// `trashFile` for each entry of a folder. All are tried; true when none failed, hence also for
    /// a folder that is empty or cannot be read. False for a folder of the system.
    static bool trashDirectoryContents(const std::string& path);
    static bool trashDirectoryContents(const std::string& path, bool shouldAuth);
    /// Trashes the files in a folder and in the folders below it whose extension is `type`, letters
    /// compared without their case. Folders are looked into and never trashed; links to folders are
    /// left alone.
    /// @return the paths, in the order of the listings, also of those that could not be trashed
    static Paths trashFilesOfType(const std::string& type, const std::string& inFolder);
    /// The same for the files of exactly that name.
    static Paths trashFilesNamed(const std::string& name, const std::string& inFolder);

    // Remove.

    /// Unlocks the item and removes it, a folder with everything in it, a link as a link. True when
    /// nothing exists there. A failure is logged, as followed by authorization in both forms.
    static bool removeFile(const std::string& path);
    static bool removeFile(const std::string& path, bool shouldAuth);
    static bool removeFile(const std::string& path, std::chrono::seconds timeout);
    /// True for a folder that holds nothing but ".DS_Store", "Icon\r" and folders that are empty in
    /// the same sense, and for one that cannot be read. A link to a folder is no empty folder.
    [[nodiscard]] static bool isFolderEmpty(const std::string& path);
    /// `removeFile` for a folder that is empty in that sense; else false.
    static bool removeFolderIfEmpty(const std::string& path);

    // Create.

    /// Makes a folder with all folders above it; one that exists is success. A path on a volume
    /// that is not mounted is refused with a line on the console; another failure is logged.
    static bool createDirectory(const std::string& path);
    static bool createDirectory(const std::string& path, bool shouldAuth);
    static bool createDirectory(const std::string& path, std::chrono::seconds timeout);
    /// Makes, below `destination`, the folders of the path, without its last component unless it is
    /// a folder and no package.
    /// @return the path of the last folder, made or not
    static std::string createDirectoryStructure(const std::string& path,
                                                const std::string& destination);
    /// Makes an empty file by way of the temporary folder and `moveFile`.
    static bool createEmptyFile(const std::string& path);

    // Copy and move. Nothing that exists at the destination is replaced by the process's own
    // rights.

    /// Unlocks the destination's folder and copies a file, a link as a link, or a folder with
    /// everything in it. Failures and missing paths are logged, the latter printed too.
    static bool copyFile(const Path& source, const Path& toPath);
    static bool copyFile(const Path& source, const Path& toPath, bool shouldAuth);
    static bool copyFile(const Path& source, const Path& toPath, std::chrono::seconds timeout);
    /// `copyFile` with the timeout for each entry of a folder, up to the first failure. False for a
    /// folder that cannot be read.
    static bool copyContentsOfDirectory(const std::string& source, const std::string& toPath,
                                        std::chrono::seconds timeout);
    /// Moves a file, a link or a folder, to another volume too. A rename that changes only the case
    /// of letters goes by way of a free name, for volumes that take both for one name; its
    /// form with a timeout waits for nothing. Failures are logged.
    static bool moveFile(const std::string& source, const std::string& toPath);
    static bool moveFile(const std::string& source, const std::string& toPath, bool shouldAuth);
    static bool moveFile(const std::string& source, const std::string& toPath,
                         std::chrono::seconds timeout);

    // Archives (zip). What exists at the destination goes to the Trash first; while it cannot,
    // nothing is done.

    /// @param includeParent whether a folder is the archive's top entry or only its contents are
    ///     archived; true in the shorter form
    /// @return whether the archive was made
    static bool compressFile(const std::string& source, const std::string& toDestinationFile);
    static bool compressFile(const std::string& source, const std::string& toDestinationFile,
                             bool includeParent);
    /// An archive that asks for something outside the folder is refused as a whole.
    /// @return whether the folder was made
    static bool decompressFile(const std::string& source, const std::string& toDestinationFolder);

    // Locks and permissions. A locked item has the file system's immutable attribute, which usually
    // only root may set and not every volume knows.

    [[nodiscard]] static bool isFileLocked(const std::string& path);
    /// Locking and unlocking fail with the same line in the log, "Unable to unlock file …".
    /// Unlocking what is not locked is success.
    static bool lockFile(const std::string& path);
    static bool unlockFile(const std::string& path);
    /// `lockFile` and `unlockFile` for whatever is no folder in the folder and the folders below;
    /// the folders themselves are not changed.
    static void lockFolder(const std::string& path);
    static void unlockFolder(const std::string& path);
    /// @param permissions the permission bits, such as 0755. A failure is logged.
    static bool setPosixPermissions(unsigned long permissions, const std::string& forFile);
    /// Does nothing; states an intent.
    static void disableFileSystemCachingForFile(const std::string& path);

    // Sizes.

    /// Bytes of a file, of a link itself, or of everything in a folder but the folders; 0 for what
    /// is missing or cannot be read.
    [[nodiscard]] static std::uint64_t fileSize(const std::string& path);
    /// "1.50 KB": powers of 1024 from B to TB, two decimals but for B.
    [[nodiscard]] static std::string formatFileSize(double size);

    // Names.

    /// The name without one leading ".", white space at its ends, ":" and, when `includeSlashes`
    /// (the shorter form), "/". "" for ".".
    [[nodiscard]] static std::string validateFilename(std::string_view name);
    [[nodiscard]] static std::string validateFilename(std::string_view name, bool includeSlashes);
    /// The path itself when nothing exists there, else the first free one of "Report 2.xml",
    /// "Report 3.xml" and so on.
    [[nodiscard]] static std::string uniqueFilename(const std::string& path);

    // Wildcards. In a component that contains "*" this stands for any run of characters and "?" for
    // one; upper and lower case differ, and hidden files match too.

    /// What exists and matches the pattern, each folder's entries sorted by name; a pattern without
    /// "*" as it stands.
    /// @param fromBasePath the folder that the pattern starts from; without one it starts from "/"
    /// @param searchSubdirs is ignored
    [[nodiscard]] static Paths filesMatchingWildcardPath(const std::string& pattern);
    [[nodiscard]] static Paths filesMatchingWildcardPath(const std::string& pattern,
                                                         const Path& fromBasePath);
    [[nodiscard]] static Paths filesMatchingWildcardPath(const std::string& pattern,
                                                         const Path& fromBasePath,
                                                         bool searchSubdirs);
    /// The first match; without one the base joined with the pattern as it is written.
    [[nodiscard]] static std::string decodeWildcardPath(const std::string& pattern,
                                                        const Path& fromBasePath);

    // Checksums: lower-case hexadecimal, two characters a byte.

    /// The checksum of what the context has been fed so far; the caller's own can be fed on.
    /// @return nothing when the context is of another kind, or the digest failed.
    [[nodiscard]] static Checksum md5HashWithContext(const platform::Digest& context);
    [[nodiscard]] static Checksum sha1HashWithContext(const platform::Digest& context);
    [[nodiscard]] static Checksum sha256HashWithContext(const platform::Digest& context);
    [[nodiscard]] static Checksum sha512HashWithContext(const platform::Digest& context);

    /// The checksum of a file's contents, links followed, read in blocks of 64 KiB on the calling
    /// thread. Anything but a regular file cannot be opened; that is reported on the console, a
    /// fault while reading in the log and on standard output.
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

    // Copies with progress and verification.

    /// Copies a file to one or more files, of which it is read once. Existing destinations are
    /// replaced in place, missing folders above them made. The destinations get the source's owner
    /// (where permitted), extended attributes, mode and times. A destination that is the source
    /// itself, or a link to it, is refused before anything is changed; only regular files are
    /// copied and written. Runs on the calling thread, which should not be the main thread. Faults
    /// are reported on the console.
    /// @param verificationType `kVerifyMD5` and the like: each block is read back from each
    ///     destination after it was written, and the checksums are compared at the end. Any other
    ///     number: the copies are not verified
    /// @param delegate may be null
    /// @param object objects for the settings that the delegate gets; empty: none
    /// @return false when the copy could not be begun, was cancelled, or the source could not be
    ///     read to its end; what was written then stays. A destination that could not be written
    ///     whole is told by the console and the verification alone.
    static bool copyFileWithProgress(const std::string& source,
                                     const std::vector<std::string>& destinations,
                                     std::int32_t verificationType,
                                     const std::shared_ptr<FileCopyDelegate>& delegate,
                                     std::any object, std::any object2);
    /// The same with one destination and without verification.
    static bool copyFileWithProgress(const std::string& source, const std::string& destination,
                                     const std::shared_ptr<FileCopyDelegate>& delegate,
                                     std::any object, std::any object2);
    static bool copyFileWithProgress(const std::string& source, const std::string& destination,
                                     const std::shared_ptr<FileCopyDelegate>& delegate,
                                     std::any object);
    static constexpr std::int32_t kVerifyNothing = 0;
    static constexpr std::int32_t kVerifyMD5 = 1;
    static constexpr std::int32_t kVerifySHA1 = 2;
    static constexpr std::int32_t kVerifySHA256 = 3;
    static constexpr std::int32_t kVerifySHA512 = 4;

    /// Writes the contents of the files one after the other into one file, which is replaced. A
    /// single file is moved there, whatever `deleteSourceFiles` says. Links are followed. A
    /// destination that is one of the sources is refused before anything is changed. Faults are
    /// reported on the console.
    /// @param deleteSourceFiles removes each source once it was written whole
    /// @return false when a file is missing or could not be opened, read or moved.
    static bool combineFiles(const std::vector<std::string>& sources, const Path& destination,
                             bool deleteSourceFiles);

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
    /// last change the creation date. Without the file nothing happens; a failure is not reported.
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
