#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/files/AtomicFile.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/AccessList.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

std::size_t entriesIn(const std::string& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

bool write(const std::string& path, std::string_view bytes, ErrorSlot& error) {
    return writeFileAtomically(path, bytes, Durability::buffered, error);
}

class AtomicFileTest : public test::SandboxTest {
  protected:
    ErrorSlot error;
};

class AtomicFilePermissionTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
    ErrorSlot error;
};

TEST_F(AtomicFileTest, makesANewFile) {
    const std::string path = sandbox.path("new.xml");
    EXPECT_TRUE(writeFileAtomically(path, "text", Durability::synced, error));
    EXPECT_EQ(test::readBytes(path), "text");
    EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
    EXPECT_FALSE(error);
}

TEST_F(AtomicFileTest, replacesTheContentsAsAWhole) {
    const std::string path = sandbox.write("file.xml", "a longer old text");
    EXPECT_TRUE(write(path, "new", error));
    EXPECT_EQ(test::readBytes(path), "new");
    EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
}

TEST_F(AtomicFileTest, showsTheOldContentsUntilTheCommit) {
    const std::string path = sandbox.write("file.xml", "old");
    AtomicFile file;
    ASSERT_TRUE(file.open(path, error));
    ASSERT_TRUE(file.write("ne", error));
    ASSERT_TRUE(file.write("w", error));
    EXPECT_EQ(test::readBytes(path), "old");
    EXPECT_TRUE(file.commit(Durability::synced, error));
    EXPECT_EQ(test::readBytes(path), "new");
}

TEST_F(AtomicFileTest, leavesAReaderOfTheOldFileItsContents) {
    const std::string path = sandbox.write("file.xml", "old");
    std::ifstream reader(path);
    ASSERT_TRUE(write(path, "new", error));
    std::string text;
    reader >> text;
    EXPECT_EQ(text, "old");
}

TEST_F(AtomicFileTest, reportsTheIdentityOfTheNewFile) {
    const std::string path = sandbox.write("file.xml", "old");
    const auto before = fileIdentity(path);
    AtomicFile file;
    EXPECT_EQ(file.identity(), std::nullopt);
    ASSERT_TRUE(file.open(path, error));
    ASSERT_TRUE(file.commit(Durability::buffered, error));
    EXPECT_EQ(file.identity(), fileIdentity(path));
    EXPECT_NE(file.identity(), before);
}

TEST_F(AtomicFileTest, putsAPassingFileInPlaceAsWell) {
    const std::string path = sandbox.path("file.xml");
    EXPECT_TRUE(writeFileAtomically(path, "first", Durability::passing, error));
    EXPECT_EQ(test::readBytes(path), "first");
    EXPECT_TRUE(writeFileAtomically(path, "second", Durability::passing, error));
    EXPECT_EQ(test::readBytes(path), "second");
    EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
    EXPECT_FALSE(error);
}

TEST_F(AtomicFileTest, leavesAFolderThatHasComeInThePlaceOfAPassingFile) {
    const std::string path = sandbox.write("file.xml", "old");
    AtomicFile file;
    ASSERT_TRUE(file.open(path, error));
    ASSERT_TRUE(file.write("new", error));
    fs::remove(path);
    fs::create_directory(path);
    std::ofstream(path + "/kept") << "x";
    EXPECT_FALSE(file.commit(Durability::passing, error));
    EXPECT_TRUE(error);
    EXPECT_EQ(test::readBytes(path + "/kept"), "x");
    EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
}

TEST_F(AtomicFileTest, gives0666LessTheUmaskToANewFile) {
    const mode_t before = umask(027);
    EXPECT_TRUE(write(sandbox.path("new"), "x", error));
    umask(before);
    EXPECT_EQ(modeOf(sandbox.path("new")), 0640U);
}

TEST_F(AtomicFileTest, keepsTheMode) {
    for (const mode_t mode : {0600U, 0444U, 0755U, 0666U}) {
        const std::string path = sandbox.write("file", "old");
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
        EXPECT_TRUE(write(path, "new", error));
        EXPECT_EQ(modeOf(path), mode);
        EXPECT_EQ(test::readBytes(path), "new");
        fs::remove(path);
    }
}

TEST_F(AtomicFileTest, showsUnfinishedContentsToNobodyElse) {
    const std::string path = sandbox.write("file", "old");
    AtomicFile file;
    ASSERT_TRUE(file.open(path, error));
    ASSERT_TRUE(file.write("new", error));
    for (const auto& entry : fs::directory_iterator(sandbox.folder())) {
        if (entry.path() != path) {
            EXPECT_EQ(modeOf(entry.path()), 0600U);
        }
    }
}

TEST_F(AtomicFileTest, keepsOwnerAndGroup) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    const std::string path = sandbox.write("file", "old");
    ASSERT_EQ(chown(path.c_str(), 1234, 4321), 0);
    EXPECT_TRUE(write(path, "new", error));
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U);
    EXPECT_EQ(status.st_gid, 4321U);
}

TEST_F(AtomicFileTest, keepsTheSetUserIdBitWithItsOwner) {
    const std::string path = sandbox.write("file", "old");
    ASSERT_EQ(chmod(path.c_str(), 04755), 0);
    EXPECT_TRUE(write(path, "new", error));
    EXPECT_EQ(modeOf(path), 04755U);
}

TEST(AtomicFileOwnerTest, takesAnOwnerThatCannotBeKeptForNoFailure) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can make a file of another user";
    }
    const test::Sandbox machine;
    const std::string folder = machine.path("shared");
    fs::create_directory(folder);
    ASSERT_EQ(chmod(folder.c_str(), 0777), 0);
    ASSERT_EQ(chmod(fs::path(machine.folder()).parent_path().c_str(), 0755), 0);
    const std::string path = machine.write("shared/file", "old");
    ASSERT_EQ(chmod(path.c_str(), 06644), 0);
    {
        const test::Unprivileged user;
        ErrorSlot error;
        EXPECT_TRUE(write(path, "new", error));
    }
    EXPECT_EQ(test::readBytes(path), "new");
    // The bits would lend the new owner's rights, which nobody meant to.
    EXPECT_EQ(modeOf(path), 0644U);
}

TEST_F(AtomicFileTest, keepsExtendedAttributes) {
    const std::string path = sandbox.write("file", "old");
    const std::string value("\0\xFFvalue", 7);
    if (setxattr(path.c_str(), "user.com.apple.FinderInfo", value.data(), value.size(), 0) != 0) {
        GTEST_SKIP() << "the volume has no extended attributes";
    }
    EXPECT_TRUE(write(path, "new", error));
    std::string got(100, '\0');
    const ssize_t length =
        getxattr(path.c_str(), "user.com.apple.FinderInfo", got.data(), got.size());
    ASSERT_EQ(length, 7);
    EXPECT_EQ(got.substr(0, 7), value);
}

TEST_F(AtomicFilePermissionTest, keepsExtendedAttributesOfAFileThatForbidsWriting) {
    const std::string path = sandbox.write("file", "old");
    if (setxattr(path.c_str(), "user.note", "v", 1, 0) != 0) {
        GTEST_SKIP() << "the volume has no extended attributes";
    }
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_TRUE(write(path, "new", error));
    EXPECT_EQ(getxattr(path.c_str(), "user.note", nullptr, 0), 1);
    EXPECT_EQ(modeOf(path), 0444U);
}

TEST_F(AtomicFileTest, keepsAnAccessControlList) {
    const std::string path = sandbox.write("file", "old");
    const std::string list = test::accessListFor1234();
    if (setxattr(path.c_str(), test::kAccessList, list.data(), list.size(), 0) != 0) {
        GTEST_SKIP() << "the volume has no access control lists";
    }
    const mode_t mode = modeOf(path);
    EXPECT_TRUE(write(path, "new", error));
    std::string got(list.size(), '\0');
    ASSERT_EQ(getxattr(path.c_str(), test::kAccessList, got.data(), got.size()),
              static_cast<ssize_t>(list.size()));
    EXPECT_TRUE(got == list);
    EXPECT_EQ(modeOf(path), mode);
}

TEST_F(AtomicFileTest, takesNoAccessControlListFromTheFolderOver) {
    const std::string path = sandbox.write("file", "old");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const std::string list = test::accessListFor1234();
    if (setxattr(sandbox.folder().c_str(), test::kDefaultAccessList, list.data(), list.size(), 0) !=
        0) {
        GTEST_SKIP() << "the volume has no access control lists";
    }
    EXPECT_TRUE(write(path, "new", error));
    EXPECT_EQ(getxattr(path.c_str(), test::kAccessList, nullptr, 0), -1);
    EXPECT_EQ(modeOf(path), 0640U);
}

TEST_F(AtomicFileTest, rewritesTheTargetOfALink) {
    fs::create_directory(sandbox.path("sub"));
    const std::string path = sandbox.write("sub/file", "old");
    fs::create_symlink("sub/file", sandbox.path("link"));
    fs::create_symlink("link", sandbox.path("second"));
    EXPECT_TRUE(write(sandbox.path("second"), "new", error));
    EXPECT_EQ(test::readBytes(path), "new");
    EXPECT_TRUE(fs::is_symlink(sandbox.path("link")));
    EXPECT_TRUE(fs::is_symlink(sandbox.path("second")));
    EXPECT_EQ(entriesIn(sandbox.path("sub")), 1U);
}

TEST_F(AtomicFileTest, makesTheTargetOfADanglingLink) {
    fs::create_symlink("missing", sandbox.path("link"));
    EXPECT_TRUE(write(sandbox.path("link"), "new", error));
    EXPECT_TRUE(fs::is_symlink(sandbox.path("link")));
    EXPECT_EQ(test::readBytes(sandbox.path("missing")), "new");
}

TEST_F(AtomicFileTest, refusesALinkIntoAMissingFolderOrACircle) {
    fs::create_symlink("missing/file", sandbox.path("link"));
    EXPECT_FALSE(write(sandbox.path("link"), "new", error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
    fs::create_symlink("circle", sandbox.path("circle"));
    EXPECT_FALSE(write(sandbox.path("circle"), "new", error));
    EXPECT_EQ(error->code, ELOOP);
}

TEST_F(AtomicFileTest, refusesWhatIsNoRegularFile) {
    EXPECT_FALSE(write(sandbox.folder(), "x", error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EISDIR);
    ASSERT_EQ(mkfifo(sandbox.path("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(write(sandbox.path("pipe"), "x", error));
    EXPECT_EQ(error->description,
              "The file " + sandbox.path("pipe") + " cannot be written: it is no ordinary file.");
    EXPECT_FALSE(write("/dev/full", "x", error));
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(AtomicFileTest, refusesPathsThatNameNoFile) {
    for (const std::string& path : {std::string(), sandbox.path(""), sandbox.path("new/")}) {
        EXPECT_FALSE(write(path, "x", error)) << path;
    }
    EXPECT_FALSE(write(sandbox.folder() + std::string("/a\0b", 4), "x", error));
    EXPECT_EQ(entriesIn(sandbox.folder()), 0U);
}

TEST_F(AtomicFileTest, writesANameAsLongAsNamesMayBe) {
    const std::string path = sandbox.path(std::string(255, 'n'));
    EXPECT_TRUE(write(path, "x", error));
    EXPECT_TRUE(write(path, "y", error));
    EXPECT_EQ(test::readBytes(path), "y");
    EXPECT_FALSE(write(path + "n", "x", error));
    EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
}

TEST_F(AtomicFileTest, removesTheTemporaryFileWhenGivenUp) {
    const std::string path = sandbox.write("file", "old");
    {
        AtomicFile aborted;
        ASSERT_TRUE(aborted.open(path, error));
        ASSERT_TRUE(aborted.write("new", error));
        EXPECT_EQ(entriesIn(sandbox.folder()), 2U);
        aborted.abort();
        EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
        EXPECT_FALSE(aborted.commit(Durability::buffered, error));
        AtomicFile destroyed;
        ASSERT_TRUE(destroyed.open(path, error));
        ASSERT_TRUE(destroyed.write("new", error));
    }
    EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
    EXPECT_EQ(test::readBytes(path), "old");
}

TEST_F(AtomicFileTest, canBeUsedAgain) {
    AtomicFile file;
    ASSERT_TRUE(file.open(sandbox.path("a"), error));
    ASSERT_TRUE(file.write("left behind", error));
    ASSERT_TRUE(file.open(sandbox.path("b"), error));
    ASSERT_TRUE(file.write("b", error));
    EXPECT_TRUE(file.commit(Durability::buffered, error));
    file.abort();
    EXPECT_EQ(test::readBytes(sandbox.path("b")), "b");
    EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
}

TEST_F(AtomicFileTest, refusesToWriteBeforeItIsOpen) {
    AtomicFile file;
    EXPECT_FALSE(file.write("x", error));
    EXPECT_FALSE(file.commit(Durability::buffered, error));
    EXPECT_TRUE(error);
}

TEST_F(AtomicFileTest, keepsTheOldFileOnAFullDisk) {
    const test::PrivateMounts mounts;
    if (!mounts.isAvailable() ||
        !mounts.mountVolume(sandbox.folder(), "tmpfs", "size=256k,mode=0777")) {
        GTEST_SKIP() << "needs the right to mount a volume";
    }
    const std::string path = sandbox.write("file", "old");
    const std::string large(std::size_t{1} << 20U, 'x');
    EXPECT_FALSE(writeFileAtomically(path, large, Durability::synced, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The file " + path + " cannot be written: no space left on the volume.");
    EXPECT_EQ(test::readBytes(path), "old");
    EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
}

TEST_F(AtomicFileTest, keepsTheOldFileWhenAWriteStopsHalfWay) {
    const std::string path = sandbox.write("file", "old");
    EXPECT_TRUE(test::passesInChild([&] {
        // The first write stops at the limit, the next one fails.
        ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
        const struct rlimit limit { .rlim_cur = 100'000, .rlim_max = 100'000 };
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        EXPECT_FALSE(write(path, std::string(300'000, 'x'), error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EFBIG);
        EXPECT_EQ(test::readBytes(path), "old");
        EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
    }));
}

TEST_F(AtomicFileTest, keepsTheOldFileWhenTheDiskFailsToSync) {
    const std::string path = sandbox.write("file", "old");
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_fsync, EIO));
        EXPECT_FALSE(writeFileAtomically(path, "new", Durability::synced, error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, EIO);
        EXPECT_EQ(test::readBytes(path), "old");
        EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
        EXPECT_TRUE(writeFileAtomically(path, "new", Durability::buffered, error));
    }));
}

TEST_F(AtomicFileTest, writesWhereTheVolumeCannotSync) {
    const std::string path = sandbox.write("file", "old");
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_fsync, EINVAL));
        EXPECT_TRUE(writeFileAtomically(path, "new", Durability::synced, error));
        EXPECT_EQ(test::readBytes(path), "new");
    }));
}

TEST_F(AtomicFileTest, failsWhenAFolderTookTheNameMeanwhile) {
    const std::string path = sandbox.path("file");
    AtomicFile file;
    ASSERT_TRUE(file.open(path, error));
    fs::create_directory(path);
    EXPECT_FALSE(file.commit(Durability::buffered, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EISDIR);
    EXPECT_EQ(entriesIn(sandbox.folder()), 1U);
    EXPECT_TRUE(isDirectory(path));
}

TEST_F(AtomicFilePermissionTest, reportsThatTheFolderCannotBeWritten) {
    const std::string path = sandbox.write("file", "old");
    ASSERT_EQ(chmod(sandbox.folder().c_str(), 0500), 0);
    AtomicFile file;
    EXPECT_FALSE(file.open(path, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The file " + path + " cannot be written: permission denied.");
    EXPECT_EQ(test::readBytes(path), "old");
}

TEST_F(AtomicFilePermissionTest, writesInAFolderThatCannotBeListed) {
    const std::string path = sandbox.write("file", "old");
    ASSERT_EQ(chmod(sandbox.folder().c_str(), 0300), 0);
    EXPECT_TRUE(writeFileAtomically(path, "new", Durability::synced, error));
    ASSERT_EQ(chmod(sandbox.folder().c_str(), 0700), 0);
    EXPECT_EQ(test::readBytes(path), "new");
}

TEST_F(AtomicFilePermissionTest, replacesAFileThatCannotBeRead) {
    const std::string path = sandbox.write("file", "old");
    ASSERT_EQ(chmod(path.c_str(), 0200), 0);
    EXPECT_TRUE(write(path, "new", error));
    EXPECT_EQ(modeOf(path), 0200U);
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    EXPECT_EQ(test::readBytes(path), "new");
}

TEST_F(AtomicFileTest, showsReadersOldOrNewContentsAndNothingBetween) {
    const std::string path = sandbox.write("file", std::string(50'000, 'a'));
    std::atomic<bool> stop{false};
    std::atomic<int> torn{0};
    std::vector<std::thread> readers;
    readers.reserve(2);
    for (int count = 0; count < 2; ++count) {
        readers.emplace_back([&] {
            while (!stop) {
                ErrorSlot ignored;
                const auto bytes = readFile(path, ignored);
                const bool whole = bytes && bytes->size() == 50'000 &&
                                   bytes->find_first_not_of(bytes->front()) == std::string::npos;
                torn += whole ? 0 : 1;
            }
        });
    }
    for (int round = 0; round < 200; ++round) {
        const char letter = static_cast<char>('a' + round % 26);
        EXPECT_TRUE(write(path, std::string(50'000, letter), error));
    }
    stop = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(torn, 0);
}

TEST_F(AtomicFileTest, keepsAWholeFileWhenKilledAtAnyMoment) {
    const std::string path = sandbox.write("file", std::string(200'000, 'a'));
    for (int round = 0; round < 40; ++round) {
        {
            test::ChildProcess writer([&] {
                for (char letter = 'a';;
                     letter = letter == 'z' ? 'a' : static_cast<char>(letter + 1)) {
                    ErrorSlot ignored;
                    write(path, std::string(200'000, letter), ignored);
                }
            });
            std::this_thread::sleep_for(std::chrono::microseconds(500 + round * 137));
            ASSERT_EQ(kill(writer.id(), SIGKILL), 0);
            EXPECT_TRUE(WIFSIGNALED(writer.wait()));
        }
        const std::string bytes = test::readBytes(path);
        ASSERT_EQ(bytes.size(), 200'000U);
        ASSERT_EQ(bytes.find_first_not_of(bytes.front()), std::string::npos);
    }
    // What a kill leaves behind is hidden and tells whose it is.
    for (const auto& entry : fs::directory_iterator(sandbox.folder())) {
        const std::string name = entry.path().filename();
        EXPECT_TRUE(name == "file" || name.starts_with(".file.vornic-")) << name;
    }
}

}  // namespace
}  // namespace vornic::platform
