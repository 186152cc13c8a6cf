#include <cstdint>
#include <limits>
#include <optional>

#include <gtest/gtest.h>

#include "foundation/places/PreferenceValues.h"
#include "platform/settings/PropertyList.h"

namespace vornic {
namespace {

using platform::PropertyList;

TEST(PreferenceValuesTest, knowsANumberOfEveryKind) {
    EXPECT_TRUE(isNumberEqualTo(PropertyList(1), 1));
    EXPECT_TRUE(isNumberEqualTo(PropertyList(1.0), 1));
    EXPECT_TRUE(isNumberEqualTo(PropertyList(true), 1));
    EXPECT_TRUE(isNumberEqualTo(PropertyList(false), 0));
    EXPECT_TRUE(isNumberEqualTo(PropertyList(0), 0));
}

TEST(PreferenceValuesTest, takesNothingElseForTheNumber) {
    EXPECT_FALSE(isNumberEqualTo(std::nullopt, 0));
    for (const PropertyList& value :
         {PropertyList("1"), PropertyList(2), PropertyList(1.5), PropertyList(false),
          PropertyList(PropertyList::Array{1}), PropertyList()}) {
        EXPECT_FALSE(isNumberEqualTo(value, 1));
    }
}

TEST(PreferenceValuesTest, readsWholeNumbersOutOfEveryKind) {
    EXPECT_EQ(integerPreference(PropertyList(-7)), -7);
    EXPECT_EQ(integerPreference(PropertyList(1.9)), 1);
    EXPECT_EQ(integerPreference(PropertyList(true)), 1);
    EXPECT_EQ(integerPreference(PropertyList(false)), 0);
    EXPECT_EQ(integerPreference(PropertyList("1")), 1);
    EXPECT_EQ(integerPreference(PropertyList("2 files")), 2);
    EXPECT_EQ(integerPreference(PropertyList("YES")), 0);
}

TEST(PreferenceValuesTest, readsZeroOutOfWhatIsNoNumber) {
    EXPECT_EQ(integerPreference(std::nullopt), 0);
    EXPECT_EQ(integerPreference(PropertyList()), 0);
    EXPECT_EQ(integerPreference(PropertyList(PropertyList::Array{1})), 0);
}

TEST(PreferenceValuesTest, holdsNumbersWithinTheRange) {
    constexpr double kHuge = 1e300;
    EXPECT_GT(integerPreference(PropertyList(kHuge)), std::int64_t{1} << 62U);
    EXPECT_LT(integerPreference(PropertyList(-kHuge)), -(std::int64_t{1} << 62U));
    EXPECT_EQ(integerPreference(PropertyList(std::numeric_limits<double>::quiet_NaN())), 0);
}

}  // namespace
}  // namespace vornic
