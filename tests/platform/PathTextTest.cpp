#include <cerrno>
#include <set>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/PathText.h"
#include "tests/support/Sandbox.h"

namespace vornic::platform {
namespace {

class PathTextTest : public test::SandboxTest {};

TEST_F(PathTextTest, takesPathsApart) {
    EXPECT_EQ(parentFolder("/a/b"), "/a");
    EXPECT_EQ(parentFolder("/a//b/"), "/a");
    EXPECT_EQ(parentFolder("/b"), "/");
    EXPECT_EQ(parentFolder("/"), "/");
    EXPECT_EQ(parentFolder("b"), ".");
    EXPECT_EQ(lastComponent("/a/b"), "b");
    EXPECT_EQ(lastComponent("/a/b//"), "b");
    EXPECT_EQ(lastComponent("b"), "b");
    EXPECT_EQ(lastComponent("/"), "");
    EXPECT_EQ(lastComponent("///"), "");
    EXPECT_EQ(lastComponent(""), "");
}

TEST_F(PathTextTest, dropsTrailingSlashesButNotTheRoot) {
    EXPECT_EQ(withoutTrailingSlashes("/a//"), "/a");
    EXPECT_EQ(withoutTrailingSlashes("///"), "/");
    EXPECT_EQ(withoutTrailingSlashes(""), "");
}

TEST_F(PathTextTest, joinsWithOneSlash) {
    EXPECT_EQ(joinPath("/a", "b"), "/a/b");
    EXPECT_EQ(joinPath("/a/", "b"), "/a/b");
    EXPECT_EQ(joinPath("/", "b"), "/b");
}

TEST_F(PathTextTest, findsTheExtensionOfAName) {
    EXPECT_EQ(splitExtension("Cut.xml").stem, "Cut");
    EXPECT_EQ(splitExtension("Cut.xml").extension, ".xml");
    EXPECT_EQ(splitExtension("a.tar.gz").extension, ".gz");
    EXPECT_EQ(splitExtension(".profile").extension, "");
    EXPECT_EQ(splitExtension("..x").extension, ".x");
    EXPECT_EQ(splitExtension("name.").extension, "");
    EXPECT_EQ(splitExtension("name").extension, "");
    EXPECT_EQ(splitExtension("Mr. Smith").extension, "");
}

TEST_F(PathTextTest, cutsTextBeforeACharacterThatDoesNotFit) {
    EXPECT_EQ(truncateUTF8("abc", 5), "abc");
    EXPECT_EQ(truncateUTF8("abc", 2), "ab");
    EXPECT_EQ(truncateUTF8("a\xC3\xA9", 2), "a");
    EXPECT_EQ(truncateUTF8("\xF0\x9F\x8E\xAC", 3), "");
    // Bytes that are no UTF-8 are cut as they are.
    EXPECT_EQ(truncateUTF8("\x80\x80\x80\x80\x80\x80", 5).size(), 5U);
}

TEST_F(PathTextTest, makesTemporaryNamesThatAreNewAndRecognisable) {
    std::set<std::string> names;
    for (int count = 0; count < 1000; ++count) {
        names.insert(temporaryName("Cut.xml"));
    }
    EXPECT_EQ(names.size(), 1000U);
    EXPECT_TRUE(names.begin()->starts_with(".Cut.xml.vornic-")) << *names.begin();
}

TEST_F(PathTextTest, knowsTemporaryNames) {
    EXPECT_TRUE(isTemporaryName(temporaryName("Cut.xml")));
    EXPECT_TRUE(isTemporaryName(temporaryName(".Cut.xml.vornic-abcdefgh01")));
    for (const char* name : {"Cut.xml", "", "Cut.xml.vornic-abcdefgh01", ".Cut.xml.vornic.swap",
                             ".Cut.xml.vornic-abcdefgh0", ".Cut.xml.vornic-abcdefgh012",
                             ".Cut.xml.vornic-ABCDEFGH01", ".Cut.xml.vornic-abcdefgh01.part"}) {
        EXPECT_FALSE(isTemporaryName(name)) << name;
    }
}

TEST_F(PathTextTest, keepsTemporaryNamesShort) {
    EXPECT_LE(temporaryName(std::string(255, 'x')).size(), 143U);
}

TEST_F(PathTextTest, followsLinksToTheEnd) {
    const std::string file = sandbox.write("file", "");
    ASSERT_EQ(symlink("file", sandbox.path("relative").c_str()), 0);
    ASSERT_EQ(symlink(sandbox.path("relative").c_str(), sandbox.path("absolute").c_str()), 0);
    int errorNumber = 0;
    EXPECT_EQ(resolveFinalLink(sandbox.path("absolute"), errorNumber), file);
}

TEST_F(PathTextTest, followsADanglingLinkToWhatItNames) {
    ASSERT_EQ(symlink("missing", sandbox.path("link").c_str()), 0);
    int errorNumber = 0;
    EXPECT_EQ(resolveFinalLink(sandbox.path("link"), errorNumber), sandbox.path("missing"));
}

TEST_F(PathTextTest, noticesLinksThatLeadInACircle) {
    ASSERT_EQ(symlink("b", sandbox.path("a").c_str()), 0);
    ASSERT_EQ(symlink("a", sandbox.path("b").c_str()), 0);
    int errorNumber = 0;
    EXPECT_EQ(resolveFinalLink(sandbox.path("a"), errorNumber), std::nullopt);
    EXPECT_EQ(errorNumber, ELOOP);
}

TEST_F(PathTextTest, knowsWhatNameAFolderEntryMayHave) {
    for (const char* name : {"a", "...", "a.b", " ", "\xFF"}) {
        EXPECT_TRUE(isPlainName(name)) << name;
    }
    for (const std::string_view name : {"", ".", "..", "/", "a/b", "a/"}) {
        EXPECT_FALSE(isPlainName(name)) << name;
    }
    EXPECT_FALSE(isPlainName(std::string_view("a\0b", 3)));
}

}  // namespace
}  // namespace vornic::platform
