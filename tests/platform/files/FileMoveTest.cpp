#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/volumes/FileTransfer.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

bool isEmpty(const std::string& folder) {
    return fs::is_empty(folder);
}

class FileMoveTest : public test::SandboxTest {
  protected:
    ErrorSlot error;
};

class FileMovePermissionTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
    ErrorSlot error;
};

/// Moves from the sandbox to another volume.
class FileMoveAcrossVolumesTest : public FileMoveTest {
  protected:
    void SetUp() override {
        if (!other.isApartFrom(sandbox.folder())) {
            GTEST_SKIP() << "/dev/shm is no volume of its own";
        }
    }
    test::SecondVolume other;
};

TEST_F(FileMoveTest, renamesWithinAVolume) {
    const std::string source = sandbox.write("source", "x");
    const auto identity = fileIdentity(source);
    EXPECT_TRUE(moveFile(source, sandbox.path("moved"), error));
    EXPECT_EQ(fileIdentity(sandbox.path("moved")), identity);
    EXPECT_FALSE(test::exists(source));
}

TEST_F(FileMoveTest, movesFoldersAndLinksAsTheyAre) {
    fs::create_directories(sandbox.path("top/a"));
    fs::create_symlink("nowhere", sandbox.path("link"));
    EXPECT_TRUE(moveFile(sandbox.path("top"), sandbox.path("moved"), error));
    EXPECT_TRUE(moveFile(sandbox.path("link"), sandbox.path("moved/link"), error));
    EXPECT_TRUE(isDirectory(sandbox.path("moved/a")));
    EXPECT_EQ(fs::read_symlink(sandbox.path("moved/link")), "nowhere");
}

TEST_F(FileMoveTest, replacesNothing) {
    const std::string source = sandbox.write("source", "new");
    sandbox.write("taken", "old");
    fs::create_symlink("missing", sandbox.path("link"));
    fs::create_directory(sandbox.path("folder"));
    for (const char* name : {"taken", "link", "folder", "source"}) {
        error.reset();
        EXPECT_FALSE(moveFile(source, sandbox.path(name), error)) << name;
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EEXIST);
        EXPECT_EQ(error->description, "The file " + source + " cannot be moved to " +
                                          sandbox.path(name) +
                                          ": a file of that name exists already.");
    }
    EXPECT_EQ(test::readBytes(source), "new");
    EXPECT_EQ(test::readBytes(sandbox.path("taken")), "old");
    EXPECT_TRUE(fs::is_symlink(sandbox.path("link")));
}

TEST_F(FileMoveTest, keepsTwoNamesOfOneFileApart) {
    const std::string source = sandbox.write("source", "x");
    fs::create_hard_link(source, sandbox.path("other"));
    EXPECT_FALSE(moveFile(source, sandbox.path("other"), error));
    EXPECT_TRUE(test::exists(source));
}

TEST_F(FileMoveTest, reportsWhatIsMissing) {
    EXPECT_FALSE(moveFile(sandbox.path("missing"), sandbox.path("moved"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
    EXPECT_FALSE(moveFile(sandbox.write("source", "x"), sandbox.path("no/moved"), error));
    EXPECT_EQ(error->code, ENOENT);
    EXPECT_TRUE(test::exists(sandbox.path("source")));
}

TEST_F(FileMoveTest, refusesDestinationsThatNameNothing) {
    const std::string source = sandbox.write("source", "x");
    const std::string nul(1, '\0');
    for (const std::string& destination :
         {std::string(), std::string("/"), sandbox.path("moved") + nul, sandbox.path(".")}) {
        EXPECT_FALSE(moveFile(source, destination, error)) << destination;
    }
    EXPECT_FALSE(moveFile(source + nul, sandbox.path("moved"), error));
    EXPECT_TRUE(test::exists(source));
}

TEST_F(FileMoveTest, refusesToMoveAFolderIntoItself) {
    fs::create_directories(sandbox.path("top/a"));
    EXPECT_FALSE(moveFile(sandbox.path("top"), sandbox.path("top/a/top"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EINVAL);
    EXPECT_TRUE(isDirectory(sandbox.path("top/a")));
}

/// As on volumes that know no way to rename without replacing.
void refuseCarefulRenames(int errorNumber) {
    constexpr unsigned kFlagsOfRename = 4;
    ASSERT_TRUE(test::failSystemCall(SYS_renameat2, errorNumber, RENAME_NOREPLACE, kFlagsOfRename));
}

/// As on volumes that know one name for a file.
void refuseLinks() {
#ifdef SYS_link
    ASSERT_TRUE(test::failSystemCall(SYS_link, EPERM));
#endif
    ASSERT_TRUE(test::failSystemCall(SYS_linkat, EPERM));
}

TEST_F(FileMoveTest, movesOnVolumesThatCannotRenameWithoutReplacing) {
    const std::string source = sandbox.write("source", "x");
    sandbox.write("taken", "old");
    fs::create_directories(sandbox.path("top/a"));
    fs::create_directories(sandbox.path("empty"));
    fs::create_symlink("nowhere", sandbox.path("link"));
    EXPECT_TRUE(test::passesInChild([&] {
        refuseCarefulRenames(EINVAL);
        EXPECT_FALSE(moveFile(source, sandbox.path("taken"), error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EEXIST);
        EXPECT_TRUE(moveFile(source, sandbox.path("moved"), error));
        EXPECT_TRUE(moveFile(sandbox.path("link"), sandbox.path("moved link"), error));
        EXPECT_FALSE(moveFile(sandbox.path("top"), sandbox.path("empty"), error));
        EXPECT_EQ(error->code, EEXIST);
        EXPECT_TRUE(moveFile(sandbox.path("top"), sandbox.path("moved top"), error));
    }));
    EXPECT_EQ(test::readBytes(sandbox.path("taken")), "old");
    EXPECT_EQ(test::readBytes(sandbox.path("moved")), "x");
    EXPECT_FALSE(test::exists(source));
    EXPECT_EQ(fs::read_symlink(sandbox.path("moved link")), "nowhere");
    EXPECT_TRUE(isDirectory(sandbox.path("moved top/a")));
}

TEST_F(FileMoveTest, movesOnVolumesThatKnowNoLinksEither) {
    const std::string source = sandbox.write("source", "x");
    sandbox.write("taken", "old");
    EXPECT_TRUE(test::passesInChild([&] {
        refuseCarefulRenames(EINVAL);
        refuseLinks();
        EXPECT_FALSE(moveFile(source, sandbox.path("taken"), error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EEXIST);
        EXPECT_TRUE(moveFile(source, sandbox.path("moved"), error));
    }));
    EXPECT_EQ(test::readBytes(sandbox.path("taken")), "old");
    EXPECT_EQ(test::readBytes(sandbox.path("moved")), "x");
    EXPECT_FALSE(test::exists(source));
}

TEST_F(FileMovePermissionTest, leavesOneNameWhenTheSourceFolderIsReadOnly) {
    fs::create_directory(sandbox.path("closed"));
    const std::string source = sandbox.write("closed/file", "x");
    ASSERT_EQ(chmod(sandbox.path("closed").c_str(), 0500), 0);
    EXPECT_FALSE(moveFile(source, sandbox.path("moved"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EACCES);
    EXPECT_TRUE(test::passesInChild([&] {
        refuseCarefulRenames(EINVAL);
        EXPECT_FALSE(moveFile(source, sandbox.path("moved"), error));
    }));
    EXPECT_TRUE(test::exists(source));
    EXPECT_FALSE(test::exists(sandbox.path("moved")));
    ASSERT_EQ(chmod(sandbox.path("closed").c_str(), 0700), 0);
}

TEST_F(FileMoveAcrossVolumesTest, copiesWithMetadataAndRemoves) {
    const std::string source = sandbox.write("source", std::string(500'000, 'v'));
    ASSERT_EQ(chmod(source.c_str(), 0640), 0);
    const bool hasAttributes = setxattr(source.c_str(), "user.note", "value", 5, 0) == 0;
    const std::string moved = other.path("moved");
    ASSERT_TRUE(moveFile(source, moved, error));
    EXPECT_FALSE(test::exists(source));
    EXPECT_TRUE(test::readBytes(moved) == std::string(500'000, 'v'));
    EXPECT_EQ(fs::status(moved).permissions(), static_cast<fs::perms>(0640));
    if (hasAttributes && getxattr(moved.c_str(), "user.note", nullptr, 0) < 0) {
        // The second volume may have none; a lost attribute is no failure there.
        EXPECT_EQ(errno, ENOTSUP);
    }
}

TEST_F(FileMoveAcrossVolumesTest, makesALinkAnew) {
    fs::create_symlink("nowhere", sandbox.path("link"));
    ASSERT_TRUE(moveFile(sandbox.path("link"), other.path("link"), error));
    EXPECT_EQ(fs::read_symlink(other.path("link")), "nowhere");
    EXPECT_FALSE(test::exists(sandbox.path("link")));
}

TEST_F(FileMoveAcrossVolumesTest, movesAFolderWithEverythingInIt) {
    fs::create_directories(sandbox.path("top/a"));
    sandbox.write("top/a/file", "x");
    ASSERT_TRUE(moveFile(sandbox.path("top"), other.path("top"), error));
    EXPECT_EQ(test::readBytes(other.path("top/a/file")), "x");
    EXPECT_FALSE(test::exists(sandbox.path("top")));
}

TEST_F(FileMoveAcrossVolumesTest, replacesNothing) {
    const std::string source = sandbox.write("source", "new");
    fs::create_symlink("missing", other.path("taken"));
    EXPECT_FALSE(moveFile(source, other.path("taken"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EEXIST);
    EXPECT_TRUE(test::exists(source));
    EXPECT_EQ(std::distance(fs::directory_iterator(other.folder()), fs::directory_iterator()), 1);
}

TEST_F(FileMoveAcrossVolumesTest, keepsTheSourceWhenTheCopyCannotBeSynced) {
    const std::string source = sandbox.write("source", "x");
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_fsync, EIO));
        EXPECT_FALSE(moveFile(source, other.path("moved"), error));
    }));
    EXPECT_EQ(test::readBytes(source), "x");
    EXPECT_TRUE(isEmpty(other.folder()));
}

TEST_F(FileMoveAcrossVolumesTest, keepsTheSourceAloneWhenItCannotBeRemoved) {
    const std::string source = sandbox.write("source", "x");
    EXPECT_TRUE(test::passesInChild([&] {
        // The other volume can be written, the source's folder cannot.
        ASSERT_EQ(chmod(sandbox.folder().c_str(), 0555), 0);
        ASSERT_EQ(chmod(fs::path(sandbox.folder()).parent_path().c_str(), 0755), 0);
        ASSERT_EQ(chmod(other.folder().c_str(), 0777), 0);
        const test::Unprivileged user;
        EXPECT_FALSE(moveFile(source, other.path("moved"), error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EACCES);
    }));
    EXPECT_EQ(test::readBytes(source), "x");
    EXPECT_TRUE(isEmpty(other.folder()));
}

/// Comes between the steps of a move.
class FileMoveWhileChangingTest : public FileMoveAcrossVolumesTest {
  protected:
    void SetUp() override {
        FileMoveAcrossVolumesTest::SetUp();
        fs::create_directories(sandbox.path("top/a"));
        sandbox.write("top/a/file", "old");
        sandbox.write("top/other", "x");
    }
    void TearDown() override { moveObserver() = nullptr; }
    void at(MoveStep step, const std::function<void()>& change) {
        moveObserver() = [step, change](MoveStep reached) {
            if (reached == step) {
                change();
            }
        };
    }
    /// Expects the folder to be whole and nowhere else.
    void expectMoveFails() {
        EXPECT_FALSE(moveFile(sandbox.path("top"), other.path("top"), error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->description, "The file " + sandbox.path("top") + " cannot be moved to " +
                                          other.path("top") + ": it was changed in the meantime.");
        EXPECT_EQ(test::readBytes(sandbox.path("top/other")), "x");
        EXPECT_EQ(namesIn(sandbox.folder()), 1U);
    }
    static std::size_t namesIn(const std::string& folder) {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }
};

TEST_F(FileMoveWhileChangingTest, keepsAFileThatWasSavedInTheFolder) {
    at(MoveStep::copied, [this] { sandbox.write("top/a/file", "new"); });
    expectMoveFails();
    EXPECT_EQ(test::readBytes(sandbox.path("top/a/file")), "new");
    EXPECT_TRUE(isEmpty(other.folder()));
}

TEST_F(FileMoveWhileChangingTest, keepsAFileWhoseTimeWasSetBack) {
    at(MoveStep::copied, [this] {
        const auto time = fs::last_write_time(sandbox.path("top/a/file"));
        sandbox.write("top/a/file", "new");
        fs::last_write_time(sandbox.path("top/a/file"), time);
    });
    expectMoveFails();
    EXPECT_EQ(test::readBytes(sandbox.path("top/a/file")), "new");
}

TEST_F(FileMoveWhileChangingTest, keepsAFileThatCameIntoTheFolder) {
    at(MoveStep::copied, [this] { sandbox.write("top/a/new", "new"); });
    expectMoveFails();
    EXPECT_EQ(test::readBytes(sandbox.path("top/a/new")), "new");
    EXPECT_TRUE(isEmpty(other.folder()));
}

TEST_F(FileMoveWhileChangingTest, removesNothingOfAFolderInWhichAFileIsMissing) {
    at(MoveStep::copied, [this] { fs::remove(sandbox.path("top/a/file")); });
    expectMoveFails();
    EXPECT_TRUE(isEmpty(other.folder()));
}

TEST_F(FileMoveWhileChangingTest, removesNoFileThatComesAfterTheLastLook) {
    const FileDescriptor folder(
        ::open(sandbox.path("top/a").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    at(MoveStep::verified, [&folder] {
        const FileDescriptor file(openat(folder.get(), "new", O_WRONLY | O_CREAT, 0600));
        EXPECT_EQ(writeAll(file.get(), "new", 3), 0);
    });
    EXPECT_FALSE(moveFile(sandbox.path("top"), other.path("top"), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EBUSY);
    EXPECT_EQ(test::readBytes(sandbox.path("top/a/new")), "new");
    EXPECT_EQ(test::readBytes(other.path("top/a/file")), "old");
}

TEST_F(FileMoveWhileChangingTest, keepsAFileThatWasPutInItsPlace) {
    const std::string source = sandbox.write("Cut.xml", "old");
    at(MoveStep::copied, [this] {
        sandbox.write("new", "new");
        fs::rename(sandbox.path("new"), sandbox.path("Cut.xml"));
    });
    EXPECT_FALSE(moveFile(source, other.path("Cut.xml"), error));
    EXPECT_EQ(test::readBytes(source), "new");
    EXPECT_TRUE(isEmpty(other.folder()));
    EXPECT_EQ(namesIn(sandbox.folder()), 2U);
}

TEST_F(FileMoveWhileChangingTest, leavesItsPlaceToAFileThatHasTakenIt) {
    const std::string source = sandbox.write("Cut.xml", "old");
    at(MoveStep::copied, [&source] { std::ofstream(source, std::ios::app) << " and changed"; });
    const auto change = moveObserver();
    moveObserver() = [&](MoveStep reached) {
        change(reached);
        if (reached == MoveStep::setAside) {
            EXPECT_FALSE(test::exists(source));
            sandbox.write("Cut.xml", "new");
        }
    };
    EXPECT_FALSE(moveFile(source, other.path("Cut.xml"), error));
    EXPECT_EQ(test::readBytes(source), "new");
    EXPECT_EQ(test::readBytes(sandbox.path("Cut 2.xml")), "old and changed");
    EXPECT_TRUE(isEmpty(other.folder()));
}

TEST_F(FileMoveTest, keepsTheSourceWhenTheOtherVolumeIsFull) {
    const test::PrivateMounts mounts;
    const std::string small = sandbox.path("small");
    fs::create_directory(small);
    if (!mounts.isAvailable() || !mounts.mountVolume(small, "tmpfs", "size=256k")) {
        GTEST_SKIP() << "needs the right to mount a volume";
    }
    const std::string source = sandbox.write("source", std::string(1'000'000, 'x'));
    EXPECT_FALSE(moveFile(source, small + "/moved", error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOSPC);
    EXPECT_EQ(test::readBytes(source).size(), 1'000'000U);
    EXPECT_TRUE(isEmpty(small));
}

TEST_F(FileMoveTest, refusesToMoveAFolderIntoAVolumeThatIsMountedInIt) {
    const test::PrivateMounts mounts;
    const std::string volume = sandbox.path("top/volume");
    fs::create_directories(volume);
    if (!mounts.isAvailable() || !mounts.mountVolume(volume, "tmpfs", "size=1m")) {
        GTEST_SKIP() << "needs the right to mount a volume";
    }
    sandbox.write("top/file", "x");
    EXPECT_FALSE(moveFile(sandbox.path("top"), volume + "/top", error));
    EXPECT_TRUE(test::exists(sandbox.path("top/file")));
    EXPECT_TRUE(isEmpty(volume));
}

}  // namespace
}  // namespace vornic::platform
