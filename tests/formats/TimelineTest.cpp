#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "formats/ElementIndexBuilder.h"
#include "formats/Timeline.h"

namespace vornic {

namespace {

using fcpxml::Time;

Timeline timelineOf(const std::string& text) {
    ElementIndexBuilder builder(text);
    EXPECT_FALSE(readXML(text, XMLMode::tolerant, &builder).fault);
    return Timeline(std::move(builder).finish());
}

// A file with one sequence of this storyline, which begins at an hour.
std::string projectOf(const std::string& spine,
                      const std::string& sequence = "format=\"r1\" tcStart=\"3600s\"") {
    return "<fcpxml version=\"1.10\"><resources><format id=\"r1\" frameDuration=\"1/25s\"/>"
           "<format id=\"r3\" frameDuration=\"1001/30000s\"/>"
           "<asset id=\"r2\" name=\"A &amp; B\" start=\"100s\" duration=\"60s\" hasVideo=\"1\"/>"
           "<asset id=\"r4\" name=\"Song\" duration=\"60s\" hasAudio=\"1\"/>"
           "<media id=\"r5\" name=\"Inner\"><sequence format=\"r1\"><spine><gap offset=\"0s\" "
           "duration=\"9s\"/>"
           "</spine></sequence></media>"
           "<media id=\"r6\" name=\"Cameras\"><multicam format=\"r1\" tcStart=\"10s\">"
           "<mc-angle name=\"Left\" angleID=\"a\"><asset-clip ref=\"r2\" offset=\"12s\" "
           "duration=\"3s\"/></mc-angle>"
           "<mc-angle name=\"Right\" angleID=\"b\"/></multicam></media>"
           "</resources><project name=\"Cut\"><sequence " +
           sequence + "><spine>" + spine + "</spine></sequence></project></fcpxml>";
}

const TimelineSequence& lastOf(const Timeline& timeline) {
    return timeline.sequences().back();
}

const TimelineClip& clipOf(const Timeline& timeline, const std::string& name) {
    for (const TimelineClip& clip : lastOf(timeline).clips) {
        if (clip.name == name) {
            return clip;
        }
    }
    ADD_FAILURE() << "no clip " << name;
    static const TimelineClip none;
    return none;
}

std::string xmemlOf(const std::string& tracks, const std::string& timebase = "25",
                    const std::string& ntsc = "FALSE", const std::string& timecode = "") {
    return "<xmeml version=\"5\"><sequence id=\"s\"><name>Cut</name><rate><timebase>" + timebase +
           "</timebase><ntsc>" + ntsc + "</ntsc></rate>" + timecode + "<media>" + tracks +
           "</media></sequence></xmeml>";
}

std::string clipItem(const std::string& name, const std::string& times,
                     const std::string& more = "") {
    return "<clipitem><name>" + name + "</name>" + times + more + "</clipitem>";
}

std::string times(int start, int end, int in, int out) {
    return "<start>" + std::to_string(start) + "</start><end>" + std::to_string(end) +
           "</end><in>" + std::to_string(in) + "</in><out>" + std::to_string(out) + "</out>";
}

}  // namespace

TEST(Timeline, placesConnectedClipsInTheTimeOfTheClipThatTheyHangOn) {
    const Timeline timeline = timelineOf(projectOf(
        "<gap name=\"hole\" offset=\"3600s\" start=\"50s\" duration=\"10s\">"
        "<asset-clip name=\"connected\" ref=\"r2\" lane=\"2\" offset=\"54s\" duration=\"2s\">"
        "<marker start=\"101s\" value=\"seen\"/><marker start=\"99s\" value=\"trimmed off\"/>"
        "<title name=\"on it\" lane=\"-1\" offset=\"2525/25s\" "
        "duration=\"1s\"/></asset-clip></gap>"));
    EXPECT_EQ(clipOf(timeline, "connected").position, Time(4));
    EXPECT_EQ(clipOf(timeline, "on it").position, Time(5));
    const TimelineSequence& sequence = lastOf(timeline);
    EXPECT_EQ(sequence.tracks[clipOf(timeline, "connected").track].name, "Lane 2");
    EXPECT_EQ(sequence.tracks[clipOf(timeline, "on it").track].name, "Lane 1");
    EXPECT_EQ(sequence.tracks.back().name, "Storyline");
    EXPECT_EQ(clipOf(timeline, "connected").in, Time(100));
    EXPECT_EQ(clipOf(timeline, "connected").out, Time(102));
    EXPECT_EQ(clipOf(timeline, "connected").media, "A & B");
    ASSERT_EQ(sequence.markers.size(), 1U);
    EXPECT_EQ(sequence.markers[0].name, "seen");
    EXPECT_EQ(sequence.markers[0].position, Time(5));
    EXPECT_EQ(sequence.timecodeAt(Time(5)), "01:00:05:00");
}

TEST(Timeline, placesNegativeOffsetsAndFractionsExactly) {
    const Timeline timeline =
        timelineOf(projectOf("<gap name=\"hole\" offset=\"-1001/30000s\" duration=\"1001/24000s\"/>"
                             "<gap name=\"next\" duration=\"1s\"/>",
                             "format=\"r3\""));
    EXPECT_EQ(clipOf(timeline, "hole").position, Time(-1001, 30000));
    EXPECT_EQ(clipOf(timeline, "next").position, Time(-1001, 30000) + Time(1001, 24000));
    EXPECT_EQ(lastOf(timeline).timecodeAt(Time(-1)), "");
}

TEST(Timeline, countsDropFrame) {
    const Timeline dropped = timelineOf(projectOf("", "format=\"r3\" tcFormat=\"DF\""));
    EXPECT_EQ(lastOf(dropped).timecodeAt(Time(1800 * 1001, 30000)), "00:01:00;02");
    EXPECT_EQ(lastOf(dropped).timecodeAt(Time(17982 * 1001, 30000)), "00:10:00;00");
    const Timeline xmeml =
        timelineOf(xmemlOf("", "30", "TRUE",
                           "<timecode><string>00:00:59;28</string><frame>1798</frame>"
                           "<displayformat>DF</displayformat></timecode>"));
    EXPECT_EQ(lastOf(xmeml).timecodeAt(Time(2 * 1001, 30000)), "00:01:00;02");
}

TEST(Timeline, countsInAndOutAsTheMediaDo) {
    const Timeline xmeml = timelineOf(xmemlOf(
        "<video><track>" +
            clipItem("c", times(0, 50, 10, 60),
                     "<file id=\"f\"><name>a.mov</name><rate><timebase>30</timebase><ntsc>TRUE"
                     "</ntsc></rate><timecode><string>00:00:59;20</string><frame>1790</frame>"
                     "<displayformat>DF</displayformat></timecode></file>"
                     "<rate><timebase>30</timebase><ntsc>TRUE</ntsc></rate>") +
            clipItem("again", times(50, 60, 0, 10), "<file id=\"f\"/>") + "</track></video>",
        "25"));
    const TimelineClip& clip = clipOf(xmeml, "c");
    EXPECT_EQ(clip.source.at(clip.in), "00:01:00;02");
    EXPECT_EQ(clip.source.at(clip.out), "00:01:01;22");
    EXPECT_EQ(clipOf(xmeml, "again").source.at(Time(0)), "00:00:59;20");
    const Timeline fcpxml =
        timelineOf(projectOf("<asset-clip name=\"c\" ref=\"r2\" format=\"r3\" tcFormat=\"DF\" "
                             "offset=\"3600s\" start=\"1801800/30000s\" duration=\"30030/30000s\"/>"
                             "<gap name=\"g\" start=\"3600s\" duration=\"2s\"/>"));
    const TimelineClip& dropped = clipOf(fcpxml, "c");
    EXPECT_EQ(dropped.source.at(dropped.in), "00:01:00;02");
    EXPECT_EQ(dropped.source.at(dropped.out), "00:01:01;02");
    EXPECT_EQ(clipOf(fcpxml, "g").source.at(Time(3600)), "01:00:00:00");
}

TEST(Timeline, knowsWhatCompoundAndMulticamClipsShow) {
    const Timeline timeline = timelineOf(
        projectOf("<ref-clip name=\"compound\" ref=\"r5\" offset=\"3600s\" duration=\"2s\"/>"
                  "<mc-clip name=\"multicam\" ref=\"r6\" offset=\"3602s\" duration=\"2s\"/>"));
    ASSERT_EQ(timeline.sequences().size(), 3U);
    EXPECT_EQ(clipOf(timeline, "compound").opens, 0U);
    EXPECT_EQ(clipOf(timeline, "multicam").opens, 1U);
    const TimelineSequence& cameras = timeline.sequences()[1];
    ASSERT_EQ(cameras.tracks.size(), 2U);
    EXPECT_EQ(cameras.tracks[0].name, "Left");
    EXPECT_EQ(cameras.tracks[1].name, "Right");
    ASSERT_EQ(cameras.clips.size(), 1U);
    EXPECT_EQ(cameras.clips[0].position, Time(2));
}

TEST(Timeline, countsInAndOutOfAMulticamClipAsItsAnglesDo) {
    std::string text = projectOf(
        "<mc-clip name=\"multicam\" ref=\"r6\" offset=\"3600s\" "
        "start=\"1801800/30000s\" duration=\"2s\"/>");
    const std::string_view plain = "<multicam format=\"r1\"";
    text.replace(text.find(plain), plain.size(), "<multicam format=\"r3\" tcFormat=\"DF\"");
    const Timeline timeline = timelineOf(text);
    const TimelineClip& clip = clipOf(timeline, "multicam");
    EXPECT_EQ(clip.source.at(clip.in), "00:01:00;02");
}

TEST(Timeline, showsAnAuditionAsItsFirstClip) {
    const Timeline timeline = timelineOf(projectOf(
        "<audition offset=\"3601s\"><asset-clip name=\"shown\" ref=\"r2\" duration=\"3s\">"
        "<title name=\"on it\" lane=\"1\" offset=\"101s\" duration=\"1s\"/></asset-clip>"
        "<asset-clip name=\"other\" ref=\"r2\" duration=\"9s\"/></audition>"));
    ASSERT_EQ(lastOf(timeline).clips.size(), 2U);
    EXPECT_EQ(clipOf(timeline, "shown").kind, TimelineKind::audition);
    EXPECT_EQ(clipOf(timeline, "shown").duration, Time(3));
    EXPECT_EQ(clipOf(timeline, "on it").position, Time(2));
}

TEST(Timeline, drawsConnectedStorylinesAroundTheirClips) {
    const Timeline timeline = timelineOf(
        projectOf("<gap name=\"hole\" offset=\"3600s\" start=\"7s\" duration=\"10s\"><spine "
                  "name=\"line\" lane=\"1\" offset=\"9s\">"
                  "<gap name=\"a\" offset=\"0s\" duration=\"1s\"/><transition name=\"fade\" "
                  "offset=\"1/2s\" duration=\"1s\"/>"
                  "<video name=\"b\" offset=\"1s\" duration=\"2s\"/></spine>"
                  "<title name=\"over\" lane=\"1\" offset=\"10s\" duration=\"4s\"/></gap>"));
    EXPECT_EQ(clipOf(timeline, "line").position, Time(2));
    EXPECT_EQ(clipOf(timeline, "line").duration, Time(3));
    EXPECT_EQ(clipOf(timeline, "b").position, Time(3));
    EXPECT_EQ(clipOf(timeline, "fade").position, Time(5, 2));
    EXPECT_EQ(clipOf(timeline, "b").row, 0U);
    EXPECT_EQ(clipOf(timeline, "over").row, 1U);
    EXPECT_EQ(lastOf(timeline).tracks[0].rows, 2U);
}

TEST(Timeline, distinguishesSoundFromPictures) {
    const Timeline timeline = timelineOf(projectOf(
        "<asset-clip name=\"song\" ref=\"r4\" offset=\"3600s\" duration=\"2s\"/>"
        "<asset-clip name=\"half\" ref=\"r2\" srcEnable=\"audio\" offset=\"3602s\" "
        "duration=\"2s\"/>"
        "<asset-clip name=\"off\" ref=\"r2\" enabled=\"0\" offset=\"3604s\" duration=\"2s\"/>"));
    EXPECT_EQ(clipOf(timeline, "song").kind, TimelineKind::audio);
    EXPECT_EQ(clipOf(timeline, "half").kind, TimelineKind::audio);
    EXPECT_EQ(clipOf(timeline, "off").kind, TimelineKind::video);
    EXPECT_FALSE(clipOf(timeline, "off").isEnabled);
}

TEST(Timeline, findsWhatAPlaceOfTheTextLiesIn) {
    const std::string text = projectOf(
        "<clip name=\"outer\" offset=\"3600s\" duration=\"9s\"><video ref=\"r2\" duration=\"9s\"/>"
        "<title name=\"inner\" lane=\"1\" duration=\"1s\"/><note>here</note></clip>");
    const Timeline timeline = timelineOf(text);
    EXPECT_EQ(timeline.itemAt(text.find("\"inner\"")), (Timeline::Item{2, 1}));
    EXPECT_EQ(timeline.itemAt(text.find("here")), (Timeline::Item{2, 0}));
    EXPECT_EQ(timeline.itemAt(text.find("tcStart=\"3600")), (Timeline::Item{2, kNoTimelineItem}));
    EXPECT_EQ(timeline.itemAt(3), std::nullopt);
    EXPECT_EQ(timeline.itemAt(text.size()), std::nullopt);
    EXPECT_EQ(clipOf(timeline, "outer").media, "A & B");
}

TEST(Timeline, letsClipsReachToTheFarEndOfTheTransitionBesideThem) {
    const Timeline timeline =
        timelineOf(xmemlOf("<video><track>" + clipItem("first", times(0, -1, 5, 115)) +
                           "<transitionitem><start>90</start><end>110</end><effect><name>Fade</"
                           "name></effect></transitionitem>" +
                           clipItem("second", times(-1, 200, 0, 110)) +
                           clipItem("lonely", times(-1, 300, 10, 20)) + "</track></video>"));
    EXPECT_EQ(clipOf(timeline, "first").duration, Time(110, 25));
    EXPECT_EQ(clipOf(timeline, "second").position, Time(90, 25));
    EXPECT_EQ(clipOf(timeline, "second").duration, Time(110, 25));
    EXPECT_EQ(clipOf(timeline, "lonely").position, Time(290, 25));
    EXPECT_EQ(clipOf(timeline, "Fade").kind, TimelineKind::transition);
}

TEST(Timeline, countsInAndOutInTheRateOfTheClip) {
    const Timeline timeline = timelineOf(xmemlOf(
        "<video><track>" +
        clipItem("slow",
                 "<rate><timebase>24</timebase><ntsc>TRUE</ntsc></rate>" + times(25, 50, 24, 48),
                 "<marker><name>m</name><in>36</in><out>-1</out></marker>") +
        "</track></video>"));
    EXPECT_EQ(clipOf(timeline, "slow").position, Time(1));
    EXPECT_EQ(clipOf(timeline, "slow").in, Time(1001, 1000));
    ASSERT_EQ(lastOf(timeline).markers.size(), 1U);
    EXPECT_EQ(lastOf(timeline).markers[0].position, Time(1) + Time(12 * 1001, 24000));
}

TEST(Timeline, putsTheTopmostPictureFirstAndNamesMediaByTheirFile) {
    const Timeline timeline = timelineOf(
        xmemlOf("<video><track>" +
                clipItem("low", times(0, 5, 0, 5), "<file id=\"f\"><name>a.mov</name></file>") +
                "</track><track>" + clipItem("high", times(0, 5, 0, 5), "<file id=\"f\"/>") +
                "</track></video><audio><track/><track>" +
                clipItem("sound", times(0, 5, 0, 5),
                         "<file id=\"g\"><pathurl>file://localhost/x%20y/b.wav</pathurl></file>") +
                "</track></audio>"));
    const TimelineSequence& sequence = lastOf(timeline);
    ASSERT_EQ(sequence.tracks.size(), 4U);
    EXPECT_EQ(sequence.tracks[0].name, "V2");
    EXPECT_EQ(sequence.tracks[3].name, "A2");
    EXPECT_EQ(clipOf(timeline, "high").track, 0U);
    EXPECT_EQ(clipOf(timeline, "sound").track, 3U);
    EXPECT_EQ(clipOf(timeline, "high").media, "a.mov");
    EXPECT_EQ(clipOf(timeline, "sound").media, "b.wav");
}

TEST(Timeline, opensNestedSequencesByReferenceAndInPlace) {
    const std::string nested =
        "<sequence id=\"n\"><name>Inner</name><rate><timebase>25</timebase></rate>"
        "<media><video><track/></video></media></sequence>";
    const Timeline timeline = timelineOf(xmemlOf(
        "<video><track>" + clipItem("whole", times(0, 5, 0, 5), nested) +
        clipItem("again", times(5, 9, 0, 4), "<sequence id=\"n\"/>") +
        clipItem("itself", times(9, 12, 0, 3), "<sequence id=\"s\"/>") + "</track></video>"));
    const auto& clips = timeline.sequences()[0].clips;
    ASSERT_EQ(timeline.sequences().size(), 2U);
    ASSERT_EQ(clips.size(), 3U);
    EXPECT_EQ(clips[0].opens, 1U);
    EXPECT_EQ(clips[1].opens, 1U);
    EXPECT_EQ(clips[2].opens, 0U);
    EXPECT_EQ(timeline.sequences()[1].outer, 0U);
}

TEST(Timeline, opensMulticlipsOfXMEMLAsTheirAngles) {
    const std::string rate = "<rate><timebase>25</timebase></rate>";
    const std::string angles =
        "<multiclip id=\"m\"><name>Stage</name><collapsed>FALSE</collapsed>"
        "<angle><clip id=\"a\"><name>Left</name><duration>250</duration>" +
        rate +
        "<media><video><track><clipitem><file id=\"f\"><name>left.mov</name></file></clipitem>"
        "</track></video></media></clip></angle>"
        "<angle><clip id=\"b\"><name>Right</name><duration>100</duration>" +
        rate + "</clip></angle></multiclip>";
    const Timeline timeline = timelineOf(xmemlOf(
        "<video><track>" + clipItem("first", times(0, 50, 0, 50), angles) +
        clipItem("second", times(50, 75, 50, 75), "<multiclip id=\"m\"/>") + "</track></video>"));
    ASSERT_EQ(timeline.sequences().size(), 2U);
    const auto& clips = timeline.sequences()[0].clips;
    ASSERT_EQ(clips.size(), 2U);
    EXPECT_EQ(clips[0].kind, TimelineKind::multicam);
    EXPECT_EQ(clips[0].opens, 1U);
    EXPECT_EQ(clips[1].opens, 1U);
    const TimelineSequence& stage = timeline.sequences()[1];
    EXPECT_EQ(stage.name, "Stage");
    ASSERT_EQ(stage.tracks.size(), 2U);
    ASSERT_EQ(stage.clips.size(), 2U);
    EXPECT_EQ(stage.clips[0].media, "left.mov");
    EXPECT_EQ(stage.clips[0].duration, Time(10));
    EXPECT_EQ(stage.clips[1].name, "Right");
    EXPECT_EQ(stage.clips[1].track, 1U);
    EXPECT_EQ(stage.clips[1].duration, Time(4));
}

TEST(Timeline, leavesOpenWhatTheFileDoesNotSay) {
    const Timeline xmeml = timelineOf(
        xmemlOf("<video><track>" + clipItem("none", "") +
                clipItem("words", "<start>x</start><end>9</end>") +
                clipItem("huge", times(0, 5, 0, 5) + "<start>99999999999999999999</start>") +
                "</track></video>"));
    EXPECT_FALSE(clipOf(xmeml, "none").position.isKnown());
    EXPECT_FALSE(clipOf(xmeml, "words").position.isKnown());
    const Timeline rateless = timelineOf(
        xmemlOf("<video><track>" + clipItem("c", times(0, 5, 0, 5)) + "</track></video>", "0"));
    EXPECT_FALSE(clipOf(rateless, "c").position.isKnown());
    EXPECT_EQ(lastOf(rateless).timecodeAt(Time(0)), "");
    const Timeline fcpxml = timelineOf(projectOf(
        "<gap name=\"g\" offset=\"x\" duration=\"1s\"/><gap name=\"h\" duration=\"1s\"/>"));
    EXPECT_FALSE(clipOf(fcpxml, "g").position.isKnown());
    EXPECT_FALSE(clipOf(fcpxml, "h").position.isKnown());
    EXPECT_TRUE(timelineOf("<other/>").sequences().empty());
}

TEST(Timeline, isMadeInLinearTimeOfHostileNesting) {
    constexpr std::size_t kDeep = 200000;
    std::string deep;
    for (std::size_t level = 0; level < kDeep; ++level) {
        deep += "<clip lane=\"1\" duration=\"1s\">";
    }
    for (std::size_t level = 0; level < kDeep; ++level) {
        deep += "</clip>";
    }
    std::string wide;
    for (std::size_t clip = 0; clip < kDeep; ++clip) {
        wide += "<title lane=\"1\" duration=\"1s\"/>";
    }
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_LT(lastOf(timelineOf(projectOf(deep))).clips.size(), 201U);
    const Timeline many =
        timelineOf(projectOf("<gap offset=\"3600s\" duration=\"1s\">" + wide + "</gap>"));
    EXPECT_EQ(lastOf(many).clips.size(), kDeep + 1);
    EXPECT_LE(lastOf(many).tracks[0].rows, 8U);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

}  // namespace vornic
