#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "formats/ElementIndexBuilder.h"
#include "tests/convert/fcpxml/ConvertedText.h"

namespace vornic::test {

namespace {

using fcpxml::Version;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// A project around resources and the items of a storyline.
std::string project(int minor, const std::string& resources, const std::string& items) {
    return "<?xml version=\"1.0\"?>\n<!DOCTYPE fcpxml>\n<fcpxml version=\"" +
           Version(minor).text() + "\">\n<resources>\n    <format id=\"r1\"/>\n" + resources +
           "</resources>\n<project>\n<sequence format=\"r1\">\n<spine>\n" + items +
           "</spine>\n</sequence>\n</project>\n</fcpxml>\n";
}

// Converts a valid text, and holds the result to be valid.
ConvertedText converted(const std::string& text, int from, int to) {
    EXPECT_EQ(faultsOf(text, Version(from)), "");
    ConvertedText result = convertedText(text, Version(from), Version(to));
    EXPECT_EQ(result.conversion.refusal, "");
    EXPECT_EQ(faultsOf(result.text, Version(to)), "") << result.text;
    return result;
}

std::string replaced(std::string text, std::string_view old, std::string_view with) {
    const std::size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return at == std::string::npos ? text : text.replace(at, old.size(), with);
}

}  // namespace

TEST(FCPXMLConversion, changesTheVersionAndNothingElse) {
    const std::string text = project(13, "",
                                     "<!-- kept -->\n  <gap  duration = '5s' "
                                     "name=\"a&#10;b\"></gap>\r\n\t<gap duration='1s'/>\n");
    const ConvertedText result = converted(text, 13, 8);
    EXPECT_EQ(result.text, replaced(text, "\"1.13\"", "\"1.8\""));
    EXPECT_THAT(result.told, IsEmpty());
    EXPECT_EQ(result.conversion.losses, 0U);
}

TEST(FCPXMLConversion, takesOutAnElementWithItsLine) {
    const std::string clip =
        "    <clip duration=\"5s\">\n        <adjust-blend amount=\"1\"/>\n"
        "        <adjust-colorConform peakNitsOfPQSource=\"1\" peakNitsOfSDRToPQSource=\"2\"/>\n"
        "        <adjust-volume/>\n    </clip>\n";
    const std::string text = project(11, "", clip);
    const ConvertedText result = converted(text, 11, 10);
    EXPECT_EQ(result.text, replaced(replaced(text, "\"1.11\"", "\"1.10\""),
                                    "        <adjust-colorConform peakNitsOfPQSource=\"1\" "
                                    "peakNitsOfSDRToPQSource=\"2\"/>\n",
                                    ""));
    ASSERT_EQ(result.findings.kept().size(), 1U);
    EXPECT_EQ(result.findings.kept()[0].lost,
              "<adjust-colorConform peakNitsOfPQSource=\"1\" peakNitsOfSDRToPQSource=\"2\"/>");
    EXPECT_EQ(result.conversion.losses, 1U);
}

TEST(FCPXMLConversion, dropsAnAttributeAndReportsItUnlessItSaysNothing) {
    const std::string text =
        project(12, "<effect id=\"r2\" uid=\"u\"/>\n",
                "<clip duration=\"5s\"><filter-video ref=\"r2\" nameOverride=\"Soft\"/>"
                "<filter-video ref=\"r2\"/></clip>\n");
    const ConvertedText result = converted(text, 12, 11);
    EXPECT_THAT(result.text, Not(HasSubstr("nameOverride")));
    EXPECT_EQ(result.told,
              "conversion-attribute-lost: the attribute nameOverride of <filter-video> is not in "
              "version 1.11 and is left out: Soft\n");
    const std::string plain =
        project(9, "", "<clip duration=\"5s\"><adjust-orientation mapping=\"normal\"/></clip>\n");
    EXPECT_THAT(converted(plain, 9, 8).told, IsEmpty());
    EXPECT_THAT(converted(plain, 9, 8).text, Not(HasSubstr("mapping")));
}

TEST(FCPXMLConversion, leavesOutAValueThatTheTargetLacks) {
    const std::string text =
        project(13, "", "<clip duration=\"5s\"><conform-rate srcFrameRate=\"90\"/></clip>\n");
    const ConvertedText result = converted(text, 13, 12);
    EXPECT_THAT(result.text, HasSubstr("<conform-rate/>"));
    EXPECT_THAT(result.told, HasSubstr("srcFrameRate of <conform-rate> cannot be \"90\""));
}

TEST(FCPXMLConversion, takesOutWhatWouldNotBeSwitchedOffAnyMore) {
    const std::string text = project(10, "",
                                     "<clip duration=\"5s\"><adjust-stabilization enabled=\"0\"/>"
                                     "<adjust-rollingShutter enabled=\"1\"/></clip>\n");
    const ConvertedText result = converted(text, 10, 9);
    EXPECT_THAT(result.text, HasSubstr("<clip duration=\"5s\"><adjust-rollingShutter/></clip>"));
    EXPECT_THAT(result.told, HasSubstr("conversion-disabled-element: <adjust-stabilization>"));
}

TEST(FCPXMLConversion, takesOutAWholeCollectionThatWouldLoseARule) {
    const std::string text =
        "<fcpxml version=\"1.14\"><event>"
        "<smart-collection name=\"A\" match=\"all\"><match-analysis-type/></smart-collection>"
        "<smart-collection name=\"B\" match=\"all\"><match-text value=\"x\" scope=\"all\"/>"
        "</smart-collection></event></fcpxml>";
    const ConvertedText result = converted(text, 14, 9);
    EXPECT_EQ(result.text,
              "<fcpxml version=\"1.9\"><event><smart-collection name=\"B\" match=\"all\">"
              "<match-text value=\"x\"/></smart-collection></event></fcpxml>");
    EXPECT_THAT(result.told, HasSubstr("conversion-collection: "));
    EXPECT_EQ(result.conversion.losses, 1U) << "one loss is told once";
}

TEST(FCPXMLConversion, leavesAGapInAStorylineWithWhatIsConnected) {
    const std::string text =
        project(11, "",
                "<live-drawing duration=\"5s\" offset=\"1s\" role=\"a\"><param name=\"p\"/>"
                "<title ref=\"r1\" duration=\"1s\" lane=\"1\"/></live-drawing>\n");
    const ConvertedText result = converted(text, 11, 10);
    EXPECT_THAT(result.text, HasSubstr("<gap duration=\"5s\" offset=\"1s\">"
                                       "<title ref=\"r1\" duration=\"1s\" lane=\"1\"/></gap>"));
    EXPECT_THAT(result.told, HasSubstr("conversion-gap: <live-drawing>"));
    EXPECT_THAT(result.told, HasSubstr("conversion-attribute-lost: the attribute role"));
    EXPECT_THAT(result.told, HasSubstr("conversion-element-lost: <param>"));
}

TEST(FCPXMLConversion, leavesAGapForAnAuditionThatIsEmptyNow) {
    const std::string text =
        project(11, "",
                "<audition offset=\"7s\"><live-drawing duration=\"5s\" offset=\"0s\"/>"
                "<live-drawing duration=\"6s\"/></audition>\n");
    EXPECT_THAT(converted(text, 11, 10).text,
                HasSubstr("<gap duration=\"5s\" offset=\"7s\"/>\n</spine>"));
    const std::string connected = project(11, "",
                                          "<gap duration=\"9s\"><audition lane=\"1\"><live-drawing "
                                          "duration=\"5s\"/></audition></gap>\n");
    EXPECT_THAT(converted(connected, 11, 10).text, HasSubstr("<gap duration=\"9s\"></gap>"));
}

TEST(FCPXMLConversion, followsWhatRefersToWhatGoes) {
    const std::string text = project(
        10, "<locator id=\"r2\" url=\"u\"/>\n",
        "<clip duration=\"5s\" format=\"r2\"><title ref=\"r2\" duration=\"1s\" lane=\"1\"/></clip>"
        "<asset-clip ref=\"r2\" duration=\"4s\"/>\n");
    const ConvertedText result = converted(text, 10, 9);
    EXPECT_THAT(result.text, HasSubstr("<clip duration=\"5s\"></clip><gap duration=\"4s\"/>"));
    EXPECT_THAT(result.told, HasSubstr("conversion-reference-lost: "));
    EXPECT_THAT(result.told, HasSubstr("conversion-referring-element: <title>"));
}

TEST(FCPXMLConversion, givesAnAssetThePathOfItsFirstOriginalMedia) {
    const std::string text =
        project(9,
                "    <asset id='r2'>\n"
                "        <media-rep kind=\"proxy-media\" src=\"file:///p.mov\"/>\n"
                "        <media-rep sig=\"AB\" src='file:///o.mov'>\n"
                "            <bookmark>Ym9v</bookmark>\n        </media-rep>\n"
                "        <metadata/>\n    </asset>\n",
                "");
    const ConvertedText result = converted(text, 9, 8);
    EXPECT_THAT(result.text, HasSubstr("    <asset id='r2' src='file:///o.mov'>\n"
                                       "        <bookmark>Ym9v</bookmark>\n"
                                       "        <metadata/>\n    </asset>\n"));
    EXPECT_THAT(result.told, HasSubstr("conversion-media-rep-to-source"));
    EXPECT_THAT(result.told, HasSubstr("the attribute sig of <media-rep>"));
    EXPECT_THAT(result.told, HasSubstr("conversion-element-lost: <media-rep>"));
    const std::string proxy = project(
        9, "<asset id=\"r2\"><media-rep kind=\"proxy-media\" src=\"file:///p.mov\"/></asset>\n",
        "");
    EXPECT_THAT(converted(proxy, 9, 6).text, HasSubstr("<asset id=\"r2\" src=\"file:///p.mov\">"));
    EXPECT_THAT(converted(proxy, 9, 6).told, HasSubstr("conversion-no-original-media: "));
}

TEST(FCPXMLConversion, givesAnAssetAMediaRep) {
    const std::string text =
        project(8,
                "    <asset id=\"r2\" src='file:///a&amp;b.mov' name=\"n\"/>\n"
                "    <asset id=\"r3\" src=\"file:///c.mov\">\n        <bookmark>Ym9v</bookmark>\n"
                "    </asset>\n",
                "");
    const ConvertedText result = converted(text, 8, 10);
    EXPECT_THAT(result.text,
                HasSubstr("    <asset id=\"r2\" name=\"n\">\n"
                          "        <media-rep kind=\"original-media\" src='file:///a&amp;b.mov'/>\n"
                          "    </asset>\n    <asset id=\"r3\">\n"
                          "        <media-rep kind=\"original-media\" src=\"file:///c.mov\">"
                          "<bookmark>Ym9v</bookmark></media-rep>\n    </asset>\n"));
    EXPECT_EQ(result.conversion.losses, 0U);
}

TEST(FCPXMLConversion, writesADefaultOutThatDoesNotHoldAnyMore) {
    const std::string text =
        project(8, "", "<title ref=\"r1\" duration=\"1s\"><text>a</text></title>\n");
    const ConvertedText result = converted(text, 8, 9);
    EXPECT_THAT(result.text, HasSubstr("<text placement=\"bottom\">a</text>"));
    EXPECT_THAT(result.told, HasSubstr("conversion-default-written: placement=\"bottom\""));
    EXPECT_THAT(converted(result.text, 9, 8).told, IsEmpty());
}

TEST(FCPXMLConversion, leavesFaultsOfTheFileAsTheyAre) {
    const std::string text =
        project(11, "<asset id=\"r2\" src=\"x\" own=\"1\"/>\n",
                "<unknown/><clip duration=\"5s\" mode=\"9\"><adjust-volume/><note>late</note>"
                "<adjust-voiceIsolation amount=\"1\"/></clip>\n");
    const ConvertedText result = convertedText(text, Version(11), Version(8));
    EXPECT_EQ(result.text, replaced(replaced(text, "\"1.11\"", "\"1.8\""),
                                    "<adjust-voiceIsolation amount=\"1\"/>", ""));
}

TEST(FCPXMLConversion, bringsAProjectOfTheOldFormToTheNewOne) {
    const std::string text =
        "<fcpxml version=\"1.2\">\n<project name=\"P\" location=\"/x\">\n<resources>\n"
        "<format id=\"r1\"/>\n<effect id=\"r2\" uid=\"FxPlug:1\"/>\n"
        "<asset id=\"r3\" src=\"file:///a.mov\"/>\n</resources>\n"
        "<sequence format=\"r1\">\n<spine>\n"
        "<clip duration=\"5s\"><audio-source srcCh=\"1\" name=\"L\"/><filter ref=\"r2\"/></clip>\n"
        "<transition ref=\"r2\" duration=\"1s\"/>\n"
        "<title ref=\"r2\" duration=\"2s\"><note>n</note><text>a</text></title>\n"
        "</spine>\n</sequence>\n</project>\n</fcpxml>\n";
    const ConvertedText result = converted(text, 2, 10);
    EXPECT_THAT(
        result.text,
        HasSubstr("</resources>\n<library><event><project name=\"P\"><sequence format=\"r1\">"));
    EXPECT_THAT(result.text, HasSubstr("</project></event></library>"));
    EXPECT_THAT(result.text, HasSubstr("<clip duration=\"5s\"><audio-channel-source srcCh=\"1\"/>"
                                       "<filter-video ref=\"r2\"/></clip>"));
    EXPECT_THAT(result.text, HasSubstr("<filter-video ref=\"r2\"/>\n</transition>"));
    EXPECT_THAT(result.text, HasSubstr("<text>a</text><note>n</note>"));
    EXPECT_THAT(result.told, HasSubstr("conversion-root: "));
    EXPECT_THAT(result.told, HasSubstr("the attribute name of <audio-source>"));
    for (const Finding& finding : result.findings.kept()) {
        EXPECT_LT(finding.where.offset, text.size()) << "places are those of the file";
    }
}

TEST(FCPXMLConversion, putsClipsWithoutASequenceIntoAnEvent) {
    const std::string text =
        "<fcpxml version=\"1.3\"><project name=\"E\" uid=\"u\"><resources/>"
        "<clip duration=\"5s\"/></project></fcpxml>";
    EXPECT_EQ(converted(text, 3, 6).text,
              "<fcpxml version=\"1.6\"><resources/><library><event name=\"E\">"
              "<clip duration=\"5s\"/></event></library></fcpxml>");
}

TEST(FCPXMLConversion, inventsNoValue) {
    const std::string text =
        "<fcpxml version=\"1.5\"><resources><format id=\"r1\"/><media id=\"r2\"/></resources>"
        "<library><event><ref-clip ref=\"r2\" duration=\"1s\"><audio-source srcCh=\"1\"/>"
        "</ref-clip></event></library></fcpxml>";
    const ConvertedText result = convertedText(text, Version(5), Version(8));
    EXPECT_EQ(result.conversion.refusal, "<audio-source> has no role, which FCPXML 1.6 asks for");
    EXPECT_EQ(result.conversion.refusedAt.offset, text.find("<audio-source"));
    EXPECT_TRUE(result.conversion.edits.empty());
}

TEST(FCPXMLConversion, namesTheLowestVersionWithoutLoss) {
    const auto lowestOf = [](const std::string& text, int minor) {
        ElementIndexBuilder builder(text);
        static_cast<void>(readXML(text, XMLMode::strict, &builder));
        return fcpxml::lowestVersion(std::move(builder).finish(), Version(minor));
    };
    EXPECT_EQ(lowestOf(project(13, "", "<gap duration=\"1s\"/>"), 13), Version(6));
    EXPECT_EQ(lowestOf(project(13, "<locator id=\"a\" url=\"b\"/>", ""), 13), Version(10));
    EXPECT_EQ(lowestOf(project(6, "", ""), 6), Version(6));
    EXPECT_EQ(lowestOf("<fcpxml version=\"1.5\"><library location=\"x\"/></fcpxml>", 5),
              Version(6));
}

}  // namespace vornic::test
