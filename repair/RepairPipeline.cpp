#include "repair/RepairPipeline.h"

#include <utility>

#include "foundation/FormatString.h"
#include "foundation/QMException.h"
#include "foundation/QMLog.h"
#include "foundation/Text.h"
#include "foundation/Utf8.h"
#include "platform/FileAttributes.h"
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

}  // namespace

std::string RepairPipeline::workingCopyPath(const std::string& path, int xmlType) {
    return deletingPathExtension(path) +
           formatString("-backup.%@", xmlType == kFCPXML ? "fcpxml" : "xml");
}

RepairOutcome RepairPipeline::run(const std::string& path) && {
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
    } catch (...) {
        host_.endProgress();
        throw;
    }
    host_.endProgress();
    return outcome_;
}

bool RepairPipeline::begin() {
    host_.setProgressCancelled(false);
    host_.setXmlType(lowercased(pathExtension(path_)) == "fcpxml" ? kFCPXML : 0);
    workingCopy_.emplace(path_, workingCopyPath(path_, host_.xmlType()));
    host_.startProgress();
    QMLog::appendLog("Beginning repair for file %@...", path_);
    if (!workingCopy_->sourceExists()) {
        const std::string info = formatString("The file %@ cannot be found.", path_);
        QMLog::appendLog("%@", info);
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
    return true;
}

bool RepairPipeline::clearWorkingCopyPath() {
    if (workingCopy_->recycleOld()) {
        return true;
    }
    const std::string remove = formatString("Please remove %@ manually.", workingCopy_->path());
    return stopBeforeCopy(formatString("Error: unable to remove temporary file. %@", remove),
                          "Unable to remove temporary file", remove);
}

bool RepairPipeline::makeWorkingCopy() {
    if (cancelled()) {
        return false;
    }
    error_.reset();
    if (workingCopy_->create(error_)) {
        return true;
    }
    return stopBeforeCopy(
        formatString("Error: unable to create temporary file. %@", slotDescription()),
        "Unable to create temporary file", slotDescription());
}

bool RepairPipeline::stopBeforeCopy(const std::string& report, const char* alert,
                                    const std::string& info) {
    host_.appendBoldErrorInfoText(report);
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
    std::optional<std::string> text =
        bytes ? textFromUTF8(std::move(*bytes), error_) : std::nullopt;
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
        outcome_ = RepairOutcome::cancelled;
        return false;
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
        document_ = repairFCPXDocument(host_, std::move(document_), &hasErrors);
        if (hasErrors) {
            host_.setFileHasErrs(true);
        }
    }
    return true;
}

bool RepairPipeline::save() {
    if (document_) {
        workingCopy_->save(*document_, error_);
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
    outcome_ = RepairOutcome::sound;
    host_.displayAlert("No repair was necessary", "No critical errors were found in the file.");
}

void RepairPipeline::finishUnable() {
    host_.appendBoldErrorInfoText(
        "Unable to repair file. Errors were found in the file and Vornic was unable to fix them.");
    removeWorkingCopy();
    outcome_ = RepairOutcome::unable;
    host_.displayAlert("Unable to repair file",
                       "Errors were found in the file and Vornic was unable to fix them.");
}

void RepairPipeline::finishRepaired() {
    host_.appendBoldInfoText(
        "The file was repaired successfully. Errors were found in the file and were successfully "
        "repaired.");
    const WorkingCopy::Swap swap = workingCopy_->swap(error_);
    outcome_ = swap == WorkingCopy::Swap::done ? RepairOutcome::repairedAndSwapped
                                               : RepairOutcome::repairedNotSwapped;
    if (swap == WorkingCopy::Swap::foreign) {
        host_.appendErrorInfoText(formatString(
            "The temporary file %@ was replaced by another program. The file %@ was left as it is.",
            workingCopy_->path(), path_));
    }
    if (swap == WorkingCopy::Swap::unsaved) {
        host_.appendErrorInfoText(
            formatString("No repaired file was saved as %@. The file %@ was left as it is.",
                         workingCopy_->path(), path_));
    }
    if (error_) {
        reportUnremovedCopy();
    }
    host_.displayAlert("The file was repaired successfully",
                       "Errors were found in the file and were successfully repaired.");
}

void RepairPipeline::removeWorkingCopy() {
    workingCopy_->remove(error_);
    if (error_) {
        reportUnremovedCopy();
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
    outcome_ = RepairOutcome::cancelled;
    return true;
}

void RepairPipeline::reportAndLabel(const char* text) {
    host_.appendInfoText(text);
    host_.setProgressLabel(text);
}

std::string RepairPipeline::slotDescription() const {
    return error_ ? error_->localizedDescription() : std::string();
}

}  // namespace vornic
