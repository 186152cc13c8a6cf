#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "platform/locks/FolderLock.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Waiting.h"

namespace vornic::platform {
namespace {

using FolderLockTest = test::SandboxTest;

TEST_F(FolderLockTest, isHeldByOneThreadAtATime) {
    std::atomic<int> inside = 0;
    std::atomic<bool> met = false;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            for (int time = 0; time < 10; ++time) {
                const FolderLock lock(sandbox.folder());
                EXPECT_TRUE(lock.isHeld());
                met = met || ++inside > 1;
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                --inside;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(met);
}

TEST_F(FolderLockTest, isHeldAgainstOtherProcesses) {
    std::optional<FolderLock> lock(std::in_place, sandbox.folder());
    ASSERT_TRUE(lock->isHeld());
    const pid_t child = fork();
    if (child == 0) {
        lock.reset();  // the lock of the parent, which a program started by it would not share
        const FolderLock own(sandbox.folder());
        _exit(own.isHeld() ? 0 : 1);
    }
    EXPECT_TRUE(test::fallsAsleep(child));
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, WNOHANG), 0) << "the other process did not wait";
    lock.reset();
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(FolderLockTest, isGivenBackAtTheEnd) {
    for (int time = 0; time < 3; ++time) {
        EXPECT_TRUE(FolderLock(sandbox.folder()).isHeld());
    }
}

TEST_F(FolderLockTest, leavesNothingInTheFolderAndOtherFoldersFree) {
    const FolderLock lock(sandbox.folder());
    const FolderLock another(sandbox.home());
    EXPECT_TRUE(another.isHeld());
    EXPECT_EQ(rmdir(sandbox.folder().c_str()), 0);
}

TEST_F(FolderLockTest, keepsNobodyWaitingForAFolderThatIsNotThere) {
    EXPECT_FALSE(FolderLock(sandbox.path("none")).isHeld());
    EXPECT_FALSE(FolderLock(sandbox.write("file", "")).isHeld());
}

}  // namespace
}  // namespace vornic::platform
