#ifndef VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_H
#define VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_H

#include <cstdint>

#include "foundation/places/NotificationCenter.h"

namespace vornic {

/// A press of a key: its hardware key code (`platform::KeyboardLayout`) and what was held with it.
/// Command is the Super key, Option is Alt.
struct ShortcutKey {
    /// The bits of `modifiers`.
    static constexpr std::uint16_t kCommand = 256;
    static constexpr std::uint16_t kShift = 512;
    static constexpr std::uint16_t kOption = 2048;
    static constexpr std::uint16_t kControl = 4096;

    std::uint32_t keyCode = 0;
    bool shift = false;
    bool cmd = false;
    bool opt = false;
    bool ctrl = false;
    friend bool operator==(const ShortcutKey&, const ShortcutKey&) = default;

    /// The sum of the bits of the keys that are held.
    [[nodiscard]] std::uint16_t modifiers() const;
    /// The key with these modifiers; other bits are ignored.
    [[nodiscard]] static ShortcutKey withModifiers(std::uint32_t keyCode, std::uint16_t modifiers);

    /// The key of an entry of the watch list: its "keycode" and "modifiers", 0 where missing.
    [[nodiscard]] static ShortcutKey fromEntry(const platform::PropertyList::Dictionary& entry);

    /// What "QMShortcutKeyChanged" tells: "keycode", "shift", "ctrl", "opt", "cmd".
    [[nodiscard]] NotificationCenter::UserInfo userInfo() const;
    /// The reverse; what is missing counts as 0 and as not held.
    [[nodiscard]] static ShortcutKey fromUserInfo(const NotificationCenter::UserInfo& userInfo);
};

}  // namespace vornic

#endif
