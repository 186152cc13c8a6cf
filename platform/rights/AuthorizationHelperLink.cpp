#include "platform/rights/AuthorizationHelperLink.h"

#include <array>
#include <cerrno>
#include <utility>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>

#include "base/Exception.h"
#include "platform/processes/Pipe.h"
#include "platform/threads/MainThread.h"

namespace vornic::platform {
namespace {

constexpr int kNotLaunched = -1;

/// How many objects keep this process untraceable, and whether it was traceable before.
struct Traceability {
    std::mutex mutex;
    int holders = 0;
    bool wasTraceable = false;
};

Traceability& traceability() {
    static Traceability* const instance = new Traceability;  // NOLINT: threads may outlive others
    return *instance;
}

/// Waits for the helper's greeting, or for its end. @return false when the program quits before: it
/// must not wait for a password that nobody will type.
bool awaitHelper(int socket) {
    constexpr int kSliceMilliseconds = 50;
    pollfd state{.fd = socket, .events = POLLIN, .revents = 0};
    while (!MainThread::isShutDown()) {
        const int count = poll(&state, 1, kSliceMilliseconds);
        if (count > 0 || (count < 0 && errno != EINTR)) {
            return true;
        }
    }
    return false;
}

}  // namespace

Untraceable::Untraceable() {
    Traceability& state = traceability();
    const std::lock_guard lock(state.mutex);
    if (state.holders++ == 0) {
        state.wasTraceable = prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) == 1;
        prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    }
}

Untraceable::~Untraceable() {
    Traceability& state = traceability();
    const std::lock_guard lock(state.mutex);
    if (--state.holders == 0 && state.wasTraceable) {
        prctl(PR_SET_DUMPABLE, 1, 0, 0, 0);
    }
}

/// What a run writes. Its helper serves one run at a time: when the next one comes first, what this
/// one still had to say is lost.
class AuthorizationHelperLink::Output : public CommunicationsPipe {
  public:
    Output(std::weak_ptr<AuthorizationHelperLink> link, std::size_t run)
        : link_(std::move(link)), run_(run) {}

    std::string readAvailable() override {
        const std::shared_ptr<AuthorizationHelperLink> link = link_.lock();
        if (!link) {
            return "";
        }
        const std::lock_guard lock(link->mutex_);
        return link->reportedRuns_ == run_ ? link->nextOutput() : "";
    }

  private:
    std::weak_ptr<AuthorizationHelperLink> link_;
    std::size_t run_;
};

int AuthorizationHelperLink::start(std::unique_ptr<Process> process,
                                   std::shared_ptr<AuthorizationHelperLink>& link) {
    auto untraceable = std::make_unique<Untraceable>();
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return kNotLaunched;
    }
    FileDescriptor ours(ends[0]);
    FileDescriptor helpers(ends[1]);
    try {
        ours = aboveStandardStreams(std::move(ours));
        process->setDescriptor(StandardStream::output, std::move(helpers));
        process->setNullDevice(StandardStream::error);
        process->launch();
    } catch (const Exception&) {
        return kNotLaunched;
    }
    if (!awaitHelper(ours.get())) {
        process->terminate();
    }
    if (receiveMessage(ours.get()) != kHelperGreeting) {
        static_cast<void>(ours.close());
        process->waitUntilExit();
        const int status = process->terminationStatus();
        return status != 0 ? status : kNotLaunched;
    }
    link = std::make_shared<AuthorizationHelperLink>(std::move(process), std::move(ours),
                                                     std::move(untraceable));
    return 0;
}

AuthorizationHelperLink::AuthorizationHelperLink(std::unique_ptr<Process> process,
                                                 FileDescriptor socket,
                                                 std::unique_ptr<Untraceable> untraceable)
    : untraceable_(std::move(untraceable)),
      process_(std::move(process)),
      socket_(std::move(socket)) {}

AuthorizationStatus AuthorizationHelperLink::run(const ToolRequest& request,
                                                 std::unique_ptr<CommunicationsPipe>* pipe) {
    const std::optional<std::string> message = encodeRequest(request);
    if (!message) {
        return kAuthorizationInternalError;
    }
    const std::lock_guard lock(mutex_);
    while (!nextOutput().empty()) {
    }
    if (!sendMessage(socket_.get(), *message)) {
        return kAuthorizationToolExecuteFailure;
    }
    const AuthorizationStatus status = decodeStatus(receiveMessage(socket_.get()).value_or(""))
                                           .value_or(kAuthorizationToolExecuteFailure);
    if (status == kAuthorizationSuccess && request.wantsOutput) {
        outputIsPending_ = true;
        ++reportedRuns_;
        *pipe = std::make_unique<Output>(weak_from_this(), reportedRuns_);
    }
    return status;
}

bool AuthorizationHelperLink::isAlive() const {
    pollfd state{.fd = socket_.get(), .events = POLLRDHUP, .revents = 0};
    return poll(&state, 1, 0) == 0;
}

std::string AuthorizationHelperLink::nextOutput() {
    if (!outputIsPending_) {
        return "";
    }
    std::string output = decodeOutput(receiveMessage(socket_.get()).value_or("")).value_or("");
    outputIsPending_ = !output.empty();
    return output;
}

}  // namespace vornic::platform
