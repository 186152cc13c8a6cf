#ifndef VORNIC_TESTS_SUPPORT_MACHINE_VIRTUAL_SCREEN_H
#define VORNIC_TESTS_SUPPORT_MACHINE_VIRTUAL_SCREEN_H

#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

/// A display server without a screen (Xvfb), with a free number of its own, while the object lives.
/// What a program sets on it stays when that program ends.
class VirtualScreen {
  public:
    /// @param number the path of a file in which the server leaves its number
    explicit VirtualScreen(const std::string& number) {
        if (!exists(kServer)) {
            return;
        }
        server_ = std::make_unique<RunningProgram>(ProgramSettings{
            .program = "/bin/sh",
            .arguments = {"-c", "exec " + std::string(kServer) +
                                    " -displayfd 3 -noreset -nolisten tcp 3>'" + number + "'"},
            .environment = {"PATH=/usr/bin:/bin"}});
        waitFor(number);
    }

    /// Ends the server in a way that lets it put its files away.
    ~VirtualScreen() {
        if (server_) {
            server_->sendSignal(SIGTERM);
            server_->finish();
        }
    }
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

    /// What `DISPLAY` is to be; nothing when there is no server or it did not come up.
    [[nodiscard]] const std::optional<std::string>& display() const { return display_; }

  private:
    void waitFor(const std::string& number) {
        std::string text;
        const bool isUp = becomesTrue([&] {
            text = exists(number) ? readBytes(number) : "";
            return text.ends_with('\n');
        });
        if (isUp) {
            display_ = ":" + text.substr(0, text.size() - 1);
        }
    }

    static constexpr const char* kServer = "/usr/bin/Xvfb";
    std::unique_ptr<RunningProgram> server_;
    std::optional<std::string> display_;
};

}  // namespace vornic::test

#endif
