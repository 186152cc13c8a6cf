#include "platform/processes/Process.h"

#include <cerrno>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/Exception.h"
#include "platform/processes/Pipe.h"
#include "platform/processes/ProcessReaper.h"

namespace vornic::platform {
namespace {

constexpr const char* kExceptionName = "NSInvalidArgumentException";
constexpr int kFirstFurtherDescriptor = STDERR_FILENO + 1;

[[noreturn]] void raiseNotStarted(const std::string& path, int errorNumber) {
    throw Exception(kExceptionName,
                    posixError("The tool " + path + " cannot be started", errorNumber).description);
}

/// Which descriptors the child gets.
class SpawnActions {
  public:
    SpawnActions() { check(posix_spawn_file_actions_init(&actions_)); }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    void openNullDevice(int number) {
        check(posix_spawn_file_actions_addopen(&actions_, number, "/dev/null", O_RDWR, 0));
    }
    void duplicate(int descriptor, int number) {
        check(posix_spawn_file_actions_adddup2(&actions_, descriptor, number));
    }
    /// Also against libraries that open files without the close-on-exec flag.
    void closeEverythingFrom([[maybe_unused]] int number) {
#if __GLIBC_PREREQ(2, 34)
        check(posix_spawn_file_actions_addclosefrom_np(&actions_, number));
#endif
    }
    [[nodiscard]] const posix_spawn_file_actions_t* get() const {
        return &actions_;
    }

  private:
    static void check(int errorNumber) {
        if (errorNumber != 0) {
            throw Exception(kExceptionName,
                            posixError("A process cannot be set up", errorNumber).description);
        }
    }

    posix_spawn_file_actions_t actions_{};
};

/// With which signals the child starts: all at their defaults, none held back.
class SpawnAttributes {
  public:
    explicit SpawnAttributes(bool ownSession) {
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        sigdelset(&signals, SIGKILL);
        sigdelset(&signals, SIGSTOP);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        const int session = ownSession ? POSIX_SPAWN_SETSID : 0;
        posix_spawnattr_setflags(&attributes_, static_cast<short>(POSIX_SPAWN_SETSIGMASK |
                                                                  POSIX_SPAWN_SETSIGDEF | session));
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

/// A list of texts in the form that a system call takes.
class TextList {
  public:
    explicit TextList(std::vector<std::string> texts) : texts_(std::move(texts)) {
        pointers_.reserve(texts_.size() + 1);
        for (std::string& text : texts_) {
            if (text.find('\0') != std::string::npos) {
                throw Exception(kExceptionName,
                                "An argument of a tool must not contain a NUL character.");
            }
            pointers_.push_back(text.data());
        }
        pointers_.push_back(nullptr);
    }
    [[nodiscard]] char* const* get() const { return pointers_.data(); }

  private:
    std::vector<std::string> texts_;
    std::vector<char*> pointers_;
};

TextList argumentList(const std::string& path, const std::vector<std::string>& arguments) {
    std::vector<std::string> list{path};
    list.insert(list.end(), arguments.begin(), arguments.end());
    return TextList(std::move(list));
}

TextList environmentList(const Process::Environment& environment) {
    std::vector<std::string> list;
    list.reserve(environment.size());
    for (const auto& [name, value] : environment) {
        list.emplace_back(name).append("=").append(value);
    }
    return TextList(std::move(list));
}

/// Whoever started this program may have left it with the order to throw the ends of children away;
/// no end could be fetched then.
void keepEndsOfChildren() {
    struct sigaction action {};
    if (sigaction(SIGCHLD, nullptr, &action) == 0 &&
        (action.sa_handler == SIG_IGN || (action.sa_flags & SA_NOCLDWAIT) != 0)) {
        action = {};
        action.sa_handler = SIG_DFL;
        sigaction(SIGCHLD, &action, nullptr);
    }
}

}  // namespace

Process::~Process() {
    reapInBackground();
}

void Process::setNullDevice(StandardStream stream) {
    streams_[static_cast<std::size_t>(stream)] = {.isNullDevice = true, .descriptor = {}};
}

void Process::setDescriptor(StandardStream stream, FileDescriptor descriptor) {
    streams_[static_cast<std::size_t>(stream)] = {
        .isNullDevice = false, .descriptor = aboveStandardStreams(std::move(descriptor))};
}

int Process::addDescriptor(FileDescriptor descriptor) {
    constexpr std::size_t kMost = 16;
    if (furtherDescriptors_.size() == kMost) {
        throw Exception(kExceptionName, "A tool cannot be given so many descriptors.");
    }
    // Beyond the numbers that the child's get, so that none takes another's place on the way.
    constexpr int kBeyond = kFirstFurtherDescriptor + static_cast<int>(kMost);
    FileDescriptor higher(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, kBeyond));
    if (!higher) {
        throw Exception(kExceptionName,
                        posixError("A descriptor cannot be duplicated", errno).description);
    }
    furtherDescriptors_.push_back(std::move(higher));
    return kFirstFurtherDescriptor + static_cast<int>(furtherDescriptors_.size()) - 1;
}

void Process::launch() {
    const std::lock_guard lock(mutex_);
    if (spawned_) {
        throw Exception(kExceptionName, "The tool " + launchPath_ + " was started already.");
    }
    SpawnActions actions;
    int next = kFirstFurtherDescriptor;
    for (std::size_t number = 0; number < streams_.size(); ++number) {
        const Stream& stream = streams_[number];
        if (stream.isNullDevice) {
            actions.openNullDevice(static_cast<int>(number));
        } else if (stream.descriptor) {
            actions.duplicate(stream.descriptor.get(), static_cast<int>(number));
        }
    }
    for (const FileDescriptor& descriptor : furtherDescriptors_) {
        actions.duplicate(descriptor.get(), next++);
    }
    actions.closeEverythingFrom(next);
    const SpawnAttributes attributes(ownSession_);
    const TextList arguments = argumentList(launchPath_, arguments_);
    const std::optional<TextList> environment =
        environment_ ? std::optional(environmentList(*environment_)) : std::nullopt;
    keepEndsOfChildren();
    pid_t identifier = 0;
    const int result =
        posix_spawn(&identifier, launchPath_.c_str(), actions.get(), attributes.get(),
                    arguments.get(), environment ? environment->get() : environ);
    if (result != 0) {
        raiseNotStarted(launchPath_, result);
    }
    spawned_ = std::make_shared<SpawnedProcess>(identifier);
    streams_ = {};
    furtherDescriptors_.clear();
}

bool Process::isRunning() const {
    const std::shared_ptr<SpawnedProcess> process = spawned();
    return process && !process->hasEnded();
}

void Process::waitUntilExit() {
    if (const std::shared_ptr<SpawnedProcess> process = spawned()) {
        process->waitForEnd();
    }
}

void Process::terminate() {
    if (const std::shared_ptr<SpawnedProcess> process = spawned()) {
        process->sendSignal(SIGTERM);
    }
}

void Process::kill() {
    if (const std::shared_ptr<SpawnedProcess> process = spawned()) {
        process->sendSignal(SIGKILL);
    }
}

int Process::terminationStatus() const {
    const std::shared_ptr<SpawnedProcess> process = spawned();
    if (!process || !process->hasEnded()) {
        throw Exception(kExceptionName, "The tool " + launchPath_ + " has not ended.");
    }
    const std::optional<int> status = process->status();
    return status && WIFEXITED(*status) ? WEXITSTATUS(*status) : -1;
}

int Process::terminationSignal() const {
    const std::shared_ptr<SpawnedProcess> process = spawned();
    const std::optional<int> status =
        process && process->hasEnded() ? process->status() : std::nullopt;
    return status && WIFSIGNALED(*status) ? WTERMSIG(*status) : 0;
}

int Process::processIdentifier() const {
    const std::shared_ptr<SpawnedProcess> process = spawned();
    return process ? process->identifier() : 0;
}

void Process::reapInBackground() {
    platform::reapInBackground(spawned());
}

std::shared_ptr<SpawnedProcess> Process::spawned() const {
    const std::lock_guard lock(mutex_);
    return spawned_;
}

}  // namespace vornic::platform
