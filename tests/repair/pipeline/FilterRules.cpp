#include "tests/repair/pipeline/FilterRules.h"

#include <algorithm>
#include <cstdint>

#include "base/Exception.h"
#include "base/Text.h"
#include "base/Utf8.h"
#include "repair/pipeline/CharacterFilter.h"
#include "xml/reader/ForbiddenCharacters.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"

namespace vornic::test {

namespace {

class Counter : public CharacterFilterObserver {
  public:
    bool isCancelled() override { return false; }
    void removedUnit(std::int64_t index, TextSpan /*character*/) override {
        isInOrder = isInOrder && index == next;
        ++removed;
    }
    bool finishedUnits(std::int64_t first, std::int64_t last) override {
        isInOrder = isInOrder && first == next && last >= first;
        next = last + 1;
        return true;
    }
    std::int64_t next = 0;
    std::int64_t removed = 0;
    bool isInOrder = true;
};

// The UTF-16 units of the characters that have to go, wherever no CDATA section keeps them.
std::int64_t unitsToRemove(std::string_view text) {
    std::int64_t units = 0;
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        const bool isSpace =
            character.code == '\t' || character.code == '\n' || character.code == '\r';
        if ((character.code < 0x20 && !isSpace) || character.code >= 0xD800) {
            units += character.code > 0xFFFF ? 2 : 1;
        }
        at += character.length;
    }
    return units;
}

std::string brokenRuleOfOffsets(std::string_view text, std::string_view filtered) {
    // Each offset runs the filter again, so only some are tried.
    const std::size_t step = std::max<std::size_t>(1, filtered.size() / 50);
    std::size_t last = 0;
    for (std::size_t offset = 0; offset < filtered.size(); offset += step) {
        const std::size_t origin = originOfFilteredOffset(text, offset);
        if (origin < last || origin >= text.size()) {
            return "offset " + std::to_string(offset) + " is said to come from " +
                   std::to_string(origin);
        }
        last = origin;
    }
    return originOfFilteredOffset(text, filtered.size()) == text.size()
               ? ""
               : "the end is said to come from elsewhere";
}

}  // namespace

std::string brokenRuleOfMovedReading(std::string_view text, bool& isMoved) {
    isMoved = false;
    if (firstInvalidUTF8(text)) {
        return "";
    }
    XMLReading reading = readXML(text, XMLMode::tolerant);
    if (reading.fault || !reading.mends.empty() || !reading.edits.empty()) {
        return "";
    }
    Counter counter;
    const FilteredText filtered = filterInvalidCharacters(text, counter, &reading).value();
    if (!filtered.isRead) {
        return filtered.isChanged ? "" : "the text is the same, and its reading is not";
    }
    isMoved = filtered.isChanged;
    const XMLReading anew = readXML(filtered.isChanged ? filtered.text : text, XMLMode::strict);
    if (anew.fault) {
        return "the result cannot be read: " + anew.fault->localizedDescription();
    }
    const bool isSame = reading.hasMixedContent == anew.hasMixedContent &&
                        reading.contentOffset == anew.contentOffset &&
                        reading.emptyPairs == anew.emptyPairs &&
                        reading.referencedBlanks == anew.referencedBlanks;
    return isSame ? "" : "the reading is not that of the result";
}

std::string brokenRuleOfFilter(std::string_view text) {
    if (firstInvalidUTF8(text)) {
        return "";
    }
    Counter counter;
    std::string filtered;
    try {
        filtered = filterInvalidCharacters(text, counter).value().of(std::string(text));
    } catch (const platform::RangeException&) {
        return text.starts_with("<>") ? "" : "a range outside the text";
    }
    if (!counter.isInOrder || counter.next != static_cast<std::int64_t>(utf16Length(text))) {
        return "units are told twice, out of order or not at all";
    }
    if (firstInvalidUTF8(filtered)) {
        return "the result is no UTF-8";
    }
    if (text.find("<![CDATA") == std::string_view::npos) {
        if (ForbiddenCharacters::runsIn(filtered) != 0 ||
            asciiPrefixLength(filtered) != filtered.size()) {
            return "the result holds a character that should be gone or be a reference";
        }
        if (counter.removed != unitsToRemove(text)) {
            return "another number of characters was removed than had to go";
        }
    }
    bool isMoved = false;
    const std::string broken = brokenRuleOfMovedReading(text, isMoved);
    return broken.empty() ? brokenRuleOfOffsets(text, filtered) : broken;
}

}  // namespace vornic::test
