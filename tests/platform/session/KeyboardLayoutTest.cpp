#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "platform/session/KeyboardLayout.h"
#include "tests/support/fakes/ChosenKeyboard.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/VirtualScreen.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::platform {
namespace {

constexpr std::uint32_t kQ = 24;
constexpr std::uint32_t kY = 29;
constexpr std::uint32_t kA = 38;
constexpr std::uint32_t kGrave = 49;
constexpr std::uint32_t kF5 = 71;
constexpr std::uint32_t kNoKey = 93;

class KeyboardLayoutTest : public test::SandboxTest {
  protected:
    [[nodiscard]] std::string textOf(const KeyboardLayout& layout, std::uint32_t keyCode,
                                     const KeyboardLayout::Modifiers& held = {}) {
        const auto text = layout.characters(keyCode, held, error);
        EXPECT_TRUE(text) << keyCode;
        return text.value_or("");
    }
    [[nodiscard]] static std::unique_ptr<KeyboardLayout> named(const std::string& layout,
                                                               const std::string& variant = "") {
        return KeyboardLayout::named(
            {.model = "", .layout = layout, .variant = variant, .options = ""});
    }

    ErrorSlot error;
};

TEST_F(KeyboardLayoutTest, givesTheTextOfTheSameKeyInEachLayout) {
    EXPECT_EQ(textOf(*named("us"), kQ), "q");
    EXPECT_EQ(textOf(*named("de"), kY), "z");
    EXPECT_EQ(textOf(*named("fr"), kQ), "a");
    EXPECT_EQ(textOf(*named("us", "dvorak"), kQ), "'");
    EXPECT_EQ(textOf(*named("ru"), kA), "ф");
}

TEST_F(KeyboardLayoutTest, looksAtTheKeysThatAreHeld) {
    const auto layout = named("us");
    EXPECT_EQ(textOf(*layout, kA, {.shift = true}), "A");
    EXPECT_EQ(textOf(*layout, kA, {.control = true}), "\x01");
    EXPECT_EQ(textOf(*layout, kA, {.command = true, .option = true}), "a");
    EXPECT_EQ(layout->keyName(23, {.shift = true}), "ISO_Left_Tab");
}

TEST_F(KeyboardLayoutTest, hasNamesForKeysWithoutText) {
    const auto layout = named("de");
    EXPECT_EQ(textOf(*layout, kF5), "");
    EXPECT_EQ(layout->keyName(kF5, {}), "F5");
    EXPECT_EQ(textOf(*layout, kGrave), "");
    EXPECT_EQ(layout->keyName(kGrave, {}), "dead_circumflex");
}

TEST_F(KeyboardLayoutTest, distinguishesAKeyThatDoesNothingFromOneThatIsNot) {
    const auto layout = named("us");
    EXPECT_EQ(textOf(*layout, kNoKey), "");
    EXPECT_EQ(layout->keyName(kNoKey, {}), "");
    for (const std::uint32_t keyCode : {0U, 7U, 100000U, 0xFFFFFFFFU}) {
        ErrorSlot slot;
        EXPECT_EQ(layout->characters(keyCode, {}, slot), std::nullopt);
        ASSERT_TRUE(slot);
        EXPECT_EQ(slot->code, EINVAL);
        EXPECT_EQ(layout->keyName(keyCode, {}), "");
    }
}

TEST_F(KeyboardLayoutTest, isMissingWhereTheDatabaseHasNone) {
    EXPECT_EQ(named("no-such-layout"), nullptr);
    const test::ChosenKeyboard keyboard("no-such-layout");
    EXPECT_EQ(KeyboardLayout::current(), nullptr);
}

TEST_F(KeyboardLayoutTest, isTheChosenOneWithoutADisplay) {
    const test::ChosenKeyboard keyboard("fr");
    EXPECT_EQ(textOf(*KeyboardLayout::current(), kQ), "a");
}

TEST_F(KeyboardLayoutTest, isTheChosenOneWhereTheDisplayCannotBeReached) {
    const test::ChosenKeyboard keyboard("fr");
    const test::ScopedEnvironment display("DISPLAY", ":4711");
    EXPECT_EQ(textOf(*KeyboardLayout::current(), kQ), "a");
}

// Does what a desktop's switch of layouts does, through the library that such programs use.
bool switchToGroup(unsigned group) {
    void* const library = dlopen("libX11.so.6", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return false;
    }
    const auto open = reinterpret_cast<void* (*)(const char*)>(dlsym(library, "XOpenDisplay"));
    const auto lock =
        reinterpret_cast<int (*)(void*, unsigned, unsigned)>(dlsym(library, "XkbLockGroup"));
    const auto close = reinterpret_cast<int (*)(void*)>(dlsym(library, "XCloseDisplay"));
    constexpr unsigned kCoreKeyboard = 0x100;
    void* const connection = open(nullptr);
    EXPECT_NE(connection, nullptr);
    const bool locked = connection != nullptr && lock(connection, kCoreKeyboard, group) != 0;
    if (connection != nullptr) {
        close(connection);
    }
    return locked;
}

// A key with more text than any would have, in a keyboard database with one layout more.
TEST_F(KeyboardLayoutTest, givesNoMoreThanTheMostCharacters) {
    namespace fs = std::filesystem;
    const fs::path database = "/usr/share/X11/xkb";
    const fs::path own = sandbox.path("xkb");
    fs::create_directories(own / "symbols");
    for (const char* const folder : {"rules", "types", "compat", "keycodes"}) {
        fs::create_directory_symlink(database / folder, own / folder);
    }
    for (const auto& layout : fs::directory_iterator(database / "symbols")) {
        fs::create_symlink(layout.path(), own / "symbols" / layout.path().filename());
    }
    std::string symbols;
    for (int i = 0; i < 300; ++i) {
        symbols += symbols.empty() ? "U00E9" : ",U00E9";
    }
    sandbox.write("xkb/symbols/long", "xkb_symbols \"basic\" { include \"us\"\nkey <AD01> { [ {" +
                                          symbols + "} ] };\n};\n");
    const test::ScopedEnvironment root("XKB_CONFIG_ROOT", own);
    const auto layout = named("long");
    ASSERT_NE(layout, nullptr);
    const std::string text = textOf(*layout, kQ);
    EXPECT_EQ(text.size(), 255U * 2);
    EXPECT_TRUE(text.ends_with("é"));
}

class DisplayedKeyboardTest : public KeyboardLayoutTest {
  protected:
    void SetUp() override {
        if (!screen.display() || !test::exists("/usr/bin/setxkbmap")) {
            GTEST_SKIP() << "needs Xvfb and setxkbmap";
        }
    }
    // Runs a tool on the display.
    void run(const std::string& program, std::vector<std::string> arguments) const {
        EXPECT_EQ(test::RunningProgram(
                      {.program = program,
                       .arguments = std::move(arguments),
                       .environment = {"DISPLAY=" + *screen.display(), "PATH=/usr/bin:/bin"}})
                      .finish()
                      .status,
                  0);
    }

    test::ChosenKeyboard keyboard{"fr"};
    test::VirtualScreen screen{sandbox.path("display")};
    test::ScopedEnvironment display{"DISPLAY", screen.display().value_or("")};
};

TEST_F(DisplayedKeyboardTest, isTheDisplays) {
    run("/usr/bin/setxkbmap", {"us", "dvorak"});
    EXPECT_EQ(textOf(*KeyboardLayout::current(), kQ), "'");
    run("/usr/bin/setxkbmap", {"ru"});
    EXPECT_EQ(textOf(*KeyboardLayout::current(), kQ), "й");
}

TEST_F(DisplayedKeyboardTest, isTheOneThatTheUserHasSwitchedTo) {
    run("/usr/bin/setxkbmap", {"us,de"});
    EXPECT_EQ(textOf(*KeyboardLayout::current(), kY), "y");
    if (!switchToGroup(1)) {
        GTEST_SKIP() << "needs libX11";
    }
    EXPECT_EQ(textOf(*KeyboardLayout::current(), kY), "z");
}

}  // namespace
}  // namespace vornic::platform
