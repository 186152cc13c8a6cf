#ifndef VORNIC_REPORT_RULE_H
#define VORNIC_REPORT_RULE_H

#include <optional>
#include <string_view>

#include "report/RuleGroup.h"
#include "report/Severity.h"
#include "xml/text/XMLErrorCode.h"

namespace vornic {

/// One thing that can be said about a file: an entry of the table of rules (`report/RuleTable.h`).
/// All texts are UTF-8; none but the message may be left out, and none holds a line break.
struct Rule {
    /// Letters in lower case and hyphens, the group's name in front ("references-dangling"); never
    /// renamed, since users write it into scripts.
    std::string_view id;
    RuleGroup group;
    /// A single finding may weigh otherwise: what an older receiver can't read, say.
    Severity severity;
    /// What is wrong with what; what would be right. `{name}` stands for the argument of that name,
    /// `{{` for a brace.
    std::string_view message;
    /// What a finding of the rule means, in words for an assistant editor.
    std::string_view meaning;
    /// What editing programs do with such a file.
    std::string_view effect;
    /// How to mend it by hand.
    std::string_view remedy;
    /// Where the rule comes from: a section of a standard, a definition, a count over real files.
    std::string_view source;
    /// For a fault of the markup, how the reader tells it.
    std::optional<XMLErrorCode> code{};
};

}  // namespace vornic

#endif
