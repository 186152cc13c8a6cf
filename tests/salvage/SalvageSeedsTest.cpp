#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/salvage/SalvageRule.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"

namespace vornic::test {

namespace {

std::vector<std::string> seeds() {
    std::vector<std::string> contents;
    for (const std::string& path : filesBelow(VORNIC_SOURCE_DIR "/fuzz/seeds")) {
        contents.push_back(readBytes(path));
    }
    return contents;
}

}  // namespace

TEST(SalvageSeeds, holdTheRule) {
    const std::vector<std::string> contents = seeds();
    ASSERT_GT(contents.size(), 20U);
    for (const std::string& content : contents) {
        EXPECT_EQ(brokenRuleOfSalvage(content), "") << content;
    }
}

// What a fuzzer does, in small: bytes are lost, doubled and exchanged.
TEST(SalvageSeeds, holdTheRuleWhateverIsDoneToThem) {
    std::mt19937_64 random(7);
    for (const std::string& content : seeds()) {
        for (int round = 0; round < 200 && !content.empty(); ++round) {
            std::string changed = content;
            for (int change = 0; change < 1 + round % 4; ++change) {
                const std::size_t at = random() % changed.size();
                const std::size_t length = 1 + random() % 6;
                switch (random() % 3) {
                    case 0:
                        changed.erase(at, length);
                        break;
                    case 1:
                        changed.insert(at, changed.substr(random() % changed.size(), length * 2));
                        break;
                    default:
                        changed[at] = "<>/\"'=!-]?& \n"[random() % 13];
                }
                if (changed.empty()) {
                    break;
                }
            }
            ASSERT_EQ(brokenRuleOfSalvage(changed), "") << changed;
        }
    }
}

}  // namespace vornic::test
