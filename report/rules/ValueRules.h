#ifndef VORNIC_REPORT_RULES_VALUE_RULES_H
#define VORNIC_REPORT_RULES_VALUE_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

/// The form of single values.
inline constexpr Rule kValueRules[] = {
    {"values-standalone", RuleGroup::values, Severity::error,
     "the XML declaration says standalone=\"yes\"; it should not, since the definition of the "
     "format "
     "gives attributes their values",
     "A file that stands alone needs no definition to be understood. FCPXML does: attributes that "
     "are "
     "left out get their values from there.",
     "Final Cut Pro compares the file with its definition and refuses it: \"DTD validation "
     "failed\".",
     "Take standalone=\"yes\" out of the first line.",
     "XML 1.0 (fifth edition), section 2.9, Standalone Document Declaration"},
};

}  // namespace vornic::rules

#endif
