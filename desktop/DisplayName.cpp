#include "desktop/DisplayName.h"

#include <cstdlib>
#include <string_view>

namespace vornic {

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

// "host:1.0" names screen 0 of the display "host:1".
std::string withoutScreen(const std::string& display) {
    const std::size_t colon = display.rfind(':');
    const std::size_t dot = display.rfind('.');
    const bool hasScreen = colon != std::string::npos && dot != std::string::npos && dot > colon;
    return hasScreen ? display.substr(0, dot) : display;
}

}  // namespace

std::string displayName(const std::string& platform, const std::string& chosen) {
    if (platform.starts_with("wayland")) {
        const std::string socket = variable("WAYLAND_DISPLAY");
        return "wayland " + (socket.starts_with('/') ? "" : variable("XDG_RUNTIME_DIR") + "/") +
               (socket.empty() ? "wayland-0" : socket);
    }
    return platform + " " + withoutScreen(chosen.empty() ? variable("DISPLAY") : chosen);
}

std::string displayOption(int argc, const char* const* argv) {
    for (int i = 1; i + 1 < argc; ++i) {
        const std::string_view option = argv[i];
        if (option == "-display" || option == "--display") {
            return argv[i + 1];
        }
    }
    return "";
}

}  // namespace vornic
