#include <sys/stat.h>

#include "tests/foundation/copies/CopyTest.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/machine/FileState.h"

namespace vornic {
namespace {

using test::copyRecorded;
using test::exists;
using test::Lines;
using test::readBytes;

/// Copies that cannot be begun: what they say, and that they change nothing.
class QMFileManagerCopyRefusalsTest : public test::FileServicesTest {
  protected:
    /// Expects that the copy is refused with that line.
    void expectRefusal(const std::string& from, const Lines& to, const std::string& line) {
        test::ConsoleCapture console;
        EXPECT_FALSE(copyRecorded(from, to, 1, recording));
        EXPECT_EQ(console.lines(), Lines{line});
        EXPECT_EQ(recording.finished, 0);
        EXPECT_EQ(recording.questions(), 0);
    }

    [[nodiscard]] static std::string unopenable(const std::string& path) {
        return "Error: Unable to open destination file " + path + ". Aborting copy process...";
    }

    std::string source = sandbox.write("source", "the source");
    std::string older = sandbox.write("older", "an older file");
    std::string fresh = sandbox.path("fresh");
    test::RecordingCopyDelegate recording;
};

TEST_F(QMFileManagerCopyRefusalsTest, refusesAMissingSource) {
    const std::string missing = sandbox.path("missing 50%");
    expectRefusal(missing, {older, fresh},
                  "Error: File " + missing + " doesn't exist. Aborting copy process...");
    EXPECT_EQ(readBytes(older), "an older file");
    EXPECT_FALSE(exists(fresh));
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesToCopyToNowhere) {
    expectRefusal(source, {},
                  "Error: You must have at least one destination. Aborting copy process...");
}

TEST_F(QMFileManagerCopyRefusalsTest, namesTheMissingSourceBeforeTheMissingDestinations) {
    const std::string missing = sandbox.path("missing");
    expectRefusal(missing, {},
                  "Error: File " + missing + " doesn't exist. Aborting copy process...");
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesAnUnreadableSource) {
    ASSERT_EQ(chmod(source.c_str(), 0), 0);
    expectRefusal(source, {older, fresh},
                  "Error: Unable to read source file " + source + ". Aborting copy process...");
    EXPECT_EQ(readBytes(older), "an older file");
    EXPECT_FALSE(exists(fresh));
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesASourceThatIsNoRegularFile) {
    const std::string pipe = sandbox.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {pipe, sandbox.folder()}) {
        expectRefusal(path, {older},
                      "Error: Unable to read source file " + path + ". Aborting copy process...");
    }
    EXPECT_EQ(readBytes(older), "an older file");
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesADestinationWhoseFolderCannotBeMade) {
    const std::string folder = older + "/folder";
    test::ConsoleCapture console;
    host->executeStatus = -1;
    EXPECT_FALSE(copyRecorded(source, {fresh, folder + "/copy"}, 1, recording));
    EXPECT_EQ(console.lines().back(), "Unable to copy file " + source +
                                          " - destination directory " + folder +
                                          " doesn't exist. Aborting copy process...");
    EXPECT_EQ(runs(), Lines{"execute /bin/mkdir -p " + folder});
    EXPECT_EQ(recording.finished, 0);
    EXPECT_FALSE(exists(fresh));
    EXPECT_EQ(readBytes(older), "an older file");
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesADestinationThatMayNotBeWritten) {
    const std::string locked = sandbox.write("locked", "locked");
    ASSERT_EQ(chmod(locked.c_str(), 0444), 0);
    expectRefusal(source, {older, fresh, locked}, unopenable(locked));
    EXPECT_EQ(readBytes(locked), "locked");
    EXPECT_EQ(readBytes(older), "an older file");
    EXPECT_FALSE(exists(fresh));
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesADestinationInAFolderThatMayNotBeWritten) {
    const std::string folder = sandbox.path("folder");
    ASSERT_EQ(mkdir(folder.c_str(), 0555), 0);
    expectRefusal(source, {older, folder + "/copy"}, unopenable(folder + "/copy"));
    EXPECT_EQ(readBytes(older), "an older file");
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesADestinationThatIsNoRegularFile) {
    const std::string pipe = sandbox.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    expectRefusal(source, {older, pipe}, unopenable(pipe));
    expectRefusal(source, {older, sandbox.folder()}, unopenable(sandbox.folder()));
    expectRefusal(source, {older, "/dev/null"}, unopenable("/dev/null"));
    expectRefusal(source, {older, std::string("a\0b", 3)}, unopenable(std::string("a\0b", 3)));
    EXPECT_EQ(readBytes(older), "an older file");
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesToReplaceAFileOfTheSystem) {
    // All of "/dev" counts as the system's, and here is a part that anyone may write.
    const test::SecondVolume volume;
    const std::string guarded = volume.path("file");
    test::writeBytes(guarded, "the system's");
    const std::string soft = sandbox.path("soft");
    ASSERT_EQ(symlink(guarded.c_str(), soft.c_str()), 0);
    expectRefusal(source, {older, guarded}, unopenable(guarded));
    expectRefusal(source, {older, soft}, unopenable(soft));
    EXPECT_EQ(readBytes(guarded), "the system's");
    EXPECT_EQ(readBytes(older), "an older file");
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesTheSourceAsItsOwnDestination) {
    const test::FileState before = test::fileState(source);
    expectRefusal(source, {source}, unopenable(source));
    const std::string otherWay = sandbox.folder() + "/../files/./source";
    expectRefusal(source, {otherWay}, unopenable(otherWay));
    EXPECT_EQ(test::fileState(source), before);
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesALinkToTheSource) {
    const std::string soft = sandbox.path("soft");
    const std::string hard = sandbox.path("hard");
    ASSERT_EQ(symlink(source.c_str(), soft.c_str()), 0);
    ASSERT_EQ(link(source.c_str(), hard.c_str()), 0);
    expectRefusal(source, {soft}, unopenable(soft));
    expectRefusal(source, {hard}, unopenable(hard));
    expectRefusal(soft, {source}, unopenable(source));
    EXPECT_EQ(readBytes(source), "the source");
    EXPECT_TRUE(exists(soft));
    EXPECT_TRUE(exists(hard));
}

TEST_F(QMFileManagerCopyRefusalsTest, refusesTheSourceBehindOtherDestinationsAndChangesNone) {
    expectRefusal(source, {older, fresh, source}, unopenable(source));
    EXPECT_EQ(readBytes(source), "the source");
    EXPECT_EQ(readBytes(older), "an older file");
    EXPECT_FALSE(exists(fresh));
}

TEST_F(QMFileManagerCopyRefusalsTest, leavesADanglingLinkWhereItWas) {
    const std::string dangling = sandbox.path("dangling");
    ASSERT_EQ(symlink(fresh.c_str(), dangling.c_str()), 0);
    expectRefusal(source, {dangling, source}, unopenable(source));
    EXPECT_TRUE(exists(dangling));
}

}  // namespace
}  // namespace vornic
