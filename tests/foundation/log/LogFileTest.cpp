#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>

#include <sys/resource.h>

#include "foundation/log/LogFile.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

class LogFileTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
};

TEST_F(LogFileTest, opensNoFileThatIsNotThere) {
    EXPECT_EQ(LogFile::open(sandbox.path("a.log")), nullptr);
    EXPECT_FALSE(test::exists(sandbox.path("a.log")));
}

TEST_F(LogFileTest, opensNoFileThatCannotBeWritten) {
    const std::string path = sandbox.write("a.log", "");
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    EXPECT_EQ(LogFile::open(path), nullptr);
    EXPECT_EQ(LogFile::open(sandbox.folder()), nullptr);
}

TEST_F(LogFileTest, appendsBehindWhateverIsThere) {
    const std::string path = sandbox.write("a.log", "old ");
    const auto first = LogFile::open(path);
    const auto second = LogFile::open(path);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->append("one ").byteCount, 4U);
    EXPECT_EQ(second->append("two ").byteCount, 4U);
    EXPECT_EQ(first->append("three").errorNumber, 0);
    EXPECT_EQ(test::readBytes(path), "old one two three");
}

TEST_F(LogFileTest, keepsToItsFileWhenThatIsRenamed) {
    const std::string path = sandbox.write("a.log", "");
    const auto file = LogFile::open(path);
    ASSERT_TRUE(file);
    std::filesystem::rename(path, sandbox.path("b.log"));
    EXPECT_EQ(file->append("text").byteCount, 4U);
    EXPECT_EQ(test::readBytes(sandbox.path("b.log")), "text");
    EXPECT_FALSE(test::exists(path));
}

TEST_F(LogFileTest, reportsHowMuchOfTheBytesFoundRoom) {
    const std::string path = sandbox.write("a.log", "");
    EXPECT_TRUE(test::passesInChild([&] {
        const auto file = LogFile::open(path);
        ASSERT_TRUE(file);
        static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
        const rlimit limit{.rlim_cur = 6, .rlim_max = RLIM_INFINITY};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        const LogFile::Appended appended = file->append("0123456789");
        EXPECT_EQ(appended.byteCount, 6U);
        EXPECT_EQ(appended.errorNumber, EFBIG);
    }));
    EXPECT_EQ(test::readBytes(path), "012345");
}

}  // namespace
}  // namespace vornic
