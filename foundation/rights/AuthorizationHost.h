#ifndef VORNIC_FOUNDATION_RIGHTS_AUTHORIZATION_HOST_H
#define VORNIC_FOUNDATION_RIGHTS_AUTHORIZATION_HOST_H

#include <memory>
#include <string>
#include <vector>

#include "platform/rights/AuthorizationServices.h"

namespace vornic {

/// What privileged operations need of the process that they run in. Tests put a double in its place
/// that records what would have run.
class AuthorizationHost {
  public:
    using Arguments = std::vector<std::string>;

    virtual ~AuthorizationHost() = default;
    /// True when the process runs as the super-user (real user id 0).
    [[nodiscard]] virtual bool isSuperUser() const = 0;
    /// Runs a tool with the process's own rights, to its end.
    virtual void runTask(const std::string& tool, const Arguments& arguments) = 0;
    /// Starts a tool with the process's own rights.
    virtual void runTaskAndReturn(const std::string& tool, const Arguments& arguments) = 0;
    [[nodiscard]] virtual platform::AuthorizationServices& services() = 0;
};

/// The process itself.
[[nodiscard]] std::shared_ptr<AuthorizationHost> systemAuthorizationHost();

}  // namespace vornic

#endif
