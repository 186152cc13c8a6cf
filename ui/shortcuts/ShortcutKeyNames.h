#ifndef VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_NAMES_H
#define VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_NAMES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/session/KeyboardLayout.h"
#include "ui/shortcuts/ShortcutKey.h"

/// What keys are called. Failures are reported on the console and in the log.
namespace vornic {

/// The name of a key that is known by the first character of what it produces, such as "Space"; ""
/// when the character is none of those.
[[nodiscard]] std::string_view nameOfGlyph(std::string_view characters);

/// What a key produces with the modifiers of these bits held, or the name of its glyph. A key
/// without text goes by the glyph of its function, else by the layout's own name for it ("F5").
/// @param layout null when there is none
/// @return nothing when it cannot be determined.
[[nodiscard]] std::optional<std::string> stringForKey(const platform::KeyboardLayout* layout,
                                                      std::uint32_t keyCode,
                                                      std::uint16_t modifierFlags);

/// A shortcut as it is shown: "Ctrl+Shift+F5".
/// @return nothing when the key itself has no name.
[[nodiscard]] std::optional<std::string> nameForKey(const platform::KeyboardLayout* layout,
                                                    std::uint32_t keyCode, std::uint16_t modifiers);

/// Whether a shortcut, as it is shown, is a key that is typed with: a single character, an arrow
/// and the like, alone or with Shift. Whoever takes it for a shortcut takes it from all programs.
[[nodiscard]] bool isTypedWith(std::string_view keyName);

}  // namespace vornic

#endif
