#ifndef VORNIC_PLATFORM_RIGHTS_AUTHORIZATION_PROTOCOL_H
#define VORNIC_PLATFORM_RIGHTS_AUTHORIZATION_PROTOCOL_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/rights/AuthorizationServices.h"
#include "platform/rights/HeldPath.h"

/// What a program and its root helper say to each other, over a socket that keeps messages apart
/// (SOCK_SEQPACKET). The helper greets. Each request is answered by a status; where output was
/// asked for and the tool was started, messages with output follow, the last of them empty.
namespace vornic::platform {

inline constexpr std::string_view kHelperGreeting = "vornic-auth-helper 2";
/// The most output that one message carries.
inline constexpr std::size_t kLargestOutputMessage = 32768;

/// A request to run a tool.
struct ToolRequest {
    bool wantsOutput = false;
    std::string tool;
    std::vector<std::string> arguments;
    /// What stood at each argument that is a path; one for each argument.
    std::vector<SeenPath> seen;
    friend bool operator==(const ToolRequest&, const ToolRequest&) = default;
};

/// Looks at the paths among the arguments of a tool that may have rights; nothing is known of what
/// another is given. Any thread.
[[nodiscard]] std::vector<SeenPath> lookAtArguments(const std::string& tool,
                                                    const std::vector<std::string>& arguments);

/// @return nothing when a text contains a NUL character or the message would be too long.
[[nodiscard]] std::optional<std::string> encodeRequest(const ToolRequest& request);
[[nodiscard]] std::optional<ToolRequest> decodeRequest(std::string_view message);

[[nodiscard]] std::string encodeStatus(AuthorizationStatus status);
[[nodiscard]] std::optional<AuthorizationStatus> decodeStatus(std::string_view message);

[[nodiscard]] std::string encodeOutput(std::string_view output);
[[nodiscard]] std::optional<std::string> decodeOutput(std::string_view message);

/// @return false when the other end has gone.
[[nodiscard]] bool sendMessage(int socket, std::string_view message);
/// Waits for the next message. @return nothing when the other end has gone, or for what is no
/// message of this kind.
[[nodiscard]] std::optional<std::string> receiveMessage(int socket);

}  // namespace vornic::platform

#endif
