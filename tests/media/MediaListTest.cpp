#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "formats/ElementIndexBuilder.h"
#include "media/MediaList.h"
#include "xml/reader/XMLReader.h"

namespace vornic::test {

namespace {

using ::testing::ElementsAre;

// The media of a text, which has to live as long as its places are looked at.
std::vector<Medium> mediaIn(const std::string& text) {
    ElementIndexBuilder builder(text);
    UnheardXMLMends mends;
    const XMLReading reading = readXML(text, XMLMode::tolerant, &builder, &mends);
    return mediaOf(std::move(builder).finish(), !reading.fault);
}

std::vector<std::string> pathsOf(const std::vector<Medium>& media) {
    std::vector<std::string> paths;
    for (const Medium& medium : media) {
        paths.push_back(medium.path.text());
    }
    return paths;
}

std::vector<std::string> clipsOf(const Medium& medium) {
    std::vector<std::string> clips;
    for (const ClipUse& clip : medium.clips) {
        clips.push_back(clip.name + " " + std::to_string(clip.count));
    }
    return clips;
}

std::string clipItem(const std::string& name, const std::string& range, const std::string& file) {
    return "<clipitem><name>" + name + "</name><rate><timebase>25</timebase></rate>" + range +
           file + "</clipitem>";
}

std::string sequence(const std::string& items) {
    return "<sequence><media><video><track>" + items + "</track></video></media></sequence>";
}

constexpr std::string_view kFile =
    "<file id=\"f\"><name>a.mov</name><rate><timebase>25</timebase></rate>"
    "<duration>250</duration><pathurl>file://localhost/V/a%20b.mov</pathurl><media><video/>"
    "<audio><channelcount>2</channelcount></audio></media></file>";

TEST(XMEMLMedia, reportsWhatTheFileSays) {
    const std::vector<Medium> media =
        mediaIn("<xmeml version=\"5\">" +
                sequence(clipItem("A", "<in>25</in><out>50</out>", std::string(kFile)) +
                         clipItem("B", "<in>10</in><out>30</out>", "<file id=\"f\"/>") +
                         clipItem("A", "<in>30</in><out>31</out>", "<file id=\"f\"/>")) +
                "</xmeml>");
    ASSERT_THAT(pathsOf(media), ElementsAre("/V/a b.mov"));
    EXPECT_EQ(media[0].name, "a.mov");
    EXPECT_EQ(media[0].form, PathForm::localhost);
    EXPECT_THAT(clipsOf(media[0]), ElementsAre("A 2", "B 1"));
    EXPECT_EQ(media[0].uses, 3U);
    EXPECT_EQ(media[0].usedStart.seconds(), "0.4 s");
    EXPECT_EQ(media[0].usedEnd.seconds(), "2 s");
    EXPECT_EQ(media[0].duration.seconds(), "10 s");
    EXPECT_EQ(media[0].frameDuration.text(), "1/25s");
    EXPECT_EQ(media[0].videoTracks, 1U);
    EXPECT_EQ(media[0].audioTracks, 2U);
}

TEST(XMEMLMedia, countsClipsOfBinsApart) {
    const std::vector<Medium> media =
        mediaIn("<xmeml version=\"5\"><bin><children><clip><name>M</name>" + std::string(kFile) +
                "</clip></children></bin></xmeml>");
    ASSERT_EQ(media.size(), 1U);
    EXPECT_EQ(media[0].uses, 0U);
    EXPECT_EQ(media[0].browserClips, 1U);
    EXPECT_FALSE(media[0].usedStart.isKnown());
}

TEST(XMEMLMedia, onePathIsOneMediumHoweverItIsWritten) {
    const std::string other = "<file id=\"g\"><pathurl>file:///V/a%20b.mov</pathurl></file>";
    const std::vector<Medium> media = mediaIn(
        "<xmeml>" + sequence(clipItem("A", "", std::string(kFile)) + clipItem("B", "", other)) +
        "</xmeml>");
    ASSERT_EQ(media.size(), 1U);
    EXPECT_EQ(media[0].places.size(), 2U);
    EXPECT_EQ(media[0].uses, 2U);
}

TEST(XMEMLMedia, aFileAndAClipMayHaveTheSameId) {
    const std::vector<Medium> media =
        mediaIn("<xmeml>" +
                sequence("<clipitem id=\"f\"><name>A</name>" + std::string(kFile) +
                         "</clipitem><clipitem id=\"f2\"><name>B</name><file id=\"f\"/>"
                         "</clipitem>") +
                "</xmeml>");
    ASSERT_EQ(media.size(), 1U);
    EXPECT_EQ(media[0].uses, 2U);
}

TEST(XMEMLMedia, ofAClipAtItsOwnSpeedTheRangeIsNotKnown) {
    const std::string remap = "<filter><effect><effectid>timeremap</effectid></effect></filter>";
    const std::vector<Medium> media =
        mediaIn("<xmeml>" +
                sequence(clipItem("A", "<in>1</in><out>2</out>", std::string(kFile)) +
                         clipItem("B", "<in>1</in><out>2</out>" + remap, "<file id=\"f\"/>")) +
                "</xmeml>");
    ASSERT_EQ(media.size(), 1U);
    EXPECT_FALSE(media[0].usedStart.isKnown());
}

std::string fcpxml(const std::string& resources, const std::string& spine) {
    return "<fcpxml version=\"1.10\"><resources><format id=\"r1\" frameDuration=\"1/25s\"/>" +
           resources + "</resources><library><event><project><sequence format=\"r1\"><spine>" +
           spine + "</spine></sequence></project></event></library></fcpxml>";
}

TEST(FCPXMLMedia, reportsAssetsAndEachOfTheirRepresentations) {
    const std::vector<Medium> media = mediaIn(fcpxml(
        "<asset id=\"r2\" name=\"Interview\" start=\"3600s\" duration=\"100s\" hasVideo=\"1\""
        " hasAudio=\"1\" audioChannels=\"2\" format=\"r1\">"
        "<media-rep kind=\"original-media\" src=\"file:///V/a&amp;b.mov\"/>"
        "<media-rep kind=\"proxy-media\" src=\"file:///V/p.mov\"/></asset>",
        "<asset-clip ref=\"r2\" name=\"One\" start=\"3610s\" duration=\"5s\"/>"
        "<asset-clip ref=\"r2\" name=\"Two\" duration=\"2s\"/>"));
    ASSERT_THAT(pathsOf(media), ElementsAre("/V/a&b.mov", "/V/p.mov"));
    EXPECT_EQ(media[0].kind, "");
    EXPECT_EQ(media[1].kind, "proxy-media");
    EXPECT_THAT(clipsOf(media[0]), ElementsAre("One 1", "Two 1"));
    EXPECT_EQ(media[0].usedStart.seconds(), "3600 s") << "without a start, the asset's own";
    EXPECT_EQ(media[0].usedEnd.seconds(), "3615 s");
    EXPECT_EQ(media[0].videoTracks, 1U);
    EXPECT_EQ(media[0].audioTracks, 2U);
    EXPECT_EQ(media[1].uses, 2U);
}

TEST(FCPXMLMedia, ofAPartOnlyWhatItsClipShowsIsUsed) {
    const std::vector<Medium> media =
        mediaIn(fcpxml("<asset id=\"r2\" src=\"file:///V/a.mov\" duration=\"100s\"/>",
                       "<clip name=\"C\" start=\"20s\" duration=\"5s\">"
                       "<video ref=\"r2\" offset=\"10s\" start=\"0s\" duration=\"100s\">"
                       "<audio ref=\"r2\" offset=\"0s\" duration=\"100s\"/></video></clip>"));
    ASSERT_EQ(media.size(), 1U);
    EXPECT_EQ(media[0].usedStart.seconds(), "10 s");
    EXPECT_EQ(media[0].usedEnd.seconds(), "15 s");
    EXPECT_THAT(clipsOf(media[0]), ElementsAre("C 2"));
}

TEST(FCPXMLMedia, clipsOutsideOfSequencesAreCountedApart) {
    const std::vector<Medium> media = mediaIn(
        "<fcpxml version=\"1.8\"><resources><asset id=\"r2\" src=\"a.mov\"/></resources>"
        "<event><asset-clip ref=\"r2\" name=\"M\"/></event></fcpxml>");
    ASSERT_EQ(media.size(), 1U);
    EXPECT_EQ(media[0].uses, 0U);
    EXPECT_EQ(media[0].browserClips, 1U);
}

TEST(MediaList, takesTimeInProportionToTheText) {
    // Hundreds of thousands of elements in each other, and clips with as many files: a walk up or
    // through children for each file would take hours.
    constexpr int kMany = 100000;
    std::string text = "<xmeml><clipitem>";
    for (int count = 0; count < kMany; ++count) {
        text += "<file id=\"f\"/>";
    }
    text += kFile;
    for (int count = 0; count < kMany; ++count) {
        text += "<clipitem><file id=\"f\"/>";
    }
    EXPECT_EQ(mediaIn(text)[0].browserClips, 2U * kMany + 1);
    std::string assets = "<asset id=\"r2\">";
    std::string clips;
    for (int count = 0; count < kMany; ++count) {
        assets += "<media-rep src=\"file:///" + std::to_string(count) + ".mov\"/>";
        clips += "<asset-clip ref=\"r2\"/>";
    }
    EXPECT_EQ(mediaIn(fcpxml(assets + "</asset>", clips)).size(), static_cast<std::size_t>(kMany));
}

TEST(MediaList, ofADamagedFileIsWhatWasReadBeforeTheFault) {
    const std::vector<Medium> media = mediaIn("<xmeml><clip>" + std::string(kFile) +
                                              "</clip><file id=\"g\"><pathurl>file:///cut");
    EXPECT_THAT(pathsOf(media), ElementsAre("/V/a b.mov"));
}

}  // namespace

}  // namespace vornic::test
