#ifndef VORNIC_FOUNDATION_PLACES_QM_LOCAL_PATHS_H
#define VORNIC_FOUNDATION_PLACES_QM_LOCAL_PATHS_H

#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/settings/Directories.h"

namespace vornic {

/// Where the standard folders of the user and of the machine lie, names for temporary files, and
/// the guard against touching system folders. Class-level operations without state: every call asks
/// the platform again. Paths are absolute and have no trailing slash; the folders need not exist.
/// An operation whose folder the platform does not know yields nothing. Nothing fails loudly,
/// nothing is logged. Any thread, as long as none changes the environment meanwhile.
class QMLocalPaths {
  public:
    using Path = std::optional<std::string>;
    using Directory = platform::SearchPathDirectory;
    using Domain = platform::SearchPathDomain;

    /// The first folder of the platform's list for that kind and domain. For the super-user (real
    /// user id 0) a user folder below "/var/root" or "/private/var/root", two spellings of root's
    /// home, is moved below `userDirectory`.
    [[nodiscard]] static Path pathForDirectory(Directory directory, Domain forUserDomain);

    /// Folders of the user when `userDomain` is true, of the machine when it is false.
    [[nodiscard]] static Path applicationDirectory(bool userDomain);
    [[nodiscard]] static Path adminApplicationDirectory(bool userDomain);
    [[nodiscard]] static Path documentDirectory(bool userDomain);
    [[nodiscard]] static Path libraryDirectory(bool userDomain);
    /// "Preferences" in the Library.
    [[nodiscard]] static Path prefsDirectory(bool userDomain);
    [[nodiscard]] static Path cacheDirectory(bool userDomain);
    [[nodiscard]] static Path appSupportDirectory(bool userDomain);
    /// "Logs" in the Library.
    [[nodiscard]] static Path logDirectory(bool userDomain);
    /// Folders of the user.
    [[nodiscard]] static Path movieDirectory();
    [[nodiscard]] static Path desktopDirectory();
    /// The operating system's own Library.
    [[nodiscard]] static Path systemLibraryDirectory();
    /// The machine's documentation.
    [[nodiscard]] static Path localDocumentationDirectory();

    /// The user's home folder.
    [[nodiscard]] static Path userDirectory();
    /// The login name.
    [[nodiscard]] static std::string username();
    /// ".Trash" in the home folder.
    [[nodiscard]] static Path trashDirectory();
    /// The per-user temporary folder.
    [[nodiscard]] static std::string tempDirectory();
    /// The per-user cache folder of the system.
    [[nodiscard]] static Path darwinCacheDirectory();

    /// A fresh path in the temporary folder; nothing is made there.
    [[nodiscard]] static std::string tempFile();
    /// A globally unique string, a new one on every call.
    [[nodiscard]] static std::string uuid();
    /// Characters drawn from the lower-case letters and the digits with `rand`, which is seeded
    /// anew on every call from the time in seconds and the processor time used: not unpredictable,
    /// and a disturbance to any other user of `rand`.
    [[nodiscard]] static std::string randomString(std::size_t length);

    /// The path with a "/" at its end; the empty string stays empty.
    [[nodiscard]] static std::string ensureTrailingSlash(std::string_view path);
    /// The path without one "/" at its end; "/" stays.
    [[nodiscard]] static std::string stripTrailingSlash(std::string_view path);
    /// The same for a path that may be nothing, and then stays nothing.
    template <std::same_as<Path> P>
    [[nodiscard]] static Path ensureTrailingSlash(const P& path) {
        return path ? Path(ensureTrailingSlash(std::string_view(*path))) : Path();
    }
    template <std::same_as<Path> P>
    [[nodiscard]] static Path stripTrailingSlash(const P& path) {
        return path ? Path(stripTrailingSlash(std::string_view(*path))) : Path();
    }

    /// Whether a path must never be deleted, moved or overwritten. The standard folders count as
    /// themselves, the operating system's trees (/usr but /usr/local, /var, /bin, /sbin, /System)
    /// with everything in them. Nothing is no system folder.
    [[nodiscard]] static bool isPathSystemDirectory(std::optional<std::string_view> path);
    /// @param exactMatch compare the path with the folders alone, not with what lies in them
    [[nodiscard]] static bool isPathSystemDirectory(std::optional<std::string_view> path,
                                                    bool exactMatch);
    /// True for a path below "/Volumes/" that has a component "Backups.backupdb".
    [[nodiscard]] static bool isPathOnTimeMachineVolume(std::optional<std::string_view> path);
};

}  // namespace vornic

#endif
