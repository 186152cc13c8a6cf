#include "app/cli/CommandLine.h"

#include <algorithm>
#include <cstddef>

namespace vornic {

namespace {

// An argument that begins with a hyphen: the option's name, and the value that hangs on it.
struct WrittenOption {
    std::string_view name;
    std::optional<std::string_view> value;
};

WrittenOption split(std::string_view argument) {
    if (!argument.starts_with("--")) {
        return {argument.substr(0, 2),
                argument.size() > 2 ? std::optional(argument.substr(2)) : std::nullopt};
    }
    const std::size_t end = argument.find('=');
    return {argument.substr(0, end),
            end == std::string_view::npos ? std::nullopt : std::optional(argument.substr(end + 1))};
}

}  // namespace

CommandLine CommandLine::parse(const std::vector<std::string>& arguments,
                               std::span<const OptionForm> options) {
    CommandLine line;
    bool onlyFiles = false;
    for (std::size_t i = 1; i < arguments.size() && line.fault_.empty(); ++i) {
        const std::string& argument = arguments[i];
        if (onlyFiles || !argument.starts_with('-') || argument == "-") {
            line.files_.push_back(argument);
            continue;
        }
        if (argument == "--") {
            onlyFiles = true;
            continue;
        }
        const WrittenOption written = split(argument);
        const auto known = std::find_if(options.begin(), options.end(), [&](const auto& option) {
            return option.name == written.name;
        });
        if (known == options.end() ||
            (!known->takesValue && !known->isValueOptional && written.value)) {
            line.fault_ = "unknown option " + argument;
        } else if (written.value || !known->takesValue) {
            line.options_.emplace_back(known->name, written.value.value_or(std::string_view()));
        } else if (i + 1 == arguments.size()) {
            line.fault_ = "the option " + argument + " wants a value";
        } else {
            line.options_.emplace_back(known->name, arguments[++i]);
        }
    }
    return line;
}

std::optional<std::string> CommandLine::value(std::string_view option) const {
    const auto found = std::find_if(options_.rbegin(), options_.rend(),
                                    [&](const auto& entry) { return entry.first == option; });
    return found == options_.rend() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> CommandLine::values(std::string_view option) const {
    std::vector<std::string> values;
    for (const auto& [name, value] : options_) {
        if (name == option) {
            values.push_back(value);
        }
    }
    return values;
}

}  // namespace vornic
