// Taking repairs back: vornic-repair --undo.

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/FileState.h"

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
    EXPECT_THAT(all.output, ::testing::MatchesRegex("[0-9: -]+  repaired  " + second +
                                                    "\n    original: " + trashed("second.xml") +
                                                    "\n[0-9: -]+  repaired  " + first +
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

TEST_F(UndoProgramTest, tellsOfAnEmptiedTrashAndGoesOn) {
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

TEST_F(UndoProgramTest, takesAFileThatBeginsWithAHyphenBehindTwo) {
    const std::string path = repaired("--list");
    EXPECT_EQ(undo({"--", "--list"}).status, 0);
    EXPECT_EQ(readBytes(path), damagedXMEML());
}

}  // namespace vornic::test
