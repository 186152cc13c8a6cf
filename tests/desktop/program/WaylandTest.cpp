// The program on a Wayland compositor, where a window comes to the front only by a token of the
// desktop.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/desktop/ProjectTexts.h"
#include "tests/desktop/program/Waiting.h"
#include "tests/desktop/program/WaylandToken.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCompositor = "/usr/bin/sway";
constexpr const char* kCompositorTool = "/usr/bin/swaymsg";

// @return what is missing on this machine; "" when nothing is.
std::string missingParts() {
    if (!fs::exists(kCompositor) || !fs::exists(kCompositorTool)) {
        return "sway";
    }
    for (const fs::path folder :
         {"/usr/lib", "/usr/lib64", "/usr/lib/x86_64-linux-gnu", "/usr/lib/aarch64-linux-gnu"}) {
        if (fs::exists(folder / "qt6/plugins/platforms/libqwayland-generic.so")) {
            return "";
        }
    }
    return "Qt's platform plugin for Wayland";
}

// Files and folders that a compositor and its programs have to themselves. The compositor refuses
// to run as root.
class WaylandTest : public ::testing::Test {
  private:
    Unprivileged unprivileged_;

  protected:
    void SetUp() override {
        if (const std::string missing = missingParts(); !missing.empty()) {
            GTEST_SKIP() << "needs " << missing;
        }
        fs::create_directories(runFolder);
        fs::permissions(runFolder, fs::perms::owner_all);
        std::ofstream(runFolder + "/config") << "focus_on_window_activation focus\n"
                                                "workspace_layout tabbed\n";
        compositor.emplace(ProgramSettings{.program = kCompositor,
                                           .arguments = {"-c", runFolder + "/config"},
                                           .environment = environment()});
        waitUntil("the compositor", [this] {
            return !socketNamed("wayland-", "").empty() &&
                   !socketNamed("sway-ipc.", "sock").empty();
        });
        display = socketNamed("wayland-", "");
        tree = socketNamed("sway-ipc.", "sock");
    }
    void TearDown() override {
        if (compositor) {
            compositor->sendSignal(SIGTERM);
            compositor->finish();
        }
    }

    // Of the compositor, and of what runs on it once its sockets are there.
    [[nodiscard]] std::vector<std::string> environment() const {
        std::vector<std::string> variables{
            "HOME=" + sandbox.home(),       "PATH=/usr/bin:/bin",        "LANG=C.UTF-8",
            "XDG_RUNTIME_DIR=" + runFolder, "TMPDIR=" + runFolder,       "WLR_BACKENDS=headless",
            "WLR_RENDERER=pixman",          "WLR_LIBINPUT_NO_DEVICES=1", "QT_QPA_PLATFORM=wayland"};
        if (!display.empty()) {
            variables.insert(variables.end(), {"WAYLAND_DISPLAY=" + display, "SWAYSOCK=" + tree});
        }
        return variables;
    }
    [[nodiscard]] ProgramSettings programWith(std::vector<std::string> files,
                                              std::vector<std::string> variables) const {
        for (const std::string& variable : environment()) {
            variables.push_back(variable);
        }
        return {.program = VORNIC_DESKTOP_PROGRAM,
                .arguments = std::move(files),
                .environment = std::move(variables)};
    }
    // The title of the window that has the keyboard; "" for none.
    [[nodiscard]] std::string focused() const {
        const std::string told = runProgram({.program = kCompositorTool,
                                             .arguments = {"-r", "-t", "get_tree"},
                                             .environment = environment()})
                                     .output;
        const auto focusedIn = [](const QJsonObject& node, const auto& self) -> QString {
            if (node[u"focused"].toBool() && node.contains(u"pid")) {
                return node[u"name"].toString();
            }
            for (const QString& children :
                 {QStringLiteral("nodes"), QStringLiteral("floating_nodes")}) {
                for (const QJsonValue& child : node[children].toArray()) {
                    if (const QString found = self(child.toObject(), self); !found.isEmpty()) {
                        return found;
                    }
                }
            }
            return {};
        };
        return focusedIn(QJsonDocument::fromJson(QByteArray::fromStdString(told)).object(),
                         focusedIn)
            .toStdString();
    }

    Sandbox sandbox;
    // Paths of sockets are short.
    std::string runFolder = sandbox.home() + "/.run";
    std::string display;
    std::string tree;
    std::optional<RunningProgram> compositor;

  private:
    [[nodiscard]] std::string socketNamed(const std::string& beginning,
                                          const std::string& ending) const {
        for (const fs::directory_entry& entry : fs::directory_iterator(runFolder)) {
            const std::string name = entry.path().filename();
            if (entry.is_socket() && name.starts_with(beginning) && name.ends_with(ending)) {
                return entry.path();
            }
        }
        return "";
    }
};

TEST_F(WaylandTest, comesToTheFrontWithTheTokenThatALaterStartHandsOver) {
    const std::string path = sandbox.write("cut.xml", kSound);
    RunningProgram first(programWith({path}, {}));
    waitUntil("the document", [this] { return !focused().empty(); });
    RunningProgram other(programWith({}, {"VORNIC_NEW_INSTANCE=1"}));
    waitUntil("another program in front", [this] { return focused().starts_with("Browse for"); });

    EXPECT_EQ(runProgram(programWith({path}, {})).status, 0);
    EXPECT_TRUE(focused().starts_with("Browse for"))
        << "nobody allowed another window: " << focused();

    const std::string token = requestActivationToken(display);
    ASSERT_NE(token, "") << "the compositor knows no tokens";
    EXPECT_EQ(runProgram(programWith({path}, {"XDG_ACTIVATION_TOKEN=" + token})).status, 0);
    EXPECT_TRUE(becomesTrue([this] { return !focused().starts_with("Browse for"); })) << focused();
    for (RunningProgram* const program : {&other, &first}) {
        program->sendSignal(SIGTERM);
        program->finish();
    }
}

}  // namespace
}  // namespace vornic::test
