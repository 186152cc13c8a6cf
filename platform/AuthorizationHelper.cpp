#include "platform/AuthorizationHelper.h"

#include <utility>
#include <vector>

#include <unistd.h>

#include "platform/AuthorizationProtocol.h"
#include "platform/Exception.h"
#include "platform/HeldPath.h"
#include "platform/PathText.h"
#include "platform/Pipe.h"
#include "platform/PrivilegedTools.h"
#include "platform/Process.h"

namespace vornic::platform {
namespace {

/// A request that has passed every check.
struct CheckedRun {
    ToolRequest request;
    /// The folders that the run's arguments are looked up in.
    std::vector<FileDescriptor> folders;
};

/// Has a tool find a path in a folder that stays the one that the guard was asked about.
/// @return the status to refuse with, or success.
AuthorizationStatus pin(std::string& path,
                        const std::function<bool(const std::string&)>& isForbidden,
                        std::vector<FileDescriptor>& folders) {
    std::optional<HeldPath> held = holdPath(path);
    if (!held) {
        return isForbidden(path) ? kAuthorizationDenied : kAuthorizationToolExecuteFailure;
    }
    if (isForbidden(path) || (held->path() != path && isForbidden(held->path()))) {
        return kAuthorizationDenied;
    }
    const int number = STDERR_FILENO + 1 + static_cast<int>(folders.size());
    path = joinPath(descriptorPath(number), held->name);
    folders.push_back(std::move(held->folder));
    return kAuthorizationSuccess;
}

AuthorizationStatus check(CheckedRun& checked, const PathGuards& guards) {
    std::vector<std::string>& arguments = checked.request.arguments;
    const std::optional<PrivilegedRun> run = allowedPrivilegedRun(checked.request.tool, arguments);
    if (!run) {
        return kAuthorizationDenied;
    }
    AuthorizationStatus status = kAuthorizationSuccess;
    if (run->takenAway) {
        status = pin(arguments[*run->takenAway], guards.takingAway, checked.folders);
    }
    if (run->replaced && status == kAuthorizationSuccess) {
        status = pin(arguments[*run->replaced], guards.replacing, checked.folders);
    }
    return status;
}

/// Starts a tool whose output goes into the pipe, or nowhere without one.
void start(CheckedRun checked, FileDescriptor output) {
    Process process;
    process.setLaunchPath(checked.request.tool);
    process.setArguments(checked.request.arguments);
    process.setEnvironment(
        Process::Environment{{"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"}, {"LC_ALL", "C"}});
    process.setNullDevice(StandardStream::input);
    process.setNullDevice(StandardStream::error);
    if (output) {
        process.setDescriptor(StandardStream::output, std::move(output));
    } else {
        process.setNullDevice(StandardStream::output);
    }
    for (FileDescriptor& folder : checked.folders) {
        static_cast<void>(process.addDescriptor(std::move(folder)));
    }
    process.launch();
}

/// Sends a tool's output on until its end. @return false when the other end has gone, or does not
/// wait for its turn.
bool forwardOutput(int socket, const FileDescriptor& output) {
    std::string chunk;
    do {
        try {
            if (!waitUntilReadable(output.get(), socket).first) {
                return false;
            }
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
bool answer(int socket, ToolRequest request, const PathGuards& guards) {
    const bool wantsOutput = request.wantsOutput;
    CheckedRun checked{.request = std::move(request), .folders = {}};
    if (const AuthorizationStatus status = check(checked, guards);
        status != kAuthorizationSuccess) {
        return sendMessage(socket, encodeStatus(status));
    }
    Pipe output;
    try {
        if (wantsOutput) {
            output = makePipe();
        }
        start(std::move(checked), std::move(output.writingEnd));
    } catch (const Exception&) {
        return sendMessage(socket, encodeStatus(kAuthorizationToolExecuteFailure));
    }
    return sendMessage(socket, encodeStatus(kAuthorizationSuccess)) &&
           (!wantsOutput || forwardOutput(socket, output.readingEnd));
}

}  // namespace

int serveAuthorizedTools(int socket, const PathGuards& guards) {
    bool isHeard = sendMessage(socket, kHelperGreeting);
    while (isHeard) {
        const std::optional<std::string> message = receiveMessage(socket);
        if (!message) {
            break;
        }
        std::optional<ToolRequest> request = decodeRequest(*message);
        if (!request) {
            return 1;
        }
        isHeard = answer(socket, std::move(*request), guards);
    }
    return 0;
}

}  // namespace vornic::platform
