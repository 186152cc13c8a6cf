#ifndef VORNIC_CHECK_FCPXML_REFERENCE_KINDS_H
#define VORNIC_CHECK_FCPXML_REFERENCE_KINDS_H

#include <array>
#include <string>
#include <string_view>

#include "formats/fcpxml/Version.h"

namespace vornic {

/// What an attribute of an element may name.
struct ReferenceKinds {
    std::string_view attribute;
    /// Empty for every element that has the attribute.
    std::string_view element;
    std::string_view kind;
    /// Empty where there is one kind alone.
    std::string_view otherKind = {};
    /// Whether the other kind took the place of the first one, which newer versions do not have.
    bool isReplaced = false;

    [[nodiscard]] bool allow(std::string_view name) const {
        return name == kind || (!otherKind.empty() && name == otherKind);
    }
    /// "an <asset> or an <effect>", what the version has of them.
    /// @param version the newest for one that is not known
    [[nodiscard]] std::string inVersion(fcpxml::Version version) const;
};

/// The attributes that name something by its id, in any version.
inline constexpr std::array<std::string_view, 5> kReferenceAttributes = {
    "ref", "format", "tracking", "dataLocator", "projectRef"};

/// Null for an element that the definitions give no such attribute.
[[nodiscard]] const ReferenceKinds* referenceKindsOf(std::string_view attribute,
                                                     std::string_view element);

}  // namespace vornic

#endif
