#include "convert/VersionConversion.h"

#include <cerrno>
#include <new>
#include <string_view>
#include <utility>

#include "convert/catalogue/VersionCatalogue.h"
#include "formats/FileCodes.h"
#include "formats/xmeml/VersionedXMEML.h"
#include "foundation/FormatString.h"
#include "foundation/Text.h"
#include "platform/AtomicFile.h"
#include "platform/FileReplacement.h"

namespace vornic {

namespace {

/// "name" of a catalogue's "<name".
std::string elementName(std::string_view element) {
    return replacingOccurrences(replacingOccurrences(element, "<", ""), ">", "");
}

/// @return what is wrong with the name as a query, or nothing.
ErrorSlot removeElements(XMLDocument& document, const std::string& name) {
    ErrorSlot error;
    const std::vector<XMLNode> nodes =
        XMLDocument::nodesForXPath(formatString(".//%@", name), document.documentNode(), error);
    document.removeNodes(nodes);
    return error;
}

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

std::variant<ConversionPlan, ConversionRefusal> planConversion(const XMLDocument* document,
                                                               const std::string& version,
                                                               std::int64_t lowestVersion) {
    if (document == nullptr || !isVersionedXMEML(*document)) {
        return ConversionRefusal::noVersion;
    }
    const std::optional<std::string> declared = document->rootAttribute("version");
    // No tree of ours has an attribute without a value; whatever has none is refused.
    if (!declared) {
        return ConversionRefusal::noVersionAttribute;
    }
    ConversionPlan plan{.current = integerValue(*declared), .target = integerValue(version)};
    // Compared without a sign: a negative target counts as a very high one and loses nothing.
    plan.losesInformation = plan.target<plan.current&& static_cast<std::uint64_t>(
        lowestVersion)> static_cast<std::uint64_t>(plan.target);
    return plan;
}

StripResult stripElementsAbove(XMLDocument& document, const std::string& version) {
    const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue) {
        return {StripResult::Outcome::noCatalogue, {}};
    }
    if (!isVersionedXMEML(document)) {
        return {StripResult::Outcome::noVersion, {}};
    }
    StripResult result;
    const std::vector<std::string> versions =
        catalogue->versionsAbove(version).value_or(std::vector<std::string>());
    for (auto above = versions.rbegin(); above != versions.rend(); ++above) {
        for (const std::string& element : catalogue->elements(*above)) {
            if (ErrorSlot error = removeElements(document, elementName(element))) {
                result.queryErrors.push_back(std::move(*error));
            }
        }
    }
    return result;
}

ConversionResult commitConversion(const XMLDocument* document, const std::string& path) {
    ConversionResult result;
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
