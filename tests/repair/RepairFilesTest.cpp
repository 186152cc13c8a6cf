#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/FileAttributes.h"
#include "platform/FileSystem.h"
#include "tests/repair/PipelineTest.h"

/// What a repair does to the files on the disk.
namespace vornic {
namespace {

using test::fileState;
using test::FileState;
using test::kRepairedAlert;
using test::kRepairedLine;
using test::kSoundLine;
using test::kSoundXMEML;
using test::Strings;

const std::string kDamaged = "<xmeml version=\"5\"><sequence/></xmeml>";
const std::string kRepaired =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n"
    "<xmeml version=\"5\">\n    <sequence/>\n</xmeml>\n";

class RepairFilesTest : public test::PipelineTest {
  protected:
    ~RepairFilesTest() override { chmod(sandbox.folder().c_str(), 0700); }

    /// Does something to the files when the run makes a call.
    void at(const std::string& call, std::function<void()> act) {
        host.onCall = [call, act = std::move(act)](const std::string& made) {
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

TEST_F(RepairFilesTest, aSoundFileIsNotTouchedAtAll) {
    sandbox.write("Cut.xml", kSoundXMEML);
    struct stat before {};
    ASSERT_EQ(lstat(path.c_str(), &before), 0);
    EXPECT_EQ(run(path), RepairOutcome::sound);
    struct stat after {};
    ASSERT_EQ(lstat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
}

TEST_F(RepairFilesTest, theRepairedFileKeepsModeOwnerAndAttributes) {
    sandbox.write("Cut.xml", kDamaged);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    if (!test::setAttribute(path, "user.note", "kept") ||
        !test::setAttribute(path, test::kFinderInfo, std::string(8, 'o') + std::string(24, 'k'))) {
        GTEST_SKIP() << "this volume has no extended attributes";
    }
    const FileState before = fileState(path);
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    FileState expected = before;
    expected.bytes = kRepaired;
    expected.attributes[test::kFinderInfo] = "XML KeyG" + std::string(24, 'k');
    EXPECT_EQ(fileState(path), expected);
    // The user's file went to the Trash as it was.
    EXPECT_EQ(fileState(trash() + "/Cut.xml"), before);
}

TEST_F(RepairFilesTest, anXMEMLResultGetsTypeAndCreator) {
    sandbox.write("Cut.xml", kDamaged);
    if (!test::setAttribute(path, "user.note", "")) {
        GTEST_SKIP() << "this volume has no extended attributes";
    }
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(fileState(path).attributes[test::kFinderInfo], test::xmemlFinderInfo());
}

TEST_F(RepairFilesTest, anFCPXMLResultGetsNoTypeAndCreator) {
    EXPECT_EQ(runOn("Cut.fcpxml",
                    "<fcpxml><resources/><library><event><project/></event></library></fcpxml>"),
              RepairOutcome::repairedAndSwapped);
    EXPECT_TRUE(fileState(sandbox.path("Cut.fcpxml")).attributes.empty());
}

TEST_F(RepairFilesTest, aFileWithoutWritePermissionIsRepairedAndStaysSo) {
    sandbox.write("Cut.xml", kDamaged);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(test::readBytes(path), kRepaired);
    EXPECT_EQ(fileState(path).mode & 07777U, 0444U);
    EXPECT_EQ(host.report().back(), kRepairedLine);
}

TEST_F(RepairFilesTest, anOldWorkingCopyGoesToTheTrash) {
    sandbox.write("Cut-backup.xml", "old");
    EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::sound);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(trash() + "/Cut-backup.xml"), "old");
}

TEST_F(RepairFilesTest, anOldWorkingCopyThatIsAFolderGoesToTheTrash) {
    std::filesystem::create_directory(copy());
    sandbox.write("Cut-backup.xml/inside", "old");
    EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::sound);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(trash() + "/Cut-backup.xml/inside"), "old");
}

TEST_F(RepairFilesTest, anOldWorkingCopyThatIsALinkGoesToTheTrashAsALink) {
    sandbox.write("target", "the link's target");
    for (const std::string& target : {sandbox.path("target"), sandbox.path("none")}) {
        std::filesystem::create_symlink(target, copy());
        EXPECT_EQ(runOn("Cut.xml", kSoundXMEML), RepairOutcome::sound);
        EXPECT_EQ(names(), (Strings{"Cut.xml", "target"}));
        EXPECT_EQ(std::filesystem::read_symlink(trash() + "/Cut-backup.xml"), target);
        std::filesystem::remove(trash() + "/Cut-backup.xml");
    }
    EXPECT_EQ(test::readBytes(sandbox.path("target")), "the link's target");
}

TEST_F(RepairFilesTest, aNameThatIsTakenInTheTrashGetsANumber) {
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ(runOn("Cut.xml", kDamaged), RepairOutcome::repairedAndSwapped);
        host = {};
    }
    EXPECT_EQ(namesInTrash(), (Strings{"Cut 2.xml", "Cut 3.xml", "Cut.xml"}));
}

TEST_F(RepairFilesTest, anOldWorkingCopyThatCannotBeMovedEndsTheRun) {
    sandbox.write("../home/.Trash", "a file where the folder should be");
    sandbox.write("Cut-backup.xml", "old");
    host.hasErrors = true;
    EXPECT_EQ(runOn("Cut.xml", kDamaged), RepairOutcome::stopped);
    const std::string remove = "Please remove " + copy() + " manually.";
    EXPECT_EQ(Strings(host.calls.end() - 4, host.calls.end()),
              (Strings{"info: Creating temporary file...",
                       "bold error: Error: unable to remove temporary file. " + remove,
                       "alert: Unable to remove temporary file | " + remove, "end"}));
    expectFlags(false, false);
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_EQ(test::readBytes(copy()), "old");
}

class RepairUncopyable : public RepairFilesTest {
  protected:
    /// A run that ends at its copy, with its messages.
    void expectUncopyable() {
        ErrorSlot error;
        ASSERT_FALSE(platform::copyFile(path, copy(), error));
        host.hasErrors = true;
        EXPECT_EQ(run(path), RepairOutcome::stopped);
        ASSERT_GE(host.calls.size(), 4U);
        EXPECT_EQ(
            Strings(host.calls.end() - 4, host.calls.end()),
            (Strings{"info: Creating temporary file...",
                     "bold error: Error: unable to create temporary file. " + error->description,
                     "alert: Unable to create temporary file | " + error->description, "end"}));
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

TEST_F(RepairFilesTest, aLinkIsReplacedAndItsTargetIsNeverWritten) {
    const std::string target = sandbox.write("target", kDamaged);
    const FileState before = fileState(target);
    std::filesystem::create_symlink("target", path);
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(fileState(target), before);
    EXPECT_FALSE(std::filesystem::is_symlink(path));
    EXPECT_EQ(test::readBytes(path), kRepaired);
    EXPECT_EQ(namesInTrash(), Strings{"Cut.xml"});
    EXPECT_EQ(std::filesystem::read_symlink(trash() + "/Cut.xml"), "target");
}

TEST_F(RepairFilesTest, aLinkToASoundFileStays) {
    sandbox.write("target", kSoundXMEML);
    std::filesystem::create_symlink("target", path);
    EXPECT_EQ(run(path), RepairOutcome::sound);
    EXPECT_EQ(std::filesystem::read_symlink(path), "target");
    EXPECT_EQ(names(), (Strings{"Cut.xml", "target"}));
}

TEST_F(RepairFilesTest, theSourceStaysWhenItCannotBeMovedToTheTrash) {
    sandbox.write("../home/.Trash", "a file where the folder should be");
    EXPECT_EQ(runOn("Cut.xml", kDamaged), RepairOutcome::repairedNotSwapped);
    EXPECT_EQ(Strings(host.calls.end() - 3, host.calls.end()),
              (Strings{kRepairedLine, kRepairedAlert, "end"}));
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_EQ(test::readBytes(copy()), kRepaired);
    expectFlags(true, true);
    EXPECT_TRUE(
        log.entries().back().starts_with("The file " + path + " could not be moved to the Trash. "))
        << log.entries().back();
}

TEST_F(RepairFilesTest, theSourceStaysWhenAnotherRunHasReplacedTheWorkingCopy) {
    sandbox.write("Cut.xml", kDamaged);
    at(kRepairedLine, [&] { replaceWorkingCopy("another run's"); });
    EXPECT_EQ(run(path), RepairOutcome::repairedNotSwapped);
    EXPECT_EQ(
        Strings(host.calls.end() - 4, host.calls.end()),
        (Strings{kRepairedLine,
                 "error: The temporary file " + copy() +
                     " was replaced by another program. The file " + path + " was left as it is.",
                 kRepairedAlert, "end"}));
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_EQ(test::readBytes(copy()), "another run's");
    EXPECT_FALSE(test::exists(trash()));
}

TEST_F(RepairFilesTest, theSourceStaysWhenTheWorkingCopyHasGone) {
    sandbox.write("Cut.xml", kDamaged);
    at(kRepairedLine, [&] { std::filesystem::remove(copy()); });
    EXPECT_EQ(run(path), RepairOutcome::repairedNotSwapped);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(path), kDamaged);
}

TEST_F(RepairFilesTest, anotherRunsWorkingCopyIsNotRemoved) {
    sandbox.write("Cut.xml", kSoundXMEML);
    at("label: Finishing...", [&] { replaceWorkingCopy("another run's"); });
    EXPECT_EQ(run(path), RepairOutcome::sound);
    EXPECT_EQ(host.report().back(), kSoundLine);
    EXPECT_EQ(test::readBytes(copy()), "another run's");
    EXPECT_EQ(log.entries().back(),
              "The temporary file " + copy() + " was replaced by another program and left there.");
}

TEST_F(RepairFilesTest, aWorkingCopyThatCannotBeRemovedIsReported) {
    sandbox.write("Cut.xml", kSoundXMEML);
    at("label: Finishing...", [&] { chmod(sandbox.folder().c_str(), 0500); });
    EXPECT_EQ(run(path), RepairOutcome::sound);
    ErrorSlot error;
    static_cast<void>(platform::removeFile(copy(), error));
    EXPECT_EQ(host.report().back(), "error: Unable to remove temporary file " + copy() + ". " +
                                        error->localizedDescription() + ".");
}

TEST_F(RepairFilesTest, whatAnotherRunPutInTheWorkingCopysPlaceIsNotJudged) {
    sandbox.write("Cut.xml", kDamaged);
    at("label: Checking file...", [&] { replaceWorkingCopy(kSoundXMEML); });
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(test::readBytes(path), kRepaired);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(RepairFilesTest, aWorkingCopyThatWasTakenAwayIsMadeAgain) {
    sandbox.write("Cut.xml", kDamaged);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    at("label: Filtering invalid characters...", [&] { std::filesystem::remove(copy()); });
    EXPECT_EQ(run(path), RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(test::readBytes(path), kRepaired);
    EXPECT_EQ(fileState(path).mode & 07777U, 0640U);
}

TEST_F(RepairFilesTest, theUsersFileIsNotWrittenThroughALinkInTheWorkingCopysPlace) {
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

TEST_F(RepairFilesTest, aResultThatCannotBeSavedEndsAsUnable) {
    sandbox.write("Cut.xml", kDamaged);
    at("label: Filtering invalid characters...", [&] { chmod(sandbox.folder().c_str(), 0500); });
    EXPECT_EQ(run(path), RepairOutcome::unable);
    const Strings report = host.report();
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

TEST_F(RepairFilesTest, attributesThatCannotBeReadAreReportedAndChangeNoFlag) {
    sandbox.write("Cut.xml", kSoundXMEML);
    at("info: Updating type/creator codes...", [&] { std::filesystem::remove(copy()); });
    EXPECT_EQ(run(path), RepairOutcome::sound);
    expectFlags(false, true);
    ErrorSlot error;
    static_cast<void>(platform::readFileAttributes(copy(), error));
    const Strings report = host.report();
    EXPECT_EQ(report.at(report.size() - 3),
              "bold error: Unable to load file attributes. " + error->localizedDescription());
    EXPECT_EQ(report.at(report.size() - 2), kSoundLine);
    // The slot is still filled when the working copy is to be removed.
    EXPECT_TRUE(report.back().starts_with("error: Unable to remove temporary file " + copy()));
}

TEST_F(RepairFilesTest, attributesThatCannotBeWrittenAreReportedAndChangeNoFlag) {
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
    const Strings report = host.report();
    const std::string line = "bold error: Unable to write file attributes. ";
    ASSERT_EQ(report.at(report.size() - 3).substr(0, line.size()), line);
    const std::string reason = report.at(report.size() - 3).substr(line.size());
    EXPECT_EQ(report.at(report.size() - 2), kRepairedLine);
    EXPECT_EQ(report.back(),
              "error: Unable to remove temporary file " + copy() + ". " + reason + ".");
    expectFlags(true, true);
}

TEST_F(RepairFilesTest, namesWithBlanksQuotesAndLineBreaksAreRepaired) {
    for (const std::string name : {"a b.xml", "it's \"it\".xml", "two\nlines.xml", "-rf.xml",
                                   "50%d %@.xml", "\xFF\xFE.xml", ".xml"}) {
        host = {};
        EXPECT_EQ(runOn(name, kDamaged), RepairOutcome::repairedAndSwapped) << name;
        EXPECT_EQ(test::readBytes(sandbox.path(name)), kRepaired) << name;
        EXPECT_EQ(test::readBytes(trash() + "/" + name), kDamaged) << name;
        EXPECT_EQ(host.report().front(),
                  "bold: Starting repair for file " + sandbox.path(name) + "...");
    }
}

}  // namespace
}  // namespace vornic
