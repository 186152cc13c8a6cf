#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileSystem.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

class FileRemovalTest : public test::SandboxTest {
  protected:
    ErrorSlot error;
};

class FileRemovalPermissionTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
    ErrorSlot error;
};

TEST_F(FileRemovalTest, removesAFile) {
    const std::string file = sandbox.write("file", "x");
    EXPECT_TRUE(removeFile(file, error));
    EXPECT_FALSE(test::exists(file));
}

TEST_F(FileRemovalTest, removesALinkAndNotItsTarget) {
    const std::string file = sandbox.write("file", "x");
    fs::create_symlink(file, sandbox.path("link"));
    fs::create_symlink(sandbox.folder(), sandbox.path("folder"));
    EXPECT_TRUE(removeFile(sandbox.path("link"), error));
    EXPECT_TRUE(removeItem(sandbox.path("folder"), error));
    EXPECT_EQ(test::readBytes(file), "x");
    EXPECT_FALSE(test::exists(sandbox.path("link")));
    EXPECT_FALSE(test::exists(sandbox.path("folder")));
}

TEST_F(FileRemovalTest, refusesAFolderWhereAFileIsMeant) {
    fs::create_directory(sandbox.path("folder"));
    EXPECT_FALSE(removeFile(sandbox.path("folder"), error));
    EXPECT_TRUE(error);
    EXPECT_TRUE(isDirectory(sandbox.path("folder")));
}

TEST_F(FileRemovalTest, reportsThatAFileIsMissing) {
    EXPECT_FALSE(removeFile(sandbox.path("missing"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The file " + sandbox.path("missing") +
                                      " cannot be removed: no such file or folder.");
    EXPECT_FALSE(removeItem(sandbox.path("missing"), error));
}

TEST_F(FileRemovalTest, removesNothingByHalfAName) {
    const std::string file = sandbox.write("file", "x");
    EXPECT_FALSE(removeFile(file + std::string("\0more", 5), error));
    EXPECT_FALSE(removeItem(file + std::string("\0more", 5), error));
    EXPECT_EQ(test::readBytes(file), "x");
}

TEST_F(FileRemovalTest, removesAFolderWithEverythingInIt) {
    fs::create_directories(sandbox.path("top/a/b/c"));
    sandbox.write("top/file", "x");
    sandbox.write("top/a/b/.hidden", "x");
    sandbox.write("outside", "kept");
    fs::create_symlink(sandbox.path("outside"), sandbox.path("top/a/link"));
    fs::create_symlink(sandbox.folder(), sandbox.path("top/a/up"));
    EXPECT_TRUE(removeItem(sandbox.path("top"), error));
    EXPECT_FALSE(test::exists(sandbox.path("top")));
    EXPECT_EQ(test::readBytes(sandbox.path("outside")), "kept");
}

TEST_F(FileRemovalTest, removesADeepFolder) {
    std::string path = sandbox.path("top");
    for (int level = 0; level < 300; ++level) {
        path += "/d";
    }
    fs::create_directories(path);
    EXPECT_TRUE(removeItem(sandbox.path("top"), error));
    EXPECT_FALSE(test::exists(sandbox.path("top")));
}

TEST_F(FileRemovalTest, keepsTheContentsOfAFolderNamedByADot) {
    fs::create_directory(sandbox.path("top"));
    sandbox.write("top/file", "x");
    EXPECT_FALSE(removeItem(sandbox.path("top/."), error));
    EXPECT_FALSE(removeItem(sandbox.path("top/.."), error));
    EXPECT_EQ(test::readBytes(sandbox.path("top/file")), "x");
}

TEST_F(FileRemovalTest, leavesAVolumeThatIsMountedInTheFolder) {
    const test::PrivateMounts mounts;
    if (!mounts.isAvailable()) {
        GTEST_SKIP() << "needs the right to mount a volume";
    }
    const std::string volume = sandbox.path("top/volume");
    fs::create_directories(volume);
    ASSERT_TRUE(mounts.mountVolume(volume, "tmpfs", "size=1m"));
    sandbox.write("top/volume/file", "kept");
    EXPECT_FALSE(removeItem(sandbox.path("top"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EXDEV);
    EXPECT_EQ(test::readBytes(volume + "/file"), "kept");
}

TEST_F(FileRemovalPermissionTest, reportsThatAFolderIsReadOnly) {
    const std::string folder = sandbox.path("closed");
    fs::create_directory(folder);
    const std::string file = sandbox.write("closed/file", "x");
    ASSERT_EQ(chmod(folder.c_str(), 0500), 0);
    EXPECT_FALSE(removeFile(file, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EACCES);
    EXPECT_FALSE(removeItem(folder, error));
    EXPECT_TRUE(test::exists(file));
    ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
}

TEST_F(FileRemovalPermissionTest, removesAnEmptyFolderThatCannotBeRead) {
    const std::string folder = sandbox.path("blind");
    fs::create_directory(folder);
    ASSERT_EQ(chmod(folder.c_str(), 0), 0);
    EXPECT_TRUE(removeItem(folder, error));
    EXPECT_FALSE(test::exists(folder));
}

}  // namespace
}  // namespace vornic::platform
