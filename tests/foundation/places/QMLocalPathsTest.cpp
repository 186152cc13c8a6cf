#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <unistd.h>

#include "foundation/places/QMLocalPaths.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic {
namespace {

using Path = std::optional<std::string>;

/// Most paths are the same for everybody; the super-user's correction has a fixture of its own.
class QMLocalPathsTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;

    [[nodiscard]] std::string library() const { return sandbox.home() + "/.local/share/quillmark"; }
};

TEST_F(QMLocalPathsTest, findsTheUsersFolders) {
    EXPECT_EQ(QMLocalPaths::applicationDirectory(true), sandbox.home() + "/Applications");
    EXPECT_EQ(QMLocalPaths::adminApplicationDirectory(true),
              sandbox.home() + "/Applications/Utilities");
    EXPECT_EQ(QMLocalPaths::documentDirectory(true), sandbox.home() + "/Documents");
    EXPECT_EQ(QMLocalPaths::libraryDirectory(true), library());
    EXPECT_EQ(QMLocalPaths::prefsDirectory(true), library() + "/Preferences");
    EXPECT_EQ(QMLocalPaths::cacheDirectory(true), sandbox.home() + "/.cache");
    EXPECT_EQ(QMLocalPaths::appSupportDirectory(true), library() + "/Application Support");
    EXPECT_EQ(QMLocalPaths::logDirectory(true), library() + "/Logs");
    EXPECT_EQ(QMLocalPaths::movieDirectory(), sandbox.home() + "/Videos");
    EXPECT_EQ(QMLocalPaths::desktopDirectory(), sandbox.home() + "/Desktop");
    EXPECT_EQ(QMLocalPaths::userDirectory(), sandbox.home());
    EXPECT_EQ(QMLocalPaths::trashDirectory(), sandbox.home() + "/.Trash");
    EXPECT_EQ(QMLocalPaths::darwinCacheDirectory(), sandbox.home() + "/.cache");
}

TEST_F(QMLocalPathsTest, findsTheMachinesFolders) {
    EXPECT_EQ(QMLocalPaths::applicationDirectory(false), "/opt");
    EXPECT_EQ(QMLocalPaths::adminApplicationDirectory(false), "/opt/Utilities");
    EXPECT_EQ(QMLocalPaths::documentDirectory(false), "/var/lib/quillmark/Documents");
    EXPECT_EQ(QMLocalPaths::libraryDirectory(false), "/var/lib/quillmark");
    EXPECT_EQ(QMLocalPaths::prefsDirectory(false), "/var/lib/quillmark/Preferences");
    EXPECT_EQ(QMLocalPaths::cacheDirectory(false), "/var/cache");
    EXPECT_EQ(QMLocalPaths::appSupportDirectory(false), "/var/lib/quillmark/Application Support");
    EXPECT_EQ(QMLocalPaths::logDirectory(false), "/var/lib/quillmark/Logs");
    EXPECT_EQ(QMLocalPaths::systemLibraryDirectory(), "/usr/lib/quillmark");
    EXPECT_EQ(QMLocalPaths::localDocumentationDirectory(), "/var/lib/quillmark/Documentation");
}

TEST_F(QMLocalPathsTest, yieldsNothingForAFolderThatThePlatformDoesNotHave) {
    EXPECT_EQ(QMLocalPaths::pathForDirectory(QMLocalPaths::Directory::movies,
                                             QMLocalPaths::Domain::local),
              std::nullopt);
    EXPECT_EQ(QMLocalPaths::pathForDirectory(QMLocalPaths::Directory::desktop,
                                             QMLocalPaths::Domain::system),
              std::nullopt);
}

TEST_F(QMLocalPathsTest, asksThePlatformAgainOnEveryCall) {
    ASSERT_EQ(QMLocalPaths::libraryDirectory(true), library());
    setenv("XDG_DATA_HOME", "/elsewhere", 1);
    EXPECT_EQ(QMLocalPaths::libraryDirectory(true), "/elsewhere/quillmark");
    EXPECT_EQ(QMLocalPaths::prefsDirectory(true), "/elsewhere/quillmark/Preferences");
}

TEST_F(QMLocalPathsTest, leavesTheUsersFoldersOfOthersThanRootAsTheyAre) {
    ASSERT_NE(getuid(), 0U);
    setenv("XDG_DATA_HOME", "/var/root/data", 1);
    EXPECT_EQ(QMLocalPaths::libraryDirectory(true), "/var/root/data/quillmark");
}

TEST_F(QMLocalPathsTest, namesTheUser) {
    EXPECT_EQ(QMLocalPaths::username(), platform::userName());
    EXPECT_FALSE(QMLocalPaths::username().empty());
}

TEST_F(QMLocalPathsTest, putsTemporaryFilesIntoTheTemporaryFolder) {
    const std::string folder = std::getenv("TMPDIR");
    EXPECT_EQ(QMLocalPaths::tempDirectory(), folder);
    const std::string file = QMLocalPaths::tempFile();
    ASSERT_EQ(file.substr(0, folder.size() + 1), folder + "/");
    const std::string name = file.substr(folder.size() + 1);
    constexpr std::size_t kUuidLength = 36;
    EXPECT_EQ(name.size(), kUuidLength + 8);
    EXPECT_EQ(name.substr(kUuidLength).find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789"),
              std::string::npos);
    EXPECT_NE(file.back(), '/');
    EXPECT_FALSE(test::exists(file));
    EXPECT_NE(QMLocalPaths::tempFile(), file);
}

TEST_F(QMLocalPathsTest, makesTemporaryNamesWithoutASlashAtTheEndOfTheFolder) {
    setenv("TMPDIR", (sandbox.folder() + "/").c_str(), 1);
    const std::string file = QMLocalPaths::tempFile();
    EXPECT_EQ(file.rfind('/'), sandbox.folder().size());
}

TEST_F(QMLocalPathsTest, makesANewUuidOnEveryCall) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        seen.insert(QMLocalPaths::uuid());
    }
    EXPECT_EQ(seen.size(), 1000U);
}

/// What `rand` gives after a seed, in the alphabet of random strings.
std::string drawnAfterSeed(unsigned seed, std::size_t length) {
    std::srand(seed);
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        text += "abcdefghijklmnopqrstuvwxyz0123456789"[std::rand() % 36];
    }
    return text;
}

TEST_F(QMLocalPathsTest, drawsRandomStringsWithRandSeededFromTimeAndProcessorTime) {
    const std::time_t firstTime = std::time(nullptr);
    const std::clock_t firstClock = std::clock();
    const std::string text = QMLocalPaths::randomString(20);
    const std::clock_t lastClock = std::clock();
    const std::time_t lastTime = std::time(nullptr);
    bool isDrawn = false;
    for (std::time_t time = firstTime; time <= lastTime; ++time) {
        for (std::clock_t clock = firstClock; clock <= lastClock && !isDrawn; ++clock) {
            isDrawn = drawnAfterSeed(static_cast<unsigned>(time * clock), 20) == text;
        }
    }
    EXPECT_TRUE(isDrawn) << text;
}

TEST_F(QMLocalPathsTest, makesRandomStringsOfTheLengthAskedFor) {
    EXPECT_EQ(QMLocalPaths::randomString(0), "");
    EXPECT_EQ(QMLocalPaths::randomString(1).size(), 1U);
    const std::string text = QMLocalPaths::randomString(5000);
    EXPECT_EQ(text.size(), 5000U);
    EXPECT_EQ(std::set<char>(text.begin(), text.end()).size(), 36U);
    EXPECT_EQ(text.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789"), std::string::npos);
}

TEST(QMLocalPaths, ensuresATrailingSlash) {
    EXPECT_EQ(QMLocalPaths::ensureTrailingSlash("a"), "a/");
    EXPECT_EQ(QMLocalPaths::ensureTrailingSlash("a/"), "a/");
    EXPECT_EQ(QMLocalPaths::ensureTrailingSlash("/"), "/");
    EXPECT_EQ(QMLocalPaths::ensureTrailingSlash(""), "");
    EXPECT_EQ(QMLocalPaths::ensureTrailingSlash(Path()), std::nullopt);
    EXPECT_EQ(QMLocalPaths::ensureTrailingSlash(Path("a")), "a/");
}

TEST(QMLocalPaths, stripsOneTrailingSlash) {
    EXPECT_EQ(QMLocalPaths::stripTrailingSlash("a/"), "a");
    EXPECT_EQ(QMLocalPaths::stripTrailingSlash("a//"), "a/");
    EXPECT_EQ(QMLocalPaths::stripTrailingSlash("a"), "a");
    EXPECT_EQ(QMLocalPaths::stripTrailingSlash("/"), "/");
    EXPECT_EQ(QMLocalPaths::stripTrailingSlash(""), "");
    EXPECT_EQ(QMLocalPaths::stripTrailingSlash(Path()), std::nullopt);
    EXPECT_EQ(QMLocalPaths::stripTrailingSlash(Path("a/")), "a");
}

bool isSystem(std::string_view path) {
    return QMLocalPaths::isPathSystemDirectory(path);
}
bool isExactlySystem(std::string_view path) {
    return QMLocalPaths::isPathSystemDirectory(path, true);
}

TEST_F(QMLocalPathsTest, takesTheRootFolderForASystemFolder) {
    EXPECT_TRUE(isSystem("/"));
    EXPECT_TRUE(isExactlySystem("/"));
}

TEST_F(QMLocalPathsTest, takesNoShortPathForASystemFolder) {
    for (const std::string_view path : {"", "/a", "a", "//", "/é", "~"}) {
        EXPECT_FALSE(isSystem(path)) << path;
        EXPECT_FALSE(isExactlySystem(path)) << path;
    }
}

TEST_F(QMLocalPathsTest, takesNothingForNoSystemFolder) {
    EXPECT_FALSE(QMLocalPaths::isPathSystemDirectory(std::nullopt));
    EXPECT_FALSE(QMLocalPaths::isPathSystemDirectory(Path(), true));
    EXPECT_FALSE(QMLocalPaths::isPathOnTimeMachineVolume(std::nullopt));
}

TEST_F(QMLocalPathsTest, takesEveryStandardFolderForASystemFolder) {
    const std::vector<Path> folders{QMLocalPaths::applicationDirectory(true),
                                    QMLocalPaths::applicationDirectory(false),
                                    QMLocalPaths::adminApplicationDirectory(true),
                                    QMLocalPaths::adminApplicationDirectory(false),
                                    QMLocalPaths::documentDirectory(true),
                                    QMLocalPaths::documentDirectory(false),
                                    QMLocalPaths::libraryDirectory(true),
                                    QMLocalPaths::libraryDirectory(false),
                                    QMLocalPaths::prefsDirectory(true),
                                    QMLocalPaths::prefsDirectory(false),
                                    QMLocalPaths::cacheDirectory(true),
                                    QMLocalPaths::cacheDirectory(false),
                                    QMLocalPaths::appSupportDirectory(true),
                                    QMLocalPaths::appSupportDirectory(false),
                                    QMLocalPaths::desktopDirectory(),
                                    QMLocalPaths::userDirectory(),
                                    QMLocalPaths::systemLibraryDirectory(),
                                    QMLocalPaths::localDocumentationDirectory()};
    for (const Path& folder : folders) {
        ASSERT_TRUE(folder);
        EXPECT_TRUE(isSystem(*folder)) << *folder;
        EXPECT_TRUE(isExactlySystem(*folder)) << *folder;
    }
}

TEST_F(QMLocalPathsTest, takesTheFixedFoldersForSystemFolders) {
    for (const std::string_view path :
         {"/Users/Shared", "/usr", "/var", "/bin", "/sbin", "/System"}) {
        EXPECT_TRUE(isSystem(path)) << path;
        EXPECT_TRUE(isExactlySystem(path)) << path;
    }
}

TEST_F(QMLocalPathsTest, protectsTheUsersFoldersAsThemselvesOnly) {
    EXPECT_FALSE(isSystem(library() + "/Logs"));
    EXPECT_FALSE(isSystem(sandbox.home() + "/Documents/cut.xml"));
    EXPECT_FALSE(isSystem(sandbox.home() + "/Videos"));
    EXPECT_FALSE(isSystem("/opt/editor"));
    EXPECT_FALSE(isSystem("/Users/Shared/Project"));
    EXPECT_FALSE(isSystem("/Users"));
    EXPECT_FALSE(isSystem("/etc"));
}

TEST_F(QMLocalPathsTest, protectsEverythingInTheSystemsTrees) {
    for (const std::string_view path :
         {"/usr/lib", "/usr/locale", "/usr/local", "/var/tmp", "/bin/sh", "/sbin/init",
          "/private/var/tmp", "/System/Library"}) {
        EXPECT_TRUE(isSystem(path)) << path;
        EXPECT_FALSE(isExactlySystem(path)) << path;
    }
    for (const std::string_view path : {"/usr/local/bin", "/usrx", "/various", "/private/var",
                                        "/binary", "/Systems/a", "usr/lib"}) {
        EXPECT_FALSE(isSystem(path)) << path;
    }
}

TEST_F(QMLocalPathsTest, dropsTheCharacterBeforeATrailingSlashToo) {
    EXPECT_FALSE(isSystem("/System/"));
    EXPECT_FALSE(isExactlySystem("/System/"));
    EXPECT_FALSE(isSystem("/usr/"));
    EXPECT_TRUE(isExactlySystem("/usrs/"));
    EXPECT_TRUE(isExactlySystem(sandbox.home() + "é/"));
    EXPECT_TRUE(isSystem("/usr/lib/"));
    EXPECT_FALSE(isSystem("/usr/local/bin/"));
    // What is left is "/usr/local", which lies in /usr and not in /usr/local.
    EXPECT_TRUE(isSystem("/usr/localx/"));
    EXPECT_FALSE(isSystem("///"));
}

TEST_F(QMLocalPathsTest, leavesHalfOfACharacterOfTwoUnitsBeforeATrailingSlash) {
    EXPECT_FALSE(isExactlySystem(sandbox.home() + "🎬/"));
}

TEST(QMLocalPaths, findsPathsOnABackupVolume) {
    EXPECT_TRUE(
        QMLocalPaths::isPathOnTimeMachineVolume("/Volumes/Backup/Backups.backupdb/Mac/Latest"));
    EXPECT_TRUE(QMLocalPaths::isPathOnTimeMachineVolume("/Volumes/Backup/Backups.backupdb"));
    EXPECT_FALSE(QMLocalPaths::isPathOnTimeMachineVolume("/Users/me/Backups.backupdb"));
    EXPECT_FALSE(QMLocalPaths::isPathOnTimeMachineVolume("/Volumes/Backup/Backups.backupdb2/Mac"));
    EXPECT_FALSE(QMLocalPaths::isPathOnTimeMachineVolume("/Volumes/My Backups.backupdb/Mac"));
    EXPECT_FALSE(QMLocalPaths::isPathOnTimeMachineVolume("/Volumes"));
    EXPECT_FALSE(QMLocalPaths::isPathOnTimeMachineVolume(""));
}

/// The super-user's folders in the two spellings of root's home are moved to the home folder.
class QMLocalPathsOfRootTest : public test::SandboxTest {
  protected:
    void SetUp() override {
        if (getuid() != 0) {
            GTEST_SKIP() << "needs the real user id 0";
        }
        setenv("HOME", "/home/editor", 1);
    }
};

TEST_F(QMLocalPathsOfRootTest, movesAFolderOfRootsHomeToTheHomeFolder) {
    setenv("XDG_DATA_HOME", "/var/root/data", 1);
    EXPECT_EQ(QMLocalPaths::libraryDirectory(true), "/home/editor/data/quillmark");
}

TEST_F(QMLocalPathsOfRootTest, keepsTheLastLetterOfTheLongerSpelling) {
    setenv("XDG_DATA_HOME", "/private/var/root/data", 1);
    EXPECT_EQ(QMLocalPaths::libraryDirectory(true), "/home/editor/t/data/quillmark");
}

TEST_F(QMLocalPathsOfRootTest, dropsBothSpellingsOneAfterTheOther) {
    setenv("XDG_DATA_HOME", "/var/root/private/var/root/data", 1);
    EXPECT_EQ(QMLocalPaths::libraryDirectory(true), "/home/editor/t/data/quillmark");
}

TEST_F(QMLocalPathsOfRootTest, leavesAFolderElsewhereWhereItIs) {
    setenv("XDG_DATA_HOME", "/data", 1);
    EXPECT_EQ(QMLocalPaths::libraryDirectory(true), "/data/quillmark");
    unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(QMLocalPaths::libraryDirectory(true), "/home/editor/.local/share/quillmark");
}

TEST_F(QMLocalPathsOfRootTest, leavesTheMachinesFoldersAsTheyAre) {
    setenv("XDG_DATA_HOME", "/var/root/data", 1);
    EXPECT_EQ(QMLocalPaths::libraryDirectory(false), "/var/lib/quillmark");
}

}  // namespace
}  // namespace vornic
