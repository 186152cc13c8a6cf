#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/convert/fcpxml/ConvertedText.h"
#include "tests/convert/fcpxml/DocumentMeaning.h"
#include "tests/formats/fcpxml/OtherParser.h"
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

class SampleConversion : public SandboxTest {
  protected:
    void SetUp() override {
        if (!samplesFolder()) {
            GTEST_SKIP() << "VORNIC_SAMPLES is not set";
        }
    }
};

TEST_F(SampleConversion, makesValidFilesOfValidOnes) {
    std::optional<OtherParser> parser;
    if (OtherParser::isThere()) {
        parser.emplace(sandbox);
    }
    std::size_t converted = 0;
    for (const Sample& sample : samples()) {
        const bool isValid = faultsOf(sample.text, sample.version).empty();
        std::vector<VersionedText> valid;
        for (int to = fcpxml::kOldestTarget.minor(); to <= Version::kNewestMinor; ++to) {
            const ConvertedText result = convertedText(sample.text, sample.version, Version(to));
            EXPECT_EQ(result.conversion.refusal, "") << sample.path;
            if (isValid) {
                EXPECT_EQ(faultsOf(result.text, Version(to)), "")
                    << sample.path << " to " << Version(to).text();
                valid.push_back({Version(to), result.text});
            }
        }
        for (const auto& [number, lines] :
             parser ? parser->refusals(valid) : std::map<std::size_t, std::string>()) {
            ADD_FAILURE() << sample.path << " to " << valid[number].version.text() << ": " << lines;
        }
        converted += valid.size();
    }
    EXPECT_GT(converted, 100U);
    RecordProperty("converted", std::to_string(converted));
}

// What was not told comes back, byte for byte but for the attribute that a path was moved from.
TEST_F(SampleConversion, losesNoByteThereAndBackWhereNothingIsReported) {
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

TEST_F(SampleConversion, losesNothingThereAndBackButWhatIsReported) {
    std::size_t compared = 0;
    for (const Sample& sample : samples()) {
        for (int to = fcpxml::kOldestTarget.minor();
             to <= Version::kNewestMinor && sample.version >= fcpxml::kOldestTarget; ++to) {
            const ConvertedText there = convertedText(sample.text, sample.version, Version(to));
            const ConvertedText back = convertedText(there.text, Version(to), sample.version);
            ++compared;
            // Files of megabytes are not to be printed.
            EXPECT_TRUE(meaningOf(back.text, sample.version) ==
                        meaningByWhatWasTold(sample.text, sample.version, there, back))
                << sample.path << " by " << Version(to).text() << "\n"
                << there.told.substr(0, 2000) << back.told.substr(0, 2000);
        }
    }
    EXPECT_GT(compared, 100U);
    RecordProperty("compared", std::to_string(compared));
}

}  // namespace vornic::test
