#include "check/fcpxml/Naming.h"

#include "formats/StartTag.h"
#include "xml/text/AttributeValue.h"

namespace vornic {

std::string calledBy(const ElementIndex& index, ElementNumber element) {
    std::string text = "<" + std::string(index.nameOf(element)) + ">";
    // Markers and keywords are called by what they say.
    const bool isNote = text.ends_with("marker>") || text == "<keyword>";
    std::string_view name = index.attributeTextOf(element, isNote ? "value" : "name");
    // The style that a text refers to is not what it is called by.
    if (name.empty() && !index.isNamed(element, "text-style")) {
        const std::string_view reference = index.attributeTextOf(element, "ref");
        const ElementNumber target =
            reference.empty() ? kNoElement : index.elementWithId(reference);
        name = target == kNoElement ? name : index.attributeTextOf(target, "name");
    }
    if (name.empty()) {
        name = index.attributeTextOf(element, "id");
    }
    return name.empty() ? text : text + " \"" + quotedValue(name) + "\"";
}

std::string withArticle(std::string_view element) {
    const bool isVowel =
        !element.empty() && std::string_view("aeiou").find(element[0]) != std::string_view::npos;
    return (isVowel ? "an <" : "a <") + std::string(element) + ">";
}

std::string quotedValue(std::string_view rawValue) {
    constexpr std::size_t kMostBytes = 160;
    std::string value = normalisedAttributeValue(rawValue, false);
    if (value.size() > kMostBytes) {
        std::size_t end = kMostBytes;
        // Not inside of a character.
        while (end > 0 && (static_cast<unsigned char>(value[end]) & 0xC0U) == 0x80U) {
            --end;
        }
        value.resize(end);
        value += "…";
    }
    return value;
}

std::vector<Edit> removalOf(const ElementIndex& index, ElementNumber element,
                            std::string_view attribute) {
    const std::string_view text = index.text();
    StartTag tag(text, index.spanOf(element).offset);
    while (tag.next()) {
        if (tag.name() != attribute) {
            continue;
        }
        TextSpan span = tag.attribute();
        while (span.offset > 0 &&
               std::string_view(" \t\r\n").find(text[span.offset - 1]) != std::string_view::npos) {
            --span.offset;
            ++span.length;
        }
        return {{span.offset, span.length, ""}};
    }
    return {};
}

}  // namespace vornic
