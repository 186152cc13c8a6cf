#ifndef VORNIC_TESTS_SUPPORT_MACHINE_AUTHORIZATION_MACHINE_H
#define VORNIC_TESTS_SUPPORT_MACHINE_AUTHORIZATION_MACHINE_H

#include <memory>
#include <string>

#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

/// A view of the machine, of this process's and its children's own, with a throw-away user, rules
/// for sudo and a polkit whose bus nobody else sees. Needs root. Nothing of it outlasts the object.
class AuthorizationMachine {
  public:
    static constexpr const char* kUser = "vornictest";
    static constexpr const char* kPassword = "right password";
    /// A folder of root's, empty but for what this class puts there.
    static constexpr const char* kFolder = "/mnt";

    AuthorizationMachine();
    ~AuthorizationMachine();
    AuthorizationMachine(const AuthorizationMachine&) = delete;
    AuthorizationMachine& operator=(const AuthorizationMachine&) = delete;

    /// Why there is no such view here; "" when there is one.
    [[nodiscard]] const std::string& fault() const { return fault_; }

    /// Puts a sudoers file in place. @return why sudo cannot be had here; "" on success.
    [[nodiscard]] std::string setUpSudo(const std::string& rules);
    /// Starts a bus and polkit, with the policy of the project and one rule, a body of a function
    /// of `action` and `subject`. @return why polkit cannot be had here; "" on success.
    [[nodiscard]] std::string setUpPolkit(const std::string& rule);

    /// The root helper, within everybody's reach.
    [[nodiscard]] static std::string helper();
    /// Makes the calling process, a child, the throw-away user's, without a terminal.
    static void becomeUser();

  private:
    PrivateMounts mounts_;
    std::string fault_;
    std::unique_ptr<RunningProgram> bus_;
    std::unique_ptr<RunningProgram> polkit_;
};

}  // namespace vornic::test

#endif
