#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "job/Relink.h"
#include "job/RelinkFile.h"
#include "tests/job/JobTest.h"
#include "tests/support/fakes/RecordingSwapObserver.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/texts/SampleFiles.h"

namespace vornic::test {

namespace {

using ::testing::ElementsAre;

RelinkedBytes relinked(const std::string& bytes, const std::string& map) {
    RelinkRequest request;
    EXPECT_EQ(request.map.add(map), "");
    ErrorSlot error;
    const auto project = ProjectText::read(bytes, error);
    return Relinker(request).relink(*project, bytes, "/p/Cut.xml");
}

std::vector<std::string> pathsIn(const std::string& bytes) {
    ErrorSlot error;
    const auto project = ProjectText::read(bytes, error);
    std::vector<std::string> paths;
    for (const Medium& medium : mediaOf(project->index(), true)) {
        paths.push_back(medium.path.text());
    }
    return paths;
}

class RelinkFileTest : public SandboxTest {
  protected:
    InPlaceResult put(const std::string& bytesRead) {
        return relinkInPlace(path, bytesRead, "new", waiting, observer);
    }

    RecordingWaiting waiting;
    RecordingSwapObserver observer;
    std::string path = sandbox.write("Cut.xml", "old");
};

TEST_F(RelinkFileTest, takesThePlaceOfTheFile) {
    const InPlaceResult result = put("old");
    ASSERT_TRUE(result.swap);
    EXPECT_EQ(readBytes(path), "new");
    EXPECT_EQ(readBytes(result.swap->original), "old");
    EXPECT_THAT(namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(RelinkFileTest, leavesAFileAloneThatIsNotTheOneThatWasRead) {
    const InPlaceResult result = put("older");
    ASSERT_TRUE(result.error);
    EXPECT_NE(result.error->localizedDescription().find("relinked"), std::string::npos);
    EXPECT_EQ(readBytes(path), "old");
    EXPECT_THAT(namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(RelinkFileTest, clearsWhatAKilledOneHasLeftWhenThereIsNothingToRelink) {
    sandbox.write(".Cut.xml.vornic-relink", "half");
    EXPECT_THAT(clearLeftByRelinking(path, waiting), ElementsAre());
    EXPECT_EQ(readBytes(path), "old");
    EXPECT_THAT(namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(RelinkFileTest, theResultIsNamedAfterTheFileOrItsBundle) {
    EXPECT_EQ(relinkedPath("/a/Cut.fcpxml"), "/a/Cut (relinked).fcpxml");
    EXPECT_EQ(relinkedPath("Cut"), "Cut (relinked)");
    EXPECT_EQ(relinkedPath("/a/Cut.FCPXMLD/Info.fcpxml"), "/a/Cut (relinked).fcpxml");
    EXPECT_EQ(relinkedPath("Cut.fcpxmld/Info.fcpxml"), "Cut (relinked).fcpxml");
}

TEST(Relink, writesAPlainPathAsAURLWhereXMLCannotHoldIt) {
    for (const std::string name : {"\x01", "\xFF", "a\tb", "a\nb", "\uFFFE"}) {
        const RelinkedBytes result = relinked(
            "<xmeml><clip><file id=\"f\"><pathurl>/V/a.mov</pathurl></file></clip></xmeml>",
            "/V=/N/" + name);
        EXPECT_EQ(result.refusal, "");
        EXPECT_NE(result.bytes.find("<pathurl>file://localhost/N/"), std::string::npos);
        EXPECT_EQ(pathsIn(result.bytes), std::vector<std::string>{"/N/" + name + "/a.mov"});
    }
    EXPECT_EQ(
        pathsIn(relinked("<fcpxml><resources><asset id=\"r\" src=\"/V\"/></resources></fcpxml>",
                         "/V=/N ")
                    .bytes),
        std::vector<std::string>{"/N "});
}

// Those with bookmarks come back without them.
TEST(Relink, leadsEveryRealProjectAwayAndBack) {
    const std::optional<std::string> folder = samplesFolder();
    if (!folder) {
        GTEST_SKIP() << "no folder of samples";
    }
    int count = 0;
    for (const std::string& path : filesBelow(*folder)) {
        const std::string bytes = readBytes(path);
        ErrorSlot error;
        const auto project = ProjectText::read(bytes, error);
        if (!project || project->fault() || pathsIn(bytes).empty()) {
            continue;
        }
        const std::vector<std::string> before = pathsIn(bytes);
        const RelinkedBytes away = relinked(bytes, "/=/N \u00FC#");
        EXPECT_EQ(away.refusal, "") << path;
        std::vector<std::string> expected = before;
        for (std::string& media : expected) {
            const bool isPosix = media.starts_with('/') && !media.starts_with("//");
            media = isPosix ? "/N \u00FC#" + media : media;
        }
        EXPECT_EQ(pathsIn(away.bytes), expected) << path;
        const RelinkedBytes back = relinked(away.bytes, "/N \u00FC#=/");
        EXPECT_EQ(pathsIn(back.bytes), before) << path;
        const bool hasBookmarks = bytes.find("<bookmark") != std::string::npos;
        if (!hasBookmarks) {
            EXPECT_EQ(back.bytes, bytes) << path;
        }
        ++count;
    }
    EXPECT_GT(count, 50);
}

}  // namespace

}  // namespace vornic::test
