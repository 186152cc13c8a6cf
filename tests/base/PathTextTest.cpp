#include <gtest/gtest.h>

#include "base/PathText.h"

namespace vornic {
namespace {

TEST(PathText, takesPathsApart) {
    EXPECT_EQ(parentFolder("/a/b"), "/a");
    EXPECT_EQ(parentFolder("/a//b/"), "/a");
    EXPECT_EQ(parentFolder("/b"), "/");
    EXPECT_EQ(parentFolder("/"), "/");
    EXPECT_EQ(parentFolder("/a/b/"), "/a");
    EXPECT_EQ(parentFolder("//b"), "/");
    EXPECT_EQ(parentFolder("b"), ".");
    EXPECT_EQ(parentFolder(""), ".");
    EXPECT_EQ(lastComponent("/a/b"), "b");
    EXPECT_EQ(lastComponent("/a/b//"), "b");
    EXPECT_EQ(lastComponent("b"), "b");
    EXPECT_EQ(lastComponent("/"), "");
    EXPECT_EQ(lastComponent("///"), "");
    EXPECT_EQ(lastComponent(""), "");
}

TEST(PathText, dropsTrailingSlashesButNotTheRoot) {
    EXPECT_EQ(withoutTrailingSlashes("/a//"), "/a");
    EXPECT_EQ(withoutTrailingSlashes("///"), "/");
    EXPECT_EQ(withoutTrailingSlashes(""), "");
}

TEST(PathText, joinsWithOneSlash) {
    EXPECT_EQ(joinPath("/a", "b"), "/a/b");
    EXPECT_EQ(joinPath("/a/", "b"), "/a/b");
    EXPECT_EQ(joinPath("/", "b"), "/b");
    EXPECT_EQ(joinPath("/a//", "//b/"), "/a/b");
    EXPECT_EQ(joinPath("/a", "/b/c"), "/a/b/c");
    EXPECT_EQ(joinPath("", "b/"), "b");
    EXPECT_EQ(joinPath("", "/b"), "/b");
    EXPECT_EQ(joinPath("/a", ""), "/a");
    EXPECT_EQ(joinPath("/a/", "/"), "/a");
    EXPECT_EQ(joinPath("", ""), "");
}

TEST(PathText, endsAFolderWithOneSlash) {
    EXPECT_EQ(withTrailingSlash("/a"), "/a/");
    EXPECT_EQ(withTrailingSlash("/a//"), "/a/");
    EXPECT_EQ(withTrailingSlash("/"), "/");
    EXPECT_EQ(withTrailingSlash(""), "");
}

TEST(PathText, findsTheExtensionOfAName) {
    EXPECT_EQ(splitExtension("Cut.xml").stem, "Cut");
    EXPECT_EQ(splitExtension("Cut.xml").extension, ".xml");
    EXPECT_EQ(splitExtension("a.tar.gz").extension, ".gz");
    EXPECT_EQ(splitExtension(".profile").extension, "");
    EXPECT_EQ(splitExtension("..x").extension, ".x");
    EXPECT_EQ(splitExtension("name.").extension, "");
    EXPECT_EQ(splitExtension("name").extension, "");
    EXPECT_EQ(splitExtension("Mr. Smith").extension, "");
    EXPECT_EQ(splitExtension("..").extension, "");
}

TEST(PathText, findsTheExtensionOfAPath) {
    EXPECT_EQ(pathExtension("/b/c.xml"), "xml");
    EXPECT_EQ(pathExtension("/b/c.tar.gz/"), "gz");
    EXPECT_EQ(pathExtension("/b.d/c"), "");
    EXPECT_EQ(pathExtension(".hidden.xml"), "xml");
    EXPECT_EQ(pathExtension("/b/Mr. Smith"), "");
    EXPECT_EQ(pathExtension("/"), "");
}

TEST(PathText, takesTheExtensionOffAPath) {
    EXPECT_EQ(withoutExtension("/b/c.xml"), "/b/c");
    EXPECT_EQ(withoutExtension("/b/c.tar.gz/"), "/b/c.tar");
    EXPECT_EQ(withoutExtension("/b.d/c"), "/b.d/c");
    EXPECT_EQ(withoutExtension(".hidden"), ".hidden");
    EXPECT_EQ(withoutExtension("/b/Mr. Smith"), "/b/Mr. Smith");
    EXPECT_EQ(withoutExtension("c."), "c.");
    EXPECT_EQ(withoutExtension("/"), "/");
    EXPECT_EQ(withoutExtension(""), "");
}

TEST(PathText, cutsTextBeforeACharacterThatDoesNotFit) {
    EXPECT_EQ(truncateUTF8("abc", 5), "abc");
    EXPECT_EQ(truncateUTF8("abc", 2), "ab");
    EXPECT_EQ(truncateUTF8("a\xC3\xA9", 2), "a");
    EXPECT_EQ(truncateUTF8("\xF0\x9F\x8E\xAC", 3), "");
    // Bytes that are no UTF-8 are cut as they are.
    EXPECT_EQ(truncateUTF8("\x80\x80\x80\x80\x80\x80", 5).size(), 5U);
}

TEST(PathText, knowsWhatNameAFolderEntryMayHave) {
    for (const char* name : {"a", "...", "a.b", " ", "\xFF"}) {
        EXPECT_TRUE(isPlainName(name)) << name;
    }
    for (const std::string_view name : {"", ".", "..", "/", "a/b", "a/"}) {
        EXPECT_FALSE(isPlainName(name)) << name;
    }
    EXPECT_FALSE(isPlainName(std::string_view("a\0b", 3)));
}

}  // namespace
}  // namespace vornic
