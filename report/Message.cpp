#include "report/Message.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "report/RuleTable.h"

namespace vornic {

namespace {

// A piece of a message: text, or the name between braces.
struct Piece {
    std::string_view text;
    std::optional<std::string_view> name;
};

// Takes the next piece off the message.
Piece takePiece(std::string_view& message) {
    const std::size_t brace = message.find('{');
    if (brace != 0) {
        const Piece piece{message.substr(0, brace), std::nullopt};
        message.remove_prefix(piece.text.size());
        return piece;
    }
    const bool escaped = message.starts_with("{{");
    const std::size_t end = message.find('}');
    if (escaped || end == std::string_view::npos) {
        message.remove_prefix(escaped ? 2 : 1);
        return {"{", std::nullopt};
    }
    const Piece piece{message.substr(0, end + 1), message.substr(1, end - 1)};
    message.remove_prefix(end + 1);
    return piece;
}

}  // namespace

Arguments kept(std::span<const MessageArgument> arguments) {
    Arguments result;
    result.reserve(arguments.size());
    for (const MessageArgument& argument : arguments) {
        result.push_back({argument.name, formatStringWithArguments("%@", {&argument.value, 1})});
    }
    return result;
}

std::string formatMessage(std::string_view message, const Arguments& arguments) {
    std::string result;
    while (!message.empty()) {
        const Piece piece = takePiece(message);
        const auto argument = std::find_if(
            arguments.begin(), arguments.end(),
            [&piece](const Argument& candidate) { return piece.name == candidate.name; });
        result += argument == arguments.end() ? piece.text : std::string_view(argument->value);
    }
    return result;
}

std::vector<std::string_view> argumentNames(std::string_view message) {
    std::vector<std::string_view> names;
    while (!message.empty()) {
        if (const Piece piece = takePiece(message); piece.name) {
            names.push_back(*piece.name);
        }
    }
    return names;
}

std::string messageOf(RuleId rule, std::initializer_list<MessageArgument> arguments) {
    return formatMessage(ruleOf(rule).message, kept({arguments.begin(), arguments.size()}));
}

}  // namespace vornic
