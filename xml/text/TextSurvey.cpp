#include "xml/text/TextSurvey.h"

#include <algorithm>
#include <bit>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "base/Utf8.h"
#include "xml/text/XMLCharacters.h"

namespace vornic {

namespace {

constexpr std::size_t kLongestCharacter = 4;

bool isPlain(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value < 0x80 && (value >= 0x20 || xmlchars::is(byte, xmlchars::kSpace));
}

#if defined(__SSE2__)
// Bytes that are neither printable ASCII, U+007F included, nor white space.
__m128i othersIn(const char* at) {
    const auto each = [](char byte) { return _mm_set1_epi8(byte); };
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i space = _mm_or_si128(
        _mm_or_si128(_mm_cmpeq_epi8(block, each('\t')), _mm_cmpeq_epi8(block, each('\n'))),
        _mm_cmpeq_epi8(block, each('\r')));
    // Compared with a sign, bytes from 0x80 on lie below the blank, too.
    return _mm_andnot_si128(space, _mm_cmplt_epi8(block, each(' ')));
}
#endif

// How many bytes of ASCII that XML allows the bytes begin with.
std::size_t plainLength(std::string_view bytes) {
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
#if defined(__SSE2__)
    constexpr std::ptrdiff_t kLength = sizeof(__m128i);
    constexpr std::ptrdiff_t kLengths = 4 * kLength;
    for (; end - at >= kLengths; at += kLengths) {
        const __m128i others =
            _mm_or_si128(_mm_or_si128(othersIn(at), othersIn(at + kLength)),
                         _mm_or_si128(othersIn(at + 2 * kLength), othersIn(at + 3 * kLength)));
        if (_mm_movemask_epi8(others) != 0) {
            break;
        }
    }
    for (; end - at >= kLength; at += kLength) {
        if (const int others = _mm_movemask_epi8(othersIn(at)); others != 0) {
            at += std::countr_zero(static_cast<unsigned>(others));
            return static_cast<std::size_t>(at - bytes.data());
        }
    }
#endif
    while (at != end && isPlain(*at)) {
        ++at;
    }
    return static_cast<std::size_t>(at - bytes.data());
}

}  // namespace

void TextSurvey::take(std::string_view piece) {
    if (cutLength_ != 0) {
        piece = completeCut(piece);
    }
    survey(piece);
}

// Takes the character that began in the last piece. @return the rest of this one.
std::string_view TextSurvey::completeCut(std::string_view piece) {
    std::string bytes(cut_.data(), cutLength_);
    const std::size_t before = cutLength_;
    bytes += piece.substr(0, kLongestCharacter - before);
    cutLength_ = 0;
    const std::size_t length = takeCharacter(bytes);
    return isValid_ ? piece.substr(length - before) : piece;
}

void TextSurvey::survey(std::string_view bytes) {
    while (isValid_) {
        bytes.remove_prefix(plainLength(bytes));
        if (bytes.empty()) {
            return;
        }
        bytes.remove_prefix(takeCharacter(bytes));
    }
}

// Takes the one character, or forbidden byte, that the bytes begin with. @return its length.
std::size_t TextSurvey::takeCharacter(std::string_view bytes) {
    const Utf8Character read = utf8CharacterAt(bytes, 0);
    if (read.isValid) {
        forbidden_ = xmlchars::isAllowed(read.code) ? forbidden_ : XMLForbidden::unknown;
        return read.length;
    }
    // What may still become a character when more bytes come.
    if (bytes.size() <= kLongestCut) {
        std::copy(bytes.begin(), bytes.end(), cut_.begin());
        cutLength_ = bytes.size();
        return bytes.size();
    }
    isValid_ = false;
    return 0;
}

}  // namespace vornic
