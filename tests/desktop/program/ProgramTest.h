#ifndef VORNIC_TESTS_DESKTOP_PROGRAM_PROGRAM_TEST_H
#define VORNIC_TESTS_DESKTOP_PROGRAM_PROGRAM_TEST_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "app/AppController.h"
#include "platform/settings/UserPreferences.h"
#include "tests/desktop/ProjectTexts.h"
#include "tests/desktop/program/DesktopSession.h"
#include "tests/desktop/program/DrivenProgram.h"
#include "tests/desktop/program/Waiting.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {

/// A file with a character that XML forbids, which the repair takes out.
inline constexpr const char* kDamaged =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "    <sequence>\n        <name>C\vut</name>\n    </sequence>\n</xmeml>\n";
/// A file that no repair can mend.
inline constexpr const char* kBroken =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "    <sequence>\n</xmeml>\n";
/// A file like `kDamaged` whose repair, which reports each character, is at work for a while.
inline std::string damagedAtLength(std::size_t characters = 2000000) {
    std::string text = kDamaged;
    return text.insert(text.find('\v'), std::string(characters, '\v'));
}
/// The headline of the question about a window that is closed during a run.
inline constexpr const char* kCloseQuestion = "A repair is running. Are you sure you wish to quit?";

/// The title of the sheet of a run.
inline constexpr const char* kProgress = "Repair";

/// How a start of the desktop program differs from that of a user with nothing set.
struct StartSettings {
    std::vector<std::string> arguments = {};
    /// Further variables of the environment, "NAME=value" each; they go before the usual ones.
    std::vector<std::string> environment = {};
    /// Whether the program joins one that runs already.
    bool joinsOthers = false;
};

/// Where the programs of a test write their log. As root the current one is in the machine's
/// folder, which the test then has to itself.
class OwnLogs {
  public:
    explicit OwnLogs(const Sandbox& sandbox)
        : folder_(sandbox.home() + "/.local/share/quillmark/Logs"), currentFolder_(folder_) {
        constexpr const char* kMachineLibrary = "/var/lib/quillmark";
        if (geteuid() == 0) {
            std::filesystem::create_directories(kMachineLibrary);
            EXPECT_TRUE(mounts_.mountVolume(kMachineLibrary, "tmpfs", "mode=755"));
            currentFolder_ = std::string(kMachineLibrary) + "/Logs";
        }
    }
    [[nodiscard]] std::string path(int generation) const {
        return (generation == 1 ? currentFolder_ : folder_) + "/Quillmark/Vornic." +
               std::to_string(generation) + ".log";
    }

  private:
    PrivateMounts mounts_;
    std::string folder_;
    std::string currentFolder_;
};

/// Base class of tests that drive the built desktop program on a desktop of their own.
class ProgramTest : public SandboxTest {
  protected:
    void SetUp() override {
        if (const std::string missing = DesktopSession::missingParts(); !missing.empty()) {
            GTEST_SKIP() << "needs " << missing;
        }
        session = std::make_unique<DesktopSession>(sandbox.home() + "/.session");
    }

    [[nodiscard]] DrivenProgram start(std::vector<std::string> files) const {
        return startWith({.arguments = std::move(files)});
    }
    [[nodiscard]] DrivenProgram startWith(const StartSettings& settings) const {
        std::vector<std::string> environment = settings.environment;
        environment.insert(environment.end(), {"HOME=" + sandbox.home(),
                                               "PATH=" + programFolder() + ":/usr/bin:/bin"});
        if (!settings.joinsOthers) {
            environment.emplace_back("VORNIC_NEW_INSTANCE=1");
        }
        environment.insert(environment.end(), session->environment().begin(),
                           session->environment().end());
        return DrivenProgram(*session, {.program = VORNIC_DESKTOP_PROGRAM,
                                        .arguments = settings.arguments,
                                        .environment = std::move(environment)});
    }
    /// Stores the preference for the programs that start from now on.
    static void showOpenPanelAtStart(int value) {
        ErrorSlot error;
        ASSERT_TRUE(platform::UserPreferences().setValue(AppController::kShowOpenDialogPreference,
                                                         value, error));
    }
    /// Where the program finds other programs first.
    [[nodiscard]] std::string programFolder() const { return sandbox.home() + "/.programs"; }
    [[nodiscard]] std::string trash() const { return sandbox.home() + "/.Trash"; }

    std::unique_ptr<DesktopSession> session;
};

}  // namespace vornic::test

#endif
