#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/settings/OwnFolder.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

class OwnFolderTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
    const std::string path = sandbox.path("folder");
    ErrorSlot error;
};

TEST_F(OwnFolderTest, knowsAFolderOfThisUser) {
    fs::create_directory(path);
    EXPECT_TRUE(isOwnItem(path));
}

TEST_F(OwnFolderTest, takesNoLinkForTheFolderThatItLeadsTo) {
    fs::permissions(sandbox.home(), fs::perms(0700));
    fs::create_directory_symlink(sandbox.home(), path);
    EXPECT_FALSE(isOwnItem(path));
    EXPECT_FALSE(isPrivateFolder(path));
}

TEST_F(OwnFolderTest, takesNoFileAndNothingMissingForAFolder) {
    EXPECT_FALSE(isPrivateFolder(path));
    const std::string file = sandbox.write("file", "");
    fs::permissions(file, fs::perms(0700));
    EXPECT_FALSE(isPrivateFolder(file));
}

TEST_F(OwnFolderTest, knowsAFileOfThisUserAndNoLinkToIt) {
    EXPECT_TRUE(isOwnItem(sandbox.write("file", "")));
    fs::create_symlink("file", path);
    EXPECT_FALSE(isOwnItem(path));
    EXPECT_FALSE(isOwnItem(sandbox.path("missing")));
}

TEST_F(OwnFolderTest, knowsAFolderOfAnotherUser) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "everything is root's here";
    }
    EXPECT_FALSE(isOwnItem("/usr"));
}

TEST_F(OwnFolderTest, callsAFolderPrivateThatNobodyElseMayEnter) {
    fs::create_directory(path);
    fs::permissions(path, fs::perms(0700));
    EXPECT_TRUE(isPrivateFolder(path));
    fs::permissions(path, fs::perms(0701));
    EXPECT_FALSE(isPrivateFolder(path));
}

TEST_F(OwnFolderTest, makesAPrivateFolderWithTheFoldersAboveIt) {
    const std::string deeper = path + "/a/b";
    ASSERT_TRUE(createPrivateFolder(deeper, error));
    EXPECT_TRUE(isPrivateFolder(deeper));
    EXPECT_FALSE(error);
}

TEST_F(OwnFolderTest, makesNoFolderWhereOneIs) {
    fs::create_directory(path);
    EXPECT_FALSE(createPrivateFolder(path, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The folder " + path + " cannot be made: a file of that name exists already.");
}

TEST_F(OwnFolderTest, makesNoFolderThroughADanglingLink) {
    fs::create_symlink(sandbox.path("target"), path);
    EXPECT_FALSE(createPrivateFolder(path, error));
    EXPECT_FALSE(test::exists(sandbox.path("target")));
}

TEST_F(OwnFolderTest, reportsWhyAFolderAboveCannotBeMade) {
    const std::string file = sandbox.write("file", "");
    EXPECT_FALSE(createPrivateFolder(file + "/below/folder", error));
    EXPECT_TRUE(error);
}

TEST_F(OwnFolderTest, refusesAPathWithANullByte) {
    EXPECT_FALSE(createPrivateFolder(path + std::string("\0x", 2), error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(test::exists(path));
}

}  // namespace
}  // namespace vornic::platform
