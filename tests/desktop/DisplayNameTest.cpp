#include <array>

#include <gtest/gtest.h>

#include "desktop/DisplayName.h"
#include "tests/support/machine/ScopedEnvironment.h"

namespace vornic::test {
namespace {

TEST(DisplayNameTest, isTheSameOnEveryScreenOfADisplay) {
    EXPECT_EQ(displayName("xcb", ":0.1"), displayName("xcb", ":0"));
    EXPECT_EQ(displayName("xcb", "host.example:1.0"), displayName("xcb", "host.example:1"));
    EXPECT_NE(displayName("xcb", ":0"), displayName("xcb", ":1"));
}

TEST(DisplayNameTest, isThatOfTheEnvironmentUnlessAnotherIsChosen) {
    const ScopedEnvironment display("DISPLAY", ":7");
    EXPECT_EQ(displayName("xcb", ""), displayName("xcb", ":7"));
}

TEST(DisplayNameTest, isTheSocketOnWayland) {
    const ScopedEnvironment folder("XDG_RUNTIME_DIR", "/run/user/1000");
    const ScopedEnvironment display("DISPLAY", ":7");
    std::string usual;
    {
        const ScopedEnvironment socket("WAYLAND_DISPLAY", "wayland-0");
        usual = displayName("wayland", "");
    }
    const ScopedEnvironment socket("WAYLAND_DISPLAY", "wayland-1");
    EXPECT_NE(displayName("wayland", ""), usual);
    EXPECT_NE(displayName("wayland", ""), displayName("xcb", ""));
}

TEST(DisplayNameTest, isChosenByTheToolkitsOption) {
    const std::array<const char*, 4> arguments{"vornic", "-display", ":3", "a.xml"};
    EXPECT_EQ(displayOption(4, arguments.data()), ":3");
    EXPECT_EQ(displayOption(2, arguments.data()), "");
    EXPECT_EQ(displayOption(1, arguments.data()), "");
}

}  // namespace
}  // namespace vornic::test
