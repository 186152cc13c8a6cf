#ifndef VORNIC_PLATFORM_ARCHIVES_ARCHIVED_LINKS_H
#define VORNIC_PLATFORM_ARCHIVES_ARCHIVED_LINKS_H

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

/// What an archive may ask for without leaving the folder that it is extracted into. Looks at no
/// disk; any thread.
namespace vornic::platform {

/// The name of an entry as a path below the folder, without "." and superfluous slashes; "" for the
/// folder itself. Nothing when the name is absolute or has a "..".
[[nodiscard]] std::optional<std::string> nameInsideFolder(std::string_view name);

/// How many components a path below the folder has.
[[nodiscard]] std::size_t depthOf(std::string_view name);

/// The links of an archive: their paths below the folder, as `nameInsideFolder` gives them, and
/// their targets.
using ArchivedLinks = std::map<std::string, std::string>;

/// Finds an entry that another entry, a link, stands above, so that it would be made where the link
/// leads.
/// @param names of all entries, links among them, as `nameInsideFolder` gives them
/// @return its path; nothing when there is none.
[[nodiscard]] std::optional<std::string> entryBelowLink(const std::set<std::string>& names,
                                                        const ArchivedLinks& links);

/// Finds a link that leads out of the folder, by itself or through other links of the archive. No
/// link stands above another (`entryBelowLink`). Takes time in proportion to the length of all
/// paths and targets.
/// @return its path; nothing when all stay inside.
[[nodiscard]] std::optional<std::string> linkOutOfFolder(const ArchivedLinks& links);

}  // namespace vornic::platform

#endif
