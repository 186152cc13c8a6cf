#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/convert/fcpxml/ConvertedText.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "xml/text/TextDecoding.h"

// Converts real files to every version.
namespace vornic::test {

namespace {

using fcpxml::Version;

struct Sample {
    std::string path;
    std::string text;
    Version version;
};

std::vector<Sample> samples() {
    std::vector<Sample> found;
    for (const std::string& path : filesBelow(*samplesFolder() + "/fcpxml")) {
        std::string text = readBytes(path);
        if (text.starts_with(kByteOrderMark)) {
            text.erase(0, kByteOrderMark.size());
        }
        const std::size_t root = text.find("<fcpxml");
        const std::size_t open = text.find_first_of("\"'", root);
        const std::size_t close =
            open == std::string::npos ? open : text.find(text[open], open + 1);
        if (close == std::string::npos) {
            continue;
        }
        if (const auto version = Version::parse(text.substr(open + 1, close - open - 1))) {
            found.push_back({path, std::move(text), *version});
        }
    }
    return found;
}

}  // namespace

TEST(SampleConversion, makesValidFilesOfValidOnes) {
    if (!samplesFolder()) {
        GTEST_SKIP() << "VORNIC_SAMPLES is not set";
    }
    std::size_t converted = 0;
    for (const Sample& sample : samples()) {
        const bool isValid = faultsOf(sample.text, sample.version).empty();
        for (int to = fcpxml::kOldestTarget.minor(); to <= Version::kNewestMinor; ++to) {
            const ConvertedText result = convertedText(sample.text, sample.version, Version(to));
            EXPECT_EQ(result.conversion.refusal, "") << sample.path;
            if (isValid) {
                ++converted;
                EXPECT_EQ(faultsOf(result.text, Version(to)), "")
                    << sample.path << " to " << Version(to).text();
            }
        }
    }
    EXPECT_GT(converted, 100U);
}

// What was not told comes back, byte for byte but for the attribute that a path was moved from.
TEST(SampleConversion, losesNothingOnTheWayThereAndBackThatIsNotTold) {
    if (!samplesFolder()) {
        GTEST_SKIP() << "VORNIC_SAMPLES is not set";
    }
    std::size_t compared = 0;
    for (const Sample& sample : samples()) {
        for (int to = fcpxml::kOldestTarget.minor(); to <= Version::kNewestMinor; ++to) {
            const ConvertedText there = convertedText(sample.text, sample.version, Version(to));
            if (there.told.empty()) {
                const ConvertedText back = convertedText(there.text, Version(to), sample.version);
                ++compared;
                EXPECT_EQ(back.text, sample.text) << sample.path << " by " << Version(to).text();
            }
        }
    }
    EXPECT_GT(compared, 20U);
}

}  // namespace vornic::test
