#include <string>

#include <gtest/gtest.h>

#include "foundation/copies/FileCopySettings.h"

namespace vornic {
namespace {

TEST(FileCopySettingsTest, hasNothingUnderAKeyThatWasNotSet) {
    const FileCopySettings settings;
    EXPECT_FALSE(settings.objectForKey("source").has_value());
    EXPECT_EQ(settings.valueForKey<std::string>("source"), std::nullopt);
}

TEST(FileCopySettingsTest, keepsTheLatestValue) {
    FileCopySettings settings;
    settings.setObject(std::string("first"), "key");
    settings.setObject(std::string("second"), "key");
    EXPECT_EQ(settings.valueForKey<std::string>("key"), "second");
}

TEST(FileCopySettingsTest, hasNoValueOfAnotherType) {
    FileCopySettings settings;
    settings.setObject(1, "key");
    EXPECT_EQ(settings.valueForKey<std::string>("key"), std::nullopt);
    EXPECT_EQ(settings.valueForKey<int>("key"), 1);
}

}  // namespace
}  // namespace vornic
