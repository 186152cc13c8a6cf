#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/files/QMFileManager.h"
#include "tests/foundation/files/FileManagerTest.h"
#include "tests/support/programs/ConsoleCapture.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class QMFileManagerChangesTest : public test::FileManagerTest {
  protected:
    void refuseAuthorization() const { host->rightsStatus = -60005; }
};

class QMFileManagerVolumeTest : public test::SecondVolumeTest {};

/// The names under which files appear in a folder by being moved.
class MovesInto {
  public:
    explicit MovesInto(const std::string& folder)
        : watch_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        EXPECT_GE(inotify_add_watch(watch_, folder.c_str(), IN_MOVED_TO), 0);
    }
    ~MovesInto() { close(watch_); }
    MovesInto(const MovesInto&) = delete;
    MovesInto& operator=(const MovesInto&) = delete;

    [[nodiscard]] std::vector<std::string> names() const {
        alignas(struct inotify_event) std::array<char, 4096> buffer{};
        const ssize_t got = read(watch_, buffer.data(), buffer.size());
        std::vector<std::string> names;
        for (ssize_t at = 0; at < got;) {
            const auto* event =
                reinterpret_cast<const struct inotify_event*>(buffer.data() + at);  // NOLINT
            names.emplace_back(&event->name[0]);
            at += static_cast<ssize_t>(sizeof(*event) + event->len);
        }
        return names;
    }

  private:
    int watch_;
};

TEST_F(QMFileManagerChangesTest, trashesFilesFoldersAndLinks) {
    sandbox.write("Cut.xml", "text");
    makeFolder("Project");
    sandbox.write("Project/a", "x");
    fs::create_symlink("Project", sandbox.path("link"));
    EXPECT_TRUE(QMFileManager::trashFile(sandbox.path("Cut.xml")));
    EXPECT_TRUE(QMFileManager::trashFile(sandbox.path("link"), true));
    EXPECT_TRUE(QMFileManager::trashFile(sandbox.path("Project/"), false));
    EXPECT_THAT(test::namesIn(trash()), ElementsAre("Cut.xml", "Project", "link"));
    EXPECT_TRUE(fs::is_symlink(trash("link")));
    EXPECT_EQ(test::readBytes(trash("Project/a")), "x");
    EXPECT_THAT(test::namesIn(sandbox.folder()), IsEmpty());
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, resolvesAClashInTheTrash) {
    for (const char* text : {"1", "2"}) {
        EXPECT_TRUE(QMFileManager::trashFile(sandbox.write("Cut.xml", text)));
    }
    EXPECT_EQ(test::readBytes(trash("Cut.xml")), "1");
    EXPECT_EQ(test::readBytes(trash("Cut 2.xml")), "2");
}

TEST_F(QMFileManagerVolumeTest, trashesFromAnotherVolume) {
    const std::string path = sandbox.write("volume/Cut.xml", "text");
    EXPECT_TRUE(QMFileManager::trashFile(path, false));
    EXPECT_EQ(test::readBytes(trash("Cut.xml")), "text");
    EXPECT_FALSE(test::exists(path));
}

TEST_F(QMFileManagerChangesTest, hasNothingToTrashOrRemoveWhereNothingIs) {
    fs::create_symlink("nowhere", sandbox.path("dangling"));
    for (const std::string& path : {sandbox.path("missing"), sandbox.path("dangling")}) {
        EXPECT_TRUE(QMFileManager::trashFile(path));
        EXPECT_TRUE(QMFileManager::removeFile(path));
        EXPECT_TRUE(QMFileManager::trashFile(path, std::chrono::seconds(5)));
        EXPECT_TRUE(QMFileManager::removeFile(path, std::chrono::seconds(5)));
    }
    EXPECT_THAT(host->events, ElementsAre("copyPrivilegedReference 0"));
    EXPECT_THAT(log.entries(), testing::Each(testing::StartsWith("Unable to unlock file ")));
}

TEST_F(QMFileManagerChangesTest, trashesWithRightsWhatItMayNotMove) {
    const std::string path = writeInClosedFolder("Cut.xml");
    EXPECT_TRUE(QMFileManager::trashFile(path));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mv -f " + path + " " + trash("Cut.xml")));
    EXPECT_FALSE(QMFileManager::trashFile(path, false));
    EXPECT_EQ(runs().size(), 1U);
    EXPECT_TRUE(test::exists(path));
    EXPECT_THAT(log.entries(), IsEmpty()) << "nothing is logged on this road";
}

TEST_F(QMFileManagerChangesTest, unlocksWhatItTrashesAndRemoves) {
    const std::string first = sandbox.write("first", "x");
    const std::string second = sandbox.write("second", "x");
    // The user's own, so that it can be emptied at the end.
    fs::create_directory(trash());
    const test::RightsOfRoot root;
    if (!root.available() || !QMFileManager::lockFile(first)) {
        GTEST_SKIP() << "needs root and a volume with the attribute";
    }
    ASSERT_TRUE(QMFileManager::lockFile(second));
    EXPECT_TRUE(QMFileManager::trashFile(first, false));
    EXPECT_TRUE(QMFileManager::removeFile(second, false));
    EXPECT_THAT(test::namesIn(sandbox.folder()), IsEmpty());
    EXPECT_FALSE(QMFileManager::isFileLocked(trash("first")));
}

TEST_F(QMFileManagerChangesTest, goesToTheRightsForALockThatItMayNotTake) {
    const std::string path = sandbox.write("locked", "x");
    {
        const test::RightsOfRoot root;
        if (!root.available() || !QMFileManager::lockFile(path)) {
            GTEST_SKIP() << "needs root and a volume with the attribute";
        }
    }
    EXPECT_TRUE(QMFileManager::removeFile(path));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/rm -Rdf " + path));
    EXPECT_THAT(log.entries(),
                ElementsAre("Unable to unlock file " + path + ": The file " + path +
                                " cannot be unlocked: the operation is not permitted.",
                            "Error removing file: The file " + path +
                                " cannot be removed: the operation is not permitted.. "
                                "Authorizing..."));
    const test::RightsOfRoot root;
    EXPECT_TRUE(QMFileManager::unlockFile(path));
}

TEST_F(QMFileManagerChangesTest, removesFilesFoldersAndLinks) {
    sandbox.write("Cut.xml", "text");
    makeFolder("Project/Media");
    sandbox.write("Project/Media/a", "x");
    makeFolder("other");
    sandbox.write("other/kept", "x");
    fs::create_symlink("other", sandbox.path("link"));
    fs::create_symlink("other", sandbox.path("slashed"));
    for (const char* name : {"Cut.xml", "Project", "link", "slashed/"}) {
        EXPECT_TRUE(QMFileManager::removeFile(sandbox.path(name))) << name;
    }
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("other"));
    EXPECT_TRUE(test::exists(sandbox.path("other/kept")));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, removesWithRightsWhatItMayNotRemove) {
    const std::string path = writeInClosedFolder("Cut.xml");
    EXPECT_TRUE(QMFileManager::removeFile(path));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/rm -Rdf " + path));
    EXPECT_THAT(log.entries(), ElementsAre("Error removing file: The file " + path +
                                           " cannot be removed: permission denied.. "
                                           "Authorizing..."));
}

TEST_F(QMFileManagerChangesTest, logsTheAuthorizationThatDoesNotFollow) {
    const std::string path = writeInClosedFolder("Cut.xml");
    EXPECT_FALSE(QMFileManager::removeFile(path, false));
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_THAT(host->events, ElementsAre("copyPrivilegedReference 0")) << "nobody is asked";
    EXPECT_THAT(log.entries(), ElementsAre("Error removing file: The file " + path +
                                           " cannot be removed: permission denied.. "
                                           "Authorizing..."));
}

TEST_F(QMFileManagerChangesTest, failsWhenTheRightsAreRefused) {
    refuseAuthorization();
    const std::string path = writeInClosedFolder("Cut.xml");
    EXPECT_FALSE(QMFileManager::removeFile(path));
    EXPECT_FALSE(QMFileManager::trashFile(path));
    EXPECT_FALSE(QMFileManager::createDirectory(sandbox.path("closed/new")));
    EXPECT_FALSE(QMFileManager::copyFile(path, sandbox.path("closed/new")));
    EXPECT_FALSE(QMFileManager::moveFile(path, sandbox.path("new")));
    EXPECT_THAT(runs(), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, makesAllFoldersOfAPath) {
    EXPECT_TRUE(QMFileManager::createDirectory(sandbox.path("a/b/c")));
    EXPECT_TRUE(fs::is_directory(sandbox.path("a/b/c")));
    EXPECT_TRUE(QMFileManager::createDirectory(sandbox.path("a/b/c"), false)) << "is there already";
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, makesNoFolderOnAVolumeThatIsNotMounted) {
    test::ConsoleCapture console;
    EXPECT_FALSE(QMFileManager::createDirectory("/Volumes/Missing/x"));
    EXPECT_THAT(console.lines(), ElementsAre("Unable to create directory. Drive is not mounted."));
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, makesFoldersWithRightsWhereItMayNot) {
    const std::string file = writeInClosedFolder("file");
    const std::string path = sandbox.path("closed/new");
    const std::string line = "Error creating folder: The folder " + path +
                             " cannot be made: permission denied.. Authorizing...";
    EXPECT_TRUE(QMFileManager::createDirectory(path));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mkdir -p " + path));
    EXPECT_FALSE(QMFileManager::createDirectory(path, false));
    EXPECT_EQ(runs().size(), 1U);
    EXPECT_THAT(log.entries(), ElementsAre(line, line));
}

TEST_F(QMFileManagerChangesTest, makesEmptyFiles) {
    const std::string path = sandbox.path("new.txt");
    EXPECT_TRUE(QMFileManager::createEmptyFile(path));
    EXPECT_EQ(test::readBytes(path), "");
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, makesAnEmptyFileByAMoveThatMayNeedRights) {
    const std::string path = writeInClosedFolder("file");
    EXPECT_TRUE(QMFileManager::createEmptyFile(sandbox.path("closed/new")));
    ASSERT_EQ(runs().size(), 1U);
    EXPECT_TRUE(runs().front().starts_with("execute /bin/mv -f " + std::string(getenv("TMPDIR"))))
        << runs().front();
    EXPECT_TRUE(runs().front().ends_with(" " + sandbox.path("closed/new")));
}

TEST_F(QMFileManagerChangesTest, leavesNoTemporaryFileOfOneThatCannotBeMade) {
    refuseAuthorization();
    static_cast<void>(writeInClosedFolder("file"));
    EXPECT_FALSE(QMFileManager::createEmptyFile(sandbox.path("closed/new")));
    EXPECT_THAT(test::namesIn(getenv("TMPDIR")), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, makesNoEmptyFileWithoutATemporaryFolder) {
    const std::string folder = getenv("TMPDIR");
    fs::permissions(folder, fs::perms(0500));
    EXPECT_FALSE(QMFileManager::createEmptyFile(sandbox.path("new")));
    fs::permissions(folder, fs::perms(0700));
    EXPECT_FALSE(test::exists(sandbox.path("new")));
}

TEST_F(QMFileManagerChangesTest, copiesFilesFoldersAndLinks) {
    makeFolder("Project/Media");
    sandbox.write("Project/Media/a", "x");
    fs::create_symlink("Media/a", sandbox.path("Project/link"));
    EXPECT_TRUE(QMFileManager::copyFile(sandbox.path("Project"), sandbox.path("Copy")));
    EXPECT_EQ(test::readBytes(sandbox.path("Copy/Media/a")), "x");
    EXPECT_TRUE(fs::is_symlink(sandbox.path("Copy/link")));
    EXPECT_TRUE(QMFileManager::copyFile(sandbox.path("Project/Media/a"), sandbox.path("b"), false));
    EXPECT_EQ(test::readBytes(sandbox.path("b")), "x");
    EXPECT_TRUE(test::exists(sandbox.path("Project/Media/a")));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, reportsPathsThatAreNothing) {
    testing::internal::CaptureStdout();
    test::LogCapture::start(test::LogCapture::Printing::on);
    EXPECT_FALSE(QMFileManager::copyFile(std::nullopt, sandbox.path("b")));
    EXPECT_FALSE(QMFileManager::copyFile(std::nullopt, std::nullopt, false));
    EXPECT_FALSE(QMFileManager::copyFile("/a", std::nullopt));
    EXPECT_FALSE(QMFileManager::copyFile("/a", std::nullopt, std::chrono::seconds(5)));
    EXPECT_THAT(log.entries(), ElementsAre("Error copying file: source path is nil",
                                           "Error copying file: source path is nil",
                                           "Error copying file /a: destination path is nil",
                                           "Error copying file /a: destination path is nil"));
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::HasSubstr("Error copying file /a: destination path is nil\n"));
    EXPECT_THAT(runs(), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, copiesOverNothingByItsOwnRights) {
    const std::string source = sandbox.write("a", "new");
    const std::string destination = sandbox.write("b", "old");
    EXPECT_TRUE(QMFileManager::copyFile(source, destination));
    EXPECT_EQ(test::readBytes(destination), "old");
    EXPECT_THAT(runs(), ElementsAre("execute /bin/cp -f -p -R " + source + " " + destination));
    EXPECT_FALSE(QMFileManager::copyFile(source, destination, false));
    EXPECT_EQ(runs().size(), 1U);
    EXPECT_THAT(log.entries(),
                testing::Each("Error copying file: The file " + destination +
                              " cannot be made: a file of that name exists already.. "
                              "Authorizing..."));
    EXPECT_EQ(log.entries().size(), 2U);
}

TEST_F(QMFileManagerChangesTest, unlocksTheFolderThatItCopiesInto) {
    const std::string folder = makeFolder("Project");
    const std::string source = sandbox.write("a", "x");
    const test::RightsOfRoot root;
    if (!root.available() || !QMFileManager::lockFile(folder)) {
        GTEST_SKIP() << "needs root and a volume with the attribute";
    }
    EXPECT_TRUE(QMFileManager::copyFile(source, sandbox.path("Project/a"), false));
    EXPECT_FALSE(QMFileManager::isFileLocked(folder));
}

TEST_F(QMFileManagerChangesTest, movesFilesAndFolders) {
    makeFolder("Project");
    sandbox.write("Project/a", "x");
    EXPECT_TRUE(QMFileManager::moveFile(sandbox.path("Project"), sandbox.path("Moved")));
    EXPECT_TRUE(QMFileManager::moveFile(sandbox.path("Moved/a"), sandbox.path("b"), false));
    EXPECT_EQ(test::readBytes(sandbox.path("b")), "x");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Moved", "b"));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerVolumeTest, movesToAnotherVolume) {
    makeFolder("Project");
    sandbox.write("Project/a", "x");
    EXPECT_TRUE(
        QMFileManager::moveFile(sandbox.path("Project"), sandbox.path("volume/Project"), false));
    EXPECT_EQ(test::readBytes(sandbox.path("volume/Project/a")), "x");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("volume"));
}

TEST_F(QMFileManagerVolumeTest, leavesNoPartOfACopyOnAFullVolume) {
    sandbox.write("large", std::string(std::size_t{20} << 20U, 'x'));
    EXPECT_FALSE(
        QMFileManager::copyFile(sandbox.path("large"), sandbox.path("volume/large"), false));
    EXPECT_THAT(test::namesIn(sandbox.path("volume")), IsEmpty());
    EXPECT_THAT(log.entries(), ElementsAre(testing::StartsWith("Error copying file: ")));
}

TEST_F(QMFileManagerChangesTest, movesOverNothingByItsOwnRights) {
    const std::string source = sandbox.write("a", "new");
    const std::string destination = sandbox.write("b", "old");
    const std::string line = "Error moving file from " + source + " to " + destination +
                             ": The file " + source + " cannot be moved to " + destination +
                             ": a file of that name exists already..";
    EXPECT_FALSE(QMFileManager::moveFile(source, destination, false));
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_TRUE(QMFileManager::moveFile(source, destination));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mv -f " + source + " " + destination));
    EXPECT_EQ(test::readBytes(destination), "old");
    EXPECT_THAT(log.entries(), ElementsAre(line, line, "Authorizing..."));
}

TEST_F(QMFileManagerChangesTest, unlocksWhatStandsInAMovesWay) {
    const std::string source = sandbox.write("a", "new");
    const std::string folder = makeFolder("b");
    makeFolder("b/a");
    const std::string inner = sandbox.write("b/a/inner", "x");
    const test::RightsOfRoot root;
    if (!root.available() || !QMFileManager::lockFile(inner) || !QMFileManager::lockFile(folder)) {
        GTEST_SKIP() << "needs root and a volume with the attribute";
    }
    EXPECT_FALSE(QMFileManager::moveFile(source, folder, false));
    EXPECT_FALSE(QMFileManager::isFileLocked(folder));
    EXPECT_FALSE(QMFileManager::isFileLocked(inner));
}

TEST_F(QMFileManagerChangesTest, renamesToAnotherCase) {
    const std::string source = sandbox.write("Report.xml", "x");
    EXPECT_TRUE(QMFileManager::moveFile(source, sandbox.path("report.xml"), false));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("report.xml"));
    EXPECT_TRUE(
        QMFileManager::moveFile(sandbox.path("report.xml"), source, std::chrono::seconds(5)));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Report.xml"));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(QMFileManagerChangesTest, renamesThroughAFreeNameWhereBothNamesAreOne) {
    sandbox.write("Report 2.xml", "other");
    const std::string source = sandbox.write("Report.xml", "x");
    const MovesInto moves(sandbox.folder());
    EXPECT_TRUE(QMFileManager::moveFile(source, source, false));
    EXPECT_THAT(moves.names(), ElementsAre("Report 3.xml", "Report.xml"));
    EXPECT_EQ(test::readBytes(source), "x");
}

TEST_F(QMFileManagerChangesTest, keepsBothFilesWhoseNamesDifferInCaseAlone) {
    const std::string source = sandbox.write("Report.xml", "upper");
    const std::string destination = sandbox.write("report.xml", "lower");
    EXPECT_FALSE(QMFileManager::moveFile(source, destination, false));
    EXPECT_EQ(test::readBytes(source), "upper");
    EXPECT_EQ(test::readBytes(destination), "lower");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Report.xml", "report.xml"));
    EXPECT_THAT(log.entries(),
                Contains(testing::StartsWith("Error moving file from " + source + " to ")));
}

TEST_F(QMFileManagerChangesTest, failsToMoveWhatIsMissing) {
    EXPECT_FALSE(QMFileManager::moveFile(sandbox.path("Missing"), sandbox.path("missing")));
    EXPECT_FALSE(QMFileManager::moveFile(sandbox.path("Missing"), sandbox.path("other")));
    EXPECT_THAT(runs(), IsEmpty());
}

}  // namespace
}  // namespace vornic
