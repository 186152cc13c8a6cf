#ifndef VORNIC_PLATFORM_SESSION_MIME_DATABASE_H
#define VORNIC_PLATFORM_SESSION_MIME_DATABASE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The types of files by their extensions, from the shared MIME database of the desktop (the
/// `mime/globs2` files in the shared data folders, freedesktop shared-mime-info). Any thread.
namespace vornic::platform {

/// The MIME type that the machine's database prefers for files with an extension, given without its
/// dot. Nothing is cached. @return nothing when no type is known.
[[nodiscard]] std::optional<std::string> mimeTypeForExtension(std::string_view extension);

/// The same from the texts of globs2 files, most important first. Patterns that begin with "*." are
/// looked at. An extension as it is written counts before one in another case; then the heavier
/// pattern does, then the longer one, then the one that comes first.
[[nodiscard]] std::optional<std::string> mimeTypeInGlobs(const std::vector<std::string>& texts,
                                                         std::string_view extension);

}  // namespace vornic::platform

#endif
