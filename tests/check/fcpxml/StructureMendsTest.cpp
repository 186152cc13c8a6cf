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

TEST(StructureMends, takeTheStandaloneDeclarationOut) {
    EXPECT_EQ(mended("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone='yes' ?>" + withClip("")),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>" + withClip(""));
}

}  // namespace vornic
