#include <gtest/gtest.h>

#include "platform/session/KeyboardNames.h"
#include "tests/support/fakes/ChosenKeyboard.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

class KeyboardNamesTest : public test::SandboxTest {
  protected:
    std::string file = sandbox.write("keyboard",
                                     "# chosen\nXKBMODEL=\"pc105\"\nXKBLAYOUT=\"de,us\"\n"
                                     "XKBVARIANT='nodeadkeys,'\nXKBOPTIONS=\"ctrl:nocaps\"\n");
    test::ScopedEnvironment model{"XKB_DEFAULT_MODEL", ""};
    test::ScopedEnvironment options{"XKB_DEFAULT_OPTIONS", ""};
};

TEST_F(KeyboardNamesTest, areTheEnvironmentsWhereItNamesALayout) {
    const test::ChosenKeyboard keyboard("us", "dvorak");
    const test::ScopedEnvironment chosenModel("XKB_DEFAULT_MODEL", "pc104");
    const test::ScopedEnvironment chosenOptions("XKB_DEFAULT_OPTIONS", "caps:none");
    EXPECT_EQ(KeyboardNames::chosen(file), (KeyboardNames{"pc104", "us", "dvorak", "caps:none"}));
}

TEST_F(KeyboardNamesTest, areTheMachinesWhereTheEnvironmentNamesNoLayout) {
    const test::ChosenKeyboard keyboard("", "dvorak");
    EXPECT_EQ(KeyboardNames::chosen(file),
              (KeyboardNames{"pc105", "de,us", "nodeadkeys,", "ctrl:nocaps"}));
}

TEST_F(KeyboardNamesTest, areEmptyWhereNobodyHasChosen) {
    const test::ChosenKeyboard keyboard("");
    EXPECT_EQ(KeyboardNames::chosen(sandbox.path("missing")), KeyboardNames());
    EXPECT_EQ(KeyboardNames::chosen(sandbox.write("empty", "")), KeyboardNames());
}

}  // namespace
}  // namespace vornic::platform
