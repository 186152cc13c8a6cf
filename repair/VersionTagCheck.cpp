#include "repair/VersionTagCheck.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "convert/VersionCatalogue.h"
#include "formats/xmeml/ElementSearch.h"
#include "formats/xmeml/VersionedXMEML.h"
#include "foundation/QMException.h"
#include "foundation/QMLog.h"
#include "platform/Exception.h"
#include "report/Message.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

void noteFault(RepairHost& host) {
    host.setFileHasErrs(true);
    host.setFileWasRepaired(false);
}

/// The elements that the versions introduced, in order, up to the first version that lists none.
std::vector<std::string> elementsOf(const VersionCatalogue& catalogue,
                                    const std::vector<std::string>& versions) {
    std::vector<std::string> elements;
    for (const std::string& version : versions) {
        if (!catalogue.hasEntry(version)) {
            continue;
        }
        const std::vector<std::string> introduced = catalogue.elements(version);
        // Deliberate: a version without a list ends the check of the later ones too.
        if (introduced.empty()) {
            break;
        }
        elements.insert(elements.end(), introduced.begin(), introduced.end());
    }
    return elements;
}

void warnAboutElements(RepairHost& host, const XMLDocument& document, const std::string& version,
                       const std::vector<std::string>& elements) {
    if (elements.empty()) {
        return;
    }
    ElementSearch search(elements);
    document.serialize([&search](std::string_view piece) { return search.append(piece); });
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (search.found(i)) {
            host.appendErrorInfoText(messageOf("repair-newer-element"_rule,
                                               {{"element", elements[i]}, {"version", version}}));
        }
    }
}

void checkDeclaredVersion(RepairHost& host, const XMLDocument& document,
                          const std::optional<std::string>& version) {
    // No tree of ours has an attribute without a value; whatever has none is reported.
    if (!version) {
        noteFault(host);
        host.appendErrorInfoText(messageOf("repair-version-empty"_rule));
        return;
    }
    const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue) {
        noteFault(host);
        host.appendBoldErrorInfoText(messageOf("repair-catalogue-missing"_rule));
        return;
    }
    const std::optional<std::vector<std::string>> later = catalogue->versionsAbove(*version);
    if (!later) {
        noteFault(host);
        host.appendBoldErrorInfoText(
            messageOf("repair-version-unknown"_rule, {{"version", *version}}));
        return;
    }
    warnAboutElements(host, document, *version, elementsOf(*catalogue, *later));
}

}  // namespace

void checkVersionTags(RepairHost& host, const XMLDocument* document) {
    try {
        QMLog::appendLog("Checking version tags...");
        if (document != nullptr && isVersionedXMEML(*document)) {
            checkDeclaredVersion(host, *document, document->rootAttribute("version"));
            return;
        }
        noteFault(host);
        host.appendErrorInfoText(messageOf("repair-version-missing"_rule));
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document checkVersionTags:]");
    }
}

}  // namespace vornic
