#ifndef VORNIC_PLATFORM_SETTINGS_DIRECTORIES_H
#define VORNIC_PLATFORM_SETTINGS_DIRECTORIES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Where the standard folders of this platform lie. Nothing is cached: every call looks at the
/// environment again. The folders need not exist. Any thread, as long as none changes the
/// environment meanwhile.
namespace vornic::platform {

enum class SearchPathDirectory {
    application,
    adminApplication,
    document,
    library,
    caches,
    applicationSupport,
    movies,
    desktop,
    documentation,
};

enum class SearchPathDomain { user, local, system };

/// The folders of a kind in a domain, best first, "~" already expanded; empty when the platform has
/// none. User Documents, Desktop and Movies come from `user-dirs.dirs` (freedesktop xdg-user-dirs),
/// XDG folders from their variables, which count only when absolute (XDG Base Directory).
[[nodiscard]] std::vector<std::string> searchPathForDirectories(SearchPathDirectory directory,
                                                                SearchPathDomain domain);

/// The user's home folder: `HOME` when it is absolute, else the user database's; "" when neither.
[[nodiscard]] std::string homeDirectory();
/// The path with a leading "~" replaced by the user's home folder.
[[nodiscard]] std::string expandingTildeInPath(std::string_view path);
/// The login name of the real user id, or its decimal number when the user database has none.
[[nodiscard]] std::string userName();
/// The per-user temporary folder: `TMPDIR` when absolute, else `XDG_RUNTIME_DIR` when it is a
/// folder of mode 0700 that the user owns, else such a folder below /tmp (made when missing; one
/// that is a link, another's or open to others is refused and a fresh one is made for the process).
[[nodiscard]] std::string temporaryDirectory();
/// The system's cache folder of the user: `XDG_CACHE_HOME`, else `.cache` in the home folder;
/// nothing without a home folder.
[[nodiscard]] std::optional<std::string> userCacheDirectory();
/// Where the user's programs keep their data: `XDG_DATA_HOME`, else `.local/share` in the home
/// folder; nothing without a home folder.
[[nodiscard]] std::optional<std::string> userDataDirectory();
/// The folders in which programs look for shared data, most important first: `XDG_DATA_HOME` or
/// `.local/share` in the home folder, then the absolute ones of `XDG_DATA_DIRS`, or else
/// /usr/local/share and /usr/share.
[[nodiscard]] std::vector<std::string> sharedDataDirectories();
/// The real user id of the process; 0 is the super-user.
[[nodiscard]] unsigned realUserId();

}  // namespace vornic::platform

#endif
