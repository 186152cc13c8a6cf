#ifndef VORNIC_FORMATS_XMEML_VERSION_H
#define VORNIC_FORMATS_XMEML_VERSION_H

#include <optional>
#include <string_view>

/// The versions of XMEML, as rules know them. Conversions and repairs read the same facts from the
/// resource "xml_versions" (`VersionCatalogue`), which users may extend and which may be missing;
/// what a check finds must depend on neither, so its lists are part of the program. A test compares
/// the two.
namespace vornic::xmeml {

inline constexpr int kNewestVersion = 5;

/// 1 to 5 for "1" to "5"; nothing for all else.
[[nodiscard]] std::optional<int> parseVersion(std::string_view text);

/// The version that introduced an element; 1 for those of the first one and for names that no
/// version declares. Capitals count.
[[nodiscard]] int versionOfElement(std::string_view name);

}  // namespace vornic::xmeml

#endif
