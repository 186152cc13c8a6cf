#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/files/QMFileManager.h"
#include "tests/foundation/files/FileManagerTest.h"
#include "tests/support/programs/ConsoleCapture.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// What belongs to the system is neither changed by the process's own rights nor with others. The
/// paths are the user's own standard folders where something could be lost, and others where the
/// process has no rights.
class QMFileManagerGuardTest : public test::FileManagerTest {
  protected:
    QMFileManagerGuardTest() {
        fs::create_directories(library() + "/Preferences");
        fs::create_directories(sandbox.home() + "/Desktop");
        test::writeBytes(sandbox.home() + "/Desktop/Cut.xml", "x");
        fs::create_symlink("/etc", sandbox.path("settings"));
        fs::create_symlink(sandbox.home(), sandbox.path("home"));
        test::writeBytes(sandbox.path("file"), "x");
    }
    [[nodiscard]] std::string library() const { return sandbox.home() + "/.local/share/quillmark"; }
    [[nodiscard]] std::vector<std::string> guarded() const {
        return {sandbox.home(),
                sandbox.home() + "/.",
                sandbox.home() + "//",
                sandbox.path("home/"),
                sandbox.path("../home"),
                sandbox.path("home/.local/share/quillmark"),
                library(),
                library() + "/Preferences",
                library() + "/Preferences/../Preferences",
                "/etc/hosts",
                sandbox.path("settings/hosts"),
                sandbox.path("settings/../etc/hosts"),
                "/usr",
                "/tmp",
                "/"};
    }
    void beSuperUser() {
        host->superUser = true;
        QMAuthorization::setSharedController(std::make_shared<QMAuthorization>(true, host));
    }
    void expectAllThere() {
        EXPECT_THAT(runs(), IsEmpty());
        EXPECT_THAT(host->events, Each("copyPrivilegedReference 0")) << "nobody is asked";
        EXPECT_EQ(test::readBytes(sandbox.home() + "/Desktop/Cut.xml"), "x");
        EXPECT_TRUE(fs::is_directory(library() + "/Preferences"));
        EXPECT_FALSE(test::exists(trash()));
    }

    test::ConsoleCapture console;
};

TEST_F(QMFileManagerGuardTest, trashesNothingOfTheSystem) {
    std::vector<std::string> lines;
    for (const std::string& path : guarded()) {
        EXPECT_FALSE(QMFileManager::trashFile(path)) << path;
        EXPECT_FALSE(QMFileManager::trashFile(path, false)) << path;
        lines.push_back("Unable to trash path " + path + " because it is a system directory.");
    }
    EXPECT_FALSE(QMFileManager::trashFile("/", seconds(5)));
    lines.push_back(lines.back());
    expectAllThere();
    EXPECT_EQ(console.lines(), lines);
    EXPECT_THAT(log.entries(), IsEmpty()) << "not even unlocked";
}

TEST_F(QMFileManagerGuardTest, trashesNothingOfTheSystemForTheSuperUserEither) {
    beSuperUser();
    for (const std::string& path : guarded()) {
        EXPECT_FALSE(QMFileManager::trashFile(path)) << path;
        EXPECT_FALSE(QMFileManager::removeFile(path)) << path;
        EXPECT_FALSE(QMFileManager::moveFile(path, sandbox.path("moved"))) << path;
        EXPECT_FALSE(QMFileManager::trashDirectoryContents(path)) << path;
    }
    expectAllThere();
}

TEST_F(QMFileManagerGuardTest, removesNothingOfTheSystem) {
    for (const std::string& path : guarded()) {
        EXPECT_FALSE(QMFileManager::removeFile(path)) << path;
        EXPECT_FALSE(QMFileManager::removeFile(path, false)) << path;
        EXPECT_FALSE(QMFileManager::removeFile(path, seconds(5))) << path;
    }
    expectAllThere();
    EXPECT_EQ(log.entries().front(), "Error removing file: The file " + sandbox.home() +
                                         " cannot be removed: it belongs to the system.. "
                                         "Authorizing...");
    EXPECT_THAT(log.entries(), Each(HasSubstr("it belongs to the system")));
}

TEST_F(QMFileManagerGuardTest, removesNoStandardFolderThatIsEmpty) {
    EXPECT_FALSE(QMFileManager::removeFolderIfEmpty(library() + "/Preferences"));
    expectAllThere();
}

TEST_F(QMFileManagerGuardTest, trashesNoContentsOfTheSystemsFolders) {
    for (const std::string& path : guarded()) {
        EXPECT_FALSE(QMFileManager::trashDirectoryContents(path)) << path;
        EXPECT_FALSE(QMFileManager::trashDirectoryContents(path, false)) << path;
    }
    expectAllThere();
    EXPECT_THAT(console.lines(), Each(testing::StartsWith("Unable to trash folder contents of ")));
}

TEST_F(QMFileManagerGuardTest, trashesNoFileOfTheSystemByItsName) {
    EXPECT_THAT(QMFileManager::trashFilesNamed("hosts", sandbox.path("settings")),
                testing::Contains(sandbox.path("settings/hosts")));
    expectAllThere();
    EXPECT_TRUE(test::exists("/etc/hosts"));
}

TEST_F(QMFileManagerGuardTest, movesNothingOfTheSystem) {
    for (const std::string& path : guarded()) {
        EXPECT_FALSE(QMFileManager::moveFile(path, sandbox.path("moved"))) << path;
        EXPECT_FALSE(QMFileManager::moveFile(path, sandbox.path("moved"), false)) << path;
        EXPECT_FALSE(QMFileManager::moveFile(path, path)) << path;
    }
    expectAllThere();
    EXPECT_FALSE(test::exists(sandbox.path("moved")));
}

TEST_F(QMFileManagerGuardTest, replacesNothingOfTheSystem) {
    const std::string below = sandbox.path("below");
    fs::create_directory(below);
    fs::create_symlink("/etc/hosts", below + "/file");
    fs::create_symlink("/etc/hosts", sandbox.path("hosts"));
    const std::vector<std::string> paths{"/etc/hosts",
                                         sandbox.path("settings/hosts"),
                                         sandbox.path("settings/../etc/hosts"),
                                         sandbox.path("settings"),
                                         sandbox.path("hosts"),
                                         below,
                                         "/bin",
                                         "/bin/sh",
                                         "/usr/bin",
                                         "/usr/lib/thing",
                                         "/tmp",
                                         "/"};
    for (const bool asRoot : {false, true}) {
        if (asRoot) {
            beSuperUser();
        }
        for (const std::string& path : paths) {
            EXPECT_FALSE(QMFileManager::moveFile(sandbox.path("file"), path)) << path;
            EXPECT_FALSE(QMFileManager::copyFile(sandbox.path("file"), path)) << path;
        }
        EXPECT_FALSE(QMFileManager::createDirectory("/usr/lib/no such/folder"));
        EXPECT_FALSE(QMFileManager::createDirectory(sandbox.path("settings/no such/folder")));
        expectAllThere();
    }
    EXPECT_FALSE(QMFileManager::createEmptyFile("/etc/hosts"));
    expectAllThere();
    EXPECT_EQ(test::readBytes(sandbox.path("file")), "x");
}

TEST_F(QMFileManagerGuardTest, packsAndUnpacksNothingInTheSystemsPlace) {
    for (const std::string& path : guarded()) {
        EXPECT_FALSE(QMFileManager::compressFile(sandbox.path("file"), path)) << path;
        EXPECT_FALSE(QMFileManager::decompressFile(sandbox.path("file"), path)) << path;
    }
    expectAllThere();
}

TEST_F(QMFileManagerGuardTest, asksForRightsToWriteIntoAStandardFolder) {
    const std::string file = sandbox.path("file");
    EXPECT_TRUE(QMFileManager::copyFile(file, library()));
    EXPECT_TRUE(QMFileManager::moveFile(file, sandbox.home() + "/Desktop"));
    EXPECT_THAT(runs(),
                ElementsAre("execute /bin/cp -f -p -R " + file + " " + library(),
                            "execute /bin/mv -f " + file + " " + sandbox.home() + "/Desktop"));
}

TEST_F(QMFileManagerGuardTest, allowsWhatLiesInTheUsersStandardFolders) {
    EXPECT_TRUE(QMFileManager::trashFile(sandbox.home() + "/Desktop/Cut.xml", false));
    test::writeBytes(library() + "/Preferences/a.plist", "x");
    EXPECT_TRUE(QMFileManager::removeFile(library() + "/Preferences/a.plist", false));
    EXPECT_TRUE(QMFileManager::removeFile(sandbox.path("settings"), false)) << "a link";
    EXPECT_TRUE(test::exists("/etc/hosts"));
}

}  // namespace
}  // namespace vornic
