#ifndef VORNIC_PLATFORM_RIGHTS_AUTHORIZATION_SERVICES_H
#define VORNIC_PLATFORM_RIGHTS_AUTHORIZATION_SERVICES_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/SecretText.h"
#include "platform/rights/HeldPath.h"

namespace vornic::platform {

/// The outcome of an authorization service: 0 for success, else one of the platform's error codes.
using AuthorizationStatus = std::int32_t;
inline constexpr AuthorizationStatus kAuthorizationSuccess = 0;
inline constexpr AuthorizationStatus kAuthorizationInvalidReference = -60002;
inline constexpr AuthorizationStatus kAuthorizationDenied = -60005;
inline constexpr AuthorizationStatus kAuthorizationCanceled = -60006;
inline constexpr AuthorizationStatus kAuthorizationInteractionNotAllowed = -60007;
inline constexpr AuthorizationStatus kAuthorizationInternalError = -60008;
inline constexpr AuthorizationStatus kAuthorizationToolExecuteFailure = -60031;

using AuthorizationFlags = unsigned;
inline constexpr AuthorizationFlags kAuthorizationFlagDefaults = 0;
inline constexpr AuthorizationFlags kAuthorizationFlagInteractionAllowed = 1;
inline constexpr AuthorizationFlags kAuthorizationFlagExtendRights = 2;
inline constexpr AuthorizationFlags kAuthorizationFlagPreAuthorize = 16;

/// The right to run tools as the super-user, the only one there is.
inline constexpr std::string_view kAdministratorRight = "system.privilege.admin";

/// An authorization of a service's making; what it holds is the service's affair.
class Authorization {
  public:
    Authorization() = default;
    virtual ~Authorization() = default;
    Authorization(const Authorization&) = delete;
    Authorization& operator=(const Authorization&) = delete;
};

/// Null stands for none.
using AuthorizationRef = std::shared_ptr<Authorization>;

/// One piece of what a service is given besides rights, such as a name or a password.
struct AuthorizationItem {
    std::string name;
    SecretText value;
    AuthorizationFlags flags = kAuthorizationFlagDefaults;
};
using AuthorizationEnvironment = std::vector<AuthorizationItem>;
inline constexpr std::string_view kAuthorizationEnvironmentUsername = "username";
inline constexpr std::string_view kAuthorizationEnvironmentPassword = "password";

/// The output of a tool that runs with rights.
class CommunicationsPipe {
  public:
    virtual ~CommunicationsPipe() = default;
    /// Reads what is there, after waiting until there is something.
    /// @return "" once the tool has closed its output.
    [[nodiscard]] virtual std::string readAvailable() = 0;
};

/// Obtains administrator rights and runs tools with them. Nothing is raised.
class AuthorizationServices {
  public:
    virtual ~AuthorizationServices() = default;

    /// Adopts the authorization that a privileged parent handed to this process.
    /// @return a status other than success when there is none, with the reference unchanged.
    [[nodiscard]] virtual AuthorizationStatus copyPrivilegedReference(AuthorizationRef& reference,
                                                                      AuthorizationFlags flags) = 0;
    /// Makes an authorization without rights.
    [[nodiscard]] virtual AuthorizationStatus create(const AuthorizationEnvironment& environment,
                                                     AuthorizationFlags flags,
                                                     AuthorizationRef& reference) = 0;
    /// Obtains a right, with the credentials of the environment or, where the flags allow it, by
    /// asking the user. May take as long as the user does.
    [[nodiscard]] virtual AuthorizationStatus copyRights(
        const AuthorizationRef& reference, std::string_view right,
        const AuthorizationEnvironment& environment, AuthorizationFlags flags) = 0;
    /// Whether an authorization still has the rights that it was given. Those of a program that
    /// ran with them may have ended with it.
    [[nodiscard]] virtual bool isAlive(const AuthorizationRef& /*reference*/) const { return true; }
    /// Whether there is something that can ask the user for rights. Asks for nothing.
    [[nodiscard]] virtual bool canAskUser() const { return true; }
    /// Gives an authorization with its rights up.
    virtual AuthorizationStatus free(const AuthorizationRef& reference,
                                     AuthorizationFlags flags) = 0;
    /// Starts a tool as the super-user and returns at once.
    /// @param arguments what follows the tool's own path, as a list
    /// @param seen what stood at each argument when the run was decided on (`lookAtArguments`):
    /// with
    ///     anything else nothing is done
    /// @param pipe is given the tool's output; null when nobody wants it
    [[nodiscard]] virtual AuthorizationStatus executeWithPrivileges(
        const AuthorizationRef& reference, const std::string& tool, AuthorizationFlags flags,
        const std::vector<std::string>& arguments, const std::vector<SeenPath>& seen,
        std::unique_ptr<CommunicationsPipe>* pipe) = 0;
};

/// The services of this system, for the whole process.
[[nodiscard]] std::shared_ptr<AuthorizationServices> systemAuthorizationServices();

}  // namespace vornic::platform

#endif
