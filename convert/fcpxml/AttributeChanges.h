#ifndef VORNIC_CONVERT_FCPXML_ATTRIBUTE_CHANGES_H
#define VORNIC_CONVERT_FCPXML_ATTRIBUTE_CHANGES_H

#include <string_view>
#include <vector>

#include "formats/fcpxml/Definition.h"

namespace vornic::fcpxml {

/// How the declarations of an attribute differ between two versions. Where none of these holds, the
/// attribute may stay as it is, whether it is there or left out.
struct AttributeChange {
    std::string_view name;
    /// Null where the old or the new version does not declare it.
    const AttributeDefinition* from = nullptr;
    const AttributeDefinition* to = nullptr;

    [[nodiscard]] bool isDropped() const { return to == nullptr; }
    /// The new version does not have all values of the old one.
    bool losesValues = false;
    /// Left out, it meant a value that the new version no longer gives it.
    bool losesDefault = false;
    /// Left out, it meant nothing, and now means a value.
    bool gainsDefault = false;
    bool becomesRequired = false;
};

/// What differs between the attributes of an element in one version and those of the element that
/// takes its place in another one, in the order of their declarations. The version of the root
/// element is left out. Attributes that only came, and may be left out, change nothing.
[[nodiscard]] std::vector<AttributeChange> attributeChanges(const ElementDefinition& from,
                                                            const ElementDefinition& to);

}  // namespace vornic::fcpxml

#endif
