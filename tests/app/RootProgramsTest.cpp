// The programs as the super-user runs them. The machine's own folder is replaced by an empty volume
// that nobody else sees.

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/app/ProgramFiles.h"
#include "tests/app/TestMaterial.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/texts/LogText.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RootProgramsTest : public ::testing::Test {
  protected:
    static constexpr const char* kMachineFolder = "/var/lib";
    static constexpr const char* kRootLog = "/var/lib/quillmark/Logs/Quillmark/Vornic.1.log";
    static constexpr uid_t kOwner = 4711;
    static constexpr gid_t kGroup = 4712;

    void SetUp() override {
        if (!mounts_.mountVolume(kMachineFolder, "tmpfs", "size=16m,mode=755")) {
            GTEST_SKIP() << "only root, with the right to mount volumes, can run this test";
        }
        files_ = std::make_unique<ProgramFiles>(material_);
    }

    [[nodiscard]] static std::vector<std::string> rootLog() {
        return withoutLogHeader(logMessages(readBytes(kRootLog)));
    }

    TestMaterial material_;
    PrivateMounts mounts_;
    std::unique_ptr<ProgramFiles> files_;
};

TEST_F(RootProgramsTest, aFirstRunPrintsNothingAboutItsLog) {
    const std::string path = files_->writeSound("cut.xml");
    const ProgramResult result = files_->repair({path});
    EXPECT_EQ(result.output, soundReport(path));
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
}

TEST_F(RootProgramsTest, aFirstConversionPrintsNothingAboutItsLog) {
    const std::string path = files_->writeSound("cut.xml");
    const ProgramResult result = files_->convert({"-convertxmeml", "3", path});
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

TEST_F(RootProgramsTest, theLogIsTheMachines) {
    const std::string path = files_->writeSound("cut.xml");
    files_->repair({path});
    EXPECT_EQ(rootLog(), soundLog(path));
    EXPECT_FALSE(exists(files_->logPath()));
}

TEST_F(RootProgramsTest, eachRunReplacesTheMachinesLogForTheUsersGenerationsAreTheOnesMoved) {
    const std::string first = files_->writeSound("first.xml");
    const std::string second = files_->writeSound("second.xml");
    files_->repair({first});
    files_->repair({second});
    EXPECT_EQ(rootLog(), soundLog(second));
    EXPECT_THAT(namesIn("/var/lib/quillmark/Logs/Quillmark"), ElementsAre("Vornic.1.log"));
}

TEST_F(RootProgramsTest, aSecondRunMovesTheGenerationsInTheUsersFolder) {
    const std::string path = files_->writeSound("cut.xml");
    files_->repair({path});
    fs::create_directories(files_->library("Logs/Quillmark"));
    writeBytes(files_->logPath(1), "one");
    writeBytes(files_->logPath(4), "four");
    writeBytes(files_->logPath(5), "five");
    EXPECT_EQ(files_->repair({path}).output, soundReport(path));
    EXPECT_THAT(namesIn(files_->library("Logs/Quillmark")),
                ElementsAre("Vornic.1.task.log", "Vornic.2.log", "Vornic.5.log"));
    EXPECT_EQ(readBytes(files_->logPath(2)), "one");
    EXPECT_EQ(readBytes(files_->logPath(5)), "four");
}

TEST_F(RootProgramsTest, aLongLogIsWholeAndInOrder) {
    constexpr std::size_t kCount = 20'000;
    std::string text = soundXMEML();
    const std::size_t place = text.find("Harbour");
    text.insert(place, std::string(kCount, '\v'));
    const std::string path = files_->write("cut.xml", text);
    EXPECT_EQ(files_->repair({path}).status, 0);
    std::vector<std::string> expected;
    for (std::size_t i = place; i < place + kCount; ++i) {
        expected.push_back("Invalid character at byte " + std::to_string(i) + " removed.");
    }
    std::vector<std::string> found = rootLog();
    std::erase_if(found, [](const std::string& message) {
        return !message.starts_with("Invalid character at byte");
    });
    EXPECT_TRUE(found == expected);
}

TEST_F(RootProgramsTest, aRepairedFileKeepsItsOwner) {
    const std::string path = files_->writeDamaged("cut.xml");
    ASSERT_EQ(chown(path.c_str(), kOwner, kGroup), 0);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    FileState after = fileState(path);
    const FileState before = after;
    EXPECT_EQ(files_->repair({path}).status, 0);
    after.bytes = repairedXMEML();
    after.attributes[kFinderInfo] = xmemlFinderInfo();
    EXPECT_EQ(fileState(path), after);
    EXPECT_EQ(fileState(files_->trash() + "/cut.xml"), before);
}

TEST_F(RootProgramsTest, aConvertedFileKeepsItsOwner) {
    const std::string path = files_->writeSound("cut.xml");
    ASSERT_EQ(chown(path.c_str(), kOwner, kGroup), 0);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    FileState after = fileState(path);
    EXPECT_EQ(files_->convert({"-convertxmeml", "3", path}).output, "");
    after.bytes = soundXMEML("3");
    after.attributes[kFinderInfo] = xmemlFinderInfo();
    EXPECT_EQ(fileState(path), after);
}

TEST_F(RootProgramsTest, aFileInAnotherUsersFolderIsRepaired) {
    const std::string folder = files_->path("theirs");
    fs::create_directory(folder);
    const std::string path = files_->writeDamaged("theirs/cut.xml");
    for (const std::string& theirs : {folder, path}) {
        ASSERT_EQ(chown(theirs.c_str(), kOwner, kGroup), 0);
    }
    EXPECT_EQ(files_->repair({path}).output, repairedReport(path));
    EXPECT_EQ(fileState(path).owner, kOwner);
    EXPECT_EQ(fileState(path).group, kGroup);
    EXPECT_THAT(namesIn(folder), ElementsAre("cut.xml"));
}

TEST_F(RootProgramsTest, theSwitchThatDisablesTheLogIsTheUsersOwn) {
    fs::create_directories(files_->library("Preferences"));
    writeBytes(files_->library("Preferences/com.quillmark.global.plist"),
               "<plist version=\"1.0\"><dict><key>disable-logging</key><true/></dict></plist>");
    const std::string path = files_->writeSound("cut.xml");
    EXPECT_EQ(files_->repair({path}).output, "Logging is disabled\n" + soundReport(path));
    EXPECT_THAT(namesIn(kMachineFolder), IsEmpty());
}

TEST_F(RootProgramsTest, anUndoGivesAFileBackToItsOwner) {
    const std::string path = files_->writeDamaged("cut.xml");
    ASSERT_EQ(chown(path.c_str(), kOwner, kGroup), 0);
    const FileState before = fileState(path);
    const ProgramResult repair = files_->repair({path});
    EXPECT_EQ(repair.status, 0);
    EXPECT_TRUE(tellsOriginal(repair.errors, files_->trash())) << repair.errors;
    EXPECT_EQ(fileState(path).owner, kOwner);
    EXPECT_EQ(files_->repair({"--undo", path}).status, 0);
    EXPECT_EQ(fileState(path), before);
}

TEST_F(RootProgramsTest, aRepairLeavesNoJournalInAnothersHome) {
    ASSERT_EQ(chown(files_->home().c_str(), kOwner, kGroup), 0);
    const std::string path = files_->writeDamaged("cut.xml");
    const ProgramResult result = files_->repair({path});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "The original is " + files_->trash() + "/cut.xml.\n");
    EXPECT_FALSE(exists(files_->library("Journal")));
    const ProgramResult undone = files_->repair({"--undo", path});
    EXPECT_EQ(undone.status, 3);
    EXPECT_EQ(readBytes(path), repairedXMEML());
}

TEST_F(RootProgramsTest, anUndoDoesNotBelieveAnothersJournal) {
    const std::string path = files_->writeDamaged("cut.xml");
    ASSERT_EQ(files_->repair({path}).status, 0);
    const std::string journal = files_->library("Journal/Vornic.journal");
    ASSERT_EQ(chown(journal.c_str(), kOwner, kGroup), 0);
    const ProgramResult result = files_->repair({"--undo", path});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.errors, "vornic-repair: The journal " + journal +
                                 " cannot be used: it belongs to somebody else.\n");
    EXPECT_EQ(readBytes(path), repairedXMEML());
}

}  // namespace vornic::test
