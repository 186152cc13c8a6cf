#include "platform/processes/OperatingSystemRelease.h"

#include <charconv>

#include "platform/processes/ShellAssignments.h"

namespace vornic::platform {
namespace {

/// Takes a number off the front of the text. @return 0 when there is none or it is out of range.
std::int64_t takeNumber(std::string_view& text) {
    std::uint32_t number = 0;
    const auto [end, result] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result != std::errc()) {
        text = {};
        return 0;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (text.starts_with('.')) {
        text.remove_prefix(1);
    } else {
        text = {};
    }
    return number;
}

}  // namespace

OperatingSystemRelease readRelease(std::string_view text) {
    const auto values = parseShellAssignments(text, "$HOME");
    OperatingSystemRelease release{.version = {}, .prettyName = "Linux"};
    const auto version = values.find("VERSION_ID");
    if (version != values.end()) {
        std::string_view rest = version->second;
        release.version.major = takeNumber(rest);
        release.version.minor = takeNumber(rest);
        release.version.patch = takeNumber(rest);
    }
    const auto name = values.find("PRETTY_NAME");
    if (name != values.end() && !name->second.empty()) {
        release.prettyName = name->second;
    }
    return release;
}

}  // namespace vornic::platform
