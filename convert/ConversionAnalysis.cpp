#include "convert/ConversionAnalysis.h"

#include <cstddef>
#include <memory>
#include <vector>

#include "convert/ElementSearch.h"
#include "convert/VersionCatalogue.h"
#include "foundation/FormatString.h"
#include "foundation/QMException.h"
#include "foundation/QMLog.h"
#include "foundation/Text.h"
#include "platform/Error.h"
#include "platform/Exception.h"
#include "ui/QMAlert.h"
#include "xml/XMLDocument.h"

namespace vornic {

namespace {

/// What stands in a menu title or label for a version without a release.
constexpr std::string_view kMissingLabel = "(null)";

std::unique_ptr<XMLDocument> loadDocument(const std::string& path) {
    ErrorSlot error;
    std::unique_ptr<XMLDocument> document = XMLDocument::load(path, XMLMode::strict, error);
    if (!document) {
        const std::string description = error ? error->localizedDescription() : std::string();
        QMLog::appendLog(
            "Error loading XML file - %@. Please try repairing it first before attempting a "
            "conversion.",
            description);
        QMAlert::alertSheetWithMessageText(
            "Error loading XML file",
            formatString("%@\n\nPlease try repairing it first before attempting a conversion.",
                         description),
            nullptr);
    }
    return document;
}

/// The version that an XMEML document declares; nothing, after telling it, when it declares none.
std::optional<std::string> declaredVersion(const XMLDocument& document) {
    std::optional<std::string> version =
        document.rootName() == "xmeml" ? document.rootAttribute("version") : std::nullopt;
    if (!version) {
        QMLog::appendLog(
            "Unable to locate XML Interchange version information. The file has not been "
            "recognized as a Final Cut Pro XML file. Please try repairing it before attempting "
            "conversion.");
        QMAlert::alertSheetWithMessageText(
            "Unable to locate XML Interchange version information",
            "The file has not been recognized as a Final Cut Pro XML file. Please try repairing it "
            "before attempting conversion.",
            nullptr);
    }
    return version;
}

void showCurrentVersion(ConversionHost& host, const VersionCatalogue& catalogue,
                        const std::string& version) {
    const std::string release = catalogue.fcpVersion(version).value_or("Unknown Version");
    QMLog::appendLog("XMEML version: %@", version);
    QMLog::appendLog("Final Cut Pro version: %@", release);
    host.setConvertCurVersion(
        formatString("Current XML version: %@ (Final Cut Pro %@+)", version, release));
}

void showDowngradeVersion(ConversionHost& host, std::string_view versionTitle) {
    host.setConvertDowngradeVersion(
        formatString("Can be downgraded without changes to version: %@", versionTitle));
}

void addMenuItem(ConversionHost& host, const std::string& title, const std::string& version) {
    host.addConvertVersion(title);
    host.setLastConvertVersionKey(version);
}

/// Walks the versions from the highest down: finds the minimum and fills the menu.
void offerVersions(ConversionHost& host, const VersionCatalogue& catalogue,
                   const XMLDocument& document, const std::string& current) {
    const std::vector<std::string> keys = catalogue.sortedKeys();
    host.removeAllConvertVersions();
    bool minimumFound = false;
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        const std::string title =
            formatString("%@ (Final Cut Pro %@+)", *key,
                         catalogue.fcpVersion(*key).value_or(std::string(kMissingLabel)));
        if (xmlStringRequiresVersion(document.xmlString(), *key) && !minimumFound) {
            host.setMinDowngradeVersion(integerValue(*key));
            showDowngradeVersion(host, title);
            minimumFound = true;
            QMLog::appendLog("Minimum downgrade version: %li", host.minDowngradeVersion());
        }
        host.enableConvertInterface();
        addMenuItem(host, title, *key);
        // Deliberate: every version but the current one stands in the menu twice.
        if (*key != current) {
            addMenuItem(host, title, *key);
        }
    }
    if (!minimumFound) {
        host.setMinDowngradeVersion(1);
        showDowngradeVersion(host, "1 (Final Cut Pro 4+)");
    }
}

void analyse(ConversionHost& host, const std::string& path) {
    QMLog::appendLog("Generating conversion data for file %@...", path);
    host.startConvertSpinner();
    const std::unique_ptr<XMLDocument> document = loadDocument(path);
    if (!document) {
        return;
    }
    const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue) {
        reportVersionCatalogueFailure();
        return;
    }
    const std::optional<std::string> current = declaredVersion(*document);
    if (!current) {
        return;
    }
    showCurrentVersion(host, *catalogue, *current);
    offerVersions(host, *catalogue, *document, *current);
}

bool holdsElementOf(std::string_view xmlString, const std::string& version) {
    const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue || !catalogue->hasEntry(version)) {
        reportVersionCatalogueFailure();
        return false;
    }
    const std::vector<std::string> elements = catalogue->elements(version);
    ElementSearch search(elements);
    search.append(xmlString);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (search.found(i)) {
            QMLog::appendLog("Found tag: %@", elements[i]);
            return true;
        }
    }
    return false;
}

}  // namespace

void populateConversionDataForFile(ConversionHost& host, const std::optional<std::string>& path) {
    try {
        if (path) {
            analyse(host, *path);
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document populateConversionDataForFile:]");
    }
    host.stopConvertSpinnerLater();
}

bool xmlStringRequiresVersion(std::string_view xmlString, const std::string& version) {
    if (version == "1") {
        return true;
    }
    try {
        return holdsElementOf(xmlString, version);
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document xmlString:requiresVersion:]");
        return false;
    }
}

}  // namespace vornic
