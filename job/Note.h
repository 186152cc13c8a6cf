#ifndef VORNIC_JOB_NOTE_H
#define VORNIC_JOB_NOTE_H

#include <string>

#include "report/Message.h"
#include "report/RuleTable.h"

namespace vornic {

/// What a job has to say besides, as a sentence of the table.
struct Note {
    RuleId rule;
    /// Those that the rule's message names.
    Arguments arguments{};
    /// True for what only the log says, and no report.
    bool isForLog = false;

    [[nodiscard]] std::string text() const {
        return formatMessage(ruleOf(rule).message, arguments);
    }
    friend bool operator==(const Note&, const Note&) = default;
};

}  // namespace vornic

#endif
