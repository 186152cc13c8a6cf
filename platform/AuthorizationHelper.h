#ifndef VORNIC_PLATFORM_AUTHORIZATION_HELPER_H
#define VORNIC_PLATFORM_AUTHORIZATION_HELPER_H

#include <functional>
#include <string>

namespace vornic::platform {

/// What the helper keeps its hands off, whoever asks for it. Each says of an absolute path that it
/// is forbidden.
struct PathGuards {
    /// To remove it or to move it away.
    std::function<bool(const std::string& path)> takingAway;
    /// To write over it or into it.
    std::function<bool(const std::string& path)> replacing;
};

/// The work of the helper process: greets, then runs the allowed tools that it is asked for over
/// the socket, one request after the other, until the other end goes. Tools get a fixed
/// environment, no input, and of the helper's descriptors only the folders that hold what they take
/// away or replace, so that they act in the folders that the guards were asked about. Tools that
/// nobody waits for any more run on after it.
/// @return the exit status: 0 when the other end went, 1 when it did not keep to the protocol.
[[nodiscard]] int serveAuthorizedTools(int socket, const PathGuards& guards);

}  // namespace vornic::platform

#endif
