#ifndef VORNIC_PLATFORM_AUTHORIZATION_HELPER_H
#define VORNIC_PLATFORM_AUTHORIZATION_HELPER_H

#include <functional>
#include <string>

namespace vornic::platform {

/// Says whether a path must never be removed or moved.
using PathGuard = std::function<bool(const std::string& path)>;

/// The work of the helper process: greets, then runs the allowed tools that it is asked for over
/// the socket, one request after the other, until the other end goes. Tools get a fixed
/// environment, no input, and none of the helper's descriptors; those that nobody waits for run on
/// after it.
/// @param guard asked about every path that a run would take away; a run that it forbids is refused
/// @return the exit status: 0 when the other end went, 1 when it did not keep to the protocol.
[[nodiscard]] int serveAuthorizedTools(int socket, const PathGuard& guard);

}  // namespace vornic::platform

#endif
