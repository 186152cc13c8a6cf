#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileSystem.h"
#include "platform/settings/Directories.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

class DirectoriesTest : public test::SandboxTest {
  protected:
    void chooseFolders(const std::string& text) {
        fs::create_directories(home + "/.config");
        std::ofstream(home + "/.config/user-dirs.dirs", std::ios::trunc) << text;
    }
    std::string home = sandbox.home();
};

/// The first folder of a kind, "nothing" when there is none.
std::string user(SearchPathDirectory kind) {
    const auto folders = searchPathForDirectories(kind, SearchPathDomain::user);
    return folders.empty() ? "nothing" : folders.front();
}

std::string local(SearchPathDirectory kind) {
    const auto folders = searchPathForDirectories(kind, SearchPathDomain::local);
    return folders.empty() ? "nothing" : folders.front();
}

std::string ofSystem(SearchPathDirectory kind) {
    const auto folders = searchPathForDirectories(kind, SearchPathDomain::system);
    return folders.empty() ? "nothing" : folders.front();
}

TEST_F(DirectoriesTest, knowsTheFoldersOfTheUser) {
    using enum SearchPathDirectory;
    const std::string library_ = home + "/.local/share/quillmark";
    EXPECT_EQ(user(library), library_);
    EXPECT_EQ(user(applicationSupport), library_ + "/Application Support");
    EXPECT_EQ(user(documentation), library_ + "/Documentation");
    EXPECT_EQ(user(caches), home + "/.cache");
    EXPECT_EQ(user(application), home + "/Applications");
    EXPECT_EQ(user(adminApplication), home + "/Applications/Utilities");
    EXPECT_EQ(user(document), home + "/Documents");
    EXPECT_EQ(user(desktop), home + "/Desktop");
    EXPECT_EQ(user(movies), home + "/Videos");
}

TEST_F(DirectoriesTest, knowsTheFoldersOfTheMachine) {
    using enum SearchPathDirectory;
    EXPECT_EQ(local(library), "/var/lib/quillmark");
    EXPECT_EQ(local(applicationSupport), "/var/lib/quillmark/Application Support");
    EXPECT_EQ(local(documentation), "/var/lib/quillmark/Documentation");
    EXPECT_EQ(local(document), "/var/lib/quillmark/Documents");
    EXPECT_EQ(local(caches), "/var/cache");
    EXPECT_EQ(local(application), "/opt");
    EXPECT_EQ(local(adminApplication), "/opt/Utilities");
    EXPECT_EQ(local(desktop), "nothing");
    EXPECT_EQ(local(movies), "nothing");
}

TEST_F(DirectoriesTest, knowsTheFoldersOfTheSystem) {
    using enum SearchPathDirectory;
    EXPECT_EQ(ofSystem(library), "/usr/lib/quillmark");
    EXPECT_EQ(ofSystem(desktop), "nothing");
}

TEST_F(DirectoriesTest, followsTheBaseFoldersWhenTheyAreAbsolute) {
    using enum SearchPathDirectory;
    setenv("XDG_DATA_HOME", "/data/", 1);
    setenv("XDG_CACHE_HOME", "/cache", 1);
    EXPECT_EQ(user(library), "/data/quillmark");
    EXPECT_EQ(userCacheDirectory(), "/cache");
    setenv("XDG_DATA_HOME", "relative", 1);
    setenv("XDG_CACHE_HOME", "", 1);
    EXPECT_EQ(user(library), home + "/.local/share/quillmark");
    EXPECT_EQ(userCacheDirectory(), home + "/.cache");
}

TEST_F(DirectoriesTest, followsTheUsersChoiceOfFolders) {
    using enum SearchPathDirectory;
    chooseFolders(
        "# written by a program\nXDG_DESKTOP_DIR=\"$HOME/Schreib\\\"tisch\"\n"
        "XDG_DOCUMENTS_DIR=\"/data/Documents/\"\nXDG_VIDEOS_DIR=\"$HOME/\"\n");
    EXPECT_EQ(user(desktop), home + "/Schreib\"tisch");
    EXPECT_EQ(user(document), "/data/Documents");
    EXPECT_EQ(user(movies), home);
}

TEST_F(DirectoriesTest, takesTheUsualFolderWhereTheChoiceIsNoAbsolutePath) {
    using enum SearchPathDirectory;
    chooseFolders("XDG_DESKTOP_DIR=\"Desk\"\nXDG_VIDEOS_DIR=\n");
    EXPECT_EQ(user(desktop), home + "/Desktop");
    EXPECT_EQ(user(movies), home + "/Videos");
    EXPECT_EQ(user(document), home + "/Documents");
}

TEST_F(DirectoriesTest, looksForTheChoiceInTheConfigurationFolder) {
    setenv("XDG_CONFIG_HOME", sandbox.folder().c_str(), 1);
    sandbox.write("user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Here\"\n");
    EXPECT_EQ(user(SearchPathDirectory::desktop), home + "/Here");
}

TEST_F(DirectoriesTest, takesHomeFromTheUserDatabaseWhenTheVariableIsNoPath) {
    const struct passwd* entry = getpwuid(getuid());
    if (entry == nullptr) {
        GTEST_SKIP() << "the user is not in the user database";
    }
    const std::string expected = entry->pw_dir;
    unsetenv("HOME");
    EXPECT_EQ(homeDirectory(), expected);
    setenv("HOME", "relative", 1);
    EXPECT_EQ(homeDirectory(), expected);
    setenv("HOME", "/somewhere//", 1);
    EXPECT_EQ(homeDirectory(), "/somewhere");
}

TEST_F(DirectoriesTest, knowsTheUser) {
    EXPECT_EQ(realUserId(), getuid());
    const struct passwd* entry = getpwuid(getuid());
    EXPECT_EQ(userName(), entry != nullptr ? entry->pw_name : std::to_string(getuid()));
}

TEST_F(DirectoriesTest, hasNumbersAndNothingForAUserWhomNobodyKnows) {
    if (getuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    EXPECT_TRUE(test::passesInChild([] {
        ASSERT_EQ(setuid(4'000'123), 0);
        EXPECT_EQ(userName(), "4000123");
        unsetenv("HOME");
        unsetenv("XDG_DATA_HOME");
        unsetenv("XDG_CACHE_HOME");
        EXPECT_EQ(homeDirectory(), "");
        EXPECT_EQ(user(SearchPathDirectory::library), "nothing");
        EXPECT_EQ(user(SearchPathDirectory::desktop), "nothing");
        EXPECT_EQ(userCacheDirectory(), std::nullopt);
    }));
}

TEST_F(DirectoriesTest, prefersTheVariablesForTheTemporaryFolder) {
    setenv("TMPDIR", "/some/where/", 1);
    EXPECT_EQ(temporaryDirectory(), "/some/where");
    setenv("TMPDIR", "relative", 1);
    fs::permissions(home, fs::perms::owner_all);
    setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
    EXPECT_EQ(temporaryDirectory(), home);
    unsetenv("XDG_RUNTIME_DIR");
}

TEST_F(DirectoriesTest, avoidsARuntimeFolderThatOthersCanReach) {
    unsetenv("TMPDIR");
    fs::permissions(home, static_cast<fs::perms>(0755));
    setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
    EXPECT_NE(temporaryDirectory(), home);
    unsetenv("XDG_RUNTIME_DIR");
}

/// With a /tmp of its own, and no variable that names another folder.
class SharedTemporaryFolderTest : public DirectoriesTest {
  protected:
    void SetUp() override {
        if (!mounts.isAvailable() || !mounts.mountVolume("/tmp", "tmpfs", "size=1m,mode=1777")) {
            GTEST_SKIP() << "needs the right to mount a volume";
        }
        unsetenv("TMPDIR");
        unsetenv("XDG_RUNTIME_DIR");
    }
    test::PrivateMounts mounts;
    std::string usual = "/tmp/quillmark-" + std::to_string(geteuid());
};

void expectPrivateFolder(const std::string& path) {
    struct stat status {};
    ASSERT_EQ(lstat(path.c_str(), &status), 0) << path;
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    EXPECT_EQ(status.st_uid, geteuid());
}

TEST_F(SharedTemporaryFolderTest, isMadeForTheUserAlone) {
    const mode_t before = umask(0);
    EXPECT_EQ(temporaryDirectory(), usual);
    umask(before);
    expectPrivateFolder(usual);
    EXPECT_EQ(temporaryDirectory(), usual);
}

TEST_F(SharedTemporaryFolderTest, isAFreshOneWhereALinkTookItsName) {
    EXPECT_TRUE(test::passesInChild([this] {
        fs::create_directory("/tmp/trap");
        fs::permissions("/tmp/trap", fs::perms::owner_all);
        fs::create_symlink("/tmp/trap", usual);
        const std::string folder = temporaryDirectory();
        EXPECT_TRUE(folder.starts_with(usual + "-")) << folder;
        expectPrivateFolder(folder);
        EXPECT_EQ(temporaryDirectory(), folder);
        EXPECT_TRUE(fs::is_empty("/tmp/trap"));
    }));
}

TEST_F(SharedTemporaryFolderTest, isAFreshOneWhereAnotherUserTookItsName) {
    EXPECT_TRUE(test::passesInChild([this] {
        fs::create_directory(usual);
        fs::permissions(usual, fs::perms::owner_all);
        ASSERT_EQ(chown(usual.c_str(), 1234, 1234), 0);
        const std::string folder = temporaryDirectory();
        EXPECT_NE(folder, usual);
        expectPrivateFolder(folder);
    }));
}

TEST_F(SharedTemporaryFolderTest, isAFreshOneWhereTheOldOneIsOpenToOthers) {
    EXPECT_TRUE(test::passesInChild([this] {
        fs::create_directory(usual);
        fs::permissions(usual, static_cast<fs::perms>(0777));
        const std::string folder = temporaryDirectory();
        EXPECT_NE(folder, usual);
        expectPrivateFolder(folder);
    }));
}

TEST_F(DirectoriesTest, looksForSharedDataAtTheUsersFirst) {
    unsetenv("XDG_DATA_DIRS");
    EXPECT_EQ(sharedDataDirectories(),
              (std::vector<std::string>{home + "/.local/share", "/usr/local/share", "/usr/share"}));
    unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(sharedDataDirectories().front(), home + "/.local/share");
}

TEST_F(DirectoriesTest, looksForSharedDataInAbsoluteFoldersAlone) {
    setenv("XDG_DATA_HOME", "/own", 1);
    setenv("XDG_DATA_DIRS", "/one/::relative:/two:./three", 1);
    EXPECT_EQ(sharedDataDirectories(), (std::vector<std::string>{"/own", "/one", "/two"}));
    setenv("XDG_DATA_DIRS", "", 1);
    EXPECT_EQ(sharedDataDirectories(),
              (std::vector<std::string>{"/own", "/usr/local/share", "/usr/share"}));
    unsetenv("XDG_DATA_DIRS");
}

TEST_F(DirectoriesTest, expandsATildeToTheHomeFolder) {
    EXPECT_EQ(expandingTildeInPath("~"), sandbox.home());
    EXPECT_EQ(expandingTildeInPath("~/Movies/a.xml"), sandbox.home() + "/Movies/a.xml");
    EXPECT_EQ(expandingTildeInPath("/a/~"), "/a/~");
    EXPECT_EQ(expandingTildeInPath("~someone/a"), "~someone/a");
    EXPECT_EQ(expandingTildeInPath(""), "");
}

TEST_F(DirectoriesTest, expandsATildeBelowTheRootFolder) {
    setenv("HOME", "/", 1);
    EXPECT_EQ(expandingTildeInPath("~/a"), "/a");
}

}  // namespace
}  // namespace vornic::platform
