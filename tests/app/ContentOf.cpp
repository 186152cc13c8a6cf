#include "tests/app/ContentOf.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "base/Utf8.h"

namespace vornic::test {

namespace {

bool isUTF8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        if (!character.isValid) {
            return false;
        }
        at += character.length;
    }
    return true;
}

std::string printableASCII(std::string_view bytes) {
    std::string printable;
    std::copy_if(bytes.begin(), bytes.end(), std::back_inserter(printable),
                 [](char byte) { return byte >= 0x20 && byte <= 0x7E; });
    return printable;
}

bool isWhiteSpace(char32_t character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

// A repair takes out what XML forbids, and everything from the surrogates on.
bool isKept(char32_t character) {
    constexpr char32_t kFirstCut = 0xD800;
    return isWhiteSpace(character) || (character >= ' ' && character < kFirstCut);
}

std::string keptCharacters(std::string_view text) {
    std::string kept;
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        if (isKept(character.code)) {
            kept += isWhiteSpace(character.code) ? " " : text.substr(at, character.length);
        }
        at += character.length;
    }
    return kept;
}

/// The character that a whole reference stands for, or the reference itself.
std::string meaning(const std::string& reference) {
    constexpr std::array<std::pair<std::string_view, const char*>, 5> kNamed{
        {{"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}}};
    for (const auto& [name, character] : kNamed) {
        if (reference == name) {
            return character;
        }
    }
    const bool isHexadecimal = reference.starts_with("&#x");
    char* rest = nullptr;
    const unsigned long code =
        std::strtoul(reference.c_str() + (isHexadecimal ? 3 : 2), &rest, isHexadecimal ? 16 : 10);
    if (!reference.starts_with("&#") || *rest != ';' || code == 0) {
        return reference;
    }
    std::string character;
    appendUtf8(character, static_cast<char32_t>(code));
    return character;
}

/// The length of the reference that begins with the text's ampersand; 0 when its semicolon is too
/// far away, which outside a tag makes the ampersand text.
std::size_t referenceLength(std::string_view text, bool isInTag) {
    const int reach = isInTag ? 20 : 6;
    constexpr char32_t kFirstOfTwoUnits = 0x10000;
    int units = 0;
    for (std::size_t at = 0; at < text.size() && units < reach;) {
        if (text[at] == ';') {
            return at + 1;
        }
        const Utf8Character character = utf8CharacterAt(text, at);
        units += character.code >= kFirstOfTwoUnits ? 2 : 1;
        at += character.length;
    }
    return 0;
}

void removeMarkup(std::string& text, std::string_view begin, std::string_view end) {
    const std::size_t first = text.find(begin);
    const std::size_t last = first == std::string::npos ? first : text.find(end, first);
    if (last != std::string::npos) {
        text.erase(first, last + end.size() - first);
    }
}

}  // namespace

std::string contentOf(std::string_view file) {
    const std::string text = isUTF8(file) ? std::string(file) : printableASCII(file);
    std::string content;
    bool isInTag = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view rest = std::string_view(text).substr(at);
        isInTag = rest[0] == '<' || (isInTag && rest[0] != '>');
        const std::size_t reference = rest[0] == '&' ? referenceLength(rest, isInTag) : 0;
        const std::size_t length = reference != 0 ? reference : utf8CharacterAt(text, at).length;
        const std::string kept = keptCharacters(rest.substr(0, length));
        content += reference != 0 ? meaning(kept) : kept;
        at += length;
    }
    removeMarkup(content, "<?xml ", "?>");
    removeMarkup(content, "<!DOCTYPE ", ">");
    std::erase_if(content, [](char byte) {
        return byte == ' ' || byte == '"' || byte == '\'' || byte == '=';
    });
    return content;
}

}  // namespace vornic::test
