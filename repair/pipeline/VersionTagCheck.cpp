#include "repair/pipeline/VersionTagCheck.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Exception.h"
#include "convert/catalogue/VersionCatalogue.h"
#include "formats/xmeml/ElementSearch.h"
#include "formats/xmeml/VersionedXMEML.h"
#include "foundation/log/QMException.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

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

void warnAboutElements(const XMLDocument& document, const std::string& version,
                       const std::vector<std::string>& elements, const FoundInRepair& found) {
    if (elements.empty()) {
        return;
    }
    ElementSearch search(elements);
    document.serialize([&search](std::string_view piece) { return search.append(piece); });
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (search.found(i)) {
            found({"repair-newer-element"_rule,
                   FindingEffect::warning,
                   {{"element", elements[i]}, {"version", version}}});
        }
    }
}

void checkDeclaredVersion(const XMLDocument& document, const std::optional<std::string>& version,
                          const FoundInRepair& found) {
    // No tree of ours has an attribute without a value; whatever has none is reported.
    if (!version) {
        found({"repair-version-empty"_rule});
        return;
    }
    const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue) {
        found({"repair-catalogue-missing"_rule});
        return;
    }
    const std::optional<std::vector<std::string>> later = catalogue->versionsAbove(*version);
    if (!later) {
        found({"repair-version-unknown"_rule, FindingEffect::unmended, {{"version", *version}}});
        return;
    }
    warnAboutElements(document, *version, elementsOf(*catalogue, *later), found);
}

}  // namespace

void checkVersionTags(const XMLDocument* document, const FoundInRepair& found) {
    try {
        if (document != nullptr && isVersionedXMEML(*document)) {
            checkDeclaredVersion(*document, document->rootAttribute("version"), found);
            return;
        }
        found({"repair-version-missing"_rule});
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document checkVersionTags:]");
    }
}

}  // namespace vornic
