#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "check/Check.h"
#include "repair/pipeline/CharacterFilter.h"
#include "report/RuleTable.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/texts/SampleFiles.h"
#include "xml/text/TextDecoding.h"

namespace vornic {
namespace {

// Counts the characters that the filter of a repair takes out.
class RemovalCounter final : public CharacterFilterObserver {
  public:
    [[nodiscard]] std::uint64_t count() const { return count_; }

    bool isCancelled() override { return false; }
    // One beyond the Basic Multilingual Plane is told twice.
    void removedUnit(std::int64_t /*index*/, TextSpan character) override {
        count_ += character.offset != last_ ? 1 : 0;
        last_ = character.offset;
    }
    bool finishedUnits(std::int64_t /*first*/, std::int64_t /*last*/) override { return true; }

  private:
    std::uint64_t count_ = 0;
    std::size_t last_ = std::string::npos;
};

std::string project(const std::string& content) {
    return "<?xml version=\"1.0\"?>\n<!-- a -->\n<xmeml version=\"5\"><bin><name>B" + content +
           "</name><children/></bin></xmeml>";
}

void expectAsManyAsTheFilterRemoves(const std::string& text) {
    RemovalCounter removals;
    ASSERT_TRUE(filterInvalidCharacters(text, removals));
    CheckOptions options;
    options.mostOfARule = 1;
    EXPECT_EQ(checkFile(text, options).findings.count("characters-removed-by-repair"_rule),
              removals.count())
        << text;
}

bool readsAsAProject(const std::string& text) {
    const Report report = checkFile(text, {});
    const bool isProject = report.kind == "xmeml" || report.kind == "fcpxml";
    return isProject && report.findings.count("xml-forbidden-character"_rule) == 0;
}

TEST(Characters, areThoseThatTheFilterOfARepairTakesOut) {
    const std::string mark = "\xEF\xBC\x81";
    for (const std::string& content :
         {mark, mark + mark + "x" + mark, "<![CDATA[" + mark + "]]>" + mark,
          "<!-- " + mark + " > " + mark + " <![CDATA[ " + mark + " ]]> -->",
          "<![CDATA[ > " + mark + " ]]> >" + mark, "<x y='" + mark + "'/>", "<?p " + mark + "?>",
          std::string("\xED\x9F\xBF\xEE\x80\x80\xF0\x9F\x9A\xA2"), "&lt;" + mark + "&gt;"}) {
        expectAsManyAsTheFilterRemoves(project(content));
    }
}

TEST(Characters, beyondTheBasicMultilingualPlaneAreOneEach) {
    CheckOptions options;
    const Report report = checkFile(project("\xF0\x9F\x9A\xA2\xF0\x9F\x9A\xA2"), options);
    EXPECT_EQ(report.findings.count("characters-removed-by-repair"_rule), 2U);
}

TEST(Characters, ofSamplesAreThoseThatTheFilterOfARepairTakesOut) {
    const std::optional<std::string> samples = test::samplesFolder();
    if (!samples) {
        GTEST_SKIP() << "VORNIC_SAMPLES is not set";
    }
    std::vector<std::string> paths = test::filesBelow(*samples + "/fcpxml");
    for (const std::string& path : test::filesBelow(*samples + "/xmeml")) {
        paths.push_back(path);
    }
    for (const std::string& path : paths) {
        ErrorSlot error;
        const std::optional<std::string> text = textFromUTF8(test::readBytes(path), error);
        if (!text || !readsAsAProject(*text)) {
            continue;
        }
        RemovalCounter removals;
        ASSERT_TRUE(filterInvalidCharacters(*text, removals)) << path;
        CheckOptions options;
        options.mostOfARule = 1;
        EXPECT_EQ(checkFile(*text, options).findings.count("characters-removed-by-repair"_rule),
                  removals.count())
            << path;
    }
}

TEST(Characters, thatAreOneAndWrittenAsTwoHalvesAreOneFindingWithTheCharacterAsAMend) {
    const std::string text = project("&#xD83D;&#xDEA2; &#55357;&#56994; &#xDEA2;&#xD83D;");
    const Report report = checkFile(text, {});
    EXPECT_EQ(report.findings.count("characters-half-pair"_rule), 4U);
    EXPECT_EQ(report.findings.count("xml-stray-ampersand"_rule), 0U);
    for (const Finding& finding : report.findings.kept()) {
        if (finding.rule != "characters-half-pair"_rule) {
            continue;
        }
        ASSERT_TRUE(finding.mend && finding.mend->edits.size() == 1);
        const bool isPair = finding.where.length > 9;
        EXPECT_EQ(finding.mend->confidence, isPair ? Confidence::safe : Confidence::ask);
        EXPECT_EQ(finding.mend->edits[0].text, isPair ? "&#x1f6a2;" : "");
    }
}

TEST(Characters, aMarkAtTheBeginningIsReportedOnce) {
    const Report report = checkFile(
        "<?xml version=\"1.0\"?>\n\xEF\xBB\xBF<xmeml version=\"5\">"
        "<bin><name>B</name><children/></bin></xmeml>",
        {});
    EXPECT_EQ(report.findings.count("xml-misplaced-byte-order-mark"_rule), 1U);
    EXPECT_EQ(report.findings.count("characters-removed-by-repair"_rule), 0U);
}

}  // namespace
}  // namespace vornic
