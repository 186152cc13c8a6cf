#include "xml/text/AttributeValue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "base/Utf8.h"
#include "xml/text/XMLCharacters.h"

namespace vornic {

namespace {

// The character of what stands between "&#" and ";".
std::optional<char32_t> characterOf(std::string_view digits) {
    const bool isHexadecimal = digits.starts_with('x');
    digits.remove_prefix(isHexadecimal ? 1 : 0);
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, isHexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end || !xmlchars::isAllowed(number)) {
        return std::nullopt;
    }
    return number;
}

// Appends what the reference at the beginning of the text stands for. @return its length; 0, with
// nothing appended, when it is none.
std::size_t appendReference(std::string& value, std::string_view text) {
    constexpr std::array<std::pair<std::string_view, char>, 5> kEntities{
        {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
    // A search for the semicolon alone would look at the rest of the text for each ampersand.
    const auto* const mark = std::find_if_not(text.begin() + 1, text.end(), [](char c) {
        return c == '#' || xmlchars::is(c, xmlchars::kName);
    });
    const auto end = static_cast<std::size_t>(mark - text.begin());
    if (end == text.size() || text[end] != ';') {
        return 0;
    }
    const std::string_view name = text.substr(1, end - 1);
    if (name.starts_with('#')) {
        const std::optional<char32_t> character = characterOf(name.substr(1));
        if (!character) {
            return 0;
        }
        appendUtf8(value, *character);
        return end + 1;
    }
    for (const auto& [entity, character] : kEntities) {
        if (name == entity) {
            value += character;
            return end + 1;
        }
    }
    return 0;
}

std::string withSingleBlanks(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c != ' ' || (!result.empty() && result.back() != ' ')) {
            result += c;
        }
    }
    if (result.ends_with(' ')) {
        result.pop_back();
    }
    return result;
}

}  // namespace

std::string normalisedAttributeValue(std::string_view rawValue, bool isToken) {
    std::string value;
    value.reserve(rawValue.size());
    while (!rawValue.empty()) {
        std::size_t length = 1;
        if (rawValue[0] == '&') {
            length = appendReference(value, rawValue);
        } else if (xmlchars::is(rawValue[0], xmlchars::kSpace)) {
            value += ' ';
            length = rawValue.starts_with("\r\n") ? 2 : 1;
        } else {
            value += rawValue[0];
        }
        if (length == 0) {
            value += '&';
            length = 1;
        }
        rawValue.remove_prefix(length);
    }
    return isToken ? withSingleBlanks(value) : value;
}

std::string escapedAttributeValue(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&apos;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

}  // namespace vornic
