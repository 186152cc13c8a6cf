#include "check/EarlyEnd.h"

#include <string>
#include <vector>

#include "xml/reader/XMLReader.h"
#include "xml/text/TextPlace.h"
#include "xml/text/XMLCharacters.h"
#include "xml/text/XMLErrorCode.h"

namespace vornic {

namespace {

class UnheardMends final : public XMLMendSink {
  public:
    void mend(const XMLMend& /*mend*/, std::string_view /*name*/) override {}
    void edit(const XMLEdit& /*edit*/) override {}
    void dropped(TextSpan /*characters*/) override {}
};

bool beginsTag(std::string_view text) {
    return text.size() == 1 || text[1] == '/' ||
           xmlchars::nameLength(text.data() + 1, text.data() + text.size()) != 0;
}

}  // namespace

std::string_view textBeforeTornTag(std::string_view text) {
    const std::size_t tag = text.find_last_of("<>");
    if (tag == std::string_view::npos || text[tag] != '<' || !beginsTag(text.substr(tag))) {
        return text;
    }
    const std::string_view before = text.substr(0, tag);
    UnheardMends mends;
    const XMLReading reading = readXML(before, XMLMode::tolerant, nullptr, &mends);
    const bool isInElement =
        reading.faultParts && reading.faultParts->code == XMLErrorCode::unclosedElement;
    return isInElement ? before : text;
}

void nameOpenElements(const ElementIndex& index, bool isInTag, Finding& finding) {
    constexpr std::size_t kMostNames = 12;
    const std::vector<ElementNumber>& elements = index.unclosed();
    if (elements.empty()) {
        return;
    }
    const std::size_t shown = elements.size() > kMostNames + 1 ? kMostNames : elements.size();
    TextPlace place(index.text());
    place.moveTo(index.spanOf(elements.back()).offset);
    std::string open;
    std::string closing;
    for (std::size_t i = 0; i < shown; ++i) {
        const std::string name(excerpt(index.nameOf(elements[elements.size() - 1 - i])));
        const bool isLast = i + 1 == elements.size();
        open += i == 0 ? "<" : isLast ? " and <" : ", <";
        open += name + ">";
        open += i == 0 ? " (line " + std::to_string(place.line()) + ")" : "";
        closing += "</" + name + ">";
    }
    if (shown < elements.size()) {
        open += " and " + std::to_string(elements.size() - shown) + " others";
        closing += "…";
    }
    open += elements.size() == 1 ? " is" : " are";
    for (Argument& argument : finding.arguments) {
        if (argument.name == "open") {
            argument.value = open;
        } else if (argument.name == "closing") {
            argument.value = closing;
        } else if (argument.name == "ends" && isInTag) {
            argument.value = "ends in the middle of a tag";
        }
    }
}

}  // namespace vornic
