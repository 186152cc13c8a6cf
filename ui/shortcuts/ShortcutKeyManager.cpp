#include "ui/shortcuts/ShortcutKeyManager.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "base/PathText.h"
#include "foundation/log/QMException.h"
#include "foundation/places/QMLocalPaths.h"
#include "foundation/tasks/QMTaskEx.h"
#include "platform/crash/CrashStack.h"
#include "platform/files/FileSystem.h"
#include "platform/threads/Thread.h"
#include "ui/shortcuts/ShortcutKeyMessage.h"

namespace vornic {

namespace {

/// One run, which its waiter does not outwait.
class ManagerRun {
  public:
    void noteEnd() {
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
        changed_.notify_all();
    }
    void askToEnd() {
        const std::lock_guard lock(mutex_);
        isAskedToEnd_ = true;
        changed_.notify_all();
    }
    /// Waits for the end of the run, but no longer than the limit and, once the program is about to
    /// end, than a moment. @return false when the limit has passed.
    bool wait(std::chrono::milliseconds limit) {
        // Enough for the launch and for the work of a sound manager.
        constexpr std::chrono::milliseconds kMoment{1000};
        std::unique_lock lock(mutex_);
        const auto deadline = std::chrono::steady_clock::now() + limit;
        changed_.wait_until(lock, deadline, [this] { return hasEnded_ || isAskedToEnd_; });
        if (isAskedToEnd_) {
            const auto last = std::chrono::steady_clock::now() + kMoment;
            changed_.wait_until(lock, std::min(deadline, last), [this] { return hasEnded_; });
        }
        return hasEnded_ || isAskedToEnd_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool hasEnded_ = false;
    bool isAskedToEnd_ = false;
};

void runManager(const std::string& path, const std::shared_ptr<ManagerRun>& run,
                std::chrono::milliseconds limit) {
    try {
        // It stays behind when the manager never ends.
        std::thread([path, run] {
            const platform::CrashStack crashStack;
            QMTaskEx::runTask(path, {"-setup"}, ShortcutKeyManager::kTimeLimit);
            run->noteEnd();
        }).detach();
    } catch (const std::system_error& failure) {
        tellOfShortcutKeys("The shortcut key manager could not be run: " +
                           std::string(failure.what()));
        return;
    }
    if (!run->wait(limit)) {
        QMLog::appendLog("The shortcut key manager is still busy: %@", path);
    }
}

}  // namespace

std::optional<std::string> ShortcutKeyManager::path() {
    const std::optional<std::string> folder = QMLocalPaths::appSupportDirectory(true);
    return folder
               ? std::optional(joinPath(*folder, "Quillmark/Shared Resources/QMShortcutKeyManager"))
               : std::nullopt;
}

bool ShortcutKeyManager::exists() {
    return platform::isExecutableFile(path().value_or(""));
}

void ShortcutKeyManager::setup() {
    setup(kTimeLimit);
}

void ShortcutKeyManager::setup(std::chrono::milliseconds limit) {
    if (!exists()) {
        tellOfShortcutKeys(
            "Unable to setup shortcut keys - shortcut key manager doesn't exist. Please reinstall "
            "this software.");
        return;
    }
    const auto run = std::make_shared<ManagerRun>();
    try {
        platform::detachNewThread(
            [manager = path().value_or(""), run, limit] { runManager(manager, run, limit); },
            [run] { run->askToEnd(); });
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "+[ShortcutKeyManager setup]");
    }
}

}  // namespace vornic
