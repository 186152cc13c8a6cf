// Names that would trip a program that takes a name for a format, an option, a line or a text.

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Error.h"
#include "platform/settings/PropertyList.h"
#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace {

struct Name {
    const char* test;
    std::string name;
};

void PrintTo(const Name& name, std::ostream* stream) {
    *stream << name.test;
}

const std::vector<Name> kNames{
    {"blanks", " the  final cut .xml"},
    {"quotes", "\"final\" 'cut' `3`.xml"},
    {"lineBreaks", "final\ncut\r\n.xml"},
    {"tabs", "final\tcut.xml"},
    {"percentSigns", "100% %@ %s %n %1$s %5.2f%.xml"},
    {"nothingButPercentSigns", "%%%%.xml"},
    {"backslashes", "final\\cut\\n.xml"},
    {"shellCharacters", "$(final) ; cut | & * ?.xml"},
    {"letters", "Café – 港.xml"},
    {"markup", "<final>&amp;.xml"},
    {"leadingTilde", "~.xml"},
    {"leadingDash", "-final.xml"},
    {"anOption", "--quiet"},
    {"twoDashes", "--"},
};

}  // namespace

class RepairNamesTest : public ProgramTest, public ::testing::WithParamInterface<Name> {};

TEST_P(RepairNamesTest, isRepairedAndReportedAsItStands) {
    const std::string& name = GetParam().name;
    const std::string path = files.writeDamaged(name);
    const ProgramResult result = files.repair({"--", name});
    EXPECT_EQ(result.output, repairedReport(path));
    EXPECT_TRUE(tellsOriginal(result.errors, files.trash())) << result.errors;
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), repairedXMEML());
    EXPECT_EQ(namesIn(files.folder()), std::vector<std::string>{name});
    EXPECT_EQ(namesIn(files.trash()), std::vector<std::string>{name});
    EXPECT_EQ(readBytes(files.trash() + "/" + name), damagedXMEML());
    EXPECT_THAT(files.log(), ::testing::Contains("Starting repair for file " + path + "..."));
}

TEST_P(RepairNamesTest, isStoredInThePreferences) {
    const std::string path = files.writeSound(GetParam().name);
    EXPECT_EQ(files.repair({path}).status, 0);
    ErrorSlot error;
    const auto preferences = platform::PropertyList::readFile(
        files.library("Preferences/com.quillmark.Vornic.plist"), error);
    ASSERT_TRUE(preferences.has_value());
    const platform::PropertyList* stored = preferences->find("filepath");
    ASSERT_NE(stored, nullptr);
    ASSERT_NE(stored->string(), nullptr);
    EXPECT_EQ(*stored->string(), path);
}

TEST_P(RepairNamesTest, isReportedOnStandardErrorWhenItIsMissing) {
    const std::string path = files.path(GetParam().name);
    const ProgramResult result = files.repair({"--", GetParam().name});
    EXPECT_EQ(result.errors,
              "vornic-repair: Unable to locate file. The file " + path + " cannot be found.\n");
    EXPECT_EQ(result.status, 1);
}

INSTANTIATE_TEST_SUITE_P(Names, RepairNamesTest, ::testing::ValuesIn(kNames),
                         [](const auto& tested) { return std::string(tested.param.test); });

class RepairUnreadableNamesTest : public ProgramTest {
  protected:
    // A Latin-1 letter and a byte that begins nothing.
    const std::string name_ = "Caf\xE9 \xFF.xml";
};

TEST_F(RepairUnreadableNamesTest, aNameThatIsNoTextIsRepairedAndReportedByteForByte) {
    const std::string path = files.writeDamaged(name_);
    const ProgramResult result = files.repair({name_});
    EXPECT_EQ(result.output, repairedReport(path));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), repairedXMEML());
    EXPECT_EQ(namesIn(files.trash()), std::vector<std::string>{name_});
}

TEST_F(RepairUnreadableNamesTest, aNameThatIsNoTextIsLoggedAsText) {
    const std::string path = files.writeSound(name_);
    EXPECT_EQ(files.repair({name_}).status, 0);
    EXPECT_THAT(files.log(), ::testing::Contains("Beginning repair for file " +
                                                 files.path("Caf\uFFFD \uFFFD.xml") + "..."));
}

TEST_F(RepairUnreadableNamesTest, aNameThatIsNoTextIsStoredAsText) {
    const std::string path = files.writeSound(name_);
    EXPECT_EQ(files.repair({path}).status, 0);
    ErrorSlot error;
    const auto preferences = platform::PropertyList::readFile(
        files.library("Preferences/com.quillmark.Vornic.plist"), error);
    ASSERT_TRUE(preferences.has_value());
    const platform::PropertyList* stored = preferences->find("filepath");
    ASSERT_NE(stored, nullptr);
    ASSERT_NE(stored->string(), nullptr);
    EXPECT_EQ(*stored->string(), files.path("Caf\uFFFD \uFFFD.xml"));
}

}  // namespace vornic::test
