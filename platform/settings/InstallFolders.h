#ifndef VORNIC_PLATFORM_SETTINGS_INSTALL_FOLDERS_H
#define VORNIC_PLATFORM_SETTINGS_INSTALL_FOLDERS_H

#include <string>
#include <vector>

namespace vornic::platform {

/// A kind of file that an install has a folder for, in the words of the GNU coding standards.
enum class InstallFolder {
    /// BINDIR: programs that users start.
    programs,
    /// LIBEXECDIR/vornic: programs that only other programs start.
    helpers,
    /// LIBDIR/vornic: the application bundle.
    libraries,
    /// DATADIR/vornic: data files.
    data
};

/// Where the install that the running program belongs to has such files, best first: below the
/// folder that the program's own leads to when the folders lie as the build was told, so that an
/// install can be moved; at the absolute place when the build was told one. For a program that
/// stands in neither of the folders for programs, below the folder above its own and the one above
/// that. Nothing is said about whether the folders exist. Never empty; any thread.
[[nodiscard]] std::vector<std::string> installFolders(InstallFolder kind);

/// The same for a program in a folder, which is an absolute path without a slash at its end.
[[nodiscard]] std::vector<std::string> installFoldersFor(const std::string& programFolder,
                                                         InstallFolder kind);

}  // namespace vornic::platform

#endif
