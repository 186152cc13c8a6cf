#include "xml/reader/XMLReader.h"

#include "xml/reader/ForbiddenCharacters.h"
#include "xml/reader/XMLContentReader.h"
#include "xml/reader/XMLInput.h"
#include "xml/text/TextDecoding.h"
#include "xml/text/TextPlace.h"
#include "xml/text/XMLErrorCode.h"

namespace vornic {

namespace {

using Fault = std::optional<XMLReadingFault>;

// With this many runs of forbidden characters they are passed over where they stand, if nobody
// wants them dropped: a copy of the text without them, and their places, would take more than the
// text.
constexpr std::size_t kManyRuns = 100'000;

Fault readText(std::string_view text, XMLMode mode, const XMLInput::Listeners& listeners,
               XMLReading& reading) {
    try {
        XMLInput input(text, mode, listeners, reading);
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
    place.moveTo(fault.parts.offset);
    return {std::string(kXMLErrorDomain), static_cast<int>(fault.parts.code),
            sentenceWithPlace(place.line(), place.column(), fault.sentence), place.line(),
            place.column()};
}

// Reads the text without its forbidden characters and tells what was found in terms of the text
// with them.
Fault readWithoutForbidden(std::string_view text, XMLInput::Listeners listeners,
                           XMLReading& reading) {
    if (const std::optional<std::size_t> invalid = firstInvalidUTF8(text)) {
        return XMLReadingFault{{XMLErrorCode::invalidUTF8, *invalid, {}, {}, 0},
                               "the bytes here are not UTF-8 text."};
    }
    if (ForbiddenCharacters::runsIn(text) > kXMLMendLimit) {
        return XMLReadingFault{{XMLErrorCode::tooManyMends, 0, {}, {}, 0},
                               "the file holds too many characters that XML does not allow."};
    }
    const ForbiddenCharacters characters(text);
    const ForbiddenCharacters::Runs runs(characters);
    listeners.dropped = &runs;
    if (listeners.sink != nullptr) {
        for (const XMLEdit& run : characters.runs()) {
            listeners.sink->dropped({run.offset, run.length});
        }
    }
    Fault fault = readText(characters.remainingText(), XMLMode::tolerant, listeners, reading);
    ForbiddenCharacters::OffsetMap mendMap(characters);
    for (XMLMend& mend : reading.mends) {
        mend.offset = mendMap.original(mend.offset);
    }
    if (fault) {
        fault->parts.offset = runs.original({fault->parts.offset, 0}).offset;
        fault->parts.otherOffset = runs.original({fault->parts.otherOffset, 0}).offset;
    }
    if (!listeners.keepNothing()) {
        reading.edits = characters.editsOfOriginal(reading.edits);
    }
    reading.droppedCharacters = characters.count();
    return fault;
}

}  // namespace

XMLReading readXML(std::string_view text, XMLMode mode, XMLReaderEvents* events, XMLMendSink* sink,
                   XMLKeeping keeping, XMLForbidden forbidden) {
    XMLReading reading;
    const XMLInput::Listeners listeners{.events = events,
                                        .sink = mode == XMLMode::tolerant ? sink : nullptr,
                                        .keeping = keeping,
                                        .dropped = nullptr};
    const bool mayDrop = mode == XMLMode::tolerant && forbidden == XMLForbidden::unknown;
    const std::size_t runs = mayDrop ? ForbiddenCharacters::runsIn(text) : std::size_t{0};
    const bool drops = runs != 0 && (!listeners.keepNothing() || runs < kManyRuns);
    Fault fault = drops ? readWithoutForbidden(text, listeners, reading)
                        : readText(text, mode, listeners, reading);
    placeMends(text, reading.mends);
    if (fault) {
        reading.fault = errorOf(*fault, text);
        reading.faultParts = std::move(fault->parts);
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
