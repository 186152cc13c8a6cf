#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "job/NamedSources.h"
#include "platform/files/FileSystem.h"
#include "platform/items/FileAttributes.h"
#include "tests/repair/pipeline/PipelineTest.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/programs/ChildProcess.h"

/// What a repair does when files are not as they should be, or change meanwhile. What becomes of
/// files in its ordinary course is in tests/app/RepairFilesTest.cpp.
namespace vornic {
namespace {

using test::fileState;
using test::FileState;
using test::kRepairedClosing;
using test::kRepairedLine;
using test::kSoundLine;
using test::kSoundXMEML;
using test::Strings;

const std::string kDamaged = "<xmeml version=\"5\"><sequence/></xmeml>";
const std::string kRepaired =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n"
    "<xmeml version=\"5\">\n    <sequence/>\n</xmeml>\n";

class RepairDisturbancesTest : public test::PipelineTest {
  protected:
    ~RepairDisturbancesTest() override { chmod(sandbox.folder().c_str(), 0700); }

    /// Does something to the files when the run makes a call.
    void at(const std::string& call, std::function<void()> act) {
        events.onCall = [call, act = std::move(act)](const std::string& made) {
            if (made == call) {
                act();
            }
        };
    }
    /// Puts a file there in the way another run does.
    void replaceWorkingCopy(std::string_view bytes) const {
        sandbox.write("other", bytes);
        std::filesystem::rename(sandbox.path("other"), copy());
    }
    [[nodiscard]] std::string copy() const { return sandbox.path("Cut-backup.xml"); }

    std::string path = sandbox.path("Cut.xml");
};

TEST_F(RepairDisturbancesTest, anOldWorkingCopyThatIsALinkGoesToTheTrashAsALink) {
    sandbox.write("target", "the link's target");
    for (const std::string& target : {sandbox.path("target"), sandbox.path("none")}) {
        std::filesystem::create_symlink(target, copy());
        EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::sound);
        EXPECT_EQ(names(), (Strings{"Cut.xml", "target"}));
        EXPECT_EQ(std::filesystem::read_symlink(trash() + "/Cut-backup.xml"), target);
        test::removeTrash(sandbox.home());
    }
    EXPECT_EQ(test::readBytes(sandbox.path("target")), "the link's target");
}

TEST_F(RepairDisturbancesTest, anOldWorkingCopyThatCannotBeMovedEndsTheRun) {
    sandbox.write("../home/.Trash", "a file where the folder should be");
    sandbox.write("Cut-backup.xml", "old");
    EXPECT_EQ(runOn("Cut.xml", kDamaged), RepairOutcome::stopped);
    const std::string remove = "Please remove " + copy() + " manually.";
    EXPECT_EQ(Strings(events.calls.end() - 2, events.calls.end()),
              (Strings{"info: Creating temporary file...",
                       "bold error: Error: unable to remove temporary file. " + remove}));
    EXPECT_EQ(closing(), "Unable to remove temporary file | " + remove);
    expectFlags(false, false);
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_EQ(test::readBytes(copy()), "old");
}

class RepairUncopyable : public RepairDisturbancesTest {
  protected:
    /// A run that ends at its copy, with its messages.
    void expectUncopyable() {
        ErrorSlot error;
        ASSERT_FALSE(platform::copyFile(path, copy(), error));
        EXPECT_EQ(run(path), RepairOutcome::stopped);
        ASSERT_GE(events.calls.size(), 2U);
        EXPECT_EQ(
            Strings(events.calls.end() - 2, events.calls.end()),
            (Strings{"info: Creating temporary file...",
                     "bold error: Error: unable to create temporary file. " + error->description}));
        EXPECT_EQ(closing(), "Unable to create temporary file | " + error->description);
        expectFlags(false, false);
        EXPECT_FALSE(test::exists(copy()));
    }
};

TEST_F(RepairUncopyable, anUnreadableFile) {
    sandbox.write("Cut.xml", kDamaged);
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    expectUncopyable();
}

TEST_F(RepairUncopyable, aFolder) {
    std::filesystem::create_directory(path);
    expectUncopyable();
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(RepairUncopyable, aPipeThatNobodyWritesTo) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    expectUncopyable();
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(RepairUncopyable, aDevice) {
    std::filesystem::create_symlink("/dev/zero", path);
    expectUncopyable();
}

TEST_F(RepairUncopyable, aFileInAFolderThatCannotBeWritten) {
    sandbox.write("Cut.xml", kDamaged);
    ASSERT_EQ(chmod(sandbox.folder().c_str(), 0500), 0);
    expectUncopyable();
    EXPECT_EQ(test::readBytes(path), kDamaged);
}

TEST_F(RepairDisturbancesTest, theSourceStaysWhenItCannotBeMovedToTheTrash) {
    sandbox.write("../home/.Trash", "a file where the folder should be");
    EXPECT_EQ(runOn("Cut.xml", kDamaged), RepairOutcome::repairedNotSwapped);
    EXPECT_EQ(events.calls.back(), kRepairedLine);
    EXPECT_EQ(closing(), kRepairedClosing);
    EXPECT_EQ(result.original, path);
    EXPECT_EQ(result.workingCopy, copy());
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_EQ(test::readBytes(copy()), kRepaired);
    expectFlags(true, true);
    EXPECT_TRUE(
        log.entries().back().starts_with("The file " + path + " could not be moved to the Trash. "))
        << log.entries().back();
}

TEST_F(RepairDisturbancesTest, aNewerExportKeepsItsPlace) {
    sandbox.write("Cut.xml", kDamaged);
    at("label: Filtering invalid characters...", [&] {
        sandbox.write("other", "a newer export");
        std::filesystem::rename(sandbox.path("other"), path);
    });
    EXPECT_EQ(run(path), RepairOutcome::repairedNotSwapped);
    EXPECT_EQ(Strings(events.calls.end() - 3, events.calls.end()),
              (Strings{kRepairedLine,
                       "error: The file " + path +
                           " was changed by another program during the repair. It was left as it "
                           "is now.",
                       "error: The repaired file is " + copy() + "."}));
    EXPECT_EQ(closing(), kRepairedClosing);
    EXPECT_EQ(result.swap.end, SwapEnd::sourceChanged);
    EXPECT_EQ(test::readBytes(path), "a newer export");
    EXPECT_EQ(test::readBytes(copy()), kRepaired);
    EXPECT_FALSE(test::exists(trash()));
}

TEST_F(RepairDisturbancesTest, aNamedFileInTheWorkingCopysPlaceEndsTheRun) {
    sandbox.write("Cut-backup.xml", "a project");
    const NamedSource named(copy());
    EXPECT_EQ(runOn("Cut.xml", kDamaged), RepairOutcome::stopped);
    const std::string remove = "Please remove " + copy() + " manually.";
    EXPECT_EQ(Strings(events.calls.end() - 3, events.calls.end()),
              (Strings{"info: Creating temporary file...",
                       "bold error: Error: unable to remove temporary file. " + remove,
                       "error: The file " + copy() +
                           " cannot be moved to the Trash: it is open itself, or named as a file "
                           "to be repaired."}));
    EXPECT_EQ(closing(), "Unable to remove temporary file | " + remove);
    expectFlags(false, false);
    EXPECT_EQ(test::readBytes(copy()), "a project");
    EXPECT_EQ(test::readBytes(path), kDamaged);
}

TEST_F(RepairDisturbancesTest, aRunSaysWhatItWaitsForAndObeysACancellation) {
    sandbox.write("Cut.xml", kDamaged);
    sandbox.write("Cut-backup.xml", "another run's");
    const platform::FileDescriptor holder(open(copy().c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(flock(holder.get(), LOCK_EX), 0);
    const std::string text = "Waiting for another program that uses the file " + copy() + "...";
    at("info: " + text, [&] { events.cancelled = true; });
    EXPECT_EQ(run(path), RepairOutcome::cancelled);
    EXPECT_EQ(Strings(events.calls.end() - 3, events.calls.end()),
              (Strings{"info: Creating temporary file...", "label: " + text, "info: " + text}));
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_EQ(test::readBytes(copy()), "another run's");
}

TEST_F(RepairDisturbancesTest, saysWhatAKilledRunHasLeft) {
    sandbox.write(".Cut.xml.vornic.swap", kSoundXMEML);
    EXPECT_EQ(run(path), RepairOutcome::sound);
    EXPECT_EQ(events.report().at(2), "info: An earlier repair of the file " + path +
                                         " was interrupted. The file was brought back.");
    EXPECT_EQ(test::readBytes(path), kSoundXMEML);
}

TEST_F(RepairDisturbancesTest, metadataThatWereLostAreReported) {
    sandbox.write("Cut.xml", kDamaged);
    if (!test::setAttribute(path, "user.note", "kept")) {
        GTEST_SKIP() << "this volume has no extended attributes";
    }
    EXPECT_TRUE(test::passesInChild([&] {
        at("label: Filtering invalid characters...",
           [] { ASSERT_TRUE(test::failSystemCall(SYS_fsetxattr, EIO)); });
        EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
        const Strings report = events.report();
        EXPECT_NE(std::find_if(report.begin(), report.end(),
                               [&](const std::string& line) {
                                   return line.starts_with("error: Something of the file " + path +
                                                           " was not kept. ");
                               }),
                  report.end());
    }));
}

TEST_F(RepairDisturbancesTest, reportsWhereAnOldWorkingCopyLies) {
    sandbox.write("Cut-backup.xml", "old");
    EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::sound);
    EXPECT_EQ(result.oldCopy, trash() + "/Cut-backup.xml");
    EXPECT_TRUE(log.contains("The file " + copy() + " was moved to the Trash: " + result.oldCopy));
}

TEST_F(RepairDisturbancesTest, theSourceStaysWhenAnotherRunHasReplacedTheWorkingCopy) {
    sandbox.write("Cut.xml", kDamaged);
    at(kRepairedLine, [&] { replaceWorkingCopy("another run's"); });
    EXPECT_EQ(run(path), RepairOutcome::repairedNotSwapped);
    EXPECT_EQ(Strings(events.calls.end() - 2, events.calls.end()),
              (Strings{kRepairedLine, "error: The temporary file " + copy() +
                                          " was replaced by another program. The file " + path +
                                          " was left as it is."}));
    EXPECT_EQ(closing(), kRepairedClosing);
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_EQ(test::readBytes(copy()), "another run's");
    EXPECT_FALSE(test::exists(trash()));
}

TEST_F(RepairDisturbancesTest, theSourceStaysWhenTheWorkingCopyHasGone) {
    sandbox.write("Cut.xml", kDamaged);
    at(kRepairedLine, [&] { std::filesystem::remove(copy()); });
    EXPECT_EQ(run(path), RepairOutcome::repairedNotSwapped);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(path), kDamaged);
}

TEST_F(RepairDisturbancesTest, anotherRunsWorkingCopyIsNotRemoved) {
    sandbox.write("Cut.xml", kSoundXMEML);
    at("label: Finishing...", [&] { replaceWorkingCopy("another run's"); });
    EXPECT_EQ(run(path), RepairOutcome::sound);
    EXPECT_EQ(events.report().back(), kSoundLine);
    EXPECT_EQ(test::readBytes(copy()), "another run's");
    EXPECT_EQ(log.entries().back(),
              "The temporary file " + copy() + " was replaced by another program and left there.");
}

TEST_F(RepairDisturbancesTest, aWorkingCopyThatCannotBeRemovedIsReported) {
    sandbox.write("Cut.xml", kSoundXMEML);
    at("label: Finishing...", [&] { chmod(sandbox.folder().c_str(), 0500); });
    EXPECT_EQ(run(path), RepairOutcome::sound);
    ErrorSlot error;
    static_cast<void>(platform::removeFile(copy(), error));
    EXPECT_EQ(events.report().back(), "error: Unable to remove temporary file " + copy() + ". " +
                                          error->localizedDescription() + ".");
}

TEST_F(RepairDisturbancesTest, whatAnotherRunPutInTheWorkingCopysPlaceIsNotJudged) {
    sandbox.write("Cut.xml", kDamaged);
    at("label: Checking file...", [&] { replaceWorkingCopy(kSoundXMEML); });
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(test::readBytes(path), kRepaired);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(RepairDisturbancesTest, aWorkingCopyThatWasTakenAwayIsMadeAgain) {
    sandbox.write("Cut.xml", kDamaged);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    at("label: Filtering invalid characters...", [&] { std::filesystem::remove(copy()); });
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(test::readBytes(path), kRepaired);
    EXPECT_EQ(fileState(path).mode & 07777U, 0640U);
}

TEST_F(RepairDisturbancesTest, theUsersFileIsNotWrittenThroughALinkInTheWorkingCopysPlace) {
    sandbox.write("Cut.xml", kDamaged);
    const auto source = platform::fileIdentity(path);
    at("label: Filtering invalid characters...", [&] {
        std::filesystem::remove(copy());
        std::filesystem::create_symlink(path, copy());
    });
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(test::readBytes(path), kRepaired);
    EXPECT_EQ(test::readBytes(trash() + "/Cut.xml"), kDamaged);
    EXPECT_EQ(platform::fileIdentity(trash() + "/Cut.xml"), source);
}

TEST_F(RepairDisturbancesTest, aResultThatCannotBeSavedEndsAsUnable) {
    sandbox.write("Cut.xml", kDamaged);
    at("label: Filtering invalid characters...", [&] { chmod(sandbox.folder().c_str(), 0500); });
    EXPECT_EQ(run(path), RepairOutcome::unable);
    const Strings report = events.report();
    const std::string line = "bold error: Unable to save file: ";
    const auto save = std::find_if(report.begin(), report.end(),
                                   [&](const std::string& text) { return text.starts_with(line); });
    ASSERT_NE(save, report.end());
    const std::string reason = save->substr(line.size());
    EXPECT_EQ(Strings(save + 1, report.end()),
              (Strings{"info: Updating type/creator codes...",
                       "bold error: Unable to load file attributes. " + reason, test::kUnableLine,
                       report.back()}));
    EXPECT_TRUE(report.back().starts_with("error: Unable to remove temporary file " + copy()));
    EXPECT_EQ(test::readBytes(path), kDamaged);
}

TEST_F(RepairDisturbancesTest, attributesThatCannotBeReadAreReportedAndChangeNoFlag) {
    sandbox.write("Cut.xml", kSoundXMEML);
    at("info: Updating type/creator codes...", [&] { std::filesystem::remove(copy()); });
    EXPECT_EQ(run(path), RepairOutcome::sound);
    expectFlags(false, true);
    ErrorSlot error;
    static_cast<void>(platform::readFileAttributes(copy(), error));
    const Strings report = events.report();
    EXPECT_EQ(report.at(report.size() - 3),
              "bold error: Unable to load file attributes. " + error->localizedDescription());
    EXPECT_EQ(report.at(report.size() - 2), kSoundLine);
    // The slot is still filled when the working copy is to be removed.
    EXPECT_TRUE(report.back().starts_with("error: Unable to remove temporary file " + copy()));
}

TEST_F(RepairDisturbancesTest, attributesThatCannotBeWrittenAreReportedAndChangeNoFlag) {
    sandbox.write("Cut.xml", kDamaged);
    // Until the volume has no more room for attributes of this file.
    bool isFull = false;
    for (int number = 0; number < 200 && !isFull; ++number) {
        for (const std::size_t size : {4000U, 400U, 40U}) {
            isFull = !test::setAttribute(path, "user.fill" + std::to_string(number),
                                         std::string(size, 'f'));
        }
    }
    ErrorSlot error;
    if (!isFull || platform::writeFileAttributes(path, {1, 1}, error)) {
        GTEST_SKIP() << "this volume has room for any number of attributes, or for none";
    }
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    const Strings report = events.report();
    const std::string line = "bold error: Unable to write file attributes. ";
    ASSERT_EQ(report.at(report.size() - 3).substr(0, line.size()), line);
    const std::string reason = report.at(report.size() - 3).substr(line.size());
    EXPECT_EQ(report.at(report.size() - 2), kRepairedLine);
    EXPECT_EQ(report.back(),
              "error: Unable to remove temporary file " + copy() + ". " + reason + ".");
    expectFlags(true, true);
}

TEST_F(RepairDisturbancesTest, namesWithBlanksQuotesAndLineBreaksAreRepaired) {
    for (const std::string name : {"a b.xml", "it's \"it\".xml", "two\nlines.xml", "-rf.xml",
                                   "50%d %@.xml", "\xFF\xFE.xml", ".xml"}) {
        events = {};
        EXPECT_EQ(runOn(name, kDamaged), RepairOutcome::repairedAndSwapped) << name;
        EXPECT_EQ(test::readBytes(sandbox.path(name)), kRepaired) << name;
        EXPECT_EQ(test::readBytes(trash() + "/" + name), kDamaged) << name;
        EXPECT_EQ(events.report().front(),
                  "bold: Starting repair for file " + sandbox.path(name) + "...");
    }
}

}  // namespace
}  // namespace vornic
