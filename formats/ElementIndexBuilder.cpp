#include "formats/ElementIndexBuilder.h"

#include <algorithm>
#include <utility>

#include "formats/fcpxml/IndexedNames.h"
#include "formats/xmeml/IndexedNames.h"

namespace vornic {

void ElementIndexBuilder::listNamesOf(FileKind kind) {
    const IndexedNames names = kind == FileKind::xmeml    ? xmeml::kIndexedNames
                               : kind == FileKind::fcpxml ? fcpxml::kIndexedNames
                                                          : IndexedNames{};
    for (const std::string_view name : names.attributes) {
        index_.withAttribute_.push_back({name, {}});
    }
    for (const std::string_view name : names.elements) {
        index_.named_.push_back({name, {}});
    }
}

std::uint16_t ElementIndexBuilder::newNumberOf(std::string_view name) {
    if (const auto known = numbers_.find(name); known != numbers_.end()) {
        return known->second;
    }
    if (index_.names_.size() == ElementIndex::kOtherName) {
        return ElementIndex::kOtherName;
    }
    const auto number = static_cast<std::uint16_t>(index_.names_.size());
    numbers_.emplace(index_.names_.emplace_back(name), number);
    const auto listed =
        std::find_if(index_.named_.begin(), index_.named_.end(),
                     [name](const Collection& collection) { return collection.name == name; });
    listing_.push_back(listed == index_.named_.end()
                           ? kNotListed
                           : static_cast<std::uint8_t>(listed - index_.named_.begin()));
    return number;
}

// A file has few names, and the same ones follow each other.
std::uint16_t ElementIndexBuilder::numberOf(std::string_view name) {
    const std::size_t hash = static_cast<unsigned char>(name.front()) * 7U +
                             static_cast<unsigned char>(name.back()) * 31U + name.size();
    std::uint16_t& recent = recent_[hash % recent_.size()];
    if (recent >= index_.names_.size() || index_.names_[recent] != name) {
        recent = newNumberOf(name);
    }
    return recent;
}

void ElementIndexBuilder::startElement(std::string_view name) {
    noteEnd(place().end());
    if (isTooLong_) {
        return;
    }
    if (index_.entries_.size() == 0) {
        listNamesOf(fileKindOfRoot(name));
    }
    const auto element = static_cast<ElementNumber>(index_.entries_.size());
    Entry& entry = index_.entries_.add();
    entry.offset = static_cast<std::uint32_t>(place().offset);
    entry.parent = open_.empty() ? kNoElement : open_.back();
    entry.name = numberOf(name);
    open_.push_back(element);
    const bool isKnown = entry.name != ElementIndex::kOtherName;
    if (const std::uint8_t listed = isKnown ? listing_[entry.name] : kNotListed;
        listed != kNotListed) {
        index_.named_[listed].elements.push_back(element);
    }
}

void ElementIndexBuilder::attribute(std::string_view name, std::string_view rawValue) {
    noteEnd(place().end());
    if (isTooLong_) {
        return;
    }
    const ElementNumber element = open_.back();
    if (name == "id") {
        const std::size_t first = std::min(rawValue.find_first_not_of(" \t\r\n"), rawValue.size());
        const std::size_t last = rawValue.find_last_not_of(" \t\r\n");
        const std::string_view id =
            rawValue.substr(first, last == std::string_view::npos ? 0 : last + 1 - first);
        index_.ids_.push_back({ElementIndex::hashOf(id), element});
        return;
    }
    for (Collection& collection : index_.withAttribute_) {
        if (collection.name == name) {
            collection.elements.push_back(element);
            return;
        }
    }
}

void ElementIndexBuilder::finishStartTag() {
    noteEnd(place().end());
    if (isTooLong_) {
        return;
    }
    Entry& entry = index_.entries_[open_.back()];
    entry.startTagLength = static_cast<std::uint16_t>(
        std::min<std::size_t>(place().end() - entry.offset, ElementIndex::kLongTag));
}

void ElementIndexBuilder::endElement(std::string_view /*name*/, bool selfClosed) {
    if (selfClosed) {
        finishStartTag();
    }
    noteEnd(place().end());
    if (isTooLong_) {
        return;
    }
    Entry& entry = index_.entries_[open_.back()];
    entry.length = static_cast<std::uint32_t>(place().end() - entry.offset);
    entry.end = static_cast<ElementNumber>(index_.entries_.size());
    open_.pop_back();
}

void ElementIndexBuilder::text(std::string_view /*rawText*/) {
    noteEnd(place().end());
}

void ElementIndexBuilder::cdata(std::string_view /*content*/) {
    noteEnd(place().end());
}

void ElementIndexBuilder::comment(std::string_view /*content*/) {
    noteEnd(place().end());
}

void ElementIndexBuilder::processingInstruction(std::string_view /*target*/,
                                                std::string_view /*data*/) {
    noteEnd(place().end());
}

void ElementIndexBuilder::documentType(std::string_view /*name*/,
                                       std::string_view /*rawDeclaration*/) {
    noteEnd(place().end());
}

ElementIndex ElementIndexBuilder::finish() && {
    for (const ElementNumber element : open_) {
        Entry& entry = index_.entries_[element];
        entry.length = static_cast<std::uint32_t>(lastOffset_ - entry.offset);
        entry.end = static_cast<ElementNumber>(index_.entries_.size());
        if (entry.startTagLength == 0) {
            entry.startTagLength = static_cast<std::uint16_t>(
                std::min<std::size_t>(entry.length, ElementIndex::kLongTag));
        }
    }
    index_.unclosed_ = std::move(open_);
    index_.sortIds();
    for (auto* collections : {&index_.withAttribute_, &index_.named_}) {
        for (Collection& collection : *collections) {
            collection.elements.shrink_to_fit();
        }
    }
    return std::move(index_);
}

ElementIndex indexOfHead(std::string_view text) {
    constexpr std::size_t kHead = 16384;
    const std::string_view head = text.substr(0, kHead);
    ElementIndexBuilder builder(head);
    UnheardXMLMends mends;
    static_cast<void>(readXML(head, XMLMode::tolerant, &builder, &mends));
    return std::move(builder).finish();
}

}  // namespace vornic
