#include "xml/reader/XMLAttributeReader.h"

#include <algorithm>

#include "xml/text/PlainBytes.h"
#include "xml/text/TextPlace.h"

namespace vornic {

namespace {

using xmlchars::is;

constexpr std::string_view kNoUnquotedValue = "\"'<`";

}  // namespace

void XMLAttributeReader::read(std::string_view name, bool spaced) {
    const char* const start = in_.at();
    if (!spaced) {
        in_.mendOrFault(XMLErrorCode::missingSpace, start,
                        "white space is missing between two attributes.",
                        "two attributes without a blank between them were read as two");
        if (doubtfulEnd_) {
            in_.fault(XMLErrorCode::malformedStartTag, start,
                      "it is not clear where the attribute value before this place ends.",
                      element_);
        }
        in_.edit(start, 0, " ");
    }
    in_.moveTo(start + name.size());
    checkRepetition(name);
    const char* const afterName = in_.at();
    in_.skipSpace();
    if (!in_.isAt('=')) {
        if (!spaced) {
            in_.fault(XMLErrorCode::malformedStartTag, start, "the start tag is malformed here.",
                      element_);
        }
        addEmptyValue(name, afterName, "=\"\"");
        in_.moveTo(afterName);
        return;
    }
    in_.moveTo(in_.at() + 1);
    const bool spaceAfterSign = in_.skipSpace();
    if (in_.isAt('"') || in_.isAt('\'')) {
        readQuotedValue(name, spaced);
    } else if (in_.isAt('>') || in_.startsWith("/>")) {
        addEmptyValue(name, in_.at(), "\"\"");
    } else {
        readUnquotedValue(name, spaceAfterSign || !spaced);
    }
}

void XMLAttributeReader::checkRepetition(std::string_view name) {
    bool repeated = false;
    if (nameCount_ < kFewNames) {
        // Names of one tag rarely have so much in common.
        const std::uint64_t mark =
            std::uint64_t{1} << (static_cast<unsigned char>(name.front()) +
                                 static_cast<unsigned char>(name.back()) * 7U + name.size() * 5U) %
                                    64U;
        repeated = (marks_ & mark) != 0 && isAmongFew(name);
        marks_ |= mark;
        fewNames_[nameCount_] = name;
    } else {
        repeated = !addToMany(name);
    }
    if (repeated) {
        in_.fault(XMLErrorCode::repeatedAttribute, name.data(),
                  "the attribute " + excerpt(name) + " appears twice in the same tag.", name);
    }
    ++nameCount_;
}

bool XMLAttributeReader::isAmongFew(std::string_view name) const {
    const auto* const end = fewNames_.begin() + nameCount_;
    return std::find(fewNames_.begin(), end, name) != end;
}

bool XMLAttributeReader::addToMany(std::string_view name) {
    if (nameCount_ == kFewNames) {
        manyNames_ = std::set<std::string_view>(fewNames_.begin(), fewNames_.end());
    }
    return manyNames_.insert(name).second;
}

void XMLAttributeReader::readQuotedValue(std::string_view name, bool spaced) {
    const char* const opening = in_.at();
    const char* place = opening + 1;
    bool hasLessThan = false;
    for (;;) {
        place = xmlchars::afterBytes<xmlchars::kPlainValue>(place, in_.end());
        if (place == in_.end()) {
            in_.fault(XMLErrorCode::unclosedAttributeValue, opening,
                      "the attribute value that begins here is never closed.");
        }
        if (*place == *opening) {
            break;
        }
        hasLessThan = hasLessThan || *place == '<';
        place = passSpecialValue(place);
    }
    const std::string_view value(opening + 1, static_cast<std::size_t>(place - opening - 1));
    // A value that goes over a line end and holds a less-than sign has more likely lost its closing
    // quote, and so has one that an attribute follows at once.
    if (hasLessThan && (!spaced || value.find_first_of("\r\n") != std::string_view::npos)) {
        in_.fault(XMLErrorCode::unclosedAttributeValue, opening,
                  "it is not clear where the attribute value that begins here ends.");
    }
    doubtfulEnd_ = hasLessThan || value.ends_with('=');
    in_.moveTo(place + 1);
    report(name, value, place + 1);
}

const char* XMLAttributeReader::passSpecialValue(const char* place) {
    switch (*place) {
        case '"':
        case '\'':
            return place + 1;
        case '&':
            return in_.passReference(place);
        case '<':
            in_.mendOrFault(XMLErrorCode::lessThanInAttributeValue, place,
                            "a less-than sign stands in an attribute value; it should be written "
                            "as &lt;.",
                            "a less-than sign in an attribute value was read as text");
            in_.edit(place, 1, "&lt;");
            return place + 1;
        default:
            return in_.passCharacter(place);
    }
}

void XMLAttributeReader::readUnquotedValue(std::string_view name, bool doubtful) {
    const char* const start = in_.at();
    in_.mendOrFault(XMLErrorCode::malformedAttribute, start,
                    "quotes are missing around an attribute value.",
                    "an attribute value without quotes was read as one in quotes");
    in_.edit(start, 0, "\"");
    const char* place = start;
    while (place != in_.end() && !is(*place, xmlchars::kSpace) && *place != '>' &&
           !in_.startsWith(place, "/>")) {
        if (kNoUnquotedValue.find(*place) != std::string_view::npos ||
            (doubtful && *place == '=')) {
            in_.fault(XMLErrorCode::malformedAttribute, start,
                      "quotes are missing around an attribute value, and it is not clear where it "
                      "ends.");
        }
        if (*place == '&') {
            place = in_.passReference(place);
        } else {
            place = is(*place, xmlchars::kPlainValue) ? place + 1 : in_.passCharacter(place);
        }
    }
    in_.edit(place, 0, "\"");
    in_.moveTo(place);
    doubtfulEnd_ = true;
    report(name, {start, static_cast<std::size_t>(place - start)}, place);
}

void XMLAttributeReader::addEmptyValue(std::string_view name, const char* place,
                                       std::string_view replacement) {
    in_.mendOrFault(XMLErrorCode::attributeWithoutValue, name.data(), "an attribute has no value.",
                    "an attribute without a value was read as an empty one", name);
    in_.edit(place, 0, replacement);
    doubtfulEnd_ = true;
    report(name, {place, 0}, place);
}

void XMLAttributeReader::report(std::string_view name, std::string_view value, const char* end) {
    if (name == "xml:space" && value == "preserve") {
        in_.reading().hasMixedContent = true;
    }
    if (XMLReaderEvents* const events = in_.eventsAt(name.data(), end)) {
        in_.setValuePlace(value.data(), value.data() + value.size());
        events->attribute(name, value);
    }
}

}  // namespace vornic
