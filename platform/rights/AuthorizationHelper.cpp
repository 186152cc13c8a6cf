#include "platform/rights/AuthorizationHelper.h"

#include <array>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/rights/AuthorizationProtocol.h"

namespace vornic::platform {
namespace {

/// What goes on beside the requests. Everything has ended when the object has gone.
class Jobs {
  public:
    Jobs() = default;
    ~Jobs() {
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }
    Jobs(const Jobs&) = delete;
    Jobs& operator=(const Jobs&) = delete;

    void add(std::shared_ptr<PinnedAction> action) {
        constexpr std::size_t kMost = 32;
        if (threads_.size() == kMost) {
            threads_.front().join();
            threads_.erase(threads_.begin());
        }
        threads_.emplace_back([action = std::move(action)] { action->finish(); });
    }

  private:
    std::vector<std::thread> threads_;
};

/// @return false when the other end has gone.
bool answer(int socket, const ToolRequest& request, const PathGuards& guards,
            const ToolRunner& runTool, Jobs& jobs) {
    PinnedRun run;
    AuthorizationStatus status = pinRun(request, guards, run);
    if (status != kAuthorizationSuccess) {
        return sendMessage(socket, encodeStatus(status));
    }
    const auto action = std::make_shared<PinnedAction>(std::move(run), runTool);
    status = action->begin();
    const bool isHeard = sendMessage(socket, encodeStatus(status));
    if (status != kAuthorizationSuccess) {
        return isHeard;
    }
    if (!request.wantsOutput) {
        jobs.add(action);
        return isHeard;
    }
    action->finish();
    return isHeard && sendMessage(socket, encodeOutput(""));
}

}  // namespace

int serveAuthorizedTools(int socket, const PathGuards& guards, const ToolRunner& runTool) {
    Jobs jobs;
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
        isHeard = answer(socket, *request, guards, runTool, jobs);
    }
    return 0;
}

std::optional<unsigned> callerOf(int socket) {
    struct ucred caller {};
    socklen_t size = sizeof caller;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &caller, &size) == 0 && caller.pid > 0
               ? std::optional<unsigned>(caller.uid)
               : std::nullopt;
}

std::vector<FileIdentity> standardFoldersOf(unsigned user) {
    constexpr std::array kNames{
        "",
        "Applications",
        "Applications/Utilities",
        "Desktop",
        "Documents",
        "Movies",
        "Videos",
        ".cache",
        ".local/share/quillmark",
        ".local/share/quillmark/Application Support",
        ".local/share/quillmark/Logs",
        ".local/share/quillmark/Preferences",
    };
    std::vector<FileIdentity> folders;
    std::array<char, 16384> texts{};
    struct passwd entry {};
    struct passwd* found = nullptr;
    if (getpwuid_r(user, &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr ||
        found->pw_dir == nullptr || *found->pw_dir != '/') {
        return folders;
    }
    for (const char* name : kNames) {
        struct stat status {};
        if (stat(joinPath(found->pw_dir, name).c_str(), &status) == 0) {
            folders.push_back({.device = status.st_dev, .inode = status.st_ino});
        }
    }
    return folders;
}

}  // namespace vornic::platform
