#ifndef VORNIC_REPORT_FINDING_H
#define VORNIC_REPORT_FINDING_H

#include <optional>
#include <string>

#include "report/Mend.h"
#include "report/Message.h"
#include "report/Place.h"
#include "report/RuleId.h"
#include "report/Severity.h"

namespace vornic {

/// One thing that was found in a file.
struct Finding {
    RuleId rule;
    /// The rule's, unless this case weighs otherwise.
    Severity severity = Severity::error;
    Place where;
    /// Where it is in the copy that was made of the file; nothing when there is none.
    std::optional<Place> inCopy;
    /// Which of the report's copies that is, counted from 0.
    std::size_t copyIndex = 0;
    /// Those that the rule's message names.
    Arguments arguments;
    std::optional<Mend> mend;
    /// For what a conversion leaves out: all of it, as it stands in the file.
    std::string lost = {};

    /// The rule's message with the arguments. Text from the file stands in it as it is.
    [[nodiscard]] std::string message() const;
};

}  // namespace vornic

#endif
