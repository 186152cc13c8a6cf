#include "tests/formats/IndexRules.h"

#include <utility>
#include <vector>

#include "formats/ElementIndexBuilder.h"
#include "formats/PlaceFinder.h"
#include "xml/reader/XMLEventTee.h"

namespace vornic::test {

namespace {

// What the reader tells of an element.
struct Told {
    std::string name;
    std::size_t offset = 0;
    std::size_t end = 0;
    ElementNumber parent = kNoElement;
    std::vector<std::pair<std::string, TextSpan>> attributes;
};

class Teller : public XMLReaderEvents {
  public:
    void startElement(std::string_view name) override {
        Told told;
        told.name = name;
        told.offset = place().offset;
        told.parent = open_.empty() ? kNoElement : open_.back();
        open_.push_back(static_cast<ElementNumber>(elements.size()));
        elements.push_back(std::move(told));
    }
    void attribute(std::string_view name, std::string_view) override {
        elements.back().attributes.emplace_back(name, valuePlace());
    }
    void endElement(std::string_view, bool) override {
        elements[open_.back()].end = place().end();
        open_.pop_back();
    }
    void text(std::string_view) override {}
    void cdata(std::string_view) override {}
    void comment(std::string_view) override {}
    void processingInstruction(std::string_view, std::string_view) override {}
    void documentType(std::string_view, std::string_view) override {}

    std::vector<Told> elements;

  private:
    std::vector<ElementNumber> open_;
};

bool hasForbiddenCharacters(std::string_view text) {
    return readXML(text, XMLMode::tolerant).droppedCharacters != 0;
}

std::string differenceAt(const ElementIndex& index, ElementNumber element, const Told& told,
                         bool isPlain) {
    if (index.spanOf(element).offset != told.offset) {
        return "another offset";
    }
    if (told.end != 0 && index.spanOf(element).end() != told.end) {
        return "another end";
    }
    if (index.parentOf(element) != told.parent) {
        return "another parent";
    }
    if (index.nameOf(element) != told.name) {
        return "another name";
    }
    const TextSpan tag = index.startTagOf(element);
    if (told.end != 0 && (tag.length == 0 || index.text()[tag.end() - 1] != '>')) {
        return "a start tag that ends elsewhere";
    }
    if (told.end != 0 && index.contentOf(element).end() > told.end) {
        return "content that goes beyond its element";
    }
    for (const auto& [name, value] : told.attributes) {
        const std::optional<TextSpan> found = index.attributeOf(element, name);
        if (isPlain && (!found || *found != value)) {
            return "another value of " + name;
        }
    }
    return "";
}

std::string differenceOfOrder(const ElementIndex& index, ElementNumber element) {
    const ElementNumber parent = index.parentOf(element);
    if (index.endOf(element) <= element || index.endOf(element) > index.size()) {
        return "an end that lies outside";
    }
    if (parent != kNoElement && (parent >= element || index.endOf(parent) < index.endOf(element))) {
        return "a parent that does not hold it";
    }
    const ElementNumber next = index.nextSiblingOf(element);
    if (next != kNoElement && index.parentOf(next) != parent) {
        return "a sibling with another parent";
    }
    return index.elementAt(index.spanOf(element).offset) == element ? "" : "not found at its place";
}

std::string differenceOfPaths(const ElementIndex& index) {
    constexpr ElementNumber kMost = 500;
    PlaceFinder finder(index, {});
    for (ElementNumber element = 0; element < index.size() && element < kMost; ++element) {
        const std::string path = finder.pathOf(element);
        if (path.find("//") == std::string::npos && !path.empty() &&
            index.find(path) != index.startTagOf(element)) {
            return "the path " + path + " leads elsewhere";
        }
    }
    return "";
}

}  // namespace

std::string brokenRuleOfIndex(std::string_view text) {
    ElementIndexBuilder builder(text);
    Teller teller;
    XMLEventTee tee({&builder, &teller});
    const bool isSound = !readXML(text, XMLMode::tolerant, &tee).fault;
    const ElementIndex index = std::move(builder).finish();
    if (index.size() != teller.elements.size()) {
        return "another number of elements";
    }
    const bool isPlain = isSound && !hasForbiddenCharacters(text);
    for (ElementNumber element = 0; element < index.size(); ++element) {
        std::string difference = differenceAt(index, element, teller.elements[element], isPlain);
        if (difference.empty()) {
            difference = differenceOfOrder(index, element);
        }
        if (!difference.empty()) {
            return "element " + std::to_string(element) + " has " + difference;
        }
    }
    return isPlain ? differenceOfPaths(index) : "";
}

}  // namespace vornic::test
