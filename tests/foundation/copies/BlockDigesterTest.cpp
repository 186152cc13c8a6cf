#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include "foundation/copies/BlockDigester.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

using platform::Digest;
using platform::DigestKind;

/// Feeds two digests with blocks that differ, and compares them with what they must be.
void expectRightDigests(BlockDigester& blocks) {
    std::optional<Digest> first = Digest::create(DigestKind::sha1);
    std::optional<Digest> second = Digest::create(DigestKind::md5);
    Digest expectedFirst = *first;
    Digest expectedSecond = *second;
    for (int round = 0; round < 500; ++round) {
        const std::string text = "block " + std::to_string(round);
        FileBlock block = blocks.take();
        FileBlock other = blocks.take();
        std::memcpy(block.get(), text.data(), text.size());
        std::memcpy(other.get(), text.data(), text.size());
        blocks.giveBack(std::move(other), 3, &*second);
        blocks.giveBack(std::move(block), text.size(), &*first);
        expectedFirst.update(text.data(), text.size());
        expectedSecond.update(text.data(), 3);
    }
    blocks.finish();
    EXPECT_EQ(first->value(), expectedFirst.value());
    EXPECT_EQ(second->value(), expectedSecond.value());
}

TEST(BlockDigesterTest, feedsEachDigestItsBlocksInTheirOrder) {
    for (const std::size_t count : {3U, 32U}) {
        BlockDigester blocks;
        ASSERT_TRUE(blocks.allocate(count));
        blocks.start();
        expectRightDigests(blocks);
    }
}

TEST(BlockDigesterTest, worksWithoutAThread) {
    BlockDigester blocks;
    ASSERT_TRUE(blocks.allocate(2));
    expectRightDigests(blocks);
}

TEST(BlockDigesterTest, worksWhereNoThreadCanBeHad) {
    EXPECT_TRUE(test::passesInChild([] {
        ASSERT_TRUE(test::failSystemCall(SYS_clone3, EAGAIN));
        ASSERT_TRUE(test::failSystemCall(SYS_clone, EAGAIN));
        BlockDigester blocks;
        ASSERT_TRUE(blocks.allocate(2));
        blocks.start();
        expectRightDigests(blocks);
    }));
}

TEST(BlockDigesterTest, hasSoManyBlocksAndTakesThemBackUndigested) {
    BlockDigester blocks;
    ASSERT_TRUE(blocks.allocate(2));
    const FileBlock first = blocks.take();
    for (int round = 0; round < 10; ++round) {
        FileBlock second = blocks.take();
        ASSERT_NE(second, nullptr);
        second[kFileBlockSize - 1] = 'x';
        blocks.giveBack(std::move(second), kFileBlockSize, nullptr);
    }
}

}  // namespace
}  // namespace vornic
