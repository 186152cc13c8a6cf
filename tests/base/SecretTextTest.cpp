#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "base/SecretText.h"

namespace vornic::platform {
namespace {

using testing::HasSubstr;

/// The flags of the memory that an address lies in, "" when there is none.
std::string memoryFlags(const void* address) {
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    std::ifstream maps("/proc/self/smaps");
    bool inside = false;
    for (std::string line; std::getline(maps, line);) {
        std::istringstream stream(line);
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        if (stream >> std::hex >> begin >> dash >> end && dash == '-') {
            inside = begin <= wanted && wanted < end;
        } else if (inside && line.starts_with("VmFlags:")) {
            return line + " ";
        }
    }
    return "";
}

TEST(SecretTextTest, holdsAText) {
    EXPECT_EQ(SecretText("open sesame").view(), "open sesame");
    EXPECT_EQ(SecretText(std::string_view("a\0b", 3)).view().size(), 3U);
    EXPECT_EQ(SecretText("").view(), "");
    EXPECT_EQ(SecretText().view(), "");
    EXPECT_EQ(SecretText(std::string(10000, 'x')).view(), std::string(10000, 'x'));
}

TEST(SecretTextTest, isNeitherDumpedNorInherited) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer takes the locking of memory for a wish";
#endif
    const SecretText secret("open sesame");
    const std::string flags = memoryFlags(secret.view().data());
    EXPECT_THAT(flags, HasSubstr(" dd ")) << "not left out of core dumps";
    EXPECT_THAT(flags, HasSubstr(" dc ")) << "copied into forked children";
    EXPECT_THAT(flags, HasSubstr(" lo ")) << "not locked";
}

TEST(SecretTextTest, wipesTheStringThatItIsTakenFrom) {
    std::string longText(100, 'x');
    const char* held = longText.data();
    const SecretText secret(std::move(longText));
    EXPECT_EQ(secret.view(), std::string(100, 'x'));
    // The string keeps its memory, so that it may be looked at.
    EXPECT_EQ(longText.capacity(), 100U);  // NOLINT(bugprone-use-after-move): that is the point
    EXPECT_EQ(std::string(held, 100), std::string(100, '\0'));
}

TEST(SecretTextTest, wipesAShortStringToo) {
    std::string shortText = "sesame";
    const SecretText secret(std::move(shortText));
    EXPECT_EQ(secret.view(), "sesame");
    EXPECT_EQ(std::string(shortText.data(), 6), std::string(6, '\0'));  // NOLINT: as above
}

TEST(SecretTextTest, givesItsMemoryBackWhenItIsWiped) {
    SecretText secret("open sesame");
    const void* place = secret.view().data();
    EXPECT_NE(memoryFlags(place), "");
    secret.wipe();
    EXPECT_EQ(secret.view(), "");
    EXPECT_EQ(memoryFlags(place), "");
    secret.wipe();
}

TEST(SecretTextTest, movesWithoutASecondCopy) {
    SecretText first("open sesame");
    const char* place = first.view().data();
    SecretText second(std::move(first));
    EXPECT_EQ(second.view().data(), place);
    EXPECT_EQ(first.view(), "");  // NOLINT(bugprone-use-after-move): that is the point
    SecretText third("other");
    third = std::move(second);
    EXPECT_EQ(third.view().data(), place);
}

}  // namespace
}  // namespace vornic::platform
