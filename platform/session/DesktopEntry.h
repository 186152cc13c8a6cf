#ifndef VORNIC_PLATFORM_SESSION_DESKTOP_ENTRY_H
#define VORNIC_PLATFORM_SESSION_DESKTOP_ENTRY_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Desktop entries (freedesktop, version 1.5): how installed applications are
/// started. Any thread.
namespace vornic::platform {

struct DesktopEntry {
    /// The entry's file.
    std::string path;
    std::string name;
    std::string icon;
    /// The value of "Exec" with the escapes of string values resolved.
    std::string exec;
};

/// The application's entry from the text of its file; nothing when it is no application, is marked
/// as hidden or has no "Exec". Names of other languages are passed over.
[[nodiscard]] std::optional<DesktopEntry> parseDesktopEntry(std::string_view text,
                                                            const std::string& path);

/// The entry `<identifier>.desktop` of the first folder for shared data that has one. A first one
/// that `parseDesktopEntry` refuses hides those behind it.
[[nodiscard]] std::optional<DesktopEntry> findDesktopEntry(const std::string& identifier);

/// The command lines that open files: one, or one for each file when the entry takes a single file.
/// Files are appended where the entry has no place for them. Empty when "Exec" is malformed.
/// @param files absolute paths
[[nodiscard]] std::vector<std::vector<std::string>> commandLines(
    const DesktopEntry& entry, const std::vector<std::string>& files);

/// The "file:" address of an absolute path; bytes other than unreserved ASCII and "/" are escaped.
[[nodiscard]] std::string fileURL(std::string_view path);

}  // namespace vornic::platform

#endif
