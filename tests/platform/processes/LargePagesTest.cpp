#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "platform/processes/LargePages.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20U;

// The flags of the mapping that holds the address, as the kernel tells them; "" for none.
std::string flagsAt(const void* address) {
    std::ifstream maps("/proc/self/smaps");
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    bool isHere = false;
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t first = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        if (std::istringstream(line) >> std::hex >> first >> dash >> end && dash == '-') {
            isHere = first <= wanted && wanted < end;
        } else if (isHere && line.starts_with("VmFlags:")) {
            return line + " ";
        }
    }
    return {};
}

TEST(LargePages, areAskedForWhereTheMemoryHoldsWholeOnes) {
    if (!test::exists("/sys/kernel/mm/transparent_hugepage/enabled")) {
        GTEST_SKIP() << "this system has no large pages";
    }
    std::string text;
    reserveInLargePages(text, 20 * kLargePage);
    EXPECT_GE(text.capacity(), 20 * kLargePage);
    EXPECT_TRUE(text.empty());
    EXPECT_NE(flagsAt(text.data() + 10 * kLargePage).find(" hg "), std::string::npos);
}

TEST(LargePages, areMadeReadyAheadWithoutAChangeToWhatIsThere) {
    std::string text;
    reserveInLargePages(text, 20 * kLargePage);
    text.assign(15 * kLargePage, 'k');
    {
        const PagesAhead ahead(text.data(), text.capacity());
        text.append(2 * kLargePage, 'l');
    }
    EXPECT_EQ(text, std::string(15 * kLargePage, 'k') + std::string(2 * kLargePage, 'l'));
    const PagesAhead none(nullptr, 0);
}

TEST(LargePages, leaveSmallMemoryAlone) {
    std::string text;
    reserveInLargePages(text, 1000);
    EXPECT_GE(text.capacity(), 1000U);
    preferLargePages(nullptr, 0);
    preferLargePages(text.data(), kLargePage - 1);
    EXPECT_EQ(flagsAt(text.data()).find(" hg "), std::string::npos);
}

}  // namespace
}  // namespace vornic::platform
