#include "platform/AuthorizationHelper.h"

#include <utility>

#include "platform/AuthorizationProtocol.h"
#include "platform/Exception.h"
#include "platform/Pipe.h"
#include "platform/PrivilegedTools.h"
#include "platform/Process.h"

namespace vornic::platform {
namespace {

bool isAllowed(const ToolRequest& request, const PathGuard& guard) {
    const std::optional<PrivilegedRun> run = allowedPrivilegedRun(request.tool, request.arguments);
    return run && (!run->takenAway || !guard(*run->takenAway));
}

/// Starts a tool whose output goes into the pipe, or nowhere without one.
void start(const ToolRequest& request, FileDescriptor output) {
    Process process;
    process.setLaunchPath(request.tool);
    process.setArguments(request.arguments);
    process.setEnvironment(
        Process::Environment{{"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"}, {"LC_ALL", "C"}});
    process.setNullDevice(StandardStream::input);
    process.setNullDevice(StandardStream::error);
    if (output) {
        process.setDescriptor(StandardStream::output, std::move(output));
    } else {
        process.setNullDevice(StandardStream::output);
    }
    process.launch();
}

/// Sends a tool's output on until its end. @return false when the other end has gone.
bool forwardOutput(int socket, const FileDescriptor& output) {
    std::string chunk;
    do {
        try {
            chunk = readAvailable(output.get());
        } catch (const Exception&) {
            chunk.clear();
        }
        for (std::size_t sent = 0; sent < chunk.size(); sent += kLargestOutputMessage) {
            const std::string_view part =
                std::string_view(chunk).substr(sent, kLargestOutputMessage);
            if (!sendMessage(socket, encodeOutput(part))) {
                return false;
            }
        }
    } while (!chunk.empty());
    return sendMessage(socket, encodeOutput(""));
}

/// @return false when the other end has gone.
bool answer(int socket, const ToolRequest& request, const PathGuard& guard) {
    if (!isAllowed(request, guard)) {
        return sendMessage(socket, encodeStatus(kAuthorizationDenied));
    }
    Pipe output;
    try {
        if (request.wantsOutput) {
            output = makePipe();
        }
        start(request, std::move(output.writingEnd));
    } catch (const Exception&) {
        return sendMessage(socket, encodeStatus(kAuthorizationToolExecuteFailure));
    }
    return sendMessage(socket, encodeStatus(kAuthorizationSuccess)) &&
           (!request.wantsOutput || forwardOutput(socket, output.readingEnd));
}

}  // namespace

int serveAuthorizedTools(int socket, const PathGuard& guard) {
    bool isHeard = sendMessage(socket, kHelperGreeting);
    while (isHeard) {
        const std::optional<std::string> message = receiveMessage(socket);
        if (!message) {
            break;
        }
        const std::optional<ToolRequest> request = decodeRequest(*message);
        if (!request) {
            return 1;
        }
        isHeard = answer(socket, *request, guard);
    }
    return 0;
}

}  // namespace vornic::platform
