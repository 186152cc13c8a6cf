#include "platform/rights/AuthorizationProtocol.h"

#include <algorithm>
#include <cerrno>
#include <charconv>

#include <sys/socket.h>
#include <sys/uio.h>

#include "platform/rights/PrivilegedTools.h"

namespace vornic::platform {
namespace {

constexpr std::size_t kLongestMessage = 65536;
constexpr char kRunRequest = 'r';
constexpr char kRunAndReportRequest = 'w';
constexpr char kStatus = 's';
constexpr char kOutput = 'o';

}  // namespace

std::vector<SeenPath> lookAtArguments(const std::string& tool,
                                      const std::vector<std::string>& arguments) {
    std::vector<SeenPath> seen(arguments.size());
    const std::optional<PrivilegedRun> run = allowedPrivilegedRun(tool, arguments);
    for (std::size_t index = run ? run->firstPath : seen.size(); index < seen.size(); ++index) {
        seen[index] = run->action == PrivilegedAction::makeFolder
                          ? lookAtNearestFolder(arguments[index])
                          : lookAtPath(arguments[index]);
    }
    return seen;
}

std::optional<std::string> encodeRequest(const ToolRequest& request) {
    std::string message(1, request.wantsOutput ? kRunAndReportRequest : kRunRequest);
    const auto append = [&](const std::string& text) {
        message.append(text).push_back('\0');
        return text.find('\0') == std::string::npos && message.size() <= kLongestMessage;
    };
    bool fits = append(request.tool);
    for (std::size_t index = 0; index < request.arguments.size(); ++index) {
        fits = fits && append(request.arguments[index]) &&
               append(describe(index < request.seen.size() ? request.seen[index] : SeenPath{}));
    }
    return fits ? std::optional(std::move(message)) : std::nullopt;
}

std::optional<ToolRequest> decodeRequest(std::string_view message) {
    if (message.size() < 2 || message.back() != '\0' ||
        (message[0] != kRunRequest && message[0] != kRunAndReportRequest)) {
        return std::nullopt;
    }
    ToolRequest request{
        .wantsOutput = message[0] == kRunAndReportRequest, .tool = {}, .arguments = {}, .seen = {}};
    message.remove_prefix(1);
    const auto take = [&message] {
        const std::string_view text = message.substr(0, message.find('\0'));
        message.remove_prefix(std::min(text.size() + 1, message.size()));
        return text;
    };
    request.tool = take();
    while (!message.empty()) {
        request.arguments.emplace_back(take());
        const std::optional<SeenPath> seen = seenPathFrom(take());
        if (!seen) {
            return std::nullopt;
        }
        request.seen.push_back(*seen);
    }
    return request;
}

std::string encodeStatus(AuthorizationStatus status) {
    return kStatus + std::to_string(status);
}

std::optional<AuthorizationStatus> decodeStatus(std::string_view message) {
    if (!message.starts_with(kStatus)) {
        return std::nullopt;
    }
    AuthorizationStatus status = 0;
    const char* end = message.data() + message.size();
    const auto [next, error] = std::from_chars(message.data() + 1, end, status);
    return error == std::errc() && next == end ? std::optional(status) : std::nullopt;
}

std::string encodeOutput(std::string_view output) {
    return std::string(1, kOutput).append(output);
}

std::optional<std::string> decodeOutput(std::string_view message) {
    return message.starts_with(kOutput) ? std::optional<std::string>(message.substr(1))
                                        : std::nullopt;
}

bool sendMessage(int socket, std::string_view message) {
    ssize_t sent = 0;
    do {
        sent = send(socket, message.data(), message.size(), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(message.size());
}

std::optional<std::string> receiveMessage(int socket) {
    std::string message(kLongestMessage, '\0');
    struct iovec place {
        message.data(), message.size()
    };
    struct msghdr header {};
    header.msg_iov = &place;
    header.msg_iovlen = 1;
    ssize_t length = 0;
    do {
        length = recvmsg(socket, &header, MSG_CMSG_CLOEXEC);
    } while (length < 0 && errno == EINTR);
    // No message is empty: nothing stands for the end.
    if (length <= 0 || (header.msg_flags & MSG_TRUNC) != 0) {
        return std::nullopt;
    }
    message.resize(static_cast<std::size_t>(length));
    return message;
}

}  // namespace vornic::platform
