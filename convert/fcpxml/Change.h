#ifndef VORNIC_CONVERT_FCPXML_CHANGE_H
#define VORNIC_CONVERT_FCPXML_CHANGE_H

#include <optional>
#include <string_view>

#include "formats/ElementIndex.h"
#include "report/RuleId.h"
#include "xml/text/TextSpan.h"

namespace vornic::fcpxml {

/// Something that a conversion drops or gives another form. Small, since a file may have millions:
/// what is said of it is put together for the ones that are told.
struct Change {
    RuleId rule;
    /// The element concerned, or the one whose attribute is; of the text that is converted.
    ElementNumber element = vornic::kNoElement;
    /// What is dropped or changed.
    TextSpan content;
    /// The attribute concerned, or "". A view of a definition.
    std::string_view attribute = {};
    /// What stands in its place, such as a name or a value; "" for nothing. A view of a definition
    /// or of the text.
    std::string_view instead = {};
};

/// Why a text cannot be converted without inventing something.
struct MissingValue {
    ElementNumber element = vornic::kNoElement;
    std::string_view attribute;
};

}  // namespace vornic::fcpxml

#endif
