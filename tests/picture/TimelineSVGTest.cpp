#include <string>

#include <gtest/gtest.h>

#include "picture/SVGCanvas.h"
#include "picture/TimelineSVG.h"
#include "xml/reader/XMLReader.h"

namespace vornic {

namespace {

using fcpxml::Time;

Timeline timelineWith(const std::string& name, int clips = 1) {
    TimelineSequence sequence;
    sequence.place = {0, 10000};
    sequence.name = name;
    sequence.frame = Time(1, 25);
    sequence.tracks = {{name, false, 1}};
    for (int number = 0; number < clips; ++number) {
        TimelineClip clip;
        clip.place = {static_cast<std::size_t>(number) * 10 + 10, 9};
        clip.name = clip.media = name;
        clip.position = Time(number * 2);
        clip.duration = Time(2);
        sequence.clips.push_back(clip);
    }
    sequence.markers.push_back({{15, 1}, name, Time(1), 0});
    return Timeline({sequence});
}

bool isWellFormed(const std::string& svg) {
    return !readXML(svg, XMLMode::strict, nullptr).fault;
}

}  // namespace

TEST(TimelineSVG, isWellFormedWhateverTheNamesHold) {
    for (const std::string& name :
         {std::string("A & B <\"'> ]]> --> &#0;"), std::string("\x01\x00\x1B\x7F", 4),
          std::string("\xFF\xFE\xC0\x80\xED\xA0\x80"), std::string("\xEF\xBF\xBE\xEF\xBF\xBF"),
          std::string("名前 🎬 \u202Eabc"), std::string(100000, '&'), std::string()}) {
        const Timeline timeline = timelineWith(name);
        const std::string svg = timelineSVG(
            timeline,
            {{{0, 0}, Severity::error, name}, {{0, kNoTimelineItem}, Severity::info, name}}, name);
        EXPECT_TRUE(isWellFormed(svg)) << name.substr(0, 40);
    }
    EXPECT_TRUE(isWellFormed(timelineSVG(Timeline(), {}, "nothing")));
}

TEST(TimelineSVG, elidesNamesThatAreTooLong) {
    EXPECT_EQ(elidedText("short", 100), "short");
    const std::string elided = elidedText("a very long name of a clip", 60);
    EXPECT_TRUE(elided.starts_with("a ver"));
    EXPECT_TRUE(elided.ends_with("…"));
    EXPECT_EQ(elidedText("名前名前名前", 30), "名…");
    EXPECT_EQ(elidedText("long", 3), "");
}

TEST(TimelineSVG, marksAFindingOnItsClip) {
    const Timeline timeline = timelineWith("clip", 3);
    const std::string plain = timelineSVG(timeline, {}, "t");
    const std::string marked =
        timelineSVG(timeline, {{{0, 1}, Severity::error, "It is wrong."}}, "t");
    EXPECT_EQ(plain.find("#c21f1f"), std::string::npos);
    const std::size_t message = marked.find("error: It is wrong.");
    ASSERT_NE(message, std::string::npos);
    // In the title of the second of the three.
    const std::size_t title = marked.rfind("<title>", message);
    EXPECT_NE(marked.substr(title, message - title).find("at 00:00:02:00"), std::string::npos);
    EXPECT_NE(marked.find("#c21f1f", message), std::string::npos);
}

TEST(TimelineSVG, saysASeverityByFormAndWordToo) {
    const Timeline timeline = timelineWith("clip", 3);
    const std::string plain = timelineSVG(timeline, {}, "t");
    EXPECT_EQ(plain.find("warning"), std::string::npos);
    const std::string marked = timelineSVG(
        timeline,
        {{{0, 0}, Severity::warning, "First."}, {{0, kNoTimelineItem}, Severity::info, "All."}},
        "t");
    EXPECT_NE(marked.find(">00:00:00:00, clip — warning: First.<"), std::string::npos);
    EXPECT_NE(marked.find(">note: All.<"), std::string::npos);
    EXPECT_NE(marked.find(">warning<"), std::string::npos) << "in the legend";
    EXPECT_NE(marked.find(">!</text>"), std::string::npos) << "in the sign";
    EXPECT_NE(marked.find(">video<"), std::string::npos) << "the kind in the legend";
}

TEST(TimelineSVG, writesOutWhatTurnsTheTextAround) {
    const std::string svg = timelineSVG(timelineWith("a\u202Eb\nc"), {}, "\u202E");
    EXPECT_EQ(svg.find("\u202E"), std::string::npos);
    EXPECT_NE(svg.find("a&lt;U+202E&gt;b"), std::string::npos);
}

TEST(TimelineSVG, isTheSameEachTime) {
    const Timeline timeline = timelineWith("clip", 500);
    const std::vector<TimelineMark> marks = {{{0, 7}, Severity::error, "It is wrong."}};
    EXPECT_EQ(timelineSVG(timeline, marks, "t"), timelineSVG(timeline, marks, "t"));
}

TEST(TimelineSVG, countsTheClipsThatAreTooShortToBeDrawn) {
    TimelineSequence sequence;
    sequence.place = {0, 100000};
    sequence.tracks = {{"V1", false, 1}};
    for (int number = 0; number < 1000; ++number) {
        TimelineClip clip;
        clip.position = Time(number, 1000000);
        clip.duration = Time(1, 1000000);
        sequence.clips.push_back(clip);
    }
    TimelineClip last;
    last.position = Time(100);
    last.duration = Time(900);
    sequence.clips.push_back(last);
    const std::string svg = timelineSVG(Timeline({sequence}), {}, "t");
    EXPECT_NE(svg.find("999 more clips are too short"), std::string::npos);
}

TEST(TimelineSVG, drawsTimesThatNoScreenHolds) {
    TimelineSequence sequence;
    sequence.place = {0, 100};
    sequence.tracks = {{"V1", false, 1}};
    TimelineClip clip;
    clip.place = {10, 5};
    for (const Time position :
         {Time(-9000000000000000000), Time(9000000000000000000), Time(), Time(0)}) {
        clip.position = position;
        clip.duration = Time(1);
        sequence.clips.push_back(clip);
    }
    const std::string svg = timelineSVG(Timeline({sequence}), {}, "t");
    EXPECT_TRUE(isWellFormed(svg));
    EXPECT_EQ(svg.find("nan"), std::string::npos);
    EXPECT_EQ(svg.find("inf"), std::string::npos);
}

}  // namespace vornic
