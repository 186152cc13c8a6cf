#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/locks/FileLock.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::platform {
namespace {

using namespace std::chrono_literals;

class FileLockTest : public test::SandboxTest {
  protected:
    [[nodiscard]] std::optional<FileLock> acquire(std::chrono::milliseconds limit) {
        return FileLock::acquire(path, limit, error);
    }

    std::string path = sandbox.path("list.plist");
    ErrorSlot error;
};

TEST_F(FileLockTest, standsInAFileBesideTheFile) {
    const auto lock = acquire(0ms);
    EXPECT_TRUE(lock);
    EXPECT_TRUE(test::exists(sandbox.path(".list.plist.lock")));
    EXPECT_FALSE(test::exists(path));
}

TEST_F(FileLockTest, isHadByOneAtATime) {
    auto first = acquire(0ms);
    ASSERT_TRUE(first);
    EXPECT_FALSE(acquire(50ms));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EAGAIN);
    first.reset();
    EXPECT_TRUE(acquire(0ms));
}

TEST_F(FileLockTest, endsWithAProgramThatIsKilled) {
    test::ChildProcess holder([this] {
        const auto lock = acquire(0ms);
        EXPECT_TRUE(lock);
        raise(SIGKILL);
    });
    EXPECT_TRUE(WIFSIGNALED(holder.wait()));
    EXPECT_TRUE(acquire(0ms));
}

TEST_F(FileLockTest, isRefusedWhereTheLockFileIsALink) {
    ASSERT_EQ(symlink("/etc/passwd", sandbox.path(".list.plist.lock").c_str()), 0);
    EXPECT_FALSE(acquire(0ms));
    EXPECT_EQ(error->code, ELOOP);
}

}  // namespace
}  // namespace vornic::platform
