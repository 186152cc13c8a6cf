#include "xml/reader/XMLDoctypeReader.h"

#include <array>

namespace vornic {

namespace {

using xmlchars::is;

constexpr std::string_view kDoctype = "<!DOCTYPE";

constexpr const char* kNoEntities =
    "entity declarations are not supported; the file is not read any further.";

// Longer words before those that they begin with.
constexpr std::array<std::string_view, 8> kAttributeTypes = {
    "CDATA", "IDREFS", "IDREF", "ID", "ENTITIES", "ENTITY", "NMTOKENS", "NMTOKEN"};

}  // namespace

void XMLDoctypeReader::fault(const char* sentence) const {
    in_.fault(XMLErrorCode::malformedDocumentType, in_.at(), sentence);
}

void XMLDoctypeReader::expect(char expected, const char* sentence) {
    if (!in_.isAt(expected)) {
        refuseParameterEntity();
        fault(sentence);
    }
    in_.moveTo(in_.at() + 1);
}

void XMLDoctypeReader::expectSpace() {
    if (!in_.skipSpace()) {
        refuseParameterEntity();
        fault("white space is missing in the document type declaration.");
    }
}

void XMLDoctypeReader::expectName() {
    if (in_.readName().empty()) {
        refuseParameterEntity();
        fault("a name is missing in the document type declaration.");
    }
}

bool XMLDoctypeReader::take(std::string_view keyword) {
    if (!in_.startsWith(keyword)) {
        return false;
    }
    in_.moveTo(in_.at() + keyword.size());
    return true;
}

// A percent sign that a name follows is a reference to a parameter entity wherever it may stand.
void XMLDoctypeReader::refuseParameterEntity() const {
    if (in_.isAt('%') && xmlchars::nameLength(in_.at() + 1, in_.end()) != 0) {
        in_.fault(XMLErrorCode::entityDeclaration, in_.at(), kNoEntities);
    }
}

void XMLDoctypeReader::read() {
    const char* const start = in_.at();
    in_.moveTo(start + kDoctype.size());
    expectSpace();
    const char* const declaration = in_.at();
    expectName();
    const std::string_view name(declaration, static_cast<std::size_t>(in_.at() - declaration));
    if (in_.skipSpace()) {
        readExternalId(false);
        in_.skipSpace();
    }
    if (in_.isAt('[')) {
        in_.moveTo(in_.at() + 1);
        readInternalSubset();
        in_.skipSpace();
    }
    if (in_.atEnd()) {
        in_.fault(XMLErrorCode::malformedDocumentType, start,
                  "the document type declaration that begins here is never closed.");
    }
    expect('>', "the document type declaration is malformed here.");
    if (XMLReaderEvents* const events = in_.eventsAt(start, in_.at())) {
        const char* const last = in_.at() - 1;
        events->documentType(name, {declaration, static_cast<std::size_t>(last - declaration)});
    }
}

void XMLDoctypeReader::readInternalSubset() {
    for (;;) {
        in_.skipSpace();
        if (in_.atEnd()) {
            fault("the document type declaration is never closed.");
        }
        if (take("]")) {
            return;
        }
        if (in_.startsWith("<!--")) {
            (void)in_.readComment();
        } else if (in_.startsWith("<?")) {
            (void)in_.readProcessingInstruction();
        } else {
            readDeclaration();
        }
    }
}

void XMLDoctypeReader::readDeclaration() {
    refuseParameterEntity();
    if (in_.startsWith("<!ENTITY")) {
        in_.fault(XMLErrorCode::entityDeclaration, in_.at(), kNoEntities);
    }
    if (take("<!ELEMENT")) {
        readElementDeclaration();
    } else if (take("<!ATTLIST")) {
        readAttributeListDeclaration();
    } else if (take("<!NOTATION")) {
        readNotationDeclaration();
    } else {
        fault("there is no declaration that XML knows here.");
    }
}

void XMLDoctypeReader::readElementDeclaration() {
    expectSpace();
    expectName();
    expectSpace();
    if (!take("EMPTY") && !take("ANY")) {
        expect('(', "the content of the declared element is malformed.");
        in_.skipSpace();
        if (take("#PCDATA")) {
            readMixedContent();
        } else {
            readChildrenContent();
        }
    }
    in_.skipSpace();
    expect('>', "the element declaration is malformed here.");
}

void XMLDoctypeReader::readMixedContent() {
    bool hasNames = false;
    for (;;) {
        in_.skipSpace();
        if (!take("|")) {
            break;
        }
        in_.skipSpace();
        expectName();
        hasNames = true;
    }
    expect(')', "the content of the declared element is malformed.");
    if (!take("*") && hasNames) {
        fault("an asterisk is missing after the mixed content of the declared element.");
    }
}

// Groups nest as deep as the text likes, so they are kept in a string: one character for each open
// group, its separator, or a blank while it has none.
void XMLDoctypeReader::readChildrenContent() {
    std::string groups(1, ' ');
    while (!groups.empty()) {
        in_.skipSpace();
        if (take("(")) {
            groups += ' ';
            continue;
        }
        expectName();
        if (in_.isAt('?') || in_.isAt('*') || in_.isAt('+')) {
            in_.moveTo(in_.at() + 1);
        }
        readContentSeparator(groups);
    }
}

void XMLDoctypeReader::readContentSeparator(std::string& groups) {
    for (;;) {
        in_.skipSpace();
        if (!take(")")) {
            break;
        }
        groups.pop_back();
        if (in_.isAt('?') || in_.isAt('*') || in_.isAt('+')) {
            in_.moveTo(in_.at() + 1);
        }
        if (groups.empty()) {
            return;
        }
    }
    const char separator = in_.atEnd() ? '\0' : *in_.at();
    const bool fits = (separator == ',' || separator == '|') &&
                      (groups.back() == ' ' || groups.back() == separator);
    if (!fits) {
        refuseParameterEntity();
        fault("the content of the declared element is malformed.");
    }
    groups.back() = separator;
    in_.moveTo(in_.at() + 1);
}

void XMLDoctypeReader::readAttributeListDeclaration() {
    expectSpace();
    expectName();
    for (;;) {
        const bool spaced = in_.skipSpace();
        if (take(">")) {
            return;
        }
        if (!spaced) {
            expectSpace();
        }
        expectName();
        expectSpace();
        readAttributeType();
        expectSpace();
        readDefault();
    }
}

void XMLDoctypeReader::readAttributeType() {
    if (take("NOTATION")) {
        expectSpace();
        expect('(', "the names of the notations are missing.");
        readNames(false);
        return;
    }
    if (take("(")) {
        readNames(true);
        return;
    }
    for (const std::string_view type : kAttributeTypes) {
        if (take(type)) {
            return;
        }
    }
    refuseParameterEntity();
    fault("the type of the declared attribute is not one that XML knows.");
}

void XMLDoctypeReader::readNames(bool tokens) {
    do {
        in_.skipSpace();
        const std::size_t length = tokens ? xmlchars::nameTokenLength(in_.at(), in_.end())
                                          : xmlchars::nameLength(in_.at(), in_.end());
        if (length == 0) {
            refuseParameterEntity();
            fault("a name is missing in the document type declaration.");
        }
        in_.moveTo(in_.at() + length);
        in_.skipSpace();
    } while (take("|"));
    expect(')', "the list of names is malformed.");
}

void XMLDoctypeReader::readDefault() {
    if (take("#REQUIRED") || take("#IMPLIED")) {
        return;
    }
    if (take("#FIXED")) {
        expectSpace();
    }
    readDefaultValue();
}

void XMLDoctypeReader::readDefaultValue() {
    if (!in_.isAt('"') && !in_.isAt('\'')) {
        refuseParameterEntity();
        fault("the default of the declared attribute is malformed.");
    }
    const char* const value = in_.at();
    const char quote = *value;
    const char* place = value + 1;
    for (;;) {
        if (place == in_.end()) {
            in_.fault(XMLErrorCode::unclosedAttributeValue, value,
                      "the attribute value that begins here is never closed.");
        }
        if (*place == quote) {
            break;
        }
        if (*place == '<') {
            in_.fault(XMLErrorCode::lessThanInAttributeValue, place,
                      "a less-than sign stands in an attribute value.");
        }
        if (*place == '&') {
            place = in_.passReference(place);
        } else {
            place = is(*place, xmlchars::kPlainValue) || *place == '"' || *place == '\''
                        ? place + 1
                        : in_.passCharacter(place);
        }
    }
    in_.moveTo(place + 1);
}

void XMLDoctypeReader::readNotationDeclaration() {
    expectSpace();
    expectName();
    expectSpace();
    if (!readExternalId(true)) {
        refuseParameterEntity();
        fault("the notation declaration is malformed here.");
    }
    in_.skipSpace();
    expect('>', "the notation declaration is malformed here.");
}

bool XMLDoctypeReader::readExternalId(bool mayOmitSystem) {
    if (take("SYSTEM")) {
        expectSpace();
        readSystemLiteral();
        return true;
    }
    if (!take("PUBLIC")) {
        return false;
    }
    expectSpace();
    readPublicLiteral();
    const bool spaced = in_.skipSpace();
    const bool hasSystem = in_.isAt('"') || in_.isAt('\'');
    if (!hasSystem && mayOmitSystem) {
        return true;
    }
    if (!spaced) {
        fault("white space is missing in the document type declaration.");
    }
    readSystemLiteral();
    return true;
}

void XMLDoctypeReader::readPublicLiteral() {
    if (!in_.isAt('"') && !in_.isAt('\'')) {
        fault("a public identifier in quotes is missing.");
    }
    const char quote = *in_.at();
    const char* place = in_.at() + 1;
    while (place != in_.end() && *place != quote && is(*place, xmlchars::kPublicId)) {
        ++place;
    }
    in_.moveTo(place);
    expect(quote, "the public identifier holds a character that XML does not allow there.");
}

void XMLDoctypeReader::readSystemLiteral() {
    if (!in_.isAt('"') && !in_.isAt('\'')) {
        fault("a system identifier in quotes is missing.");
    }
    const char* const literal = in_.at();
    const char* place = literal + 1;
    while (place != in_.end() && *place != *literal) {
        const bool ascii = xmlchars::isASCII(*place) && static_cast<unsigned char>(*place) >= 0x20;
        place = ascii ? place + 1 : in_.passCharacter(place);
    }
    if (place == in_.end()) {
        in_.fault(XMLErrorCode::malformedDocumentType, literal,
                  "the system identifier that begins here is never closed.");
    }
    in_.moveTo(place + 1);
}

}  // namespace vornic
