#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Exception.h"
#include "foundation/files/QMFileManager.h"
#include "platform/threads/MainThread.h"
#include "tests/foundation/files/FileManagerTest.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using platform::MainThread;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;

/// A loop that tells how it is asked.
class CountingLoop : public platform::PlainRunLoop {
  public:
    bool dispatchOne(milliseconds limit) override {
        ++rounds;
        longestWait = std::max(longestWait, limit);
        return PlainRunLoop::dispatchOne(limit);
    }
    int rounds = 0;
    milliseconds longestWait{0};
};

/// The tools that run with rights are only said to have been started, so that a change shows when
/// the test makes it.
class QMFileManagerWaitingTest : public test::FileManagerTest {
  protected:
    QMFileManagerWaitingTest() { MainThread::setLoop(loop); }
    ~QMFileManagerWaitingTest() override {
        MainThread::restart();
        MainThread::setLoop(nullptr);
    }
    void openClosedFolder() const { fs::permissions(sandbox.path("closed"), fs::perms(0700)); }
    static milliseconds timeOf(const std::function<void()>& function) {
        const auto start = steady_clock::now();
        function();
        return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
    }
    static void onAnotherThread(const std::function<void()>& function) {
        std::thread(function).join();
    }

    std::shared_ptr<CountingLoop> loop = std::make_shared<CountingLoop>();
    std::string path = writeInClosedFolder("file");
};

TEST_F(QMFileManagerWaitingTest, doesNotWaitForWhatHasHappened) {
    openClosedFolder();
    bool succeeded = false;
    const auto elapsed = timeOf([&] {
        succeeded = QMFileManager::copyFile(path, sandbox.path("a"), seconds(60)) &&
                    QMFileManager::moveFile(sandbox.path("a"), sandbox.path("b"), seconds(60)) &&
                    QMFileManager::trashFile(path, seconds(60)) &&
                    QMFileManager::removeFile(sandbox.path("b"), seconds(60)) &&
                    QMFileManager::createDirectory(sandbox.path("c"), seconds(60));
    });
    EXPECT_TRUE(succeeded);
    EXPECT_EQ(loop->rounds, 0);
    EXPECT_LT(elapsed, seconds(30));
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("c", "closed"));
}

TEST_F(QMFileManagerWaitingTest, dispatchesEventsOnTheMainThreadUntilTheFileIsGone) {
    int events = 0;
    MainThread::perform([&events] { ++events; });
    MainThread::perform([this] {
        openClosedFolder();
        fs::remove(path);
    });
    MainThread::perform([&events] { ++events; });
    EXPECT_TRUE(QMFileManager::removeFile(path, seconds(60)));
    EXPECT_EQ(loop->rounds, 2) << "one event a round, and none more than needed";
    EXPECT_EQ(events, 1);
    EXPECT_EQ(loop->longestWait, milliseconds(10));
}

TEST_F(QMFileManagerWaitingTest, waitsForEachKindOfChange) {
    const std::string made = sandbox.path("closed/made");
    const auto make = [&] {
        openClosedFolder();
        fs::create_directory(made);
        fs::permissions(sandbox.path("closed"), fs::perms(0500));
    };
    const auto take = [&](const std::string& what) {
        openClosedFolder();
        fs::remove(what);
        fs::permissions(sandbox.path("closed"), fs::perms(0500));
    };
    MainThread::perform(make);
    EXPECT_TRUE(QMFileManager::createDirectory(made, seconds(60)));
    take(made);
    MainThread::perform(make);
    EXPECT_TRUE(QMFileManager::copyFile(path, made, seconds(60)));
    MainThread::perform([&] { take(made); });
    EXPECT_TRUE(QMFileManager::trashFile(made, seconds(60)));
    MainThread::perform([&] { take(path); });
    EXPECT_TRUE(QMFileManager::moveFile(path, sandbox.path("elsewhere"), seconds(60)));
    EXPECT_EQ(loop->rounds, 4);
    EXPECT_EQ(runs().size(), 4U);
}

TEST_F(QMFileManagerWaitingTest, givesUpAfterTheTimeout) {
    const auto elapsed = timeOf([&] { EXPECT_FALSE(QMFileManager::removeFile(path, seconds(1))); });
    EXPECT_GE(elapsed, seconds(1));
    EXPECT_LT(elapsed, seconds(20));
    EXPECT_GT(loop->rounds, 10);
    EXPECT_TRUE(test::exists(path));
}

TEST_F(QMFileManagerWaitingTest, waitsOneRoundWithoutATimeout) {
    EXPECT_FALSE(QMFileManager::removeFile(path, seconds(0)));
    EXPECT_EQ(loop->rounds, 1);
    EXPECT_FALSE(QMFileManager::trashFile(path, seconds(-5)));
    EXPECT_EQ(loop->rounds, 2);
}

TEST_F(QMFileManagerWaitingTest, takesTheLongestTimeout) {
    MainThread::perform([this] {
        openClosedFolder();
        fs::remove(path);
    });
    EXPECT_TRUE(QMFileManager::removeFile(path, seconds::max()));
}

TEST_F(QMFileManagerWaitingTest, sleepsOnAnotherThreadAndLeavesTheEventsAlone) {
    bool dispatched = false;
    MainThread::perform([&dispatched] { dispatched = true; });
    milliseconds elapsed{0};
    onAnotherThread([&] {
        elapsed = timeOf([&] {
            std::thread other([this] {
                std::this_thread::sleep_for(milliseconds(100));
                openClosedFolder();
                fs::remove(path);
            });
            EXPECT_TRUE(QMFileManager::removeFile(path, seconds(60)));
            other.join();
        });
    });
    EXPECT_GE(elapsed, milliseconds(300));
    EXPECT_LT(elapsed, seconds(30));
    EXPECT_EQ(loop->rounds, 0);
    EXPECT_FALSE(dispatched);
}

TEST_F(QMFileManagerWaitingTest, givesUpOnAnotherThreadToo) {
    onAnotherThread([&] { EXPECT_FALSE(QMFileManager::trashFile(path, seconds(1))); });
    EXPECT_TRUE(test::exists(path));
}

TEST_F(QMFileManagerWaitingTest, doesNotWaitAfterAFailure) {
    host->rightsStatus = -1;
    EXPECT_FALSE(QMFileManager::trashFile(path, seconds(60)));
    EXPECT_FALSE(QMFileManager::removeFile(path, seconds(60)));
    EXPECT_FALSE(QMFileManager::createDirectory(sandbox.path("closed/a"), seconds(60)));
    EXPECT_FALSE(QMFileManager::copyFile(path, sandbox.path("closed/a"), seconds(60)));
    EXPECT_FALSE(QMFileManager::moveFile(path, sandbox.path("a"), seconds(60)));
    EXPECT_EQ(loop->rounds, 0);
}

TEST_F(QMFileManagerWaitingTest, doesNotWaitForARenameToAnotherCase) {
    // The source stays, as on a volume that takes both names for one.
    EXPECT_TRUE(QMFileManager::moveFile(path, sandbox.path("closed/FILE"), seconds(60)));
    EXPECT_EQ(runs().size(), 1U);
    EXPECT_EQ(loop->rounds, 0);
    EXPECT_TRUE(test::exists(path));
}

TEST_F(QMFileManagerWaitingTest, takesLettersOfEveryScriptForTheSameInAnotherCase) {
    openClosedFolder();
    const std::string accented = sandbox.write("closed/\xC3\xA9.xml", "x");
    fs::permissions(sandbox.path("closed"), fs::perms(0500));
    EXPECT_TRUE(QMFileManager::moveFile(accented, sandbox.path("closed/\xC3\x89.xml"), seconds(0)));
    EXPECT_EQ(loop->rounds, 0);
    EXPECT_FALSE(
        QMFileManager::moveFile(accented, sandbox.path("closed/\xC3\x88.xml"), seconds(0)));
    EXPECT_EQ(loop->rounds, 1) << "another name is waited for";
}

TEST_F(QMFileManagerWaitingTest, outlivesAnEventThatFails) {
    MainThread::perform([] { throw platform::RangeException("no such clip"); });
    MainThread::perform([this] {
        openClosedFolder();
        fs::remove(path);
    });
    EXPECT_TRUE(QMFileManager::trashFile(path, seconds(60)));
    EXPECT_THAT(log.entries(), ElementsAre("Exception in +[QMFileManager trashFile:timeout:]. "
                                           "NSRangeException - no such clip."));
}

TEST_F(QMFileManagerWaitingTest, endsWhenTheProgramQuits) {
    MainThread::shutdown();
    const auto elapsed = timeOf([&] {
        onAnotherThread([&] { EXPECT_FALSE(QMFileManager::trashFile(path, seconds(60))); });
    });
    EXPECT_LT(elapsed, seconds(30));
}

}  // namespace
}  // namespace vornic
