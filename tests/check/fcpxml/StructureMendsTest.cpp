#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "check/Check.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

std::string withClip(const std::string& parts) {
    return "<fcpxml version=\"1.10\"><resources><format id=\"r1\"/></resources><project><sequence "
           "format=\"r1\"><spine>\n  <clip offset=\"0s\" duration=\"5s\">\n" +
           parts + "  </clip>\n</spine></sequence></project></fcpxml>";
}

// The text with the mend of its only finding made; nothing when it has none.
std::optional<std::string> mended(std::string text, Confidence confidence = Confidence::safe) {
    const Report report = checkFile(text, {});
    EXPECT_EQ(report.findings.kept().size(), 1U);
    if (report.findings.kept().empty() || !report.findings.kept().front().mend) {
        return std::nullopt;
    }
    const Mend& mend = *report.findings.kept().front().mend;
    EXPECT_EQ(mend.confidence, confidence);
    for (auto edit = mend.edits.rbegin(); edit != mend.edits.rend(); ++edit) {
        text.replace(edit->offset, edit->length, edit->text);
    }
    return text;
}

// The text with the mends of all findings made.
std::string withAllMends(std::string text) {
    const Report report = checkFile(text, {});
    std::vector<Edit> edits;
    for (const Finding& finding : report.findings.kept()) {
        if (finding.mend) {
            edits.insert(edits.end(), finding.mend->edits.begin(), finding.mend->edits.end());
        }
    }
    std::sort(edits.begin(), edits.end(),
              [](const Edit& left, const Edit& right) { return left.offset > right.offset; });
    for (const Edit& edit : edits) {
        text.replace(edit.offset, edit.length, edit.text);
    }
    return text;
}

}  // namespace

TEST(StructureMends, putAPartWhereItsOrderHasOnePlace) {
    EXPECT_EQ(mended(withClip("    <adjust-volume/>\n    <marker start=\"0s\" value=\"a\"/>\n"
                              "    <note>n</note>\n")),
              withClip("    <note>n</note>\n    <adjust-volume/>\n"
                       "    <marker start=\"0s\" value=\"a\"/>\n"));
    EXPECT_EQ(mended(withClip("    <note>n</note>\n    <adjust-volume/>\n    <adjust-blend/>\n"
                              "    <marker start=\"0s\" value=\"a\"/>\n")),
              withClip("    <note>n</note>\n    <adjust-blend/>\n    <adjust-volume/>\n"
                       "    <marker start=\"0s\" value=\"a\"/>\n"));
}

TEST(StructureMends, doNotChooseAmongSeveralPlaces) {
    EXPECT_EQ(mended(withClip("    <gap duration=\"1s\"/>\n    <gap duration=\"1s\"/>\n"
                              "    <marker start=\"0s\" value=\"a\"/>\n"
                              "    <gap duration=\"2s\"/>\n")),
              std::nullopt);
}

TEST(StructureMends, leaveAPartThatHasNoPlace) {
    EXPECT_EQ(mended(withClip("    <note>n</note>\n    <adjust-volume/>\n    <note>n</note>\n")),
              std::nullopt);
}

TEST(StructureMends, writeSampleRatesAsSequencesHaveThem) {
    const auto sequence = [](const std::string& rate) {
        std::string text = withClip("");
        return text.replace(text.find("<sequence"), 9, "<sequence audioRate=\"" + rate + "\"");
    };
    EXPECT_EQ(mended(sequence("44100")), sequence("44.1k"));
    EXPECT_EQ(mended(sequence("22050")), std::nullopt);
}

TEST(StructureMends, putThePathOfAnAssetIntoItsMediaRep) {
    const auto asset = [](const std::string& rest) {
        return "<fcpxml version=\"1.10\"><resources><asset id=\"r1\"" + rest +
               "</resources></fcpxml>";
    };
    const std::string part = "<media-rep kind=\"original-media\" src=\"file:///a.mov\"/>";
    EXPECT_EQ(mended(asset(" src=\"file:///a.mov\"/>"), Confidence::ask),
              asset(">" + part + "</asset>"));
    EXPECT_EQ(
        mended(asset(" src=\"file:///a.mov\" name=\"A\"><metadata/></asset>"), Confidence::ask),
        asset(" name=\"A\">" + part + "<metadata/></asset>"));
    EXPECT_EQ(mended(asset(" src=\"file:///a.mov\">" + part + "</asset>"), Confidence::ask),
              asset(">" + part + "</asset>"));
    EXPECT_EQ(mended(asset(" src=\"file:///b.mov\">" + part + "</asset>"), Confidence::ask),
              std::nullopt);
}

TEST(StructureMends, takeTheBookmarkOfAnAssetAlong) {
    const std::string file =
        "<fcpxml version=\"1.10\"><resources><asset id=\"r1\" src=\"file:///a.mov\">"
        "<bookmark>b</bookmark></asset></resources></fcpxml>";
    const Report report = checkFile(file, {});
    ASSERT_EQ(report.findings.kept().size(), 2U);
    ASSERT_TRUE(report.findings.kept().front().mend.has_value());
    std::string text = file;
    const std::vector<Edit>& edits = report.findings.kept().front().mend->edits;
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
        text.replace(edit->offset, edit->length, edit->text);
    }
    EXPECT_TRUE(checkFile(text, {}).findings.kept().empty());
}

TEST(StructureMends, putThePathOfAMediaRepIntoItsAsset) {
    const auto file = [](const std::string& asset) {
        return "<fcpxml version=\"1.8\"><resources>" + asset + "</resources></fcpxml>";
    };
    const std::string part = "<media-rep kind=\"original-media\" src=\"file:///a.mov\"/>";
    EXPECT_EQ(withAllMends(file("<asset id=\"r1\">\n  " + part + "\n</asset>")),
              file("<asset src=\"file:///a.mov\" id=\"r1\">\n</asset>"));
    EXPECT_EQ(withAllMends(file("<asset id=\"r1\"><media-rep src='file:///a%22.mov'><bookmark>b"
                                "</bookmark></media-rep><metadata/></asset>")),
              file("<asset src='file:///a%22.mov' id=\"r1\"><bookmark>b</bookmark><metadata/>"
                   "</asset>"));
    EXPECT_EQ(withAllMends(file("<asset id=\"r1\" src=\"file:///a.mov\">" + part + "</asset>")),
              file("<asset id=\"r1\" src=\"file:///a.mov\"></asset>"));
    for (const std::string& unclear :
         {"<asset id=\"r1\" src=\"file:///b.mov\">" + part + "</asset>",
          "<asset id=\"r1\">" + part + part + "</asset>"}) {
        EXPECT_EQ(withAllMends(file(unclear)), file(unclear));
    }
}

TEST(StructureMends, leaveNothingInAnAssetThatHasToBeEmpty) {
    const auto file = [](const std::string& asset) {
        return "<fcpxml version=\"1.0\"><project><resources>" + asset +
               "<format id=\"r2\"/></resources><sequence format=\"r2\"><spine/></sequence>"
               "</project></fcpxml>";
    };
    const std::string part = "<media-rep kind=\"original-media\" src=\"file:///a.mov\"/>";
    EXPECT_EQ(mended(file("<asset id=\"r1\">\n  " + part + "\n</asset>"), Confidence::ask),
              file("<asset src=\"file:///a.mov\" id=\"r1\"></asset>"));
    EXPECT_EQ(mended(file("<asset id=\"r1\">" + part + "<!-- --></asset>")), std::nullopt);
}

TEST(StructureMends, giveATwinAnIdOfItsOwnWhereTheKindSaysWhichIsMeant) {
    const auto file = [](const std::string& format, const std::string& reference) {
        return "<fcpxml version=\"1.10\"><resources><asset id=\"r1\"><media-rep "
               "src=\"file:///a.mov\"/></asset><format id=\"" +
               format + "\"/><format id=\"r1-2\"/></resources><project><sequence format=\"" +
               reference +
               "\"><spine><asset-clip ref=\"r1\" offset=\"0s\" duration=\"1s\"/></spine></sequence>"
               "</project></fcpxml>";
    };
    EXPECT_EQ(withAllMends(file("r1", "r1")), file("r1-3", "r1-3"));
}

TEST(StructureMends, giveStylesOfTitlesIdsOfTheirOwn) {
    const auto titles = [](const std::string& second, const std::string& third) {
        const auto title = [](const std::string& id) {
            return "<title ref=\"r2\" offset=\"0s\" duration=\"1s\"><text><text-style ref=\"" + id +
                   "\">x</text-style></text><text-style-def id=\"" + id + "\"><text-style font=\"" +
                   id + "\"/></text-style-def></title>";
        };
        return "<fcpxml version=\"1.10\"><resources><effect id=\"r2\" "
               "uid=\"u\"/></resources><event>"
               "<clip duration=\"9s\">" +
               title("ts1") + title(second) + title(third) + "</clip></event></fcpxml>";
    };
    std::string broken = titles("ts1", "ts1");
    EXPECT_EQ(checkFile(broken, {}).findings.count("structure-repeated-id"_rule), 2U);
    std::string mended = withAllMends(broken);
    for (const char* font : {"font=\"ts1-2\"", "font=\"ts1-3\""}) {
        // What a style says is no reference.
        EXPECT_EQ(mended.find(font), std::string::npos);
    }
    EXPECT_EQ(checkFile(mended, {}).findings.count("structure-repeated-id"_rule), 0U);
    EXPECT_NE(mended.find("<text-style ref=\"ts1-3\">x</text-style></text><text-style-def "
                          "id=\"ts1-3\">"),
              std::string::npos)
        << mended;
}

TEST(StructureMends, doNotGuessWhichOfTwoIsMeant) {
    const auto formats = [](const std::string& second, const std::string& name) {
        return "<fcpxml version=\"1.10\"><resources><format id=\"r1\" name=\"A\"/><format id=\"" +
               second + "\" name=\"" + name +
               "\"/></resources><project><sequence format=\"r1\"><spine/></sequence></project>"
               "</fcpxml>";
    };
    EXPECT_EQ(withAllMends(formats("r1", "B")), formats("r1", "B"));
    EXPECT_EQ(withAllMends(formats("r1", "A")), formats("r1-2", "A")) << "they are alike";
    const std::string unused =
        "<fcpxml version=\"1.10\"><resources><effect id=\"r1\" uid=\"a\"/><effect id=\"r1\" "
        "uid=\"b\"/></resources></fcpxml>";
    EXPECT_NE(withAllMends(unused).find("id=\"r1-2\""), std::string::npos);
}

TEST(StructureMends, takeTheStandaloneDeclarationOut) {
    EXPECT_EQ(mended("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone='yes' ?>" + withClip("")),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>" + withClip(""));
}

}  // namespace vornic
