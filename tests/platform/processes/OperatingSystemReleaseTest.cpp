#include <gtest/gtest.h>

#include "platform/processes/OperatingSystemRelease.h"

namespace vornic::platform {
namespace {

OperatingSystemVersion versionOf(const std::string& identifier) {
    return readRelease("VERSION_ID=\"" + identifier + "\"\n").version;
}

TEST(OperatingSystemReleaseTest, readsUpToThreeNumbers) {
    EXPECT_EQ(versionOf("12"), (OperatingSystemVersion{12, 0, 0}));
    EXPECT_EQ(versionOf("22.04"), (OperatingSystemVersion{22, 4, 0}));
    EXPECT_EQ(versionOf("3.18.4"), (OperatingSystemVersion{3, 18, 4}));
    EXPECT_EQ(versionOf("3.18.4.9"), (OperatingSystemVersion{3, 18, 4}));
}

TEST(OperatingSystemReleaseTest, readsTheNumbersBeforeAWord) {
    EXPECT_EQ(versionOf("15-beta"), (OperatingSystemVersion{15, 0, 0}));
    EXPECT_EQ(versionOf("15."), (OperatingSystemVersion{15, 0, 0}));
    EXPECT_EQ(versionOf("15.x.3"), (OperatingSystemVersion{15, 0, 0}));
}

TEST(OperatingSystemReleaseTest, readsZerosWhereThereIsNoNumber) {
    EXPECT_EQ(readRelease("NAME=x\n").version, OperatingSystemVersion{});
    EXPECT_EQ(readRelease("").version, OperatingSystemVersion{});
    EXPECT_EQ(versionOf("rolling"), OperatingSystemVersion{});
    EXPECT_EQ(versionOf(""), OperatingSystemVersion{});
    EXPECT_EQ(versionOf("-3"), OperatingSystemVersion{});
    EXPECT_EQ(versionOf("99999999999999999999.1"), OperatingSystemVersion{});
}

TEST(OperatingSystemReleaseTest, readsTheNameForPeople) {
    EXPECT_EQ(readRelease("PRETTY_NAME=\"Some Linux 12 (nice)\"\n").prettyName,
              "Some Linux 12 (nice)");
    EXPECT_EQ(readRelease("PRETTY_NAME=\"\"\n").prettyName, "Linux");
    EXPECT_EQ(readRelease("").prettyName, "Linux");
}

}  // namespace
}  // namespace vornic::platform
