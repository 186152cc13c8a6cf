#include "tests/app/ContentOf.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "foundation/Utf8.h"

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

// A repair takes out what XML forbids, and everything from the surrogates on.
bool isKept(char32_t character) {
    constexpr char32_t kFirstCut = 0xD800;
    return character >= 0x20 && character < kFirstCut;
}

std::string keptCharacters(std::string_view file) {
    std::string kept;
    if (!isUTF8(file)) {
        std::copy_if(file.begin(), file.end(), std::back_inserter(kept),
                     [](char byte) { return byte >= 0x20 && byte <= 0x7E; });
        return kept;
    }
    for (std::size_t at = 0; at < file.size();) {
        const Utf8Character character = utf8CharacterAt(file, at);
        if (isKept(character.code)) {
            kept += file.substr(at, character.length);
        }
        at += character.length;
    }
    return kept;
}

void removeMarkup(std::string& text, std::string_view begin, std::string_view end) {
    const std::size_t first = text.find(begin);
    const std::size_t last = first == std::string::npos ? first : text.find(end, first);
    if (last != std::string::npos) {
        text.erase(first, last + end.size() - first);
    }
}

/// The character that a reference at the beginning of the text stands for, and the reference's
/// length; 0 when there is none.
std::pair<std::string, std::size_t> reference(std::string_view text) {
    constexpr std::array<std::pair<std::string_view, const char*>, 5> kNamed{
        {{"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}}};
    for (const auto& [name, character] : kNamed) {
        if (text.starts_with(name)) {
            return {character, name.size()};
        }
    }
    // A repair takes a longer one for text.
    constexpr std::size_t kLongest = 6;
    const std::size_t end = text.substr(0, kLongest).find(';');
    if (!text.starts_with("&#") || end == std::string_view::npos) {
        return {};
    }
    const std::string digits(text.substr(2, end - 2));
    char* rest = nullptr;
    constexpr int kDecimal = 10;
    const unsigned long code = std::strtoul(digits.c_str(), &rest, kDecimal);
    std::string character;
    appendUtf8(character, static_cast<char32_t>(code));
    return *rest == '\0' && code != 0 ? std::pair(character, end + 1)
                                      : std::pair(std::string(), std::size_t{0});
}

bool isWrittenOtherwise(char byte) {
    return byte == ' ' || byte == '"' || byte == '\'';
}

}  // namespace

std::string contentOf(std::string_view file) {
    std::string text = keptCharacters(file);
    removeMarkup(text, "<?xml ", "?>");
    removeMarkup(text, "<!DOCTYPE", ">");
    std::string content;
    for (std::size_t at = 0; at < text.size();) {
        auto [character, length] = reference(std::string_view(text).substr(at));
        if (length == 0) {
            character = text.substr(at, 1);
            length = 1;
        }
        if (character.size() != 1 || !isWrittenOtherwise(character[0])) {
            content += character;
        }
        at += length;
    }
    return content;
}

}  // namespace vornic::test
