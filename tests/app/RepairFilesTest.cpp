// What becomes of files of every kind, with their modes, owners and attributes.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RepairFilesTest : public ProgramTest {
  protected:
    /// The run ended before it made a working copy, as the report and standard error say, and left
    /// everything as it was.
    void expectNoCopy(const std::string& path, const std::string& reason) const {
        const std::vector<std::string> before = namesIn(files.folder());
        const ProgramResult result = files.repair({path});
        EXPECT_EQ(result.output, "Starting repair for file " + path +
                                     "...\nCreating temporary file...\n"
                                     "Error: unable to create temporary file. " +
                                     reason + "\n");
        EXPECT_EQ(result.errors,
                  "vornic-repair: Unable to create temporary file. " + reason + "\n");
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(namesIn(files.folder()), before);
        EXPECT_FALSE(exists(files.trash()));
    }

    void expectRepaired(const std::string& path) const {
        const ProgramResult result = files.repair({path});
        EXPECT_EQ(result.output, repairedReport(path));
        EXPECT_TRUE(tellsOriginal(result.errors, files.trash())) << result.errors;
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(readBytes(path), repairedXMEML());
    }
};

TEST_F(RepairFilesTest, reportsAMissingFileAndStoresNoPath) {
    const std::string path = files.path("missing.xml");
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "vornic-repair: Unable to locate file. The file " + path + " cannot be found.\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(files.log(),
                ElementsAre("Beginning repair for file " + path + "...",
                            "The file " + path + " cannot be found.",
                            "Unable to locate file. The file " + path + " cannot be found."));
    EXPECT_THAT(namesIn(files.folder()), IsEmpty());
    EXPECT_FALSE(exists(files.library("Preferences/com.quillmark.Vornic.plist")));
}

TEST_F(RepairFilesTest, takesADanglingLinkForAMissingFile) {
    const std::string path = files.path("link.xml");
    fs::create_symlink("nowhere.xml", path);
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.errors,
              "vornic-repair: Unable to locate file. The file " + path + " cannot be found.\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("link.xml"));
}

TEST_F(RepairFilesTest, refusesAFolder) {
    const std::string path = files.path("folder.xml");
    fs::create_directory(path);
    expectNoCopy(path, "The file " + path + " cannot be copied: it is a folder.");
}

TEST_F(RepairFilesTest, refusesANamedPipeWithoutWaitingForIt) {
    const std::string path = files.path("pipe.xml");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    expectNoCopy(path, "The file " + path + " cannot be copied: it is no ordinary file.");
}

TEST_F(RepairFilesTest, refusesALinkToADevice) {
    const std::string path = files.path("zero.xml");
    fs::create_symlink("/dev/zero", path);
    expectNoCopy(path, "The file " + path + " cannot be copied: it is no ordinary file.");
}

TEST_F(RepairFilesTest, refusesAFileThatItMayNotRead) {
    const std::string path = files.writeDamaged("locked.xml");
    fs::permissions(path, fs::perms::none);
    expectNoCopy(path, "The file " + path + " cannot be copied: permission denied.");
    fs::permissions(path, fs::perms::owner_read);
    EXPECT_EQ(readBytes(path), damagedXMEML());
}

TEST_F(RepairFilesTest, refusesAFileInAFolderThatItMayNotWrite) {
    const std::string path = files.writeDamaged("cut.xml");
    fs::permissions(files.folder(), fs::perms::owner_read | fs::perms::owner_exec);
    const FileState before = fileState(path);
    expectNoCopy(
        path, "The file " + files.path("cut-backup.xml") + " cannot be made: permission denied.");
    EXPECT_EQ(fileState(path), before);
}

TEST_F(RepairFilesTest, refusesANameThatLeavesNoRoomForTheWorkingCopys) {
    constexpr std::size_t kLongestName = 255;
    const std::string stem(kLongestName - 4, 'n');
    const std::string path = files.writeDamaged(stem + ".xml");
    expectNoCopy(path, "The file " + files.path(stem + "-backup.xml") +
                           " cannot be made: the name is too long.");
    EXPECT_EQ(readBytes(path), damagedXMEML());
}

TEST_F(RepairFilesTest, leavesASoundFileQuiteAlone) {
    const std::string path = files.writeSound("cut.xml");
    struct stat before {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    const ProgramResult result = files.repair({path});
    EXPECT_EQ(result.output, soundReport(path));
    struct stat after {};
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
    EXPECT_FALSE(exists(files.trash()));
}

TEST_F(RepairFilesTest, leavesASoundFileAloneThatIsWrittenOtherwiseThanItWouldWriteIt) {
    const std::string text =
        "<?xml version='1.0'?><!DOCTYPE xmeml><xmeml version='5'><sequence><name>\"Quay\""
        "</name></sequence></xmeml>";
    const std::string path = files.write("cut.xml", text);
    EXPECT_EQ(files.repair({path}).output, soundReport(path));
    EXPECT_EQ(readBytes(path), text);
}

TEST_F(RepairFilesTest, findsNothingMoreInAFileThatItHasRepaired) {
    const std::string path = files.writeDamaged("cut.xml");
    expectRepaired(path);
    const FileState repaired = fileState(path);
    const ProgramResult again = files.repair({path});
    EXPECT_EQ(again.output, soundReport(path));
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(fileState(path), repaired);
    EXPECT_THAT(namesIn(files.trash()), ElementsAre("cut.xml"));
}

TEST_F(RepairFilesTest, keepsModeAndAttributesAndPutsTheOriginalIntoTheTrashWithItsOwn) {
    const std::string path = files.writeDamaged("cut.xml");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    if (!setAttribute(path, "user.note", "second take")) {
        GTEST_SKIP() << "the volume has no extended attributes";
    }
    const FileState before = fileState(path);
    expectRepaired(path);
    FileState after = before;
    after.bytes = repairedXMEML();
    after.attributes[kFinderInfo] = xmemlFinderInfo();
    EXPECT_EQ(fileState(path), after);
    EXPECT_EQ(fileState(files.trash() + "/cut.xml"), before);
}

TEST_F(RepairFilesTest, keepsTheOtherBytesOfTheFinderInformation) {
    const std::string path = files.writeDamaged("cut.xml");
    std::string information(32, '\x5A');
    if (!setAttribute(path, kFinderInfo, information)) {
        GTEST_SKIP() << "the volume has no extended attributes";
    }
    expectRepaired(path);
    information.replace(0, 8, "XML KeyG");
    EXPECT_EQ(fileState(path).attributes.at(kFinderInfo), information);
}

TEST_F(RepairFilesTest, repairsAFileWithoutWritePermission) {
    const std::string path = files.writeDamaged("cut.xml");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    FileState after = fileState(path);
    expectRepaired(path);
    after.bytes = repairedXMEML();
    after.attributes[kFinderInfo] = xmemlFinderInfo();
    EXPECT_EQ(fileState(path), after);
}

TEST_F(RepairFilesTest, putsTheRepairedFileInTheLinksPlaceAndTheLinkIntoTheTrash) {
    const std::string target = files.writeDamaged("target.xml");
    const std::string path = files.path("cut.xml");
    fs::create_symlink("target.xml", path);
    const FileState targetBefore = fileState(target);
    expectRepaired(path);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(path)));
    EXPECT_EQ(fileState(target), targetBefore);
    EXPECT_EQ(fs::read_symlink(files.trash() + "/cut.xml"), "target.xml");
}

TEST_F(RepairFilesTest, leavesALinkToASoundFileAlone) {
    const std::string target = files.writeSound("target.xml");
    const std::string path = files.path("cut.xml");
    fs::create_symlink("target.xml", path);
    EXPECT_EQ(files.repair({path}).output, soundReport(path));
    EXPECT_TRUE(fs::is_symlink(fs::symlink_status(path)));
    EXPECT_EQ(readBytes(target), soundXMEML());
    EXPECT_FALSE(exists(files.trash()));
}

TEST_F(RepairFilesTest, leavesTheFilesOtherNameAlone) {
    const std::string path = files.writeDamaged("cut.xml");
    fs::create_hard_link(path, files.path("other.xml"));
    expectRepaired(path);
    EXPECT_EQ(readBytes(files.path("other.xml")), damagedXMEML());
}

TEST_F(RepairFilesTest, movesAWorkingCopyOfBeforeIntoTheTrash) {
    const std::string path = files.writeDamaged("cut.xml");
    const FileState old = fileState(files.write("cut-backup.xml", "from before"));
    expectRepaired(path);
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.xml"));
    EXPECT_THAT(namesIn(files.trash()), ElementsAre("cut-backup.xml", "cut.xml"));
    EXPECT_EQ(fileState(files.trash() + "/cut-backup.xml"), old);
}

TEST_F(RepairFilesTest, movesADanglingLinkAtTheWorkingCopysPathIntoTheTrash) {
    const std::string path = files.writeDamaged("cut.xml");
    fs::create_symlink("nowhere", files.path("cut-backup.xml"));
    expectRepaired(path);
    EXPECT_EQ(fs::read_symlink(files.trash() + "/cut-backup.xml"), "nowhere");
    EXPECT_FALSE(exists(files.path("nowhere")));
}

TEST_F(RepairFilesTest, movesAFolderAtTheWorkingCopysPathIntoTheTrash) {
    const std::string path = files.writeDamaged("cut.xml");
    fs::create_directory(files.path("cut-backup.xml"));
    writeBytes(files.path("cut-backup.xml/note"), "kept");
    expectRepaired(path);
    EXPECT_EQ(readBytes(files.trash() + "/cut-backup.xml/note"), "kept");
}

TEST_F(RepairFilesTest, givesANumberToANameThatIsTakenInTheTrash) {
    fs::create_directory(files.trash());
    const std::string path = files.writeDamaged("cut.xml");
    writeBytes(files.trash() + "/cut.xml", "first");
    writeBytes(files.trash() + "/cut 2.xml", "second");
    writeBytes(files.trash() + "/cut-backup.xml", "third");
    writeBytes(files.path("cut-backup.xml"), "fourth");
    expectRepaired(path);
    EXPECT_THAT(namesIn(files.trash()), ElementsAre("cut 2.xml", "cut 3.xml", "cut-backup 2.xml",
                                                    "cut-backup.xml", "cut.xml"));
    EXPECT_EQ(readBytes(files.trash() + "/cut.xml"), "first");
    EXPECT_EQ(readBytes(files.trash() + "/cut 2.xml"), "second");
    EXPECT_EQ(readBytes(files.trash() + "/cut 3.xml"), damagedXMEML());
    EXPECT_EQ(readBytes(files.trash() + "/cut-backup 2.xml"), "fourth");
}

TEST_F(RepairFilesTest, makesTheTrashForTheUserAlone) {
    expectRepaired(files.writeDamaged("cut.xml"));
    EXPECT_EQ(fs::canonical(files.trash()),
              fs::canonical(files.home()) / ".local/share/Trash/files");
    EXPECT_EQ(fileState(fs::canonical(files.trash())).mode, S_IFDIR | 0700U);
}

TEST_F(RepairFilesTest, takesAnExtensionInCapitalsForTheSameKind) {
    const std::string path = files.write("cut.FCPXML", "<!DOCTYPE fcpxml><fcpxml/>");
    writeBytes(files.path("cut-backup.fcpxml"), "from before");
    const ProgramResult result = files.repair({path});
    EXPECT_THAT(result.output, ::testing::HasSubstr("Checking for FCPX-specific errors...\n"));
    EXPECT_THAT(namesIn(files.folder()), ElementsAre("cut.FCPXML"));
    EXPECT_THAT(namesIn(files.trash()), ElementsAre("cut-backup.fcpxml"));
}

TEST_F(RepairFilesTest, takesAFileWithoutAnExtensionForXMEML) {
    const std::string path = files.writeDamaged("cut");
    writeBytes(files.path("cut-backup.xml"), "from before");
    expectRepaired(path);
    EXPECT_THAT(namesIn(files.trash()), ElementsAre("cut", "cut-backup.xml"));
}

TEST_F(RepairFilesTest, takesAnyOtherExtensionForXMEML) {
    const std::string path = files.writeDamaged("cut.fcpxml.xmeml");
    writeBytes(files.path("cut.fcpxml-backup.xml"), "from before");
    expectRepaired(path);
    EXPECT_THAT(namesIn(files.trash()), ElementsAre("cut.fcpxml-backup.xml", "cut.fcpxml.xmeml"));
}

TEST_F(RepairFilesTest, reportsTheWholePathOfAFileBelowTheWorkingFolder) {
    const std::string path = files.writeDamaged("cut.xml");
    EXPECT_EQ(files.repair({"cut.xml"}).output, repairedReport(path));
    EXPECT_EQ(readBytes(path), repairedXMEML());
}

TEST_F(RepairFilesTest, findsAFileThroughAPathThatClimbs) {
    fs::create_directory(files.path("reels"));
    const std::string path = files.writeDamaged("cut.xml");
    const std::string argument = files.path("reels/../cut.xml");
    EXPECT_EQ(files.repair({argument}).output, repairedReport(argument));
    EXPECT_EQ(readBytes(path), repairedXMEML());
}

}  // namespace vornic::test
