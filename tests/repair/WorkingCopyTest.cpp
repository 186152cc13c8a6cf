#include <atomic>
#include <filesystem>
#include <optional>
#include <thread>

#include <sys/stat.h>

#include "repair/WorkingCopy.h"
#include "tests/repair/PipelineTest.h"

namespace vornic {
namespace {

using test::kSoundXMEML;
using test::Strings;

/// Two repairs of one file, step by step beside each other.
class WorkingCopyTest : public test::PipelineTest {
  protected:
    void SetUp() override { sandbox.write("Cut.xml", "the user's"); }

    std::string source = sandbox.path("Cut.xml");
    std::string path = sandbox.path("Cut-backup.xml");
    WorkingCopy copy{source, path};
    WorkingCopy another{source, path};
    ErrorSlot error;
    std::unique_ptr<XMLDocument> document = test::parsed(kSoundXMEML);
};

TEST_F(WorkingCopyTest, goesFromTheSourceToItsPlace) {
    EXPECT_EQ(copy.path(), path);
    EXPECT_TRUE(copy.sourceExists());
    EXPECT_TRUE(copy.recycleOld());
    EXPECT_TRUE(copy.create(error));
    EXPECT_EQ(copy.read(error), "the user's");
    copy.save(*document, error);
    EXPECT_EQ(copy.read(error), kSoundXMEML);
    EXPECT_EQ(copy.swap(error), WorkingCopy::Swap::done);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(test::readBytes(source), kSoundXMEML);
    EXPECT_EQ(test::readBytes(trash() + "/Cut.xml"), "the user's");
    EXPECT_EQ(names(), Strings{"Cut.xml"});
}

TEST_F(WorkingCopyTest, isRemovedWithoutATrace) {
    ASSERT_TRUE(copy.create(error));
    copy.save(*document, error);
    copy.remove(error);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(names(), Strings{"Cut.xml"});
    EXPECT_EQ(test::readBytes(source), "the user's");
}

TEST_F(WorkingCopyTest, thatIsNotThereCannotBeRemoved) {
    copy.remove(error);
    EXPECT_TRUE(error.has_value());
}

TEST_F(WorkingCopyTest, isNotMadeOverAnother) {
    ASSERT_TRUE(copy.create(error));
    EXPECT_FALSE(another.create(error));
    EXPECT_TRUE(error.has_value());
}

TEST_F(WorkingCopyTest, thatAnotherRunRecycledIsMadeAgain) {
    ASSERT_TRUE(copy.create(error));
    ASSERT_TRUE(another.recycleOld());
    EXPECT_EQ(copy.read(error), "the user's");
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
    ASSERT_TRUE(another.recycleOld());
    copy.save(*document, error);
    EXPECT_EQ(copy.swap(error), WorkingCopy::Swap::done);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(WorkingCopyTest, ofTheLastRunToSaveTakesTheSourcesPlace) {
    ASSERT_TRUE(copy.create(error));
    ASSERT_TRUE(another.recycleOld());
    ASSERT_TRUE(another.create(error));
    copy.save(*document, error);
    another.save(*document, error);
    EXPECT_EQ(copy.swap(error), WorkingCopy::Swap::foreign);
    EXPECT_EQ(test::readBytes(source), "the user's");
    EXPECT_EQ(another.swap(error), WorkingCopy::Swap::done);
    EXPECT_EQ(test::readBytes(source), kSoundXMEML);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(WorkingCopyTest, ofAnotherRunIsNotRemovedAndNotSwapped) {
    ASSERT_TRUE(copy.create(error));
    ASSERT_TRUE(another.recycleOld());
    ASSERT_TRUE(another.create(error));
    copy.remove(error);
    EXPECT_EQ(copy.swap(error), WorkingCopy::Swap::foreign);
    EXPECT_EQ(another.read(error), "the user's");
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(WorkingCopyTest, neverTakesForItsOwnWhatAnotherRunSaves) {
    constexpr int kRounds = 300;
    std::atomic<bool> isOver = false;
    std::thread saving([&] {
        while (!isOver) {
            ErrorSlot ignored;
            copy.save(*document, ignored);
        }
    });
    int looks = 0;
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        ErrorSlot ignored;
        if (another.recycleOld() && another.create(ignored)) {
            ++looks;
            EXPECT_EQ(another.read(ignored), "the user's") << "in round " << round;
        }
        std::filesystem::remove_all(trash());
    }
    isOver = true;
    saving.join();
    EXPECT_GT(looks, 0);
}

TEST_F(WorkingCopyTest, thatWasNeverSavedDoesNotTakeTheSourcesPlace) {
    ASSERT_TRUE(copy.create(error));
    EXPECT_EQ(copy.swap(error), WorkingCopy::Swap::unsaved);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(names(), (Strings{"Cut-backup.xml", "Cut.xml"}));
    EXPECT_FALSE(test::exists(trash()));
}

TEST_F(WorkingCopyTest, thatWasSavedAndMadeAnewDoesNotTakeTheSourcesPlace) {
    ASSERT_TRUE(copy.create(error));
    copy.save(*document, error);
    ASSERT_TRUE(another.recycleOld());
    EXPECT_EQ(copy.read(error), "the user's");
    EXPECT_EQ(copy.swap(error), WorkingCopy::Swap::unsaved);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(WorkingCopyTest, isTakenForForeignAlsoWhenItsInodeNumberIsUsedAgain) {
    ASSERT_TRUE(copy.create(error));
    struct stat before {};
    ASSERT_EQ(lstat(path.c_str(), &before), 0);
    // A volume that gives numbers out again gives the same one to the next file.
    for (int time = 0; time < 20; ++time) {
        std::filesystem::remove(path);
        std::filesystem::create_symlink(source, path);
        struct stat after {};
        ASSERT_EQ(lstat(path.c_str(), &after), 0);
        EXPECT_NE(after.st_ino, before.st_ino);
    }
    copy.save(*document, error);
    EXPECT_EQ(test::readBytes(source), "the user's");
}

TEST_F(WorkingCopyTest, cannotBeSavedOverAFolder) {
    ASSERT_TRUE(copy.create(error));
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    copy.save(*document, error);
    EXPECT_TRUE(error.has_value());
    EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST_F(WorkingCopyTest, staysWhenTheSourceHasGone) {
    ASSERT_TRUE(copy.create(error));
    copy.save(*document, error);
    std::filesystem::remove(source);
    EXPECT_FALSE(copy.sourceExists());
    EXPECT_EQ(copy.swap(error), WorkingCopy::Swap::failed);
    EXPECT_EQ(test::readBytes(path), kSoundXMEML);
    EXPECT_TRUE(log.entries().back().starts_with("The file " + source + " could not be moved"));
}

}  // namespace
}  // namespace vornic
