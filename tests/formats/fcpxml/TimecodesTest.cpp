#include <string>

#include <gtest/gtest.h>

#include "formats/ElementIndexBuilder.h"
#include "formats/fcpxml/Timecodes.h"

namespace vornic::fcpxml {

namespace {

const std::string kFile =
    "<fcpxml version=\"1.10\"><resources>"
    "<format id=\"r1\" frameDuration=\"1/25s\"/>"
    "<asset id=\"r2\" start=\"100s\" duration=\"60s\"><media-rep src=\"file:///a.mov\"/></asset>"
    "</resources><project><sequence format=\"r1\" tcStart=\"3600s\"><spine>"
    "<gap name=\"first\" offset=\"3600s\" start=\"3600s\" duration=\"10s\">"
    "<asset-clip name=\"connected\" ref=\"r2\" lane=\"1\" offset=\"3604s\" duration=\"2s\">"
    "<marker start=\"101s\" value=\"marked\"/>"
    "<title name=\"deeper\" lane=\"1\" offset=\"2525/25s\" duration=\"1s\"/></asset-clip>"
    "<spine lane=\"2\" offset=\"3602s\"><gap offset=\"0s\" duration=\"1s\"/>"
    "<video name=\"second\" offset=\"1s\" start=\"7s\" duration=\"1s\"/></spine></gap>"
    "<clip name=\"held\" offset=\"3610s\" start=\"5s\" duration=\"5s\">"
    "<video name=\"inside\" offset=\"0s\" duration=\"60s\"/></clip>"
    "<gap name=\"lost\" duration=\"5s\"/>"
    "</spine></sequence></project></fcpxml>";

// The timecode of the element that has this in its start tag.
std::string timecodeAt(const std::string& text, const std::string& part) {
    ElementIndexBuilder builder(text);
    EXPECT_FALSE(readXML(text, XMLMode::strict, &builder).fault);
    const ElementIndex index = std::move(builder).finish();
    return Timecodes(index).at(text.find(part));
}

}  // namespace

TEST(Timecodes, countFromTheStartOfTheSequence) {
    EXPECT_EQ(timecodeAt(kFile, "\"first\""), "01:00:00:00");
    EXPECT_EQ(timecodeAt(kFile, "\"held\""), "01:00:10:00");
}

TEST(Timecodes, ofConnectedClipsCountInTheTimeOfTheClipAround) {
    EXPECT_EQ(timecodeAt(kFile, "\"connected\""), "01:00:04:00");
    EXPECT_EQ(timecodeAt(kFile, "\"deeper\""), "01:00:05:00");
    EXPECT_EQ(timecodeAt(kFile, "\"second\""), "01:00:03:00");
}

TEST(Timecodes, ofMarkersAreTheirOwn) {
    EXPECT_EQ(timecodeAt(kFile, "\"marked\""), "01:00:05:00");
}

TEST(Timecodes, ofWhatAClipHoldsAreThoseOfTheClip) {
    EXPECT_EQ(timecodeAt(kFile, "\"inside\""), "01:00:10:00");
}

TEST(Timecodes, areNotReportedWhereTheyAreNotKnown) {
    EXPECT_EQ(timecodeAt(kFile, "\"lost\""), "");
    EXPECT_EQ(timecodeAt(kFile, "tcStart"), "");
    EXPECT_EQ(timecodeAt(kFile, "frameDuration"), "");
    std::string text = kFile;
    text.replace(text.find(" frameDuration=\"1/25s\""), 22, "");
    EXPECT_EQ(timecodeAt(text, "\"first\""), "");
}

TEST(Timecodes, showDropFrame) {
    std::string text = kFile;
    text.replace(text.find("1/25s"), 5, "1001/30000s");
    text.replace(text.find("tcStart"), 7, "tcFormat=\"DF\" tcStart");
    EXPECT_EQ(timecodeAt(text, "\"first\""), "01:00:00;00");
}

}  // namespace vornic::fcpxml
