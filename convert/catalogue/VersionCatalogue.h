#ifndef VORNIC_CONVERT_CATALOGUE_VERSION_CATALOGUE_H
#define VORNIC_CONVERT_CATALOGUE_VERSION_CATALOGUE_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/settings/PropertyList.h"

namespace vornic {

/// Which elements each XMEML version introduced and which Final Cut Pro release reads it: the
/// resource "xml_versions" of type "plist". Nothing is cached; who uses it loads it anew.
class VersionCatalogue {
  public:
    /// Reads the resource. @return nothing when it is missing or holds no dictionary.
    [[nodiscard]] static std::optional<VersionCatalogue> load();

    /// A catalogue with the given root, for callers that have one already.
    explicit VersionCatalogue(platform::PropertyList::Dictionary root) : root_(std::move(root)) {}

    /// All versions, sorted as texts without regard to case.
    [[nodiscard]] std::vector<std::string> sortedKeys() const;
    /// The versions that follow the given one in that order, none for the last one; nothing when
    /// the version itself is not in the catalogue, letter for letter.
    [[nodiscard]] std::optional<std::vector<std::string>> versionsAbove(
        std::string_view version) const;
    /// True when the version's entry is there and is a dictionary.
    [[nodiscard]] bool hasEntry(const std::string& version) const;
    /// The string under "FCP Version", or nothing.
    [[nodiscard]] std::optional<std::string> fcpVersion(const std::string& version) const;
    /// The element strings (`<name`) that the version introduced, in their order; none when the
    /// entry has no such list, or there is no entry.
    [[nodiscard]] std::vector<std::string> elements(const std::string& version) const;

  private:
    platform::PropertyList::Dictionary root_;
};

/// What is logged when the catalogue cannot be loaded.
inline constexpr std::string_view kUnableToLoadVersions =
    "Unable to load XML version information. Please reinstall Brindle Tools.";

}  // namespace vornic

#endif
