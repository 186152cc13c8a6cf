#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "report/RuleTable.h"
#include "tests/convert/fcpxml/ConvertedText.h"
#include "tests/convert/fcpxml/DocumentMeaning.h"
#include "tests/formats/fcpxml/DocumentGenerator.h"
#include "tests/formats/fcpxml/OtherParser.h"
#include "tests/support/machine/Sandbox.h"

// Converts documents in which everything occurs that a version has. VORNIC_GENERATED_DOCUMENTS says
// how many of each version.
namespace vornic::test {

namespace {

using fcpxml::Version;

constexpr std::size_t kUsualDocuments = 60;
constexpr std::size_t kMostDocuments = 2000;
constexpr std::size_t kBatch = 500;

std::size_t documentCount() {
    const char* const count = std::getenv("VORNIC_GENERATED_DOCUMENTS");
    return count == nullptr ? kUsualDocuments : std::stoul(count);
}

}  // namespace

class GeneratedConversion : public SandboxTest, public ::testing::WithParamInterface<int> {
  protected:
    void SetUp() override {
        if (OtherParser::isThere()) {
            parser_.emplace(sandbox);
        }
    }

    // Calls a function with each document, until there are enough and nothing is missing in them.
    template <class Function>
    void forEachDocument(std::uint32_t seed, Function function) {
        DocumentGenerator generator(from_, seed);
        for (std::size_t count = 0; count < documentCount() || !generator.missing().empty();
             ++count) {
            ASSERT_LT(count, std::max(documentCount(), kMostDocuments));
            function(generator.next());
            if (HasFailure()) {
                return;
            }
        }
        EXPECT_EQ(generator.missing(), std::vector<std::string>());
    }

    void expectValid(Version version, const std::string& text) {
        ++converted_;
        EXPECT_EQ(faultsOf(text, version), "") << "to " << version.text();
        if (parser_) {
            toJudge_.push_back({version, text});
        }
        if (toJudge_.size() == kBatch) {
            judge();
        }
    }

    // From 1.7 on newer versions have all that older ones have, but for one value.
    void expectNoLossUp(Version to, const ConvertedText& result) {
        if (from_ < Version(7) || to < from_) {
            return;
        }
        for (const Finding& finding : result.findings.kept()) {
            const bool isKnown = from_ < Version(10) && to >= Version(10) &&
                                 finding.rule == "conversion-value-lost"_rule &&
                                 finding.lost == "alignment-360";
            EXPECT_TRUE(isKnown || finding.severity != Severity::warning)
                << "to " << to.text() << ": " << finding.message();
            knownLosses_ += isKnown ? 1 : 0;
        }
    }

    // The value that was asked for is not in the tag.
    void expectMissing(const std::string& text, const fcpxml::Conversion& conversion) {
        ++refused_[conversion.refusal];
        const std::string tag(conversion.refusedAt.of(text));
        const std::size_t has = conversion.refusal.find(" has no ");
        ASSERT_NE(has, std::string::npos) << conversion.refusal;
        const std::size_t start = has + std::string(" has no ").size();
        const std::string attribute =
            conversion.refusal.substr(start, conversion.refusal.find(',', start) - start);
        EXPECT_TRUE(tag.starts_with("<")) << tag;
        EXPECT_EQ(tag.find(" " + attribute + "="), std::string::npos) << tag;
    }

    // What this program holds to be valid, the other one does, too.
    void judge() {
        for (const auto& [number, lines] : parser_ ? parser_->refusals(toJudge_) : Refusals()) {
            ADD_FAILURE() << "to " << toJudge_[number].version.text() << ": " << lines
                          << toJudge_[number].text;
        }
        judged_ += toJudge_.size();
        toJudge_.clear();
    }

    const Version from_ = Version(GetParam());
    std::size_t converted_ = 0;
    std::size_t judged_ = 0;
    std::size_t knownLosses_ = 0;
    // By the reason.
    std::map<std::string, std::size_t> refused_;

  private:
    using Refusals = std::map<std::size_t, std::string>;

    std::optional<OtherParser> parser_;
    std::vector<VersionedText> toJudge_;
};

TEST_P(GeneratedConversion, makesValidDocumentsOfValidOnes) {
    forEachDocument(7, [this](const std::string& text) {
        ASSERT_EQ(faultsOf(text, from_), "");
        for (int to = fcpxml::kOldestTarget.minor(); to <= Version::kNewestMinor; ++to) {
            const ConvertedText result = convertedText(text, from_, Version(to));
            if (from_ < fcpxml::kOldestTarget && !result.conversion.refusal.empty()) {
                expectMissing(text, result.conversion);
                continue;
            }
            ASSERT_EQ(result.conversion.refusal, "");
            expectValid(Version(to), result.text);
            expectNoLossUp(Version(to), result);
            ASSERT_FALSE(HasFailure()) << result.told << text << "\n\n" << result.text;
        }
    });
    judge();
    EXPECT_GT(converted_, 0U);
    EXPECT_EQ(knownLosses_ != 0, from_ == Version(9));
    RecordProperty("converted", std::to_string(converted_));
    RecordProperty("judged", std::to_string(judged_));
    std::string refusals;
    for (const auto& [reason, count] : refused_) {
        refusals += std::to_string(count) + ": " + reason + "; ";
    }
    RecordProperty("refused", refusals);
}

using GeneratedRoundTrip = GeneratedConversion;

TEST_P(GeneratedRoundTrip, losesNothingButWhatIsReported) {
    forEachDocument(8, [this](const std::string& text) {
        for (int to = fcpxml::kOldestTarget.minor(); to <= Version::kNewestMinor; ++to) {
            const ConvertedText there = convertedText(text, from_, Version(to));
            const ConvertedText back = convertedText(there.text, Version(to), from_);
            ASSERT_EQ(meaningOf(back.text, from_), meaningByWhatWasTold(text, from_, there, back))
                << "by " << Version(to).text() << "\n"
                << there.told << back.told << text << "\n\n"
                << there.text;
            ++converted_;
        }
    });
    EXPECT_GT(converted_, 0U);
    RecordProperty("compared", std::to_string(converted_));
}

INSTANTIATE_TEST_SUITE_P(Versions, GeneratedConversion,
                         ::testing::Range(0, Version::kNewestMinor + 1));
INSTANTIATE_TEST_SUITE_P(Versions, GeneratedRoundTrip,
                         ::testing::Range(fcpxml::kOldestTarget.minor(),
                                          Version::kNewestMinor + 1));

}  // namespace vornic::test
