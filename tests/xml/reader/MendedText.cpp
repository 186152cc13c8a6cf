#include "tests/xml/reader/MendedText.h"

#include <array>

#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"
#include "xml/text/TextPlace.h"

namespace vornic::test {

namespace {

struct Change {
    std::string_view removed;
    std::string_view replacement;
};

constexpr std::array<Change, 7> kChanges = {{{"&", "&amp;"},
                                             {"<", "&lt;"},
                                             {">", "&gt;"},
                                             {"", " "},
                                             {"", "\""},
                                             {"", "\"\""},
                                             {"", "=\"\""}}};

bool takeForbidden(std::string_view& text) {
    const auto byte = static_cast<unsigned char>(text[0]);
    if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') {
        text.remove_prefix(1);
        return true;
    }
    if (text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF")) {
        text.remove_prefix(3);
        return true;
    }
    return false;
}

std::string withoutForbidden(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        if (!takeForbidden(text)) {
            result += text[0];
            text.remove_prefix(1);
        }
    }
    return result;
}

bool isBeginning(std::string_view text) {
    while (!text.empty()) {
        if (text.starts_with(kByteOrderMark)) {
            text.remove_prefix(kByteOrderMark.size());
        } else if (std::string_view(" \t\r\n").find(text[0]) != std::string_view::npos) {
            text.remove_prefix(1);
        } else {
            return false;
        }
    }
    return true;
}

// True for what may stand before a root element, mended where that is needed.
bool isProlog(std::string_view text) {
    return !readXML(std::string(text) + "<r/>", XMLMode::tolerant).fault.has_value();
}

bool isAllowed(const XMLEdit& edit, std::string_view text, bool& pastBeginning) {
    const std::string removed = withoutForbidden(text.substr(edit.offset, edit.length));
    if (removed.empty() && edit.replacement.empty()) {
        return true;
    }
    if (!pastBeginning && edit.replacement.empty() && isBeginning(removed)) {
        return true;
    }
    if (removed == kByteOrderMark && edit.replacement.empty()) {
        return isProlog(text.substr(0, edit.offset));
    }
    const bool declaration = edit.replacement.starts_with("<?xml version=\"1.0\"");
    if (declaration && !pastBeginning) {
        pastBeginning = true;
        return removed.starts_with("<?") && removed.ends_with(">") &&
               removed.find('<', 1) == std::string::npos;
    }
    pastBeginning = true;
    for (const Change& change : kChanges) {
        if (removed == change.removed && edit.replacement == change.replacement) {
            return true;
        }
    }
    return false;
}

std::string brokenRuleOfEdits(std::string_view text, const XMLReading& reading) {
    std::size_t end = 0;
    bool pastBeginning = false;
    for (const XMLEdit& edit : reading.edits) {
        if (edit.offset < end || edit.offset + edit.length > text.size()) {
            return "the edits overlap";
        }
        end = edit.offset + edit.length;
        if (!isAllowed(edit, text, pastBeginning)) {
            return "an edit takes out \"" + std::string(text.substr(edit.offset, edit.length)) +
                   "\" and puts in \"" + std::string(edit.replacement) + "\"";
        }
    }
    return "";
}

std::string brokenRuleOfMends(std::string_view text, const XMLReading& reading) {
    TextPlace place(text);
    std::size_t last = 0;
    for (const XMLMend& mend : reading.mends) {
        place.moveTo(mend.offset);
        if (mend.offset < last || mend.line != place.line() || mend.column != place.column()) {
            return "a mend is at the wrong place";
        }
        last = mend.offset;
    }
    return "";
}

std::string brokenRuleOfFault(std::string_view text, const XMLReading& reading) {
    const Error& fault = *reading.fault;
    const std::string place =
        "Line " + std::to_string(fault.line) + ", column " + std::to_string(fault.column) + ": ";
    if (!fault.description.starts_with(place) || !fault.description.ends_with(".") ||
        fault.description.size() > 500 || firstInvalidUTF8(fault.description)) {
        return "a fault is badly described: " + fault.description;
    }
    TextPlace end(text);
    end.moveTo(text.size());
    return fault.line == 0 || fault.column == 0 || fault.line > end.line()
               ? "a fault is outside the text: " + fault.description
               : "";
}

}  // namespace

std::string brokenRuleOfMending(std::string_view text) {
    const XMLReading strict = readXML(text, XMLMode::strict);
    const XMLReading tolerant = readXML(text, XMLMode::tolerant);
    for (const XMLReading* reading : {&strict, &tolerant}) {
        if (reading->fault && !brokenRuleOfFault(text, *reading).empty()) {
            return brokenRuleOfFault(text, *reading);
        }
    }
    if (!strict.mends.empty() || !strict.edits.empty() || strict.droppedCharacters != 0) {
        return "strict mode changed something";
    }
    if (!strict.fault && (tolerant.fault || !tolerant.edits.empty() || !tolerant.mends.empty())) {
        return "tolerant mode changed a sound text";
    }
    if (tolerant.fault) {
        return "";
    }
    if (tolerant.edits.empty() && strict.fault) {
        return "tolerant mode passed over a fault: " + strict.fault->description;
    }
    std::string rule = brokenRuleOfEdits(text, tolerant) + brokenRuleOfMends(text, tolerant);
    if (!rule.empty()) {
        return rule;
    }
    const XMLReading again = readXML(applyXMLEdits(text, tolerant.edits), XMLMode::strict);
    if (again.fault) {
        return "the mended text is not sound: " + again.fault->description;
    }
    if (again.emptyPairs != tolerant.emptyPairs ||
        again.referencedBlanks != tolerant.referencedBlanks ||
        again.hasMixedContent != tolerant.hasMixedContent) {
        return "what was told about the mended text is not so";
    }
    return "";
}

}  // namespace vornic::test
