#ifndef VORNIC_PLATFORM_ARCHIVED_LINKS_H
#define VORNIC_PLATFORM_ARCHIVED_LINKS_H

#include <map>
#include <optional>
#include <string>
#include <string_view>

/// What an archive may ask for without leaving the folder that it is extracted into. Looks at no
/// disk; any thread.
namespace vornic::platform {

/// The name of an entry as a path below the folder, without "." and superfluous slashes; "" for the
/// folder itself. Nothing when the name is absolute or has a "..".
[[nodiscard]] std::optional<std::string> nameInsideFolder(std::string_view name);

/// The links of an archive: their paths below the folder, as `nameInsideFolder` gives them, and
/// their targets.
using ArchivedLinks = std::map<std::string, std::string>;

/// Finds a link that leads out of the folder, by itself or through other links of the archive.
/// @return its path; nothing when all stay inside.
[[nodiscard]] std::optional<std::string> linkOutOfFolder(const ArchivedLinks& links);

}  // namespace vornic::platform

#endif
