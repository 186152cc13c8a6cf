#include <cerrno>
#include <set>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/files/ContentDigest.h"
#include "platform/files/FileDescriptor.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

std::string text(std::size_t length) {
    std::string bytes(length, '\0');
    for (std::size_t index = 0; index < length; ++index) {
        bytes[index] = static_cast<char>(index * 7 + index / 256);
    }
    return bytes;
}

TEST(ContentDigestTest, doesNotCareInWhichPiecesItIsFed) {
    const std::string bytes = text(300);
    for (const std::size_t piece : {1U, 7U, 31U, 32U, 33U, 299U}) {
        ContentDigest digest;
        for (std::size_t start = 0; start < bytes.size(); start += piece) {
            digest.update(std::string_view(bytes).substr(start, piece));
        }
        digest.update({});
        EXPECT_EQ(digest.value(), ContentDigest::of(bytes)) << piece;
    }
}

TEST(ContentDigestTest, seesEachBit) {
    std::string bytes = text(100);
    std::set<ContentDigest::Value> values{ContentDigest::of(bytes)};
    for (char& byte : bytes) {
        for (int bit = 0; bit < 8; ++bit) {
            byte = static_cast<char>(byte ^ (1 << bit));
            EXPECT_TRUE(values.insert(ContentDigest::of(bytes)).second);
            byte = static_cast<char>(byte ^ (1 << bit));
        }
    }
}

TEST(ContentDigestTest, seesTheLengthAndTheOrder) {
    std::set<ContentDigest::Value> values;
    for (std::size_t length = 0; length < 200; ++length) {
        EXPECT_TRUE(values.insert(ContentDigest::of(std::string(length, '\0'))).second) << length;
    }
    const std::string first = text(32);
    const std::string second(32, 'b');
    EXPECT_NE(ContentDigest::of(first + second), ContentDigest::of(second + first));
}

TEST(ContentDigestTest, changesAboutHalfOfItsBitsWithOneBit) {
    std::string bytes = text(64);
    const ContentDigest::Value before = ContentDigest::of(bytes);
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        std::string changed = bytes;
        changed[index] = static_cast<char>(changed[index] ^ 1);
        const ContentDigest::Value after = ContentDigest::of(changed);
        int bits = 0;
        for (std::size_t lane = 0; lane < before.size(); ++lane) {
            bits += __builtin_popcountll(before[lane] ^ after[lane]);
        }
        EXPECT_GT(bits, 70) << index;
        EXPECT_LT(bits, 186) << index;
    }
}

TEST(ContentDigestTest, staysWhatItWasWrittenDownAs) {
    const ContentDigest::Value empty = ContentDigest::of("");
    const ContentDigest::Value filled = ContentDigest::of("The quick brown fox jumps over the dog");
    EXPECT_EQ(empty, (ContentDigest::Value{3861672054375767647U, 12994931106209714035U,
                                           2046995465545258029U, 2259963046292822215U}));
    EXPECT_EQ(filled, (ContentDigest::Value{9609450293040771142U, 7304566751728024311U,
                                            11174285351178417592U, 4520066654813552206U}));
}

TEST(ContentDigestTest, ofAFileIsThatOfItsBytesFromTheFirstOn) {
    const test::Sandbox sandbox;
    const std::string bytes = text(600'001);
    const FileDescriptor file(open(sandbox.write("file", bytes).c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(lseek(file.get(), 17, SEEK_SET), 17);
    EXPECT_EQ(ContentDigest::ofFile(file.get()).value(), ContentDigest::of(bytes));
    EXPECT_EQ(lseek(file.get(), 0, SEEK_CUR), 17);
}

TEST(ContentDigestTest, ofWhatCannotBeReadIsNone) {
    EXPECT_EQ(ContentDigest::ofFile(-1).errorNumber(), EBADF);
}

}  // namespace
}  // namespace vornic::platform
