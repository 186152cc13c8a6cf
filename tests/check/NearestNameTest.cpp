#include <array>
#include <string>

#include <gtest/gtest.h>

#include "check/NearestName.h"

namespace vornic {

namespace {

constexpr std::array<std::string_view, 4> kNames{"format", "asset", "media-rep", "frameDuration"};

}  // namespace

TEST(NearestName, findsWhatWasMisspelt) {
    EXPECT_EQ(nearestName("fromat", kNames), "format");
    EXPECT_EQ(nearestName("asst", kNames), "asset");
    EXPECT_EQ(nearestName("media_rep", kNames), "media-rep");
    EXPECT_EQ(nearestName("FrameDuraton", kNames), "frameDuration");
    EXPECT_EQ(nearestName("Format", kNames), "format");
}

TEST(NearestName, findsNothingThatIsFar) {
    EXPECT_EQ(nearestName("spine", kNames), "");
    EXPECT_EQ(nearestName("", kNames), "");
    EXPECT_EQ(nearestName("format", {}), "");
}

TEST(NearestName, holdsNoSingleLetterForAnother) {
    constexpr std::array<std::string_view, 2> kSwitch{"0", "1"};
    EXPECT_EQ(nearestName("2", kSwitch), "");
}

TEST(NearestName, prefersTheNearer) {
    constexpr std::array<std::string_view, 2> kClips{"mc-clip", "ref-clip"};
    EXPECT_EQ(nearestName("re-clip", kClips), "ref-clip");
}

TEST(NearestName, looksAtNoNameThatIsVeryLong) {
    EXPECT_EQ(nearestName(std::string(65, 'a'), kNames), "");
}

}  // namespace vornic
