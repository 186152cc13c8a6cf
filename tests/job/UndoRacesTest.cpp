// Other programs, and other runs, that come between the steps of an undo.

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "job/JournalRecovery.h"
#include "job/JournaledSwap.h"
#include "tests/job/UndoFixture.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

enum class Volumes { same, apart, withoutExchange };
enum class Saving { inPlace, byRename, anew };

void PrintTo(Volumes volumes, std::ostream* stream) {
    *stream << std::map<Volumes, const char*>{
        {Volumes::same, "same"},
        {Volumes::apart, "apart"},
        {Volumes::withoutExchange, "withoutExchange"}}[volumes];
}

void PrintTo(Saving saving, std::ostream* stream) {
    *stream << std::map<Saving, const char*>{{Saving::inPlace, "inPlace"},
                                             {Saving::byRename, "byRename"},
                                             {Saving::anew, "anew"}}[saving];
}

void PrintTo(UndoStep step, std::ostream* stream) {
    *stream << std::map<UndoStep, const char*>{{UndoStep::looked, "looked"},
                                               {UndoStep::waiting, "waiting"},
                                               {UndoStep::exchanged, "exchanged"},
                                               {UndoStep::compared, "compared"},
                                               {UndoStep::trashed, "trashed"}}[step];
}

/// A program saves the file while it is being taken back.
class UndoSavedTest : public test::UndoFixture,
                      public testing::WithParamInterface<std::tuple<Volumes, Saving, UndoStep>> {
  protected:
    void SetUp() override {
        if (volumes() == Volumes::apart) {
            if (!other.isApartFrom(sandbox.folder())) {
                GTEST_SKIP() << "/dev/shm is no volume of its own";
            }
            fs::create_directory(other.path("Trash"));
            ASSERT_EQ(chmod(other.path("Trash").c_str(), 0700), 0);
            fs::create_directory_symlink(other.path("Trash"), trash());
        }
        sandbox.write("Cut.xml", "original");
        repair("Cut.xml", "repaired");
    }
    [[nodiscard]] static Volumes volumes() { return std::get<Volumes>(GetParam()); }

    void save() const {
        const std::string path = realPath("Cut.xml");
        switch (std::get<Saving>(GetParam())) {
            case Saving::inPlace:
                break;
            case Saving::byRename:
                test::writeBytes(sandbox.home() + "/new", "newer by far");
                fs::rename(sandbox.home() + "/new", path);
                return;
            case Saving::anew:
                fs::remove(path);
                break;
        }
        std::ofstream(path, std::ios::trunc) << "newer by far";
    }

    /// Whether the step is passed before the original has the place.
    [[nodiscard]] static bool isEarly() {
        const UndoStep step = std::get<UndoStep>(GetParam());
        return step == UndoStep::looked || step == UndoStep::waiting;
    }

    test::SecondVolume other;
};

TEST_P(UndoSavedTest, keepsWhatWasSaved) {
    bool isSaved = false;
    EXPECT_TRUE(test::passesInChild([&] {
        constexpr unsigned kFlags = 4;
        if (volumes() == Volumes::withoutExchange) {
            ASSERT_TRUE(test::failSystemCall(SYS_renameat2, EINVAL, RENAME_EXCHANGE, kFlags));
        }
        Undo careful = make();
        careful.setObserver([&](UndoStep step) {
            if (step == std::get<UndoStep>(GetParam())) {
                isSaved = true;
                save();
            }
        });
        const UndoResult result = careful.undo(realPath("Cut.xml"), nullptr);
        ASSERT_TRUE(isSaved);
        if (isEarly()) {
            EXPECT_EQ(result.end, UndoResult::End::failed);
            EXPECT_THAT(result.error->description, HasSubstr("it was changed in the meantime."));
        }
        if (result.end == UndoResult::End::failed) {
            EXPECT_EQ(journal.entries(error)->back().state, JournalEntry::State::takenBack);
        }
    }));
    EXPECT_EQ(bytes(), "newer by far");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("Cut.xml"));
    // A program that saves over a file takes that away itself.
    EXPECT_TRUE(isEarly() || isInTrash("repaired"));
    EXPECT_TRUE(!isEarly() || isInTrash("original"));
    EXPECT_TRUE(volumes() != Volumes::apart || isInTrash("original"));
    for (const std::string& name : namesInTrash()) {
        EXPECT_FALSE(name.starts_with('.')) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    AtOnce, UndoSavedTest,
    testing::Combine(testing::Values(Volumes::same),
                     testing::Values(Saving::inPlace, Saving::byRename, Saving::anew),
                     testing::Values(UndoStep::looked, UndoStep::exchanged, UndoStep::compared)));
INSTANTIATE_TEST_SUITE_P(
    InSeveralMoves, UndoSavedTest,
    testing::Combine(testing::Values(Volumes::apart, Volumes::withoutExchange),
                     testing::Values(Saving::inPlace, Saving::byRename, Saving::anew),
                     testing::Values(UndoStep::looked, UndoStep::waiting, UndoStep::exchanged,
                                     UndoStep::compared, UndoStep::trashed)));

namespace {

using UndoRunsTest = test::UndoFixture;

TEST_F(UndoRunsTest, takeOneFileBackOneAfterTheOther) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    Undo first = make();
    first.setObserver([this](UndoStep step) {
        if (step == UndoStep::looked) {
            EXPECT_TRUE(test::passesInChild([this] {
                const UndoResult second = undo();
                EXPECT_EQ(second.end, UndoResult::End::failed);
                EXPECT_EQ(second.error->description,
                          "The file " + realPath("Cut.xml") +
                              " cannot be put back: another run is at work on it.");
            }));
        }
    });
    EXPECT_EQ(first.undo(realPath("Cut.xml"), nullptr).end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "original");
}

TEST_F(UndoRunsTest, seeWhatAnotherHasDoneMeanwhile) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    Undo first = make();
    Undo second = make();
    ASSERT_TRUE(second.changes(error));
    EXPECT_EQ(first.undo(realPath("Cut.xml"), nullptr).end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "original");
    EXPECT_EQ(second.undo(realPath("Cut.xml"), nullptr).end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "repaired");
}

TEST_F(UndoRunsTest, waitForTheSwapOfARepair) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    const std::string file = realPath("Cut.xml");
    sandbox.write("Cut-backup.xml", "repaired again");
    JournaledSwap swap("test", "1");
    SwapIntent intent;
    intent.source = file;
    intent.workingCopy = realPath("Cut-backup.xml");
    ASSERT_TRUE(swap.willSwap(intent, error));
    EXPECT_THAT(undo().error->description, HasSubstr("another run is at work on it."));
    swap.didNotSwap(intent);
    EXPECT_EQ(undo().end, UndoResult::End::undone);
    EXPECT_EQ(bytes(), "original");
}

TEST_F(UndoRunsTest, leaveALivingRunsFilesAlone) {
    sandbox.write("Cut.xml", "original");
    repair("Cut.xml", "repaired");
    // A run that was killed before it had done anything.
    EXPECT_TRUE(test::passesInChild([this] {
        sandbox.write("copy of Cut.xml", "again");
        ASSERT_TRUE(journal.begin(announced("Cut.xml"), error));
    }));
    Undo first = make();
    int told = 0;
    first.setObserver([&](UndoStep) {
        EXPECT_TRUE(recoverInterrupted(journal, trash()).empty());
        ++told;
    });
    EXPECT_EQ(first.undo(realPath("Cut.xml"), nullptr).end, UndoResult::End::undone);
    EXPECT_EQ(told, 3);
    EXPECT_EQ(recoverInterrupted(journal, trash()).size(), 1U);
    EXPECT_EQ(bytes(), "original");
}

}  // namespace
}  // namespace vornic
