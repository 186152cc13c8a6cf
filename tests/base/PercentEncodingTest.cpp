#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "base/PercentEncoding.h"

namespace vornic::platform {
namespace {

TEST(PercentEncoding, keepsUnreservedCharacters) {
    EXPECT_EQ(percentEncoded("AZaz09-._~"), "AZaz09-._~");
}

TEST(PercentEncoding, encodesWhatHasAMeaningInAddresses) {
    EXPECT_EQ(percentEncoded(" %&=+?#/:@"), "%20%25%26%3D%2B%3F%23%2F%3A%40");
}

TEST(PercentEncoding, encodesTheBytesOfUTF8) {
    EXPECT_EQ(percentEncoded("ü€"), "%C3%BC%E2%82%AC");
}

TEST(PercentEncoding, encodesControlCharacters) {
    EXPECT_EQ(percentEncoded(std::string("\0\n\x7F", 3)), "%00%0A%7F");
}

TEST(PercentEncoding, keepsWhatItIsToldToKeep) {
    EXPECT_EQ(percentEncoded("/a b/c+d", "/+"), "/a%20b/c+d");
}

TEST(PercentEncoding, makesNothingOfNothing) {
    EXPECT_EQ(percentEncoded(""), "");
}

TEST(PercentDecodedASCII, replacesEscapesInEitherCase) {
    EXPECT_EQ(percentDecodedASCII("a%20b%2Fc%2f%7F"), "a b/c/\x7F");
    EXPECT_EQ(percentDecodedASCII(""), "");
    EXPECT_EQ(percentDecodedASCII("plain"), "plain");
}

TEST(PercentDecodedASCII, decodesOnlyOnce) {
    EXPECT_EQ(percentDecodedASCII("%2520"), "%20");
}

TEST(PercentDecodedASCII, refusesAPercentSignThatBeginsNoEscape) {
    EXPECT_EQ(percentDecodedASCII("100%"), std::nullopt);
    EXPECT_EQ(percentDecodedASCII("%2"), std::nullopt);
    EXPECT_EQ(percentDecodedASCII("%zz"), std::nullopt);
    EXPECT_EQ(percentDecodedASCII("%2g"), std::nullopt);
    EXPECT_EQ(percentDecodedASCII("%%20"), std::nullopt);
}

TEST(PercentDecodedASCII, refusesEscapesOutsideAscii) {
    EXPECT_EQ(percentDecodedASCII("%80"), std::nullopt);
    EXPECT_EQ(percentDecodedASCII("caf%C3%A9"), std::nullopt);
}

TEST(PercentDecodedASCII, keepsWhatIsNotEscaped) {
    EXPECT_EQ(percentDecodedASCII("caf\xC3\xA9%20x"), "caf\xC3\xA9 x");
}

TEST(PercentDecodedPath, decodesAnyByte) {
    EXPECT_EQ(percentDecodedPath("/caf%C3%A9/%FF%0A"), "/caf\xC3\xA9/\xFF\n");
}

TEST(PercentDecodedPath, keepsWhatIsNoEscape) {
    EXPECT_EQ(percentDecodedPath("/100%/%2/%zz/%"), "/100%/%2/%zz/%");
    EXPECT_EQ(percentDecodedPath("%%20"), "% ");
}

TEST(PercentDecodedPath, keepsTheEscapeOfNul) {
    EXPECT_EQ(percentDecodedPath("/a%00b%20c"), "/a%00b c");
}

TEST(PathOfURL, cutsSchemeAndAuthority) {
    EXPECT_EQ(pathOfURL("file:///a/b"), "/a/b");
    EXPECT_EQ(pathOfURL("file://localhost/a"), "/a");
    EXPECT_EQ(pathOfURL("file:/a"), "/a");
    EXPECT_EQ(pathOfURL("http://user@host:80/a"), "/a");
    EXPECT_EQ(pathOfURL("//host/a"), "/a");
    EXPECT_EQ(pathOfURL("file://localhost"), "");
    EXPECT_EQ(pathOfURL("x-a.b+1:c/d"), "c/d");
}

TEST(PathOfURL, cutsQueryAndFragment) {
    EXPECT_EQ(pathOfURL("/a?b=/c"), "/a");
    EXPECT_EQ(pathOfURL("/a#b?c"), "/a");
    EXPECT_EQ(pathOfURL("file://host?x/y"), "");
    EXPECT_EQ(pathOfURL("?a:b"), "");
}

TEST(PathOfURL, keepsAPathThatIsAllThereIs) {
    EXPECT_EQ(pathOfURL("/a%20b"), "/a%20b");
    EXPECT_EQ(pathOfURL("a/b:c"), "a/b:c");
    EXPECT_EQ(pathOfURL("1a:b"), "1a:b");
    EXPECT_EQ(pathOfURL(":b"), ":b");
    EXPECT_EQ(pathOfURL(""), "");
    EXPECT_EQ(pathOfURL("/a/"), "/a/");
}

}  // namespace
}  // namespace vornic::platform
