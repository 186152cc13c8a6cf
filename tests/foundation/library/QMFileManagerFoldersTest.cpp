#include <chrono>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/files/QMFileManager.h"
#include "tests/foundation/files/FileManagerTest.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

class QMFileManagerFoldersTest : public test::FileManagerTest {
  protected:
    void makeTree() const {
        makeFolder("Project/b/Folder.tmp");
        for (const char* name : {"Project/a.TMP", "Project/b/Folder.tmp/inner.tmp",
                                 "Project/b/c.xml", "Project/z.tmp", "Project/tmp"}) {
            sandbox.write(name, "x");
        }
        makeFolder("other");
        sandbox.write("other/kept.tmp", "x");
        fs::create_symlink("../other", sandbox.path("Project/link.tmp"));
        fs::create_symlink("..", sandbox.path("Project/b/circle"));
    }
};

TEST_F(QMFileManagerFoldersTest, trashesEachEntryAndKeepsTheFolder) {
    makeTree();
    EXPECT_TRUE(QMFileManager::trashDirectoryContents(sandbox.path("Project")));
    EXPECT_TRUE(fs::is_empty(sandbox.path("Project")));
    EXPECT_THAT(test::namesIn(trash()), ElementsAre("a.TMP", "b", "link.tmp", "tmp", "z.tmp"));
    EXPECT_TRUE(test::exists(sandbox.path("other/kept.tmp")));
}

TEST_F(QMFileManagerFoldersTest, hasNothingToTrashInAnEmptyOrUnreadableFolder) {
    makeFolder("Empty");
    EXPECT_TRUE(QMFileManager::trashDirectoryContents(sandbox.path("Empty")));
    EXPECT_TRUE(QMFileManager::trashDirectoryContents(sandbox.path("missing"), false));
    EXPECT_THAT(runs(), IsEmpty());
}

TEST_F(QMFileManagerFoldersTest, triesEveryEntryAfterAFailure) {
    const std::string first = writeInClosedFolder("first");
    fs::permissions(sandbox.path("closed"), fs::perms(0700));
    const std::string second = sandbox.write("closed/second", "x");
    fs::permissions(sandbox.path("closed"), fs::perms(0500));
    EXPECT_FALSE(QMFileManager::trashDirectoryContents(sandbox.path("closed"), false));
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_TRUE(QMFileManager::trashDirectoryContents(sandbox.path("closed")));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mv -f " + first + " " + trash("first"),
                                    "execute /bin/mv -f " + second + " " + trash("second")));
}

TEST_F(QMFileManagerFoldersTest, isFalseWhenOneOfSeveralCannotBeTrashed) {
    makeFolder("Project");
    sandbox.write("Project/a", "x");
    sandbox.write("Project/c", "x");
    const std::string locked = sandbox.write("Project/b", "x");
    {
        const test::RightsOfRoot root;
        if (!root.available() || !QMFileManager::lockFile(locked)) {
            GTEST_SKIP() << "needs root and a volume with the attribute";
        }
    }
    EXPECT_FALSE(QMFileManager::trashDirectoryContents(sandbox.path("Project"), false));
    EXPECT_THAT(test::namesIn(sandbox.path("Project")), ElementsAre("b"));
    EXPECT_THAT(test::namesIn(trash()), ElementsAre("a", "c"));
    const test::RightsOfRoot root;
    EXPECT_TRUE(QMFileManager::unlockFile(locked));
}

TEST_F(QMFileManagerFoldersTest, trashesFilesOfATypeInAllFoldersBelow) {
    makeTree();
    EXPECT_THAT(
        QMFileManager::trashFilesOfType("Tmp", sandbox.path("Project")),
        ElementsAre(sandbox.path("Project/a.TMP"), sandbox.path("Project/b/Folder.tmp/inner.tmp"),
                    sandbox.path("Project/z.tmp")));
    EXPECT_THAT(test::namesIn(trash()), ElementsAre("a.TMP", "inner.tmp", "z.tmp"));
    EXPECT_TRUE(fs::is_directory(sandbox.path("Project/b/Folder.tmp"))) << "no folder is trashed";
    EXPECT_TRUE(test::exists(sandbox.path("Project/b/c.xml")));
    EXPECT_TRUE(test::exists(sandbox.path("Project/tmp")));
    EXPECT_TRUE(test::exists(sandbox.path("Project/link.tmp")));
    EXPECT_TRUE(test::exists(sandbox.path("other/kept.tmp"))) << "a link is not followed";
}

TEST_F(QMFileManagerFoldersTest, trashesFilesOfExactlyThatName) {
    makeFolder("Project/sub/cut.xml");
    sandbox.write("Project/sub/Cut.xml", "x");
    sandbox.write("Project/sub/cut.xml/cut.xml", "x");
    sandbox.write("Project/cut.xml", "x");
    EXPECT_THAT(
        QMFileManager::trashFilesNamed("cut.xml", sandbox.path("Project")),
        ElementsAre(sandbox.path("Project/cut.xml"), sandbox.path("Project/sub/cut.xml/cut.xml")));
    EXPECT_THAT(test::namesIn(trash()), ElementsAre("cut 2.xml", "cut.xml"));
    EXPECT_THAT(test::namesIn(sandbox.path("Project/sub")), ElementsAre("Cut.xml", "cut.xml"));
}

TEST_F(QMFileManagerFoldersTest, namesAlsoWhatItCouldNotTrash) {
    host->rightsStatus = -1;
    const std::string path = writeInClosedFolder("file.tmp");
    EXPECT_THAT(QMFileManager::trashFilesOfType("tmp", sandbox.path("closed")), ElementsAre(path));
    EXPECT_TRUE(test::exists(path));
    EXPECT_THAT(QMFileManager::trashFilesOfType("tmp", sandbox.path("missing")), IsEmpty());
}

TEST_F(QMFileManagerFoldersTest, takesFoldersWithoutFilesForEmpty) {
    makeFolder("Empty");
    makeFolder("Nested/a/b");
    makeFolder("Finder/sub");
    sandbox.write("Finder/.DS_Store", "x");
    sandbox.write("Finder/sub/.DS_Store", "x");
    sandbox.write("Finder/Icon\r", "x");
    for (const char* name : {"Empty", "Nested", "Finder", "Finder/sub", "missing"}) {
        EXPECT_TRUE(QMFileManager::isFolderEmpty(sandbox.path(name))) << name;
    }
}

TEST_F(QMFileManagerFoldersTest, takesFoldersWithAFileAnywhereForFull) {
    makeFolder("One");
    sandbox.write("One/.DS_Store", "x");
    sandbox.write("One/file", "x");
    makeFolder("Deep/a/b");
    sandbox.write("Deep/a/b/file", "x");
    makeFolder("Icon");
    sandbox.write("Icon/Icon", "x");
    makeFolder("Linked");
    fs::create_symlink("../Empty", sandbox.path("Linked/link"));
    makeFolder("Empty");
    for (const char* name : {"One", "Deep", "Icon", "Linked", "One/file"}) {
        EXPECT_FALSE(QMFileManager::isFolderEmpty(sandbox.path(name))) << name;
    }
}

TEST_F(QMFileManagerFoldersTest, takesAnUnreadableFolderForEmpty) {
    makeFolder("shut");
    sandbox.write("shut/file", "x");
    fs::permissions(sandbox.path("shut"), fs::perms::none);
    EXPECT_TRUE(QMFileManager::isFolderEmpty(sandbox.path("shut")));
    fs::permissions(sandbox.path("shut"), fs::perms::owner_all);
}

TEST_F(QMFileManagerFoldersTest, removesEmptyFoldersAlone) {
    makeFolder("Empty/a");
    sandbox.write("Empty/.DS_Store", "x");
    makeFolder("Full");
    sandbox.write("Full/file", "x");
    EXPECT_TRUE(QMFileManager::removeFolderIfEmpty(sandbox.path("Empty")));
    EXPECT_FALSE(QMFileManager::removeFolderIfEmpty(sandbox.path("Full")));
    EXPECT_FALSE(QMFileManager::removeFolderIfEmpty(sandbox.path("Full/file")));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Full"));
    EXPECT_TRUE(test::exists(sandbox.path("Full/file")));
}

TEST_F(QMFileManagerFoldersTest, makesTheStructureOfAFolder) {
    const std::string folder = makeFolder("Project/Media");
    const std::string target = sandbox.path("Out") + folder;
    EXPECT_EQ(QMFileManager::createDirectoryStructure(folder, sandbox.path("Out")), target);
    EXPECT_TRUE(fs::is_directory(target));
    EXPECT_EQ(QMFileManager::createDirectoryStructure(folder, sandbox.path("Out")), target)
        << "is there already";
}

TEST_F(QMFileManagerFoldersTest, makesTheStructureAboveAFileOrAPackage) {
    sandbox.write("file", "x");
    const std::string package = makeFolder("Library.fcpbundle");
    const std::string target = sandbox.path("Out") + sandbox.folder();
    EXPECT_EQ(QMFileManager::createDirectoryStructure(package, sandbox.path("Out")), target);
    EXPECT_TRUE(fs::is_directory(target));
    EXPECT_TRUE(fs::is_empty(target));
    EXPECT_EQ(QMFileManager::createDirectoryStructure(sandbox.path("file"), sandbox.path("Out/")),
              target);
    EXPECT_EQ(QMFileManager::createDirectoryStructure("no/such", sandbox.path("Out")),
              sandbox.path("Out/no"));
    EXPECT_TRUE(fs::is_directory(sandbox.path("Out/no")));
}

TEST_F(QMFileManagerFoldersTest, reportsTheStructureThatItCouldNotMake) {
    host->rightsStatus = -1;
    static_cast<void>(writeInClosedFolder("file"));
    EXPECT_EQ(QMFileManager::createDirectoryStructure("a/b", sandbox.path("closed")),
              sandbox.path("closed/a"));
    EXPECT_FALSE(test::exists(sandbox.path("closed/a")));
}

TEST_F(QMFileManagerFoldersTest, copiesEachEntryOfAFolder) {
    makeFolder("Project/Media");
    sandbox.write("Project/Media/a", "x");
    sandbox.write("Project/b", "y");
    makeFolder("Out");
    EXPECT_TRUE(QMFileManager::copyContentsOfDirectory(sandbox.path("Project"), sandbox.path("Out"),
                                                       seconds(5)));
    EXPECT_EQ(test::readBytes(sandbox.path("Out/Media/a")), "x");
    EXPECT_EQ(test::readBytes(sandbox.path("Out/b")), "y");
    EXPECT_THAT(log.entries(), ElementsAre("File: Media", "File: b"));
}

TEST_F(QMFileManagerFoldersTest, stopsAtTheFirstEntryThatCannotBeCopied) {
    host->rightsStatus = -1;
    makeFolder("Project");
    for (const char* name : {"Project/a", "Project/b", "Project/c"}) {
        sandbox.write(name, "x");
    }
    makeFolder("Out");
    sandbox.write("Out/b", "old");
    EXPECT_FALSE(QMFileManager::copyContentsOfDirectory(sandbox.path("Project"),
                                                        sandbox.path("Out"), seconds(5)));
    EXPECT_THAT(test::namesIn(sandbox.path("Out")), ElementsAre("a", "b"));
    EXPECT_EQ(test::readBytes(sandbox.path("Out/b")), "old");
}

TEST_F(QMFileManagerFoldersTest, copiesNothingOfAnEmptyFolderAndFailsForNone) {
    makeFolder("Empty");
    makeFolder("Out");
    EXPECT_TRUE(QMFileManager::copyContentsOfDirectory(sandbox.path("Empty"), sandbox.path("Out"),
                                                       seconds(5)));
    EXPECT_FALSE(QMFileManager::copyContentsOfDirectory(sandbox.path("missing"),
                                                        sandbox.path("Out"), seconds(5)));
    EXPECT_TRUE(fs::is_empty(sandbox.path("Out")));
}

}  // namespace
}  // namespace vornic
