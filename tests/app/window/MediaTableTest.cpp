#include <chrono>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/window/MediaActions.h"
#include "app/window/MediaTable.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class MediaTableTest : public SandboxTest {
  protected:
    MediaTableTest() {
        makeFolder("A");
        makeFolder("B");
        there = sandbox.write("A/there.mov", "x");
    }

    void makeFolder(const char* name) const {
        std::filesystem::create_directories(sandbox.path(name));
    }
    static std::string clip(const std::string& id, const std::string& path) {
        return "<clipitem><file id=\"" + id + "\"><name>" + id +
               "</name><pathurl>file://localhost" + path + "</pathurl></file></clipitem>\n";
    }
    std::string write(const std::string& clips) {
        return sandbox.write("cut.xml",
                             "<?xml version=\"1.0\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">"
                             "<sequence><media><video><track>\n" +
                                 clips + "</track></video></media></sequence></xmeml>\n");
    }
    // One medium that is there, and one in a folder that is not.
    std::string project() {
        return write(clip("one", there) + clip("two", "/Volumes/Gone/a/two.mov"));
    }

    std::string there;
};

TEST_F(MediaTableTest, reportsWhatIsThereAndWhatIsNot) {
    const MediaTable table = mediaTableOf(project());
    ASSERT_EQ(table.rows.size(), 2U);
    EXPECT_EQ(table.failure, "");
    EXPECT_EQ(table.rows[0].name, "there.mov");
    EXPECT_EQ(table.rows[0].folder, sandbox.path("A"));
    EXPECT_EQ(table.rows[0].pathHere, there);
    EXPECT_EQ(wordOf(table.rows[0].state), "There");
    EXPECT_EQ(table.rows[0].uses, 1U);
    EXPECT_EQ(table.rows[1].folder, "/Volumes/Gone/a");
    EXPECT_EQ(table.rows[1].line, 5U);
    EXPECT_FALSE(isThere(table.rows[1].state));
    EXPECT_EQ(table.summary(), "2 media files, 1 not there");
    EXPECT_THAT(table.missingFolders(), ElementsAre("/Volumes/Gone/a"));
}

TEST_F(MediaTableTest, saysWhyThereAreNoMedia) {
    EXPECT_THAT(mediaTableOf(sandbox.path("gone.xml")).failure, HasSubstr("gone.xml"));
    EXPECT_EQ(mediaTableOf(sandbox.write("a.xml", "<a/>")).failure,
              "The file is neither XMEML nor FCPXML, so that it names no media.");
    EXPECT_EQ(mediaTableOf(write("")).summary(), "The file names no media.");
    EXPECT_THAT(mediaTableOf(write("</clipitem>")).summary(), HasSubstr("The file is damaged"));
}

TEST_F(MediaTableTest, findsAMediumInAFolderAndRelinksIt) {
    const std::string path = project();
    const std::string before = readBytes(path);
    const std::string found = sandbox.write("B/two.mov", "x");
    const RelinkPreview preview = previewSearch(path, sandbox.path("B"), std::nullopt);
    ASSERT_EQ(preview.refusal, "");
    ASSERT_EQ(preview.moves.size(), 1U);
    EXPECT_EQ(preview.moves[0].oldPath, "/Volumes/Gone/a/two.mov");
    EXPECT_EQ(preview.moves[0].newPath, found);
    EXPECT_EQ(preview.moves[0].state, MediaState::there);
    EXPECT_THAT(preview.stays, IsEmpty());
    EXPECT_EQ(readBytes(path), before) << "only looked at";
    const FileActionResult relinked = relinkAsShown(path, preview, "test", "1");
    ASSERT_TRUE(relinked.isDone) << relinked.failure;
    EXPECT_TRUE(relinked.isUndoable);
    EXPECT_EQ(readBytes(relinked.replaced), before);
    EXPECT_EQ(mediaTableOf(path).missing(), 0U);
    EXPECT_TRUE(restoreOriginal(path, "test", "1", false).isDone);
    EXPECT_EQ(readBytes(path), before);
}

TEST_F(MediaTableTest, asksWhichOfTwoFilesOfOneNameIsMeant) {
    const std::string path = project();
    makeFolder("B/b");
    makeFolder("B/c");
    sandbox.write("B/b/two.mov", "x");
    sandbox.write("B/c/two.mov", "x");
    std::filesystem::last_write_time(
        sandbox.path("B/b/two.mov"),
        std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    const RelinkPreview preview = previewSearch(path, sandbox.path("B"), std::nullopt);
    EXPECT_THAT(preview.moves, IsEmpty());
    ASSERT_EQ(preview.stays.size(), 1U);
    EXPECT_EQ(preview.stays[0].why, "more than one file may be meant");
    EXPECT_EQ(preview.stays[0].candidates.size(), 2U);
    EXPECT_EQ(previewSearch(path, sandbox.path("B"), Pick::newest).moves.size(), 1U);
}

TEST_F(MediaTableTest, changesAFolderAndReportsWhatIsNotInTheNewOne) {
    const std::string path = project();
    const RelinkPreview preview = previewFolderChange(path, "/Volumes/Gone", sandbox.path("B"));
    ASSERT_EQ(preview.moves.size(), 1U);
    EXPECT_EQ(preview.moves[0].newPath, sandbox.path("B") + "/a/two.mov");
    EXPECT_EQ(preview.moves[0].state, MediaState::missing);
    EXPECT_THAT(previewFolderChange(path, "/Nowhere", "/Else").moves, IsEmpty());
    EXPECT_NE(previewFolderChange(path, "", "/Else").refusal, "");
    EXPECT_NE(previewFolderChange(path, "/Nowhere", "here").refusal, "");
}

TEST_F(MediaTableTest, leavesAFileAloneThatHasChangedSince) {
    const std::string path = project();
    const RelinkPreview preview = previewFolderChange(path, "/Volumes/Gone", sandbox.path("B"));
    const std::string newer = readBytes(write(clip("three", there)));
    const FileActionResult relinked = relinkAsShown(path, preview, "test", "1");
    EXPECT_FALSE(relinked.isDone);
    EXPECT_THAT(relinked.failure, HasSubstr("another program has changed it"));
    EXPECT_EQ(readBytes(path), newer);
}

TEST_F(MediaTableTest, relinksNothingInADamagedFile) {
    const RelinkPreview preview =
        previewFolderChange(write(clip("one", "/Old/a.mov") + "</clipitem>"), "/Old", "/New");
    EXPECT_THAT(preview.refusal, HasSubstr("repair it first"));
}

}  // namespace
}  // namespace vornic::test
