#include "app/cli/WindowHelp.h"

#include <algorithm>

#include "app/cli/Program.h"
#include "app/cli/StandardStreams.h"
#include "base/FormatString.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr std::string_view kUsage =
    "Usage: vornic [FILE...]\n"
    "       vornic -convertxmeml VERSION FILE...\n"
    "\n"
    "Opens Final Cut Pro project files (XMEML, FCPXML) in windows, repairs them, and shows\n"
    "what was wrong. Other options are the toolkit's own.\n"
    "\n"
    "  -convertxmeml  write XMEML files in another version, 1 to 5, in their place, without\n"
    "                 a window\n"
    "  --help         print this help and end\n"
    "  --version      print the version and end\n"
    "\n"
    "For the terminal: vornic-check, vornic-repair, vornic-convert, vornic-media.\n";

}  // namespace

std::optional<int> answerWithoutWindow(const std::vector<std::string>& arguments,
                                       std::string_view name) {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    const auto asksFor = [&](std::string_view option) {
        return std::find(arguments.begin(), end, option) != end;
    };
    const Program program{.name = name, .usage = kUsage, .options = {}, .log = ""};
    if (asksFor("--help")) {
        secureStandardStreams();
        return program.print(kUsage);
    }
    if (asksFor("--version")) {
        secureStandardStreams();
        return program.print(formatString("%@ %s\n", name, VORNIC_VERSION));
    }
    return std::nullopt;
}

}  // namespace vornic
