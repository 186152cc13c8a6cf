#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <utility>

#include <sys/stat.h>

#include "foundation/files/QMFileManager.h"
#include "tests/foundation/files/FileServicesTest.h"

namespace vornic {
namespace {

using platform::Digest;
using platform::DigestKind;
using test::Lines;

constexpr std::uint64_t kQuestionInterval = 52'428'800;
constexpr const char* kEmptyMD5 = "d41d8cd98f00b204e9800998ecf8427e";
constexpr const char* kEmptySHA1 = "da39a3ee5e6b4b0d3255bfef95601890afd80709";
constexpr const char* kABCSHA256 =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr const char* kABCSHA512 =
    "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
    "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f";

class QMFileManagerHashingTest : public test::FileServicesTest {
  protected:
    /// A delegate that gives the same answer each time and notes what it is asked.
    std::shared_ptr<ChecksumDelegate> delegateThatAnswers(bool answer) {
        auto delegate = std::make_shared<ChecksumDelegate>();
        delegate->checksumShouldContinue = [this, answer](const std::string& path) {
            const std::lock_guard lock(mutex);
            questions.push_back(path);
            return answer;
        };
        return delegate;
    }

    [[nodiscard]] Lines questionsAsked() {
        waitForBackgroundCalls();
        return questions;
    }

    static Digest fed(DigestKind kind, std::string_view bytes) {
        std::optional<Digest> digest = Digest::create(kind);
        EXPECT_TRUE(digest);
        digest->update(bytes.data(), bytes.size());
        return std::move(*digest);
    }

    std::mutex mutex;
    Lines questions;
};

TEST_F(QMFileManagerHashingTest, finishesContextsOfAllKindsInLowerCaseHexadecimal) {
    EXPECT_EQ(QMFileManager::md5HashWithContext(fed(DigestKind::md5, "abc")),
              "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(QMFileManager::sha1HashWithContext(fed(DigestKind::sha1, "abc")),
              "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(QMFileManager::sha256HashWithContext(fed(DigestKind::sha256, "abc")), kABCSHA256);
    EXPECT_EQ(QMFileManager::sha512HashWithContext(fed(DigestKind::sha512, "abc")), kABCSHA512);
}

TEST_F(QMFileManagerHashingTest, leavesTheCallersContextAsItWas) {
    Digest context = fed(DigestKind::md5, "a");
    EXPECT_EQ(QMFileManager::md5HashWithContext(context), "0cc175b9c0f1b6a831c399e269772661");
    context.update("bc", 2);
    EXPECT_EQ(QMFileManager::md5HashWithContext(context), "900150983cd24fb0d6963f7d28e17f72");
}

TEST_F(QMFileManagerHashingTest, refusesAContextOfAnotherKind) {
    const Digest context = fed(DigestKind::sha1, "abc");
    EXPECT_EQ(QMFileManager::md5HashWithContext(context), std::nullopt);
    EXPECT_EQ(QMFileManager::sha256HashWithContext(context), std::nullopt);
    EXPECT_EQ(QMFileManager::sha512HashWithContext(context), std::nullopt);
    EXPECT_EQ(QMFileManager::sha1HashWithContext(fed(DigestKind::md5, "abc")), std::nullopt);
}

TEST_F(QMFileManagerHashingTest, hashesFiles) {
    const std::string path = sandbox.write("file", "abc");
    EXPECT_EQ(QMFileManager::md5HashForFile(path), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(QMFileManager::sha1HashForFile(path), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(QMFileManager::sha512HashForFile(path), kABCSHA512);
}

TEST_F(QMFileManagerHashingTest, hashesFilesOfManyBlocksAndAnOddEnd) {
    const std::string path = sandbox.write("file", std::string(1'000'000, 'a'));
    EXPECT_EQ(QMFileManager::sha1HashForFile(path), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
    EXPECT_EQ(QMFileManager::md5HashForFile(path), "7707d6ae4e027c70eea2a935c2296f21");
}

TEST_F(QMFileManagerHashingTest, followsLinks) {
    const std::string path = sandbox.write("file", "abc");
    ASSERT_EQ(symlink(path.c_str(), sandbox.path("link").c_str()), 0);
    EXPECT_EQ(QMFileManager::md5HashForFile(sandbox.path("link")),
              "900150983cd24fb0d6963f7d28e17f72");
}

TEST_F(QMFileManagerHashingTest, hashesAnEmptyFileWithoutAskingTheDelegate) {
    const std::string path = sandbox.write("empty", "");
    const auto delegate = delegateThatAnswers(false);
    EXPECT_EQ(QMFileManager::md5HashForFile(path, delegate), kEmptyMD5);
    EXPECT_EQ(QMFileManager::sha1HashForFile(path, delegate), kEmptySHA1);
    EXPECT_EQ(questionsAsked(), Lines{});
}

TEST_F(QMFileManagerHashingTest, asksOnceForAFileOfExactlyFiftyMebibytes) {
    const std::string path = makeSparse("file", kQuestionInterval);
    EXPECT_EQ(QMFileManager::md5HashForFile(path, delegateThatAnswers(true)),
              "25e317773f308e446cc84c503a6d1f85");
    EXPECT_EQ(questionsAsked(), Lines{path});
}

TEST_F(QMFileManagerHashingTest, asksNobodyForAFileOneByteShorter) {
    const std::string path = makeSparse("file", kQuestionInterval - 1);
    EXPECT_NE(QMFileManager::sha1HashForFile(path, delegateThatAnswers(false)), std::nullopt);
    EXPECT_EQ(questionsAsked(), Lines{});
}

TEST_F(QMFileManagerHashingTest, asksAgainEachFiftyMebibytes) {
    const std::string path = makeSparse("file", 2 * kQuestionInterval + 1);
    EXPECT_NE(QMFileManager::sha1HashForFile(path, delegateThatAnswers(true)), std::nullopt);
    EXPECT_EQ(questionsAsked(), (Lines{path, path}));
}

TEST_F(QMFileManagerHashingTest, givesNothingWhenTheDelegateAnswersFalse) {
    const std::string path = makeSparse("file", 20 * kQuestionInterval);
    EXPECT_EQ(QMFileManager::md5HashForFile(path, delegateThatAnswers(false)), std::nullopt);
    EXPECT_EQ(QMFileManager::sha1HashForFile(path, delegateThatAnswers(false)), std::nullopt);
    EXPECT_EQ(QMFileManager::sha512HashForFile(path, delegateThatAnswers(false)), std::nullopt);
    // It stopped long before the end, where it would have asked twenty times a file.
    EXPECT_LT(questionsAsked().size(), 30U);
}

TEST_F(QMFileManagerHashingTest, readsOnWhileTheDelegateThinks) {
    const std::string path = makeSparse("file", kQuestionInterval);
    std::promise<bool> answer;
    auto delegate = std::make_shared<ChecksumDelegate>();
    delegate->checksumShouldContinue = [&](const std::string&) {
        return answer.get_future().get();
    };
    EXPECT_EQ(QMFileManager::md5HashForFile(path, delegate), "25e317773f308e446cc84c503a6d1f85");
    // The answer comes when nobody waits for it any more.
    delegate.reset();
    answer.set_value(false);
    waitForBackgroundCalls();
}

TEST_F(QMFileManagerHashingTest, takesADelegateThatDoesNotAnswerToTheQuestion) {
    const std::string path = makeSparse("file", kQuestionInterval);
    EXPECT_EQ(QMFileManager::md5HashForFile(path, std::make_shared<ChecksumDelegate>()),
              "25e317773f308e446cc84c503a6d1f85");
}

TEST_F(QMFileManagerHashingTest, reportsOnTheConsoleThatAFileCannotBeOpened) {
    const std::string path = sandbox.path("missing 100%@");
    test::ConsoleCapture console;
    EXPECT_EQ(QMFileManager::md5HashForFile(path), std::nullopt);
    EXPECT_EQ(console.lines(), Lines{"Error: Unable to open destination file " + path +
                                     ". Aborting hash verification..."});
    EXPECT_EQ(log.entries(), Lines{});
}

TEST_F(QMFileManagerHashingTest, refusesWhatIsNoRegularFileWithoutWaiting) {
    const std::string pipe = sandbox.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    test::ConsoleCapture console;
    EXPECT_EQ(QMFileManager::sha1HashForFile(pipe), std::nullopt);
    EXPECT_EQ(QMFileManager::sha512HashForFile(sandbox.folder()), std::nullopt);
    EXPECT_EQ(console.lines().size(), 2U);
}

TEST_F(QMFileManagerHashingTest, logsAndPrintsAReadError) {
    // The first page of a process's memory is never mapped.
    const std::string path = "/proc/self/mem";
    testing::internal::CaptureStdout();
    EXPECT_EQ(QMFileManager::sha512HashForFile(path), std::nullopt);
    const Lines expected{"Error reading file " + path + " - aborting..."};
    EXPECT_EQ(log.entries(), expected);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected[0] + "\n");
}

}  // namespace
}  // namespace vornic
