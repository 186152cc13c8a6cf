#ifndef VORNIC_PLATFORM_SESSION_KEYBOARD_NAMES_H
#define VORNIC_PLATFORM_SESSION_KEYBOARD_NAMES_H

#include <string>

namespace vornic::platform {

/// What a keyboard is by the names of the machine's keyboard database (xkeyboard-config). An empty
/// name stands for the database's own default.
struct KeyboardNames {
    std::string model;
    /// Layouts divided by commas, such as "us" or "ru,us".
    std::string layout;
    /// A variant for each layout, such as "dvorak" or ",nodeadkeys".
    std::string variant;
    std::string options;
    friend bool operator==(const KeyboardNames&, const KeyboardNames&) = default;

    /// The keyboard that somebody has chosen outside a display: what the environment says
    /// (`XKB_DEFAULT_MODEL`, `…_LAYOUT`, `…_VARIANT`, `…_OPTIONS`) when it names a layout, else
    /// what the file says, which is in the form of keyboard(5) (`XKBLAYOUT="de"`). Empty names when
    /// neither says anything.
    [[nodiscard]] static KeyboardNames chosen(const std::string& file = "/etc/default/keyboard");
};

}  // namespace vornic::platform

#endif
