#include <string>

#include <gtest/gtest.h>

#include "platform/files/Digest.h"

namespace vornic::platform {
namespace {

Digest started(DigestKind kind) {
    std::optional<Digest> digest = Digest::create(kind);
    EXPECT_TRUE(digest);
    return std::move(*digest);
}

std::string valueOf(const Digest& digest) {
    const std::optional<std::string> value = digest.value();
    EXPECT_TRUE(value);
    return value.value_or("");
}

TEST(DigestTest, hasTheLengthOfItsKind) {
    EXPECT_EQ(valueOf(started(DigestKind::md5)).size(), 16U);
    EXPECT_EQ(valueOf(started(DigestKind::sha1)).size(), 20U);
    EXPECT_EQ(valueOf(started(DigestKind::sha256)).size(), 32U);
    EXPECT_EQ(valueOf(started(DigestKind::sha512)).size(), 64U);
}

TEST(DigestTest, digestsTheBytesOfTheAlgorithmsExample) {
    Digest digest = started(DigestKind::md5);
    digest.update("abc", 3);
    EXPECT_EQ(valueOf(digest),
              std::string("\x90\x01\x50\x98\x3c\xd2\x4f\xb0\xd6\x96\x3f\x7d\x28\xe1\x7f\x72", 16));
}

TEST(DigestTest, reportsItsKind) {
    EXPECT_EQ(started(DigestKind::sha256).kind(), DigestKind::sha256);
}

TEST(DigestTest, doesNotCareInWhichPiecesItIsFed) {
    Digest whole = started(DigestKind::sha512);
    whole.update("a longer text\0of two pieces", 27);
    Digest pieces = started(DigestKind::sha512);
    pieces.update("a longer text\0", 14);
    pieces.update("", 0);
    pieces.update("of two pieces", 13);
    EXPECT_EQ(valueOf(pieces), valueOf(whole));
}

TEST(DigestTest, canBeFedOnAfterItsValueWasTaken) {
    Digest digest = started(DigestKind::sha1);
    digest.update("a", 1);
    const std::string first = valueOf(digest);
    EXPECT_EQ(valueOf(digest), first);
    digest.update("bc", 2);
    Digest whole = started(DigestKind::sha1);
    whole.update("abc", 3);
    EXPECT_EQ(valueOf(digest), valueOf(whole));
}

TEST(DigestTest, copiesAreFedApart) {
    Digest digest = started(DigestKind::sha256);
    digest.update("a", 1);
    const Digest copy = digest;
    Digest assigned = started(DigestKind::md5);
    assigned = digest;
    digest.update("b", 1);
    EXPECT_EQ(valueOf(copy), valueOf(assigned));
    EXPECT_NE(valueOf(copy), valueOf(digest));
    EXPECT_EQ(assigned.kind(), DigestKind::sha256);
}

TEST(DigestTest, hasNoValueOnceItWasMovedAway) {
    Digest digest = started(DigestKind::sha256);
    const Digest taken = std::move(digest);
    digest.update("a", 1);  // NOLINT(bugprone-use-after-move)
    EXPECT_FALSE(digest.value());
    EXPECT_FALSE(Digest(digest).value());
    EXPECT_TRUE(taken.value());
}

}  // namespace
}  // namespace vornic::platform
