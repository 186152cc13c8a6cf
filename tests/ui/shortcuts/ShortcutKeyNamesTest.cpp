#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Utf8.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ConsoleCapture.h"
#include "tests/support/texts/LogCapture.h"
#include "ui/shortcuts/ShortcutKeyNames.h"

namespace vornic {
namespace {

using platform::KeyboardLayout;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ShortcutKeyNamesTest : public ::testing::Test {
  protected:
    [[nodiscard]] static std::unique_ptr<KeyboardLayout> layout(const std::string& name,
                                                                const std::string& variant = "") {
        return KeyboardLayout::named(
            {.model = "", .layout = name, .variant = variant, .options = ""});
    }
    [[nodiscard]] static std::string nameOf(const KeyboardLayout& layout, std::uint32_t keyCode,
                                            std::uint16_t modifiers = 0) {
        return nameForKey(&layout, keyCode, modifiers).value_or("(none)");
    }
    [[nodiscard]] static std::string utf8(char32_t code) {
        std::string text;
        appendUtf8(text, code);
        return text;
    }

    test::Unprivileged user;
    test::Sandbox sandbox;
    test::LogCapture log;
};

TEST_F(ShortcutKeyNamesTest, knowsTheGlyphsOfTheTable) {
    const std::map<char32_t, std::string> names = {
        {0xF700, "Up Arrow"},    {0x001E, "Up Arrow"},    {0xF701, "Down Arrow"},
        {0x001F, "Down Arrow"},  {0xF702, "Left Arrow"},  {0x001C, "Left Arrow"},
        {0xF703, "Right Arrow"}, {0x001D, "Right Arrow"}, {0xF729, "Home"},
        {0x0001, "Home"},        {0xF72B, "End"},         {0x0004, "End"},
        {0xF72C, "Page Up"},     {0x000B, "Page Up"},     {0xF72D, "Page Down"},
        {0x000C, "Page Down"},   {0x0003, "Return"},      {0x0009, "Tab"},
        {0x0019, "Backtab"},     {0x000D, "Enter"},       {0x0008, "Backspace"},
        {0x007F, "Delete"},      {0x001B, "Escape"},      {0x0020, "Space"}};
    ASSERT_EQ(names.size(), 24U);
    for (const auto& [glyph, name] : names) {
        EXPECT_EQ(nameOfGlyph(utf8(glyph)), name) << std::hex << static_cast<unsigned>(glyph);
        EXPECT_EQ(nameOfGlyph(utf8(glyph) + "rest"), name) << "only the first character counts";
    }
}

TEST_F(ShortcutKeyNamesTest, knowsNoOtherGlyph) {
    constexpr char32_t kEnd = 0x11000;
    int known = 0;
    for (char32_t code = 0; code < kEnd; ++code) {
        known += nameOfGlyph(utf8(code)).empty() ? 0 : 1;
    }
    EXPECT_EQ(known, 24);
    EXPECT_EQ(nameOfGlyph(""), "");
    EXPECT_EQ(nameOfGlyph(std::string(1, '\0')), "");
}

TEST_F(ShortcutKeyNamesTest, namesTheSameKeyAsEachLayoutDoes) {
    constexpr std::uint32_t kQ = 24;
    constexpr std::uint32_t kY = 29;
    constexpr std::uint32_t kA = 38;
    EXPECT_EQ(nameOf(*layout("us"), kQ), "Q");
    EXPECT_EQ(nameOf(*layout("de"), kQ), "Q");
    EXPECT_EQ(nameOf(*layout("fr"), kQ), "A");
    EXPECT_EQ(nameOf(*layout("us", "dvorak"), kQ), "'");
    EXPECT_EQ(nameOf(*layout("ru"), kQ), "Й");
    EXPECT_EQ(nameOf(*layout("us"), kY), "Y");
    EXPECT_EQ(nameOf(*layout("de"), kY), "Z");
    EXPECT_EQ(nameOf(*layout("us", "dvorak"), kY), "F");
    EXPECT_EQ(nameOf(*layout("fr"), kA), "Q");
    EXPECT_EQ(nameOf(*layout("ru"), kA), "Ф");
    EXPECT_EQ(nameOf(*layout("de"), 34), "Ü");
}

TEST_F(ShortcutKeyNamesTest, namesKeysWithoutTextByTheirGlyphs) {
    const std::map<std::uint32_t, std::string> names = {
        {111, "Up Arrow"}, {116, "Down Arrow"}, {113, "Left Arrow"}, {114, "Right Arrow"},
        {110, "Home"},     {115, "End"},        {112, "Page Up"},    {117, "Page Down"}};
    for (const char* const each : {"us", "de", "fr", "ru"}) {
        for (const auto& [keyCode, name] : names) {
            EXPECT_EQ(nameOf(*layout(each), keyCode), name) << each;
        }
    }
}

TEST_F(ShortcutKeyNamesTest, namesKeysWithTextOfNoLetters) {
    const auto us = layout("us");
    EXPECT_EQ(nameOf(*us, 23), "Tab");
    EXPECT_EQ(nameOf(*us, 22), "Backspace");
    EXPECT_EQ(nameOf(*us, 119), "Delete");
    EXPECT_EQ(nameOf(*us, 9), "Escape");
    EXPECT_EQ(nameOf(*us, 65), "Space");
    EXPECT_EQ(nameOf(*us, 36), "Enter");
    EXPECT_EQ(nameOf(*us, 104), "Return") << "the keypad's is another key";
    EXPECT_EQ(stringForKey(us.get(), 23, ShortcutKey::kShift), "Backtab");
}

TEST_F(ShortcutKeyNamesTest, namesOtherKeysAsTheLayoutDoes) {
    EXPECT_EQ(nameOf(*layout("us"), 71), "F5");
    EXPECT_EQ(nameOf(*layout("us"), 118), "Insert");
    EXPECT_EQ(nameOf(*layout("us"), 172), "XF86AudioPlay");
    EXPECT_EQ(nameOf(*layout("us"), 79), "KP_Home") << "not the Home key";
    EXPECT_EQ(nameOf(*layout("fr"), 34), "dead_circumflex");
}

TEST_F(ShortcutKeyNamesTest, putsControlShiftAltAndCommandInFront) {
    EXPECT_EQ(nameOf(*layout("us"), 71, 4096 + 512), "Ctrl+Shift+F5");
    EXPECT_EQ(nameOf(*layout("us"), 38, 256 + 512 + 2048 + 4096), "Ctrl+Shift+Alt+Cmd+A");
    EXPECT_EQ(nameOf(*layout("us"), 38, 2048), "Alt+A");
    EXPECT_EQ(nameOf(*layout("us"), 38, 256), "Cmd+A");
    EXPECT_EQ(nameOf(*layout("us"), 38, 1 + 1024), "A") << "other bits say nothing";
}

TEST_F(ShortcutKeyNamesTest, namesTheKeyItselfWhateverIsHeld) {
    EXPECT_EQ(nameOf(*layout("us"), 10, 512), "Shift+1");
    EXPECT_EQ(nameOf(*layout("us"), 38, 4096), "Ctrl+A");
    EXPECT_EQ(nameOf(*layout("us"), 23, 512), "Shift+Tab");
}

TEST_F(ShortcutKeyNamesTest, reportsWhatAKeyProducesWithOthers) {
    const auto us = layout("us");
    EXPECT_EQ(stringForKey(us.get(), 38, 0), "a") << "upper case is for names alone";
    EXPECT_EQ(stringForKey(us.get(), 38, ShortcutKey::kShift), "A");
    EXPECT_EQ(stringForKey(us.get(), 10, ShortcutKey::kShift), "!");
    EXPECT_EQ(stringForKey(us.get(), 38, ShortcutKey::kControl), "Home") << "U+0001";
}

TEST_F(ShortcutKeyNamesTest, keepsTheCaseOfALongerText) {
    // A layout in which a key gives two characters.
    class TwoLetters : public KeyboardLayout {
        [[nodiscard]] std::optional<std::string> characters(std::uint32_t, const Modifiers&,
                                                            ErrorSlot&) const override {
            return "ab";
        }
        [[nodiscard]] std::string keyName(std::uint32_t, const Modifiers&) const override {
            return "ab";
        }
    };
    EXPECT_EQ(nameOf(TwoLetters(), 24), "ab");
}

TEST_F(ShortcutKeyNamesTest, reportsThatThereIsNoLayout) {
    constexpr const char* kMessage =
        "Couldn't find a suitable keyboard layout from which to translate";
    test::ConsoleCapture console;
    EXPECT_EQ(stringForKey(nullptr, 24, 0), std::nullopt);
    EXPECT_THAT(console.lines(), ElementsAre(kMessage));
    EXPECT_TRUE(log.contains(kMessage));
    EXPECT_EQ(nameForKey(nullptr, 24, 4096), std::nullopt);
}

TEST_F(ShortcutKeyNamesTest, reportsTheErrorOfAKeyThatIsNone) {
    test::ConsoleCapture console;
    EXPECT_EQ(stringForKey(layout("us").get(), 3, 0), std::nullopt);
    EXPECT_THAT(console.lines(),
                ElementsAre("There was an error translating from the '22' code to a human readable "
                            "string."))
        << "the number is that of the error, EINVAL";
    EXPECT_EQ(nameOf(*layout("us"), 3, 4096), "(none)");
}

TEST_F(ShortcutKeyNamesTest, reportsTheCodeOfAKeyThatDoesNothing) {
    test::ConsoleCapture console;
    EXPECT_EQ(stringForKey(layout("us").get(), 93, 0), std::nullopt);
    EXPECT_THAT(console.lines(), ElementsAre("Couldn't find a translation for the '93' key code"));
    EXPECT_EQ(nameOf(*layout("us"), 93, 4096), "(none)");
}

TEST_F(ShortcutKeyNamesTest, reportsNothingAboutASoundKey) {
    test::ConsoleCapture console;
    EXPECT_EQ(nameOf(*layout("us"), 71, 4096), "Ctrl+F5");
    EXPECT_THAT(console.lines(), IsEmpty());
}

}  // namespace
}  // namespace vornic
