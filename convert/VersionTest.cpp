#include "convert/VersionTest.h"

#include <cstddef>
#include <vector>

#include "convert/catalogue/VersionCatalogue.h"
#include "formats/xmeml/ElementSearch.h"

namespace vornic {

namespace {

VersionTest searchElementsOf(std::string_view xmlString, const std::string& version) {
    const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
    if (!catalogue || !catalogue->hasEntry(version)) {
        return {.lacksCatalogue = true};
    }
    const std::vector<std::string> elements = catalogue->elements(version);
    ElementSearch search(elements);
    search.append(xmlString);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (search.found(i)) {
            return {.isRequired = true, .foundElement = elements[i]};
        }
    }
    return {};
}

}  // namespace

VersionTest testVersion(std::string_view xmlString, const std::string& version) {
    if (version == "1") {
        return {.isRequired = true};
    }
    try {
        return searchElementsOf(xmlString, version);
    } catch (const platform::Exception& exception) {
        return {.exception = exception};
    }
}

}  // namespace vornic
