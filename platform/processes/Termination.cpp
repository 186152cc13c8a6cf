#include "platform/processes/Termination.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace vornic::platform {
namespace {

struct Observers {
    std::mutex mutex;
    std::size_t lastToken = 0;
    std::map<std::size_t, WillTerminateObserver> byToken;
};

/// Never destroyed: a thread may still unregister while static objects go.
Observers& observers() {
    static Observers* const registered = new Observers;  // NOLINT(cppcoreguidelines-owning-memory)
    return *registered;
}

std::atomic<int> notedSignal{0};
std::atomic<int> notice{-1};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler uses them");

/// The observer that was registered next after `token`, which moves on to it. Called without the
/// lock, an observer may register and remove others.
bool nextObserver(std::size_t& token, WillTerminateObserver& observer) {
    Observers& registered = observers();
    const std::lock_guard lock(registered.mutex);
    const auto next = registered.byToken.upper_bound(token);
    if (next == registered.byToken.end()) {
        return false;
    }
    token = next->first;
    observer = next->second;
    return true;
}

/// Ends the process as the signal does when nobody catches it.
void endBySignal(int number) {
    struct sigaction plain {};
    plain.sa_handler = SIG_DFL;
    sigaction(number, &plain, nullptr);
    sigset_t own;
    sigemptyset(&own);
    sigaddset(&own, number);
    static_cast<void>(raise(number));
    // Delivered here, for it is held back while its handler runs.
    pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
}

extern "C" void noteSignal(int number) {
    const int savedError = errno;
    int none = 0;
    if (!notedSignal.compare_exchange_strong(none, number)) {
        endBySignal(number);
    }
    if (const int descriptor = notice.load(); descriptor >= 0) {
        const std::uint64_t one = 1;
        static_cast<void>(write(descriptor, &one, sizeof one));
    }
    errno = savedError;
}

}  // namespace

std::size_t addWillTerminateObserver(WillTerminateObserver observer) {
    Observers& registered = observers();
    const std::lock_guard lock(registered.mutex);
    registered.byToken.emplace(++registered.lastToken, std::move(observer));
    return registered.lastToken;
}

void removeWillTerminateObserver(std::size_t token) {
    Observers& registered = observers();
    const std::lock_guard lock(registered.mutex);
    registered.byToken.erase(token);
}

void postWillTerminate() {
    std::size_t token = 0;
    WillTerminateObserver observer;
    while (nextObserver(token, observer)) {
        if (observer) {
            observer();
        }
    }
}

void catchInterruptions() {
    if (notice.load() < 0) {
        notice.store(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    }
    struct sigaction action {};
    action.sa_handler = noteSignal;
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        // Whoever started the program with a signal ignored (nohup) wants it to go on.
        if (sigaction(number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
            sigaction(number, &action, nullptr);
        }
    }
}

int interruption() {
    return notedSignal.load(std::memory_order_relaxed);
}

const std::atomic<int>* interruptionFlag() {
    return &notedSignal;
}

int interruptionDescriptor() {
    return notice.load();
}

}  // namespace vornic::platform
