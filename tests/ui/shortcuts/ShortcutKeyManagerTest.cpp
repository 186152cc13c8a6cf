#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include <gmock/gmock.h>

#include "tests/support/machine/Waiting.h"
#include "tests/ui/shortcuts/ShortcutKeyFixture.h"
#include "ui/shortcuts/ShortcutKeyManager.h"

namespace vornic {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Clock = std::chrono::steady_clock;

class ShortcutKeyManagerTest : public test::ShortcutKeyFixture {
  protected:
    ~ShortcutKeyManagerTest() override { endHangingManager(); }

    // A manager that writes its process id down and never ends.
    void installHangingManager() {
        std::filesystem::create_directories(std::filesystem::path(manager).parent_path());
        test::writeBytes(manager, "#!/bin/sh\necho $$ > '" + idFile + ".part'\nmv '" + idFile +
                                      ".part' '" + idFile + "'\nexec sleep 300\n");
        std::filesystem::permissions(manager, std::filesystem::perms(0755));
    }
    [[nodiscard]] bool hasStarted() const { return test::exists(idFile); }
    void waitForStart() const {
        ASSERT_TRUE(test::becomesTrue([this] { return hasStarted(); }));
    }
    [[nodiscard]] bool isRunning() const {
        return kill(std::stoi(test::readBytes(idFile)), 0) == 0;
    }
    void endHangingManager() const {
        if (hasStarted()) {
            kill(std::stoi(test::readBytes(idFile)), SIGKILL);
        }
    }

    std::string idFile = sandbox.path("id");
};

TEST_F(ShortcutKeyManagerTest, liesInTheUsersApplicationSupport) {
    EXPECT_EQ(ShortcutKeyManager::path(), manager);
    EXPECT_EQ(ShortcutKeyManager::kTimeLimit, 10s);
}

TEST_F(ShortcutKeyManagerTest, isThereWhenItCanBeRun) {
    EXPECT_FALSE(ShortcutKeyManager::exists());
    const auto program = installManager();
    EXPECT_TRUE(ShortcutKeyManager::exists());
    std::filesystem::permissions(manager, std::filesystem::perms(0644));
    EXPECT_FALSE(ShortcutKeyManager::exists());
}

TEST_F(ShortcutKeyManagerTest, isRunWithASingleArgument) {
    const auto program = installManager();
    test::ConsoleCapture console;
    ShortcutKeyManager::setup();
    EXPECT_THAT(program.takeArguments(), ElementsAre("-setup"));
    EXPECT_TRUE(platform::joinDetachedThreads(20s));
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(ShortcutKeyManagerTest, isReportedMissing) {
    constexpr const char* kMessage =
        "Unable to setup shortcut keys - shortcut key manager doesn't exist. Please reinstall this "
        "software.";
    test::ConsoleCapture console;
    ShortcutKeyManager::setup();
    EXPECT_THAT(console.lines(), ElementsAre(kMessage));
}

TEST_F(ShortcutKeyManagerTest, holdsNobodyUp) {
    installHangingManager();
    const auto before = Clock::now();
    ShortcutKeyManager::setup();
    EXPECT_LT(Clock::now() - before, 2s);
    waitForStart();
}

TEST_F(ShortcutKeyManagerTest, isGivenUpWhenItIsTooSlow) {
    installHangingManager();
    ShortcutKeyManager::setup(100ms);
    waitForStart();
    const std::string message = "The shortcut key manager is still busy: " + manager;
    EXPECT_TRUE(test::becomesTrue([&] { return log.contains(message); }));
    EXPECT_THAT(log.entries(), Contains(message));
    EXPECT_TRUE(isRunning()) << "nothing ends it";
}

TEST_F(ShortcutKeyManagerTest, doesNotKeepTheProgramFromEnding) {
    installHangingManager();
    ShortcutKeyManager::setup();
    waitForStart();
    const auto before = Clock::now();
    EXPECT_TRUE(platform::joinDetachedThreads(30s));
    EXPECT_LT(Clock::now() - before, 8s) << "the limit is longer than that";
    EXPECT_TRUE(isRunning());
}

TEST_F(ShortcutKeyManagerTest, isStillRunWhenTheProgramEndsAtOnce) {
    const auto program = installManager();
    ShortcutKeyManager::setup();
    EXPECT_TRUE(platform::joinDetachedThreads(30s));
    EXPECT_THAT(program.takeArguments(), ElementsAre("-setup"));
}

}  // namespace
}  // namespace vornic
