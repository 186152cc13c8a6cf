#include "convert/VersionConversion.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "convert/VersionCatalogue.h"
#include "foundation/FormatString.h"
#include "foundation/QMException.h"
#include "foundation/QMLog.h"
#include "foundation/Text.h"
#include "platform/AtomicFile.h"
#include "platform/Console.h"
#include "platform/Error.h"
#include "platform/Exception.h"
#include "platform/FileAttributes.h"
#include "ui/QMAlert.h"
#include "xml/XMLFileCodes.h"

namespace vornic {

namespace {

constexpr std::int64_t kAnswerDefault = 1;

constexpr std::string_view kNotRecognized =
    "The file has not been recognized as a Final Cut Pro XML file. Please try repairing it before "
    "attempting conversion.";

/// Tells that a document is none to be converted.
void refuseDocument(const ConversionHost& host, std::string_view message) {
    QMLog::appendLogAndPrint("%@. %@", message, kNotRecognized);
    if (host.hasGUI()) {
        QMAlert::alertSheetWithMessageText(std::string(message), std::string(kNotRecognized),
                                           host.windowMain());
    }
}

bool isVersionedXMEML(const XMLDocument* document) {
    return document != nullptr && document->rootName() == "xmeml" &&
           document->rootAttribute("version");
}

/// Asks whether elements may be removed. A question that could not be put to anybody is not agreed
/// to.
bool userAgreesToLoss() {
    const std::int64_t answer = QMAlert::alertSheetWithMessageText(
        "You cannot downgrade without losing information", "Downgrade", "Cancel", std::nullopt,
        "Unsupported tags will be stripped from the file. This cannot be undone so please ensure "
        "you have a backup of the file if you will require this information later on. \n\nDo you "
        "wish to continue?",
        nullptr, true);
    return answer == kAnswerDefault;
}

/// @return false when the user does not want to lose anything.
bool agreeToLoss(const ConversionHost& host, std::int64_t current, std::int64_t target) {
    if (!host.hasGUI()) {
        QMLog::appendLogAndPrint("Downgrading XML file...");
        return true;
    }
    QMLog::appendLog(
        "Downgrading from %i to %i will lose information. Asking the user what to do...", current,
        target);
    return userAgreesToLoss();
}

bool losesInformation(const ConversionHost& host, std::int64_t current, std::int64_t target) {
    const bool isDowngrade = target < current;
    // Compared without a sign: a negative target counts as a very high one and loses nothing.
    const auto minimum = static_cast<std::uint64_t>(host.minDowngradeVersion());
    return isDowngrade && minimum > static_cast<std::uint64_t>(target);
}

void saveDocument(const XMLDocument& document, const std::string& path, ErrorSlot& error) {
    platform::AtomicFile file;
    if (!file.open(path, error)) {
        return;
    }
    const bool written = document.serialize(
        [&file, &error](std::string_view piece) { return file.write(piece, error); });
    if (written) {
        static_cast<void>(file.commit(platform::Durability::synced, error));
    }
}

void reportSaveFailure(const ConversionHost& host, const std::string& path, const Error& error) {
    QMLog::appendLogAndPrint("Unable to save file %@ - %@", path, error.localizedDescription());
    if (host.hasGUI()) {
        QMAlert::alertSheetWithMessageText("Unable to save file", error.localizedDescription(),
                                           nullptr);
    }
}

/// Gives the file its type and creator.
/// @param error may hold the error of the save, which then counts as a failure to load.
void updateTypeAndCreator(const std::string& path, ErrorSlot& error) {
    std::optional<platform::FileAttributes> attributes = platform::readFileAttributes(path, error);
    if (error || !attributes) {
        QMLog::appendLogAndPrint("Unable to load attributes for file %@ - %@", path,
                                 error.value_or(Error()).localizedDescription());
        return;
    }
    attributes->hfsTypeCode = kXMLFileTypeCode;
    attributes->hfsCreatorCode = kXMLFileCreatorCode;
    if (!platform::writeFileAttributes(path, *attributes, error)) {
        QMLog::appendLogAndPrint("Unable to write file attributes to file %@ - %@", path,
                                 error.value_or(Error()).localizedDescription());
    }
}

/// Saves the document, when there is one, in place of the file. One slot serves all steps.
void saveInPlace(const ConversionHost& host, const XMLDocument* document, const std::string& path) {
    ErrorSlot error;
    if (document != nullptr) {
        saveDocument(*document, path, error);
    }
    if (error) {
        reportSaveFailure(host, path, *error);
    }
    updateTypeAndCreator(path, error);
}

void reportUnversionedDocument() {
    QMLog::appendLog("Unable to load XML Interchange version information. %@", kNotRecognized);
    QMAlert::alertSheetWithMessageText("Unable to locate XML Interchange version information",
                                       std::string(kNotRecognized), nullptr);
}

/// "name" of a catalogue's "<name".
std::string elementName(std::string_view element) {
    return replacingOccurrences(replacingOccurrences(element, "<", ""), ">", "");
}

void removeElements(XMLDocument& document, const std::string& name) {
    ErrorSlot error;
    const std::vector<XMLNode> nodes =
        XMLDocument::nodesForXPath(formatString(".//%@", name), document.documentNode(), error);
    if (error) {
        QMLog::appendLog("Error getting XML elements: %@", error->localizedDescription());
    }
    document.removeNodes(nodes);
}

void stripTags(XMLDocument& document, const std::string& forVersion) {
    QMLog::appendLog("Stripping unsupported tags from XML file...");
    const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue) {
        reportVersionCatalogueFailure();
        return;
    }
    if (!isVersionedXMEML(&document)) {
        reportUnversionedDocument();
        return;
    }
    const std::vector<std::string> versions =
        catalogue->versionsAbove(forVersion).value_or(std::vector<std::string>());
    for (auto version = versions.rbegin(); version != versions.rend(); ++version) {
        for (const std::string& element : catalogue->elements(*version)) {
            removeElements(document, elementName(element));
        }
    }
}

}  // namespace

void convertXMEMLVersion(ConversionHost& host, const std::string& version,
                         std::unique_ptr<XMLDocument> document, const std::string& filePath) {
    if (host.xmlType() != 0) {
        platform::consoleLog(
            "Cannot convert XMEML version. File is not a compatible XMEML document.");
        return;
    }
    if (!isVersionedXMEML(document.get())) {
        refuseDocument(host, "Unable to locate XML Interchange version information");
        return;
    }
    const std::optional<std::string> declared = document->rootAttribute("version");
    // No tree of ours has an attribute without a value; whatever has none is refused.
    if (!declared) {
        refuseDocument(host, "Unable to locate version attribute node");
        return;
    }
    const std::int64_t current = integerValue(*declared);
    const std::int64_t target = integerValue(version);
    if (losesInformation(host, current, target)) {
        if (!agreeToLoss(host, current, target)) {
            return;
        }
        document = stripTagsFromXMLDoc(std::move(document), version);
    }
    if (document) {
        document->setRootAttribute("version", version);
    }
    saveInPlace(host, document.get(), filePath);
}

std::unique_ptr<XMLDocument> stripTagsFromXMLDoc(std::unique_ptr<XMLDocument> document,
                                                 const std::string& forVersion) {
    if (!document) {
        return nullptr;
    }
    try {
        stripTags(*document, forVersion);
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document stripTagsFromXMLDoc:forVersion:]");
        return nullptr;
    }
    return document;
}

}  // namespace vornic
