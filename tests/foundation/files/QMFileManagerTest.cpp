#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "foundation/files/QMFileManager.h"
#include "platform/items/FileDates.h"
#include "tests/foundation/files/FileManagerTest.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class QMFileManagerTest : public test::FileManagerTest {
  protected:
    void link(const std::string& target, const std::string& name) const {
        fs::create_symlink(target, sandbox.path(name));
    }
};

TEST_F(QMFileManagerTest, takesALinkForItsTarget) {
    sandbox.write("file", "x");
    link("file", "link");
    link("nowhere", "dangling");
    EXPECT_TRUE(QMFileManager::fileExistsAtPath(sandbox.path("file")));
    EXPECT_TRUE(QMFileManager::fileExistsAtPath(sandbox.folder()));
    EXPECT_TRUE(QMFileManager::fileExistsAtPath(sandbox.path("link")));
    EXPECT_FALSE(QMFileManager::fileExistsAtPath(sandbox.path("dangling")));
    EXPECT_FALSE(QMFileManager::fileExistsAtPath(sandbox.path("missing")));
    EXPECT_FALSE(QMFileManager::fileExistsAtPath(""));
}

TEST_F(QMFileManagerTest, knowsFolders) {
    sandbox.write("file", "x");
    makeFolder("Cut.app");
    link("Cut.app", "link");
    EXPECT_TRUE(QMFileManager::isDirectoryAtPath(sandbox.path("Cut.app")));
    EXPECT_TRUE(QMFileManager::isDirectoryAtPath(sandbox.path("link")));
    EXPECT_FALSE(QMFileManager::isDirectoryAtPath(sandbox.path("file")));
    EXPECT_FALSE(QMFileManager::isDirectoryAtPath(sandbox.path("missing")));
}

TEST_F(QMFileManagerTest, knowsPackages) {
    makeFolder("Folder");
    makeFolder("Library.FCPBundle");
    sandbox.write("file.app", "x");
    EXPECT_TRUE(QMFileManager::isPackageAtPath(sandbox.path("Library.FCPBundle")));
    EXPECT_FALSE(QMFileManager::isPackageAtPath(sandbox.path("Folder")));
    EXPECT_FALSE(QMFileManager::isPackageAtPath(sandbox.path("file.app")));
    EXPECT_FALSE(QMFileManager::isPackageAtPath(sandbox.path("missing.app")));
}

TEST_F(QMFileManagerTest, knowsLinks) {
    sandbox.write("file", "x");
    link("file", "link");
    link("nowhere", "dangling");
    EXPECT_TRUE(QMFileManager::isSymbolicLinkAtPath(sandbox.path("link")));
    EXPECT_TRUE(QMFileManager::isSymbolicLinkAtPath(sandbox.path("dangling")));
    EXPECT_FALSE(QMFileManager::isSymbolicLinkAtPath(sandbox.path("file")));
    EXPECT_FALSE(QMFileManager::isSymbolicLinkAtPath(sandbox.path("missing")));
}

TEST_F(QMFileManagerTest, reportsTheDatesOfTheItemItself) {
    sandbox.write("file", "x");
    link("file", "link");
    const struct timespec times[2] = {{1, 0}, {1000000000, 250000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, sandbox.path("file").c_str(), times, 0), 0);
    const auto modified = QMFileManager::modificationDateForFile(sandbox.path("file"));
    ASSERT_TRUE(modified);
    EXPECT_EQ(modified->time_since_epoch(), std::chrono::milliseconds(1000000000250));
    EXPECT_GT(QMFileManager::modificationDateForFile(sandbox.path("link")), modified);
    const auto created = QMFileManager::creationDateForFile(sandbox.path("file"));
    EXPECT_TRUE(!created || *created > *modified);
    ErrorSlot error;
    if (platform::setCreationDate(sandbox.path("file"), *modified, error)) {
        EXPECT_EQ(QMFileManager::creationDateForFile(sandbox.path("file")), modified);
        EXPECT_NE(QMFileManager::creationDateForFile(sandbox.path("link")), modified);
    }
    EXPECT_FALSE(QMFileManager::modificationDateForFile(sandbox.path("missing")));
    EXPECT_FALSE(QMFileManager::creationDateForFile(sandbox.path("missing")));
}

TEST_F(QMFileManagerTest, lockingFailsWithTheWordsOfUnlockingWithoutTheRight) {
    const std::string path = sandbox.write("file", "x");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_FALSE(QMFileManager::lockFile(path));
    EXPECT_FALSE(QMFileManager::isFileLocked(path)) << "permission bits are no lock";
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0444));
    EXPECT_THAT(log.entries(), ElementsAre("Unable to unlock file " + path + ": The file " + path +
                                           " cannot be locked: the operation is not permitted."));
}

TEST_F(QMFileManagerTest, unlockingWhatIsNotLockedHasNothingToDo) {
    const std::string path = sandbox.write("file", "x");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_TRUE(QMFileManager::unlockFile(path));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0444));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerTest, unlockingFailsForWhatIsMissing) {
    const std::string path = sandbox.path("missing");
    EXPECT_FALSE(QMFileManager::unlockFile(path));
    EXPECT_THAT(log.entries(), ElementsAre("Unable to unlock file " + path + ": The file " + path +
                                           " cannot be unlocked: no such file or folder."));
}

TEST_F(QMFileManagerTest, locksAndUnlocksWithTheRight) {
    const std::string path = sandbox.write("file", "x");
    const test::RightsOfRoot root;
    if (!root.available() || !QMFileManager::lockFile(path)) {
        GTEST_SKIP() << "needs root and a volume with the attribute";
    }
    EXPECT_TRUE(QMFileManager::isFileLocked(path));
    std::error_code refused;
    EXPECT_FALSE(fs::remove(path, refused));
    EXPECT_TRUE(refused);
    EXPECT_TRUE(QMFileManager::unlockFile(path));
    EXPECT_FALSE(QMFileManager::isFileLocked(path));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerTest, locksWhatLiesInAFolderButNotTheFolders) {
    const std::string probe = sandbox.write("probe", "x");
    makeFolder("Project/Media");
    sandbox.write("Project/a", "x");
    sandbox.write("Project/Media/b", "x");
    const test::RightsOfRoot root;
    if (!root.available() || !QMFileManager::lockFile(probe)) {
        GTEST_SKIP() << "needs root and a volume with the attribute";
    }
    EXPECT_TRUE(QMFileManager::unlockFile(probe));
    QMFileManager::lockFolder(sandbox.path("Project"));
    EXPECT_TRUE(QMFileManager::isFileLocked(sandbox.path("Project/a")));
    EXPECT_TRUE(QMFileManager::isFileLocked(sandbox.path("Project/Media/b")));
    EXPECT_FALSE(QMFileManager::isFileLocked(sandbox.path("Project")));
    EXPECT_FALSE(QMFileManager::isFileLocked(sandbox.path("Project/Media")));
    QMFileManager::unlockFolder(sandbox.path("Project"));
    EXPECT_FALSE(QMFileManager::isFileLocked(sandbox.path("Project/a")));
    EXPECT_FALSE(QMFileManager::isFileLocked(sandbox.path("Project/Media/b")));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerTest, locksNothingBeyondALinkInAFolder) {
    makeFolder("Project");
    makeFolder("other");
    const std::string file = sandbox.write("other/file", "x");
    link("../other", "Project/link");
    QMFileManager::lockFolder(sandbox.path("Project"));
    EXPECT_THAT(log.entries(), ElementsAre(testing::HasSubstr("Project/link cannot be locked")))
        << "the link itself is tried, and nothing in the folder that it leads to";
}

TEST_F(QMFileManagerTest, unlockFolderDoesNothingWithoutAFolder) {
    QMFileManager::unlockFolder(sandbox.path("missing"));
    QMFileManager::unlockFolder(sandbox.write("file", ""));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerTest, setsThePermissionBits) {
    const std::string path = sandbox.write("file", "x");
    EXPECT_TRUE(QMFileManager::setPosixPermissions(0751, path));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0751));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerTest, logsPermissionsThatCannotBeSet) {
    EXPECT_FALSE(QMFileManager::setPosixPermissions(0777, "/etc/passwd"));
    EXPECT_THAT(log.entries(),
                ElementsAre("Error setting permissions for file /etc/passwd: The file /etc/passwd "
                            "cannot be given its permissions: the operation is not permitted."));
}

TEST_F(QMFileManagerTest, leavesAFileAloneThatIsNotToBeCached) {
    const std::string path = sandbox.write("file", "x");
    const auto before = test::fileState(path);
    QMFileManager::disableFileSystemCachingForFile(path);
    EXPECT_EQ(test::fileState(path), before);
}

TEST_F(QMFileManagerTest, sumsTheSizesInAFolder) {
    makeFolder("Project/Media/Empty");
    sandbox.write("Project/a", "12345");
    sandbox.write("Project/Media/b", "1234567");
    link("/etc", "Project/link");
    EXPECT_EQ(QMFileManager::fileSize(sandbox.path("Project")), 5U + 7U + 4U);
    EXPECT_EQ(QMFileManager::fileSize(sandbox.path("Project/Media/Empty")), 0U);
    EXPECT_EQ(QMFileManager::fileSize(sandbox.path("Project/a")), 5U);
    EXPECT_EQ(QMFileManager::fileSize(sandbox.path("Project/link")), 4U) << "of the link itself";
    EXPECT_EQ(QMFileManager::fileSize(sandbox.path("missing")), 0U);
}

TEST_F(QMFileManagerTest, countsAnUnreadableFolderAsNothing) {
    makeFolder("shut");
    sandbox.write("shut/file", "12345");
    fs::permissions(sandbox.path("shut"), fs::perms::none);
    EXPECT_EQ(QMFileManager::fileSize(sandbox.path("shut")), 0U);
    fs::permissions(sandbox.path("shut"), fs::perms::owner_all);
}

TEST(QMFileManagerSizesTest, areShownInPowersOf1024) {
    constexpr double kKilo = 1024;
    EXPECT_EQ(QMFileManager::formatFileSize(0), "0 B");
    EXPECT_EQ(QMFileManager::formatFileSize(1023), "1023 B");
    EXPECT_EQ(QMFileManager::formatFileSize(1024), "1.00 KB");
    EXPECT_EQ(QMFileManager::formatFileSize(1536), "1.50 KB");
    EXPECT_EQ(QMFileManager::formatFileSize(1048575), "1024.00 KB");
    EXPECT_EQ(QMFileManager::formatFileSize(1048576), "1.00 MB");
    EXPECT_EQ(QMFileManager::formatFileSize(kKilo * kKilo * kKilo - 1), "1024.00 MB");
    EXPECT_EQ(QMFileManager::formatFileSize(kKilo * kKilo * kKilo), "1.00 GB");
    EXPECT_EQ(QMFileManager::formatFileSize(1.25 * kKilo * kKilo * kKilo), "1.25 GB");
    EXPECT_EQ(QMFileManager::formatFileSize(kKilo * kKilo * kKilo * kKilo), "1.00 TB");
    EXPECT_EQ(QMFileManager::formatFileSize(2048 * kKilo * kKilo * kKilo * kKilo), "2048.00 TB");
}

TEST(QMFileManagerNamesTest, loseWhatAFileNameMustNotHave) {
    EXPECT_EQ(QMFileManager::validateFilename(".My:File/Name\n"), "MyFileName");
    EXPECT_EQ(QMFileManager::validateFilename("  a b \t"), "a b");
    EXPECT_EQ(QMFileManager::validateFilename("a/b:c", false), "a/bc");
    EXPECT_EQ(QMFileManager::validateFilename("a/b:c", true), "abc");
    EXPECT_EQ(QMFileManager::validateFilename(""), "");
}

TEST(QMFileManagerNamesTest, loseOneLeadingDotBeforeTheyAreTrimmed) {
    EXPECT_EQ(QMFileManager::validateFilename(" .x"), ".x");
    EXPECT_EQ(QMFileManager::validateFilename("."), "");
    EXPECT_EQ(QMFileManager::validateFilename(".."), ".");
    EXPECT_EQ(QMFileManager::validateFilename("..x"), ".x");
    EXPECT_EQ(QMFileManager::validateFilename(". x"), "x");
}

TEST_F(QMFileManagerTest, findsTheFirstFreeNumber) {
    const std::string path = sandbox.path("Report.xml");
    EXPECT_EQ(QMFileManager::uniqueFilename(path), path);
    sandbox.write("Report.xml", "");
    EXPECT_EQ(QMFileManager::uniqueFilename(path), sandbox.path("Report 2.xml"));
    sandbox.write("Report 2.xml", "");
    makeFolder("Report 3.xml");
    EXPECT_EQ(QMFileManager::uniqueFilename(path), sandbox.path("Report 4.xml"));
}

TEST_F(QMFileManagerTest, numbersANameWithoutExtensionAtItsEnd) {
    EXPECT_EQ(QMFileManager::uniqueFilename(sandbox.write("x", "")), sandbox.path("x 2"));
    EXPECT_EQ(QMFileManager::uniqueFilename(sandbox.write(".profile", "")),
              sandbox.path(".profile 2"));
    EXPECT_EQ(QMFileManager::uniqueFilename(sandbox.write("a.b.c", "")), sandbox.path("a.b 2.c"));
}

}  // namespace
}  // namespace vornic
