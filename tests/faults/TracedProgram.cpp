#include "tests/faults/TracedProgram.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vornic::test {

namespace {

constexpr int kCannotStart = 127;
constexpr int kCallStop = SIGTRAP | 0x80;
constexpr int kRoomOfPipes = 1 << 20;

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (const std::string& text : texts) {
        result.push_back(const_cast<char*>(text.c_str()));
    }
    result.push_back(nullptr);
    return result;
}

// A pipe that takes what a run has to say without anybody reading it.
std::array<int, 2> makePipe() {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        std::perror("pipe2");
        std::abort();
    }
    fcntl(ends[1], F_SETPIPE_SZ, kRoomOfPipes);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return ends;
}

std::string readAndClose(int descriptor) {
    std::string text;
    std::array<char, 65536> buffer;
    for (ssize_t count = 1; count > 0;) {
        count = read(descriptor, buffer.data(), buffer.size());
        text.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    close(descriptor);
    return text;
}

// Waiting ends now and then, so that a run that hangs is seen.
class Ticks {
  public:
    Ticks() {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, &before_);
        set(100'000);
    }
    ~Ticks() {
        set(0);
        sigaction(SIGALRM, &before_, nullptr);
    }
    Ticks(const Ticks&) = delete;
    Ticks& operator=(const Ticks&) = delete;

  private:
    static void set(suseconds_t interval) {
        const struct itimerval timer {
            .it_interval = {0, interval}, .it_value = { 0, interval }
        };
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
    struct sigaction before_ {};
};

std::uint64_t halfOf(std::uint64_t count) {
    return count > 1 ? count / 2 : count;
}

void poke(pid_t task, std::size_t offset, long value) {
    ptrace(PTRACE_POKEUSER, task, offset, value);
}

}  // namespace

TracedProgram::TracedProgram(const ProgramStart& start, CallObserver& observer)
    : start_(start), observer_(observer) {}

void TracedProgram::becomeProgram(const std::vector<char*>& arguments,
                                  const std::vector<char*>& environment) const {
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(input, STDIN_FILENO);
    // What a shell starts has no other descriptors open.
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    signal(SIGPIPE, SIG_DFL);
    signal(SIGALRM, SIG_DFL);
    // Under a user who took over from root, the kernel refuses to trace without this.
    prctl(PR_SET_DUMPABLE, 1, 0, 0, 0);
    if (chdir(start_.folder.c_str()) != 0 || ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
        _exit(kCannotStart);
    }
    raise(SIGSTOP);
    for (const auto& [resource, value] : start_.limits) {
        const struct rlimit limit { value, value };
        setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
    }
    execve(start_.program.c_str(), arguments.data(), environment.data());
    _exit(kCannotStart);
}

void TracedProgram::start() {
    std::vector<std::string> words = start_.arguments;
    words.insert(words.begin(), start_.program);
    const std::vector<char*> arguments = pointers(words);
    const std::vector<char*> environment = pointers(start_.environment);
    const std::array<int, 2> output = makePipe();
    const std::array<int, 2> errors = makePipe();
    process_ = fork();
    if (process_ == 0) {
        dup2(output[1], STDOUT_FILENO);
        dup2(errors[1], STDERR_FILENO);
        becomeProgram(arguments, environment);
    }
    close(output[1]);
    close(errors[1]);
    output_ = output[0];
    errors_ = errors[0];
    int status = 0;
    while (waitpid(process_, &status, __WALL) < 0 && errno == EINTR) {
    }
    if (!WIFSTOPPED(status)) {
        end_.status = kCannotStart;
        process_ = -1;
        return;
    }
    tasks_[process_].attached = true;
    ptrace(PTRACE_SETOPTIONS, process_, nullptr,
           PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK |
               PTRACE_O_TRACEVFORK | PTRACE_O_TRACEEXEC);
    resume(process_, tasks_[process_], 0);
}

ProgramEnd TracedProgram::run(std::chrono::seconds longest) {
    const auto deadline = std::chrono::steady_clock::now() + longest;
    start();
    const Ticks ticks;
    while (process_ > 0 && handleNextStop()) {
        if (std::chrono::steady_clock::now() > deadline && !end_.hung) {
            end_.hung = true;
            kill();
        }
    }
    end_.output = readAndClose(output_);
    end_.errors = readAndClose(errors_);
    return std::move(end_);
}

void TracedProgram::kill() {
    ::kill(process_, SIGKILL);
}

bool TracedProgram::handleNextStop() {
    int status = 0;
    const pid_t task = waitpid(-1, &status, __WALL);
    if (task < 0) {
        return errno == EINTR;
    }
    if (WIFSTOPPED(status)) {
        handleStop(task, status);
        return true;
    }
    if (task == process_) {
        end_.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        end_.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }
    tasks_.erase(task);
    return !tasks_.empty();
}

void TracedProgram::handleStop(pid_t task, int status) {
    const auto known = tasks_.find(task);
    if (known == tasks_.end()) {
        int thread = 0;
        for (const auto& [other, state] : tasks_) {
            thread = std::max(thread, state.thread + 1);
        }
        tasks_[task].thread = thread;
    }
    Task& state = tasks_[task];
    const int signal = WSTOPSIG(status);
    int delivered = 0;
    if (signal == kCallStop) {
        handleCall(task);
    } else if (signal == SIGSTOP && !state.attached) {
        state.attached = true;
    } else if ((status >> 16) == 0) {
        delivered = signal;
    }
    resume(task, state, delivered);
}

// A call that is being carried out is seen to its end.
void TracedProgram::resume(pid_t task, const Task& state, int signal) const {
    const bool isFree = observer_.isDone() && state.pending.kind == Verdict::Kind::proceed;
    ptrace(isFree ? PTRACE_CONT : PTRACE_SYSCALL, task, nullptr, signal);
}

bool TracedProgram::counts(const Task& state, long number) {
    if (loaded_ || state.thread != 0) {
        return true;
    }
    // The loader lets go of its cache when all libraries are in place.
    loaded_ = loaderIsAtItsEnd_ && number == SYS_munmap;
    loaderIsAtItsEnd_ = loaderIsAtItsEnd_ || number == SYS_set_robust_list;
    return false;
}

void TracedProgram::handleCall(pid_t task) {
    Task& state = tasks_[task];
    struct __ptrace_syscall_info info {};
    if (ptrace(PTRACE_GET_SYSCALL_INFO, task, sizeof info, &info) <= 0) {
        return;
    }
    if (info.op == PTRACE_SYSCALL_INFO_EXIT) {
        leave(task, state);
        return;
    }
    if (info.op != PTRACE_SYSCALL_INFO_ENTRY) {
        return;
    }
    SystemCall call;
    call.number = static_cast<long>(info.entry.nr);
    if (!counts(state, call.number) || kindOfCall(call.number) == CallKind::other) {
        return;
    }
    std::copy(std::begin(info.entry.args), std::end(info.entry.args), call.arguments.begin());
    call.place = {state.thread, state.calls++};
    enter(task, state, call);
}

void TracedProgram::enter(pid_t task, Task& state, const SystemCall& call) {
    SystemCall described = call;
    if (observer_.wantsPaths(call)) {
        described.paths = pathsOf(call);
    }
    state.pending = observer_.look(described);
    switch (state.pending.kind) {
        case Verdict::Kind::killBefore:
            end_.killed = true;
            kill();
            break;
        case Verdict::Kind::fail:
            fail(task, state, call);
            break;
        case Verdict::Kind::fallShort:
            change(task, state, offsetof(struct user, regs.rdx), call.arguments[2],
                   halfOf(call.arguments[2]));
            break;
        default:
            break;
    }
}

// A call leaves its arguments' registers as they were.
void TracedProgram::change(pid_t task, Task& state, std::size_t offset, std::uint64_t before,
                           std::uint64_t value) {
    poke(task, offset, static_cast<long>(value));
    state.changed = offset;
    state.before = before;
}

void TracedProgram::fail(pid_t task, Task& state, const SystemCall& call) {
    if (call.number == SYS_brk) {
        // It has no error numbers: a failure tells where the break still is, as does asking for 0.
        change(task, state, offsetof(struct user, regs.rdi), call.arguments[0], 0);
        state.pending.kind = Verdict::Kind::fallShort;
        return;
    }
    poke(task, offsetof(struct user, regs.orig_rax), -1);
}

void TracedProgram::leave(pid_t task, Task& state) {
    const Verdict verdict = std::exchange(state.pending, Verdict());
    if (state.changed != 0) {
        poke(task, std::exchange(state.changed, 0), static_cast<long>(state.before));
    }
    if (verdict.kind == Verdict::Kind::killAfter) {
        end_.killed = true;
        kill();
    } else if (verdict.kind == Verdict::Kind::fail || verdict.kind == Verdict::Kind::failAfter) {
        poke(task, offsetof(struct user, regs.rax), -verdict.errorNumber);
    }
}

std::string TracedProgram::textAt(std::uint64_t address) const {
    std::array<char, 4096> buffer{};
    constexpr std::size_t kPage = 4096;
    // No further than the page, behind which there may be nothing.
    const std::size_t room = kPage - address % kPage;
    struct iovec ours {
        buffer.data(), std::min(room, buffer.size() - 1)
    };
    struct iovec theirs {
        reinterpret_cast<void*>(address), ours.iov_len
    };
    return process_vm_readv(process_, &ours, 1, &theirs, 1, 0) > 0 ? std::string(buffer.data())
                                                                   : std::string();
}

std::string TracedProgram::pathsOf(const SystemCall& call) const {
    const auto& arguments = call.arguments;
    switch (call.number) {
        case SYS_openat:
        case SYS_newfstatat:
        case SYS_mkdirat:
        case SYS_unlinkat:
        case SYS_statx:
        case SYS_utimensat:
        case SYS_openat2:
        case SYS_faccessat2:
            return textAt(arguments[1]);
        case SYS_renameat:
        case SYS_renameat2:
        case SYS_linkat:
            return textAt(arguments[1]) + " " + textAt(arguments[3]);
        case SYS_rename:
        case SYS_link:
        case SYS_symlink:
            return textAt(arguments[0]) + " " + textAt(arguments[1]);
        case SYS_mkdir:
        case SYS_unlink:
        case SYS_rmdir:
        case SYS_access:
        case SYS_readlink:
        case SYS_stat:
        case SYS_lstat:
            return textAt(arguments[0]);
        default:
            break;
    }
    if (kindOfCall(call.number) != CallKind::file || call.arguments[0] > 1024) {
        return "";
    }
    std::error_code error;
    const auto path = std::filesystem::read_symlink(
        "/proc/" + std::to_string(process_) + "/fd/" + std::to_string(call.arguments[0]), error);
    return error ? "" : path.string();
}

}  // namespace vornic::test
