#ifndef VORNIC_PLATFORM_RIGHTS_LINUX_AUTHORIZATION_SERVICES_H
#define VORNIC_PLATFORM_RIGHTS_LINUX_AUTHORIZATION_SERVICES_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/rights/AuthorizationServices.h"

namespace vornic::platform {

/// The programs that obtaining rights needs.
struct AuthorizationPrograms {
    /// Asks the user through polkit.
    std::string pkexec = "/usr/bin/pkexec";
    /// Takes the caller's password.
    std::string sudo = "/usr/bin/sudo";
    /// The root helper; "" when it is not installed.
    std::string helper;
    /// The system's message bus, and what says that polkit can be had there.
    std::string systemBus = "/run/dbus/system_bus_socket";
    std::string polkitService =
        "/usr/share/dbus-1/system-services/org.freedesktop.PolicyKit1.service";
};

/// The root helper that belongs to the running program: among the helpers of its install, else
/// beside the executable; "" when there is none.
[[nodiscard]] std::string authorizationHelperPath();

/// Administrator rights by a small helper process that runs as root: started once for an
/// authorization, by pkexec when the user may be asked, by sudo when credentials are given, and
/// alive until the authorization is given up or this process ends, because it ends with the socket
/// that this process alone holds. Credentials count only under the caller's own name; they go to
/// sudo through a pipe and nowhere else. Where sudo asks this user for no password, none is
/// checked. Any thread.
class LinuxAuthorizationServices : public AuthorizationServices {
  public:
    explicit LinuxAuthorizationServices(AuthorizationPrograms programs)
        : programs_(std::move(programs)) {}

    /// There is no way to hand rights to a program here: always a failure.
    [[nodiscard]] AuthorizationStatus copyPrivilegedReference(AuthorizationRef& reference,
                                                              AuthorizationFlags flags) override;
    [[nodiscard]] AuthorizationStatus create(const AuthorizationEnvironment& environment,
                                             AuthorizationFlags flags,
                                             AuthorizationRef& reference) override;
    [[nodiscard]] AuthorizationStatus copyRights(const AuthorizationRef& reference,
                                                 std::string_view right,
                                                 const AuthorizationEnvironment& environment,
                                                 AuthorizationFlags flags) override;
    [[nodiscard]] bool isAlive(const AuthorizationRef& reference) const override;
    /// True where pkexec, the helper and the system's message bus with polkit on it are there.
    /// Whether a dialog is there, too, shows only when one is wanted.
    [[nodiscard]] bool canAskUser() const override;
    AuthorizationStatus free(const AuthorizationRef& reference, AuthorizationFlags flags) override;
    [[nodiscard]] AuthorizationStatus executeWithPrivileges(
        const AuthorizationRef& reference, const std::string& tool, AuthorizationFlags flags,
        const std::vector<std::string>& arguments, const std::vector<SeenPath>& seen,
        std::unique_ptr<CommunicationsPipe>* pipe) override;

  private:
    AuthorizationPrograms programs_;
};

}  // namespace vornic::platform

#endif
