#ifndef VORNIC_REPORT_XML_RULE_OF_H
#define VORNIC_REPORT_XML_RULE_OF_H

#include <optional>

#include "report/RuleId.h"
#include "xml/text/XMLErrorCode.h"

namespace vornic {

/// The rule for a fault or a mend of the reader. Nothing for a code that tells of no file
/// (`XMLErrorCode::malformedQuery`), or for a number that is none of the codes.
[[nodiscard]] std::optional<RuleId> xmlRuleOf(XMLErrorCode code);

}  // namespace vornic

#endif
