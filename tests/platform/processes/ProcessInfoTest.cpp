#include <algorithm>
#include <array>
#include <ctime>
#include <set>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/files/FileSystem.h"
#include "platform/processes/OperatingSystemRelease.h"
#include "platform/processes/ProcessInfo.h"
#include "tests/platform/TextForm.h"
#include "tests/support/machine/Waiting.h"

namespace vornic::platform {
namespace {

TEST(ProcessInfoTest, reportsWhatTheSystemsReleaseFileReports) {
    ErrorSlot error;
    auto text = readFile("/etc/os-release", error);
    if (!text) {
        text = readFile("/usr/lib/os-release", error);
    }
    const OperatingSystemRelease release = readRelease(text.value_or(""));
    EXPECT_EQ(operatingSystemVersion(), release.version);
    EXPECT_EQ(operatingSystemVersionString(), release.prettyName);
    EXPECT_FALSE(operatingSystemVersionString().empty());
}

TEST(ProcessInfoTest, countsProcessorsAndMemory) {
    EXPECT_GE(processorCount(), 1);
    EXPECT_GT(physicalMemory(), std::uint64_t{64} << 20U);
}

TEST(ProcessInfoTest, makesRandomIdentifiersOfTheStandardForm) {
    std::set<std::string> made;
    for (int count = 0; count < 1000; ++count) {
        const std::string text = globallyUniqueString();
        EXPECT_TRUE(test::hasForm(text, "XXXXXXXX-XXXX-4XXX-XXXX-XXXXXXXXXXXX")) << text;
        EXPECT_NE(std::string_view("89AB").find(text.at(19)), std::string_view::npos) << text;
        made.insert(text);
    }
    EXPECT_EQ(made.size(), 1000U);
}

std::string described(std::time_t second) {
    std::array<char, 64> text{};
    struct tm date {};
    gmtime_r(&second, &date);
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S +0000", &date);
    return text.data();
}

TEST(ProcessInfoTest, describesTheCurrentSecondInUniversalTime) {
    const std::string before = described(std::time(nullptr));
    const std::string text = currentDateDescription();
    const std::string after = described(std::time(nullptr) + 1);
    EXPECT_TRUE(test::hasForm(text, "####-##-## ##:##:## +0000")) << text;
    EXPECT_LE(before, text);
    EXPECT_LE(text, after);
}

TEST(ProcessInfoTest, movesOnWithTheClock) {
    const std::string first = currentDateDescription();
    EXPECT_TRUE(test::becomesTrue([&] { return first < currentDateDescription(); }));
}

TEST(ProcessInfoTest, describesTheDateOnEveryThread) {
    std::vector<std::string> texts(8);
    std::vector<std::thread> threads;
    threads.reserve(texts.size());
    for (std::string& text : texts) {
        threads.emplace_back([&text] {
            for (int count = 0; count < 10'000; ++count) {
                text = currentDateDescription();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::string& text : texts) {
        EXPECT_EQ(text.size(), 25U);
    }
}

}  // namespace
}  // namespace vornic::platform
