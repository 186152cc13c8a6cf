#include <array>
#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/volumes/FileTransfer.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/ManyBytes.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using test::manyBytes;

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

class FileTransferTest : public test::SandboxTest {
  protected:
    ErrorSlot error;
};

class FileTransferPermissionTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
    ErrorSlot error;
};

TEST_F(FileTransferTest, copiesEveryByte) {
    const std::string bytes = manyBytes(3'000'001);
    const std::string source = sandbox.write("source", bytes);
    EXPECT_TRUE(copyFile(source, sandbox.path("copy"), error));
    EXPECT_TRUE(test::readBytes(sandbox.path("copy")) == bytes);
    EXPECT_TRUE(test::readBytes(source) == bytes);
}

TEST_F(FileTransferTest, copiesAnEmptyFile) {
    EXPECT_TRUE(copyFile(sandbox.write("source", ""), sandbox.path("copy"), error));
    EXPECT_EQ(test::readBytes(sandbox.path("copy")), "");
}

TEST_F(FileTransferTest, keepsModeTimesAndAttributes) {
    const std::string source = sandbox.write("source", "x");
    ASSERT_EQ(chmod(source.c_str(), 0541), 0);
    const bool hasAttributes = setxattr(source.c_str(), "user.note", "value", 5, 0) == 0;
    const std::array<struct timespec, 2> times{{{.tv_sec = 1'000'000'000, .tv_nsec = 123'456'789},
                                                {.tv_sec = 1'100'000'000, .tv_nsec = 987'654'321}}};
    ASSERT_EQ(utimensat(AT_FDCWD, source.c_str(), times.data(), 0), 0);
    ASSERT_TRUE(copyFile(source, sandbox.path("copy"), error));
    const struct stat copy = statusOf(sandbox.path("copy"));
    EXPECT_EQ(copy.st_mode & 07777U, 0541U);
    EXPECT_EQ(copy.st_mtim.tv_sec, times[1].tv_sec);
    EXPECT_EQ(copy.st_mtim.tv_nsec, times[1].tv_nsec);
    EXPECT_EQ(copy.st_atim.tv_sec, times[0].tv_sec);
    EXPECT_EQ(copy.st_atim.tv_nsec, times[0].tv_nsec);
    if (hasAttributes) {
        EXPECT_EQ(getxattr(sandbox.path("copy").c_str(), "user.note", nullptr, 0), 5);
    }
}

TEST_F(FileTransferTest, keepsTheOwnerWherePermitted) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    const std::string source = sandbox.write("source", "x");
    ASSERT_EQ(chown(source.c_str(), 1234, 4321), 0);
    ASSERT_TRUE(copyFile(source, sandbox.path("copy"), error));
    EXPECT_EQ(statusOf(sandbox.path("copy")).st_uid, 1234U);
    EXPECT_EQ(statusOf(sandbox.path("copy")).st_gid, 4321U);
}

TEST_F(FileTransferTest, copiesTheTargetOfALink) {
    fs::create_symlink(sandbox.write("source", "text"), sandbox.path("link"));
    ASSERT_TRUE(copyFile(sandbox.path("link"), sandbox.path("copy"), error));
    EXPECT_FALSE(fs::is_symlink(sandbox.path("copy")));
    EXPECT_EQ(test::readBytes(sandbox.path("copy")), "text");
}

TEST_F(FileTransferTest, replacesNothing) {
    const std::string source = sandbox.write("source", "new");
    const std::string taken = sandbox.write("taken", "old");
    fs::create_symlink("missing", sandbox.path("link"));
    fs::create_directory(sandbox.path("folder"));
    for (const char* name : {"taken", "link", "folder", "source"}) {
        error.reset();
        EXPECT_FALSE(copyFile(source, sandbox.path(name), error)) << name;
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EEXIST);
    }
    EXPECT_EQ(error->description,
              "The file " + source + " cannot be made: a file of that name exists already.");
    EXPECT_EQ(test::readBytes(taken), "old");
    EXPECT_EQ(test::readBytes(source), "new");
    EXPECT_FALSE(test::exists(sandbox.path("missing")));
}

TEST_F(FileTransferTest, neverHangsOnAPipeOrDevice) {
    ASSERT_EQ(mkfifo(sandbox.path("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(copyFile(sandbox.path("pipe"), sandbox.path("copy"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The file " + sandbox.path("pipe") + " cannot be copied: it is no ordinary file.");
    EXPECT_FALSE(copyFile("/dev/zero", sandbox.path("copy"), error));
    EXPECT_FALSE(copyFile(sandbox.folder(), sandbox.path("copy"), error));
    EXPECT_EQ(error->code, EISDIR);
    EXPECT_FALSE(test::exists(sandbox.path("copy")));
}

TEST_F(FileTransferTest, refusesNamesWithANulByte) {
    const std::string source = sandbox.write("source", "x");
    const std::string nul(1, '\0');
    EXPECT_FALSE(copyFile(source + nul, sandbox.path("copy"), error));
    EXPECT_FALSE(copyFile(source, sandbox.path("copy") + nul, error));
    EXPECT_FALSE(copyItem(source, sandbox.path("copy") + nul, error));
    EXPECT_FALSE(test::exists(sandbox.path("copy")));
}

TEST_F(FileTransferTest, copiesAFileThatDoesNotTellItsSize) {
    ASSERT_TRUE(copyFile("/proc/version", sandbox.path("copy"), error));
    EXPECT_TRUE(test::readBytes(sandbox.path("copy")).starts_with("Linux"));
}

TEST_F(FileTransferTest, copiesToAnotherVolume) {
    const test::SecondVolume other;
    if (!other.isApartFrom(sandbox.folder())) {
        GTEST_SKIP() << "/dev/shm is no volume of its own";
    }
    const std::string bytes = manyBytes(700'000);
    ASSERT_TRUE(copyFile(sandbox.write("source", bytes), other.path("copy"), error));
    EXPECT_TRUE(test::readBytes(other.path("copy")) == bytes);
}

TEST_F(FileTransferTest, copiesWhereTheKernelCannotCopyByItself) {
    const std::string bytes = manyBytes(700'000);
    const std::string source = sandbox.write("source", bytes);
    for (const int errorNumber : {ENOSYS, EXDEV, EINVAL, EOPNOTSUPP, EPERM, EIO}) {
        EXPECT_TRUE(test::passesInChild([&] {
            ASSERT_TRUE(test::failSystemCall(SYS_copy_file_range, errorNumber));
            const std::string copy = sandbox.path("copy" + std::to_string(errorNumber));
            EXPECT_TRUE(copyFile(source, copy, error));
            EXPECT_TRUE(test::readBytes(copy) == bytes);
        })) << errorNumber;
    }
}

TEST_F(FileTransferTest, leavesNothingOfACopyThatFails) {
    const test::PrivateMounts mounts;
    const std::string small = sandbox.path("small");
    fs::create_directory(small);
    if (!mounts.isAvailable() || !mounts.mountVolume(small, "tmpfs", "size=256k")) {
        GTEST_SKIP() << "needs the right to mount a volume";
    }
    const std::string source = sandbox.write("source", manyBytes(1'000'000));
    EXPECT_FALSE(copyFile(source, small + "/copy", error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The file " + source + " cannot be copied to " + small +
                                      "/copy: no space left on the volume.");
    EXPECT_TRUE(fs::is_empty(small));
}

TEST_F(FileTransferTest, namesTheFolderThatIsMissing) {
    const std::string source = sandbox.write("source", "x");
    EXPECT_FALSE(copyFile(source, sandbox.path("missing/copy"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The file " + sandbox.path("missing/copy") +
                                      " cannot be made: no such file or folder.");
}

TEST_F(FileTransferPermissionTest, reportsThatTheSourceCannotBeRead) {
    const std::string source = sandbox.write("source", "x");
    ASSERT_EQ(chmod(source.c_str(), 0200), 0);
    EXPECT_FALSE(copyFile(source, sandbox.path("copy"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The file " + source + " cannot be copied: permission denied.");
    EXPECT_FALSE(test::exists(sandbox.path("copy")));
}

TEST_F(FileTransferPermissionTest, copiesAFileThatForbidsWriting) {
    const std::string source = sandbox.write("source", "x");
    ASSERT_EQ(chmod(source.c_str(), 0444), 0);
    EXPECT_TRUE(copyFile(source, sandbox.path("copy"), error));
    EXPECT_EQ(statusOf(sandbox.path("copy")).st_mode & 07777U, 0444U);
}

TEST_F(FileTransferTest, copiesAFolderWithEverythingInIt) {
    fs::create_directories(sandbox.path("top/a/empty"));
    sandbox.write("top/a/file", "text");
    sandbox.write("top/.hidden", "dot");
    fs::create_symlink("a/file", sandbox.path("top/link"));
    fs::create_symlink("nowhere", sandbox.path("top/dangling"));
    ASSERT_EQ(mkfifo(sandbox.path("top/pipe").c_str(), 0640), 0);
    ASSERT_EQ(chmod(sandbox.path("top/a").c_str(), 0551), 0);
    ASSERT_TRUE(copyItem(sandbox.path("top"), sandbox.path("copy"), error));
    EXPECT_EQ(test::readBytes(sandbox.path("copy/a/file")), "text");
    EXPECT_EQ(test::readBytes(sandbox.path("copy/.hidden")), "dot");
    EXPECT_TRUE(isDirectory(sandbox.path("copy/a/empty")));
    EXPECT_EQ(fs::read_symlink(sandbox.path("copy/link")), "a/file");
    EXPECT_EQ(fs::read_symlink(sandbox.path("copy/dangling")), "nowhere");
    EXPECT_TRUE(fs::is_fifo(sandbox.path("copy/pipe")));
    EXPECT_EQ(statusOf(sandbox.path("copy/a")).st_mode & 07777U, 0551U);
}

TEST_F(FileTransferTest, keepsTheTimesOfFoldersAndLinks) {
    fs::create_directories(sandbox.path("top"));
    sandbox.write("top/file", "x");
    fs::create_symlink("file", sandbox.path("top/link"));
    const std::array<struct timespec, 2> times{
        {{.tv_sec = 1'000'000'000, .tv_nsec = 5}, {.tv_sec = 1'100'000'000, .tv_nsec = 7}}};
    for (const char* name : {"top/link", "top"}) {
        ASSERT_EQ(
            utimensat(AT_FDCWD, sandbox.path(name).c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
    }
    ASSERT_TRUE(copyItem(sandbox.path("top"), sandbox.path("copy"), error));
    for (const char* name : {"copy/link", "copy"}) {
        EXPECT_EQ(statusOf(sandbox.path(name)).st_mtim.tv_sec, 1'100'000'000) << name;
        EXPECT_EQ(statusOf(sandbox.path(name)).st_mtim.tv_nsec, 7) << name;
    }
}

TEST_F(FileTransferTest, copiesALinkAsALinkWhenAskedForAnItem) {
    fs::create_symlink("nowhere", sandbox.path("link"));
    ASSERT_TRUE(copyItem(sandbox.path("link"), sandbox.path("copy"), error));
    EXPECT_EQ(fs::read_symlink(sandbox.path("copy")), "nowhere");
}

TEST_F(FileTransferTest, refusesToCopyAFolderIntoItself) {
    fs::create_directories(sandbox.path("top/inner"));
    fs::create_symlink(sandbox.path("top/inner"), sandbox.path("link"));
    EXPECT_FALSE(copyItem(sandbox.path("top"), sandbox.path("top/copy"), error));
    EXPECT_FALSE(copyItem(sandbox.path("top"), sandbox.path("link/copy"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EINVAL);
    EXPECT_TRUE(fs::is_empty(sandbox.path("top/inner")));
}

TEST_F(FileTransferTest, copiesAFolderBesideOneWhoseNameItBegins) {
    fs::create_directories(sandbox.path("top"));
    EXPECT_TRUE(copyItem(sandbox.path("top"), sandbox.path("topmost"), error));
}

TEST_F(FileTransferTest, removesAFolderCopyThatFails) {
    fs::create_directories(sandbox.path("top/a"));
    sandbox.write("top/a/file", "x");
    const int socketNode = mknod(sandbox.path("top/socket").c_str(), S_IFSOCK | 0600, 0);
    ASSERT_EQ(socketNode, 0);
    EXPECT_FALSE(copyItem(sandbox.path("top"), sandbox.path("copy"), error));
    ASSERT_TRUE(error);
    EXPECT_FALSE(test::exists(sandbox.path("copy")));
    EXPECT_TRUE(test::exists(sandbox.path("top/a/file")));
}

TEST_F(FileTransferTest, refusesAFolderWithAnotherVolumeInIt) {
    const test::PrivateMounts mounts;
    fs::create_directories(sandbox.path("top/volume"));
    if (!mounts.isAvailable() ||
        !mounts.mountVolume(sandbox.path("top/volume"), "tmpfs", "size=1m")) {
        GTEST_SKIP() << "needs the right to mount a volume";
    }
    EXPECT_FALSE(copyItem(sandbox.path("top"), sandbox.path("copy"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EXDEV);
    EXPECT_FALSE(test::exists(sandbox.path("copy")));
}

TEST_F(FileTransferTest, reportsACopyThatDiffersFromItsSource) {
    const std::string bytes = manyBytes(600'000);
    std::string changed = bytes;
    changed[599'999] = static_cast<char>(changed[599'999] ^ 1);
    const FileDescriptor source(::open(sandbox.write("a", bytes).c_str(), O_RDONLY | O_CLOEXEC));
    const auto open = [this](const char* name, const std::string& text) {
        return FileDescriptor(::open(sandbox.write(name, text).c_str(), O_RDWR | O_CLOEXEC));
    };
    EXPECT_EQ(compareWithSource(source.get(), open("same", bytes).get()), 0);
    EXPECT_EQ(compareWithSource(source.get(), open("changed", changed).get()), EIO);
    EXPECT_EQ(compareWithSource(source.get(), open("short", bytes.substr(1)).get()), EIO);
    EXPECT_EQ(compareWithSource(source.get(), open("long", bytes + "x").get()), EIO);
}

}  // namespace
}  // namespace vornic::platform
