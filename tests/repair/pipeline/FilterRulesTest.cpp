#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/repair/pipeline/FilterRules.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {

namespace {

TEST(FilterRules, holdForTheSeedsOfTheFuzzTarget) {
    int seeds = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(VORNIC_SOURCE_DIR "/fuzz/seeds/filter")) {
        EXPECT_EQ(brokenRuleOfFilter(readBytes(entry.path())), "") << entry.path();
        ++seeds;
    }
    EXPECT_GT(seeds, 4);
}

}  // namespace

}  // namespace vornic::test
