#include <string>

#include <gtest/gtest.h>

#include "formats/ElementIndexBuilder.h"
#include "formats/xmeml/Timecodes.h"

namespace vornic::xmeml {

namespace {

std::string rate(int base, bool isNTSC) {
    return "<rate><ntsc>" + std::string(isNTSC ? "TRUE" : "FALSE") + "</ntsc><timebase>" +
           std::to_string(base) + "</timebase></rate>";
}

// A sequence that begins at a frame.
std::string sequence(const std::string& rateText, const std::string& frame,
                     const std::string& format) {
    return "<xmeml version=\"5\"><sequence>" + rateText + "<timecode><frame>" + frame +
           "</frame><displayformat>" + format +
           "</displayformat></timecode>"
           "<marker><name>here</name><in>50</in></marker><media><video><track>"
           "<clipitem id=\"first\"><start>0</start><marker><in>7</in><comment>in it</comment>"
           "</marker></clipitem>"
           "<transitionitem><start>90</start><note>dissolve</note></transitionitem>"
           "<clipitem id=\"beside\"><start>-1</start></clipitem>"
           "<clipitem id=\"late\"><start>18000</start></clipitem>"
           "</track></video></media></sequence></xmeml>";
}

// The timecode of the element that has this in it.
std::string timecodeAt(const std::string& text, const std::string& part) {
    ElementIndexBuilder builder(text);
    EXPECT_FALSE(readXML(text, XMLMode::strict, &builder).fault);
    const ElementIndex index = std::move(builder).finish();
    return Timecodes(index).at(text.find(part));
}

}  // namespace

TEST(XMEMLTimecodes, countFromTheFirstFrameOfTheSequence) {
    const std::string text = sequence(rate(25, false), "90000", "NDF");
    EXPECT_EQ(timecodeAt(text, "\"first\""), "01:00:00:00");
    EXPECT_EQ(timecodeAt(text, "dissolve"), "01:00:03:15");
    EXPECT_EQ(timecodeAt(text, "\"late\""), "01:12:00:00");
}

TEST(XMEMLTimecodes, ofMarkersOfTheSequenceAreTheirOwn) {
    const std::string text = sequence(rate(25, false), "0", "NDF");
    EXPECT_EQ(timecodeAt(text, "here"), "00:00:02:00");
    EXPECT_EQ(timecodeAt(text, "in it"), "00:00:00:00");
}

TEST(XMEMLTimecodes, dropFramesWhereTheSequenceDoes) {
    EXPECT_EQ(timecodeAt(sequence(rate(30, true), "0", "DF"), "\"late\""), "00:10:00;18");
    EXPECT_EQ(timecodeAt(sequence(rate(30, true), "0", "NDF"), "\"late\""), "00:10:00:00");
}

TEST(XMEMLTimecodes, areNotReportedWhereTheyAreNotKnown) {
    const std::string text = sequence(rate(25, false), "0", "NDF");
    EXPECT_EQ(timecodeAt(text, "\"beside\""), "");
    EXPECT_EQ(timecodeAt(text, "displayformat"), "");
    EXPECT_EQ(timecodeAt(text, "xmeml"), "");
    EXPECT_EQ(timecodeAt(sequence("", "0", "NDF"), "\"first\""), "");
    EXPECT_EQ(timecodeAt(sequence(rate(0, false), "0", "NDF"), "\"first\""), "");
    EXPECT_EQ(timecodeAt(sequence(rate(25, false), "99999999999999999", "NDF"), "\"first\""), "");
}

}  // namespace vornic::xmeml
