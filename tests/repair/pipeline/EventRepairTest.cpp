#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "repair/pipeline/EventRepair.h"
#include "tests/repair/pipeline/CheckOfRepairTest.h"

namespace vornic {
namespace {

using Strings = std::vector<std::string>;

class EventRepairTest : public test::CheckOfRepairTest {
  protected:
    /// Repairs a document and returns it as text without its declaration and indentation.
    std::string repair(std::string_view text) {
        std::unique_ptr<XMLDocument> document = test::parsed(text);
        const XMLDocument* given = document.get();
        hasErrors.reset();
        bool hasMended = true;
        document = repairFCPXDocument(std::move(document), &hasMended, found);
        hasErrors = hasMended;
        EXPECT_EQ(document.get(), given);
        return withoutIndentation(document->xmlString());
    }
    /// The same for something in the first library.
    std::string repairLibrary(const std::string& content) {
        const std::string open = "<fcpxml><library>";
        const std::string close = "</library></fcpxml>";
        const std::string repaired = repair(open + content + close);
        EXPECT_TRUE(repaired.starts_with(open) && repaired.ends_with(close)) << repaired;
        return repaired.substr(open.size(), repaired.size() - open.size() - close.size());
    }

    std::optional<bool> hasErrors;

  private:
    static std::string withoutIndentation(std::string_view xml) {
        std::string text;
        xml.remove_prefix(xml.find('\n') + 1);
        while (!xml.empty()) {
            const std::string_view line = xml.substr(0, xml.find('\n'));
            text += line.substr(std::min(line.size(), line.find_first_not_of(' ')));
            xml.remove_prefix(std::min(xml.size(), line.size() + 1));
        }
        return text;
    }
};

TEST_F(EventRepairTest, givesTheFirstReferenceToTheAudioThatHasNone) {
    EXPECT_EQ(repairLibrary("<event><video><audio ref=\"r2\"/><audio/><audio ref=\"r3\"/></video>"
                            "</event>"),
              "<event><video><audio ref=\"r2\"/><audio ref=\"r2\"/><audio ref=\"r3\"/></video>"
              "</event>");
    EXPECT_EQ(hasErrors, true);
    EXPECT_EQ(findings(), Strings{});
}

TEST_F(EventRepairTest, takesTheFirstReferenceWhereverItStands) {
    EXPECT_EQ(repairLibrary("<event><video><audio a=\"1\"/><audio ref=\"r 3\"/><audio ref=\"r4\"/>"
                            "</video></event>"),
              "<event><video><audio a=\"1\" ref=\"r 3\"/><audio ref=\"r 3\"/><audio ref=\"r4\"/>"
              "</video></event>");
}

TEST_F(EventRepairTest, refusesAMendThatWouldMultiplyTheFile) {
    const std::string reference(200'000, 'r');
    std::string clip = "<video>\n<audio ref=\"" + reference + "\"/>";
    for (int audio = 0; audio < 400; ++audio) {
        clip += "<audio/>";
    }
    const std::string small = "<video><audio ref=\"a\"/><audio/></video>";
    const std::string text = "<fcpxml>\n<spine><video/></spine><library><event>" + small +
                             "\n \x0B<" + clip.substr(1) + "</video>" + small +
                             "</event></library></fcpxml>";
    std::string readable = text;
    std::erase(readable, '\x0B');
    bool hasMended = false;
    const auto document = repairFCPXDocument(test::parsed(readable), &hasMended, found,
                                             [&text] { return std::optional(text); });
    EXPECT_TRUE(hasMended);
    expectFlags(true, false);
    EXPECT_LT(document->xmlString().size(), 2 * text.size());
    EXPECT_EQ(findings(), Strings{"repair-references-refused"});
    EXPECT_EQ(
        events.calls,
        Strings{"error: Line 3, column 3: the audio elements of this video that lack a reference "
                "were left as they are; with it, the file would grow beyond four times its size."});
    ASSERT_EQ(report.findings().kept().size(), 1U);
    const Place& where = report.findings().kept().front().where;
    EXPECT_EQ(where.line, 3U);
    EXPECT_EQ(where.column, 3U);
    EXPECT_EQ(text.substr(where.offset, 7), "<video>");
}

TEST_F(EventRepairTest, mendsWhatMakesASmallFileManyTimesLarger) {
    const std::string reference(1'000, 'r');
    std::string clip = "<video><audio ref=\"" + reference + "\"/>";
    for (int audio = 0; audio < 1'000; ++audio) {
        clip += "<audio/>";
    }
    const std::string mended = repairLibrary("<event>" + clip + "</video></event>");
    EXPECT_EQ(hasErrors, true);
    EXPECT_GT(mended.size(), 1'000U * 1'000U);
}

TEST_F(EventRepairTest, leavesASoundClipAlone) {
    const std::string sound =
        "<event><video><audio ref=\"r1\"/><audio ref=\"r2\"/></video></event>";
    EXPECT_EQ(repairLibrary(sound), sound);
    EXPECT_EQ(hasErrors, false);
}

TEST_F(EventRepairTest, leavesAClipWithoutAnyReferenceAlone) {
    const std::string hopeless = "<event><video><audio/><audio/></video></event>";
    EXPECT_EQ(repairLibrary(hopeless), hopeless);
    EXPECT_EQ(hasErrors, false);
}

TEST_F(EventRepairTest, countsAnEmptyReferenceAsOne) {
    EXPECT_EQ(repairLibrary("<event><video><audio ref=\"\"/><audio/></video></event>"),
              "<event><video><audio ref=\"\"/><audio ref=\"\"/></video></event>");
    EXPECT_EQ(hasErrors, true);
}

TEST_F(EventRepairTest, findsClipsAtAnyDepthAndInEachEvent) {
    EXPECT_EQ(repairLibrary("<event><clip><spine><video><audio ref=\"r1\"/><audio/></video></spine>"
                            "</clip></event>"
                            "<event><video><audio/><audio ref=\"r2\"/></video></event>"),
              "<event><clip><spine><video><audio ref=\"r1\"/><audio ref=\"r1\"/></video></spine>"
              "</clip></event>"
              "<event><video><audio ref=\"r2\"/><audio ref=\"r2\"/></video></event>");
}

TEST_F(EventRepairTest, takesOnlyAudioChildrenOfEachClipTogether) {
    const Strings nested = {
        "<event><video><audio "
        "ref=\"r1\"/><video><audio/></video><gap><audio/></gap></video></event>",
        "<event><video><audio/><video><audio ref=\"r1\"/></video></video></event>"};
    for (const std::string& text : nested) {
        EXPECT_EQ(repairLibrary(text), text);
        EXPECT_EQ(hasErrors, false) << text;
    }
}

TEST_F(EventRepairTest, remembersAMendedClipBeforeASoundOne) {
    EXPECT_EQ(repairLibrary("<event><video><audio/><audio ref=\"r1\"/></video>"
                            "<video><audio ref=\"r2\"/></video></event>"),
              "<event><video><audio ref=\"r1\"/><audio ref=\"r1\"/></video>"
              "<video><audio ref=\"r2\"/></video></event>");
    EXPECT_EQ(hasErrors, true);
}

TEST_F(EventRepairTest, neverLooksOutsideTheFirstLibrarysEvents) {
    const std::string clip = "<video><audio ref=\"r1\"/><audio/></video>";
    const Strings texts = {
        "<fcpxml><event>" + clip + "</event></fcpxml>",
        "<fcpxml><library>" + clip + "</library></fcpxml>",
        "<fcpxml><library/><library><event>" + clip + "</event></library></fcpxml>",
        "<xmeml><library><event>" + clip + "</event></library></xmeml>",
        "<fcpxml><library><event><audio ref=\"r1\"/><audio/></event></library></fcpxml>"};
    for (const std::string& text : texts) {
        EXPECT_EQ(repair(text), text);
        EXPECT_EQ(hasErrors, false) << text;
    }
}

TEST_F(EventRepairTest, findsNothingInAFileWithoutALibrary) {
    EXPECT_EQ(repair("<fcpxml/>"), "<fcpxml/>");
    EXPECT_EQ(hasErrors, false);
    EXPECT_EQ(findings(), Strings{});
}

TEST_F(EventRepairTest, leavesItToItsCallerToCallAMendAnError) {
    repairLibrary("<event><video><audio ref=\"r2\"/><audio/></video></event>");
    expectFlags(false, true);
}

TEST_F(EventRepairTest, needsNoOutput) {
    std::unique_ptr<XMLDocument> document = test::parsed(
        "<fcpxml><library><event><video><audio ref=\"r\"/><audio/></video></event></library>"
        "</fcpxml>");
    document = repairFCPXDocument(std::move(document), nullptr, found);
    ASSERT_NE(document, nullptr);
    EXPECT_NE(document->xmlString().find("<audio ref=\"r\"/>\n                <audio ref=\"r\"/>"),
              std::string::npos);
}

TEST_F(EventRepairTest, setsTheOutputWithoutADocument) {
    bool hasMended = true;
    EXPECT_EQ(repairFCPXDocument(nullptr, &hasMended, found), nullptr);
    EXPECT_FALSE(hasMended);
    EXPECT_EQ(findings(), Strings{});
}

}  // namespace
}  // namespace vornic
