#include <string>

#include <gtest/gtest.h>

#include "check/Check.h"
#include "check/xmeml/WhiteSpace.h"
#include "report/RuleTable.h"

namespace vornic::xmeml {
namespace {

TEST(XMEMLReferences, areNotJudgedInAFileThatEndsEarly) {
    const Report report =
        checkFile("<xmeml version=\"5\"><bin><name>B</name><children><clip id=\"c\"/>", {});
    EXPECT_EQ(report.findings.count("references-clip-undefined"_rule), 0U);
    for (const GroupRun& run : report.groups) {
        if (run.group == RuleGroup::references) {
            EXPECT_FALSE(run.ran);
            EXPECT_EQ(run.why, "the file could not be read to its end");
        }
    }
}

TEST(XMEMLReferences, ofAMissingFileAreOneFinding) {
    std::string text = "<xmeml version=\"5\"><sequence><media>";
    for (int i = 0; i < 5; ++i) {
        text += "<file id=\"f1\"/><file id=\"f2\"/>";
    }
    const Report report = checkFile(text + "</media></sequence></xmeml>", {});
    EXPECT_EQ(report.findings.count("references-file-undefined"_rule), 2U);
}

TEST(XMEMLReferences, whiteSpaceCountsInsideOfTextAlone) {
    EXPECT_TRUE(equalButForWhiteSpace("<a>\n  <b>x y</b> </a>\n", "<a><b>x y</b></a>"));
    EXPECT_TRUE(equalButForWhiteSpace("<b> x </b>", "<b>x</b>"));
    EXPECT_FALSE(equalButForWhiteSpace("<b>x y</b>", "<b>x  y</b>"));
    EXPECT_FALSE(equalButForWhiteSpace("<b>xy</b>", "<b>x y</b>"));
    EXPECT_FALSE(equalButForWhiteSpace("<b>x</b>", "<b>x</b><c/>"));
}

}  // namespace
}  // namespace vornic::xmeml
