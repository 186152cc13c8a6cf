#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include "platform/files/FileSystem.h"
#include "platform/files/Rename.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kFlagsOfRename = 4;

class RenameTest : public test::SandboxTest {
  protected:
    void SetUp() override {
        sandbox.write("one", "1");
        sandbox.write("two", "2");
    }
    void expectUntouched() const {
        EXPECT_EQ(test::readBytes(one), "1");
        EXPECT_EQ(test::readBytes(two), "2");
    }

    std::string one = sandbox.path("one");
    std::string two = sandbox.path("two");
    std::string none = sandbox.path("none");
};

TEST_F(RenameTest, exchangesTwoFiles) {
    const auto first = fileIdentity(one);
    const auto second = fileIdentity(two);
    EXPECT_EQ(exchangeNames(one, two).value(), Exchange::done);
    EXPECT_EQ(fileIdentity(one), second);
    EXPECT_EQ(fileIdentity(two), first);
}

TEST_F(RenameTest, exchangesALinkItselfWithAFile) {
    const std::string link = sandbox.path("link");
    fs::create_symlink("two", link);
    EXPECT_EQ(exchangeNames(one, link).value(), Exchange::done);
    EXPECT_EQ(fs::read_symlink(one), "two");
    EXPECT_EQ(test::readBytes(link), "1");
    EXPECT_EQ(test::readBytes(two), "2");
}

TEST_F(RenameTest, exchangesNothingWithANameThatLeadsNowhere) {
    EXPECT_EQ(exchangeNames(one, none).errorNumber(), ENOENT);
    EXPECT_FALSE(exchangeNames(none, one));
    EXPECT_FALSE(test::exists(none));
    expectUntouched();
}

TEST_F(RenameTest, exchangesNothingAcrossVolumes) {
    const test::SecondVolume volume;
    if (!volume.isApartFrom(sandbox.folder())) {
        GTEST_SKIP() << "there is no second volume";
    }
    const std::string other = volume.path("other");
    fs::copy_file(two, other);
    EXPECT_EQ(exchangeNames(one, other).errorNumber(), EXDEV);
    expectUntouched();
}

TEST_F(RenameTest, refusesPathsWithANul) {
    const std::string broken("a\0b", 3);
    EXPECT_EQ(exchangeNames(one, broken).errorNumber(), EINVAL);
    EXPECT_FALSE(exchangeNames(broken, one));
    EXPECT_EQ(renameWithoutReplacing(one, broken), EINVAL);
    EXPECT_EQ(renameWithoutReplacing(broken, none), EINVAL);
    expectUntouched();
}

TEST_F(RenameTest, distinguishesAVolumeWithoutExchangeFromAFailure) {
    for (const int answer : {EINVAL, ENOSYS, EOPNOTSUPP}) {
        EXPECT_TRUE(test::passesInChild([&] {
            ASSERT_TRUE(
                test::failSystemCall(SYS_renameat2, answer, RENAME_EXCHANGE, kFlagsOfRename));
            EXPECT_EQ(exchangeNames(one, two).value(), Exchange::unavailable);
        }));
    }
    for (const int answer : {EIO, EACCES, ENOSPC}) {
        EXPECT_TRUE(test::passesInChild([&] {
            ASSERT_TRUE(
                test::failSystemCall(SYS_renameat2, answer, RENAME_EXCHANGE, kFlagsOfRename));
            EXPECT_EQ(exchangeNames(one, two).errorNumber(), answer);
        }));
    }
    expectUntouched();
}

TEST_F(RenameTest, takesAFreeName) {
    EXPECT_EQ(renameWithoutReplacing(one, none), 0);
    EXPECT_EQ(test::readBytes(none), "1");
    EXPECT_FALSE(test::exists(one));
}

TEST_F(RenameTest, takesNoNameThatIsTaken) {
    fs::create_symlink("nowhere", none);
    EXPECT_EQ(renameWithoutReplacing(one, two), EEXIST);
    EXPECT_EQ(renameWithoutReplacing(one, none), EEXIST);
    expectUntouched();
}

TEST_F(RenameTest, takesNoNameThatIsTakenWhereNoVolumeRefusesToReplace) {
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_renameat2, EINVAL, RENAME_NOREPLACE, kFlagsOfRename));
        EXPECT_EQ(renameWithoutReplacing(one, two), EEXIST);
        expectUntouched();
        EXPECT_EQ(renameWithoutReplacing(one, none), 0);
    }));
    EXPECT_EQ(test::readBytes(none), "1");
    EXPECT_FALSE(test::exists(one));
}

}  // namespace
}  // namespace vornic::platform
