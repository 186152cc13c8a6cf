#include "platform/processes/ProcessReaper.h"

#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/eventfd.h>

#include "base/Exception.h"
#include "platform/threads/Thread.h"

namespace vornic::platform {
namespace {

using Processes = std::vector<std::shared_ptr<SpawnedProcess>>;

struct Reaper {
    std::mutex mutex;
    Processes watched;
    bool threadRuns = false;
    bool askedToEnd = false;
    /// Readable when the thread is to look at its list again.
    const FileDescriptor wakeUp{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

/// Never destroyed: children may be handed over while static objects go.
Reaper& reaper() {
    static Reaper* const instance = new Reaper;  // NOLINT(cppcoreguidelines-owning-memory)
    return *instance;
}

void wake(const Reaper& state) {
    static_cast<void>(eventfd_write(state.wakeUp.get(), 1));
}

/// Takes those that have ended off the list.
/// @return what is left to wait for, empty when the thread is to end, which is noted then.
Processes stillRunning(Reaper& state) {
    const std::lock_guard lock(state.mutex);
    std::erase_if(state.watched, [](const auto& process) { return process->hasEnded(); });
    if (state.watched.empty() || state.askedToEnd) {
        state.threadRuns = false;
        return {};
    }
    return state.watched;
}

void waitForChange(const Reaper& state, const Processes& processes) {
    std::vector<pollfd> waited{{state.wakeUp.get(), POLLIN, 0}};
    int limit = -1;
    for (const auto& process : processes) {
        waited.push_back({process->endDescriptor(), POLLIN, 0});
        if (process->endDescriptor() < 0) {
            limit = static_cast<int>(kEndPollingInterval.count());
        }
    }
    static_cast<void>(poll(waited.data(), waited.size(), limit));
    eventfd_t ignored = 0;
    static_cast<void>(eventfd_read(state.wakeUp.get(), &ignored));
}

void reapUntilDone(Reaper& state) {
    for (Processes left = stillRunning(state); !left.empty(); left = stillRunning(state)) {
        waitForChange(state, left);
    }
}

void askToEnd(Reaper& state) {
    const std::lock_guard lock(state.mutex);
    state.askedToEnd = true;
    wake(state);
}

}  // namespace

void reapInBackground(std::shared_ptr<SpawnedProcess> process) {
    if (!process || process->hasEnded()) {
        return;
    }
    Reaper& state = reaper();
    {
        const std::lock_guard lock(state.mutex);
        state.watched.push_back(std::move(process));
        if (std::exchange(state.threadRuns, true)) {
            wake(state);
            return;
        }
        state.askedToEnd = false;
    }
    try {
        detachNewThread([&state] { reapUntilDone(state); }, [&state] { askToEnd(state); });
    } catch (const Exception&) {
        // The next hand-over tries again.
        const std::lock_guard lock(state.mutex);
        state.threadRuns = false;
    }
}

}  // namespace vornic::platform
