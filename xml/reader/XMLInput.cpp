#include "xml/reader/XMLInput.h"

#include <array>

#include "xml/text/TextPlace.h"

namespace vornic {

namespace {

using xmlchars::is;

constexpr std::array<std::string_view, 5> kPredefinedEntities = {"&amp;", "&lt;", "&gt;", "&quot;",
                                                                 "&apos;"};

unsigned digitValue(char c) {
    if (c >= '0' && c <= '9') {
        return static_cast<unsigned>(c - '0');
    }
    if (c >= 'a' && c <= 'f') {
        return static_cast<unsigned>(c - 'a') + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return static_cast<unsigned>(c - 'A') + 10;
    }
    return 16;
}

// The length of the character reference that begins with "&#" at `place`, or 0.
std::size_t characterReferenceLength(const char* place, const char* end) {
    const char* at = place + 2;
    const bool hexadecimal = at != end && *at == 'x';
    const unsigned base = hexadecimal ? 16 : 10;
    at += hexadecimal ? 1 : 0;
    const char* const digits = at;
    char32_t value = 0;
    for (; at != end && digitValue(*at) < base; ++at) {
        value = value <= 0x10FFFF ? value * base + digitValue(*at) : value;
    }
    const bool complete = at != digits && at != end && *at == ';';
    return complete && xmlchars::isAllowed(value) ? static_cast<std::size_t>(at + 1 - place) : 0;
}

bool isReservedTarget(std::string_view target) {
    return target.size() == 3 && (target[0] == 'x' || target[0] == 'X') &&
           (target[1] == 'm' || target[1] == 'M') && (target[2] == 'l' || target[2] == 'L');
}

}  // namespace

std::size_t XMLInput::lineOf(const char* place) const {
    TextPlace counter(std::string_view(begin_, static_cast<std::size_t>(end_ - begin_)));
    counter.moveTo(offsetOf(place));
    return counter.line();
}

void XMLInput::fault(XMLErrorCode code, const char* place, std::string sentence,
                     std::string_view name) const {
    throw XMLReadingFault{{code, offsetOf(place), std::string(name), {}, 0}, std::move(sentence)};
}

void XMLInput::fault(XMLErrorCode code, const char* place, std::string sentence,
                     std::string_view name, std::string_view startName) const {
    throw XMLReadingFault{{code, offsetOf(place), std::string(name), std::string(startName),
                           offsetOf(startName.data())},
                          std::move(sentence)};
}

void XMLInput::mend(XMLErrorCode code, const char* place, std::string_view what,
                    std::string_view name) {
    if (!keepsNothing()) {
        limit(reading_.mends.size(), place);
    }
    if (listeners_.sink != nullptr) {
        listeners_.sink->mend({.code = code, .offset = spanOf(place, place).offset, .what = what},
                              name);
    }
    if (keepsNothing()) {
        return;
    }
    reading_.mends.push_back({.code = code, .offset = offsetOf(place), .what = what});
}

void XMLInput::edit(const char* place, std::size_t length, std::string_view replacement) {
    if (!keepsNothing()) {
        limit(reading_.edits.size(), place);
    }
    if (listeners_.sink != nullptr) {
        const TextSpan span = spanOf(place, place + length);
        listeners_.sink->edit({span.offset, span.length, replacement});
    }
    if (keepsNothing()) {
        return;
    }
    reading_.edits.push_back({offsetOf(place), length, replacement});
    growth_ += replacement.size() - length;
}

void XMLInput::limit(std::size_t count, const char* place) const {
    if (count >= kXMLMendLimit) {
        fault(XMLErrorCode::tooManyMends, place,
              "there are more than " + std::to_string(kXMLMendLimit) +
                  " faults up to here, too many for the file to be mended.");
    }
}

void XMLInput::mendOrFault(XMLErrorCode code, const char* place, const char* sentence,
                           std::string_view what, std::string_view name) {
    if (!tolerant_) {
        fault(code, place, sentence, name);
    }
    mend(code, place, what, name);
}

const char* XMLInput::passCharacter(const char* place) {
    const xmlchars::Decoded decoded = xmlchars::decode(place, end_);
    if (decoded.length == 0) {
        fault(XMLErrorCode::invalidUTF8, place, "the bytes here are not UTF-8 text.");
    }
    if (!xmlchars::isAllowed(decoded.character)) {
        if (keepsNothing()) {
            const char* const after = ForbiddenCharacters::endOfRun(place, end_);
            listeners_.sink->dropped(spanOf(place, after));
            return after;
        }
        fault(XMLErrorCode::forbiddenCharacter, place,
              "there is a character here that XML does not allow.");
    }
    return place + decoded.length;
}

const char* XMLInput::passReference(const char* place) {
    if (startsWith(place, "&#")) {
        const std::size_t length = characterReferenceLength(place, end_);
        if (length != 0) {
            return place + length;
        }
    } else {
        for (const std::string_view entity : kPredefinedEntities) {
            if (startsWith(place, entity)) {
                return place + entity.size();
            }
        }
    }
    const std::string_view name(place + 1, xmlchars::nameLength(place + 1, end_));
    const char* const afterName = place + 1 + name.size();
    const bool isNamed = !name.empty() && afterName != end_ && *afterName == ';';
    if (!tolerant_ && isNamed) {
        fault(XMLErrorCode::undefinedEntity, place,
              "the entity &" + excerpt(name) + "; is not defined.", name);
    }
    mendOrFault(isNamed ? XMLErrorCode::undefinedEntity : XMLErrorCode::malformedReference, place,
                "an ampersand begins no entity here; it should be written as &amp;.",
                "an ampersand that begins no entity was read as text",
                isNamed ? name : std::string_view());
    edit(place, 1, "&amp;");
    return place + 1;
}

const char* XMLInput::passHyphens(const char* comment, const char* place) {
    const char* after = place;
    while (after != end_ && *after == '-') {
        ++after;
    }
    const auto count = static_cast<std::size_t>(after - place);
    const bool closes = count >= 2 && after != end_ && *after == '>';
    const std::size_t inside = closes ? count - 2 : count;
    const bool faulty = closes ? inside > 0 : inside > 1;
    if (faulty) {
        mendOrFault(XMLErrorCode::doubleHyphenInComment, place,
                    "a comment must not contain two hyphens in a row.",
                    "two hyphens in a row inside a comment were read with a blank between them");
        // Closing it at the end of the other one would make a comment of what is between.
        if (place - comment >= 2 && place[-1] == '!' && place[-2] == '<') {
            fault(XMLErrorCode::unclosedComment, comment,
                  "the comment that begins here contains the beginning of another one; it seems "
                  "not to be closed.");
        }
        const std::size_t gaps = closes ? inside : inside - 1;
        for (std::size_t gap = 1; gap <= gaps; ++gap) {
            edit(place + gap, 0, " ");
        }
    }
    return closes ? after - 2 : after;
}

std::string_view XMLInput::readComment() {
    const char* const comment = at_;
    const char* const content = comment + 4;
    const char* place = content;
    for (;;) {
        while (place != end_ && is(*place, xmlchars::kPlainData)) {
            ++place;
        }
        if (place == end_) {
            fault(XMLErrorCode::unclosedComment, comment,
                  "the comment that begins here is never closed.");
        }
        if (*place == '-') {
            place = passHyphens(comment, place);
            if (startsWith(place, "-->")) {
                break;
            }
        } else if (xmlchars::isASCII(*place) && static_cast<unsigned char>(*place) >= 0x20) {
            ++place;
        } else {
            place = passCharacter(place);
        }
    }
    at_ = place + 3;
    return {content, static_cast<std::size_t>(place - content)};
}

XMLInstruction XMLInput::readProcessingInstruction() {
    const char* const instruction = at_;
    at_ += 2;
    const std::string_view target = readName();
    if (target.empty()) {
        fault(XMLErrorCode::malformedProcessingInstruction, instruction,
              "a processing instruction must have a name right after <?.");
    }
    if (isReservedTarget(target)) {
        fault(XMLErrorCode::misplacedXMLDeclaration, instruction,
              "an XML declaration may stand only at the very beginning of the file.");
    }
    const char* const afterTarget = at_;
    const char* const data = afterSpace(afterTarget);
    const char* const dataEnd = passInstructionData(instruction, data);
    if (data == afterTarget && dataEnd != data) {
        fault(XMLErrorCode::malformedProcessingInstruction, afterTarget,
              "white space is missing after the name of the processing instruction.");
    }
    at_ = dataEnd + 2;
    return {target, {data, static_cast<std::size_t>(dataEnd - data)}};
}

const char* XMLInput::passInstructionData(const char* instruction, const char* place) {
    for (;;) {
        while (place != end_ && is(*place, xmlchars::kPlainData)) {
            ++place;
        }
        if (place == end_) {
            fault(XMLErrorCode::unclosedProcessingInstruction, instruction,
                  "the processing instruction that begins here is never closed.");
        }
        if (startsWith(place, "?>")) {
            return place;
        }
        const bool plain = *place == '-' || *place == ']' || *place == '?';
        place = plain ? place + 1 : passCharacter(place);
    }
}

std::string quotedTag(std::string_view opening, std::string_view name) {
    return std::string(opening) + excerpt(name) + ">";
}

}  // namespace vornic
