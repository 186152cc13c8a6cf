#include "job/ConversionCommit.h"

#include <cerrno>
#include <new>
#include <string_view>

#include "base/FormatString.h"
#include "formats/FileCodes.h"
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

}  // namespace

ConversionResult commitConversion(XMLDocument* document, const ConversionPlan& plan,
                                  const std::string& path) {
    ConversionResult result;
    if (document != nullptr) {
        document->setRootAttribute("version", plan.version);
    }
    if (document != nullptr && !trySaveDocument(*document, path, result.saveError)) {
        result.saveError = result.saveError.value_or(Error());
        // Deliberate: one error slot serves all steps, so that this is told a second time.
        result.loadCodesError = result.saveError;
        return result;
    }
    ErrorSlot error;
    const FileCodes codes = setFinalCutFileCodes(path, error);
    if (codes == FileCodes::unread) {
        result.loadCodesError = error;
    } else if (codes == FileCodes::unwritten) {
        result.writeCodesError = error;
    }
    return result;
}

}  // namespace vornic
