#include "formats/fcpxml/Catalogue.h"

#include <algorithm>

#include "xml/text/XMLCharacters.h"

namespace vornic::fcpxml {

namespace {

// Takes the text up to the next mark, which goes too; all of it when there is none.
std::string_view takeUpTo(std::string_view& text, char mark) {
    const std::size_t end = text.find(mark);
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return taken;
}

VersionRun takeVersions(std::string_view& line) {
    std::string_view run = takeUpTo(line, ' ');
    const Version first = Version::parse(takeUpTo(run, '-')).value_or(Version());
    return {first, Version::parse(run).value_or(first)};
}

// An enumeration may hold blanks, a name or keyword none.
std::string_view takeType(std::string_view& line) {
    if (!line.starts_with('(')) {
        return takeUpTo(line, ' ');
    }
    const std::size_t end = std::min(line.find(')'), line.size() - 1) + 1;
    const std::string_view type = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return type;
}

template <typename Entries>
std::optional<VersionRun> spanOf(const Entries& entries) {
    std::optional<VersionRun> span;
    for (const auto& entry : entries) {
        span = span ? VersionRun{std::min(span->first, entry.versions.first),
                                 std::max(span->last, entry.versions.last)}
                    : entry.versions;
    }
    return span;
}

}  // namespace

bool CatalogueElement::isIn(Version version) const {
    return std::any_of(models.begin(), models.end(), [version](const CatalogueModel& model) {
        return model.versions.holds(version);
    });
}

std::optional<VersionRun> CatalogueElement::span() const {
    return spanOf(models);
}

std::optional<VersionRun> CatalogueElement::spanOfAttribute(std::string_view attribute) const {
    std::vector<CatalogueAttribute> declarations;
    std::copy_if(attributes.begin(), attributes.end(), std::back_inserter(declarations),
                 [attribute](const auto& entry) { return entry.name == attribute; });
    return spanOf(declarations);
}

const Catalogue& Catalogue::shared() {
    static const Catalogue catalogue(catalogueText());
    return catalogue;
}

Catalogue::Catalogue(std::string_view text) {
    ElementId current = kNoElement;
    while (!text.empty()) {
        std::string_view line = takeUpTo(text, '\n');
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        const std::string_view keyword = takeUpTo(line, ' ');
        if (keyword == "element") {
            current = add(line);
        } else if (keyword == "content") {
            const VersionRun versions = takeVersions(line);
            addNamesOf(line);
            elements_[current].models.push_back({versions, line});
        } else if (keyword == "attribute") {
            CatalogueAttribute attribute;
            attribute.versions = takeVersions(line);
            attribute.name = takeUpTo(line, ' ');
            attribute.type = takeType(line);
            attribute.defaultText = line;
            elements_[current].attributes.push_back(attribute);
        }
    }
}

ElementId Catalogue::add(std::string_view name) {
    const auto [entry, isNew] = ids_.emplace(name, static_cast<ElementId>(elements_.size()));
    if (isNew) {
        elements_.push_back({name, {}, {}});
    }
    return entry->second;
}

void Catalogue::addNamesOf(std::string_view model) {
    if (model == "EMPTY") {
        return;
    }
    const char* const end = model.data() + model.size();
    for (const char* at = model.data(); at != end;) {
        const std::size_t length = *at == '#' ? 0 : xmlchars::nameLength(at, end);
        if (length != 0) {
            add({at, length});
            at += length;
        } else {
            // "#PCDATA" is a keyword, everything else a single mark.
            at += *at == '#' ? std::string_view("#PCDATA").size() : 1;
        }
    }
}

ElementId Catalogue::idOf(std::string_view name) const {
    const auto entry = ids_.find(name);
    return entry == ids_.end() ? kNoElement : entry->second;
}

}  // namespace vornic::fcpxml
