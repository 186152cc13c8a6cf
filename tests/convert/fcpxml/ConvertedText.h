#ifndef VORNIC_TESTS_CONVERT_FCPXML_CONVERTED_TEXT_H
#define VORNIC_TESTS_CONVERT_FCPXML_CONVERTED_TEXT_H

#include <string>
#include <string_view>

#include "convert/fcpxml/Conversion.h"
#include "report/Findings.h"

namespace vornic::test {

/// What a conversion made of a text, and what it told.
struct ConvertedText {
    std::string text;
    fcpxml::Conversion conversion;
    Findings findings;
    /// "rule: message" of each finding, a line each.
    std::string told;
};

[[nodiscard]] ConvertedText convertedText(std::string_view text, fcpxml::Version from,
                                          fcpxml::Version to);

/// What is wrong with a text by the definition of a version, a line for each fault; "" when it is
/// valid.
[[nodiscard]] std::string faultsOf(std::string_view text, fcpxml::Version version);

}  // namespace vornic::test

#endif
