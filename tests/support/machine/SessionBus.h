#ifndef VORNIC_TESTS_SUPPORT_MACHINE_SESSION_BUS_H
#define VORNIC_TESTS_SUPPORT_MACHINE_SESSION_BUS_H

#include <chrono>
#include <csignal>
#include <memory>
#include <string>
#include <thread>

#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

/// A message bus of its own (dbus-daemon) while the object lives.
class SessionBus {
  public:
    /// @param folder where the bus puts its socket
    explicit SessionBus(const std::string& folder) {
        if (!exists(kDaemon)) {
            return;
        }
        const std::string socket = folder + "/bus";
        daemon_ = std::make_unique<RunningProgram>(ProgramSettings{
            .program = kDaemon,
            .arguments = {"--session", "--nofork", "--nopidfile", "--address=unix:path=" + socket},
            .environment = {"PATH=/usr/bin:/bin"}});
        if (becomesTrue([&] { return exists(socket); })) {
            address_ = "unix:path=" + socket;
        }
    }
    ~SessionBus() {
        if (daemon_) {
            daemon_->sendSignal(SIGTERM);
            daemon_->finish();
        }
    }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    /// "" where there is no such program or it did not come up.
    [[nodiscard]] const std::string& address() const { return address_; }

  private:
    static constexpr const char* kDaemon = "/usr/bin/dbus-daemon";
    std::unique_ptr<RunningProgram> daemon_;
    std::string address_;
};

}  // namespace vornic::test

#endif
