#include "xml/XMLReader.h"

#include "xml/ForbiddenCharacters.h"
#include "xml/TextDecoding.h"
#include "xml/TextPlace.h"
#include "xml/XMLContentReader.h"
#include "xml/XMLErrorCode.h"
#include "xml/XMLInput.h"

namespace vornic {

namespace {

using Fault = std::optional<XMLReadingFault>;

Fault readText(std::string_view text, XMLMode mode, XMLReaderEvents* events, XMLReading& reading) {
    try {
        XMLInput input(text, mode, events, reading);
        XMLContentReader(input).read();
        return std::nullopt;
    } catch (XMLReadingFault& fault) {
        return std::move(fault);
    }
}

void placeMends(std::string_view text, std::vector<XMLMend>& mends) {
    TextPlace place(text);
    for (XMLMend& mend : mends) {
        place.moveTo(mend.offset);
        mend.line = place.line();
        mend.column = place.column();
    }
}

Error errorOf(const XMLReadingFault& fault, std::string_view text) {
    TextPlace place(text);
    place.moveTo(fault.offset);
    return {std::string(kXMLErrorDomain), static_cast<int>(fault.code),
            sentenceWithPlace(place.line(), place.column(), fault.sentence), place.line(),
            place.column()};
}

// Reads the text without its forbidden characters and tells what was found in terms of the text
// with them.
Fault readWithoutForbidden(std::string_view text, XMLReaderEvents* events, XMLReading& reading) {
    if (const std::optional<std::size_t> invalid = firstInvalidUTF8(text)) {
        return XMLReadingFault{XMLErrorCode::invalidUTF8, *invalid,
                               "the bytes here are not UTF-8 text."};
    }
    if (ForbiddenCharacters::runsIn(text) > kXMLMendLimit) {
        return XMLReadingFault{XMLErrorCode::tooManyMends, 0,
                               "the file holds too many characters that XML does not allow."};
    }
    const ForbiddenCharacters characters(text);
    Fault fault = readText(characters.remainingText(), XMLMode::tolerant, events, reading);
    ForbiddenCharacters::OffsetMap mendMap(characters);
    for (XMLMend& mend : reading.mends) {
        mend.offset = mendMap.original(mend.offset);
    }
    if (fault) {
        fault->offset = ForbiddenCharacters::OffsetMap(characters).original(fault->offset);
    }
    reading.edits = characters.editsOfOriginal(reading.edits);
    reading.droppedCharacters = characters.count();
    return fault;
}

}  // namespace

XMLReading readXML(std::string_view text, XMLMode mode, XMLReaderEvents* events) {
    XMLReading reading;
    const bool drops = mode == XMLMode::tolerant && ForbiddenCharacters::runsIn(text) != 0;
    const Fault fault =
        drops ? readWithoutForbidden(text, events, reading) : readText(text, mode, events, reading);
    placeMends(text, reading.mends);
    if (fault) {
        reading.fault = errorOf(*fault, text);
    }
    return reading;
}

std::string applyXMLEdits(std::string_view text, const std::vector<XMLEdit>& edits) {
    std::size_t length = text.size();
    for (const XMLEdit& edit : edits) {
        length += edit.replacement.size() - edit.length;
    }
    std::string result;
    result.reserve(length);
    std::size_t copied = 0;
    for (const XMLEdit& edit : edits) {
        result.append(text.substr(copied, edit.offset - copied));
        result.append(edit.replacement);
        copied = edit.offset + edit.length;
    }
    result.append(text.substr(copied));
    return result;
}

}  // namespace vornic
