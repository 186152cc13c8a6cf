#ifndef VORNIC_REPAIR_PIPELINE_CLOSING_MESSAGE_H
#define VORNIC_REPAIR_PIPELINE_CLOSING_MESSAGE_H

#include <initializer_list>
#include <string>

#include "report/Message.h"
#include "report/RuleId.h"

namespace vornic {

/// What a run has to say at its end, also to a user who reads no report: the title of an alert and
/// its informative text.
struct ClosingMessage {
    std::string title;
    std::string information;
};

/// A rule's message, of which the first sentence, without its full stop, is the title and the rest
/// the information.
[[nodiscard]] ClosingMessage closingMessage(RuleId rule,
                                            std::initializer_list<MessageArgument> arguments = {});

}  // namespace vornic

#endif
