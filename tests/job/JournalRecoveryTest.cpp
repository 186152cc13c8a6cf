#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/PathText.h"
#include "job/JournalRecovery.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryName.h"
#include "tests/job/JournaledRepair.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// A program announces a change of "Cut.xml" and is gone after some of its moves.
class JournalRecoveryTest : public test::JournaledRepairTest {
  protected:
    void SetUp() override {
        sandbox.write("Cut.xml", "original");
        sandbox.write("copy of Cut.xml", "repaired");
    }
    void announce() { ASSERT_TRUE(journal.begin(announced("Cut.xml"), error)); }
    [[nodiscard]] std::string file() const { return realPath("Cut.xml"); }
    [[nodiscard]] std::string copy() const { return realPath("copy of Cut.xml"); }

    RecoveredRun recover() {
        const std::vector<RecoveredRun> runs = recoverInterrupted(journal, trash());
        EXPECT_EQ(runs.size(), 1U);
        EXPECT_THAT(recoverInterrupted(journal, trash()), IsEmpty());
        return runs.empty() ? RecoveredRun() : runs.front();
    }
    [[nodiscard]] JournalEntry lastEntry() { return journal.entries(error)->back(); }
};

TEST_F(JournalRecoveryTest, hasNothingToDoAfterWholeRuns) {
    repair("Cut.xml", "repaired");
    EXPECT_THAT(recoverInterrupted(journal, trash()), IsEmpty());
}

TEST_F(JournalRecoveryTest, takesBackWhatHadNotBegun) {
    announce();
    EXPECT_EQ(recover().end, RecoveredRun::End::takenBack);
    EXPECT_EQ(test::readBytes(file()), "original");
    EXPECT_EQ(test::readBytes(copy()), "repaired");
    EXPECT_EQ(lastEntry().state, JournalEntry::State::takenBack);
}

TEST_F(JournalRecoveryTest, finishesWhatHadExchangedTheNames) {
    announce();
    ASSERT_EQ(platform::exchangeNames(file(), copy()).value(), platform::Exchange::done);
    const RecoveredRun run = recover();
    EXPECT_EQ(run.end, RecoveredRun::End::finished);
    EXPECT_EQ(test::readBytes(file()), "repaired");
    EXPECT_EQ(test::readBytes(run.original), "original");
    EXPECT_EQ(fs::path(run.original).filename(), "Cut.xml");
    EXPECT_EQ(lastEntry().state, JournalEntry::State::done);
    EXPECT_EQ(lastEntry().original, run.original);
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(JournalRecoveryTest, finishesWhatHadPutTheOriginalAside) {
    announce();
    fs::rename(file(), undoAsidePath(file()));
    fs::rename(copy(), file());
    const RecoveredRun run = recover();
    EXPECT_EQ(run.end, RecoveredRun::End::finished);
    EXPECT_EQ(test::readBytes(run.original), "original");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(JournalRecoveryTest, bringsTheOriginalBackToAnEmptyPlace) {
    announce();
    fs::rename(file(), undoAsidePath(file()));
    EXPECT_EQ(recover().end, RecoveredRun::End::takenBack);
    EXPECT_EQ(test::readBytes(file()), "original");
    EXPECT_EQ(test::readBytes(copy()), "repaired");
}

TEST_F(JournalRecoveryTest, keepsANewerFileAndTheOriginalToo) {
    announce();
    ASSERT_EQ(platform::exchangeNames(file(), copy()).value(), platform::Exchange::done);
    test::writeBytes(file(), "newer");
    const RecoveredRun run = recover();
    EXPECT_EQ(run.end, RecoveredRun::End::finished);
    EXPECT_EQ(test::readBytes(file()), "newer");
    EXPECT_EQ(test::readBytes(run.original), "original");
}

TEST_F(JournalRecoveryTest, findsTheOriginalInTheTrashUnderAnyName) {
    sandbox.write("taken", "another");
    static_cast<void>(recycle(realPath("taken"), "Cut.xml"));
    announce();
    const std::string original = recycle(file(), "Cut.xml");
    fs::rename(copy(), file());
    EXPECT_EQ(fs::path(original).filename(), "Cut 2.xml");
    const RecoveredRun run = recover();
    EXPECT_EQ(run.end, RecoveredRun::End::finished);
    EXPECT_EQ(run.original, original);
}

TEST_F(JournalRecoveryTest, reportsThatAnOriginalIsNowhere) {
    announce();
    fs::rename(copy(), file());
    const RecoveredRun run = recover();
    EXPECT_EQ(run.end, RecoveredRun::End::lost);
    EXPECT_EQ(run.original, "");
    EXPECT_EQ(test::readBytes(file()), "repaired");
}

TEST_F(JournalRecoveryTest, putsAnOriginalThatWasOnItsWayBackIntoTheTrashAgain) {
    JournalEntry undo = announced("Cut.xml");
    undo.action = JournalEntry::Action::undo;
    ASSERT_TRUE(journal.begin(std::move(undo), error));
    fs::rename(copy(), undoWaitingPath(file()));
    EXPECT_EQ(recover().end, RecoveredRun::End::takenBack);
    EXPECT_EQ(test::readBytes(file()), "original");
    EXPECT_EQ(test::readBytes(trash() + "/Cut.xml"), "repaired");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(JournalRecoveryTest, takesBackAnUndoThatHadMadeACopyBesideTheFile) {
    const std::string trashed = recycle(copy(), "Cut.xml");
    for (const char* begun : {"", "repa", "repaired"}) {
        JournalEntry undo = announced("Cut.xml");
        undo.action = JournalEntry::Action::undo;
        undo.workingCopy = trashed;
        undo.after = known(trashed);
        ASSERT_TRUE(journal.begin(std::move(undo), error));
        test::writeBytes(undoWaitingPath(file()), begun);
        const RecoveredRun run = recover();
        EXPECT_EQ(run.end, RecoveredRun::End::takenBack);
        EXPECT_TRUE(run.isUndo);
        EXPECT_EQ(test::readBytes(file()), "original");
        EXPECT_THAT(test::namesIn(trash()), ElementsAre("Cut.xml"));
        EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
    }
}

TEST_F(JournalRecoveryTest, finishesAnUndoThatHadExchangedACopyWithTheFile) {
    const std::string trashed = recycle(copy(), "Cut.xml");
    JournalEntry undo = announced("Cut.xml");
    undo.action = JournalEntry::Action::undo;
    undo.workingCopy = trashed;
    undo.after = known(trashed);
    ASSERT_TRUE(journal.begin(std::move(undo), error));
    fs::rename(file(), undoWaitingPath(file()));
    fs::copy_file(trashed, file());
    const RecoveredRun run = recover();
    EXPECT_EQ(run.end, RecoveredRun::End::finished);
    EXPECT_EQ(test::readBytes(file()), "repaired");
    EXPECT_EQ(test::readBytes(run.original), "original");
    EXPECT_THAT(test::namesIn(trash()), testing::SizeIs(1)) << "what is back has left the Trash";
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(JournalRecoveryTest, keepsAnOriginalInTheTrashWhoseCopyWasEdited) {
    const std::string trashed = recycle(copy(), "Cut.xml");
    JournalEntry undo = announced("Cut.xml");
    undo.action = JournalEntry::Action::undo;
    undo.workingCopy = trashed;
    undo.after = known(trashed);
    ASSERT_TRUE(journal.begin(std::move(undo), error));
    fs::rename(file(), undoWaitingPath(file()));
    test::writeBytes(file(), "edited since");
    EXPECT_EQ(recover().end, RecoveredRun::End::finished);
    EXPECT_EQ(test::readBytes(file()), "edited since");
    EXPECT_EQ(test::readBytes(trashed), "repaired");
    EXPECT_THAT(test::namesIn(trash()), testing::SizeIs(2));
}

TEST_F(JournalRecoveryTest, knowsWhatBecameOfAnUndoToAnEmptyPlace) {
    for (const bool isDone : {false, true}) {
        JournalEntry undo = announced("Cut.xml");
        undo.action = JournalEntry::Action::undo;
        undo.before = {};
        ASSERT_TRUE(journal.begin(std::move(undo), error));
        fs::remove(file());
        if (isDone) {
            fs::rename(copy(), file());
        }
        const RecoveredRun run = recover();
        EXPECT_EQ(run.end, isDone ? RecoveredRun::End::finished : RecoveredRun::End::takenBack);
        EXPECT_EQ(run.original, "");
        sandbox.write("Cut.xml", "original");
    }
}

TEST_F(JournalRecoveryTest, findsAnOriginalThatWasAboutToBeRemovedAfterItsCopying) {
    announce();
    fs::rename(file(), realPath(platform::temporaryName("Cut.xml")));
    fs::rename(copy(), file());
    const RecoveredRun run = recover();
    EXPECT_EQ(run.end, RecoveredRun::End::finished);
    EXPECT_EQ(test::readBytes(run.original), "original");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
}

TEST_F(JournalRecoveryTest, findsTheCopyOfAnOriginalUnderANumberedName) {
    sandbox.write("taken", "another");
    static_cast<void>(recycle(realPath("taken"), "Cut.xml"));
    announce();
    fs::copy_file(file(), trash() + "/Cut 2.xml");
    fs::rename(copy(), file());
    const RecoveredRun run = recover();
    EXPECT_EQ(run.end, RecoveredRun::End::finished);
    EXPECT_EQ(fs::path(run.original).filename(), "Cut 2.xml");
}

}  // namespace
}  // namespace vornic
