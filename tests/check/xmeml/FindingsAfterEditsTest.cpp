// That the findings which are moved after mends are those that the rules would make.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "check/Check.h"
#include "report/RuleTable.h"
#include "report/XMLFindings.h"
#include "tests/support/texts/RuleFixtures.h"

namespace vornic {

namespace {

using EditList = std::vector<Edit>;

struct Mended {
    std::string bytes;
    EditList edits;
};

// Makes the mends of the markup alone.
Mended mendedMarkup(const std::string& bytes, const FileCheck& before) {
    EditList edits;
    for (const Finding& finding : before.findings().kept()) {
        if (finding.mend && XMLFindings::tells(finding.rule)) {
            edits.insert(edits.end(), finding.mend->edits.begin(), finding.mend->edits.end());
        }
    }
    Mended mended{"", before.toFileOffsets(std::move(edits))};
    std::size_t from = 0;
    for (const Edit& edit : mended.edits) {
        mended.bytes += bytes.substr(from, edit.offset - from) + edit.text;
        from = edit.offset + edit.length;
    }
    mended.bytes += bytes.substr(from);
    return mended;
}

std::vector<std::string> told(const Report& report) {
    std::vector<std::string> told;
    for (const Finding& finding : report.findings.kept()) {
        const Place& where = finding.where;
        std::string line = std::string(ruleOf(finding.rule).id) + " " +
                           std::to_string(static_cast<int>(finding.severity)) + " at " +
                           std::to_string(where.offset) + "+" + std::to_string(where.length) + " " +
                           std::to_string(where.line) + ":" + std::to_string(where.column) + " " +
                           where.path + " " + where.name + " " + where.timecode + ": " +
                           finding.message();
        if (finding.mend) {
            line += " | " + finding.mend->description;
            for (const Edit& edit : finding.mend->edits) {
                line += " " + std::to_string(edit.offset) + "-" + std::to_string(edit.length) +
                        "+" + edit.text;
            }
        }
        told.push_back(std::move(line));
    }
    for (const GroupRun& run : report.groups) {
        told.push_back(std::to_string(static_cast<int>(run.group)) + (run.ran ? " ran" : run.why));
    }
    return told;
}

// @return whether the findings were known without the rules.
bool isKnown(const std::string& bytes, const CheckOptions& options = {}) {
    FileCheck before(bytes, options);
    const Mended mended = mendedMarkup(bytes, before);
    std::optional<FileCheck::Mended> known;
    before.place(mended.edits);
    EXPECT_EQ(told(std::move(before).report(mended.bytes, known)), told(checkFile(bytes, options)));
    const bool hasFindings = known && known->report;
    if (known) {
        const Report report = FileCheck(mended.bytes, options, std::move(*known)).report();
        EXPECT_EQ(told(report), told(checkFile(mended.bytes, options))) << bytes;
    }
    return hasFindings;
}

// Puts an ampersand behind the text of every element, or of every other one.
std::string withAmpersands(std::string_view bytes, std::size_t distance) {
    std::string text;
    std::size_t count = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const bool endsText = bytes.substr(at).starts_with("</") && at != 0 &&
                              bytes[at - 1] != '>' &&
                              static_cast<unsigned char>(bytes[at - 1]) > ' ';
        if (endsText && count++ % distance == 0) {
            text += " & ";
        }
        text += bytes[at];
    }
    return text;
}

TEST(FindingsAfterEdits, areThoseOfTheRulesInEveryFixture) {
    std::size_t known = 0;
    std::size_t tried = 0;
    for (const test::RuleFixture& fixture : test::ruleFixtures()) {
        if (fixture.bytes.find("<xmeml") == std::string::npos) {
            continue;
        }
        for (const std::size_t distance : {1, 2, 3, 7}) {
            SCOPED_TRACE(fixture.rule + "/" + fixture.name);
            ++tried;
            known += isKnown(withAmpersands(fixture.bytes, distance), fixture.options) ? 1 : 0;
        }
    }
    EXPECT_GT(tried, 200U);
    // The others have paths that are not as they should be, or definitions that are repeated.
    EXPECT_GT(known, tried / 3);
}

std::string project(const std::string& inside) {
    return "<?xml version=\"1.0\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n<sequence><name>One "
           "& "
           "two</name><duration>-5</duration><rate><timebase>25</timebase></rate>" +
           inside + "</sequence>\n</xmeml>\n";
}

TEST(FindingsAfterEdits, areKnownWhereOnlyTheWritingOfTextsChanges) {
    EXPECT_TRUE(isKnown(project("")));
    EXPECT_TRUE(isKnown(project("<marker><name>a & b</name><in>5 & 6</in><out>&</out></marker>")));
    EXPECT_TRUE(isKnown(project("<!-- a -- b --><comments>x ]]> y</comments>")));
}

TEST(FindingsAfterEdits, areLookedForWhereARuleMayReadSomethingElse) {
    // What goes, or was taken for a tag, changes what the element says.
    EXPECT_FALSE(isKnown(project("<marker><name>a < b</name></marker>")));
    EXPECT_FALSE(isKnown(project("<marker><name>a\v</name></marker>")));
    // The mend of the path was made for the path as it is written.
    EXPECT_FALSE(isKnown(project("<pathurl>C:\\a & b.mov</pathurl>")));
    // Definitions of one file are compared as they are written.
    const std::string file =
        "<file id=\"f\"><name>x</name><pathurl>file://localhost/x</pathurl></file>";
    EXPECT_FALSE(isKnown(project(file + file)));
    // Of long names the beginning counts.
    EXPECT_FALSE(
        isKnown(project("<marker><name>" + std::string(2000, 'x') + " & y</name></marker>")));
    // One finding is only counted.
    EXPECT_FALSE(isKnown(project("<comments>a</comments><marker/><marker/>"), {.mostOfARule = 1}));
}

TEST(FindingsAfterEdits, tellWhatTheEditsMakeOfCharacters) {
    // What the mends write, with what stands beside them.
    EXPECT_TRUE(isKnown(project("<comments>a &# b</comments>")));
    EXPECT_TRUE(isKnown(project("<comments>&#x;&#233;</comments>")));
    EXPECT_TRUE(isKnown(project("<comments>\xC2\x85 & \xEF\xBC\x81</comments>")));
    EXPECT_TRUE(isKnown(project("<comments>&&#0000000233;</comments>")));
}

}  // namespace

}  // namespace vornic
