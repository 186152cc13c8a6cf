// The conversion of a document's file and its dialog. The engines of convert/ tell what they have
// found and done; what is logged, shown and asked for it, and in which order, is settled here.

#include <cerrno>
#include <cstddef>
#include <exception>
#include <new>
#include <utility>
#include <variant>

#include "base/Exception.h"
#include "base/FormatString.h"
#include "base/PathText.h"
#include "convert/VersionTest.h"
#include "foundation/log/QMException.h"
#include "foundation/log/QMLog.h"
#include "job/ConversionCommit.h"
#include "job/JournaledSwap.h"
#include "job/LeftFiles.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Console.h"
#include "platform/threads/MainThread.h"
#include "repair/document/ConversionMessages.h"
#include "repair/document/Document.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

using platform::MainThread;

namespace {

// Lets a run write for as long as this lives.
class Writing {
  public:
    explicit Writing(ConversionRun& run) : run_(run), isAllowed_(run.beginWriting()) {}
    ~Writing() { run_.endWriting(); }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

    [[nodiscard]] bool isAllowed() const { return isAllowed_; }

  private:
    ConversionRun& run_;
    bool isAllowed_;
};

// Loads a file to convert it. @return null after telling why it cannot be loaded.
std::unique_ptr<XMLDocument> loadToConvert(const std::string& path) {
    ErrorSlot error;
    std::unique_ptr<XMLDocument> document;
    try {
        document = XMLDocument::load(path, XMLMode::tolerant, error);
    } catch (const std::bad_alloc&) {
        error = Error{std::string(kPosixErrorDomain), 0, std::string(kNoMemory)};
    }
    if (!document) {
        tellNotLoaded(error.value_or(Error()).localizedDescription());
    }
    return document;
}

// Clears what killed runs have left beside the file that a path leads to, and says so.
void clearBeside(const std::string& path) {
    const std::string target = platform::resolveFinalLink(path).value().value_or(path);
    for (const Note& note : clearLeftFiles(parentFolder(target))) {
        QMLog::appendLogAndPrint("%@", note.text());
    }
}

// What the dialog says of a conversion.
std::string resultText(const DialogConversion& made) {
    std::string text = formatString("Converted to version %@.", made.version);
    if (!made.original.empty()) {
        text += " The original is in the Trash.";
    }
    for (const std::string& note : made.notes) {
        text += " " + note;
    }
    return text;
}

}  // namespace

// Runs.

QMAlert::Window Document::windowMain() const {
    QMAlert::Window window;
    if (hasGUI_) {
        MainThread::performAndWait([&] { window = window_; });
    }
    return window;
}

std::weak_ptr<AlertWindow> Document::placeOfAlerts() const {
    std::weak_ptr<AlertWindow> place;
    if (hasGUI_) {
        MainThread::performAndWait([&] { place = window_; });
    }
    return place;
}

bool Document::isLatest(const Run& run) const {
    return latestRun_ && latestRun_->number() == run->number();
}

void Document::inDialog(const Run& run, const DrawInDialog& draw) const {
    inWindow([&](DocumentWindow& window) {
        if (isLatest(run)) {
            draw(window.conversionDialog());
        }
    });
}

void Document::setLatestRun(const Run& run) {
    stopLatestRun();
    latestRun_ = run;
}

void Document::stopLatestRun() {
    if (latestRun_) {
        std::exchange(latestRun_, nullptr)->stop();
    }
    if (lossQuestion_) {
        constexpr std::int64_t kAlternateButton = 0;
        const std::shared_ptr<QMAlert> question = std::exchange(lossQuestion_, nullptr);
        question->alertDidEnd(kAlternateButton);
        question->closeAlert();
    }
}

// The dialog.

void Document::showConvertDialog() {
    const std::string path = filePath_.value_or("");
    if (!platform::fileExists(path)) {
        displayAlert("Unable to locate file", formatString("The file %@ cannot be found.", path));
        return;
    }
    const Run run = std::make_shared<ConversionRun>(++runCount_, path);
    setLatestRun(run);
    inDialog(run, [](ConversionDialog& dialog) { dialog.beginConvertSheet(); });
    const bool isStarted = runDetached(
        [run, conversion = conversion_](Document& document) {
            if (conversion) {
                conversion->waitUntilWritten();
            }
            document.analyse(run);
        },
        "-[Document showConvertDialog:]");
    if (!isStarted) {
        tellNoThread("Unable to convert file", path);
    }
}

void Document::closeConvertDialog() {
    stopLatestRun();
    inWindow([](DocumentWindow& window) { window.conversionDialog().endConvertSheet(); });
}

void Document::enableConvertInterface() {
    setConvertInterfaceEnabled(true);
}

void Document::disableConvertInterface() {
    setConvertInterfaceEnabled(false);
}

void Document::setConvertInterfaceEnabled(bool enabled) {
    inWindow([enabled](DocumentWindow& window) {
        window.conversionDialog().setConvertInterfaceEnabled(enabled);
    });
}

// The analysis.

void Document::populateConversionDataForFile(const Text& path) {
    const Run run = std::make_shared<ConversionRun>(++runCount_, path);
    MainThread::performAndWait([&] { setLatestRun(run); });
    analyse(run);
}

void Document::analyse(const Run& run) {
    const AlertPlace place(placeOfAlerts());
    try {
        if (run->path()) {
            fillDialog(run, *run->path());
        }
    } catch (const std::exception&) {
        logHandledException("-[Document populateConversionDataForFile:]");
    }
    if (hasGUI_) {
        MainThread::perform([self = shared_from_this(), run] {
            self->inDialog(run, [](ConversionDialog& dialog) { dialog.stopConvertSpinner(); });
        });
    }
}

void Document::fillDialog(const Run& run, const std::string& path) {
    QMLog::appendLog("Generating conversion data for file %@...", path);
    inDialog(run, [](ConversionDialog& dialog) { dialog.startConvertSpinner(); });
    tellState(run, "Reading the file…");
    try {
        const auto read = readForConversion(path);
        if (run->isStopped()) {
            return;
        }
        if (const auto* const failure = std::get_if<AnalysisFailure>(&read)) {
            tellAnalysisFailure(*failure);
            return;
        }
        const auto& file = std::get<ConvertibleFile>(read);
        showCurrentVersion(run, file);
        if (const auto offer =
                makeConversionOffer(file, StopToken([&run] { return run->isStopped(); }))) {
            showOffer(run, *offer);
        }
    } catch (const std::bad_alloc&) {
        tellNotLoaded(kNoMemory);
    }
}

void Document::showCurrentVersion(const Run& run, const ConvertibleFile& file) const {
    QMLog::appendLog("XMEML version: %@", file.version);
    QMLog::appendLog("Final Cut Pro version: %@", file.release);
    const std::string text =
        formatString("Current XML version: %@ (Final Cut Pro %@+)", file.version, file.release);
    inDialog(run, [&](ConversionDialog& dialog) { dialog.setConvertCurVersion(text); });
}

void Document::showOffer(const Run& run, const ConversionOffer& offer) {
    for (std::size_t i = 0; i < offer.versions.size(); ++i) {
        tellVersionTest(offer.versions[i].test);
        if (offer.lowest == i) {
            QMLog::appendLog("Minimum downgrade version: %li", offer.lowestVersion());
        }
    }
    inDialog(run, [&](ConversionDialog& dialog) { dialog.showOffer(offer); });
    MainThread::performAndWait([&] {
        if (isLatest(run)) {
            setMinDowngradeVersion(offer.lowestVersion());
        }
    });
}

bool Document::xmlStringRequiresVersion(std::string_view xmlString, const std::string& version) {
    const VersionTest test = testVersion(xmlString, version);
    tellVersionTest(test);
    return test.isRequired;
}

// The conversion.

void Document::convertVersion() {
    if (const Run run = beginConversion()) {
        convert(run);
    }
}

void Document::convertVersionOnThread() {
    const Run run = beginConversion();
    if (!run) {
        return;
    }
    if (!runDetached([run](Document& document) { document.convert(run); },
                     "-[Document convertVersion:]")) {
        run->end();
        inDialog(run, [](ConversionDialog& dialog) { dialog.stopConvertSpinner(); });
        tellNoThread("Unable to convert file", run->path().value_or(""));
    }
}

bool Document::isConverting() const {
    return conversion_ && !conversion_->hasEnded();
}

Document::Run Document::beginConversion() {
    if (isRunning() || (conversion_ && conversion_->mayWrite())) {
        return nullptr;
    }
    Text version;
    bool keepsOriginal = false;
    inWindow([&](DocumentWindow& window) {
        version = window.conversionDialog().selectedConvertVersionKey();
        keepsOriginal = window.conversionDialog().keepsOriginal();
    });
    conversion_ =
        std::make_shared<ConversionRun>(++runCount_, filePath_, std::move(version), keepsOriginal);
    setLatestRun(conversion_);
    return conversion_;
}

void Document::convert(const Run& run) {
    const AlertPlace place(placeOfAlerts());
    try {
        inDialog(run, [](ConversionDialog& dialog) { dialog.startConvertSpinner(); });
        if (run->path() && !run->path()->empty()) {
            convertFile(run);
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document convertVersion:]");
    } catch (const std::exception&) {
        tellUnexpectedException();
    }
    run->end();
    inDialog(run, [](ConversionDialog& dialog) { dialog.stopConvertSpinner(); });
}

// Tells of an exception that is being handled and is none of the platform's.
void Document::tellUnexpectedException() {
    try {
        displayAlert("Unable to convert file", logHandledException("-[Document convertVersion:]"));
    } catch (const std::exception&) {
        // There is no memory for a message either. The dialog shows that nothing has changed.
    }
}

void Document::convertFile(const Run& run) {
    const std::string& path = *run->path();
    if (!platform::fileExists(path)) {
        displayAlert("Unable to locate file", formatString("The file %@ cannot be found.", path));
        return;
    }
    if (!run->version()) {
        tellNoTarget(path);
        return;
    }
    tellState(run, formatString("Converting to version %@…", *run->version()));
    std::unique_ptr<XMLDocument> document = loadToConvert(path);
    if (!document || run->isStopped()) {
        return;
    }
    const std::optional<DialogConversion> made =
        convertDocument(run, *run->version(), std::move(document), path);
    if (made) {
        tellConverted(run, *made);
    }
    if (!run->isStopped()) {
        analyse(run);
    }
    if (made && run->isStopped()) {
        QMLog::appendLog("The file %@ was converted to version %@.", path, made->version);
    }
    inDialog(run, [&](ConversionDialog& dialog) {
        dialog.showConvertResult(made ? resultText(*made) : "The file was not converted.");
    });
}

void Document::tellState(const Run& run, std::string_view text) const {
    inDialog(run, [&](ConversionDialog& dialog) { dialog.setConvertState(text); });
}

void Document::tellConverted(const Run& run, const DialogConversion& made) const {
    if (!made.original.empty()) {
        QMLog::appendLog("The original of the file %@ is %@.", *run->path(), made.original);
    }
    for (const std::string& note : made.notes) {
        QMLog::appendLog("%@", note);
    }
    inWindow([&](DocumentWindow& window) { window.showConverted(made); });
}

void Document::convertXMEMLVersion(const std::string& version,
                                   std::unique_ptr<XMLDocument> forDocument,
                                   const std::string& filePath) {
    const Run run = std::make_shared<ConversionRun>(++runCount_, filePath, version);
    convertDocument(run, version, std::move(forDocument), filePath);
}

// @return nothing when the file is not of that version now.
std::optional<DialogConversion> Document::convertDocument(const Run& run,
                                                          const std::string& version,
                                                          std::unique_ptr<XMLDocument> document,
                                                          const std::string& path) {
    if (fileKind() != FileKind::xmeml) {
        platform::consoleLog(
            "Cannot convert XMEML version. File is not a compatible XMEML document.");
        return std::nullopt;
    }
    const auto planned = planConversion(document.get(), version, minDowngradeVersion());
    if (const auto* const refusal = std::get_if<ConversionRefusal>(&planned)) {
        tellRefusal(*refusal, hasGUI() ? windowMain() : nullptr, hasGUI());
        return std::nullopt;
    }
    const auto& plan = std::get<ConversionPlan>(planned);
    if (plan.losesInformation) {
        if (!agreeToLoss(run, plan)) {
            return std::nullopt;
        }
        document = stripTagsFromXMLDoc(std::move(document), version);
    }
    clearBeside(path);
    ConversionResult result;
    DialogConversion made{.version = version, .original = {}, .isUndoable = false, .notes = {}};
    {
        const Writing writing(*run);
        if (!writing.isAllowed()) {
            return std::nullopt;
        }
        tellState(run, "Writing the file…");
        result = commit(run, document.get(), plan, path, made);
    }
    tellConversionResult(result, path, hasGUI());
    const bool isMade = document && !result.saveError && !result.isCancelled;
    return isMade ? std::optional(made) : std::nullopt;
}

ConversionResult Document::commit(const Run& run, XMLDocument* document, const ConversionPlan& plan,
                                  const std::string& path, DialogConversion& made) {
    if (!run->keepsOriginal() || document == nullptr) {
        return commitConversion(document, plan, path);
    }
    const Waiting waiting{.tell =
                              [](const std::string& file) {
                                  QMLog::appendLog("Another program uses the file %@; waiting.",
                                                   file);
                              },
                          .stop = StopToken([run] { return run->isStopped(); })};
    JournaledSwap journaled(program_invocation_short_name, VORNIC_VERSION,
                            JournalEntry::Action::convert);
    ConversionResult result =
        commitConversionKeepingOriginal(*document, plan, path, waiting, journaled);
    made.original = result.original;
    made.isUndoable = journaled.isWrittenDown();
    made.notes = result.notes;
    return result;
}

bool Document::agreeToLoss(const Run& run, const ConversionPlan& plan) {
    if (!hasGUI()) {
        QMLog::appendLogAndPrint("Downgrading XML file...");
        return true;
    }
    QMLog::appendLog(
        "Downgrading from %i to %i will lose information. Asking the user what to do...",
        plan.current, plan.target);
    return userAgreesToLoss(run);
}

// A question that could not be put to anybody is not agreed to. It is kept, so that closing the
// dialog takes it off the screen.
bool Document::userAgreesToLoss(const Run& run) {
    constexpr std::int64_t kDefaultButton = 1;
    const auto question = std::make_shared<QMAlert>();
    bool isShown = false;
    MainThread::performAndWait([&] {
        if (run->isStopped()) {
            return;
        }
        const AlertPlace place(window_);
        QMAlert::alertSheetWithMessageText(
            "You cannot downgrade without losing information", "Downgrade", "Cancel", std::nullopt,
            "Unsupported tags will be stripped from the file. This cannot be undone so please "
            "ensure you have a backup of the file if you will require this information later on. "
            "\n\nDo you wish to continue?",
            nullptr, nullptr, std::nullopt, false, question);
        isShown = question->alert() != nullptr;
        lossQuestion_ = question;
    });
    const bool agrees = isShown && question->waitForAnswer() == kDefaultButton;
    MainThread::performAndWait([&] {
        if (lossQuestion_ == question) {
            lossQuestion_.reset();
        }
    });
    return agrees;
}

std::unique_ptr<XMLDocument> Document::stripTagsFromXMLDoc(std::unique_ptr<XMLDocument> document,
                                                           const std::string& forVersion) {
    if (!document) {
        return nullptr;
    }
    try {
        QMLog::appendLog("Stripping unsupported tags from XML file...");
        tellStripResult(stripElementsAbove(*document, forVersion));
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document stripTagsFromXMLDoc:forVersion:]");
        return nullptr;
    }
    return document;
}

}  // namespace vornic
