#ifndef VORNIC_TESTS_FOUNDATION_RIGHTS_AUTHORIZATION_TEST_H
#define VORNIC_TESTS_FOUNDATION_RIGHTS_AUTHORIZATION_TEST_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/rights/QMAuthorization.h"
#include "tests/support/fakes/RecordingAuthorizationHost.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ConsoleCapture.h"
#include "tests/support/texts/LogCapture.h"

namespace vornic::test {

/// Tests of privileged operations in which no tool is ever run.
class AuthorizationTest : public ::testing::Test {
  protected:
    /// The messages on the console so far, without date and process. Ends the capture.
    [[nodiscard]] std::vector<std::string> console() { return console_.lines(); }

    /// An instance in the recording process, which may ask the user unless it is said otherwise.
    [[nodiscard]] std::unique_ptr<QMAuthorization> make(bool hasGUI = true) const {
        return std::make_unique<QMAuthorization>(hasGUI, host);
    }
    /// An instance in a process of the super-user.
    [[nodiscard]] std::unique_ptr<QMAuthorization> makeForSuperUser(bool hasGUI = true) const {
        host->superUser = true;
        return make(hasGUI);
    }
    [[nodiscard]] std::vector<std::string> runs() const { return host->runs(); }

    Unprivileged user;
    Sandbox sandbox;
    LogCapture log;
    std::shared_ptr<RecordingAuthorizationHost> host =
        std::make_shared<RecordingAuthorizationHost>();

  private:
    ConsoleCapture console_;
};

}  // namespace vornic::test

#endif
