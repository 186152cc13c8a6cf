#include <string>

#include <gtest/gtest.h>

#include "app/window/FindingsTable.h"
#include "report/RuleTable.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {
namespace {

std::string project(const std::string& inside) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n" +
           inside + "\n</xmeml>\n";
}

class FindingsTableTest : public SandboxTest {
  protected:
    FindingsTable tableOf(const std::string& after) {
        return FindingsTable(inspect(sandbox.write("cut.xml", after), "", {}));
    }
    FindingsTable tableOf(const std::string& before, const std::string& after) {
        return FindingsTable(
            inspect(sandbox.write("cut.xml", after), sandbox.write("before.xml", before), {}));
    }
    static const ListedFinding* first(const FindingsTable& table, std::string_view rule) {
        for (const ListedFinding& listed : table.findings()) {
            if (ruleOf(listed.finding->rule).id == rule) {
                return &listed;
            }
        }
        return nullptr;
    }
};

TEST_F(FindingsTableTest, showsWhatAMendWouldMakeOfALine) {
    const FindingsTable table = tableOf(project("    <sequence><name>R & D</name></sequence>"));
    const ListedFinding* const listed = first(table, "xml-stray-ampersand");
    ASSERT_NE(listed, nullptr);
    EXPECT_EQ(listed->state, FindingState::found);
    EXPECT_EQ(table.before(*listed), "<sequence><name>R & D</name></sequence>");
    EXPECT_EQ(table.after(*listed), "<sequence><name>R &amp; D</name></sequence>");
    EXPECT_TRUE(FindingsTable::isSafelyMended(*listed));
    EXPECT_NE(table.placeOf(*listed).find("ine 4"), std::string::npos);
}

TEST_F(FindingsTableTest, putsWhatStandsBehindAFaultOfTheMarkupBelowIt) {
    const FindingsTable table = tableOf(project(
        "<sequence><name>R\xEF\xBC\x81</name></sequence>\n<sequence><name>a</nam></sequence>\n"
        "<sequence><name>b\xEF\xBC\x81</name></sequence>"));
    const auto& listed = table.findings();
    const ListedFinding* const fault = first(table, "xml-mismatched-end-tag");
    ASSERT_NE(fault, nullptr);
    const auto faultIndex = static_cast<std::size_t>(fault - listed.data());
    std::size_t before = 0;
    std::size_t behind = 0;
    for (std::size_t index = 0; index < listed.size(); ++index) {
        const bool isBehind = listed[index].finding->where.line > fault->finding->where.line;
        if (index != faultIndex) {
            EXPECT_EQ(table.causeOf(index), isBehind ? faultIndex : index);
            (isBehind ? behind : before) += 1;
        }
    }
    EXPECT_GT(before, 0U);
    EXPECT_GT(behind, 0U);
}

TEST_F(FindingsTableTest, shortensALongNameInAPlace) {
    const std::string name(1'000'000, '\x01');
    const FindingsTable table = tableOf(
        project("<sequence><name>" + name + "</name><duration>R & D</duration></sequence>"));
    for (const ListedFinding& listed : table.findings()) {
        EXPECT_LT(table.placeOf(listed).size(), 200U) << listed.finding->message();
    }
    ASSERT_FALSE(table.findings().empty());
}

TEST_F(FindingsTableTest, showsWhatALineHasBecome) {
    const FindingsTable table = tableOf(project("<sequence><name>R & D</name></sequence>"),
                                        project("    <sequence><name>R &amp; D</name></sequence>"));
    const ListedFinding* const listed = first(table, "xml-stray-ampersand");
    ASSERT_NE(listed, nullptr);
    EXPECT_EQ(listed->state, FindingState::gone);
    EXPECT_TRUE(listed->isInOriginal);
    EXPECT_FALSE(FindingsTable::canBeMended(*listed));
    EXPECT_EQ(table.before(*listed), "<sequence><name>R & D</name></sequence>");
    EXPECT_EQ(table.after(*listed), "<sequence><name>R &amp; D</name></sequence>");
    EXPECT_NE(table.placeOf(*listed).find("of the original"), std::string::npos);
}

TEST_F(FindingsTableTest, listsOnceWhatBothFilesHave) {
    const std::string text = project("<sequence><name>R & D</name></sequence>");
    const FindingsTable table = tableOf(text, "\n" + text);
    std::size_t count = 0;
    for (const ListedFinding& listed : table.findings()) {
        if (ruleOf(listed.finding->rule).id == "xml-stray-ampersand") {
            ++count;
            EXPECT_EQ(listed.state, FindingState::left);
            EXPECT_FALSE(listed.isInOriginal);
        }
    }
    EXPECT_EQ(count, 1U);
}

TEST_F(FindingsTableTest, knowsAFindingAgainWhoseNameWasRepaired) {
    const FindingsTable table = tableOf(project("<sequence><name>C\vut</name></sequence>"),
                                        project("<sequence><name>Cut</name></sequence>"));
    ASSERT_NE(first(table, "structure-missing-part"), nullptr);
    EXPECT_EQ(first(table, "structure-missing-part")->state, FindingState::left);
    EXPECT_EQ(table.findings().size(), 2U);
}

TEST_F(FindingsTableTest, marksWhatTheOriginalDidNotHave) {
    const FindingsTable table = tableOf(project("<sequence><name>R</name></sequence>"),
                                        project("<sequence><name>R & D</name></sequence>"));
    ASSERT_NE(first(table, "xml-stray-ampersand"), nullptr);
    EXPECT_EQ(first(table, "xml-stray-ampersand")->state, FindingState::appeared);
}

TEST_F(FindingsTableTest, groupsFindingsOfARuleAndCountsThem) {
    const FindingsTable table = tableOf(project("<sequence><name>a & b & c & d</name></sequence>"));
    const FindingsRows rows = table.arranged({.text = "ampersand"});
    ASSERT_EQ(rows.top.size(), 1U);
    const FindingsRow& group = rows.rows[rows.top[0]];
    EXPECT_TRUE(group.isGroup);
    EXPECT_EQ(group.count, 3U);
    ASSERT_EQ(group.children.size(), 3U);
    EXPECT_EQ(rows.rows[group.children[2]].parent, rows.top[0]);
}

TEST_F(FindingsTableTest, countsInAGroupWhatIsNotListed) {
    std::string names;
    for (std::size_t count = 0; count < kMostListedOfARule + 10; ++count) {
        names += "&";
    }
    const FindingsTable table = tableOf(project("<sequence><name>" + names + "</name></sequence>"));
    const FindingsRows rows = table.arranged({.text = {}});
    std::uint64_t most = 0;
    for (const std::size_t row : rows.top) {
        most = std::max(most, rows.rows[row].count);
    }
    EXPECT_EQ(most, kMostListedOfARule + 10);
}

TEST_F(FindingsTableTest, showsOnlyTheWantedSeverities) {
    const FindingsTable table = tableOf(project("<sequence><name>a & b</name></sequence>"));
    FindingsChoice choice;
    choice.severities = {true, true, false};
    for (const FindingsRow& row : table.arranged(choice).rows) {
        EXPECT_NE(table.findings()[row.listed].finding->severity, Severity::error);
    }
    EXPECT_GT(table.arranged({}).rows.size(), table.arranged(choice).rows.size());
}

TEST_F(FindingsTableTest, findsTextInMessagesAndRules) {
    const FindingsTable table = tableOf(project("<sequence><name>a & b</name></sequence>"));
    EXPECT_EQ(table.arranged({.text = "XML-STRAY"}).rows.size(), 1U);
    EXPECT_TRUE(table.arranged({.text = "no such words"}).rows.empty());
}

TEST_F(FindingsTableTest, sortsByWeightAndByPlace) {
    const FindingsTable table =
        tableOf(project("<sequence><name>\xC2\x93"
                        "a</name></sequence>\n<sequence>a & b</sequence>"));
    const auto severityAt = [&](const FindingsRows& rows, std::size_t index) {
        return table.findings()[rows.rows[rows.top[index]].listed].finding->severity;
    };
    const FindingsRows byWeight = table.arranged({});
    for (std::size_t index = 1; index < byWeight.top.size(); ++index) {
        EXPECT_GE(severityAt(byWeight, index - 1), severityAt(byWeight, index));
    }
    const FindingsRows byPlace =
        table.arranged({.order = FindingsOrder::place, .isDescending = false});
    for (std::size_t index = 1; index < byPlace.top.size(); ++index) {
        const auto offsetAt = [&](std::size_t at) {
            return table.findings()[byPlace.rows[byPlace.top[at]].listed].finding->where.offset;
        };
        EXPECT_LE(offsetAt(index - 1), offsetAt(index));
    }
    ASSERT_GT(byPlace.top.size(), 1U);
}

TEST_F(FindingsTableTest, marksTheLineAmongThoseAround) {
    const FindingsTable table = tableOf(project("<sequence>\n<name>a & b</name>\n</sequence>"));
    const ListedFinding* const listed = first(table, "xml-stray-ampersand");
    ASSERT_NE(listed, nullptr);
    EXPECT_EQ(table.linesAround(*listed),
              "  2  <!DOCTYPE xmeml>\n  3  <xmeml version=\"5\">\n  4  <sequence>\n"
              "> 5  <name>a & b</name>\n  6  </sequence>\n  7  </xmeml>\n  8  \n");
}

TEST_F(FindingsTableTest, shortensALongLineAroundItsPlace) {
    const std::string filler(500, 'x');
    const FindingsTable table =
        tableOf(project("<sequence><name>" + filler + " & " + filler + "</name></sequence>"));
    const ListedFinding* const listed = first(table, "xml-stray-ampersand");
    ASSERT_NE(listed, nullptr);
    const std::string before = table.before(*listed);
    EXPECT_LT(before.size(), 110U);
    EXPECT_NE(before.find(" & "), std::string::npos);
    EXPECT_NE(table.after(*listed).find("&amp;"), std::string::npos);
}

}  // namespace
}  // namespace vornic::test
