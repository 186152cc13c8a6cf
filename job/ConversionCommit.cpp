#include "job/ConversionCommit.h"

#include <cerrno>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "base/FormatString.h"
#include "formats/FileCodes.h"
#include "job/InPlaceChange.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/FileReplacement.h"

namespace vornic {

namespace {

/// What the document was loaded from must still be there; a document that was not loaded from this
/// file takes the place of whatever is.
bool saveDocument(const XMLDocument& document, const std::string& path, ErrorSlot& error) {
    const auto writeTo = [&](auto& file) {
        return file.open(path, error) &&
               document.serialize([&](std::string_view piece) { return file.write(piece, error); });
    };
    if (const auto snapshot = document.snapshotOfFile(path)) {
        platform::FileReplacement file;
        return writeTo(file) && file.commit(*snapshot, error);
    }
    platform::AtomicFile file;
    return writeTo(file) && file.commit(platform::Durability::synced, error);
}

bool trySaveDocument(const XMLDocument& document, const std::string& path, ErrorSlot& error) {
    try {
        return saveDocument(document, path, error);
    } catch (const std::bad_alloc&) {
        error = posixError(formatString("The file %@ cannot be written", path), ENOMEM);
        return false;
    }
}

void setCodes(const std::string& path, ConversionResult& result) {
    ErrorSlot error;
    const FileCodes codes = setFinalCutFileCodes(path, error);
    if (codes == FileCodes::unread) {
        result.loadCodesError = error;
    } else if (codes == FileCodes::unwritten) {
        result.writeCodesError = error;
    }
}

// Deliberate: one error slot serves all steps, so that a failed save is told a second time.
void tellSaveError(ErrorSlot error, ConversionResult& result) {
    result.saveError = std::move(error).value_or(Error());
    result.loadCodesError = result.saveError;
}

InPlaceResult replaceKeepingOriginal(const XMLDocument& document, const std::string& path,
                                     const Waiting& waiting, SwapObserver& observer) {
    InPlaceResult result;
    InPlaceChange change(path, {"convert", "converted"}, waiting, result);
    const auto snapshot = document.snapshotOfFile(path);
    if (change.read(snapshot ? std::optional(snapshot->digest) : std::nullopt)) {
        change.write([&](const WorkingCopy::Sink& sink) { return document.serialize(sink); });
        change.finish(true, observer);
    }
    change.takeNotes();
    return result;
}

}  // namespace

ConversionResult commitConversion(XMLDocument* document, const ConversionPlan& plan,
                                  const std::string& path) {
    ConversionResult result;
    if (document != nullptr) {
        document->setRootAttribute("version", plan.version);
    }
    if (document != nullptr && !trySaveDocument(*document, path, result.saveError)) {
        tellSaveError(std::exchange(result.saveError, std::nullopt), result);
        return result;
    }
    setCodes(path, result);
    return result;
}

ConversionResult commitConversionKeepingOriginal(XMLDocument& document, const ConversionPlan& plan,
                                                 const std::string& path, const Waiting& waiting,
                                                 SwapObserver& observer) {
    ConversionResult result;
    document.setRootAttribute("version", plan.version);
    InPlaceResult placed;
    try {
        placed = replaceKeepingOriginal(document, path, waiting, observer);
    } catch (const std::bad_alloc&) {
        placed.error = posixError(formatString("The file %@ cannot be written", path), ENOMEM);
    }
    result.notes = std::move(placed.notes);
    result.isCancelled = placed.isCancelled;
    if (!placed.lostMetadata.empty()) {
        result.notes.push_back(
            formatString("Something of the file %@ was not kept. %@", path, placed.lostMetadata));
    }
    const bool isReplaced = placed.swap && placed.swap->end == SwapEnd::done;
    if (isReplaced) {
        result.original = placed.swap->original;
        setCodes(path, result);
    } else if (!placed.isCancelled) {
        tellSaveError(std::move(placed.error), result);
    }
    return result;
}

}  // namespace vornic
