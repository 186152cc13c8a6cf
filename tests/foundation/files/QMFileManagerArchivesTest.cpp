#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/files/QMFileManager.h"
#include "tests/foundation/files/FileManagerTest.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class QMFileManagerArchivesTest : public test::FileManagerTest {
  protected:
    QMFileManagerArchivesTest() {
        makeFolder("Project/Media");
        sandbox.write("Project/Cut.xml", "<xmeml/>");
        sandbox.write("Project/Media/a", "x");
    }
    std::string project = sandbox.path("Project");
    std::string archive = sandbox.path("made.zip");
    std::string out = sandbox.path("Out");
};

TEST_F(QMFileManagerArchivesTest, keepsTheParentUnlessItIsToldOtherwise) {
    ASSERT_TRUE(QMFileManager::compressFile(project, archive));
    ASSERT_TRUE(QMFileManager::decompressFile(archive, out));
    EXPECT_THAT(test::namesIn(out), ElementsAre("Project"));
    EXPECT_EQ(test::readBytes(out + "/Project/Media/a"), "x");
    ASSERT_TRUE(QMFileManager::compressFile(project, archive, false));
    ASSERT_TRUE(QMFileManager::decompressFile(archive, out));
    EXPECT_THAT(test::namesIn(out), ElementsAre("Cut.xml", "Media"));
    EXPECT_THAT(log.entries(), IsEmpty());
    EXPECT_THAT(runs(), IsEmpty());
}

TEST_F(QMFileManagerArchivesTest, trashesWhatStandsAtTheDestination) {
    sandbox.write("made.zip", "old archive");
    makeFolder("Out");
    sandbox.write("Out/old", "x");
    ASSERT_TRUE(QMFileManager::compressFile(project, archive));
    EXPECT_EQ(test::readBytes(trash("made.zip")), "old archive");
    ASSERT_TRUE(QMFileManager::decompressFile(archive, out));
    EXPECT_THAT(test::namesIn(out), ElementsAre("Project"));
    EXPECT_EQ(test::readBytes(trash("Out/old")), "x");
}

TEST_F(QMFileManagerArchivesTest, replacesNothingThatCannotBeTrashed) {
    ASSERT_TRUE(QMFileManager::compressFile(project, archive));
    const std::string before = test::readBytes(archive);
    makeFolder("Out");
    sandbox.write("Out/old", "x");
    // A file in the place of the Trash.
    test::writeBytes(trash(), "");
    host->rightsStatus = -1;
    EXPECT_FALSE(QMFileManager::compressFile(sandbox.path("Project/Cut.xml"), archive));
    EXPECT_EQ(test::readBytes(archive), before);
    EXPECT_FALSE(QMFileManager::decompressFile(archive, out));
    EXPECT_THAT(test::namesIn(out), ElementsAre("old"));
}

TEST_F(QMFileManagerArchivesTest, asksForRightsToTrashAnArchiveButNotAFolder) {
    const std::string taken = writeInClosedFolder("made.zip");
    EXPECT_FALSE(QMFileManager::compressFile(project, taken));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mv -f " + taken + " " + trash("made.zip")));
    ASSERT_TRUE(QMFileManager::compressFile(project, archive));
    EXPECT_FALSE(QMFileManager::decompressFile(archive, sandbox.path("closed/made.zip")));
    EXPECT_EQ(runs().size(), 1U);
    EXPECT_EQ(test::readBytes(taken), "x");
}

TEST_F(QMFileManagerArchivesTest, failsWithoutASource) {
    EXPECT_FALSE(QMFileManager::compressFile(sandbox.path("missing"), archive));
    EXPECT_FALSE(QMFileManager::decompressFile(sandbox.path("missing.zip"), out));
    EXPECT_FALSE(QMFileManager::decompressFile(sandbox.path("Project/Cut.xml"), out));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Project"));
}

}  // namespace
}  // namespace vornic
