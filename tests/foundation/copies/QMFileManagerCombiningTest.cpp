#include <cerrno>
#include <filesystem>

#include <sys/stat.h>
#include <sys/syscall.h>

#include "tests/foundation/copies/CopyTest.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

using test::exists;
using test::Lines;
using test::readBytes;

class QMFileManagerCombiningTest : public test::FileServicesTest {
  protected:
    static void expectRefusal(const Lines& sources, const std::optional<std::string>& destination,
                              const std::string& line) {
        test::ConsoleCapture console;
        EXPECT_FALSE(QMFileManager::combineFiles(sources, destination, true));
        EXPECT_EQ(console.lines(), Lines{line});
    }
    [[nodiscard]] static std::string unopenable(const std::string& path) {
        return "Error: Unable to open destination file " + path +
               ". Aborting combination process...";
    }

    std::string first = sandbox.write("first", "one ");
    std::string second = sandbox.write("second", "two");
    std::string third = sandbox.write("third", " three");
    std::string combined = sandbox.path("combined");
};

TEST_F(QMFileManagerCombiningTest, joinsFilesInTheirOrderAndKeepsThem) {
    const std::string large = sandbox.write("large", test::manyBytes(200'000));
    sandbox.write("combined", std::string(300'000, 'x'));
    EXPECT_TRUE(QMFileManager::combineFiles({second, large, first, second}, combined, false));
    EXPECT_TRUE(readBytes(combined) == "two" + readBytes(large) + "one two");
    EXPECT_EQ(readBytes(first), "one ");
    EXPECT_EQ(readBytes(second), "two");
}

TEST_F(QMFileManagerCombiningTest, removesTheSourcesWhenAskedTo) {
    EXPECT_TRUE(QMFileManager::combineFiles({first, second}, combined, true));
    EXPECT_EQ(readBytes(combined), "one two");
    EXPECT_FALSE(exists(first));
    EXPECT_FALSE(exists(second));
}

TEST_F(QMFileManagerCombiningTest, movesASingleFileWhateverIsAsked) {
    struct stat before {};
    ASSERT_EQ(stat(first.c_str(), &before), 0);
    EXPECT_TRUE(QMFileManager::combineFiles({first}, combined, false));
    EXPECT_FALSE(exists(first));
    EXPECT_EQ(readBytes(combined), "one ");
    struct stat after {};
    ASSERT_EQ(stat(combined.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
}

TEST_F(QMFileManagerCombiningTest, movesASingleFileInPlaceOfAnExistingOne) {
    EXPECT_TRUE(QMFileManager::combineFiles({first}, second, true));
    EXPECT_FALSE(exists(first));
    EXPECT_EQ(readBytes(second), "one ");
}

TEST_F(QMFileManagerCombiningTest, reportsWhenNoSourceIsGiven) {
    expectRefusal({}, combined,
                  "Error: No source file URLs specified. Aborting combination process...");
}

TEST_F(QMFileManagerCombiningTest, reportsWhenNoDestinationIsGiven) {
    const std::string line = "Error: No destination specified. Aborting combination process...";
    expectRefusal({first, second}, std::nullopt, line);
    expectRefusal({first, second}, "", line);
    expectRefusal({first}, "", line);
}

TEST_F(QMFileManagerCombiningTest, looksForAllSourcesBeforeItWrites) {
    const std::string missing = sandbox.path("missing");
    sandbox.write("combined", "older");
    expectRefusal({first, second, missing}, combined,
                  "Error: File " + missing + " doesn't exist. Aborting combination process...");
    EXPECT_EQ(readBytes(combined), "older");
    EXPECT_TRUE(exists(first));
}

TEST_F(QMFileManagerCombiningTest, reportsWhenTheDestinationCannotBeOpened) {
    expectRefusal({first, second}, sandbox.folder(), unopenable(sandbox.folder()));
    expectRefusal({first, second}, sandbox.path("no/folder"),
                  unopenable(sandbox.path("no/folder")));
    EXPECT_TRUE(exists(first));
}

TEST_F(QMFileManagerCombiningTest, stopsAtASourceThatCannotBeOpened) {
    const std::string locked = sandbox.write("locked", "locked");
    ASSERT_EQ(chmod(locked.c_str(), 0), 0);
    expectRefusal(
        {first, locked, second}, combined,
        "Error: Unable to open source file " + locked + ". Aborting combination process...");
    EXPECT_EQ(readBytes(combined), "one ");
    EXPECT_FALSE(exists(first));
    EXPECT_TRUE(exists(locked));
    EXPECT_TRUE(exists(second));
}

TEST_F(QMFileManagerCombiningTest, keepsTheSourcesWhenTheDiskDoesNotTakeWhatWasWritten) {
    test::ChildProcess child([this] {
        ASSERT_TRUE(test::failSystemCall(SYS_fsync, EIO));
        test::ConsoleCapture console;
        EXPECT_TRUE(QMFileManager::combineFiles({first, second}, combined, true));
        EXPECT_EQ(console.lines(), Lines{"Error writing file " + combined + ": 1"});
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(readBytes(first), "one ");
    EXPECT_EQ(readBytes(second), "two");
}

TEST_F(QMFileManagerCombiningTest, keepsTheSourcesWhenTheDestinationCannotBeClosed) {
    test::ChildProcess child([this] {
        ASSERT_TRUE(test::failSystemCall(SYS_close, EIO));
        EXPECT_TRUE(QMFileManager::combineFiles({first, second}, combined, true));
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(readBytes(first), "one ");
    EXPECT_EQ(readBytes(second), "two");
}

TEST_F(QMFileManagerCombiningTest, keepsASourceThatIsReplacedOrWrittenAfterItWasRead) {
    test::ChildProcess child([this] {
        // The sources have been read when the disk is asked to take what was written.
        ASSERT_TRUE(test::interceptSystemCall(SYS_fsync, [this] {
            sandbox.write("newer", "a newer one");
            std::filesystem::rename(sandbox.path("newer"), first);
            sandbox.write("second", "grown since");
            return 0;
        }));
        EXPECT_TRUE(QMFileManager::combineFiles({first, second, third}, combined, true));
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(readBytes(combined), "one two three");
    EXPECT_EQ(readBytes(first), "a newer one");
    EXPECT_EQ(readBytes(second), "grown since");
    EXPECT_FALSE(exists(third));
}

TEST_F(QMFileManagerCombiningTest, appendsASourceThatIsNamedTwice) {
    EXPECT_TRUE(QMFileManager::combineFiles({first, second, first}, combined, true));
    EXPECT_EQ(readBytes(combined), "one twoone ");
    EXPECT_FALSE(exists(first));
    EXPECT_FALSE(exists(second));
}

TEST_F(QMFileManagerCombiningTest, stopsAtASourceThatCannotBeRead) {
    // The first page of a process's memory is never mapped.
    expectRefusal({first, "/proc/self/mem", second}, combined,
                  "Error reading file /proc/self/mem - aborting...");
    EXPECT_TRUE(exists(second));
}

TEST_F(QMFileManagerCombiningTest, refusesADestinationThatIsASource) {
    const std::string soft = sandbox.path("soft");
    ASSERT_EQ(symlink(second.c_str(), soft.c_str()), 0);
    expectRefusal({first, second}, second, unopenable(second));
    expectRefusal({first, second}, soft, unopenable(soft));
    expectRefusal({first, soft}, second, unopenable(second));
    EXPECT_EQ(readBytes(first), "one ");
    EXPECT_EQ(readBytes(second), "two");
}

TEST_F(QMFileManagerCombiningTest, refusesToMoveASingleFileWhereItsContentsWouldBeRemoved) {
    const std::string soft = sandbox.path("soft");
    ASSERT_EQ(symlink(first.c_str(), soft.c_str()), 0);
    expectRefusal({first}, first, unopenable(first));
    expectRefusal({soft}, first, unopenable(first));
    expectRefusal({first}, sandbox.folder(), unopenable(sandbox.folder()));
    EXPECT_EQ(readBytes(first), "one ");
}

TEST(QMFileManagerCombiningVolumeTest, keepsASourceThatCouldNotBeWrittenWhole) {
    const test::PrivateMounts mounts;
    if (!mounts.isAvailable()) {
        GTEST_SKIP() << "volumes can be mounted by root only";
    }
    const test::Sandbox sandbox;
    ASSERT_TRUE(mounts.mountVolume(sandbox.folder(), "tmpfs", "size=1m,mode=1777"));
    const std::string small = sandbox.write("small", "abc");
    const std::string large = sandbox.write("large", test::manyBytes(700'000));
    const std::string combined = sandbox.path("combined");
    test::ConsoleCapture console;
    EXPECT_TRUE(QMFileManager::combineFiles({small, large}, combined, true));
    const Lines lines = console.lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front(), "Error writing file " + combined + ": 1");
    EXPECT_FALSE(exists(small));
    EXPECT_TRUE(readBytes(large) == test::manyBytes(700'000));
}

}  // namespace
}  // namespace vornic
