#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include <gmock/gmock.h>
#include <unistd.h>

#include "foundation/log/QMLog.h"
#include "platform/settings/Bundle.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/CapturedChild.h"
#include "tests/support/texts/LogText.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// The super-user's log, on a machine whose /var/lib is the test's own.
class LogOfRootTest : public test::SandboxTest {
  protected:
    static constexpr const char* kMachinesLog = "/var/lib/quillmark/Logs/Quillmark/Vornic.1.log";

    [[nodiscard]] std::string usersLog(int number) const {
        return sandbox.home() + "/.local/share/quillmark/Logs/Quillmark/Vornic." +
               std::to_string(number) + ".log";
    }

    void asRoot(const std::function<void()>& function) const {
        const test::ChildOutcome outcome = test::runInChild([&] {
            const test::PrivateMounts mounts;
            if (getuid() != 0 || !mounts.mountVolume("/var/lib", "tmpfs", "mode=755")) {
                _exit(test::kChildSkipped);
            }
            // The thread of the log must be gone before the mounts go.
            EXPECT_TRUE(test::passesInChild([&] {
                platform::Bundle::setMainBundle(platform::Bundle(sandbox.path("None.app")));
                function();
            }));
        });
        if (outcome.status == test::kChildSkipped) {
            GTEST_SKIP() << "needs root and the right to mount";
        }
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
    }
};

TEST_F(LogOfRootTest, keepsTheCurrentLogOfTheSuperUserInTheMachinesFolder) {
    asRoot([this] {
        QMLog::createNewLog();
        QMLog::appendLog("of root");
        QMLog::finishWriting();
        EXPECT_EQ(test::logMessages(test::readBytes(kMachinesLog)).back(), "of root");
        EXPECT_TRUE(fs::is_directory(fs::path(usersLog(1)).parent_path()));
        EXPECT_FALSE(test::exists(usersLog(1)));
        EXPECT_THAT(QMLog::availableLogs(), IsEmpty());
    });
}

TEST_F(LogOfRootTest, movesTheOlderLogsOfTheUsersFolder) {
    fs::create_directories(fs::path(usersLog(1)).parent_path());
    std::ofstream(usersLog(1)) << "old 1\n";
    std::ofstream(usersLog(5)) << "old 5\n";
    asRoot([this] {
        QMLog::createNewLog();
        QMLog::finishWriting();
        EXPECT_TRUE(test::exists(usersLog(1))) << "there was no current log yet";
        QMLog::createNewLog();
        QMLog::finishWriting();
        EXPECT_FALSE(test::exists(usersLog(1)));
        EXPECT_EQ(test::readBytes(usersLog(2)), "old 1\n");
        EXPECT_FALSE(test::exists(usersLog(5)));
        EXPECT_EQ(test::logMessages(test::readBytes(kMachinesLog)).size(), 3U) << "begun anew";
        EXPECT_FALSE(test::exists("/var/lib/quillmark/Logs/Quillmark/Vornic.2.log"));
    });
}

TEST_F(LogOfRootTest, reopensTheCurrentLogInTheMachinesFolder) {
    asRoot([] {
        fs::create_directories(fs::path(kMachinesLog).parent_path());
        std::ofstream(kMachinesLog) << "2026-11-21 07:05:00 +0000 - old\n";
        QMLog::appendLog("new");
        QMLog::finishWriting();
        EXPECT_THAT(test::logMessages(test::readBytes(kMachinesLog)), ElementsAre("old", "new"));
    });
}

}  // namespace
}  // namespace vornic
