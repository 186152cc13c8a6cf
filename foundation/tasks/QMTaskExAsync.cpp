#include <utility>

#include "base/Exception.h"
#include "foundation/log/QMLog.h"
#include "foundation/tasks/QMTaskEx.h"
#include "platform/processes/Pipe.h"
#include "platform/threads/Thread.h"

namespace vornic {

using platform::PipeReader;
using platform::Process;
using platform::StandardStream;

namespace {

void logException(const platform::Exception& exception) {
    QMLog::appendLogAndPrint("Exception: %@", exception.reason());
}

}  // namespace

void QMTaskEx::asyncDataFromTask(const std::string& path, const Arguments& arguments,
                                 const std::shared_ptr<TaskDelegate>& delegate,
                                 std::string selector, std::any object) {
    asyncDataFromTask(path, arguments, delegate, std::move(selector), std::move(object),
                      std::nullopt);
}

void QMTaskEx::asyncDataFromTask(const std::string& path, const Arguments& arguments,
                                 const std::shared_ptr<TaskDelegate>& delegate,
                                 std::string selector, std::any object,
                                 const Environment& environment) {
    try {
        platform::Pipe output = platform::makePipe();
        const auto process = std::make_shared<Process>();
        process->setDescriptor(StandardStream::output, std::move(output.writingEnd));
        process->setNullDevice(StandardStream::error);
        process->setEnvironment(environment);
        process->setLaunchPath(path);
        process->setArguments(arguments);
        startReception(process,
                       {.delegate = delegate,
                        .selector = std::move(selector),
                        .object = std::move(object),
                        .reader = std::make_shared<PipeReader>(std::move(output.readingEnd))});
    } catch (const platform::Exception& exception) {
        logException(exception);
    }
}

void QMTaskEx::startReception(const std::shared_ptr<Process>& process, Reception reception) {
    const std::shared_ptr<PipeReader> reader = reception.reader;
    {
        const std::lock_guard lock(mutex_);
        std::swap(reception_, reception);
        theTask_.set(process);
    }
    if (reception.reader) {
        // The run that this one takes the place of ends.
        reception.reader->close();
    }
    platform::detachNewThread([self = shared_from_this()] { self->launchAsyncTask(); },
                              [reader] { reader->close(); });
}

void QMTaskEx::launchAsyncTask() {
    const std::shared_ptr<Process> process = theTask_.value();
    const std::shared_ptr<PipeReader> reader = reception().reader;
    if (!process || !reader) {
        QMLog::appendLogAndPrint("Unable to launch async task - no task set");
        return;
    }
    if (!platform::isExecutableFile(process->launchPath())) {
        QMLog::appendLog("Unable to launch async task - task does not exist or is not executable");
        return;
    }
    try {
        process->launch();
        bool hasEnded = false;
        bool isCurrent = true;
        while (!hasEnded && isCurrent) {
            const std::string chunk = reader->readAvailable();
            hasEnded = chunk.empty();
            isCurrent = handOn(chunk, process);
        }
        if (!isCurrent) {
            // It may have been ended before the launch.
            process->terminate();
        }
    } catch (const platform::Exception& exception) {
        logException(exception);
    }
}

void QMTaskEx::asyncTaskReturnData(const TaskNotification& notification) {
    const auto item = notification.userInfo.find(kFileHandleNotificationDataItem);
    static_cast<void>(
        handOn(item != notification.userInfo.end() ? item->second : "", theTask_.value()));
}

// Hands what a run has written on to the delegate, and ends the run when that is nothing.
// Returns false when the run has been ended: another one may have begun on the instance.
bool QMTaskEx::handOn(const std::string& chunk, const std::shared_ptr<Process>& ofRun) {
    Reception current;
    {
        const std::lock_guard lock(mutex_);
        if (theTask_.value() != ofRun) {
            return false;
        }
        current = reception_;
    }
    const std::shared_ptr<TaskDelegate> delegate = current.delegate.lock();
    TaskDelegate::Operation operation;
    if (delegate && !current.selector.empty()) {
        operation = delegate->operationForSelector(current.selector);
    }
    if (operation) {
        operation(chunk, *this, current.object.has_value() ? &current.object : nullptr);
    }
    if (chunk.empty()) {
        endRun(ofRun);
    }
    return true;
}

void QMTaskEx::terminateAsyncTask() {
    endRun(theTask_.value());
}

void QMTaskEx::endRun(const std::shared_ptr<Process>& process) {
    Reception ended;
    {
        const std::lock_guard lock(mutex_);
        if (theTask_.value() != process) {
            return;
        }
        std::swap(reception_, ended);
        theTask_.set(nullptr);
    }
    if (ended.reader) {
        ended.reader->close();
    }
    if (process) {
        process->terminate();
    }
}

std::any QMTaskEx::object() const {
    const std::lock_guard lock(mutex_);
    return reception_.object;
}

QMTaskEx::Reception QMTaskEx::reception() const {
    const std::lock_guard lock(mutex_);
    return reception_;
}

}  // namespace vornic
