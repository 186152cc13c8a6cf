#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/window/ConversionPreview.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

// Two clips with something that came with version 1.11.
const std::string kProject =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n<fcpxml version=\"1.13\">\n"
    "    <resources>\n        <format id=\"r1\" frameDuration=\"1/25s\"/>\n"
    "        <asset id=\"r2\" start=\"0s\" duration=\"10s\" hasVideo=\"1\" format=\"r1\">\n"
    "            <media-rep kind=\"original-media\" src=\"file:///a.mov\"/>\n        </asset>\n"
    "    </resources>\n    <project name=\"P\">\n"
    "        <sequence format=\"r1\" duration=\"2s\">\n            <spine>\n"
    "                <asset-clip ref=\"r2\" name=\"One\" offset=\"0s\" duration=\"1s\">\n"
    "                    <adjust-colorConform conformType=\"conformNone\" "
    "peakNitsOfPQSource=\"100\" peakNitsOfSDRToPQSource=\"100\"/>\n"
    "                </asset-clip>\n"
    "                <asset-clip ref=\"r2\" name=\"Two\" offset=\"1s\" duration=\"1s\">\n"
    "                    <adjust-colorConform conformType=\"conformNone\" "
    "peakNitsOfPQSource=\"100\" peakNitsOfSDRToPQSource=\"100\"/>\n"
    "                </asset-clip>\n"
    "            </spine>\n        </sequence>\n    </project>\n</fcpxml>\n";

class ConversionPreviewTest : public SandboxTest {
  protected:
    ConversionPreview previewOf(const std::string& version) {
        ErrorSlot error;
        const auto file = ConvertibleBytes::read(path, error);
        return file ? file->previewOf(version) : ConversionPreview();
    }
    [[nodiscard]] VersionRequest requestFor(const std::string& version, bool isInPlace) {
        return {.version = version,
                .isInPlace = isInPlace,
                .digest = previewOf(version).digest,
                .stop = {}};
    }

    std::string path = sandbox.write("cut.fcpxml", kProject);
};

TEST_F(ConversionPreviewTest, reportsTheVersionsOfAFile) {
    const FCPXMLVersions versions = fcpxmlVersionsOf(path);
    EXPECT_EQ(versions.refusal, "");
    EXPECT_EQ(versions.current, "1.13");
    EXPECT_EQ(versions.lowest, "1.11");
    ASSERT_FALSE(versions.targets.empty());
    EXPECT_EQ(versions.targets.front(), "1.14");
    EXPECT_EQ(versions.targets.back(), "1.6");
    EXPECT_EQ(withRelease("1.10"), "1.10 (Final Cut Pro 10.6+)");
    EXPECT_EQ(withRelease("1.1"), "1.1");
}

TEST_F(ConversionPreviewTest, saysOfAnotherFileThatItIsNoFCPXML) {
    path = sandbox.write("cut.fcpxml", "<xmeml version=\"5\"/>");
    EXPECT_THAT(fcpxmlVersionsOf(path).refusal, HasSubstr("It is XMEML"));
    path = sandbox.write("cut.fcpxml", "<html/>");
    EXPECT_EQ(fcpxmlVersionsOf(path).refusal, "Its root element is not <fcpxml>.");
    EXPECT_NE(fcpxmlVersionsOf(sandbox.path("gone.fcpxml")).refusal, "");
}

TEST_F(ConversionPreviewTest, listsWhatGoesWithCountsNamesAndPlaces) {
    const ConversionPreview preview = previewOf("1.10");
    EXPECT_EQ(preview.losses, 2U);
    ASSERT_EQ(preview.list.size(), 1U);
    EXPECT_EQ(preview.list[0].count, 2U);
    EXPECT_THAT(preview.list[0].what, HasSubstr("adjust-colorConform"));
    EXPECT_EQ(preview.list[0].what.find("conformNone"), std::string::npos);
    ASSERT_EQ(preview.list[0].places.size(), 2U);
    EXPECT_THAT(preview.list[0].places[0], HasSubstr("One"));
    EXPECT_THAT(preview.list[0].places[0], HasSubstr("line 14"));
    EXPECT_THAT(preview.list[0].places[1], HasSubstr("Two"));
    EXPECT_THAT(preview.result(), HasSubstr("2 things go, which version 1.10 does not have."));
    EXPECT_THAT(previewOf("1.12").list, IsEmpty());
    EXPECT_THAT(previewOf("1.12").result(), HasSubstr("Nothing is lost."));
}

TEST_F(ConversionPreviewTest, writesACopyBesideTheFile) {
    const FileState before = fileState(path);
    const ConvertedVersion converted = convertFCPXML(path, requestFor("1.10", false), "test", "1");
    ASSERT_TRUE(converted.isDone) << converted.failure;
    EXPECT_EQ(converted.replaced, sandbox.path("cut (1.10).fcpxml"));
    EXPECT_THAT(readBytes(converted.replaced), HasSubstr("<fcpxml version=\"1.10\">"));
    EXPECT_EQ(fileState(path), before);
}

TEST_F(ConversionPreviewTest, convertsAFileInItsPlaceAndKeepsTheOriginal) {
    const ConvertedVersion converted = convertFCPXML(path, requestFor("1.10", true), "test", "1");
    ASSERT_TRUE(converted.isDone) << converted.failure;
    EXPECT_TRUE(converted.isUndoable);
    EXPECT_THAT(readBytes(path), HasSubstr("<fcpxml version=\"1.10\">"));
    EXPECT_EQ(readBytes(converted.replaced), kProject);
}

TEST_F(ConversionPreviewTest, writesNothingOnceItIsStopped) {
    for (const bool isInPlace : {true, false}) {
        VersionRequest request = requestFor("1.10", isInPlace);
        request.stop = StopToken([] { return true; });
        const ConvertedVersion converted = convertFCPXML(path, request, "test", "1");
        EXPECT_FALSE(converted.isDone);
        EXPECT_TRUE(converted.isStopped);
        EXPECT_EQ(readBytes(path), kProject);
        EXPECT_FALSE(exists(sandbox.path("cut (1.10).fcpxml")));
    }
}

TEST_F(ConversionPreviewTest, leavesAFileAloneThatHasChangedSince) {
    for (const bool isInPlace : {true, false}) {
        const VersionRequest request = requestFor("1.10", isInPlace);
        const std::string newer = kProject + "<!-- newer -->";
        sandbox.write("cut.fcpxml", newer);
        const ConvertedVersion converted = convertFCPXML(path, request, "test", "1");
        EXPECT_FALSE(converted.isDone);
        EXPECT_THAT(converted.failure, HasSubstr("another program has changed it"));
        EXPECT_EQ(readBytes(path), newer);
        sandbox.write("cut.fcpxml", kProject);
    }
}

}  // namespace
}  // namespace vornic::test
