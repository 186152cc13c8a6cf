#include "base/CanonicalText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "base/Text.h"
#include "base/Utf8.h"

namespace vornic {

namespace {

// Hangul syllables (Unicode, section 3.12).
constexpr char32_t kFirstSyllable = 0xAC00;
constexpr char32_t kFirstLead = 0x1100;
constexpr char32_t kFirstVowel = 0x1161;
constexpr char32_t kFirstTail = 0x11A7;
constexpr char32_t kVowels = 21;
constexpr char32_t kTails = 28;
constexpr char32_t kSyllables = 19 * kVowels * kTails;

struct Table {
    std::unordered_map<char32_t, std::u32string> decompositions;
    std::unordered_map<char32_t, std::uint8_t> classes;
};

char32_t takeCode(std::string_view& line, int base) {
    std::uint32_t code = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), code, base);
    line.remove_prefix(
        std::min<std::size_t>(static_cast<std::size_t>(end - line.data()) + 1, line.size()));
    return error == std::errc() ? code : 0;
}

void readLine(std::string_view line, Table& table) {
    constexpr int kHex = 16;
    if (line.starts_with('#')) {
        return;
    }
    const bool isDecomposition = line.find('=') != std::string_view::npos;
    const char32_t first = takeCode(line, kHex);
    if (isDecomposition) {
        std::u32string& codes = table.decompositions[first];
        while (!line.empty()) {
            codes += takeCode(line, kHex);
        }
        return;
    }
    const char32_t last = takeCode(line, kHex);
    const auto combiningClass = static_cast<std::uint8_t>(takeCode(line, 10));
    for (char32_t code = first; code <= last; ++code) {
        table.classes[code] = combiningClass;
    }
}

const Table& table() {
    static const Table instance = [] {
        Table made;
        std::string_view text = detail::decompositionText();
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            if (end != 0) {
                readLine(text.substr(0, end), made);
            }
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return made;
    }();
    return instance;
}

void appendDecomposed(std::u32string& text, char32_t code) {
    if (code >= kFirstSyllable && code < kFirstSyllable + kSyllables) {
        const char32_t index = code - kFirstSyllable;
        text += kFirstLead + index / (kVowels * kTails);
        text += kFirstVowel + index % (kVowels * kTails) / kTails;
        if (index % kTails != 0) {
            text += kFirstTail + index % kTails;
        }
        return;
    }
    const auto found = table().decompositions.find(code);
    if (found == table().decompositions.end()) {
        text += code;
    } else {
        text += found->second;
    }
}

std::uint8_t classOf(char32_t code) {
    const auto found = table().classes.find(code);
    return found == table().classes.end() ? std::uint8_t{0} : found->second;
}

// The canonical order of combining marks (Unicode, section 3.11).
void sortMarks(std::u32string& text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::size_t end = at;
        while (end < text.size() && classOf(text[end]) != 0) {
            ++end;
        }
        std::stable_sort(
            text.begin() + static_cast<std::ptrdiff_t>(at),
            text.begin() + static_cast<std::ptrdiff_t>(end),
            [](char32_t left, char32_t right) { return classOf(left) < classOf(right); });
        at = end;
    }
}

void appendRun(std::string& result, std::u32string& run) {
    sortMarks(run);
    for (const char32_t code : run) {
        appendUtf8(result, code);
    }
    run.clear();
}

}  // namespace

std::string canonicallyDecomposed(std::string_view text) {
    if (asciiPrefixLength(text) == text.size()) {
        return std::string(text);
    }
    std::string result;
    std::u32string run;
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        if (character.isValid) {
            appendDecomposed(run, character.code);
        } else {
            appendRun(result, run);
            result += text[at];
        }
        at += character.length;
    }
    appendRun(result, run);
    return result;
}

std::string foldedName(std::string_view name) {
    if (asciiPrefixLength(name) == name.size()) {
        return lowercased(name);
    }
    // A letter in lower case may be one that decomposes.
    return canonicallyDecomposed(lowercasedLetters(canonicallyDecomposed(name)));
}

}  // namespace vornic
