#include "repair/document/Document.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <utility>

#include "base/Exception.h"
#include "base/FormatString.h"
#include "foundation/log/QMException.h"
#include "foundation/log/QMLog.h"
#include "job/JournaledSwap.h"
#include "platform/files/FileSystem.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "repair/document/DocumentEvents.h"
#include "repair/pipeline/CharacterFilter.h"
#include "repair/pipeline/RepairPipeline.h"
#include "report/Message.h"
#include "report/RuleTable.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

using platform::MainThread;

namespace {

// The platform's status of a routine that is not implemented.
constexpr int kUnimplementedStatus = -4;
constexpr std::int64_t kAlternateButton = 0;

void logAlert(std::string_view message, std::string_view info) {
    QMLog::appendLog("%@. %@", message, info);
}

void printLine(std::string_view line) {
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stdout));
    static_cast<void>(std::fputc('\n', stdout));
}

}  // namespace

Document::Document() : reportOutput_(printLine) {}

Document::~Document() {
    progressCancelled_ = true;
    isRunning_ = false;
}

std::shared_ptr<Document> Document::create() {
    return std::shared_ptr<Document>(new Document());
}

void Document::setWindow(std::shared_ptr<DocumentWindow> window) {
    window_ = std::move(window);
}

Document::Text Document::filePath() const {
    return filePath_;
}

void Document::setFilePath(Text path) {
    named_ = path ? std::make_unique<NamedSource>(*path) : nullptr;
    filePath_ = std::move(path);
}

bool Document::readFromURL(const std::string& path, std::string_view /*ofType*/, Error* error) {
    setFilePath(path);
    startRepairOnThread(path, fileKindOfPath(path), "-[Document readFromURL:ofType:error:]");
    if (error != nullptr) {
        *error = Error{std::string(kOSStatusErrorDomain), kUnimplementedStatus,
                       "The operation could not be completed."};
    }
    return true;
}

bool Document::windowShouldClose() {
    if (!isRunning()) {
        return true;
    }
    if (closeQuestion_) {
        return false;
    }
    const auto question = std::make_shared<QMAlert>();
    closeQuestion_ = question;
    const std::int64_t answer = QMAlert::alertSheetWithMessageText(
        "A repair is running. Are you sure you wish to quit?", "Quit", "Cancel", std::nullopt,
        "This will cancel the repair.", window_, nullptr, std::nullopt, true, question);
    closeQuestion_ = nullptr;
    return answer != kAlternateButton;
}

// The run that the question is about has ended: the window stays, with its outcome.
void Document::endCloseQuestion() {
    if (closeQuestion_ && !closeQuestion_->alertEnded()) {
        closeQuestion_->alertDidEnd(kAlternateButton);
    }
}

void Document::close() {
    closed_.store(true, std::memory_order_relaxed);
    stopLatestRun();
    named_.reset();
    window_.reset();
}

void Document::repair() {
    repairAs(fileKindOfPath(filePath_.value_or("")));
}

void Document::repairAs(FileKind kind) {
    // A conversion that waits for an answer, say, would write what the repair has not seen.
    const bool isConverting = conversion_ && conversion_->mayWrite() && !conversion_->isStopped();
    if (!filePath_ || filePath_->empty() || isConverting) {
        return;
    }
    startRepairOnThread(*filePath_, kind, "-[Document repair:]");
}

void Document::startRepairOnThread(const std::string& path, FileKind kind, const char* forMethod) {
    const bool isStarted = runDetached(
        [path, kind, conversion = conversion_](Document& document) {
            if (conversion) {
                conversion->waitUntilWritten();
            }
            static_cast<void>(document.startRepair(path, kind));
        },
        forMethod);
    if (!isStarted) {
        tellNoThread("Unable to repair file", path);
    }
}

void Document::tellNoThread(std::string_view message, const std::string& path) {
    displayAlert(message, formatString("The system has no thread to give for the file %@. Please "
                                       "close other programs and try again.",
                                       path));
}

bool Document::runDetached(std::function<void(Document&)> work, const char* forMethod) {
    auto body = [self = shared_from_this(), work = std::move(work)]() mutable {
        try {
            work(*self);
        } catch (const std::exception& exception) {
            // Out of memory, say: the program and its other documents go on.
            QMLog::appendLogAndPrint("Exception in a document's thread: %@", exception.what());
        }
        // The last owner of a document lets go of it where its window lives.
        MainThread::perform([last = std::move(self)]() mutable { last.reset(); });
    };
    try {
        platform::detachNewThread(std::move(body));
        return true;
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, forMethod);
        return false;
    }
}

RepairResult Document::startRepair(const std::string& path) {
    return startRepair(path, fileKindOfPath(path));
}

RepairResult Document::startRepair(const std::string& path, FileKind kind) {
    RepairResult result;
    JournaledSwap journaled(program_invocation_short_name, VORNIC_VERSION);
    const auto show = [&] {
        inWindow([&result](DocumentWindow& window) { window.showOutcome(result); });
    };
    try {
        result = runPipeline(path, kind, journaled);
        result.isUndoable = journaled.isWrittenDown();
    } catch (...) {
        show();
        throw;
    }
    show();
    return result;
}

RepairResult Document::runPipeline(const std::string& path, FileKind kind, SwapObserver& observer) {
    setProgressCancelled(false);
    setXmlType(xmlTypeOf(kind));
    RepairResult result;
    try {
        DocumentEvents events(*this);
        RepairPipeline pipeline(path, kind, events,
                                StopToken([this] { return progressCancelled(); }), observer);
        startProgress();
        result = std::move(pipeline).run();
        if (result.closing) {
            displayAlert(result.closing->title, result.closing->information);
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document startRepair:]");
    } catch (...) {
        endProgress();
        throw;
    }
    endProgress();
    return result;
}

std::string Document::stripInvalidCharsFromData(std::string_view data) {
    QMLog::appendLog("%@", messageOf("repair-stripping"_rule));
    return vornic::stripInvalidCharsFromData(data);
}

Document::Text Document::filterInvalidCharsInString(std::string_view text) {
    DocumentEvents events(*this);
    RepairReport report(events, {fileHasErrs(), fileWasRepaired()});
    SourcePlaces places(text, std::nullopt);
    std::optional<FilteredText> filtered = vornic::filterInvalidCharsInString(
        places, report, StopToken([this] { return progressCancelled(); }));
    return filtered ? Text(std::move(*filtered).of(std::string(text))) : std::nullopt;
}

// Flags. They are plain in meaning: no thread reads another's data by them.

bool Document::fileHasErrs() const {
    return fileHasErrs_.load(std::memory_order_relaxed);
}

void Document::setFileHasErrs(bool hasErrors) {
    fileHasErrs_.store(hasErrors, std::memory_order_relaxed);
}

bool Document::fileWasRepaired() const {
    return fileWasRepaired_.load(std::memory_order_relaxed);
}

void Document::setFileWasRepaired(bool wasRepaired) {
    fileWasRepaired_.store(wasRepaired, std::memory_order_relaxed);
}

bool Document::isRunning() const {
    return isRunning_.load(std::memory_order_relaxed);
}

bool Document::progressCancelled() const {
    return progressCancelled_.load(std::memory_order_relaxed) ||
           closed_.load(std::memory_order_relaxed) ||
           (interruption_ != nullptr && interruption_->load(std::memory_order_relaxed) != 0);
}

void Document::setProgressCancelled(bool cancelled) {
    progressCancelled_.store(cancelled, std::memory_order_relaxed);
}

std::int64_t Document::minDowngradeVersion() const {
    return minDowngradeVersion_.load(std::memory_order_relaxed);
}

void Document::setMinDowngradeVersion(std::int64_t version) {
    minDowngradeVersion_.store(version, std::memory_order_relaxed);
}

// Progress.

void Document::inWindow(const std::function<void(DocumentWindow&)>& draw) const {
    if (!hasGUI_) {
        return;
    }
    MainThread::performAndWait([&] {
        if (window_) {
            draw(*window_);
        }
    });
}

void Document::startProgress() {
    isRunning_.store(true, std::memory_order_relaxed);
    setProgressCancelled(false);
    progressMax_.store(0, std::memory_order_relaxed);
    inWindow([](DocumentWindow& window) {
        window.setProgressCancelEnabled(true);
        window.stopProgressAnimation();
        window.setProgressIndeterminate(true);
        window.startProgressAnimation();
        window.setProgressStatusText("Repairing...");
        if (!(window.progressSheetIsVisible() && window.progressSheetIsSheet())) {
            window.beginProgressSheet();
        }
    });
}

void Document::endProgress() {
    inWindow([](DocumentWindow& window) {
        window.stopProgressAnimation();
        if (window.progressSheetIsVisible() || window.progressSheetIsSheet()) {
            window.endProgressSheet();
        }
    });
    isRunning_.store(false, std::memory_order_relaxed);
    inWindow([this](DocumentWindow& /*window*/) { endCloseQuestion(); });
}

void Document::setProgressLabel(std::string_view text) {
    inWindow([&](DocumentWindow& window) { window.setProgressStatusText(text); });
}

void Document::setProgressMax(std::int64_t maximum) {
    progressValue_.store(0, std::memory_order_relaxed);
    progressMax_.store(maximum, std::memory_order_relaxed);
    inWindow([](DocumentWindow& window) {
        window.stopProgressAnimation();
        window.setProgressIndeterminate(false);
        window.startProgressAnimation();
    });
}

void Document::setIndeterminateProgress() {
    progressMax_.store(0, std::memory_order_relaxed);
    inWindow([](DocumentWindow& window) {
        window.stopProgressAnimation();
        window.setProgressIndeterminate(true);
        window.startProgressAnimation();
    });
}

void Document::incrementProgress() {
    progressValue_.fetch_add(1, std::memory_order_relaxed);
}

void Document::setProgressValue(std::int64_t value) {
    progressValue_.store(value, std::memory_order_relaxed);
}

void Document::cancelProgress() {
    setProgressCancelled(true);
    inWindow([](DocumentWindow& window) { window.setProgressCancelEnabled(false); });
    appendInfoText(messageOf("repair-cancelled"_rule));
}

std::int64_t Document::progressMax() const {
    return progressMax_.load(std::memory_order_relaxed);
}

std::int64_t Document::progressValue() const {
    return progressValue_.load(std::memory_order_relaxed);
}

// The report text.

void Document::clearInfoText() {
    inWindow([](DocumentWindow& window) { window.clearReport(); });
}

void Document::appendInfoText(std::string_view text) {
    appendInfoText(text, false, false);
}

void Document::appendBoldInfoText(std::string_view text) {
    appendInfoText(text, false, true);
}

void Document::appendErrorInfoText(std::string_view text) {
    appendInfoText(text, true, false);
}

void Document::appendBoldErrorInfoText(std::string_view text) {
    appendInfoText(text, true, true);
}

void Document::appendInfoText(std::string_view text, bool isError, bool isBold) {
    if (!hasGUI_) {
        appendInPlace(text, isError, isBold);
        return;
    }
    bool isAppended = false;
    MainThread::performAndWait([&] {
        isAppended = true;
        appendInPlace(text, isError, isBold);
    });
    if (!isAppended) {
        // The program ends, and what the run still does belongs into the log.
        QMLog::appendLog("%@", text);
    }
}

void Document::appendInPlace(std::string_view text, bool isError, bool isBold) {
    try {
        QMLog::appendLog("%@", text);
        if (!hasGUI_) {
            if (reportOutput_) {
                reportOutput_(text);
            }
        } else if (window_) {
            const std::string_view separator = window_->reportIsEmpty() ? "" : "\n\n";
            window_->insertReportText(std::string(separator).append(text), isError, isBold);
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document appendInfoText:isError:isBold:]");
    }
}

// Alerts.

void Document::displayAlert(std::optional<std::string_view> message,
                            std::optional<std::string_view> info) {
    if (!message) {
        return;
    }
    const AlertDictionary dictionary{{"message", std::string(*message)},
                                     {"infotext", std::string(info.value_or(""))}};
    if (!hasGUI_) {
        displayAlertOnMainThread(dictionary);
        return;
    }
    bool isDisplayed = false;
    MainThread::performAndWait([&] {
        isDisplayed = true;
        displayAlertOnMainThread(dictionary);
    });
    if (!isDisplayed) {
        logAlert(dictionary.at("message"), dictionary.at("infotext"));
    }
}

void Document::displayAlertOnMainThread(const AlertDictionary& dictionary) {
    const auto message = dictionary.find("message");
    if (message == dictionary.end()) {
        return;
    }
    const auto entry = dictionary.find("infotext");
    const std::string info = entry == dictionary.end() ? std::string() : entry->second;
    logAlert(message->second, info);
    if (!hasGUI_) {
        if (alertOutput_) {
            alertOutput_(message->second, info);
        }
        return;
    }
    if (window_) {
        if (window_->progressSheetIsSheet()) {
            window_->endProgressSheet();
        }
        // The information text is a format of its own, read without arguments.
        window_->beginAlertSheet(message->second, formatString(info));
    }
}

// Headless use.

void Document::setReportOutput(std::function<void(std::string_view)> output) {
    reportOutput_ = std::move(output);
}

void Document::setAlertOutput(std::function<void(std::string_view, std::string_view)> output) {
    alertOutput_ = std::move(output);
}

}  // namespace vornic
