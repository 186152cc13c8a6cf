#include <cerrno>
#include <condition_variable>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>

#include "tests/foundation/copies/CopyTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/HeldFile.h"
#include "tests/support/machine/PrivateMounts.h"

namespace vornic {
namespace {

using test::copyRecorded;
using test::copySilently;
using test::exists;
using test::HeldFile;
using test::kMebibyte;
using test::Lines;
using test::readBytes;

std::string wrongSize(const std::string& source) {
    return "Error: copied file size does not match original source " + source;
}

std::uint64_t sizeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return static_cast<std::uint64_t>(status.st_size);
}

/// Faults that anyone can have.
class QMFileManagerCopyFaultsTest : public test::FileServicesTest {
  protected:
    /// Expects one line about the metadata of that file and nothing else.
    static void expectMetadataFault(test::ConsoleCapture& console, const std::string& path) {
        const Lines lines = console.lines();
        ASSERT_EQ(lines.size(), 1U) << ::testing::PrintToString(lines);
        const std::string start = "Error setting metadata for file " + path + " - ";
        EXPECT_EQ(lines[0].substr(0, start.size()), start);
        EXPECT_GT(lines[0].size(), start.size());
    }

    test::RecordingCopyDelegate recording;
};

TEST_F(QMFileManagerCopyFaultsTest, endsAsFailedWhenTheSourceCannotBeRead) {
    // The first page of a process's memory is never mapped.
    const std::string source = "/proc/self/mem";
    test::ConsoleCapture console;
    EXPECT_FALSE(copyRecorded(source, {sandbox.path("copy")}, 1, recording));
    EXPECT_EQ(console.lines(), Lines{"Error reading file " + source + " - aborting..."});
    EXPECT_EQ(readBytes(sandbox.path("copy")), "");
    EXPECT_EQ(recording.finished, 1);
}

TEST_F(QMFileManagerCopyFaultsTest, copiesASourceThatHasMoreThanItsSizeAndReportsIt) {
    // Its size is 0 until it is read.
    const std::string source = "/proc/version";
    test::ConsoleCapture console;
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("copy")}, 1, recording));
    EXPECT_EQ(console.lines(), Lines{wrongSize(source)});
    EXPECT_EQ(readBytes(sandbox.path("copy")), readBytes(source));
    EXPECT_EQ(recording.totals().back(), readBytes(source).size());
    EXPECT_EQ(recording.mismatches, Lines{});
}

TEST_F(QMFileManagerCopyFaultsTest, reportsThatTheSourceShrankMeanwhile) {
    const std::string source = makeSparse("source", 1024 * kMebibyte);
    recording.delegate->fileCopyShouldContinue = [&](const auto&) {
        EXPECT_EQ(truncate(source.c_str(), 1000), 0);
        return true;
    };
    test::ConsoleCapture console;
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("copy")}, 1, recording));
    EXPECT_EQ(console.lines(), Lines{wrongSize(source)});
    EXPECT_EQ(sizeOf(sandbox.path("copy")), recording.totals().back());
    EXPECT_LT(sizeOf(sandbox.path("copy")), 1024 * kMebibyte);
    EXPECT_EQ(recording.mismatches, Lines{});
}

TEST_F(QMFileManagerCopyFaultsTest, goesOnWhenADestinationIsRemoved) {
    const std::string source = sandbox.write("source", "abc");
    recording.delegate->fileCopyBytesWritten = [&](std::uint64_t, const auto&) {
        std::filesystem::remove(sandbox.path("a"));
    };
    test::ConsoleCapture console;
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a"), sandbox.path("b")}, 1, recording));
    expectMetadataFault(console, sandbox.path("a"));
    EXPECT_FALSE(exists(sandbox.path("a")));
    EXPECT_EQ(readBytes(sandbox.path("b")), "abc");
    EXPECT_EQ(recording.finished, 1);
}

TEST_F(QMFileManagerCopyFaultsTest, goesOnWhenTheFolderOfADestinationIsRemovedInTheMiddle) {
    const std::string source = makeSparse("source", 45 * kMebibyte);
    const std::string folder = sandbox.path("folder");
    recording.delegate->fileCopyShouldContinue = [&](const auto&) {
        std::filesystem::remove_all(folder);
        return true;
    };
    test::ConsoleCapture console;
    EXPECT_TRUE(copyRecorded(source, {folder + "/a", sandbox.path("b")}, 1, recording));
    EXPECT_FALSE(exists(folder));
    EXPECT_EQ(sizeOf(sandbox.path("b")), 45 * kMebibyte);
    EXPECT_EQ(recording.mismatches, Lines{});
}

TEST_F(QMFileManagerCopyFaultsTest, leavesAFileAloneThatTookTheDestinationsPlace) {
    const std::string source = sandbox.write("source", "abc");
    ASSERT_EQ(chmod(source.c_str(), 0600), 0);
    const std::string other = sandbox.write("other", "another file");
    ASSERT_EQ(chmod(other.c_str(), 0644), 0);
    const test::FileState before = test::fileState(other);
    recording.delegate->fileCopyBytesWritten = [&](std::uint64_t, const auto&) {
        if (exists(other)) {
            // The other one of two calls at once may have done it.
            std::error_code ignored;
            std::filesystem::rename(other, sandbox.path("a"), ignored);
        }
    };
    test::ConsoleCapture console;
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a")}, 1, recording));
    expectMetadataFault(console, sandbox.path("a"));
    EXPECT_EQ(test::fileState(sandbox.path("a")), before);
}

/// Faults that need a volume of one's own.
class QMFileManagerCopyVolumesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!mounts.isAvailable()) {
            GTEST_SKIP() << "volumes can be mounted by root only";
        }
    }
    [[nodiscard]] std::string makeFolder(std::string_view name) const {
        std::filesystem::create_directory(sandbox.path(name));
        return sandbox.path(name);
    }

    test::PrivateMounts mounts;
    test::Sandbox sandbox;
    test::RecordingCopyDelegate recording;
};

TEST_F(QMFileManagerCopyVolumesTest, reportsThatAVolumeIsFullAndGoesOnWithTheOthers) {
    const std::string volume = makeFolder("volume");
    ASSERT_TRUE(mounts.mountVolume(volume, "tmpfs", "size=1m,mode=1777"));
    const std::string bytes = test::manyBytes(1'200'000);
    const std::string source = sandbox.write("source", bytes);
    const std::string full = volume + "/copy";
    test::ConsoleCapture console;
    EXPECT_TRUE(copyRecorded(source, {full, sandbox.path("b")}, 1, recording));
    // 1 MiB holds 16 of the 19 blocks.
    const std::string line = "Error writing file " + full + ": 1";
    EXPECT_EQ(console.lines(), (Lines{line, line, line}));
    EXPECT_EQ(recording.mismatches, Lines{full});
    EXPECT_EQ(recording.mismatchedChecksums, Lines{*QMFileManager::md5HashForFile(full)});
    EXPECT_TRUE(readBytes(sandbox.path("b")) == bytes);
    EXPECT_TRUE(readBytes(full) == bytes.substr(0, kMebibyte));
    ASSERT_NE(recording.settings(), nullptr);
    EXPECT_EQ(recording.settings()->valueForKey<Lines>("destChecksums"),
              (Lines{*QMFileManager::md5HashForFile(full),
                     *QMFileManager::md5HashForFile(sandbox.path("b"))}));
    EXPECT_EQ(recording.finished, 1);
}

TEST_F(QMFileManagerCopyVolumesTest, keepsWhatItReadBeforeAReadError) {
    constexpr std::uint64_t kGood = 3 * 65'536;
    const HeldFile file(makeFolder("held"), kMebibyte, [](std::uint64_t offset, std::size_t size) {
        return offset < kGood ? static_cast<std::int64_t>(size) : -EIO;
    });
    ASSERT_TRUE(file.isAvailable());
    test::ConsoleCapture console;
    EXPECT_FALSE(copyRecorded(file.path(), {sandbox.path("copy")}, 1, recording));
    EXPECT_EQ(console.lines(), (Lines{"Error reading file " + file.path() + " - aborting...",
                                      wrongSize(file.path())}));
    EXPECT_EQ(readBytes(sandbox.path("copy")), std::string(kGood, '\0'));
    EXPECT_EQ(recording.totals(), (std::vector<std::uint64_t>{kGood}));
    EXPECT_EQ(recording.mismatches, Lines{});
    EXPECT_EQ(recording.finished, 1);
}

/// Lets the copy read a file up to some place, and further only when the delegate has answered.
class AnsweredRead {
  public:
    [[nodiscard]] std::int64_t operator()(std::uint64_t offset, std::size_t size) {
        std::unique_lock lock(mutex_);
        answered_.wait(lock, [&] { return offset < place_ || isAnswered_; });
        const std::uint64_t left = offset < kSize ? kSize - offset : 0;
        return static_cast<std::int64_t>(std::min<std::uint64_t>(size, left));
    }
    void answer() {
        const std::lock_guard lock(mutex_);
        isAnswered_ = true;
        answered_.notify_all();
    }
    explicit AnsweredRead(std::uint64_t place) : place_(place) {}
    static constexpr std::uint64_t kSize = 100 * kMebibyte;

  private:
    std::uint64_t place_;
    bool isAnswered_ = false;
    std::mutex mutex_;
    std::condition_variable answered_;
};

TEST_F(QMFileManagerCopyVolumesTest, canBeCancelledAtEveryProgressPoint) {
    for (int point = 1; point <= 5; ++point) {
        const std::uint64_t place = static_cast<std::uint64_t>(point) * 20 * kMebibyte;
        AnsweredRead read(place);
        const HeldFile file(
            makeFolder("held"), AnsweredRead::kSize,
            [&](std::uint64_t offset, std::size_t size) { return read(offset, size); });
        ASSERT_TRUE(file.isAvailable());
        std::atomic<int> questions = 0;
        test::RecordingCopyDelegate told;
        std::thread answering;
        told.delegate->fileCopyShouldContinue = [&](const auto&) {
            if (++questions != point) {
                return true;
            }
            answering = std::thread([&read] {
                // Not before the answer has arrived.
                EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(60)));
                read.answer();
            });
            return false;
        };
        test::ConsoleCapture console;
        EXPECT_FALSE(copyRecorded(file.path(), {sandbox.path("copy")}, 0, told)) << point;
        answering.join();
        EXPECT_EQ(console.lines(), point < 5 ? Lines{wrongSize(file.path())} : Lines{});
        EXPECT_EQ(questions, point);
        // The next block may have been asked for before the answer came, but no more than that.
        EXPECT_GE(told.totals().back(), place);
        EXPECT_LE(told.totals().back(), std::min(place + 65'536, AnsweredRead::kSize));
        EXPECT_EQ(sizeOf(sandbox.path("copy")), told.totals().back());
        EXPECT_EQ(told.finished, 1);
    }
}

/// Owners, which only root can give away.
class QMFileManagerCopyOwnersTest : public test::SandboxTest {
  protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root gives files away";
        }
    }
};

TEST_F(QMFileManagerCopyOwnersTest, carriesTheOwnerOver) {
    const std::string source = sandbox.write("source", "abc");
    ASSERT_EQ(chown(source.c_str(), 12'345, 23'456), 0);
    EXPECT_TRUE(copySilently(source, {sandbox.path("copy")}));
    const test::FileState copy = test::fileState(sandbox.path("copy"));
    EXPECT_EQ(copy.owner, 12'345U);
    EXPECT_EQ(copy.group, 23'456U);
}

TEST_F(QMFileManagerCopyOwnersTest, reportsWhenTheMetadataOfAForeignFileCannotBeSet) {
    const std::string source = sandbox.write("source", "abc");
    const std::string foreign = sandbox.write("foreign", "");
    ASSERT_EQ(chmod(source.c_str(), 0644), 0);
    ASSERT_EQ(chmod(foreign.c_str(), 0666), 0);
    std::filesystem::permissions(std::filesystem::path(sandbox.folder()).parent_path(),
                                 std::filesystem::perms::all);
    const test::Unprivileged user;
    test::ConsoleCapture console;
    EXPECT_TRUE(copySilently(source, {foreign}));
    EXPECT_EQ(console.lines(), Lines{"Error setting metadata for file " + foreign +
                                     " - The dates and permissions of the file " + foreign +
                                     " cannot be set: the operation is not permitted."});
    EXPECT_EQ(readBytes(foreign), "abc");
}

}  // namespace
}  // namespace vornic
