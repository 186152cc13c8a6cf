#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "platform/session/MimeDatabase.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

using Type = std::optional<std::string>;

Type typeIn(const std::string& text, std::string_view extension) {
    return mimeTypeInGlobs({text}, extension);
}

TEST(MimeDatabase, findsTheTypeOfAnExtension) {
    const std::string globs = "# comment\n50:application/xml:*.xml\n50:text/plain:*.txt\n";
    EXPECT_EQ(typeIn(globs, "xml"), "application/xml");
    EXPECT_EQ(typeIn(globs, "txt"), "text/plain");
    EXPECT_EQ(typeIn(globs, "xm"), std::nullopt);
    EXPECT_EQ(typeIn(globs, "a.xml"), std::nullopt);
    EXPECT_EQ(typeIn(globs, ""), std::nullopt);
}

TEST(MimeDatabase, readsALastLineWithoutALineBreak) {
    EXPECT_EQ(typeIn("50:application/xml:*.xml", "xml"), "application/xml");
}

TEST(MimeDatabase, ignoresTheCaseOfAnExtension) {
    EXPECT_EQ(typeIn("50:image/jpeg:*.jpg\n", "JPG"), "image/jpeg");
    EXPECT_EQ(typeIn("50:image/jpeg:*.JPG\n", "jpg"), "image/jpeg");
}

TEST(MimeDatabase, mindsTheCaseOfAPatternThatSaysSo) {
    const std::string globs = "50:text/x-c++src:*.C:cs\n";
    EXPECT_EQ(typeIn(globs, "C"), "text/x-c++src");
    EXPECT_EQ(typeIn(globs, "c"), std::nullopt);
    EXPECT_EQ(typeIn("50:text/x-c++src:*.C:xx,cs,yy\n", "c"), std::nullopt);
    EXPECT_EQ(typeIn("50:text/x-c++src:*.C:xcs\n", "c"), "text/x-c++src");
}

TEST(MimeDatabase, prefersThePatternInTheExtensionsOwnCase) {
    const std::string globs = "80:text/x-csrc:*.c\n50:text/x-c++src:*.C:cs\n";
    EXPECT_EQ(typeIn(globs, "C"), "text/x-c++src");
    EXPECT_EQ(typeIn(globs, "c"), "text/x-csrc");
}

TEST(MimeDatabase, prefersTheHeavierPatternThenTheLongerThenTheFirst) {
    EXPECT_EQ(typeIn("50:a/light:*.x\n60:a/heavy:*.x\n", "x"), "a/heavy");
    EXPECT_EQ(typeIn("60:a/heavy:*.x\n50:a/light:*.x\n", "x"), "a/heavy");
    EXPECT_EQ(typeIn("50:a/short:*.a*\n50:a/long:*.abc\n", "abc"), "a/long");
    EXPECT_EQ(typeIn("50:a/first:*.x\n50:a/second:*.x\n", "x"), "a/first");
}

TEST(MimeDatabase, understandsPatternsWithWildcards) {
    const std::string globs = "50:text/troff:*.[1-9]\n50:application/x-lib:*.so.[0-9]*\n";
    EXPECT_EQ(typeIn(globs, "7"), "text/troff");
    EXPECT_EQ(typeIn(globs, "0"), std::nullopt);
    EXPECT_EQ(typeIn(globs, "so.6.1"), "application/x-lib");
}

TEST(MimeDatabase, passesOverPatternsOfWholeNames) {
    EXPECT_EQ(typeIn("50:text/x-makefile:makefile\n10:a/backup:*~\n50:a/any:*\n", "makefile"),
              std::nullopt);
}

TEST(MimeDatabase, passesOverLinesOfAnotherForm) {
    EXPECT_EQ(typeIn("\n:\n50:a/b\n50::*.x\nfifty:a/b:*.x\n5x:a/b:*.x\n50:a/b:\n"
                     "99999999999999:a/b:*.x\n50:c/d:*.x\n",
                     "x"),
              "c/d");
}

TEST(MimeDatabase, looksThroughAllFilesMostImportantFirst) {
    EXPECT_EQ(mimeTypeInGlobs({"50:user/own:*.x\n", "50:system/x:*.x\n50:system/y:*.y\n"}, "x"),
              "user/own");
    EXPECT_EQ(mimeTypeInGlobs({"50:user/own:*.x\n", "60:system/x:*.x\n50:system/y:*.y\n"}, "x"),
              "system/x");
    EXPECT_EQ(mimeTypeInGlobs({"50:user/own:*.x\n", "50:system/y:*.y\n"}, "y"), "system/y");
}

TEST(MimeDatabase, forgetsTheOlderPatternsOfATypeThatSaysSo) {
    const std::string user = "0:system/x:__NOGLOBS__\n50:system/x:*.new\n";
    const std::string system = "50:system/x:*.old\n50:system/z:*.z\n";
    EXPECT_EQ(mimeTypeInGlobs({user, system}, "old"), std::nullopt);
    EXPECT_EQ(mimeTypeInGlobs({user, system}, "new"), "system/x");
    EXPECT_EQ(mimeTypeInGlobs({user, system}, "z"), "system/z");
    EXPECT_EQ(mimeTypeInGlobs({system, user}, "old"), "system/x");
}

TEST(MimeDatabase, survivesAnExtensionFullOfWildcards) {
    EXPECT_EQ(typeIn("50:a/b:*.[x\n50:c/d:*.*\n", "[x"), "a/b");
    EXPECT_EQ(typeIn("50:a/b:*.xml\n", "*"), std::nullopt);
}

class MimeDatabaseFiles : public test::SandboxTest {
  protected:
    ~MimeDatabaseFiles() override { unsetenv("XDG_DATA_DIRS"); }

    static void writeGlobs(const std::string& dataFolder, const std::string& text) {
        std::filesystem::create_directories(dataFolder + "/mime");
        std::ofstream(dataFolder + "/mime/globs2") << text;
    }
};

TEST_F(MimeDatabaseFiles, areTheUsersAndTheSharedOnes) {
    setenv("XDG_DATA_DIRS", (sandbox.path("one") + ":" + sandbox.path("two/")).c_str(), 1);
    writeGlobs(sandbox.home() + "/.local/share", "50:user/u:*.u\n50:user/x:*.x\n");
    writeGlobs(sandbox.path("one"), "50:one/x:*.x\n50:one/y:*.y\n");
    writeGlobs(sandbox.path("two"), "50:two/y:*.y\n50:two/z:*.z\n");
    EXPECT_EQ(mimeTypeForExtension("u"), "user/u");
    EXPECT_EQ(mimeTypeForExtension("x"), "user/x");
    EXPECT_EQ(mimeTypeForExtension("y"), "one/y");
    EXPECT_EQ(mimeTypeForExtension("z"), "two/z");
    EXPECT_EQ(mimeTypeForExtension("xml"), std::nullopt);
}

TEST_F(MimeDatabaseFiles, areThoseOfTheMachineWhereNothingElseIsSaid) {
    EXPECT_EQ(mimeTypeForExtension("xml"), "application/xml");
}

}  // namespace
}  // namespace vornic::platform
