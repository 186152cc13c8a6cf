#ifndef VORNIC_PLATFORM_RIGHTS_AUTHORIZATION_HELPER_H
#define VORNIC_PLATFORM_RIGHTS_AUTHORIZATION_HELPER_H

#include <optional>
#include <vector>

#include "platform/rights/PinnedAction.h"
#include "platform/rights/PinnedRun.h"

namespace vornic::platform {

/// The work of the helper process: greets, then does what the allowed tools are asked for over the
/// socket, one request after the other, until the other end goes. What takes no time is done before
/// the answer; the rest goes on beside the next requests, and all of it is ended before this
/// returns.
/// @param runTool runs the tools that are needed
/// @return the exit status: 0 when the other end went, 1 when it did not keep to the protocol.
[[nodiscard]] int serveAuthorizedTools(int socket, const PathGuards& guards,
                                       const ToolRunner& runTool = runSystemTool);

/// The user whose process made the socket, as the system knows it; nothing when it does not.
[[nodiscard]] std::optional<unsigned> callerOf(int socket);

/// The folders of a user that nobody takes away: the home folder of the user database, and the
/// standard folders in it where they usually lie. Those that do not exist are left out.
[[nodiscard]] std::vector<FileIdentity> standardFoldersOf(unsigned user);

}  // namespace vornic::platform

#endif
