#include <gtest/gtest.h>

#include "ui/shortcuts/ShortcutKey.h"

namespace vornic {
namespace {

TEST(ShortcutKey, addsTheBitsOfTheKeysThatAreHeld) {
    EXPECT_EQ((ShortcutKey{.keyCode = 71}).modifiers(), 0);
    EXPECT_EQ((ShortcutKey{.cmd = true}).modifiers(), 256);
    EXPECT_EQ((ShortcutKey{.shift = true}).modifiers(), 512);
    EXPECT_EQ((ShortcutKey{.opt = true}).modifiers(), 2048);
    EXPECT_EQ((ShortcutKey{.ctrl = true}).modifiers(), 4096);
    EXPECT_EQ((ShortcutKey{.shift = true, .cmd = true, .opt = true, .ctrl = true}).modifiers(),
              256 + 512 + 2048 + 4096);
}

TEST(ShortcutKey, isMadeOfItsModifiers) {
    const ShortcutKey key{.keyCode = 71, .shift = true, .ctrl = true};
    EXPECT_EQ(ShortcutKey::withModifiers(71, 512 + 4096), key);
    EXPECT_EQ(ShortcutKey::withModifiers(71, 512 + 4096 + 1024 + 1), key) << "other bits";
}

TEST(ShortcutKey, isReportedByUserInformation) {
    const ShortcutKey key{.keyCode = 71, .shift = true, .cmd = false, .opt = true, .ctrl = false};
    EXPECT_EQ(
        key.userInfo(),
        (NotificationCenter::UserInfo{
            {"keycode", 71}, {"shift", true}, {"ctrl", false}, {"opt", true}, {"cmd", false}}));
    EXPECT_EQ(ShortcutKey::fromUserInfo(key.userInfo()), key);
    EXPECT_EQ(ShortcutKey::fromUserInfo({}), ShortcutKey());
}

TEST(ShortcutKey, isReadFromAnEntryWhateverKindOfNumberStandsThere) {
    const ShortcutKey key{.keyCode = 71, .ctrl = true};
    EXPECT_EQ(ShortcutKey::fromEntry({{"keycode", 71}, {"modifiers", 4096}}), key);
    EXPECT_EQ(ShortcutKey::fromEntry({{"keycode", 71.0}, {"modifiers", "4096"}}), key);
    EXPECT_EQ(ShortcutKey::fromEntry({}), ShortcutKey());
}

}  // namespace
}  // namespace vornic
