#include "repair/RepairPipeline.h"

#include <new>
#include <utility>

#include "foundation/FormatString.h"
#include "foundation/QMException.h"
#include "foundation/QMLog.h"
#include "foundation/Text.h"
#include "foundation/Utf8.h"
#include "platform/FileAttributes.h"
#include "platform/ItemStatus.h"
#include "platform/UserPreferences.h"
#include "repair/CharacterFilter.h"
#include "repair/EventRepair.h"
#include "repair/HeaderChecks.h"
#include "repair/VersionTagCheck.h"
#include "xml/TextDecoding.h"
#include "xml/XMLFileCodes.h"

namespace vornic {

namespace {

constexpr int kFCPXML = 1;

// The preferences hold text; a path may hold any bytes.
platform::PropertyList asPreference(const std::string& path) {
    std::string text;
    appendAsValidUtf8(text, path);
    return platform::PropertyList(std::move(text));
}

// What a user has to know of a swap that did not come to its end.
std::vector<std::string> linesAbout(const SwapResult& swap, const std::string& source,
                                    const std::string& copy) {
    std::vector<std::string> lines;
    switch (swap.end) {
        case SwapEnd::done:
        case SwapEnd::trashFailed:
        case SwapEnd::failed:
            break;
        case SwapEnd::unsaved:
            lines.push_back(formatString(
                "No repaired file was saved as %@. The file %@ was left as it is.", copy, source));
            break;
        case SwapEnd::copyChanged:
            lines.push_back(
                formatString("The temporary file %@ was replaced by another program. The file %@ "
                             "was left as it is.",
                             copy, source));
            break;
        case SwapEnd::sourceChanged:
            lines.push_back(
                formatString("The file %@ was changed by another program during the repair. It was "
                             "left as it is now.",
                             source));
            break;
    }
    const bool isMoved = swap.end != SwapEnd::done && swap.original != source;
    if (isMoved && !swap.original.empty()) {
        lines.push_back(formatString("The original file is %@.", swap.original));
    }
    if (swap.end == SwapEnd::sourceChanged || (isMoved && !swap.repaired.empty())) {
        lines.push_back(
            swap.repaired.empty()
                ? formatString(
                      "The repaired file was overwritten or taken away by another program.")
                : formatString("The repaired file is %@.", swap.repaired));
    }
    return lines;
}

}  // namespace

std::string RepairPipeline::workingCopyPath(const std::string& path, int xmlType) {
    return deletingPathExtension(path) +
           formatString("-backup.%@", xmlType == kFCPXML ? "fcpxml" : "xml");
}

RepairResult RepairPipeline::run(const std::string& path) && {
    path_ = path;
    try {
        const bool judged =
            begin() && clearWorkingCopyPath() && makeWorkingCopy() && readText() && load() &&
            (!hasDocument_ ||
             (filterAndParse() && checkHeader() && repairEvents() && save() && updateCodes()));
        if (judged) {
            finish();
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document startRepair:]");
    } catch (const std::bad_alloc&) {
        document_.reset();
        std::string().swap(text_);
        dropWorkingCopy();
        reportMemoryEnd();
        host_.endProgress();
        throw;
    } catch (...) {
        dropWorkingCopy();
        host_.endProgress();
        throw;
    }
    dropWorkingCopy();
    host_.endProgress();
    return std::move(result_);
}

bool RepairPipeline::begin() {
    host_.setProgressCancelled(false);
    host_.setXmlType(lowercased(pathExtension(path_)) == "fcpxml" ? kFCPXML : 0);
    named_.emplace(path_);
    workingCopy_.emplace(path_, workingCopyPath(path_, host_.xmlType()),
                         static_cast<Waiting&>(*this));
    host_.startProgress();
    QMLog::appendLog("Beginning repair for file %@...", path_);
    if (!workingCopy_->settleLeft()) {
        return endCancelled();
    }
    if (!workingCopy_->sourceExists()) {
        const std::string info = formatString("The file %@ cannot be found.", path_);
        QMLog::appendLog("%@", info);
        if (const ErrorSlot reason = platform::failedLook(path_)) {
            host_.appendErrorInfoText(reason->localizedDescription());
        }
        host_.displayAlert("Unable to locate file", info);
        return false;
    }
    ErrorSlot ignored;  // a preference that can't be stored is no reason not to repair
    platform::UserPreferences().setValue("filepath", asPreference(path_), ignored);
    host_.clearInfoText();
    const std::string start = formatString("Starting repair for file %@...", path_);
    host_.appendBoldInfoText(start);
    host_.setProgressLabel(start);
    host_.setProgressLabel("Creating temporary file...");
    host_.appendInfoText("Creating temporary file...");
    reportNotes();
    return true;
}

void RepairPipeline::waitsFor(const std::string& path) {
    const std::string text =
        formatString("Waiting for another program that uses the file %@...", path);
    host_.setProgressLabel(text);
    host_.appendInfoText(text);
}

bool RepairPipeline::clearWorkingCopyPath() {
    ErrorSlot reason;
    const WorkingCopy::Clearing clearing = workingCopy_->clearPath(reason);
    reportNotes();
    return clearing == WorkingCopy::Clearing::done || stopUncleared(clearing, reason);
}

bool RepairPipeline::makeWorkingCopy() {
    if (cancelled()) {
        return false;
    }
    error_.reset();
    const WorkingCopy::Clearing clearing = workingCopy_->create(error_);
    reportNotes();
    if (clearing == WorkingCopy::Clearing::failed) {
        return stopUncreated(slotDescription());
    }
    return clearing == WorkingCopy::Clearing::done || stopUncleared(clearing, error_);
}

bool RepairPipeline::stopUncleared(WorkingCopy::Clearing clearing, const ErrorSlot& reason) {
    const std::string why = reason ? reason->localizedDescription() : std::string();
    if (clearing == WorkingCopy::Clearing::cancelled) {
        return endCancelled();
    }
    if (clearing == WorkingCopy::Clearing::noTurn) {
        return stopUncreated(why);
    }
    const std::string remove = formatString("Please remove %@ manually.", workingCopy_->path());
    host_.appendBoldErrorInfoText(
        formatString("Error: unable to remove temporary file. %@", remove));
    if (clearing == WorkingCopy::Clearing::refused) {
        host_.appendErrorInfoText(why);
    } else {
        QMLog::appendLog("%@", why);
    }
    return stopBeforeCopy("Unable to remove temporary file", remove);
}

bool RepairPipeline::stopUncreated(const std::string& why) {
    host_.appendBoldErrorInfoText(formatString("Error: unable to create temporary file. %@", why));
    return stopBeforeCopy("Unable to create temporary file", why);
}

bool RepairPipeline::endCancelled() {
    result_.outcome = RepairOutcome::cancelled;
    return false;
}

void RepairPipeline::reportNotes() {
    for (const std::string& note : workingCopy_->takeNotes()) {
        host_.appendInfoText(note);
    }
    if (!workingCopy_->recycled().empty()) {
        result_.oldCopy = workingCopy_->recycled().back();
    }
}

bool RepairPipeline::stopBeforeCopy(const char* alert, const std::string& info) {
    host_.setFileHasErrs(false);
    host_.setFileWasRepaired(false);
    host_.displayAlert(alert, info);
    return false;
}

bool RepairPipeline::readText() {
    reportAndLabel("Checking file...");
    host_.setFileHasErrs(false);
    host_.setFileWasRepaired(true);
    if (cancelled()) {
        return false;
    }
    std::optional<std::string> bytes = workingCopy_->read(error_);
    if (!bytes) {
        host_.setFileHasErrs(true);
        return !cancelled() && stopCritically(slotDescription());
    }
    std::optional<std::string> text = textFromUTF8(std::move(*bytes), error_);
    if (cancelled()) {
        return false;
    }
    if (!text) {
        return readRawBytes();
    }
    text_ = std::move(*text);
    return true;
}

bool RepairPipeline::readRawBytes() {
    error_.reset();
    host_.setFileHasErrs(true);
    const std::optional<std::string> bytes = workingCopy_->read(error_);
    if (!bytes) {
        return stopCritically(slotDescription());
    }
    if (cancelled()) {
        return false;
    }
    std::string stripped = stripInvalidCharsFromData(*bytes);
    if (cancelled()) {
        return false;
    }
    std::optional<std::string> text = textFromUTF8(std::move(stripped), error_);
    if (!text) {
        return stopCritically(slotDescription());
    }
    text_ = std::move(*text);
    return !cancelled();
}

bool RepairPipeline::stopCritically(const std::string& reason) {
    host_.setFileWasRepaired(false);
    host_.appendErrorInfoText(reason);
    host_.appendErrorInfoText("Unable to load XML data");
    host_.appendBoldErrorInfoText("Critical error - repair canceled.");
    host_.displayAlert("Unable to load XML data", "Repair has been canceled.");
    return false;
}

bool RepairPipeline::load() {
    XMLReading reading = readXML(text_, XMLMode::tolerant);
    if (reading.fault) {
        error_ = std::move(reading.fault);
    }
    if (error_) {
        return filterAfterFailedLoad();
    }
    hasDocument_ = true;
    host_.appendInfoText("File loaded successfully.");
    return reportMends(reading.mends) && !cancelled();
}

bool RepairPipeline::reportMends(const std::vector<XMLMend>& mends) {
    for (const XMLMend& mend : mends) {
        host_.setFileHasErrs(true);
        host_.appendErrorInfoText(
            formatString("Line %li, column %li: %@", mend.line, mend.column, mend.what));
        if (cancelled()) {
            return false;
        }
    }
    return true;
}

bool RepairPipeline::filterAfterFailedLoad() {
    host_.setFileHasErrs(true);
    host_.appendErrorInfoText(slotDescription());
    host_.setProgressLabel("File did not load successfully - beginning repair...");
    host_.appendErrorInfoText("File did not load successfully - beginning repair...");
    if (cancelled()) {
        return false;
    }
    host_.appendErrorInfoText("Filtering invalid characters...");
    host_.setProgressLabel("Filtering invalid characters...");
    if (!filterText()) {
        return false;
    }
    XMLReading reading = readXML(text_, XMLMode::strict);
    hasDocument_ = !reading.fault.has_value();
    if (reading.fault) {
        error_ = std::move(reading.fault);
    }
    // The slot still holds the fault of the first parse, whatever this one found.
    host_.setFileHasErrs(true);
    host_.setFileWasRepaired(false);
    host_.appendErrorInfoText(slotDescription());
    host_.appendErrorInfoText("Unable to load XML data");
    return !cancelled();
}

bool RepairPipeline::filterText() {
    std::optional<std::string> filtered = filterInvalidCharsInString(host_, text_);
    if (!filtered) {
        return endCancelled();
    }
    text_ = std::move(*filtered);
    return !cancelled();
}

bool RepairPipeline::filterAndParse() {
    reportAndLabel("Filtering invalid characters...");
    if (!filterText()) {
        return false;
    }
    document_ = XMLDocument::parse(std::move(text_), XMLMode::strict, error_);
    return true;
}

bool RepairPipeline::checkHeader() {
    reportAndLabel("Checking header tags...");
    if (cancelled()) {
        return false;
    }
    const bool isFCPXML = host_.xmlType() != 0;
    document_ = isFCPXML ? checkFCPXMLHeaderTags(host_, std::move(document_))
                         : checkXMEMLHeaderTags(host_, std::move(document_));
    if (!isFCPXML) {
        reportAndLabel("Checking version tags...");
        if (cancelled()) {
            return false;
        }
        checkVersionTags(host_, document_.get());
    }
    return true;
}

bool RepairPipeline::repairEvents() {
    if (cancelled()) {
        return false;
    }
    if (host_.xmlType() == kFCPXML) {
        bool hasErrors = false;
        document_ = repairFCPXDocument(host_, std::move(document_), &hasErrors, [this] {
            ErrorSlot ignored;  // then there is no place to tell
            std::optional<std::string> bytes = workingCopy_->read(ignored);
            return bytes ? textFromUTF8(std::move(*bytes), ignored) : std::nullopt;
        });
        if (hasErrors) {
            host_.setFileHasErrs(true);
        }
    }
    return true;
}

bool RepairPipeline::save() {
    if (document_) {
        workingCopy_->save(
            [this](const WorkingCopy::Sink& sink) { return document_->serialize(sink); }, error_);
    }
    if (error_) {
        host_.setFileHasErrs(true);
        host_.setFileWasRepaired(false);
        host_.appendBoldErrorInfoText(formatString("Unable to save file: %@", slotDescription()));
    }
    return !cancelled();
}

bool RepairPipeline::updateCodes() {
    if (host_.xmlType() != 0) {
        return !cancelled();
    }
    reportAndLabel("Updating type/creator codes...");
    const auto attributes = platform::readFileAttributes(workingCopy_->path(), error_);
    if (error_) {
        reportAttributeError("Unable to load file attributes. %@");
    } else {
        platform::FileAttributes changed = attributes.value_or(platform::FileAttributes{});
        changed.hfsTypeCode = kXMLFileTypeCode;
        changed.hfsCreatorCode = kXMLFileCreatorCode;
        platform::writeFileAttributes(workingCopy_->path(), changed, error_);
        if (error_) {
            reportAttributeError("Unable to write file attributes. %@");
        }
    }
    return !cancelled();
}

void RepairPipeline::finish() {
    // The tree is of no more use, and the swap may wait for a slow disk.
    document_.reset();
    host_.setProgressLabel("Finishing...");
    if (!host_.fileHasErrs()) {
        finishSound();
    } else if (!host_.fileWasRepaired()) {
        finishUnable();
    } else {
        finishRepaired();
    }
}

void RepairPipeline::finishSound() {
    host_.appendBoldInfoText("No repair was necessary. No critical errors were found in the file.");
    removeWorkingCopy();
    result_.outcome = RepairOutcome::sound;
    host_.displayAlert("No repair was necessary", "No critical errors were found in the file.");
}

void RepairPipeline::finishUnable() {
    host_.appendBoldErrorInfoText(
        "Unable to repair file. Errors were found in the file and Vornic was unable to fix them.");
    removeWorkingCopy();
    result_.outcome = RepairOutcome::unable;
    host_.displayAlert("Unable to repair file",
                       "Errors were found in the file and Vornic was unable to fix them.");
}

void RepairPipeline::finishRepaired() {
    host_.appendBoldInfoText(
        "The file was repaired successfully. Errors were found in the file and were successfully "
        "repaired.");
    result_.swap = workingCopy_->swap(*observer_);
    result_.outcome = result_.swap.end == SwapEnd::done ? RepairOutcome::repairedAndSwapped
                                                        : RepairOutcome::repairedNotSwapped;
    reportSwap(result_.swap);
    if (error_) {
        reportUnremovedCopy();
    }
    host_.displayAlert("The file was repaired successfully",
                       "Errors were found in the file and were successfully repaired.");
}

// Says what the given lines don't: why the file is not where it should be, and where it is.
void RepairPipeline::reportSwap(const SwapResult& swap) {
    const std::string lost = workingCopy_->lostMetadata();
    if (swap.end == SwapEnd::done && !lost.empty()) {
        host_.appendErrorInfoText(
            formatString("Something of the file %@ was not kept. %@", path_, lost));
    }
    if (swap.end == SwapEnd::trashFailed) {
        QMLog::appendLog("The file %@ could not be moved to the Trash. %@ The repaired file is %@.",
                         path_, swap.error ? swap.error->localizedDescription() : "",
                         swap.repaired);
    }
    if (swap.error && (swap.end == SwapEnd::done || swap.end == SwapEnd::failed)) {
        error_ = swap.error;
    }
    for (const std::string& line : linesAbout(swap, path_, workingCopy_->path())) {
        host_.appendErrorInfoText(line);
    }
}

void RepairPipeline::removeWorkingCopy() {
    workingCopy_->remove(error_);
    if (error_) {
        reportUnremovedCopy();
    }
}

// After a run that came to no judgement: the copy is of no use to anybody.
void RepairPipeline::dropWorkingCopy() {
    const bool isUseless = result_.outcome == RepairOutcome::stopped && workingCopy_;
    const int errorNumber = isUseless ? workingCopy_->discard() : 0;
    if (errorNumber == 0) {
        return;
    }
    try {
        error_ = posixError(formatString("The file %@ cannot be removed", workingCopy_->path()),
                            errorNumber);
        reportUnremovedCopy();
    } catch (const std::bad_alloc&) {
        // It stays, and the next run moves it to the Trash.
    }
}

void RepairPipeline::reportUnremovedCopy() {
    host_.appendErrorInfoText(formatString("Unable to remove temporary file %@. %@.",
                                           workingCopy_->path(), slotDescription()));
}

void RepairPipeline::reportAttributeError(const char* format) {
    host_.appendBoldErrorInfoText(formatString(format, slotDescription()));
}

bool RepairPipeline::cancelled() {
    if (!host_.progressCancelled()) {
        return false;
    }
    result_.outcome = RepairOutcome::cancelled;
    return true;
}

void RepairPipeline::reportAndLabel(const char* text) {
    host_.appendInfoText(text);
    host_.setProgressLabel(text);
}

// What the run held has to make room for the words.
void RepairPipeline::reportMemoryEnd() {
    document_.reset();
    std::string().swap(text_);
    try {
        host_.appendBoldErrorInfoText(
            formatString("There is not enough memory to repair the file %@.", path_));
    } catch (const std::bad_alloc&) {
        // Whoever started the run is told by the exception.
    }
}

std::string RepairPipeline::slotDescription() const {
    return error_ ? error_->localizedDescription() : std::string();
}

}  // namespace vornic
