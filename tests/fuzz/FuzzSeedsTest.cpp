// The seeds of the fuzz targets, as they are and damaged a little.

#include <cstddef>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/fuzz/Rules.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"

namespace vornic::test {

namespace {

struct Target {
    const char* name;
    std::string (*brokenRule)(std::string_view);
    const char* seeds;
};

void PrintTo(const Target& target, std::ostream* stream) {
    *stream << target.name;
}

constexpr Target kTargets[] = {
    {"check", brokenRuleOfCheck, "tests/data/check"},
    {"mends", brokenRuleOfMends, "tests/data/check"},
    {"conversion", brokenRuleOfConversion, "tests/data/check"},
    {"checkOfOtherSeeds", brokenRuleOfCheck, "fuzz/seeds"},
    {"mendsOfOtherSeeds", brokenRuleOfMends, "fuzz/seeds"},
    {"conversionOfOtherSeeds", brokenRuleOfConversion, "fuzz/seeds"},
    {"journal", brokenRuleOfJournal, "fuzz/seeds/journal"},
    {"propertyLists", brokenRuleOfPropertyLists, "fuzz/seeds/property-lists"},
    {"archives", brokenRuleOfArchives, "fuzz/seeds/archives"},
    {"richText", brokenRuleOfRichText, "fuzz/seeds/rich-text"},
};

std::string damaged(std::string bytes, std::mt19937_64& random) {
    const std::size_t at = random() % bytes.size();
    switch (random() % 3) {
        case 0:
            return bytes.erase(at, 1 + random() % 8);
        case 1:
            return bytes.insert(at, bytes.substr(random() % bytes.size(), 1 + random() % 16));
        default:
            bytes[at] = static_cast<char>(random());
            return bytes;
    }
}

class FuzzSeeds : public ::testing::TestWithParam<Target> {};

TEST_P(FuzzSeeds, holdTheRule) {
    const std::vector<std::string> paths =
        filesBelow(std::string(VORNIC_SOURCE "/") + GetParam().seeds);
    ASSERT_GE(paths.size(), 3U);
    for (const std::string& path : paths) {
        EXPECT_EQ(GetParam().brokenRule(readBytes(path)), "") << path;
    }
}

TEST_P(FuzzSeeds, holdTheRuleWhenTheyAreDamaged) {
    std::mt19937_64 random(22);
    for (const std::string& path : filesBelow(std::string(VORNIC_SOURCE "/") + GetParam().seeds)) {
        const std::string seed = readBytes(path);
        for (int round = 0; round < 5 && !seed.empty(); ++round) {
            const std::string bytes = damaged(seed, random);
            EXPECT_EQ(GetParam().brokenRule(bytes), "") << path << "\n" << bytes;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Each, FuzzSeeds, ::testing::ValuesIn(kTargets),
                         [](const auto& target) { return target.param.name; });

}  // namespace

}  // namespace vornic::test
