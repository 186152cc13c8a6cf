// Taking repairs back: vornic-repair --undo.

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/syscall.h>

#include "app/cli/UndoCommand.h"
#include "job/Journal.h"
#include "job/JournalFiles.h"
#include "tests/app/ProgramTest.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

class UndoProgramTest : public ProgramTest {
  protected:
    [[nodiscard]] std::string trashed(const std::string& name) const {
        return fs::canonical(files.trash()).string() + "/" + name;
    }
    std::string repaired(const std::string& name) const {
        std::string path = files.writeDamaged(name);
        EXPECT_EQ(files.repair({path}).status, 0);
        EXPECT_EQ(readBytes(path), repairedXMEML());
        return path;
    }
    ProgramResult undo(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "--undo");
        return files.repair(std::move(arguments));
    }
};

TEST_F(UndoProgramTest, aRepairSaysInItsLastLineWhereTheOriginalIs) {
    const std::string path = files.writeDamaged("cut.xml");
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.output, repairedReport(path));
    EXPECT_EQ(result.errors, "The original is " + files.trash() +
                                 "/cut.xml; vornic-repair --undo brings it back.\n");
    EXPECT_EQ(readBytes(trashed("cut.xml")), damagedXMEML());
}

TEST_F(UndoProgramTest, aSoundFileHasNoSuchLine) {
    EXPECT_EQ(files.repair({files.writeSound("cut.xml")}).errors, "");
}

TEST_F(UndoProgramTest, bringsTheOriginalBackWithAllThatItHad) {
    const std::string path = files.writeDamaged("cut.xml");
    fs::permissions(path, static_cast<fs::perms>(0640));
    static_cast<void>(setAttribute(path, "user.note", "value"));
    const FileState before = fileState(path);
    ASSERT_EQ(files.repair({path}).status, 0);
    const ProgramResult result = undo({path});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              "The original is back: " + path + "\nWhat was there is " + trashed("cut.xml") + "\n");
    EXPECT_EQ(fileState(path), before);
    EXPECT_EQ(readBytes(trashed("cut.xml")), repairedXMEML());
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
}

TEST_F(UndoProgramTest, withoutAFileTakesTheOneThatWasRepairedLast) {
    const std::string first = repaired("first.xml");
    const std::string second = repaired("second.xml");
    EXPECT_EQ(undo({}).status, 0);
    EXPECT_EQ(readBytes(second), damagedXMEML());
    EXPECT_EQ(readBytes(first), repairedXMEML());
    EXPECT_EQ(undo({}).status, 0);
    EXPECT_EQ(readBytes(first), damagedXMEML());
    const ProgramResult last = undo({});
    EXPECT_EQ(last.status, 3);
    EXPECT_EQ(last.errors, "vornic-repair: There is nothing to undo.\n");
}

TEST_F(UndoProgramTest, undoesAnUndo) {
    const std::string path = repaired("cut.xml");
    EXPECT_EQ(undo({path}).status, 0);
    EXPECT_EQ(readBytes(path), damagedXMEML());
    EXPECT_EQ(undo({path}).status, 0);
    EXPECT_EQ(readBytes(path), repairedXMEML());
}

TEST_F(UndoProgramTest, listsWhatCanBeUndoneAndChangesNothing) {
    EXPECT_EQ(undo({"--list"}).status, 0);
    const std::string first = repaired("first.xml");
    const std::string second = repaired("second.xml");
    fs::remove(trashed("first.xml"));
    const ProgramResult all = undo({"--list"});
    EXPECT_EQ(all.status, 0);
    EXPECT_THAT(all.output, ::testing::MatchesRegex("[0-9: -]+  repaired   " + second +
                                                    "\n    original: " + trashed("second.xml") +
                                                    "\n[0-9: -]+  repaired   " + first +
                                                    "\n    no longer in the Trash\n"));
    EXPECT_THAT(undo({"--list", "first.xml"}).output, ::testing::Not(HasSubstr("second.xml")));
    EXPECT_EQ(readBytes(second), repairedXMEML());
}

TEST_F(UndoProgramTest, leavesAChangedFileWithoutATerminal) {
    const std::string path = repaired("cut.xml");
    writeBytes(path, "edited");
    const ProgramResult refused = undo({path});
    EXPECT_EQ(refused.status, 3);
    EXPECT_EQ(refused.errors, "vornic-repair: The file " + path +
                                  " has changed since and was left as it is; --force brings the "
                                  "original back all the same.\n");
    EXPECT_EQ(readBytes(path), "edited");
    const ProgramResult forced = undo({"--force", path});
    EXPECT_EQ(forced.status, 1);
    EXPECT_EQ(readBytes(path), damagedXMEML());
    EXPECT_EQ(readBytes(trashed("cut.xml")), "edited");
}

TEST_F(UndoProgramTest, bringsAFileBackThatIsGoneWhenToldTo) {
    const std::string path = repaired("cut.xml");
    fs::remove(path);
    const ProgramResult refused = undo({path});
    EXPECT_EQ(refused.status, 3);
    EXPECT_EQ(refused.errors, "vornic-repair: The file " + path +
                                  " is no longer there; --force brings the original back.\n");
    EXPECT_FALSE(exists(path));
    const ProgramResult forced = undo({"--force", path});
    EXPECT_EQ(forced.status, 0);
    EXPECT_EQ(forced.errors, "");
    EXPECT_EQ(forced.output, "The original is back: " + path + "\n");
    EXPECT_EQ(readBytes(path), damagedXMEML());
}

TEST_F(UndoProgramTest, reportsAnEmptiedTrashAndGoesOn) {
    const std::string first = repaired("first.xml");
    const std::string second = repaired("second.xml");
    fs::remove(trashed("first.xml"));
    const ProgramResult result = undo({first, second});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "vornic-repair: The original of the file " + first + " is no longer in the Trash.\n");
    EXPECT_EQ(readBytes(first), repairedXMEML());
    EXPECT_EQ(readBytes(second), damagedXMEML());
    EXPECT_EQ(undo({first}).status, 3);
}

TEST_F(UndoProgramTest, listAndForceGoWithUndoAlone) {
    for (const char* option : {"--list", "--force"}) {
        const ProgramResult result = files.repair({option, files.writeSound("cut.xml")});
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.errors, ::testing::StartsWith(std::string("vornic-repair: ") + option +
                                                         " goes with --undo\nUsage: "));
    }
}

TEST_F(UndoProgramTest, reportsWhatTheOriginalCouldNotBeGivenAgain) {
    const SecondVolume other;
    if (!other.isApartFrom(files.folder())) {
        GTEST_SKIP() << "/dev/shm is no volume of its own";
    }
    fs::permissions(other.folder(), fs::perms::owner_all);
    fs::create_directory_symlink(other.folder(), files.trash());
    const std::string path = repaired("cut.xml");
    EXPECT_TRUE(passesInChild([&] {
        ASSERT_TRUE(failSystemCall(SYS_fchmod, ENOSPC));
        const ProgramResult result = undo({path});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors,
                  "vornic-repair: The file " + path +
                      " is not all that it was. The mode cannot be kept: no space left "
                      "on the volume.\n");
    }));
    EXPECT_EQ(readBytes(path), damagedXMEML());
}

TEST_F(UndoProgramTest, saysWhatItHasSettledOfAnInterruptedUndo) {
    const std::string path = fs::canonical(repaired("cut.xml")).string();
    const Journal journal = Journal::ofUser().value();
    ErrorSlot error;
    const auto announce = [&] {
        const JournalFile before = journalFileAt(path, error).value_or(JournalFile());
        const JournalFile after = journalFileAt(trashed("cut.xml"), error).value_or(JournalFile());
        // It ends with this scope, as that of a killed program does.
        ASSERT_TRUE(journal.begin({.program = "test",
                                   .version = "1",
                                   .action = JournalEntry::Action::undo,
                                   .file = path,
                                   .workingCopy = trashed("cut.xml"),
                                   .before = before,
                                   .after = after},
                                  error));
    };
    announce();
    fs::copy_file(trashed("cut.xml"), undoWaitingPath(path));
    EXPECT_EQ(undo({"--list"}).errors, "vornic-repair: An earlier undo for the file " + path +
                                           " was interrupted and has been taken back.\n");
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
    announce();
    fs::rename(path, undoWaitingPath(path));
    fs::copy_file(trashed("cut.xml"), path);
    EXPECT_EQ(files.repair({files.writeSound("another.xml")}).errors,
              "vornic-repair: An earlier undo for the file " + path +
                  " was interrupted and has been finished. What was there is " +
                  trashed("cut 2.xml") + ".\n");
    EXPECT_EQ(readBytes(trashed("cut 2.xml")), repairedXMEML());
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("another.xml", "cut.xml"));
    EXPECT_EQ(undo({"--list"}).errors, "");
}

TEST_F(UndoProgramTest, severalRunsOfOneFileEndInOrder) {
    constexpr int kRounds = 5;
    constexpr int kRuns = 6;
    for (int round = 0; round < kRounds; ++round) {
        const std::string name = "cut " + std::to_string(round) + ".xml";
        const std::string path = repaired(name);
        std::vector<std::unique_ptr<RunningProgram>> runs;
        for (int run = 0; run < kRuns; ++run) {
            runs.push_back(std::make_unique<RunningProgram>(files.repairer({"--undo", path})));
        }
        int undone = 0;
        for (const auto& run : runs) {
            const ProgramResult result = run->finish();
            undone += result.status == 0 ? 1 : 0;
            EXPECT_TRUE(result.status == 0 || result.status == 3) << result.status;
            EXPECT_EQ(result.errors.empty(), result.status == 0) << result.errors;
        }
        // A run that begins when another one has ended takes the undo back.
        const bool isBack = undone % 2 == 1;
        EXPECT_GE(undone, 1);
        EXPECT_EQ(readBytes(path), isBack ? damagedXMEML() : repairedXMEML());
        EXPECT_EQ(readBytes(trashed(name)), isBack ? repairedXMEML() : damagedXMEML());
        fs::remove(path);
        EXPECT_THAT(namesIn(files.folder()), ::testing::IsEmpty());
    }
}

TEST_F(UndoProgramTest, goesWithARepairAtTheSameTime) {
    constexpr int kRounds = 12;
    const std::string path = repaired("cut.xml");
    for (int round = 0; round < kRounds; ++round) {
        RunningProgram undoing(files.repairer({"--undo", "--force", path}));
        RunningProgram repairing(files.repairer({path}));
        const ProgramResult undone = undoing.finish();
        const ProgramResult repair = repairing.finish();
        EXPECT_TRUE(undone.status == 0 || undone.status == 1 || undone.status == 3)
            << undone.errors;
        EXPECT_TRUE(repair.status == 0 || repair.status == 1) << repair.errors;
        EXPECT_EQ(undone.status == 0, undone.errors.empty());
        const std::string bytes = readBytes(path);
        EXPECT_TRUE(bytes == damagedXMEML() || bytes == repairedXMEML()) << bytes;
        int originals = bytes == damagedXMEML() ? 1 : 0;
        for (const std::string& name : namesIn(files.trash())) {
            originals += readBytes(trashed(name)) == damagedXMEML() ? 1 : 0;
        }
        EXPECT_GE(originals, 1);
        for (const std::string& name : namesIn(files.folder())) {
            EXPECT_TRUE(name == "cut.xml" || name == "cut-backup.xml") << name;
        }
    }
}

TEST(UndoComplaints, reportWhereAFileIsThatCouldNotGoToTheTrash) {
    UndoResult result{.end = UndoResult::End::undone, .file = "/a/Cut.xml"};
    EXPECT_THAT(complaintsAbout(result), ::testing::IsEmpty());
    result.result = "/a/.Cut.xml.vornic.undo";
    result.isBeside = true;
    EXPECT_THAT(complaintsAbout(result),
                ElementsAre("What was there could not be moved to the Trash and is "
                            "/a/.Cut.xml.vornic.undo"));
    result.error = posixError("The journal /j cannot be written", ENOSPC);
    EXPECT_THAT(complaintsAbout(result), ::testing::SizeIs(2));
}

/// Each way in which a repair changes a file tells where the original is, and an undo brings it
/// back as it was.
class UndoEveryWayTest : public UndoProgramTest {
  protected:
    void expectToComeBack(const std::string& path) const {
        const FileState before = fileState(path);
        const ProgramResult repair = files.repair({path});
        EXPECT_EQ(repair.status, 0);
        EXPECT_TRUE(tellsOriginal(repair.errors, files.trash())) << repair.errors;
        EXPECT_EQ(readBytes(path), repairedXMEML());
        const ProgramResult undone = undo({path});
        EXPECT_EQ(undone.status, 0);
        EXPECT_EQ(undone.errors, "");
        EXPECT_EQ(fileState(path), before);
    }
};

TEST_F(UndoEveryWayTest, whereNamesCannotBeExchanged) {
    const std::string path = files.writeDamaged("cut.xml");
    EXPECT_TRUE(passesInChild([&] {
        constexpr unsigned kFlags = 4;
        ASSERT_TRUE(failSystemCall(SYS_renameat2, EINVAL, RENAME_EXCHANGE, kFlags));
        expectToComeBack(path);
    }));
}

TEST_F(UndoEveryWayTest, withATrashOnAnotherVolume) {
    const SecondVolume other;
    if (!other.isApartFrom(files.folder())) {
        GTEST_SKIP() << "/dev/shm is no volume of its own";
    }
    fs::permissions(other.folder(), fs::perms::owner_all);
    fs::create_directory_symlink(other.folder(), files.trash());
    const std::string path = files.writeDamaged("cut.xml");
    fs::permissions(path, static_cast<fs::perms>(0604));
    expectToComeBack(path);
    fs::create_symlink("cut.xml", files.path("link.xml"));
    expectToComeBack(files.path("link.xml"));
}

TEST_F(UndoEveryWayTest, forALink) {
    const std::string target = files.writeDamaged("target.xml");
    fs::create_symlink("target.xml", files.path("link.xml"));
    expectToComeBack(files.path("link.xml"));
    EXPECT_EQ(readBytes(target), damagedXMEML());
}

TEST_F(UndoEveryWayTest, forAFileWithTwoNames) {
    const std::string path = files.writeDamaged("cut.xml");
    fs::create_hard_link(path, files.path("second.xml"));
    expectToComeBack(path);
    EXPECT_TRUE(fs::equivalent(path, files.path("second.xml")));
}

TEST_F(UndoEveryWayTest, forAFileThatNobodyMayWrite) {
    const std::string path = files.writeDamaged("cut.xml");
    static_cast<void>(setAttribute(path, "user.note", "value"));
    fs::permissions(path, static_cast<fs::perms>(0444));
    expectToComeBack(path);
}

TEST_F(UndoProgramTest, takesAFileThatBeginsWithAHyphenBehindTwo) {
    const std::string path = repaired("--list");
    EXPECT_EQ(undo({"--", "--list"}).status, 0);
    EXPECT_EQ(readBytes(path), damagedXMEML());
}

}  // namespace vornic::test
