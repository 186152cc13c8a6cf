#include "tests/formats/fcpxml/DocumentMutator.h"

#include <cstddef>
#include <optional>
#include <vector>

#include "formats/fcpxml/Catalogue.h"
#include "xml/reader/XMLReader.h"

namespace vornic::test {

namespace {

using fcpxml::Catalogue;
using fcpxml::CatalogueElement;

struct Span {
    std::size_t begin = 0;
    std::size_t end = 0;
};

struct Attribute {
    // With the blank before it and the closing quote.
    Span whole;
    Span name;
    Span value;
};

struct Element {
    Span whole;
    Span name;
    // The name in the end tag; empty for `<name/>`.
    Span endName;
    std::vector<Attribute> attributes;
    std::optional<std::size_t> nextSibling;
};

// Finds the places of elements and attributes.
class Places final : public XMLReaderEvents {
  public:
    explicit Places(const std::string& text) : text_(text) {}

    std::vector<Element> elements;

    void startElement(std::string_view name) override {
        const Span span = spanOf(name);
        if (!lastSibling_.empty() && lastSibling_.back()) {
            elements[*lastSibling_.back()].nextSibling = elements.size();
        }
        if (!lastSibling_.empty()) {
            lastSibling_.back() = elements.size();
        }
        open_.push_back(elements.size());
        lastSibling_.emplace_back();
        elements.push_back({{span.begin - 1, 0}, span, {}, {}, {}});
    }

    void attribute(std::string_view name, std::string_view rawValue) override {
        const Span nameSpan = spanOf(name);
        const Span value = spanOf(rawValue);
        elements[open_.back()].attributes.push_back(
            {{nameSpan.begin - 1, value.end + 1}, nameSpan, value});
    }

    void endElement(std::string_view name, bool selfClosed) override {
        Element& element = elements[open_.back()];
        const std::size_t known =
            element.attributes.empty() ? element.name.end : element.attributes.back().whole.end;
        const std::size_t from = selfClosed ? known : lastPlace_;
        std::size_t end = text_.find(selfClosed ? "/>" : "</" + std::string(name), from);
        if (!selfClosed) {
            element.endName = {end + 2, end + 2 + name.size()};
        }
        end = text_.find('>', end) + 1;
        element.whole.end = end;
        lastPlace_ = end;
        open_.pop_back();
        lastSibling_.pop_back();
    }

    void text(std::string_view rawText) override { lastPlace_ = spanOf(rawText).end; }
    void cdata(std::string_view content) override { lastPlace_ = spanOf(content).end + 3; }
    void comment(std::string_view content) override { lastPlace_ = spanOf(content).end + 3; }
    void processingInstruction(std::string_view target, std::string_view data) override {
        lastPlace_ = spanOf(data.empty() ? target : data).end;
    }
    void documentType(std::string_view, std::string_view) override {}

  private:
    [[nodiscard]] Span spanOf(std::string_view piece) const {
        const auto begin = static_cast<std::size_t>(piece.data() - text_.data());
        return {begin, begin + piece.size()};
    }

    const std::string& text_;
    std::vector<std::size_t> open_;
    std::vector<std::optional<std::size_t>> lastSibling_;
    std::size_t lastPlace_ = 0;
};

class Mutation {
  public:
    Mutation(const std::string& text, std::minstd_rand& random) : text_(text), random_(random) {
        Places places(text_);
        static_cast<void>(readXML(text_, XMLMode::strict, &places));
        elements_ = std::move(places.elements);
    }

    std::string result() {
        if (elements_.empty()) {
            return text_;
        }
        const Element& element = elements_[pick(elements_.size())];
        if (!element.attributes.empty() && pick(2) == 0) {
            return changedAttribute(element, element.attributes[pick(element.attributes.size())]);
        }
        return changedElement(element);
    }

  private:
    std::string changedElement(const Element& element) {
        switch (pick(9)) {
            case 0:
                return replaced(element.whole, "");
            case 1:
                return replaced(element.whole, part(element.whole) + part(element.whole));
            case 2:
                return withSiblingsSwapped(element);
            case 3:
                return renamed(element, std::string(anyElement().name));
            case 4:
                return inserted(element.whole.begin, pick(2) == 0 ? "stray" : "<![CDATA[]]>");
            case 5:
                return inserted(afterStart(element), anyFiller());
            case 6: {
                const Element& other = elements_[pick(elements_.size())];
                return inserted(afterStart(element), part(other.whole));
            }
            case 7:
                return withAttribute(element);
            default:
                return withStandalone();
        }
    }

    std::string changedAttribute(const Element& element, const Attribute& attribute) {
        switch (pick(5)) {
            case 0:
                return replaced(attribute.whole, "");
            case 1:
                return replaced(attribute.name, anyAttributeName() + "x");
            case 2:
                return replaced(attribute.value, anyValue());
            case 3: {
                const Element& other = elements_[pick(elements_.size())];
                return other.attributes.empty()
                           ? replaced(attribute.value, " " + part(attribute.value) + "\t")
                           : replaced(attribute.value, part(other.attributes[0].value));
            }
            default:
                return withAttribute(element);
        }
    }

    std::string withSiblingsSwapped(const Element& element) {
        if (!element.nextSibling) {
            return replaced(element.whole, "");
        }
        const Element& next = elements_[*element.nextSibling];
        return text_.substr(0, element.whole.begin) + part(next.whole) +
               part({element.whole.end, next.whole.begin}) + part(element.whole) +
               text_.substr(next.whole.end);
    }

    std::string renamed(const Element& element, const std::string& name) const {
        std::string text = text_;
        if (element.endName.end != 0) {
            text.replace(element.endName.begin, element.endName.end - element.endName.begin, name);
        }
        return text.replace(element.name.begin, element.name.end - element.name.begin, name);
    }

    std::string withAttribute(const Element& element) {
        const std::string name = anyAttributeName();
        for (const Attribute& attribute : element.attributes) {
            if (part(attribute.name) == name) {
                return replaced(attribute.value, anyValue());
            }
        }
        return inserted(element.name.end, " " + name + "=\"" + anyValue() + "\"");
    }

    std::string withStandalone() const {
        if (!text_.starts_with("<?xml ")) {
            return text_;
        }
        const std::size_t end = text_.find("?>");
        const std::size_t own = text_.find("standalone");
        return own < end ? text_ : text_.substr(0, end) + " standalone=\"yes\"" + text_.substr(end);
    }

    // Behind the start tag, or in front of the element when it has no end tag.
    std::size_t afterStart(const Element& element) const {
        if (element.endName.end == 0) {
            return element.whole.begin;
        }
        const std::size_t known =
            element.attributes.empty() ? element.name.end : element.attributes.back().whole.end;
        return text_.find('>', known) + 1;
    }

    std::string anyFiller() {
        static const std::vector<std::string> fillers{" ",  "<!-- a -->",    "<?a b?>",
                                                      "\n", "<![CDATA[ ]]>", "&amp;"};
        return fillers[pick(fillers.size())];
    }

    std::string anyValue() {
        static const std::vector<std::string> values{
            "",  "0",    "1",       "r1",  " r2 ", "r0", "1.10", "1/25s", "a b", "DF",
            "2", "none", "&amp;lt", "zzz", "-",    "_1", "1r",   "x:y",   "é",   "r1 r2"};
        return values[pick(values.size())];
    }

    const CatalogueElement& anyElement() {
        return Catalogue::shared().element(
            static_cast<fcpxml::ElementId>(pick(Catalogue::shared().size())));
    }

    std::string anyAttributeName() {
        for (;;) {
            const CatalogueElement& element = anyElement();
            if (!element.attributes.empty()) {
                return std::string(element.attributes[pick(element.attributes.size())].name);
            }
        }
    }

    std::size_t pick(std::size_t count) { return random_() % count; }
    std::string part(Span span) const { return text_.substr(span.begin, span.end - span.begin); }
    std::string replaced(Span span, const std::string& by) const {
        return text_.substr(0, span.begin) + by + text_.substr(span.end);
    }
    std::string inserted(std::size_t at, const std::string& piece) const {
        return text_.substr(0, at) + piece + text_.substr(at);
    }

    const std::string& text_;
    std::minstd_rand& random_;
    std::vector<Element> elements_;
};

}  // namespace

std::string mutatedDocument(const std::string& text, std::minstd_rand& random) {
    return Mutation(text, random).result();
}

}  // namespace vornic::test
