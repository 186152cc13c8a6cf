#include <filesystem>
#include <fstream>
#include <string>

#include "foundation/places/GlobalPreferences.h"
#include "platform/settings/PropertyList.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic {
namespace {

using platform::PropertyList;

class GlobalPreferencesTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;

    [[nodiscard]] std::string path() const {
        return sandbox.home() + "/.local/share/quillmark/Preferences/com.quillmark.global.plist";
    }
    void store(const PropertyList& value) const {
        ErrorSlot error;
        ASSERT_TRUE(
            PropertyList(PropertyList::Dictionary{{"switch", value}}).writeFile(path(), error));
    }
};

TEST_F(GlobalPreferencesTest, readsAValueAnewOnEveryCall) {
    EXPECT_EQ(globalPreference("switch"), std::nullopt);
    store("a");
    EXPECT_EQ(globalPreference("switch"), PropertyList("a"));
    EXPECT_EQ(globalPreference("other"), std::nullopt);
    store(5);
    EXPECT_EQ(globalPreference("switch"), PropertyList(5));
}

TEST_F(GlobalPreferencesTest, readsNothingFromAFileThatIsNoDictionary) {
    std::filesystem::create_directories(std::filesystem::path(path()).parent_path());
    std::ofstream(path()) << "no property list";
    EXPECT_EQ(globalPreference("switch"), std::nullopt);
    ErrorSlot error;
    ASSERT_TRUE(PropertyList(PropertyList::Array{"switch"}).writeFile(path(), error));
    EXPECT_EQ(globalPreference("switch"), std::nullopt);
    EXPECT_FALSE(isGlobalSwitchOn("switch"));
}

struct SwitchCase {
    const char* name;
    PropertyList value;
    bool isOn;
    bool isOff = false;
};

class GlobalSwitchTest : public GlobalPreferencesTest,
                         public ::testing::WithParamInterface<SwitchCase> {};

TEST_P(GlobalSwitchTest, isOnForTheTextOneAndForTruthAlone) {
    EXPECT_FALSE(isGlobalSwitchOn("switch"));
    store(GetParam().value);
    EXPECT_EQ(isGlobalSwitchOn("switch"), GetParam().isOn);
}

TEST_P(GlobalSwitchTest, isOffForFalsehoodAloneAndNotWhenItIsMissing) {
    EXPECT_FALSE(isGlobalSwitchOff("switch"));
    store(GetParam().value);
    EXPECT_EQ(isGlobalSwitchOff("switch"), GetParam().isOff);
}

INSTANTIATE_TEST_SUITE_P(
    Values, GlobalSwitchTest,
    ::testing::Values(
        SwitchCase{"textOne", "1", true}, SwitchCase{"theBooleanTrue", PropertyList(true), true},
        SwitchCase{"theNumberOne", 1, true}, SwitchCase{"theRealOne", PropertyList(1.0), true},
        SwitchCase{"textYes", "YES", false}, SwitchCase{"textZero", "0", false},
        SwitchCase{"textOneWithABlank", "1 ", false}, SwitchCase{"theNumberZero", 0, false, true},
        SwitchCase{"theNumberTwo", 2, false},
        SwitchCase{"theBooleanFalse", PropertyList(false), false, true},
        SwitchCase{"theRealZero", PropertyList(0.0), false, true},
        SwitchCase{"theRealHalf", PropertyList(0.5), false}, SwitchCase{"textNo", "NO", false},
        SwitchCase{"aList", PropertyList(PropertyList::Array{"1"}), false}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace
}  // namespace vornic
