// What the rules of XMEML offer as a mend takes the finding away and brings no other.

#include <algorithm>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "check/Check.h"
#include "job/MendedBytes.h"
#include "report/RuleTable.h"
#include "tests/support/texts/RuleFixtures.h"

namespace vornic::xmeml {
namespace {

using Counts = std::map<std::string_view, std::uint64_t>;

Counts countsOf(const Report& report) {
    Counts counts;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        const RuleId rule{static_cast<std::uint16_t>(index)};
        counts[ruleOf(rule).id] = report.findings.count(rule);
    }
    return counts;
}

std::string mended(std::string bytes, const Mend& mend) {
    for (auto edit = mend.edits.rbegin(); edit != mend.edits.rend(); ++edit) {
        bytes.replace(edit->offset, edit->length, edit->text);
    }
    return bytes;
}

TEST(XMEMLMends, takeTheirFindingAwayAndBringNoOther) {
    int count = 0;
    for (const test::RuleFixture& fixture : test::ruleFixtures()) {
        const Report report = checkFile(fixture.bytes, fixture.options);
        if (report.kind != "xmeml") {
            continue;
        }
        const Counts before = countsOf(report);
        for (const Finding& finding : report.findings.kept()) {
            if (!finding.mend || ruleOf(finding.rule).id != fixture.rule) {
                continue;
            }
            const std::string text = mended(fixture.bytes, *finding.mend);
            const Counts after = countsOf(checkFile(text, fixture.options));
            for (const auto& [rule, found] : before) {
                EXPECT_LE(after.at(rule) + (rule == fixture.rule ? 1 : 0), found)
                    << rule << " after " << fixture.rule << "/" << fixture.name << "\n"
                    << text;
            }
            ++count;
        }
    }
    EXPECT_GE(count, 30);
}

// Each is asked for, where it has to be.
TEST(XMEMLMends, areMadeInEveryFileThatBreaksTheirRule) {
    for (const test::RuleFixture& fixture : test::ruleFixtures()) {
        const Report report = checkFile(fixture.bytes, fixture.options);
        if (report.kind != "xmeml" || !fixture.breaks()) {
            continue;
        }
        MendRequest request;
        request.asked = {*findRule(fixture.rule)};
        request.check = fixture.options;
        const MendedBytes mended = MendedBytes::of(fixture.bytes, request);
        EXPECT_EQ(mended.refusal, "") << fixture.rule << "/" << fixture.name;
        const bool isMended =
            std::any_of(report.findings.kept().begin(), report.findings.kept().end(),
                        [](const Finding& finding) { return finding.mend.has_value(); });
        EXPECT_EQ(mended.edits.empty(), !isMended) << fixture.rule << "/" << fixture.name;
    }
}

std::string item(const std::string& id, const std::string& links) {
    return "<clipitem id=\"" + id +
           "\"><name>A</name><duration>9</duration><rate><timebase>25"
           "</timebase><ntsc>FALSE</ntsc></rate><in>0</in><out>1</out><start>0</start><end>1</"
           "end>" +
           links + "</clipitem>";
}

std::string link(const std::string& id, const std::string& track, const std::string& clip) {
    return "<link><linkclipref>" + id + "</linkclipref><mediatype>video</mediatype><trackindex>" +
           track + "</trackindex><clipindex>" + clip + "</clipindex></link>";
}

std::string sequence(const std::string& id, const std::string& tracks) {
    return "<sequence id=\"" + id +
           "\"><name>S</name><duration>9</duration><rate><timebase>25"
           "</timebase><ntsc>FALSE</ntsc></rate><media><video>" +
           tracks + "</video></media></sequence>";
}

std::string withIdsMended(const std::string& text) {
    MendRequest request;
    request.asked = {*findRule("references-clip-item-repeated"),
                     *findRule("references-file-redefined")};
    const MendedBytes mended = MendedBytes::of(text, request);
    EXPECT_EQ(mended.refusal, "");
    return mended.bytes;
}

TEST(XMEMLMends, ofClipItemsWithOneIdFollowTheLinksOfTheirTimeline) {
    const auto file = [](const std::string& second) {
        return "<xmeml version=\"5\">" +
               sequence("s1", "<track>" + item("c1", link("c1", "1", "1")) + "</track>") +
               sequence("s2", "<track>" + item(second, link(second, "1", "1")) + "</track>") +
               "</xmeml>";
    };
    EXPECT_EQ(withIdsMended(file("c1")), file("c1-2"));
}

TEST(XMEMLMends, ofClipItemsWithOneIdFollowTheNumbersOfLinks) {
    const auto file = [](const std::string& second, const std::string& number) {
        const std::string links = link("c1", "1", "1") + link(second, "2", number);
        return "<xmeml version=\"5\">" +
               sequence("s1", "<track>" + item("c1", links) + "</track><track>" +
                                  item(second, links) + "</track>") +
               "</xmeml>";
    };
    EXPECT_EQ(withIdsMended(file("c1", "1")), file("c1-2", "1"));
    EXPECT_EQ(withIdsMended(file("c1", "2")), file("c1", "2")) << "no clip item is the second";
}

TEST(XMEMLMends, ofTwoFilesWithOneIdNeedThatNothingRefersToIt) {
    const auto file = [](const std::string& second, const std::string& reference) {
        return "<xmeml version=\"5\">" +
               sequence("s1", "<track>" + item("c1", "<file id=\"f\"><name>A</name></file>") +
                                  "</track><track>" +
                                  item("c2", "<file id=\"" + second + "\"><name>B</name></file>") +
                                  "</track><track>" + item("c3", reference) + "</track>") +
               "</xmeml>";
    };
    EXPECT_EQ(withIdsMended(file("f", "")), file("f-2", ""));
    const std::string used = file("f", "<file id=\"f\"/>");
    EXPECT_EQ(withIdsMended(used), used);
}

TEST(XMEMLMends, ofARepeatedFileLeaveItsTagAndTakeItsContent) {
    const std::string sequence =
        "<sequence "
        "id=\"s\"><duration>2</duration><rate><timebase>25</timebase></rate><media><video>"
        "<track><clipitem "
        "id=\"a\"><name>A</name><duration>9</duration><start>0</start><end>1</end>";
    const std::string file = "<file id=\"f\"><name>F</name></file>";
    const std::string text = "<xmeml version=\"5\">" + sequence + file +
                             "</clipitem><clipitem id=\"b\"><name>B</name><duration>9</duration>"
                             "<start>1</start><end>2</end>" +
                             file + "</clipitem></track></video></media></sequence></xmeml>";
    const Report report = checkFile(text, {});
    for (const Finding& finding : report.findings.kept()) {
        if (ruleOf(finding.rule).id == "references-file-repeated") {
            EXPECT_EQ(finding.mend->confidence, Confidence::safe);
            std::string wanted = text;
            wanted.replace(wanted.rfind(file), file.size(), "<file id=\"f\"/>");
            EXPECT_EQ(mended(text, *finding.mend), wanted);
            return;
        }
    }
    FAIL() << "the repeated file was not found";
}

}  // namespace
}  // namespace vornic::xmeml
