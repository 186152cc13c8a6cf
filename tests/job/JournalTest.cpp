#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "job/Journal.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

class JournalTest : public test::SandboxTest {
  protected:
    [[nodiscard]] static JournalEntry entryAbout(const std::string& file) {
        return {.program = "test", .version = "1", .file = file, .workingCopy = file + "-backup"};
    }
    /// Announces and ends a change.
    void write(const std::string& file) {
        auto run = journal.begin(entryAbout(file), error);
        ASSERT_TRUE(run);
        ASSERT_TRUE(journal.finish(std::move(*run), "/trash/" + file, error));
    }
    [[nodiscard]] std::vector<JournalEntry> entries() {
        return journal.entries(error).value_or(std::vector<JournalEntry>());
    }

    Journal journal = Journal::ofUser().value();
    ErrorSlot error;
};

TEST_F(JournalTest, liesInTheUsersLibraryForTheUserAlone) {
    write("/a");
    EXPECT_EQ(journal.path(), sandbox.home() + "/.local/share/quillmark/Journal/Vornic.journal");
    EXPECT_EQ(test::fileState(journal.path()).mode, S_IFREG | 0600U);
    EXPECT_EQ(test::fileState(fs::path(journal.path()).parent_path()).mode, S_IFDIR | 0700U);
}

TEST_F(JournalTest, reportsWhatWasDone) {
    write("/a b");
    auto run = journal.begin(entryAbout("/c"), error);
    ASSERT_TRUE(run && journal.takeBack(std::move(*run), error));
    const std::vector<JournalEntry> all = entries();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].file, "/a b");
    EXPECT_EQ(all[0].state, JournalEntry::State::done);
    EXPECT_EQ(all[0].original, "/trash//a b");
    EXPECT_NEAR(static_cast<double>(all[0].date), static_cast<double>(std::time(nullptr)), 60);
    EXPECT_EQ(all[1].state, JournalEntry::State::takenBack);
    EXPECT_NE(all[0].id, all[1].id);
}

TEST_F(JournalTest, isEmptyWhereThereIsNone) {
    EXPECT_THAT(entries(), IsEmpty());
    EXPECT_FALSE(error);
    EXPECT_THAT(journal.takeInterrupted(), IsEmpty());
    EXPECT_FALSE(test::exists(journal.path()));
}

TEST_F(JournalTest, beginsANewLineBehindATornOne) {
    write("/a");
    std::ofstream(journal.path(), std::ios::app) << "begin 12 torn";
    write("/b");
    const std::vector<JournalEntry> all = entries();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[1].file, "/b");
    EXPECT_EQ(all[1].state, JournalEntry::State::done);
}

TEST_F(JournalTest, takesOverWhatNobodyWillEnd) {
    write("/a");
    EXPECT_TRUE(test::passesInChild([this] {
        auto run = journal.begin(entryAbout("/killed"), error);
        _exit(run ? 0 : 1);
    }));
    auto living = journal.begin(entryAbout("/living"), error);
    std::vector<Journal::Run> taken = journal.takeInterrupted();
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(taken[0].entry().file, "/killed");
    EXPECT_THAT(journal.takeInterrupted(), IsEmpty()) << "it has been taken over";
    EXPECT_TRUE(journal.takeBack(std::move(taken[0]), error));
    EXPECT_THAT(journal.takeInterrupted(), IsEmpty());
    living.reset();
    taken = journal.takeInterrupted();
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(taken[0].entry().file, "/living");
}

TEST_F(JournalTest, readsNothingAgainThatIsSettled) {
    write("/a");
    EXPECT_THAT(journal.takeInterrupted(), IsEmpty());
    // What would be an interrupted change is not looked at, since nothing was written.
    std::string text = test::readBytes(journal.path());
    const std::size_t end = text.find("\nend ");
    text.replace(end + 1, 3, "END");
    {
        std::ofstream file(journal.path(), std::ios::in | std::ios::out | std::ios::binary);
        file << text;
    }
    EXPECT_THAT(journal.takeInterrupted(), IsEmpty());
    write("/b");
    EXPECT_THAT(journal.takeInterrupted(), IsEmpty());
    fs::remove(journal.path() + ".settled");
    EXPECT_EQ(journal.takeInterrupted().size(), 1U);
}

TEST_F(JournalTest, keepsTheNewestEntries) {
    journal = Journal(journal.path(), {.entries = 20, .age = 1000});
    for (int count = 0; count < 25; ++count) {
        write("/" + std::to_string(count));
    }
    EXPECT_EQ(entries().size(), 20U);
    EXPECT_EQ(entries().front().file, "/5");
    EXPECT_THAT(journal.takeInterrupted(), IsEmpty());
    EXPECT_EQ(entries().size(), 18U);
    EXPECT_EQ(entries().back().file, "/24");
    EXPECT_EQ(test::fileState(journal.path()).mode, S_IFREG | 0600U);
    const std::string text = test::readBytes(journal.path());
    EXPECT_EQ(text.find("file=/6 "), std::string::npos);
}

TEST_F(JournalTest, dropsOldEntries) {
    write("/new");
    JournalEntry old = entryAbout("/old");
    old.id = 5;
    old.date = std::time(nullptr) - std::int64_t{91} * 24 * 60 * 60;
    old.state = JournalEntry::State::done;
    const std::string text = test::readBytes(journal.path());
    test::writeBytes(journal.path(), beginLine(old) + endLine(old) + text);
    ASSERT_EQ(entries().size(), 1U);
    EXPECT_EQ(entries()[0].file, "/new");
    EXPECT_THAT(journal.takeInterrupted(), IsEmpty());
    EXPECT_EQ(test::readBytes(journal.path()), text);
}

TEST_F(JournalTest, losesNothingWhenSeveralWriteAtOnce) {
    constexpr int kEntries = 40;
    const Journal small(journal.path(), {.entries = 30, .age = 1000});
    const auto work = [&](const std::string& name) {
        for (int count = 0; count < kEntries; ++count) {
            ErrorSlot own;
            auto run = journal.begin(entryAbout("/" + name + std::to_string(count)), own);
            ASSERT_TRUE(run);
            ASSERT_TRUE(journal.finish(std::move(*run), "/x", own));
        }
    };
    std::thread first(work, "a");
    std::thread second(work, "b");
    first.join();
    second.join();
    std::set<std::string> files;
    for (const JournalEntry& entry : entries()) {
        EXPECT_EQ(entry.state, JournalEntry::State::done);
        files.insert(entry.file);
    }
    EXPECT_EQ(files.size(), 2U * kEntries);
    EXPECT_THAT(small.takeInterrupted(), IsEmpty());
    EXPECT_EQ(entries().size(), 27U);
}

TEST_F(JournalTest, holdsAThousandEntriesOfManyProcesses) {
    constexpr int kProcesses = 20;
    constexpr int kEntries = 50;
    const auto work = [this](int process) {
        for (int count = 0; count < kEntries; ++count) {
            // Longer than what a pipe or a block holds in one piece.
            write("/" + std::to_string(process) + "/" + std::to_string(count) +
                  std::string(5000, 'n'));
        }
    };
    {
        std::vector<std::unique_ptr<test::ChildProcess>> children;
        for (int process = 0; process < kProcesses; ++process) {
            children.push_back(
                std::make_unique<test::ChildProcess>([&work, process] { work(process); }));
        }
        // What nobody has ended yet belongs to the living.
        for (int time = 0; time < kProcesses; ++time) {
            EXPECT_THAT(journal.takeInterrupted(), IsEmpty());
        }
        for (const auto& child : children) {
            EXPECT_EQ(child->wait(), 0);
        }
    }
    std::set<std::string> files;
    for (const JournalEntry& entry : entries()) {
        EXPECT_EQ(entry.state, JournalEntry::State::done);
        files.insert(entry.file);
    }
    EXPECT_EQ(files.size(), std::size_t{kProcesses} * kEntries);
}

TEST_F(JournalTest, reportsWhatIsNew) {
    Journal::Position position;
    EXPECT_THAT(journal.entriesSince(position, error)->entries, IsEmpty());
    write("/a");
    auto open = journal.begin(entryAbout("/open"), error);
    auto news = journal.entriesSince(position, error);
    ASSERT_TRUE(news && news->isAnew);
    EXPECT_EQ(news->entries.size(), 2U);
    write("/b");
    news = journal.entriesSince(position, error);
    ASSERT_TRUE(news);
    EXPECT_FALSE(news->isAnew);
    ASSERT_EQ(news->entries.size(), 2U) << "what is open is told again";
    EXPECT_EQ(news->entries[0].file, "/open");
    EXPECT_EQ(news->entries[1].file, "/b");
    ASSERT_TRUE(journal.finish(std::move(*open), "", error));
    EXPECT_EQ(journal.entriesSince(position, error)->entries.size(), 2U);
    EXPECT_THAT(journal.entriesSince(position, error)->entries, IsEmpty());
    const Journal small(journal.path(), {.entries = 2, .age = 1000});
    EXPECT_THAT(small.takeInterrupted(), IsEmpty());
    news = journal.entriesSince(position, error);
    ASSERT_TRUE(news);
    EXPECT_TRUE(news->isAnew) << "it was written anew";
}

TEST_F(JournalTest, givesAFileToOneRunAtATime) {
    constexpr std::chrono::milliseconds kNoWaiting{0};
    write("/a");
    auto claim = journal.claim("/a", kNoWaiting, error);
    EXPECT_TRUE(claim);
    EXPECT_FALSE(journal.claim("/a", kNoWaiting, error));
    EXPECT_TRUE(journal.claim("/b", kNoWaiting, error));
    claim.reset();
    EXPECT_TRUE(journal.claim("/a", kNoWaiting, error));
}

TEST_F(JournalTest, believesNobodyElses) {
    write("/a");
    if (chown(journal.path().c_str(), 1, 1) != 0) {
        GTEST_SKIP() << "needs root's rights";
    }
    EXPECT_FALSE(journal.entries(error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The journal " + journal.path() + " cannot be used: it belongs to somebody else.");
    const std::string text = test::readBytes(journal.path());
    EXPECT_FALSE(journal.begin(entryAbout("/b"), error));
    EXPECT_THAT(journal.takeInterrupted(), IsEmpty());
    EXPECT_EQ(test::readBytes(journal.path()), text);
}

TEST_F(JournalTest, isNotMadeByRootInAnothersHome) {
    if (chown(sandbox.home().c_str(), 1, 1) != 0) {
        GTEST_SKIP() << "needs root's rights";
    }
    EXPECT_FALSE(journal.begin(entryAbout("/a"), error));
    EXPECT_TRUE(error);
    EXPECT_THAT(test::namesIn(sandbox.home()), IsEmpty());
}

TEST_F(JournalTest, reportsThatItCannotBeWritten) {
    write("/a");
    EXPECT_TRUE(test::passesInChild([this] {
        ASSERT_TRUE(test::failSystemCall(SYS_fsync, EIO));
        EXPECT_FALSE(journal.begin(entryAbout("/b"), error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->description, "The journal " + journal.path() +
                                          " cannot be written: the disk or network reported "
                                          "an error.");
    }));
}

TEST_F(JournalTest, writesThroughNoLink) {
    fs::create_directories(fs::path(journal.path()).parent_path());
    sandbox.write("other", "kept");
    fs::create_symlink(sandbox.path("other"), journal.path());
    EXPECT_FALSE(journal.begin(entryAbout("/a"), error));
    EXPECT_TRUE(error);
    EXPECT_EQ(test::readBytes(sandbox.path("other")), "kept");
}

}  // namespace
}  // namespace vornic
