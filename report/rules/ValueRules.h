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
    {"values-encoding", RuleGroup::values, Severity::info,
     "the file is encoded in {name}; it should be UTF-8, which every program reads",
     "The characters of the file are written in an encoding that is allowed and rarely used today.",
     "Final Cut Pro writes UTF-8. Other programs may show wrong letters, or refuse the file.",
     "Save the file in UTF-8 and write encoding=\"UTF-8\" into its first line.",
     "XML 1.0 (fifth edition), section 4.3.3, Character Encoding in Entities"},
    {"values-extension", RuleGroup::values, Severity::info,
     "the file is {kind} and its name ends in {extension}; it should end in {right}",
     "The ending of a file's name says which format is in it. Here the contents say another one.",
     "Programs that go by the ending open the file as something else, or do not offer it at all; "
     "the "
     "classic repair takes every other ending than .fcpxml for XMEML.",
     "Give the file a name with the right ending.", "Practice of editing programs"},
};

}  // namespace vornic::rules

#endif
