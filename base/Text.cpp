#include "base/Text.h"

#include <algorithm>
#include <cwctype>
#include <limits>

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is POSIX

#include "base/ASCII.h"
#include "base/Utf8.h"

namespace vornic {

namespace {

bool isAsciiSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool isAscii(char character) {
    return static_cast<unsigned char>(character) < 0x80U;
}

/// White space beyond ASCII: the Unicode separators and the next-line control.
bool isWideSpace(char32_t code) {
    return code == 0x85 || code == 0xA0 || code == 0x1680 || (code >= 0x2000 && code <= 0x200A) ||
           code == 0x2028 || code == 0x2029 || code == 0x202F || code == 0x205F || code == 0x3000;
}

/// The number of bytes of white space that the text begins with, or 0.
std::size_t spaceAtFront(std::string_view text) {
    if (isAscii(text.front())) {
        return isAsciiSpace(text.front()) ? 1 : 0;
    }
    const Utf8Character character = utf8CharacterAt(text, 0);
    return isWideSpace(character.code) ? character.length : 0;
}

/// The number of bytes of white space that the text ends with, or 0.
std::size_t spaceAtBack(std::string_view text) {
    if (isAscii(text.back())) {
        return isAsciiSpace(text.back()) ? 1 : 0;
    }
    const Utf8Character character = utf8CharacterBefore(text, text.size());
    return isWideSpace(character.code) ? character.length : 0;
}

/// The text with each letter of any script as the conversion gives it.
std::string withLetters(std::string_view text, wint_t (*convert)(wint_t, locale_t)) {
    // Without that locale only ASCII letters change.
    static const locale_t kUnicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    static const locale_t kPlain = newlocale(LC_CTYPE_MASK, "C", nullptr);
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, i);
        if (character.isValid) {
            const locale_t locale = kUnicode != nullptr ? kUnicode : kPlain;
            appendUtf8(result, static_cast<char32_t>(convert(wint_t{character.code}, locale)));
        } else {
            result += text[i];
        }
        i += character.length;
    }
    return result;
}

}  // namespace

std::int64_t integerValue(std::string_view text) {
    constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
    while (!text.empty() && spaceAtFront(text) > 0) {
        text.remove_prefix(spaceAtFront(text));
    }
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    std::int64_t value = 0;
    for (const char character : text) {
        if (!isDigit(character)) {
            break;
        }
        // Counted downwards, where the range is one wider.
        if (__builtin_mul_overflow(value, std::int64_t{10}, &value) ||
            __builtin_sub_overflow(value, std::int64_t{character - '0'}, &value)) {
            return isNegative ? kSmallest : kLargest;
        }
    }
    if (isNegative) {
        return value;
    }
    return value == kSmallest ? kLargest : -value;
}

std::size_t utf16Length(std::string_view text) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < text.size();) {
        if (isAscii(text[i])) {
            const std::size_t run = asciiPrefixLength(text.substr(i));
            length += run;
            i += run;
            continue;
        }
        const Utf8Character character = utf8CharacterAt(text, i);
        length += character.length == 4 ? 2U : 1U;
        i += character.length;
    }
    return length;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty()) {
        const std::size_t space = spaceAtFront(text);
        if (space == 0) {
            break;
        }
        text.remove_prefix(space);
    }
    while (!text.empty()) {
        const std::size_t space = spaceAtBack(text);
        if (space == 0) {
            break;
        }
        text.remove_suffix(space);
    }
    return text;
}

std::string lowercased(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char character) { return lowercased(character); });
    return result;
}

std::string lowercasedLetters(std::string_view text) {
    return withLetters(text, towlower_l);
}

std::string uppercasedLetters(std::string_view text) {
    return withLetters(text, towupper_l);
}

int caseInsensitiveCompare(std::string_view left, std::string_view right) {
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        const auto leftByte = static_cast<unsigned char>(lowercased(left[i]));
        const auto rightByte = static_cast<unsigned char>(lowercased(right[i]));
        if (leftByte != rightByte) {
            return leftByte < rightByte ? -1 : 1;
        }
    }
    if (left.size() == right.size()) {
        return 0;
    }
    return left.size() < right.size() ? -1 : 1;
}

std::string replacingOccurrences(std::string_view text, std::string_view what,
                                 std::string_view with) {
    std::string result;
    if (what.empty()) {
        result = text;
        return result;
    }
    result.reserve(text.size());
    std::size_t pending = 0;
    for (std::size_t found = text.find(what); found != std::string_view::npos;
         found = text.find(what, pending)) {
        result.append(text, pending, found - pending);
        result += with;
        pending = found + what.size();
    }
    result.append(text, pending);
    return result;
}

}  // namespace vornic
