#include "repair/pipeline/ClosingMessage.h"

#include <string_view>

#include "report/RuleTable.h"

namespace vornic {

ClosingMessage closingMessage(RuleId rule, std::initializer_list<MessageArgument> arguments) {
    constexpr std::string_view kStop = ". ";
    const std::string_view message = ruleOf(rule).message;
    const std::size_t end = message.find(kStop);
    return {std::string(message.substr(0, end)),
            formatMessage(message.substr(end + kStop.size()),
                          kept({arguments.begin(), arguments.size()}))};
}

}  // namespace vornic
