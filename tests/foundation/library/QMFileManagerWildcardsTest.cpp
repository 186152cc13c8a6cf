#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/files/QMFileManager.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using Paths = QMFileManager::Paths;

class QMFileManagerWildcardsTest : public test::SandboxTest {
  protected:
    QMFileManagerWildcardsTest() {
        for (const char* folder : {"Media/Logs", "Backup/Logs", "Other", ".hidden/Logs"}) {
            fs::create_directories(sandbox.path(folder));
        }
        sandbox.write("file", "");
        sandbox.write("Media/Logs/a.log", "");
        sandbox.write("Media/Logs/b.log", "");
        sandbox.write("Media/Logs/B.LOG", "");
        sandbox.write("Backup/Logs/c.log", "");
    }
    /// The paths below the test's folder that match.
    [[nodiscard]] Paths matching(const std::string& pattern) const {
        Paths found = QMFileManager::filesMatchingWildcardPath(pattern, sandbox.folder());
        for (std::string& path : found) {
            EXPECT_TRUE(path.starts_with(sandbox.folder() + "/")) << path;
            path.erase(0, sandbox.folder().size() + 1);
        }
        return found;
    }
};

TEST_F(QMFileManagerWildcardsTest, listsWhatExistsBelowEachMatch) {
    EXPECT_THAT(QMFileManager::filesMatchingWildcardPath(sandbox.folder() + "/*/Logs"),
                ElementsAre(sandbox.path(".hidden/Logs"), sandbox.path("Backup/Logs"),
                            sandbox.path("Media/Logs")));
    EXPECT_THAT(matching("*/Logs/*.log"),
                ElementsAre("Backup/Logs/c.log", "Media/Logs/a.log", "Media/Logs/b.log"));
}

TEST_F(QMFileManagerWildcardsTest, startsFromTheBaseAlsoWithALeadingSlash) {
    EXPECT_EQ(matching("/*/Logs"), matching("*/Logs"));
    EXPECT_EQ(matching("//*//Logs/"), matching("*/Logs"));
}

TEST_F(QMFileManagerWildcardsTest, startsFromTheRootWithoutABase) {
    const std::string relative = sandbox.folder().substr(1) + "/Med*";
    EXPECT_THAT(QMFileManager::filesMatchingWildcardPath(relative),
                ElementsAre(sandbox.path("Media")));
    EXPECT_THAT(QMFileManager::filesMatchingWildcardPath("/et*"), testing::Contains("/etc"));
}

TEST_F(QMFileManagerWildcardsTest, givesAPatternWithoutAStarBackAsItIs) {
    EXPECT_THAT(QMFileManager::filesMatchingWildcardPath("/no/such/?"), ElementsAre("/no/such/?"));
    EXPECT_THAT(QMFileManager::filesMatchingWildcardPath("missing", "/base"),
                ElementsAre("/base/missing"));
    EXPECT_THAT(QMFileManager::filesMatchingWildcardPath("/missing", "/base"),
                ElementsAre("/base/missing"));
}

TEST_F(QMFileManagerWildcardsTest, matchesRunsAndSingleCharacters) {
    EXPECT_THAT(matching("M*a"), ElementsAre("Media"));
    EXPECT_THAT(matching("*e*i*"), ElementsAre("Media"));
    EXPECT_THAT(matching("Media/Logs/?.log*"), ElementsAre("Media/Logs/a.log", "Media/Logs/b.log"));
    EXPECT_THAT(matching("Media/Logs/??.log*"), IsEmpty());
    EXPECT_THAT(matching("**ther"), ElementsAre("Other"));
    EXPECT_THAT(matching("Othe*rr"), IsEmpty());
}

TEST_F(QMFileManagerWildcardsTest, takesACharacterOfSeveralBytesForOne) {
    sandbox.write("sch\xC3\xB6n", "");
    sandbox.write("x\xFFy", "");
    EXPECT_THAT(matching("sch?n*"), ElementsAre("sch\xC3\xB6n"));
    EXPECT_THAT(matching("sch??n*"), IsEmpty());
    EXPECT_THAT(matching("x?y*"), ElementsAre("x\xFFy"));
}

TEST_F(QMFileManagerWildcardsTest, distinguishesUpperAndLowerCase) {
    EXPECT_THAT(matching("media*"), IsEmpty());
    EXPECT_THAT(matching("Media/Logs/*.LOG"), ElementsAre("Media/Logs/B.LOG"));
}

TEST_F(QMFileManagerWildcardsTest, takesEverythingElseToTheLetter) {
    sandbox.write("[a]", "");
    sandbox.write("a", "");
    EXPECT_THAT(matching("[a]*"), ElementsAre("[a]"));
    EXPECT_THAT(matching("[ab]*"), IsEmpty());
    fs::create_directory(sandbox.path("?"));
    sandbox.write("?/x", "");
    EXPECT_THAT(matching("?/x*"), ElementsAre("?/x")) << "a component without a star";
}

TEST_F(QMFileManagerWildcardsTest, leavesOutWhatDoesNotExist) {
    fs::create_symlink("nowhere", sandbox.path("Other/dangling"));
    EXPECT_THAT(matching("Other/*"), IsEmpty());
    EXPECT_THAT(matching("*/Movies"), IsEmpty());
    EXPECT_THAT(matching("file/*"), IsEmpty());
}

TEST_F(QMFileManagerWildcardsTest, ignoresTheWishForSubfolders) {
    EXPECT_THAT(QMFileManager::filesMatchingWildcardPath("*.log", sandbox.folder(), true),
                IsEmpty());
}

TEST_F(QMFileManagerWildcardsTest, decodesToTheFirstMatch) {
    EXPECT_EQ(QMFileManager::decodeWildcardPath("*/Logs/?.log*", sandbox.folder()),
              sandbox.path("Backup/Logs/c.log"));
}

TEST_F(QMFileManagerWildcardsTest, decodesToThePatternWithoutAMatch) {
    EXPECT_EQ(QMFileManager::decodeWildcardPath("no*/x", "/base"), "/base/no*/x");
    EXPECT_EQ(QMFileManager::decodeWildcardPath("/no*such/x", std::nullopt), "/no*such/x");
    EXPECT_EQ(QMFileManager::decodeWildcardPath("plain", "/base"), "/base/plain");
}

}  // namespace
}  // namespace vornic
