#ifndef VORNIC_REPORT_MESSAGE_H
#define VORNIC_REPORT_MESSAGE_H

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/FormatString.h"
#include "report/RuleId.h"

namespace vornic {

/// An argument of a message as it is handed over: a name, which is a fixed text, and a number or a
/// text, which is only viewed.
struct MessageArgument {
    std::string_view name;
    FormatArgument value;
};

/// An argument that is kept. The name is a fixed text.
struct Argument {
    std::string_view name;
    std::string value;
    friend bool operator==(const Argument&, const Argument&) = default;
};

using Arguments = std::vector<Argument>;

[[nodiscard]] Arguments kept(std::span<const MessageArgument> arguments);

/// The message with each `{name}` replaced by the argument of that name, to the letter, and each
/// `{{` by a brace. A name without an argument stays as it stands; arguments that the message does
/// not name are ignored. Text of an argument is never read as a format. Any thread.
[[nodiscard]] std::string formatMessage(std::string_view message, const Arguments& arguments);

/// The names between braces in a message, in their order.
[[nodiscard]] std::vector<std::string_view> argumentNames(std::string_view message);

/// The rule's message with its arguments:
/// `messageOf("repair-root-element"_rule, {{"name", "xmeml"}})`.
[[nodiscard]] std::string messageOf(RuleId rule,
                                    std::initializer_list<MessageArgument> arguments = {});

}  // namespace vornic

#endif
