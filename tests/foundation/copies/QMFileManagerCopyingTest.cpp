#include <chrono>
#include <future>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>

#include "tests/foundation/copies/CopyTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic {
namespace {

using test::copyRecorded;
using test::copySilently;
using test::kMebibyte;
using test::Lines;
using test::readBytes;

using Totals = std::vector<std::uint64_t>;

class QMFileManagerCopyingTest : public test::FileServicesTest {
  protected:
    [[nodiscard]] Lines checksums() const {
        return recording.settings()->valueForKey<Lines>("destChecksums").value_or(Lines{"none"});
    }
    [[nodiscard]] std::string sourceChecksum() const {
        return recording.settings()->valueForKey<std::string>("sourceChecksum").value_or("none");
    }

    test::RecordingCopyDelegate recording;
};

TEST_F(QMFileManagerCopyingTest, copiesEveryByteToEveryDestination) {
    const std::string bytes = test::manyBytes(1'000'001);
    const std::string source = sandbox.write("source", bytes);
    const std::vector<std::string> destinations{sandbox.path("a"), sandbox.path("b"),
                                                sandbox.path("c")};
    EXPECT_TRUE(copySilently(source, destinations));
    for (const std::string& destination : destinations) {
        EXPECT_TRUE(readBytes(destination) == bytes) << destination;
    }
    EXPECT_TRUE(readBytes(source) == bytes);
}

TEST_F(QMFileManagerCopyingTest, hasShorterFormsForOneUnverifiedDestination) {
    const std::string source = sandbox.write("source", "abc");
    EXPECT_TRUE(QMFileManager::copyFileWithProgress(source, sandbox.path("a"), recording.delegate,
                                                    1, std::string("two")));
    waitForBackgroundCalls();
    EXPECT_EQ(readBytes(sandbox.path("a")), "abc");
    const auto settings = recording.settings();
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(settings->valueForKey<Lines>("destinations"), Lines{sandbox.path("a")});
    EXPECT_EQ(settings->valueForKey<int>("object"), 1);
    EXPECT_EQ(settings->valueForKey<std::string>("object2"), "two");
    EXPECT_FALSE(settings->objectForKey("sourceChecksum").has_value());

    test::RecordingCopyDelegate other;
    EXPECT_TRUE(QMFileManager::copyFileWithProgress(source, sandbox.path("b"), other.delegate,
                                                    std::string("one")));
    waitForBackgroundCalls();
    EXPECT_EQ(readBytes(sandbox.path("b")), "abc");
    ASSERT_NE(other.settings(), nullptr);
    EXPECT_EQ(other.settings()->valueForKey<std::string>("object"), "one");
    EXPECT_FALSE(other.settings()->objectForKey("object2").has_value());
}

TEST_F(QMFileManagerCopyingTest, handsTheSameSettingsToEveryCall) {
    const std::string source = sandbox.write("source", "abc");
    const Lines destinations{sandbox.path("a"), sandbox.path("b")};
    EXPECT_TRUE(QMFileManager::copyFileWithProgress(source, destinations, 1, recording.delegate,
                                                    std::any(), 2));
    waitForBackgroundCalls();
    const auto settings = recording.settings();
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(settings->valueForKey<std::string>("source"), source);
    EXPECT_EQ(settings->valueForKey<Lines>("destinations"), destinations);
    EXPECT_EQ(settings->valueForKey<std::string>("operationtype"), "copy");
    const auto delegate = settings->valueForKey<std::weak_ptr<FileCopyDelegate>>("delegate");
    ASSERT_TRUE(delegate);
    EXPECT_EQ(delegate->lock(), recording.delegate);
    EXPECT_FALSE(settings->objectForKey("object").has_value());
    EXPECT_EQ(settings->valueForKey<int>("object2"), 2);
    EXPECT_FALSE(settings->objectForKey("destChecksum").has_value());
}

TEST_F(QMFileManagerCopyingTest, distinguishesCopiesByTheirSettings) {
    const std::string source = sandbox.write("source", "abc");
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a")}, 0, recording));
    ASSERT_NE(recording.settings(), nullptr);
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("b")}, 0, recording));
    EXPECT_EQ(recording.settings(), nullptr);
}

TEST_F(QMFileManagerCopyingTest, verifiesWithEachKindOfChecksum) {
    const std::string source = sandbox.write("source", "abc");
    const std::vector<std::pair<std::int32_t, std::string>> kinds{
        {1, "900150983cd24fb0d6963f7d28e17f72"},
        {2, "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {3, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {4,
         "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
         "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"}};
    for (const auto& [type, checksum] : kinds) {
        test::RecordingCopyDelegate told;
        EXPECT_TRUE(copyRecorded(source, {sandbox.path("a"), sandbox.path("b")}, type, told));
        ASSERT_NE(told.settings(), nullptr);
        EXPECT_EQ(told.settings()->valueForKey<std::string>("sourceChecksum"), checksum);
        EXPECT_EQ(told.settings()->valueForKey<Lines>("destChecksums"),
                  (Lines{checksum, checksum}));
        EXPECT_EQ(told.mismatches, Lines{});
        EXPECT_EQ(told.finished, 1);
    }
}

TEST_F(QMFileManagerCopyingTest, verifiesFilesOfManyBlocks) {
    const std::string source = sandbox.write("source", test::manyBytes(10'000'003));
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a"), sandbox.path("b")}, 1, recording));
    const std::string expected = QMFileManager::md5HashForFile(source).value_or("no checksum");
    ASSERT_NE(recording.settings(), nullptr);
    EXPECT_EQ(sourceChecksum(), expected);
    EXPECT_EQ(checksums(), (Lines{expected, expected}));
    EXPECT_EQ(recording.mismatches, Lines{});
}

TEST_F(QMFileManagerCopyingTest, copiesWithoutVerifyingForOtherTypes) {
    const std::string source = sandbox.write("source", "abc");
    for (const std::int32_t type : {7, 0, -1, 5}) {
        test::RecordingCopyDelegate told;
        EXPECT_TRUE(copyRecorded(source, {sandbox.path("a")}, type, told));
        EXPECT_EQ(readBytes(sandbox.path("a")), "abc");
        ASSERT_NE(told.settings(), nullptr);
        EXPECT_FALSE(told.settings()->objectForKey("sourceChecksum").has_value());
        EXPECT_FALSE(told.settings()->objectForKey("destChecksums").has_value());
    }
}

TEST_F(QMFileManagerCopyingTest, copiesAnEmptyFile) {
    const std::string source = sandbox.write("source", "");
    sandbox.write("b", "older text");
    test::ConsoleCapture console;
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a"), sandbox.path("b")}, 1, recording));
    EXPECT_EQ(console.lines(), Lines{});
    EXPECT_EQ(readBytes(sandbox.path("a")), "");
    EXPECT_EQ(readBytes(sandbox.path("b")), "");
    EXPECT_EQ(recording.totals(), Totals{0});
    EXPECT_EQ(recording.questions(), 0);
    EXPECT_EQ(sourceChecksum(), test::kMD5OfNothing);
    EXPECT_EQ(checksums(), (Lines{test::kMD5OfNothing, test::kMD5OfNothing}));
    EXPECT_EQ(recording.mismatches, Lines{});
}

TEST_F(QMFileManagerCopyingTest, makesTheFolderOfADestination) {
    const std::string source = sandbox.write("source", "abc");
    const std::string far = sandbox.path("new/folder/copy");
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("near"), far}, 3, recording));
    EXPECT_EQ(readBytes(sandbox.path("near")), "abc");
    EXPECT_EQ(readBytes(far), "abc");
    EXPECT_EQ(checksums(), (Lines{sourceChecksum(), sourceChecksum()}));
    EXPECT_EQ(recording.mismatches, Lines{});
}

TEST_F(QMFileManagerCopyingTest, reportsASmallFileOnlyAtItsEnd) {
    const std::string source = sandbox.write("source", test::manyBytes(200'000));
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a")}, 0, recording));
    // With its last block and, once more, when it is closed.
    EXPECT_EQ(recording.totals(), (Totals{200'000, 200'000}));
    EXPECT_EQ(recording.questions(), 1);
    EXPECT_EQ(recording.finished, 1);
}

TEST_F(QMFileManagerCopyingTest, reportsAFileOfWholeBlocksOnceAtItsEnd) {
    const std::string source = sandbox.write("source", test::manyBytes(131'072));
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a")}, 0, recording));
    EXPECT_EQ(recording.totals(), (Totals{131'072, 131'072}));
}

TEST_F(QMFileManagerCopyingTest, reportsEachTwentyMebibytes) {
    const std::string source = makeSparse("source", 45 * kMebibyte);
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a")}, 2, recording));
    EXPECT_EQ(recording.totals(),
              (Totals{20 * kMebibyte, 40 * kMebibyte, 45 * kMebibyte, 45 * kMebibyte}));
    EXPECT_EQ(recording.questions(), 3);
}

TEST_F(QMFileManagerCopyingTest, reportsTheEndOnItsOwnThread) {
    const std::string source = sandbox.write("source", "");
    std::thread::id thread;
    recording.delegate->fileCopyBytesWritten = [&](std::uint64_t, const auto&) {
        thread = std::this_thread::get_id();
    };
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a")}, 0, recording));
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(QMFileManagerCopyingTest, takesADelegateWithoutOperations) {
    const std::string source = sandbox.write("source", "abc");
    EXPECT_TRUE(QMFileManager::copyFileWithProgress(
        source, sandbox.path("a"), std::make_shared<FileCopyDelegate>(), std::any()));
    EXPECT_EQ(readBytes(sandbox.path("a")), "abc");
}

TEST_F(QMFileManagerCopyingTest, stopsWhenTheDelegateAnswersFalse) {
    const std::string source = makeSparse("source", 1024 * kMebibyte);
    recording.delegate->fileCopyShouldContinue = [](const auto&) { return false; };
    test::ConsoleCapture console;
    EXPECT_FALSE(copyRecorded(source, {sandbox.path("a"), sandbox.path("b")}, 3, recording));
    EXPECT_EQ(console.lines(),
              Lines{"Error: copied file size does not match original source " + source});
    const std::uint64_t copied = recording.totals().back();
    EXPECT_GE(copied, 20 * kMebibyte);
    EXPECT_LT(copied, 1024 * kMebibyte);
    // What was copied stays, and is as it was read.
    for (const char* name : {"a", "b"}) {
        struct stat status {};
        EXPECT_EQ(stat(sandbox.path(name).c_str(), &status), 0);
        EXPECT_EQ(static_cast<std::uint64_t>(status.st_size), copied);
    }
    EXPECT_EQ(checksums(), (Lines{sourceChecksum(), sourceChecksum()}));
    EXPECT_EQ(recording.finished, 1);
}

TEST_F(QMFileManagerCopyingTest, doesNotWaitForADelegateThatAnswersLate) {
    const std::string source = makeSparse("source", 45 * kMebibyte);
    std::promise<bool> promise;
    const std::shared_future<bool> answer = promise.get_future().share();
    auto delegate = std::make_shared<FileCopyDelegate>();
    std::atomic<int> answered = 0;
    delegate->fileCopyShouldContinue = [&answered, answer](const auto&) {
        const bool goesOn = answer.get();
        ++answered;
        return goesOn;
    };
    EXPECT_TRUE(
        QMFileManager::copyFileWithProgress(source, sandbox.path("a"), delegate, std::any()));
    EXPECT_EQ(answered, 0);
    delegate.reset();
    promise.set_value(false);
    waitForBackgroundCalls();
    EXPECT_EQ(answered, 3);
}

TEST_F(QMFileManagerCopyingTest, runsSeveralCopiesAtOnce) {
    const std::string source = sandbox.write("source", test::manyBytes(3'000'000));
    std::vector<std::future<bool>> copies;
    for (int copy = 0; copy < 4; ++copy) {
        copies.push_back(std::async(std::launch::async, [&, copy] {
            return QMFileManager::copyFileWithProgress(
                source, Lines{sandbox.path("copy " + std::to_string(copy))}, 1, recording.delegate,
                copy, std::any());
        }));
    }
    for (auto& copy : copies) {
        EXPECT_TRUE(copy.get());
    }
    waitForBackgroundCalls();
    EXPECT_EQ(recording.mismatches, Lines{});
    EXPECT_EQ(recording.finished, 4);
    for (int copy = 0; copy < 4; ++copy) {
        EXPECT_TRUE(readBytes(sandbox.path("copy " + std::to_string(copy))) == readBytes(source));
    }
}

TEST_F(QMFileManagerCopyingTest, replacesAnExistingDestinationInPlace) {
    const std::string source = sandbox.write("source", "new");
    const std::string destination = sandbox.write("destination", "an older and longer text");
    ASSERT_EQ(link(destination.c_str(), sandbox.path("other name").c_str()), 0);
    EXPECT_TRUE(copyRecorded(source, {destination}, 1, recording));
    EXPECT_EQ(readBytes(destination), "new");
    EXPECT_EQ(readBytes(sandbox.path("other name")), "new");
    EXPECT_EQ(recording.mismatches, Lines{});
}

TEST_F(QMFileManagerCopyingTest, writesThroughALinkToAnotherFile) {
    const std::string source = sandbox.write("source", "new");
    const std::string target = sandbox.write("target", "old");
    ASSERT_EQ(symlink(target.c_str(), sandbox.path("link").c_str()), 0);
    ASSERT_EQ(symlink(sandbox.path("made").c_str(), sandbox.path("dangling").c_str()), 0);
    EXPECT_TRUE(copySilently(source, {sandbox.path("link"), sandbox.path("dangling")}));
    EXPECT_EQ(readBytes(target), "new");
    EXPECT_EQ(readBytes(sandbox.path("made")), "new");
    EXPECT_TRUE(S_ISLNK(test::fileState(sandbox.path("link")).mode));
    EXPECT_TRUE(S_ISLNK(test::fileState(sandbox.path("dangling")).mode));
}

TEST_F(QMFileManagerCopyingTest, takesADestinationThatIsGivenTwice) {
    const std::string bytes = test::manyBytes(300'000);
    const std::string source = sandbox.write("source", bytes);
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("a"), sandbox.path("a")}, 1, recording));
    EXPECT_TRUE(readBytes(sandbox.path("a")) == bytes);
    EXPECT_EQ(recording.mismatches, Lines{});
}

TEST_F(QMFileManagerCopyingTest, carriesModeTimesAndExtendedAttributesOver) {
    const std::string source = sandbox.write("source", "abc");
    ASSERT_EQ(chmod(source.c_str(), 0640), 0);
    const bool hasAttributes = test::setAttribute(source, "user.note", "scene 4");
    const struct timespec times[2] = {{1'234'567, 123'456'789}, {7'654'321, 987'654'321}};
    ASSERT_EQ(utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
    const std::string existing = sandbox.write("existing", "");
    EXPECT_TRUE(copySilently(source, {sandbox.path("new"), existing}));
    for (const std::string& copy : {sandbox.path("new"), existing}) {
        struct stat status {};
        ASSERT_EQ(stat(copy.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0640U);
        EXPECT_EQ(status.st_mtim.tv_sec, 7'654'321);
        EXPECT_EQ(status.st_mtim.tv_nsec, 987'654'321);
        EXPECT_EQ(status.st_atim.tv_sec, 1'234'567);
        EXPECT_EQ(status.st_atim.tv_nsec, 123'456'789);
        EXPECT_EQ(test::fileState(copy).attributes.count("user.note"), hasAttributes ? 1U : 0U);
    }
}

TEST_F(QMFileManagerCopyingTest, showsAPrivateFileToNobodyWhileItIsWritten) {
    const std::string source = sandbox.write("source", "secret");
    ASSERT_EQ(chmod(source.c_str(), 0400), 0);
    mode_t mode = 0;
    recording.delegate->fileCopyBytesWritten = [&, thread = std::this_thread::get_id()](
                                                   std::uint64_t, const auto&) {
        // The call on this thread comes before the mode is set.
        if (std::this_thread::get_id() == thread) {
            mode = test::fileState(sandbox.path("copy")).mode & 07777U;
        }
    };
    EXPECT_TRUE(copyRecorded(source, {sandbox.path("copy")}, 0, recording));
    EXPECT_EQ(mode, 0600U);
    EXPECT_EQ(test::fileState(sandbox.path("copy")).mode & 07777U, 0400U);
}

}  // namespace
}  // namespace vornic
