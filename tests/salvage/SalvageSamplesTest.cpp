// Seeded faults in real files: what docs/salvage.md tells is held here, with fewer cases.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bench/SalvageScore.h"
#include "bench/SeededFaults.h"
#include "salvage/Salvage.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

namespace {

namespace fs = std::filesystem;
using bench::FaultKind;

constexpr std::uintmax_t kLargest = 200000;

std::vector<std::string> soundSamples(const fs::path& folder) {
    std::vector<fs::path> paths;
    for (const char* kind : {"fcpxml", "xmeml"}) {
        for (const auto& entry : fs::directory_iterator(folder / kind)) {
            if (entry.file_size() <= kLargest) {
                paths.push_back(entry.path());
            }
        }
    }
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> texts;
    for (const fs::path& path : paths) {
        std::ifstream stream(path, std::ios::binary);
        ErrorSlot error;
        auto text = decodeXMLBytes(std::string(std::istreambuf_iterator<char>(stream), {}), error);
        if (text && !readXML(*text, XMLMode::strict).fault) {
            texts.push_back(std::move(*text));
        }
    }
    return texts;
}

class SalvageSamplesTest : public ::testing::TestWithParam<std::size_t> {};

}  // namespace

TEST_P(SalvageSamplesTest, findsTheOriginal) {
    const char* const folder = std::getenv("VORNIC_SAMPLES");
    if (folder == nullptr) {
        GTEST_SKIP() << "VORNIC_SAMPLES names no samples";
    }
    const auto kind = static_cast<FaultKind>(GetParam());
    bench::Score sum;
    std::size_t number = 0;
    for (const std::string& text : soundSamples(folder)) {
        std::mt19937_64 random(++number * 31 + GetParam());
        const auto faulty = bench::seedFault(text, kind, random);
        if (faulty && readXML(faulty->text, XMLMode::strict).fault) {
            sum.add(bench::scoreOf(kind, *faulty, salvage::salvage(faulty->text).copies));
        }
    }
    ASSERT_GT(sum.cases, 40U);
    EXPECT_TRUE(sum.reaches(bench::kExactGoals.at(GetParam()), kind))
        << sum.exact << " exact and " << sum.wellFormed << " well-formed of " << sum.cases << ", "
        << sum.kept << " characters of " << sum.characters;
}

INSTANTIATE_TEST_SUITE_P(Faults, SalvageSamplesTest,
                         ::testing::Range<std::size_t>(0, bench::kFaultKindCount));

}  // namespace vornic
