// Files that were made to cost a salvage time and memory.

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryIsMeasurable = false;
#else
constexpr bool kMemoryIsMeasurable = true;
#endif

struct HostileFile {
    const char* name;
    const char* part;
    int count;
    const char* head = "<xmeml version=\"5\">";
};

void PrintTo(const HostileFile& file, std::ostream* stream) {
    *stream << file.name;
}

}  // namespace

class SalvageSizesTest : public ProgramTest, public ::testing::WithParamInterface<HostileFile> {};

// 32 MB, three times the file, and 64 bytes a tag.
TEST_P(SalvageSizesTest, isSalvagedInBoundedMemory) {
    const auto [name, part, count, head] = GetParam();
    const std::string path = files.path("cut.xml");
    std::uint64_t bytes = std::string(head).size();
    std::uint64_t tags = 1;
    {
        std::ofstream stream(path, std::ios::binary);
        stream << head;
        const std::string text = part;
        for (int i = 0; i < count; ++i) {
            stream << text;
        }
        bytes += text.size() * static_cast<std::uint64_t>(count);
        tags += static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '<')) *
                static_cast<std::uint64_t>(count);
    }
    const ProgramResult result =
        runProgram(files.repairer({"--salvage", "--format", "json", "cut.xml"}));
    EXPECT_TRUE(result.status == 1 || result.status == 3) << result.status << result.errors;
    EXPECT_LT(result.output.size(), 300000U);
    const std::uint64_t bound = (std::uint64_t{32} << 20U) + 3 * bytes + 64 * tags;
    if (kMemoryIsMeasurable) {
        EXPECT_LE(static_cast<std::uint64_t>(result.peakMemory), bound);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Hostile, SalvageSizesTest,
    ::testing::Values(HostileFile{"strayEndTags", "</a>", 10'000'000},
                      HostileFile{"openElements", "<bin>", 1'000'000},
                      HostileFile{"wrongEndTags", "<bin></clip>", 1'000'000},
                      HostileFile{"tagsWithoutTheirEnd", "<a ", 1'000'000},
                      HostileFile{"misspeltEndTags", "<name>a</nane>", 300'000},
                      HostileFile{"endTagsLost", "<sequence><name>a</sequence>", 300'000},
                      HostileFile{"forbiddenCharacters", "a\x01", 5'000'000},
                      HostileFile{"bytesThatAreNoText", "a\xFF", 5'000'000},
                      HostileFile{"textBehindTheRoot", "</xmeml>x", 300'000},
                      HostileFile{"lostStartTags", "</bin></clip>", 500'000, "<fcpxml>"}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace vornic::test
