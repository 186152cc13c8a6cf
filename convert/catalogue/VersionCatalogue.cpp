#include "convert/catalogue/VersionCatalogue.h"

#include <algorithm>
#include <iterator>

#include "base/Error.h"
#include "base/Text.h"
#include "platform/settings/Bundle.h"

namespace vornic {

namespace {

using platform::PropertyList;

/// The entry of a version, or null when there is none or it is no dictionary.
const PropertyList* entryOf(const PropertyList::Dictionary& root, const std::string& version) {
    const auto found = root.find(version);
    return found != root.end() && found->second.dictionary() != nullptr ? &found->second : nullptr;
}

}  // namespace

std::optional<VersionCatalogue> VersionCatalogue::load() {
    const std::optional<std::string> path =
        platform::Bundle::mainBundle().pathForResource("xml_versions", "plist");
    if (!path) {
        return std::nullopt;
    }
    ErrorSlot ignored;
    const std::optional<PropertyList> list = PropertyList::readFile(*path, ignored);
    if (!list || list->dictionary() == nullptr) {
        return std::nullopt;
    }
    return VersionCatalogue(*list->dictionary());
}

std::vector<std::string> VersionCatalogue::sortedKeys() const {
    std::vector<std::string> keys;
    keys.reserve(root_.size());
    for (const auto& [key, entry] : root_) {
        keys.push_back(key);
    }
    std::stable_sort(keys.begin(), keys.end(),
                     [](const std::string& left, const std::string& right) {
                         return caseInsensitiveCompare(left, right) < 0;
                     });
    return keys;
}

std::optional<std::vector<std::string>> VersionCatalogue::versionsAbove(
    std::string_view version) const {
    const std::vector<std::string> keys = sortedKeys();
    const auto found = std::find(keys.begin(), keys.end(), version);
    if (found == keys.end()) {
        return std::nullopt;
    }
    return std::vector<std::string>(std::next(found), keys.end());
}

bool VersionCatalogue::hasEntry(const std::string& version) const {
    return entryOf(root_, version) != nullptr;
}

std::optional<std::string> VersionCatalogue::fcpVersion(const std::string& version) const {
    const PropertyList* entry = entryOf(root_, version);
    const PropertyList* label = entry != nullptr ? entry->find("FCP Version") : nullptr;
    if (label == nullptr || label->string() == nullptr) {
        return std::nullopt;
    }
    return *label->string();
}

std::vector<std::string> VersionCatalogue::elements(const std::string& version) const {
    const PropertyList* entry = entryOf(root_, version);
    const PropertyList* list = entry != nullptr ? entry->find("elements") : nullptr;
    if (list == nullptr || list->array() == nullptr) {
        return {};
    }
    std::vector<std::string> elements;
    for (const PropertyList& element : *list->array()) {
        if (element.string() != nullptr) {
            elements.push_back(*element.string());
        }
    }
    return elements;
}

}  // namespace vornic
