#ifndef VORNIC_REPORT_RULES_REQUIREMENTS_H
#define VORNIC_REPORT_RULES_REQUIREMENTS_H

#include <string_view>

namespace vornic::rules {

/// Something that a format asks of a file, and which rules hold it.
struct Requirement {
    /// In our own short words.
    std::string_view text;
    /// Ids, parted by single blanks.
    std::string_view rules;
};

inline constexpr Requirement kRequirements[] = {
    {"FCPXML is valid by the definition of the version that it declares",
     "structure-unknown-element structure-element-of-other-version structure-misplaced-element "
     "structure-element-order structure-surplus-element structure-missing-element "
     "structure-misplaced-text structure-content-in-empty-element structure-unknown-attribute "
     "structure-attribute-of-other-version structure-missing-attribute structure-value-not-listed "
     "structure-value-not-fixed structure-malformed-id structure-repeated-id "
     "structure-dangling-reference structure-document-type"},
    {"FCPXML: what stands alone gets no values from its definition", "values-standalone"},
};

}  // namespace vornic::rules

#endif
