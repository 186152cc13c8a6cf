#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "app/window/FindingsReport.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {
namespace {

class FindingsReportTest : public SandboxTest {
  protected:
    const std::string before = "<xmeml version=\"5\">\n<a>x & <b>\xE2\x80\xAE</b></a></xmeml>\n";
    const std::string after = "<xmeml version=\"5\">\n<a>x &amp; <b>\xE2\x80\xAE</b></a></xmeml>\n";
    const FindingsTable table{
        inspect(sandbox.write("<cut>.xml", after), sandbox.write("before.xml", before), {})};
    const FindingsReportHead head = reportHeadFor(table, "1.2.3");
};

TEST_F(FindingsReportTest, reportsFileOriginalDigestsVersionAndWhatHasBecomeOfFindings) {
    const std::string text = findingsAsText(table, head);
    EXPECT_NE(text.find("File: " + sandbox.path("<cut>.xml") + "\n"), std::string::npos);
    EXPECT_NE(text.find("Original: " + sandbox.path("before.xml") + "\n"), std::string::npos);
    EXPECT_NE(text.find("Program: Vornic 1.2.3\n"), std::string::npos);
    EXPECT_NE(text.find("SHA-256: " + head.digest + "\n"), std::string::npos);
    EXPECT_EQ(head.digest.size(), 64U);
    EXPECT_NE(head.digest, head.originalDigest);
    EXPECT_NE(text.find("(xml-stray-ampersand), Gone: "), std::string::npos);
    EXPECT_NE(text.find("    + <a>x &amp; "), std::string::npos);
}

TEST_F(FindingsReportTest, escapesWhatFilesHoldInHTML) {
    const std::string html = findingsAsHTML(table, head);
    EXPECT_NE(html.find("&lt;cut&gt;.xml"), std::string::npos);
    EXPECT_EQ(html.find("<cut>"), std::string::npos);
    EXPECT_NE(html.find("&lt;a&gt;x &amp; "), std::string::npos);
    EXPECT_EQ(html.find("\xE2\x80\xAE"), std::string::npos) << "it would turn the text around";
}

TEST_F(FindingsReportTest, isJSONWithTheReportsOfBothFiles) {
    const auto json = nlohmann::json::parse(findingsAsJSON(table, head));
    EXPECT_EQ(json["version"], "1.2.3");
    EXPECT_EQ(json["file"]["sha256"], head.digest);
    EXPECT_EQ(json["file"]["report"]["report"], 1);
    EXPECT_EQ(json["original"]["path"], sandbox.path("before.xml"));
    EXPECT_EQ(json["original"]["report"]["files"][0]["rules"]["xml-stray-ampersand"], 1);
    EXPECT_FALSE(json["file"]["report"]["files"][0]["rules"].contains("xml-stray-ampersand"));
}

TEST_F(FindingsReportTest, leavesOutTheDigestOfAFileThatHasChangedSince) {
    sandbox.write("<cut>.xml", "<other/>");
    EXPECT_EQ(reportHeadFor(table, "1").digest, "");
}

}  // namespace
}  // namespace vornic::test
