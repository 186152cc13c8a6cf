#include "foundation/log/QMLog.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <mutex>
#include <new>
#include <utility>

#include <pthread.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/Exception.h"
#include "base/TerminalText.h"
#include "base/Text.h"
#include "foundation/log/LogBatch.h"
#include "foundation/log/LogFile.h"
#include "foundation/log/LogGenerations.h"
#include "foundation/log/LogQueue.h"
#include "foundation/log/UncaughtExceptions.h"
#include "foundation/places/GlobalPreferences.h"
#include "platform/crash/CrashReporter.h"
#include "platform/processes/ProcessInfo.h"
#include "platform/processes/Termination.h"
#include "platform/settings/Bundle.h"
#include "platform/threads/MainThread.h"

namespace vornic {

namespace {

constexpr std::uint64_t kLargestGeneration = 5'000'000;
/// An entry up to this length, in UTF-16 units, is short enough to be waited for.
constexpr std::uint64_t kShortEntry = 99;
/// A backlog of this many entries is not written any more when the program ends.
constexpr std::size_t kLongBacklog = 11;
constexpr std::string_view kEscapedAfterPercent = " .!,-;:+";

bool needsEscaping(std::string_view text) {
    for (std::size_t i = text.find('%'); i != std::string_view::npos; i = text.find('%', i + 1)) {
        if (i + 1 < text.size() &&
            kEscapedAfterPercent.find(text[i + 1]) != std::string_view::npos) {
            return true;
        }
        if (text.substr(i).starts_with("%%%")) {
            return true;
        }
    }
    return false;
}

std::string formatForLog(std::string_view format, std::span<const FormatArgument> arguments) {
    if (!needsEscaping(format)) {
        return formatStringWithArguments(format, arguments);
    }
    return formatStringWithArguments(QMLog::escapeTextForLogging(format), arguments);
}

std::function<void()>& whenReopening() {
    static std::function<void()> called;
    return called;
}

/// A format that is not there at all, as opposed to an empty one.
bool isMissing(std::string_view format) {
    return format.data() == nullptr;
}

}  // namespace

struct QMLog::State {
    State() : queue([this](std::span<const LogQueue::Entry> entries) { return write(entries); }) {}

    mutable std::mutex mutex;
    /// Empty while none is stored. Shared, so that it is copied without the lock.
    std::shared_ptr<const std::string> appName;
    std::shared_ptr<LogFile> fileHandle;
    std::size_t observer = 0;

    /// Held while somebody waits for the queue.
    std::mutex finishing;
    std::atomic<std::uint64_t> bytesWritten = 0;
    std::atomic<std::uint64_t> bytesInQueue = 0;
    std::atomic<bool> loggingDisabled = false;
    std::atomic<bool> noPrinting = false;
    LogQueue queue;

    [[nodiscard]] std::shared_ptr<LogFile> file() const {
        const std::lock_guard lock(mutex);
        return fileHandle;
    }
    void setFile(std::shared_ptr<LogFile> file, std::string_view started) {
        const std::lock_guard lock(mutex);
        std::swap(fileHandle, file);
        platform::setCrashReportLog(fileHandle ? fileHandle->descriptor() : -1, started);
    }
    /// Puts a file in place unless another one was opened meanwhile. @return the one in place.
    std::shared_ptr<LogFile> setFileIfNone(const std::shared_ptr<LogFile>& file) {
        const std::lock_guard lock(mutex);
        if (!fileHandle) {
            fileHandle = file;
            platform::setCrashReportLog(file->descriptor(), "");
        }
        return fileHandle;
    }

    void setName(std::shared_ptr<const std::string> name) {
        const std::lock_guard lock(mutex);
        std::swap(appName, name);
    }
    [[nodiscard]] std::shared_ptr<const std::string> name() const {
        const std::lock_guard lock(mutex);
        return appName;
    }

    /// Around fork(2): a copy made while another thread writes would wait for it for ever.
    void holdForFork() noexcept {
        finishing.lock();
        queue.holdForFork();
        mutex.lock();
    }
    void goOnAfterFork(bool isCopy) noexcept {
        mutex.unlock();
        isCopy ? queue.goOnInForkedCopy() : queue.goOnAfterFork();
        finishing.unlock();
    }

    void settleName(std::string_view given);
    void print(std::string line) const;
    void printLoss() const noexcept;
    /// Does it, or says that there was no memory for it: nothing raises to a caller of the log.
    template <typename Work>
    void withinMemory(const Work& work) const noexcept {
        try {
            work();
        } catch (const std::bad_alloc&) {
            printLoss();
        }
    }
    void queueText(std::string_view text, bool wakesWorker);
    std::size_t write(std::span<const LogQueue::Entry> entries) noexcept;
    std::size_t writeToFile(std::span<const LogQueue::Entry> entries);
    std::shared_ptr<LogFile> reopenedFile();
};

QMLog::QMLog() : state_(std::make_unique<State>()) {}

QMLog::~QMLog() = default;

QMLog& QMLog::sharedController() {
    // Never destroyed: any thread may log until the process has ended.
    static QMLog& shared = *[] {
        auto* log = new QMLog();
        log->state_->observer = platform::addWillTerminateObserver([] { willTerminate(); });
        logUncaughtExceptions();
        // Without memory for it only copies of this process would lack their log.
        static_cast<void>(pthread_atfork([] { sharedController().state_->holdForFork(); },
                                         [] { sharedController().state_->goOnAfterFork(false); },
                                         [] { sharedController().state_->goOnAfterFork(true); }));
        return log;
    }();
    return shared;
}

void QMLog::createNewLog() {
    createNewLog(std::string_view(""));
}

void QMLog::createNewLog(std::string_view name) {
    createNewLog(name, false);
}

// Calls that meet take turns where they move files and nowhere else.
void QMLog::createNewLog(std::string_view name, bool noPrinting) {
    QMLog& log = sharedController();
    State& state = *log.state_;
    state.noPrinting = noPrinting;
    if (state.loggingDisabled) {
        return;
    }
    bool isDisabled = false;
    state.withinMemory([&] { isDisabled = isGlobalSwitchOn("disable-logging"); });
    if (!isDisabled) {
        // A line before this one belongs to the log before.
        finishWriting();
    }
    state.setFile(nullptr, "");
    state.withinMemory([&] {
        if (isDisabled) {
            state.print("Logging is disabled");
            state.loggingDisabled = true;
            return;
        }
        state.settleName(name);
        state.bytesWritten = 0;
        const StartedGeneration started = startGeneration(log.appName());
        if (started.failure) {
            state.print(*started.failure);
        }
        if (started.file) {
            const std::string date = platform::currentDateDescription();
            state.setFile(started.file, date);
            writeHeader(date);
        }
    });
}

/// The lines that every generation begins with.
void QMLog::writeHeader(const std::string& started) {
    const platform::Bundle bundle = platform::Bundle::mainBundle();
    constexpr double kGigabyte = 1024.0 * 1024.0 * 1024.0;
    fastAppendLog("Log started: %@\n", started);
    if (const std::optional<std::string> version = bundle.infoString("CFBundleVersion")) {
        fastAppendLog("Version: %@\n", *version);
    }
    if (bundle.exists()) {
        // The bundle of this platform holds no program of its own: the running one stands in.
        fastAppendLog("Path: %@\n", bundle.executablePath().value_or(platform::executablePath()));
    }
    appendLog("System: macOS %@, %li CPU(s), %0.2f GB RAM\n",
              platform::operatingSystemVersionString(), platform::processorCount(),
              static_cast<double>(platform::physicalMemory()) / kGigabyte);
    fastAppendLog("Running in 64-bit mode\n");
}

void QMLog::appendLogWithArguments(std::string_view format,
                                   std::span<const FormatArgument> arguments) {
    QMLog& log = sharedController();
    State& state = *log.state_;
    if (isMissing(format) || state.loggingDisabled) {
        return;
    }
    state.withinMemory([&] {
        const std::string text = formatForLog(format, arguments);
        if (platform::MainThread::isCurrent()) {
            state.queueText(text, true);
            return;
        }
        state.queueText(text, false);
        const std::size_t length = utf16Length(text);
        if (length >= 1 && length <= kShortEntry && state.bytesInQueue <= kShortEntry) {
            finishWriting();
        } else {
            state.queue.wake();
        }
    });
}

void QMLog::fastAppendLogWithArguments(std::string_view format,
                                       std::span<const FormatArgument> arguments) {
    QMLog& log = sharedController();
    if (isMissing(format) || log.state_->loggingDisabled) {
        return;
    }
    log.state_->withinMemory([&] { log.appendTextToLog(formatForLog(format, arguments)); });
}

void QMLog::appendLogAndPrintWithArguments(std::string_view format,
                                           std::span<const FormatArgument> arguments) {
    QMLog& log = sharedController();
    if (isMissing(format) || log.state_->loggingDisabled) {
        return;
    }
    log.state_->withinMemory([&] {
        const std::string formatted = formatForLog(format, arguments);
        const std::string_view text = trimmed(formatted);
        appendLog("%@", text);
        std::string printed = replacingOccurrences(text, "%@", "");
        printed = replacingOccurrences(printed, "%", "%%");
        std::erase(printed, '\0');
        log.state_->print(std::move(printed));
    });
}

void QMLog::appendLogAndDebugPrintWithArguments(std::string_view format,
                                                std::span<const FormatArgument> arguments) {
    const State& state = *sharedController().state_;
    if (isMissing(format) || state.loggingDisabled) {
        return;
    }
    state.withinMemory([&] {
        const std::string formatted = formatForLog(format, arguments);
        appendLog("%@", trimmed(formatted));
    });
}

std::string QMLog::escapeTextForLogging(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size() + 8);
    for (std::size_t i = 0; i < text.size(); ++i) {
        escaped += text[i];
        if (text[i] == '%' && i + 1 < text.size() &&
            kEscapedAfterPercent.find(text[i + 1]) != std::string_view::npos) {
            escaped += '%';
        }
    }
    return replacingOccurrences(escaped, "%%%", "%%");
}

void QMLog::finishWriting() {
    State& state = *sharedController().state_;
    if (state.queue.isWriter()) {
        return;
    }
    const std::lock_guard lock(state.finishing);
    state.queue.finish();
}

std::vector<std::string> QMLog::availableLogs() {
    return existingLogPaths(sharedController().appName());
}

std::optional<std::string> QMLog::currentLog() {
    QMLog& log = sharedController();
    const std::shared_ptr<LogFile> file = log.state_->file();
    if (!file) {
        return std::nullopt;
    }
    const std::string name = log.appName();
    std::vector<std::string> places = existingLogPaths(name);
    if (const std::optional<std::string> path = currentLogPath(name)) {
        places.insert(places.begin(), *path);
    }
    const auto found = std::find_if(places.begin(), places.end(),
                                    [&](const std::string& path) { return file->isAt(path); });
    return found != places.end() ? std::optional(*found) : std::nullopt;
}

void QMLog::setWhenReopening(std::function<void()> called) {
    whenReopening() = std::move(called);
}

void QMLog::willTerminate() {
    QMLog& log = sharedController();
    State& state = *log.state_;
    platform::removeWillTerminateObserver(state.observer);
    if (state.queue.count() < kLongBacklog) {
        finishWriting();
    } else {
        state.queue.cancelAll();
    }
    log.setAppName(std::nullopt);
    state.queue.close();
    state.setFile(nullptr, "");
}

void QMLog::appendTextToLog(std::string_view text) {
    state_->queueText(text, true);
}

void QMLog::appendLogOnThread(const std::string& text) {
    const LogQueue::Entry entry{.text = text, .units = utf16Length(text)};
    static_cast<void>(state_->write({&entry, 1}));
}

std::string QMLog::appName() const {
    const std::shared_ptr<const std::string> name = state_->name();
    return name ? *name : platform::applicationName();
}

void QMLog::setAppName(std::optional<std::string> name) {
    state_->setName(name ? std::make_shared<const std::string>(*std::move(name)) : nullptr);
}

std::uint64_t QMLog::bytesWritten() const {
    return state_->bytesWritten;
}

std::uint64_t QMLog::bytesInQueue() const {
    return state_->bytesInQueue;
}

bool QMLog::loggingDisabled() const {
    return state_->loggingDisabled;
}

bool QMLog::noPrinting() const {
    return state_->noPrinting;
}

bool QMLog::hasFileHandle() const {
    return state_->file() != nullptr;
}

/// The given name counts only where neither a stored nor a derived one is to be had.
void QMLog::State::settleName(std::string_view given) {
    const std::shared_ptr<const std::string> stored = name();
    const std::string settled = stored ? *stored : platform::applicationName();
    if (!settled.empty()) {
        return;
    }
    const bool counts = !stored && !given.empty();
    setName(std::make_shared<const std::string>(counts ? given : "Unknown"));
}

void QMLog::State::print(std::string line) const {
    if (noPrinting) {
        return;
    }
    line = textForStream(line, STDOUT_FILENO) + '\n';
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stdout));
    static_cast<void>(std::fflush(stdout));
}

/// What is said, without any memory, of a text that there is no memory for.
void QMLog::State::printLoss() const noexcept {
    if (!noPrinting && !loggingDisabled) {
        static_cast<void>(std::fputs("Exception writing to log: Not enough memory.\n", stdout));
        static_cast<void>(std::fflush(stdout));
    }
}

void QMLog::State::queueText(std::string_view text, bool wakesWorker) {
    text = trimmed(text);
    if (text.empty()) {
        return;
    }
    const std::size_t units = utf16Length(text);
    bytesInQueue += units;
    if (!queue.add(text, units, wakesWorker)) {
        bytesInQueue -= units;
        printLoss();
    }
}

/// Deals with the first entry and as many behind it as go into the same write. @return how many
/// entries are written, or lost with a message.
std::size_t QMLog::State::write(std::span<const LogQueue::Entry> entries) noexcept {
    if (loggingDisabled) {
        return entries.size();
    }
    try {
        return writeToFile(entries);
    } catch (const platform::Exception& exception) {
        if (!loggingDisabled) {
            withinMemory(
                [&] { print(formatString("Exception writing to log: %s", exception.reason())); });
        }
    } catch (const std::exception&) {
        printLoss();
    }
    return 1;
}

std::size_t QMLog::State::writeToFile(std::span<const LogQueue::Entry> entries) {
    std::shared_ptr<LogFile> openFile = file();
    if (!openFile) {
        // Opening may take its time, and what was decided meanwhile counts for the other entries.
        entries = entries.first(1);
        openFile = reopenedFile();
    }
    if (!openFile) {
        if (!loggingDisabled) {
            print(formatString("Unable to log the following information: %s", entries[0].text));
            print("Unable to open log for output");
        }
        bytesInQueue -= entries[0].units;
        return 1;
    }
    const std::uint64_t before = bytesWritten;
    const LogBatch batch(entries, kLargestGeneration - std::min(kLargestGeneration, before));
    const LogFile::Appended appended = openFile->append(batch.bytes());
    const std::size_t written = batch.entriesWithin(appended.byteCount);
    if (written == 0) {
        const Error error = posixError("The log file cannot be written", appended.errorNumber);
        throw platform::Exception("NSFileHandleOperationException", error.localizedDescription());
    }
    bytesWritten += batch.bytesOf(written);
    if (bytesWritten >= kLargestGeneration) {
        finishWriting();
        createNewLog(sharedController().appName());
        appendLog("Log truncated at 500KB");
    }
    for (const LogQueue::Entry& entry : entries.first(written)) {
        bytesInQueue -= entry.units;
    }
    return written;
}

/// The current generation, opened at its end when it exists.
std::shared_ptr<LogFile> QMLog::State::reopenedFile() {
    const std::optional<std::string> path = currentLogPath(sharedController().appName());
    std::shared_ptr<LogFile> opened = path ? LogFile::open(*path) : nullptr;
    if (opened && whenReopening()) {
        whenReopening()();
    }
    // A new generation may have been started meanwhile, and its file must stay.
    return opened ? setFileIfNone(opened) : nullptr;
}

}  // namespace vornic
