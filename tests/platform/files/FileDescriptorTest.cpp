#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/ContentsWatcher.h"
#include "platform/files/FileDescriptor.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

class FileDescriptorTest : public test::SandboxTest {};

bool isOpen(int descriptor) {
    return fcntl(descriptor, F_GETFD) >= 0;
}

TEST_F(FileDescriptorTest, closesWithTheObject) {
    int number = -1;
    {
        const FileDescriptor file(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        number = file.get();
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

TEST_F(FileDescriptorTest, handsOwnershipOver) {
    FileDescriptor first(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const int number = first.get();
    FileDescriptor second(std::move(first));
    EXPECT_EQ(second.get(), number);
    FileDescriptor third(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const int replaced = third.get();
    third = std::move(second);
    EXPECT_EQ(third.get(), number);
    EXPECT_TRUE(isOpen(number));
    second = FileDescriptor();
    EXPECT_FALSE(isOpen(replaced));
}

TEST_F(FileDescriptorTest, reportsOnceThatItClosed) {
    FileDescriptor file(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_FALSE(file);
}

TEST_F(FileDescriptorTest, opensNothingButRegularFilesForReading) {
    EXPECT_TRUE(openRegularFile(sandbox.write("file", "x"), true));
    EXPECT_EQ(openRegularFile(sandbox.folder(), true).errorNumber(), EISDIR);
    const std::string pipe = sandbox.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(openRegularFile(pipe, true).errorNumber(), EINVAL);
    EXPECT_EQ(openRegularFile("/dev/null", true).errorNumber(), EINVAL);
    EXPECT_EQ(openRegularFile(sandbox.path("missing"), true).errorNumber(), ENOENT);
}

TEST_F(FileDescriptorTest, followsLinksOnlyWhenAsked) {
    const std::string file = sandbox.write("file", "x");
    const std::string link = sandbox.path("link");
    ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
    EXPECT_TRUE(openRegularFile(link, true));
    EXPECT_FALSE(openRegularFile(link, false));
    EXPECT_TRUE(openForMetadata(link, true));
    EXPECT_EQ(openForMetadata(link, false).errorNumber(), ELOOP);
}

TEST_F(FileDescriptorTest, closesWhatItOpensWhenAProgramIsStarted) {
    const ErrnoOr<FileDescriptor> file = openRegularFile(sandbox.write("file", "x"), true);
    ASSERT_TRUE(file);
    EXPECT_NE(fcntl(file->get(), F_GETFD) & FD_CLOEXEC, 0);
}

extern "C" void doNothing(int) {}

TEST_F(FileDescriptorTest, writesEverythingThroughShortWritesAndSignals) {
    EXPECT_TRUE(test::passesInChild([] {
        struct sigaction action {};
        action.sa_handler = doNothing;
        sigaction(SIGALRM, &action, nullptr);
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        // The pipe is far smaller than the text, so that the writer waits and is interrupted there.
        const std::string text(std::size_t{4} << 20U, 'v');
        std::string got;
        std::thread reader([&] {
            std::array<char, 1000> buffer{};
            ssize_t count = 0;
            while ((count = ::read(ends[0], buffer.data(), buffer.size())) != 0) {
                got.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
                if (got.size() % 100'000 < buffer.size()) {
                    kill(getpid(), SIGALRM);
                }
            }
        });
        EXPECT_EQ(writeAll(ends[1], text.data(), text.size()), 0);
        ::close(ends[1]);
        reader.join();
        EXPECT_TRUE(got == text) << got.size();
    }));
}

TEST_F(FileDescriptorTest, readsWhatWasWrittenToBeSyncedWhateverItsSize) {
    constexpr std::size_t kMegabyte = std::size_t{1} << 20U;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, kMegabyte / 4, kMegabyte / 4 + 1,
                                   kMegabyte, 9 * kMegabyte + 7}) {
        std::string text(size, '\0');
        for (std::size_t at = 0; at < size; ++at) {
            text[at] = static_cast<char>(at % 251);
        }
        const std::string path = sandbox.path(std::to_string(size));
        const FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        ASSERT_EQ(writeAllForSync(file.get(), "head"), 0);
        ASSERT_EQ(writeAllForSync(file.get(), text), 0);
        ASSERT_EQ(synchronize(file.get()), 0);
        std::string got = "what was there";
        ASSERT_EQ(readContents(file.get(), got), 0);
        EXPECT_TRUE(got == "head" + text) << size;
    }
}

TEST_F(FileDescriptorTest, showsWhatItReadsPieceByPiece) {
    class Watcher : public ContentsWatcher {
      public:
        void begin() override { seen.clear(); }
        void take(std::string_view piece) override { seen += piece; }
        std::string seen = "of an earlier reading";
    };
    std::string text((std::size_t{1} << 20U) + 7, '\0');
    for (std::size_t at = 0; at < text.size(); ++at) {
        text[at] = static_cast<char>(at % 251);
    }
    for (const std::string& contents : {std::string(), std::string("short"), text}) {
        const std::string path = sandbox.write("watched", contents);
        const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
        Watcher watcher;
        DigestedContents digested(&watcher);
        std::string bytes;
        ASSERT_EQ(readContents(file.get(), bytes, digested), 0);
        EXPECT_TRUE(bytes == contents) << contents.size();
        EXPECT_TRUE(watcher.seen == contents) << contents.size();
        EXPECT_EQ(digested.digest(), ContentDigest::of(contents));
        ErrorSlot error;
        const std::optional<std::string> again = readFile(path, digested, error);
        EXPECT_TRUE(again == contents && watcher.seen == contents) << contents.size();
        EXPECT_EQ(digested.digest(), ContentDigest::of(contents));
    }
}

TEST_F(FileDescriptorTest, reportsWhyNothingCanBeWrittenToBeSynced) {
    const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(writeAllForSync(full.get(), std::string(std::size_t{5} << 20U, 'x')), ENOSPC);
}

TEST_F(FileDescriptorTest, listsAFolderWithoutItselfAndItsParent) {
    sandbox.write("b", "");
    sandbox.write(".a", "");
    const FileDescriptor folder(::open(sandbox.folder().c_str(), O_RDONLY | O_CLOEXEC));
    for (int round = 0; round < 2; ++round) {
        std::vector<std::string> names;
        ASSERT_EQ(listFolder(folder.get(), names), 0);
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, (std::vector<std::string>{".a", "b"}));
    }
}

TEST_F(FileDescriptorTest, reportsWhyAFolderCannotBeListed) {
    const FileDescriptor file(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    std::vector<std::string> names;
    EXPECT_EQ(listFolder(file.get(), names), ENOTDIR);
}

}  // namespace
}  // namespace vornic::platform
