#include "platform/crash/CrashReporter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/crash/CrashBacktrace.h"
#include "platform/crash/CrashStack.h"
#include "platform/crash/ExceptionReason.h"
#include "platform/crash/SignalSafeWriter.h"
#include "platform/files/FileDescriptor.h"
#include "platform/settings/Bundle.h"

/// What runs in a handler takes no memory, no lock and nothing that another thread or the
/// interrupted code may hold half-changed: it works with what was prepared and with system calls.
namespace vornic::platform {
namespace {

/// A text that can be read in a handler, with a NUL behind it.
template <std::size_t Capacity>
class FixedText {
  public:
    void set(std::string_view text) {
        length_ = text.copy(bytes_.data(), Capacity);
        bytes_[length_] = '\0';
    }
    void append(std::string_view text) {
        length_ += text.copy(bytes_.data() + length_, Capacity - length_);
        bytes_[length_] = '\0';
    }
    void appendDecimal(unsigned number, std::size_t width) {
        std::array<char, 10> digits{};
        for (std::size_t place = width; place-- > 0; number /= 10) {
            digits[place] = static_cast<char>('0' + number % 10);
        }
        append({digits.data(), width});
    }
    [[nodiscard]] std::string_view view() const { return {bytes_.data(), length_}; }
    [[nodiscard]] char* data() { return bytes_.data(); }
    [[nodiscard]] bool isFull() const { return length_ == Capacity; }

  private:
    std::size_t length_ = 0;
    std::array<char, Capacity + 1> bytes_{};
};

using PathBuffer = FixedText<PATH_MAX - 1>;

struct FatalSignal {
    int number;
    std::string_view name;
    /// Whether the system tells the address that the fault is about.
    bool hasAddress;
};
constexpr std::array<FatalSignal, 7> kFatalSignals{{
    {SIGSEGV, "SIGSEGV", true},
    {SIGBUS, "SIGBUS", true},
    {SIGILL, "SIGILL", true},
    {SIGFPE, "SIGFPE", true},
    {SIGABRT, "SIGABRT", false},
    {SIGTRAP, "SIGTRAP", true},
    {SIGSYS, "SIGSYS", false},
}};

// Prepared before anything happens, and not changed afterwards.
PathBuffer program;
PathBuffer version;
PathBuffer folder;
PathBuffer log;
PathBuffer executable;
/// The log that is open now, and when it was started; the text counts while there is a descriptor.
std::atomic<int> openLog{-1};
FixedText<64> logStart;
std::atomic<bool> isInstalled{false};
std::terminate_handler previousTerminateHandler = nullptr;
alignas(16) std::array<std::byte, kCrashStackSize> mainThreadStack;

/// Why the program terminates; complete once the flag is set.
FixedText<512> reason;
std::atomic<bool> hasReason{false};
/// The number of the thread that reports.
std::atomic<pid_t> reporter{0};
static_assert(std::atomic<pid_t>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "signal handlers use them");

pid_t currentThread() {
    return static_cast<pid_t>(syscall(SYS_gettid));
}

// The report --------------------------------------------------------------------------------------

/// Makes the folders of a path that are missing.
void makeFolders(PathBuffer path) {
    char* const bytes = path.data();
    for (std::size_t index = 1; index < path.view().size(); ++index) {
        if (bytes[index] == '/') {
            bytes[index] = '\0';
            static_cast<void>(mkdir(bytes, 0700));
            bytes[index] = '/';
        }
    }
    static_cast<void>(mkdir(bytes, 0700));
}

void nameReport(PathBuffer& path, const timespec& now) {
    const CivilTime time = civilTime(now.tv_sec);
    path = folder;
    path.append("/");
    path.append(program.view());
    path.append("_");
    path.appendDecimal(time.year, 4);
    path.append("-");
    path.appendDecimal(time.month, 2);
    path.append("-");
    path.appendDecimal(time.day, 2);
    path.append("-");
    path.appendDecimal(time.hour, 2);
    path.appendDecimal(time.minute, 2);
    path.appendDecimal(time.second, 2);
    path.append("-");
    path.appendDecimal(static_cast<unsigned>(now.tv_nsec / 1000), 6);
    path.append(".crash");
}

FileDescriptor createReport(timespec now) {
    constexpr int kMostAttempts = 100;
    makeFolders(folder);
    PathBuffer path;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        nameReport(path, now);
        FileDescriptor file(open(path.data(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (file || errno != EEXIST || path.isFull()) {
            return file;
        }
        // Another process crashed in the same microsecond.
        now.tv_nsec = (now.tv_nsec + 1000) % 1'000'000'000;
    }
    return {};
}

const FatalSignal& fatalSignal(int number) {
    return *std::find_if(kFatalSignals.begin(), kFatalSignals.end(),
                         [number](const FatalSignal& signal) { return signal.number == number; });
}

void writeSignal(SignalSafeWriter& writer, int number, const siginfo_t& info) {
    const FatalSignal& signal = fatalSignal(number);
    writer.text("Signal: ").text(signal.name).text(" (");
    writer.decimal(static_cast<unsigned>(number)).text("), code ");
    writer.text(info.si_code < 0 ? "-" : "");
    writer.decimal(static_cast<unsigned>(std::abs(info.si_code))).text("\n");
    if (info.si_code == SI_USER) {
        writer.text("Sent by process: ").decimal(static_cast<unsigned>(info.si_pid)).text("\n");
    } else if (signal.hasAddress && info.si_code > 0) {
        writer.text("Faulting address: ");
        writer.hexadecimal(reinterpret_cast<std::uintptr_t>(info.si_addr)).text("\n");
    }
}

/// Where the open log is, which other programs may have moved on; false when that cannot be
/// determined.
bool findOpenLog(int descriptor, PathBuffer& path) {
    constexpr std::size_t kDigits = 10;
    FixedText<64> link;
    link.set("/proc/self/fd/");
    std::size_t width = 1;
    for (int rest = descriptor; rest >= 10 && width < kDigits; rest /= 10) {
        ++width;
    }
    link.appendDecimal(static_cast<unsigned>(descriptor), width);
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlink(link.data(), target.data(), target.size());
    if (length <= 0) {
        return false;
    }
    path.set({target.data(), static_cast<std::size_t>(length)});
    return true;
}

void writeLog(SignalSafeWriter& writer) {
    const int descriptor = openLog.load(std::memory_order_acquire);
    PathBuffer path;
    if (descriptor < 0 || !findOpenLog(descriptor, path)) {
        path = log;
    }
    if (!path.view().empty()) {
        writer.text("Log: ").text(path.view()).text("\n");
    }
    if (descriptor >= 0 && !logStart.view().empty()) {
        writer.text("Log started: ").text(logStart.view()).text("\n");
    }
}

void writeReport(SignalSafeWriter& writer, const timespec& now, int number, const siginfo_t& info) {
    writer.text("Program: ").text(program.view()).text("\n");
    writer.text("Version: ").text(version.view()).text("\n");
    writer.text("Path: ").text(executable.view()).text("\n");
    writer.text("Process: ").decimal(static_cast<unsigned>(getpid()));
    writer.text(", thread ").decimal(static_cast<unsigned>(currentThread())).text("\n");
    writer.text("Date: ").date(now.tv_sec).text("\n");
    writeSignal(writer, number, info);
    if (hasReason.load(std::memory_order_acquire)) {
        writer.text("Reason: ").text(reason.view()).text("\n");
    }
    writeLog(writer);
    writer.text("\nBacktrace:\n").flush();
}

/// The user's files are written beside their places and put there by a change of name.
void tellOnTerminal(int number) {
    SignalSafeWriter writer(STDERR_FILENO);
    writer.text(program.view()).text(" was ended by a fault (").text(fatalSignal(number).name);
    writer.text("). Each file is as it was or complete; none is half written.\n");
    writer.flush();
}

void report(int number, const siginfo_t& info, const void* context) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const FileDescriptor file = createReport(now);
    if (!file) {
        return;
    }
    SignalSafeWriter writer(file.get());
    writeReport(writer, now, number, info);
    writeCrashBacktrace(writer, context);
    writer.flush();
    // The system's own stamps lag a few milliseconds behind the clock, and a report must not look
    // older than the start of a program that crashed at once.
    const std::array<timespec, 2> dates{now, now};
    static_cast<void>(futimens(file.get(), dates.data()));
}

// The handlers ------------------------------------------------------------------------------------

/// Has the signal come once more, with all that came with it, and do what it does when nobody
/// handles it. It is held back until the handler has returned, so a core dump shows the fault.
void dieOf(int number, siginfo_t& info) {
    struct sigaction plain {};
    plain.sa_handler = SIG_DFL;
    sigaction(number, &plain, nullptr);
    if (syscall(SYS_rt_tgsigqueueinfo, getpid(), currentThread(), number, &info) != 0) {
        static_cast<void>(raise(number));
    }
}

extern "C" void handleFatalSignal(int number, siginfo_t* info, void* context) {
    const int savedError = errno;
    pid_t nobody = 0;
    if (reporter.compare_exchange_strong(nobody, currentThread())) {
        report(number, *info, context);
        // Last, for a closed standard error may end the process.
        tellOnTerminal(number);
    } else if (nobody != currentThread()) {
        // Another thread is reporting and ends the process when it is done.
        while (true) {
            pause();
        }
    }
    dieOf(number, *info);
    errno = savedError;
}

[[noreturn]] void handleTerminate() {
    static std::atomic<bool> isNoted{false};
    if (!isNoted.exchange(true)) {
        reason.set(reasonOf(std::current_exception()));
        std::replace_if(
            reason.data(), reason.data() + reason.view().size(),
            [](unsigned char character) { return character < ' '; }, ' ');
        hasReason.store(true, std::memory_order_release);
    }
    if (previousTerminateHandler != nullptr) {
        previousTerminateHandler();
    }
    std::abort();
}

void handleFatalSignals() {
    struct sigaction action {};
    action.sa_sigaction = handleFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (const FatalSignal& signal : kFatalSignals) {
        // A fault of the handler itself, with its signal held back, ends the process at once.
        sigaddset(&action.sa_mask, signal.number);
    }
    for (const FatalSignal& signal : kFatalSignals) {
        sigaction(signal.number, &action, nullptr);
    }
}

}  // namespace

void installCrashReporter(const CrashReportSettings& settings) {
    program.set(settings.program);
    version.set(settings.version);
    folder.set(settings.folder);
    log.set(settings.log);
    executable.set(executablePath());
    const stack_t stack{
        .ss_sp = mainThreadStack.data(), .ss_flags = 0, .ss_size = mainThreadStack.size()};
    sigaltstack(&stack, nullptr);
    if (!isInstalled.exchange(true)) {
        previousTerminateHandler = std::set_terminate(handleTerminate);
        handleFatalSignals();
    }
}

void setCrashReportLog(int descriptor, std::string_view started) {
    openLog.store(-1, std::memory_order_release);
    logStart.set(started);
    openLog.store(descriptor, std::memory_order_release);
}

bool isCrashReporterInstalled() {
    return isInstalled.load(std::memory_order_relaxed);
}

}  // namespace vornic::platform
