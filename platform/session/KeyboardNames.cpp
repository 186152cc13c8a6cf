#include "platform/session/KeyboardNames.h"

#include <cstdlib>

#include "platform/files/FileSystem.h"
#include "platform/processes/ShellAssignments.h"

namespace vornic::platform {
namespace {

std::string fromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

KeyboardNames KeyboardNames::chosen(const std::string& file) {
    KeyboardNames names{.model = fromEnvironment("XKB_DEFAULT_MODEL"),
                        .layout = fromEnvironment("XKB_DEFAULT_LAYOUT"),
                        .variant = fromEnvironment("XKB_DEFAULT_VARIANT"),
                        .options = fromEnvironment("XKB_DEFAULT_OPTIONS")};
    if (!names.layout.empty()) {
        return names;
    }
    ErrorSlot ignored;
    auto values = parseShellAssignments(readFile(file, ignored).value_or(""), "$HOME");
    return {.model = values["XKBMODEL"],
            .layout = values["XKBLAYOUT"],
            .variant = values["XKBVARIANT"],
            .options = values["XKBOPTIONS"]};
}

}  // namespace vornic::platform
