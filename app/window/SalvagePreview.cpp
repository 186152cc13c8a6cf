#include "app/window/SalvagePreview.h"

#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "foundation/log/QMLog.h"
#include "job/ResultFile.h"
#include "platform/files/FileSystem.h"
#include "salvage/Salvage.h"

namespace vornic {

namespace {

// A damaged file and its copy as one that has been changed: what was guessed is gone from it.
std::shared_ptr<const Inspection> asChange(const std::string& path, const std::string& bytes,
                                           const salvage::Salvage& salvaged) {
    auto inspection = std::make_shared<Inspection>();
    std::string all;
    for (const std::string& copy : salvaged.copies) {
        all += copy;
    }
    inspection->file.path = path;
    inspection->file.source = SourceText::of(std::move(all));
    InspectedFile& original = inspection->original.emplace();
    original.path = path;
    original.source = SourceText::of(bytes);
    original.report = salvaged.report;
    inspection->changes =
        lineDifference(linesOf(*original.source), linesOf(*inspection->file.source), true);
    return inspection;
}

}  // namespace

SalvagePreview previewSalvage(const std::string& path) {
    SalvagePreview preview;
    ErrorSlot error;
    const std::optional<std::string> bytes = platform::readFile(path, error);
    if (!bytes) {
        preview.refusal = error->localizedDescription();
        return preview;
    }
    salvage::SalvageOptions options;
    options.mostOfARule = kMostListedOfARule;
    salvage::Salvage salvaged = salvage::salvage(*bytes, options);
    if (salvaged.isSound) {
        preview.refusal = "The file is well-formed: there is nothing to guess.";
    } else if (salvaged.copies.empty()) {
        preview.refusal = salvaged.refusal;
    } else {
        preview.guesses = std::make_shared<FindingsTable>(asChange(path, *bytes, salvaged));
        preview.copies = std::move(salvaged.copies);
    }
    return preview;
}

FileActionResult saveSalvaged(const std::string& path, const SalvagePreview& preview,
                              const std::string& to) {
    FileActionResult action;
    // The copies may be all that is left of a file that has gone since.
    const std::string from = platform::fileExists(path) ? path : "";
    for (const std::string& copy : preview.copies) {
        ErrorSlot error;
        const std::optional<ResultFile> written = writeResultFile(to, copy, from, error);
        if (!written) {
            action.failure = error->localizedDescription();
            QMLog::appendLog("%@", action.failure);
            return action;
        }
        QMLog::appendLog("A salvaged copy of the file %@ is %@", path, written->path);
        if (action.replaced.empty()) {
            action.replaced = written->path;
        } else {
            action.notes.push_back(
                formatString("Another one is called %@.", lastComponent(written->path)));
        }
        if (!written->lostMetadata.empty()) {
            action.notes.push_back(written->lostMetadata);
        }
    }
    action.isDone = true;
    return action;
}

}  // namespace vornic
