#include "ui/shortcuts/ShortcutKey.h"

#include "foundation/places/PreferenceValues.h"

namespace vornic {

namespace {

std::int64_t numberIn(const platform::PropertyList::Dictionary& values, const char* key) {
    const auto found = values.find(key);
    return found != values.end() ? integerPreference(found->second) : 0;
}

}  // namespace

std::uint16_t ShortcutKey::modifiers() const {
    return static_cast<std::uint16_t>((cmd ? kCommand : 0) + (shift ? kShift : 0) +
                                      (opt ? kOption : 0) + (ctrl ? kControl : 0));
}

ShortcutKey ShortcutKey::withModifiers(std::uint32_t keyCode, std::uint16_t modifiers) {
    const auto has = [modifiers](std::uint16_t bit) { return (modifiers & bit) != 0; };
    return {.keyCode = keyCode,
            .shift = has(kShift),
            .cmd = has(kCommand),
            .opt = has(kOption),
            .ctrl = has(kControl)};
}

ShortcutKey ShortcutKey::fromEntry(const platform::PropertyList::Dictionary& entry) {
    return withModifiers(static_cast<std::uint32_t>(numberIn(entry, "keycode")),
                         static_cast<std::uint16_t>(numberIn(entry, "modifiers")));
}

NotificationCenter::UserInfo ShortcutKey::userInfo() const {
    return {
        {"keycode", keyCode}, {"shift", shift}, {"ctrl", ctrl}, {"opt", opt}, {"cmd", cmd},
    };
}

ShortcutKey ShortcutKey::fromUserInfo(const NotificationCenter::UserInfo& userInfo) {
    const auto has = [&userInfo](const char* key) { return numberIn(userInfo, key) != 0; };
    return {.keyCode = static_cast<std::uint32_t>(numberIn(userInfo, "keycode")),
            .shift = has("shift"),
            .cmd = has("cmd"),
            .opt = has("opt"),
            .ctrl = has("ctrl")};
}

}  // namespace vornic
