#include "foundation/tasks/QMTaskEx.h"

#include <algorithm>
#include <utility>

#include "base/Exception.h"
#include "foundation/log/QMLog.h"
#include "foundation/tasks/TaskOutput.h"
#include "platform/processes/Pipe.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

using platform::Process;
using platform::StandardStream;

namespace {

bool checkExecutable(const std::string& path) {
    if (platform::isExecutableFile(path)) {
        return true;
    }
    QMLog::appendLogAndPrint("Error: %@ is not executable", path);
    return false;
}

void logException(const std::string& path, const platform::Exception& exception) {
    QMLog::appendLog("Exception running task %@: %@", path, exception.reason());
}

std::shared_ptr<Process> makeProcess(const std::string& path, const QMTaskEx::Arguments& arguments,
                                     TaskSlot* task) {
    auto process = std::make_shared<Process>();
    process->setLaunchPath(path);
    process->setArguments(arguments);
    if (task != nullptr) {
        task->set(process);
    }
    return process;
}

/// A process whose output nobody wants.
std::shared_ptr<Process> makeSilentProcess(const std::string& path,
                                           const QMTaskEx::Arguments& arguments, TaskSlot* task) {
    std::shared_ptr<Process> process = makeProcess(path, arguments, task);
    process->setNullDevice(StandardStream::output);
    process->setNullDevice(StandardStream::error);
    return process;
}

/// Runs a process to its end. @throws Exception when it cannot be launched or a signal ended it.
void runToEnd(Process& process) {
    process.launch();
    process.waitUntilExit();
    if (const int signal = process.terminationSignal(); signal != 0) {
        throw platform::Exception("NSGenericException", "The tool " + process.launchPath() +
                                                            " was ended by signal " +
                                                            std::to_string(signal) + ".");
    }
}

/// Reads both streams (-1 for one that is not captured) to their ends. Standard output comes first;
/// standard error is read while that is silent, so that no tool waits for room there for ever.
void readToEnd(int output, int error, TaskOutput& captured) {
    while (output >= 0 || error >= 0) {
        if (platform::waitUntilReadable(output, error).first) {
            const std::string chunk = platform::readAvailable(output);
            if (chunk.empty()) {
                output = -1;
            } else {
                captured.addOutput(chunk);
            }
            continue;
        }
        std::string chunk = platform::readAvailable(error);
        if (chunk.empty()) {
            error = -1;
        }
        captured.addError(std::move(chunk));
    }
}

std::string capture(const std::shared_ptr<Process>& process, bool logOutput, bool logError) {
    platform::Pipe output = platform::makePipe();
    platform::Pipe error = platform::makePipe();
    if (logOutput) {
        process->setDescriptor(StandardStream::output, std::move(output.writingEnd));
    }
    // The writing end of this one goes at once, so that the tool reads the end of its input.
    process->setDescriptor(StandardStream::input, platform::makePipe().readingEnd);
    if (logError) {
        process->setDescriptor(StandardStream::error, std::move(error.writingEnd));
    } else {
        process->setNullDevice(StandardStream::error);
    }
    process->launch();
    TaskOutput captured;
    readToEnd(logOutput ? output.readingEnd.get() : -1, logError ? error.readingEnd.get() : -1,
              captured);
    process->reapInBackground();
    return std::move(captured).result();
}

QMTaskEx::String decode(const QMTaskEx::Data& data, QMTaskEx::Encoding encoding) {
    return data ? platform::decodeString(*data, encoding) : QMTaskEx::String("");
}

/// Cut toward zero, held within what the clock can wait for; what is no number counts as nothing.
std::chrono::seconds wholeSeconds(QMTaskEx::Timeout timeout) {
    constexpr double kLongest = 60.0 * 60 * 24 * 365;
    const double seconds = timeout.count();
    return std::chrono::seconds(seconds > 0 ? static_cast<std::int64_t>(std::min(seconds, kLongest))
                                            : 0);
}

/// Ends the watchdog with its run, however that ends.
class TimedRun {
  public:
    TimedRun(TaskSlot& task, std::shared_ptr<TaskTimer> timer)
        : task_(task), timer_(std::move(timer)) {
        task_.set(nullptr);
    }
    ~TimedRun() {
        task_.set(nullptr);
        timer_->cancel();
    }
    TimedRun(const TimedRun&) = delete;
    TimedRun& operator=(const TimedRun&) = delete;

  private:
    TaskSlot& task_;
    std::shared_ptr<TaskTimer> timer_;
};

}  // namespace

bool QMTaskEx::runTask(const std::string& path, const Arguments& arguments) {
    return runTask(path, arguments, nullptr);
}

bool QMTaskEx::runTask(const std::string& path, const Arguments& arguments, TaskSlot* task) {
    if (path.starts_with('/') && !checkExecutable(path)) {
        return false;
    }
    try {
        runToEnd(*makeSilentProcess(path, arguments, task));
        return true;
    } catch (const platform::Exception& exception) {
        logException(path, exception);
        return false;
    }
}

void QMTaskEx::runTaskAndReturn(const std::string& path, const Arguments& arguments) {
    if (!checkExecutable(path)) {
        return;
    }
    try {
        makeSilentProcess(path, arguments, nullptr)->launch();
    } catch (const platform::Exception& exception) {
        logException(path, exception);
    }
}

std::int32_t QMTaskEx::terminationCodeFromTask(const std::string& path,
                                               const Arguments& arguments) {
    return terminationCodeFromTask(path, arguments, nullptr);
}

std::int32_t QMTaskEx::terminationCodeFromTask(const std::string& path, const Arguments& arguments,
                                               TaskSlot* task) {
    constexpr std::int32_t kNoStatus = -1;
    if (!checkExecutable(path)) {
        return kNoStatus;
    }
    try {
        const std::shared_ptr<Process> process = makeSilentProcess(path, arguments, task);
        runToEnd(*process);
        return process->terminationStatus();
    } catch (const platform::Exception& exception) {
        logException(path, exception);
        return kNoStatus;
    }
}

QMTaskEx::Data QMTaskEx::dataFromTask(const std::string& path, const Arguments& arguments,
                                      TaskSlot* task) {
    return dataFromTask(path, arguments, task, std::nullopt);
}

QMTaskEx::Data QMTaskEx::dataFromTask(const std::string& path, const Arguments& arguments,
                                      TaskSlot* task, const Environment& environment) {
    return dataFromTask(path, arguments, task, environment, true);
}

QMTaskEx::Data QMTaskEx::dataFromTask(const std::string& path, const Arguments& arguments,
                                      TaskSlot* task, const Environment& environment,
                                      bool logOutput) {
    return dataFromTask(path, arguments, task, environment, logOutput, true);
}

QMTaskEx::Data QMTaskEx::dataFromTask(const std::string& path, const Arguments& arguments,
                                      TaskSlot* task, const Environment& environment,
                                      bool logOutput, bool logError) {
    if (!checkExecutable(path)) {
        return std::nullopt;
    }
    try {
        const std::shared_ptr<Process> process = makeProcess(path, arguments, task);
        process->setEnvironment(environment);
        return capture(process, logOutput, logError);
    } catch (const platform::Exception& exception) {
        QMLog::appendLogAndPrint("Exception running task %@: %@", path, exception.reason());
        return std::nullopt;
    }
}

QMTaskEx::String QMTaskEx::stringFromTask(const std::string& path, const Arguments& arguments) {
    return stringFromTask(path, arguments, nullptr);
}

QMTaskEx::String QMTaskEx::stringFromTask(const std::string& path, const Arguments& arguments,
                                          TaskSlot* task) {
    return stringFromTask(path, arguments, Encoding::ascii, task);
}

QMTaskEx::String QMTaskEx::stringFromTask(const std::string& path, const Arguments& arguments,
                                          Encoding encoding, TaskSlot* task) {
    return decode(dataFromTask(path, arguments, task), encoding);
}

bool QMTaskEx::runTask(const std::string& path, const Arguments& arguments, Timeout timeout) {
    return create()->runTimedTask(path, arguments, timeout);
}

QMTaskEx::Data QMTaskEx::dataFromTask(const std::string& path, const Arguments& arguments,
                                      Timeout timeout) {
    return create()->dataFromTimedTask(path, arguments, timeout);
}

QMTaskEx::Data QMTaskEx::dataFromTask(const std::string& path, const Arguments& arguments,
                                      Timeout timeout, bool logOutput, bool logError) {
    return create()->dataFromTimedTask(path, arguments, timeout, logOutput, logError);
}

QMTaskEx::String QMTaskEx::stringFromTask(const std::string& path, const Arguments& arguments,
                                          Timeout timeout) {
    return stringFromTask(path, arguments, Encoding::ascii, timeout);
}

QMTaskEx::String QMTaskEx::stringFromTask(const std::string& path, const Arguments& arguments,
                                          Encoding encoding, Timeout timeout) {
    return decode(dataFromTask(path, arguments, timeout), encoding);
}

QMTaskEx::String QMTaskEx::stringFromTask(const std::string& path, const Arguments& arguments,
                                          Encoding encoding, Timeout timeout, bool logOutput,
                                          bool logError) {
    return decode(dataFromTask(path, arguments, timeout, logOutput, logError), encoding);
}

std::int32_t QMTaskEx::terminationCodeFromTask(const std::string& path, const Arguments& arguments,
                                               Timeout timeout) {
    return create()->terminationCodeFromTimedTask(path, arguments, timeout);
}

std::shared_ptr<QMTaskEx> QMTaskEx::create() {
    return std::shared_ptr<QMTaskEx>(new QMTaskEx);  // NOLINT: the constructor is private
}

QMTaskEx::~QMTaskEx() {
    terminateAsyncTask();
}

template <typename Result>
Result QMTaskEx::runWithin(const std::string& path, Timeout timeout, Result neutral,
                           const std::function<Result()>& run) {
    const auto timer = std::make_shared<TaskTimer>();
    try {
        platform::detachNewThread(
            [self = shared_from_this(), timer, seconds = wholeSeconds(timeout)] {
                self->setupTimeout(seconds, timer);
            },
            [timer] { timer->cancel(); });
    } catch (const platform::Exception& exception) {
        logException(path, exception);
        return neutral;
    }
    const TimedRun timed(theTask_, timer);
    return run();
}

bool QMTaskEx::runTimedTask(const std::string& path, const Arguments& arguments, Timeout timeout) {
    return runWithin<bool>(path, timeout, false, [&] {
        TaskSlot unwatched;
        return runTask(path, arguments, &unwatched);
    });
}

QMTaskEx::Data QMTaskEx::dataFromTimedTask(const std::string& path, const Arguments& arguments,
                                           Timeout timeout) {
    return dataFromTimedTask(path, arguments, timeout, true, true);
}

QMTaskEx::Data QMTaskEx::dataFromTimedTask(const std::string& path, const Arguments& arguments,
                                           Timeout timeout, bool logOutput, bool logError) {
    return runWithin<Data>(path, timeout, std::nullopt, [&] {
        return dataFromTask(path, arguments, &theTask_, std::nullopt, logOutput, logError);
    });
}

std::int32_t QMTaskEx::terminationCodeFromTimedTask(const std::string& path,
                                                    const Arguments& arguments, Timeout timeout) {
    return runWithin<std::int32_t>(
        path, timeout, -1, [&] { return terminationCodeFromTask(path, arguments, &theTask_); });
}

void QMTaskEx::setupTimeout(std::chrono::seconds seconds, const std::shared_ptr<TaskTimer>& timer) {
    if (timer->isCancelledWithin(seconds)) {
        return;
    }
    platform::MainThread::perform([self = shared_from_this(), timer] {
        if (!timer->isCancelled()) {
            self->timeout();
        }
        timer->noteAction();
    });
    timer->waitForAction();
}

void QMTaskEx::timeout() {
    const std::shared_ptr<Process> process = theTask_.value();
    if (process && process->isRunning()) {
        QMLog::appendLogAndPrint("Task %@ timed out. Terminating...", process->launchPath());
        process->terminate();
    }
}

}  // namespace vornic
