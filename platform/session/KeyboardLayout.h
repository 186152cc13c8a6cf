#ifndef VORNIC_PLATFORM_SESSION_KEYBOARD_LAYOUT_H
#define VORNIC_PLATFORM_SESSION_KEYBOARD_LAYOUT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/Error.h"
#include "platform/session/KeyboardNames.h"

namespace vornic::platform {

/// What the keys of a keyboard stand for. A key is named by its hardware key code, the one that a
/// display server reports (8 more than the kernel's): it names the place of the key, whatever the
/// layout makes of it. One thread at a time.
class KeyboardLayout {
  public:
    /// The keys that are held. Command is the Super key, Option is Alt.
    struct Modifiers {
        bool command = false;
        bool shift = false;
        bool option = false;
        bool control = false;
    };

    /// The layout that is in use now: that of the display that `DISPLAY` names, in the group that
    /// its user has switched to, when it can be reached, else `KeyboardNames::chosen`.
    /// @return null when the machine's keyboard database has no such layout.
    [[nodiscard]] static std::unique_ptr<KeyboardLayout> current();
    /// The first layout of those that are named, likewise.
    [[nodiscard]] static std::unique_ptr<KeyboardLayout> named(const KeyboardNames& names);

    virtual ~KeyboardLayout() = default;

    /// The text that a press of the key gives, in UTF-8, at most 255 characters; "" for a key that
    /// gives none (arrows, function keys, dead keys).
    /// @return nothing, with the slot filled (EINVAL), when the keyboard has no such key.
    [[nodiscard]] virtual std::optional<std::string> characters(std::uint32_t keyCode,
                                                                const Modifiers& held,
                                                                ErrorSlot& error) const = 0;
    /// The layout's own name for what the key does, such as "F5", "Up", "XF86AudioPlay" or "a"; ""
    /// when it does nothing.
    [[nodiscard]] virtual std::string keyName(std::uint32_t keyCode,
                                              const Modifiers& held) const = 0;
};

}  // namespace vornic::platform

#endif
