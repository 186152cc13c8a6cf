#include <string>

#include <gtest/gtest.h>

#include "formats/fcpxml/NameSet.h"

namespace vornic::test {

using fcpxml::NameSet;

TEST(NameSet, holdsNothingAtFirst) {
    EXPECT_FALSE(NameSet().contains("a"));
    EXPECT_FALSE(NameSet().contains(""));
}

TEST(NameSet, saysWhetherANameIsNew) {
    NameSet names;
    EXPECT_TRUE(names.insert("r1"));
    EXPECT_FALSE(names.insert("r1"));
    EXPECT_TRUE(names.insert("r"));
    EXPECT_TRUE(names.insert(""));
    EXPECT_FALSE(names.insert(""));
    EXPECT_TRUE(names.contains("r1"));
    EXPECT_TRUE(names.contains("r"));
    EXPECT_FALSE(names.contains("1"));
    EXPECT_FALSE(names.contains("r11"));
}

// It grows many times meanwhile, and names end where the next one begins.
TEST(NameSet, keepsEveryNameOfMany) {
    constexpr int kCount = 100'000;
    NameSet names;
    for (int number = 0; number < kCount; ++number) {
        ASSERT_TRUE(names.insert("ts" + std::to_string(number)));
    }
    for (int number = 0; number < kCount; ++number) {
        ASSERT_FALSE(names.insert("ts" + std::to_string(number)));
        ASSERT_TRUE(names.contains("ts" + std::to_string(number)));
        ASSERT_FALSE(names.contains("t" + std::to_string(number)));
    }
    EXPECT_FALSE(names.contains("ts" + std::to_string(kCount)));
}

}  // namespace vornic::test
