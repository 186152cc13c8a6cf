#include "xml/reader/XMLContentReader.h"

#include <algorithm>
#include <array>
#include <string>

#include "xml/reader/XMLDeclarationReader.h"
#include "xml/reader/XMLDoctypeReader.h"
#include "xml/text/PlainBytes.h"
#include "xml/text/TextDecoding.h"
#include "xml/text/TextPlace.h"

namespace vornic {

namespace {

using xmlchars::is;

constexpr std::string_view kCDATAStart = "<![CDATA[";

bool isWhiteSpaceReference(std::string_view reference) {
    if (!reference.starts_with("&#") || !reference.ends_with(';')) {
        return false;
    }
    const bool hexadecimal = reference[2] == 'x';
    std::string_view digits = reference.substr(hexadecimal ? 3 : 2);
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    constexpr std::array<std::string_view, 4> kDecimal = {"9;", "10;", "13;", "32;"};
    constexpr std::array<std::string_view, 6> kHexadecimal = {"9;", "a;", "A;", "d;", "D;", "20;"};
    return hexadecimal
               ? std::find(kHexadecimal.begin(), kHexadecimal.end(), digits) != kHexadecimal.end()
               : std::find(kDecimal.begin(), kDecimal.end(), digits) != kDecimal.end();
}

// True for text that is white space once its character references are replaced.
bool decodesToWhiteSpace(std::string_view text) {
    while (!text.empty()) {
        std::size_t length = 1;
        if (!is(text[0], xmlchars::kSpace)) {
            const std::size_t end = text.find(';');
            if (end == std::string_view::npos || !isWhiteSpaceReference(text.substr(0, end + 1))) {
                return false;
            }
            length = end + 1;
        }
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace

void XMLContentReader::read() {
    readXMLDeclaration(in_);
    readMisc(true);
    readStartTag();
    in_.reading().contentOffset = open_.empty() ? 0 : in_.mendedOffsetOf(in_.at());
    readContent();
    readMisc(false);
}

// White space, comments, processing instructions and the document type declaration, up to the root
// element or to the end of the text.
void XMLContentReader::readMisc(bool beforeRoot) {
    for (;;) {
        in_.skipSpace();
        if (in_.atEnd()) {
            break;
        }
        if (in_.startsWith("<!--")) {
            readComment();
        } else if (in_.startsWith("<?")) {
            readInstruction();
        } else if (in_.startsWith("<!DOCTYPE")) {
            readDoctype(beforeRoot);
        } else if (beforeRoot && *in_.at() == '<' &&
                   xmlchars::nameLength(in_.at() + 1, in_.end()) != 0) {
            return;
        } else if (beforeRoot && in_.startsWith(kByteOrderMark)) {
            dropByteOrderMark();
        } else {
            refuseOutsideRoot(beforeRoot);
        }
    }
    if (beforeRoot) {
        in_.fault(XMLErrorCode::noRootElement, in_.at(), "the file ends without a root element.");
    }
}

// Where files were joined, that of the second one stands behind what the first one began with.
void XMLContentReader::dropByteOrderMark() {
    const char* const mark = in_.at();
    in_.mendOrFault(XMLErrorCode::misplacedByteOrderMark, mark,
                    "a byte order mark stands before the root element.",
                    "a byte order mark before the root element was passed over");
    in_.edit(mark, kByteOrderMark.size(), "");
    in_.moveTo(mark + kByteOrderMark.size());
}

void XMLContentReader::readComment() {
    const char* const start = in_.at();
    const std::string_view content = in_.readComment();
    if (XMLReaderEvents* const events = in_.eventsAt(start, in_.at())) {
        events->comment(content);
    }
}

void XMLContentReader::readInstruction() {
    const char* const start = in_.at();
    const XMLInstruction instruction = in_.readProcessingInstruction();
    if (XMLReaderEvents* const events = in_.eventsAt(start, in_.at())) {
        events->processingInstruction(instruction.target, instruction.data);
    }
}

void XMLContentReader::readDoctype(bool beforeRoot) {
    if (!beforeRoot || hasDoctype_) {
        in_.fault(XMLErrorCode::misplacedDocumentType, in_.at(),
                  beforeRoot ? "there is a second document type declaration."
                             : "a document type declaration may stand only before the root "
                               "element.");
    }
    hasDoctype_ = true;
    XMLDoctypeReader(in_).read();
}

void XMLContentReader::refuseOutsideRoot(bool beforeRoot) {
    const char* const place = in_.at();
    if (in_.startsWith("</")) {
        const std::string_view name(place + 2, xmlchars::nameLength(place + 2, in_.end()));
        in_.fault(XMLErrorCode::strayEndTag, place,
                  "the end tag " + quotedTag("</", name) + " belongs to no start tag.", name);
    }
    if (!beforeRoot && *place == '<' && xmlchars::nameLength(place + 1, in_.end()) != 0) {
        in_.fault(XMLErrorCode::secondRootElement, place,
                  "there is a second root element; a file may have only one.",
                  {place + 1, xmlchars::nameLength(place + 1, in_.end())});
    }
    if (in_.startsWith("<!")) {
        in_.fault(XMLErrorCode::unknownMarkup, place,
                  "the markup that begins here is not known at this place.");
    }
    // Tells malformed bytes from text.
    if (!xmlchars::isASCII(*place) || static_cast<unsigned char>(*place) < 0x20) {
        (void)in_.passCharacter(place);
    }
    in_.fault(XMLErrorCode::textOutsideRoot, place,
              beforeRoot ? "there is text before the root element."
                         : "there is text after the root element.");
}

void XMLContentReader::readContent() {
    while (!open_.empty()) {
        if (in_.atEnd()) {
            refuseOpenElements();
        }
        if (*in_.at() == '<' && beginsMarkup(in_.at())) {
            readMarkup();
        } else {
            readText();
        }
    }
}

void XMLContentReader::readMarkup() {
    const char next = in_.at()[1];
    if (next == '/') {
        readEndTag();
    } else if (next == '?') {
        noteChild(false);
        readInstruction();
    } else if (next != '!') {
        noteChild(false);
        readStartTag();
    } else if (in_.startsWith("<!--")) {
        noteChild(false);
        readComment();
    } else if (in_.startsWith(kCDATAStart)) {
        readCDATA();
    } else if (in_.startsWith("<!DOCTYPE")) {
        readDoctype(false);
    } else {
        in_.fault(XMLErrorCode::unknownMarkup, in_.at(),
                  "the markup that begins here is not known at this place.");
    }
}

bool XMLContentReader::beginsMarkup(const char* place) const {
    if (place + 1 == in_.end()) {
        return false;
    }
    const char next = place[1];
    return is(next, xmlchars::kNameStart) || next == '/' || next == '!' || next == '?' ||
           (!xmlchars::isASCII(next) && xmlchars::nameLength(place + 1, in_.end()) != 0);
}

void XMLContentReader::readStartTag() {
    const char* const tag = in_.at();
    const std::size_t mendedName = in_.mendedOffsetOf(tag + 1);
    in_.moveTo(tag + 1);
    const std::string_view name = in_.readName();
    if (XMLReaderEvents* const events = in_.eventsAt(tag, in_.at())) {
        events->startElement(name);
    }
    attributes_.beginTag(name);
    for (;;) {
        const bool spaced = in_.skipSpace();
        if (in_.isAt('>')) {
            in_.moveTo(in_.at() + 1);
            finishStartTag(name, false, mendedName);
            return;
        }
        if (in_.startsWith("/>")) {
            in_.moveTo(in_.at() + 2);
            finishStartTag(name, true, mendedName);
            return;
        }
        const std::string_view attribute = in_.nameAt(in_.at());
        if (attribute.empty()) {
            refuseTagEnd(tag, in_.at());
        }
        attributes_.read(attribute, spaced);
    }
}

void XMLContentReader::finishStartTag(std::string_view name, bool selfClosed,
                                      std::size_t mendedName) {
    if (selfClosed) {
        if (XMLReaderEvents* const events = in_.eventsAt(in_.at() - 2, in_.at())) {
            events->endElement(name, true);
        }
        return;
    }
    if (XMLReaderEvents* const events = in_.eventsAt(in_.at() - 1, in_.at())) {
        events->finishStartTag();
    }
    open_.push_back({in_.offsetOf(name.data()), name.size()});
    afterStartTag_ = in_.at();
    startTagName_ = mendedName;
}

void XMLContentReader::refuseTagEnd(const char* tag, const char* place) {
    const std::string_view name(tag + 1, xmlchars::nameLength(tag + 1, in_.end()));
    if (place == in_.end() || *place == '<') {
        in_.fault(XMLErrorCode::unclosedTag, tag,
                  "the tag " + quotedTag("<", name) + " is never closed.", name);
    }
    if (!xmlchars::isASCII(*place) || static_cast<unsigned char>(*place) < 0x20) {
        (void)in_.passCharacter(place);
    }
    in_.fault(XMLErrorCode::malformedStartTag, place,
              "the tag " + quotedTag("<", name) + " is malformed here.", name);
}

void XMLContentReader::readEndTag() {
    const char* const tag = in_.at();
    const OpenElement& element = open_.back();
    const std::string_view name = nameOf(element);
    if (!xmlchars::startsWithName(tag + 2, in_.end(), name)) {
        refuseEndTag(tag);
    }
    const char* const close = in_.afterSpace(tag + 2 + name.size());
    if (close == in_.end() || *close != '>') {
        refuseEndTag(tag);
    }
    if (tag == afterStartTag_ && !in_.keepsNothing()) {
        in_.reading().emptyPairs.push_back(startTagName_);
    }
    open_.pop_back();
    in_.moveTo(close + 1);
    if (XMLReaderEvents* const events = in_.eventsAt(tag, in_.at())) {
        events->endElement(name, false);
    }
}

void XMLContentReader::refuseEndTag(const char* tag) {
    const std::string_view name(tag + 2, xmlchars::nameLength(tag + 2, in_.end()));
    const std::string_view expected = nameOf(open_.back());
    if (name.empty()) {
        in_.fault(XMLErrorCode::malformedEndTag, tag,
                  "an end tag must have a name right after </.");
    }
    if (name == expected) {
        const bool unclosed = in_.afterSpace(tag + 2 + name.size()) == in_.end();
        in_.fault(unclosed ? XMLErrorCode::unclosedTag : XMLErrorCode::malformedEndTag, tag,
                  "the end tag " + quotedTag("</", name) + " is never closed.", name);
    }
    in_.fault(XMLErrorCode::mismatchedEndTag, tag,
              "the end tag " + quotedTag("</", name) + " does not match the start tag " +
                  quotedTag("<", expected) + " of line " +
                  std::to_string(in_.lineOf(in_.begin() + open_.back().nameOffset)) + ".",
              name, expected);
}

void XMLContentReader::readText() {
    const char* const start = in_.at();
    const char* const content = in_.afterSpace(start);
    const std::size_t mendedStart = in_.mendedOffsetOf(start);
    const bool blank = content != in_.end() && *content == '<' && beginsMarkup(content);
    const char* const end = blank ? content : passText(content);
    const std::string_view text(start, static_cast<std::size_t>(end - start));
    noteChild(!blank);
    if (!blank && content != in_.end() && *content == '&' && !in_.keepsNothing() &&
        decodesToWhiteSpace(text)) {
        in_.reading().referencedBlanks.push_back(mendedStart);
    }
    in_.moveTo(end);
    if (XMLReaderEvents* const events = in_.eventsAt(start, end)) {
        events->text(text);
    }
}

const char* XMLContentReader::passText(const char* place) {
    for (;;) {
        place = xmlchars::afterBytes<xmlchars::kPlainText>(place, in_.end());
        if (place == in_.end() || (*place == '<' && beginsMarkup(place))) {
            return place;
        }
        place = passSpecialText(place);
    }
}

const char* XMLContentReader::passSpecialText(const char* place) {
    switch (*place) {
        case '<':
            in_.mendOrFault(XMLErrorCode::strayLessThan, place,
                            "a less-than sign begins no tag here; it should be written as &lt;.",
                            "a less-than sign that begins no tag was read as text");
            in_.edit(place, 1, "&lt;");
            return place + 1;
        case '&':
            return in_.passReference(place);
        case ']':
            if (in_.startsWith(place, "]]>")) {
                in_.mendOrFault(XMLErrorCode::cdataEndInText, place,
                                "]]> stands in text; it should be written as ]]&gt;.",
                                "]]> outside a CDATA section was read as text");
                in_.edit(place + 2, 1, "&gt;");
                return place + 3;
            }
            return place + 1;
        default:
            return in_.passCharacter(place);
    }
}

void XMLContentReader::readCDATA() {
    const char* const section = in_.at();
    const char* const content = section + kCDATAStart.size();
    const char* place = content;
    noteChild(true);
    for (;;) {
        while (place != in_.end() && is(*place, xmlchars::kPlainData)) {
            ++place;
        }
        if (place == in_.end()) {
            in_.fault(XMLErrorCode::unclosedCDATA, section,
                      "the CDATA section that begins here is never closed.");
        }
        if (in_.startsWith(place, "]]>")) {
            break;
        }
        const bool plain = *place == '-' || *place == ']' || *place == '?';
        place = plain ? place + 1 : in_.passCharacter(place);
    }
    in_.moveTo(place + 3);
    if (XMLReaderEvents* const events = in_.eventsAt(section, in_.at())) {
        events->cdata({content, static_cast<std::size_t>(place - content)});
    }
}

void XMLContentReader::noteChild(bool isText) {
    OpenElement& parent = open_.back();
    parent.hasText = parent.hasText || isText;
    if (parent.hasText && parent.hasChildren) {
        in_.reading().hasMixedContent = true;
    }
    parent.hasChildren = true;
}

void XMLContentReader::refuseOpenElements() {
    const OpenElement& element = open_.back();
    in_.fault(XMLErrorCode::unclosedElement, in_.end(),
              "the file ends before the element " + quotedTag("<", nameOf(element)) + " of line " +
                  std::to_string(in_.lineOf(in_.begin() + element.nameOffset)) + " is closed.",
              nameOf(element), nameOf(element));
}

std::string_view XMLContentReader::nameOf(const OpenElement& element) const {
    return {in_.begin() + element.nameOffset, element.nameLength};
}

}  // namespace vornic
