#include "ui/shortcuts/ShortcutKeyNames.h"

#include <algorithm>
#include <array>

#include "base/FormatString.h"
#include "base/Text.h"
#include "base/Utf8.h"
#include "ui/shortcuts/ShortcutKeyMessage.h"

namespace vornic {

namespace {

struct GlyphName {
    char32_t glyph;
    std::string_view name;
};

constexpr std::array<GlyphName, 24> kGlyphNames{{
    {0xF700, "Up Arrow"},    {0x001E, "Up Arrow"},    {0xF701, "Down Arrow"},
    {0x001F, "Down Arrow"},  {0xF702, "Left Arrow"},  {0x001C, "Left Arrow"},
    {0xF703, "Right Arrow"}, {0x001D, "Right Arrow"}, {0xF729, "Home"},
    {0x0001, "Home"},        {0xF72B, "End"},         {0x0004, "End"},
    {0xF72C, "Page Up"},     {0x000B, "Page Up"},     {0xF72D, "Page Down"},
    {0x000C, "Page Down"},   {0x0003, "Return"},      {0x0009, "Tab"},
    {0x0019, "Backtab"},     {0x000D, "Enter"},       {0x0008, "Backspace"},
    {0x007F, "Delete"},      {0x001B, "Escape"},      {0x0020, "Space"},
}};

struct KeyGlyph {
    std::string_view keyName;
    char32_t glyph;
};

/// Keys whose glyph the layout does not give as text. The keypad's Enter has one of its own, so
/// that it is not taken for the other Enter key.
constexpr std::array<KeyGlyph, 10> kKeyGlyphs{{
    {"Up", 0xF700},
    {"Down", 0xF701},
    {"Left", 0xF702},
    {"Right", 0xF703},
    {"Home", 0xF729},
    {"End", 0xF72B},
    {"Prior", 0xF72C},
    {"Next", 0xF72D},
    {"ISO_Left_Tab", 0x0019},
    {"KP_Enter", 0x0003},
}};

std::string glyphOfKey(std::string_view keyName) {
    const auto* const found =
        std::find_if(kKeyGlyphs.begin(), kKeyGlyphs.end(),
                     [keyName](const KeyGlyph& each) { return each.keyName == keyName; });
    std::string glyph;
    if (found != kKeyGlyphs.end()) {
        appendUtf8(glyph, found->glyph);
    }
    return glyph;
}

/// The glyph of the key's function, else its text, else the layout's name for it; "" for nothing.
std::string charactersOf(const std::string& text, const std::string& keyName) {
    std::string glyph = glyphOfKey(keyName);
    if (!glyph.empty()) {
        return glyph;
    }
    return text.empty() ? keyName : text;
}

bool isSingleCharacter(std::string_view text) {
    return !text.empty() && utf8CharacterAt(text, 0).length == text.size();
}

}  // namespace

std::string_view nameOfGlyph(std::string_view characters) {
    if (characters.empty()) {
        return "";
    }
    const char32_t first = utf8CharacterAt(characters, 0).code;
    const auto* const found =
        std::find_if(kGlyphNames.begin(), kGlyphNames.end(),
                     [first](const GlyphName& each) { return each.glyph == first; });
    return found != kGlyphNames.end() ? found->name : std::string_view();
}

std::optional<std::string> stringForKey(const platform::KeyboardLayout* layout,
                                        std::uint32_t keyCode, std::uint16_t modifierFlags) {
    if (layout == nullptr) {
        tellOfShortcutKeys("Couldn't find a suitable keyboard layout from which to translate");
        return std::nullopt;
    }
    const ShortcutKey key = ShortcutKey::withModifiers(keyCode, modifierFlags);
    const platform::KeyboardLayout::Modifiers held{
        .command = key.cmd, .shift = key.shift, .option = key.opt, .control = key.ctrl};
    ErrorSlot error;
    const std::optional<std::string> text = layout->characters(keyCode, held, error);
    if (!text) {
        tellOfShortcutKeys(
            formatString("There was an error translating from the '%d' code to a human readable "
                         "string.",
                         error ? error->code : 0));
        return std::nullopt;
    }
    const std::string characters = charactersOf(*text, layout->keyName(keyCode, held));
    if (characters.empty()) {
        tellOfShortcutKeys(
            formatString("Couldn't find a translation for the '%d' key code", keyCode));
        return std::nullopt;
    }
    const std::string_view name = nameOfGlyph(characters);
    return name.empty() ? characters : std::string(name);
}

std::optional<std::string> nameForKey(const platform::KeyboardLayout* layout, std::uint32_t keyCode,
                                      std::uint16_t modifiers) {
    const std::optional<std::string> key = stringForKey(layout, keyCode, 0);
    if (!key) {
        return std::nullopt;
    }
    const ShortcutKey held = ShortcutKey::withModifiers(keyCode, modifiers);
    std::string name;
    name += held.ctrl ? "Ctrl+" : "";
    name += held.shift ? "Shift+" : "";
    name += held.opt ? "Alt+" : "";
    name += held.cmd ? "Cmd+" : "";
    return name + (isSingleCharacter(*key) ? uppercasedLetters(*key) : *key);
}

bool isTypedWith(std::string_view keyName) {
    constexpr std::string_view kShift = "Shift+";
    // "Shift++" is a plus sign with Shift.
    if (keyName.starts_with(kShift) && keyName.size() > kShift.size()) {
        keyName.remove_prefix(kShift.size());
    }
    return isSingleCharacter(keyName) || keyName.ends_with(" Arrow");
}

}  // namespace vornic
