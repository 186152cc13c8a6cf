#include <array>
#include <cerrno>

#include <sys/stat.h>
#include <sys/syscall.h>

#include "foundation/copies/FileCopyDestination.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/CapturedChild.h"
#include "tests/support/programs/ConsoleCapture.h"

namespace vornic {
namespace {

class FileCopyDestinationTest : public test::SandboxTest {
  protected:
    [[nodiscard]] static std::string readBack(FileCopyDestination& destination, std::size_t count) {
        std::array<char, 100> block{};
        return {block.data(), destination.readBack(block.data(), count)};
    }
};

TEST_F(FileCopyDestinationTest, readsBackWhatItHasJustWritten) {
    FileCopyDestination destination(sandbox.path("file"));
    ASSERT_TRUE(destination.open(0600) && destination.truncate());
    EXPECT_TRUE(destination.write("first", 5));
    EXPECT_EQ(readBack(destination, 5), "first");
    EXPECT_TRUE(destination.write(" second", 7));
    EXPECT_EQ(readBack(destination, 7), " second");
    destination.close();
    EXPECT_EQ(test::readBytes(sandbox.path("file")), "first second");
}

TEST_F(FileCopyDestinationTest, readsBackFromTheFileAndNotFromMemory) {
    FileCopyDestination destination(sandbox.path("file"));
    ASSERT_TRUE(destination.open(0600) && destination.truncate());
    EXPECT_TRUE(destination.write("first", 5));
    test::writeBytes(sandbox.path("file"), "other");
    EXPECT_EQ(readBack(destination, 5), "other");
}

TEST_F(FileCopyDestinationTest, readsBackLessThanWasMeantToBeWritten) {
    FileCopyDestination destination(sandbox.path("file"));
    ASSERT_TRUE(destination.open(0600) && destination.truncate());
    EXPECT_TRUE(destination.write("first", 5));
    EXPECT_EQ(readBack(destination, 50), "first");
}

/// A double for volumes that cannot seek, of which there is no other at hand.
TEST_F(FileCopyDestinationTest, reportsThatItCannotSeekAndReadsOn) {
    const std::string path = sandbox.path("file");
    const test::ChildOutcome outcome = test::runInChild([&] {
        ASSERT_TRUE(test::failSystemCall(SYS_lseek, ESPIPE));
        FileCopyDestination destination(path);
        ASSERT_TRUE(destination.open(0600) && destination.truncate());
        EXPECT_TRUE(destination.write("first", 5));
        EXPECT_EQ(readBack(destination, 5), "");
    });
    EXPECT_EQ(test::consoleTexts(outcome.errors),
              (std::vector<std::string>{"Error: unable to seek within file " + path,
                                        "cur pos: 18446744073709551615", "read size: 5",
                                        "errno: 29", "err: 0"}));
    EXPECT_EQ(test::readBytes(path), "first");
}

TEST_F(FileCopyDestinationTest, changesNothingBeforeItIsTruncated) {
    const std::string path = sandbox.write("file", "older");
    FileCopyDestination destination(path);
    EXPECT_TRUE(destination.open(0600));
    EXPECT_EQ(test::readBytes(path), "older");
    EXPECT_TRUE(destination.truncate());
    EXPECT_EQ(test::readBytes(path), "");
}

TEST_F(FileCopyDestinationTest, removesOnlyTheFileThatItMade) {
    const std::string path = sandbox.write("file", "older");
    FileCopyDestination older(path);
    FileCopyDestination made(sandbox.path("new"));
    EXPECT_TRUE(older.open(0600));
    EXPECT_TRUE(made.open(0600));
    older.abandon();
    made.abandon();
    EXPECT_EQ(test::readBytes(path), "older");
    EXPECT_FALSE(test::exists(sandbox.path("new")));
}

TEST_F(FileCopyDestinationTest, makesANewFileWithTheModeThatIsGiven) {
    const mode_t previous = umask(022);
    FileCopyDestination destination(sandbox.path("file"));
    EXPECT_TRUE(destination.open(0660));
    umask(previous);
    EXPECT_EQ(test::fileState(sandbox.path("file")).mode & 07777U, 0640U);
}

}  // namespace
}  // namespace vornic
