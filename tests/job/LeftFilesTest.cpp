#include <ctime>
#include <filesystem>
#include <fstream>

#include "job/LeftFiles.h"
#include "job/MoveToTrash.h"
#include "tests/job/JobTest.h"

namespace {

time_t secondsAhead = 0;

}  // namespace

// In the place of the C library's, for nothing can make a file look older than it is.
extern "C" time_t time(time_t* result) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const time_t seconds = now.tv_sec + secondsAhead;
    if (result != nullptr) {
        *result = seconds;
    }
    return seconds;
}

namespace vornic {
namespace {

using test::Notes;
using test::Strings;

class LeftFilesTest : public test::JobTest {
  protected:
    void SetUp() override {
        JobTest::SetUp();
        // Another folder, so that the next look is a new one.
        static_cast<void>(clearLeftFiles(sandbox.home()));
    }
    void TearDown() override { secondsAhead = 0; }
    std::string left = sandbox.path(".Cut.xml.vornic-abcdefgh01");
};

TEST_F(LeftFilesTest, goToTheTrashWithANote) {
    std::ofstream(left) << "the older";
    secondsAhead = 3600;
    EXPECT_EQ(clearLeftFiles(sandbox.folder()),
              (Notes{{"repair-change-in-trash"_rule,
                      {{"path", source}, {"left", trash() + "/Cut.xml"}}}}));
    EXPECT_EQ(inTrash("Cut.xml"), "the older");
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(LeftFilesTest, stayWithANoteWhereTheTrashDoesNotTakeThem) {
    std::ofstream(left) << "the older";
    blockTrash();
    secondsAhead = 3600;
    EXPECT_EQ(clearLeftFiles(sandbox.folder()),
              (Notes{{"repair-change-left-aside"_rule, {{"path", source}, {"left", left}}}}));
    EXPECT_EQ(test::readBytes(left), "the older");
}

TEST_F(LeftFilesTest, comeBackWhereNothingStands) {
    std::filesystem::rename(source, left);
    sandbox.write(".Cut-backup.xml.vornic-abcdefgh01", "a working copy");
    secondsAhead = 3600;
    EXPECT_EQ(clearLeftFiles(sandbox.folder()).back(),
              (Note{"repair-change-brought-back"_rule, {{"path", source}}}));
    EXPECT_EQ(test::readBytes(source), "the user's");
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(inTrash("Cut-backup.xml"), "a working copy");
}

TEST_F(LeftFilesTest, thatWereHiddenBeforeGoToTheTrashByTheUsersName) {
    sandbox.write("..Cut.xml.vornic.undo.vornic-abcdefgh01", "the older");
    secondsAhead = 3600;
    EXPECT_EQ(clearLeftFiles(sandbox.folder()).size(), 1U);
    EXPECT_EQ(inTrash("Cut.xml"), "the older");
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(LeftFilesTest, ofALivingProgramStay) {
    std::ofstream(left) << "the older";
    EXPECT_EQ(clearLeftFiles(sandbox.folder()), Notes{}) << "it has just come";
    EXPECT_EQ(test::readBytes(left), "the older");
}

TEST_F(LeftFilesTest, areClearedBeforeARepair) {
    std::ofstream(left) << "the older";
    sandbox.write(".Cut-backup.xml.vornic-abcdefgh01.part", "half");
    secondsAhead = 3600;
    EXPECT_TRUE(copy.settleLeft());
    EXPECT_EQ(inTrash("Cut.xml"), "the older");
    EXPECT_EQ(copy.takeNotes().size(), 1U);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(LeftFilesTest, inTheTrashAreRemovedOrShown) {
    std::filesystem::create_directory(trash());
    sandbox.write("../home/.Trash/.Cut.xml.vornic-abcdefgh02", "the older");
    sandbox.write("../home/.Trash/.Cut.xml.vornic-abcdefgh01.part", "half");
    secondsAhead = 3600;
    EXPECT_TRUE(moveToTrash(source, "Cut.xml", error));
    EXPECT_EQ(namesInTrash(), (Strings{"Cut 2.xml", "Cut.xml"}));
    EXPECT_EQ(inTrash("Cut.xml"), "the older");
    EXPECT_EQ(inTrash("Cut 2.xml"), "the user's");
}

}  // namespace
}  // namespace vornic
