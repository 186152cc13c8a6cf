#ifndef VORNIC_XML_TEXT_PLAIN_BYTES_H
#define VORNIC_XML_TEXT_PLAIN_BYTES_H

#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "xml/text/XMLCharacters.h"

/// Loops over the byte classes of `XMLCharacters.h` that look at 16 bytes at once where the
/// processor can. They say what the tables say, byte by byte.
namespace vornic::xmlchars {

namespace detail {

#if defined(__SSE2__)
inline constexpr std::ptrdiff_t kBlockLength = sizeof(__m128i);

[[nodiscard]] inline __m128i blockAt(const char* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}
[[nodiscard]] inline __m128i equalTo(__m128i block, char byte) {
    return _mm_cmpeq_epi8(block, _mm_set1_epi8(byte));
}
// The bytes from `first` on, `count` of them.
[[nodiscard]] inline __m128i inRange(__m128i block, char first, char count) {
    const __m128i distance = _mm_sub_epi8(block, _mm_set1_epi8(first));
    const __m128i last = _mm_set1_epi8(static_cast<char>(count - 1));
    return _mm_cmpeq_epi8(_mm_min_epu8(distance, last), distance);
}
[[nodiscard]] inline unsigned bitsOf(__m128i block) {
    return static_cast<unsigned>(_mm_movemask_epi8(block));
}
// Control characters, white space among them, and bytes from 0x80 on.
[[nodiscard]] inline __m128i isUnusual(__m128i block) {
    return _mm_cmplt_epi8(block, _mm_set1_epi8(' '));
}

struct TextStops {
    static constexpr ByteClass kPlain = kPlainText;
    [[nodiscard]] static __m128i in(__m128i block) {
        return _mm_or_si128(_mm_or_si128(equalTo(block, '<'), equalTo(block, '&')),
                            _mm_or_si128(equalTo(block, ']'), isUnusual(block)));
    }
};

struct ValueStops {
    static constexpr ByteClass kPlain = kPlainValue;
    [[nodiscard]] static __m128i in(__m128i block) {
        const __m128i quotes = _mm_or_si128(equalTo(block, '"'), equalTo(block, '\''));
        return _mm_or_si128(_mm_or_si128(equalTo(block, '<'), equalTo(block, '&')),
                            _mm_or_si128(quotes, isUnusual(block)));
    }
};

template <typename Stops>
[[nodiscard]] inline const char* afterPlain(const char* at, const char* end) {
    while (end - at >= kBlockLength) {
        const unsigned stops = bitsOf(Stops::in(blockAt(at)));
        if (stops == 0) {
            at += kBlockLength;
            continue;
        }
        at += std::countr_zero(stops);
        if (!is(*at, Stops::kPlain)) {
            return at;
        }
        ++at;
    }
    while (at != end && is(*at, Stops::kPlain)) {
        ++at;
    }
    return at;
}
#endif

}  // namespace detail

/// The place after the bytes of a class that begin at `at`.
template <ByteClass kClass>
[[nodiscard]] inline const char* afterBytes(const char* at, const char* end) {
#if defined(__SSE2__)
    if constexpr (kClass == kPlainText) {
        return detail::afterPlain<detail::TextStops>(at, end);
    } else if constexpr (kClass == kPlainValue) {
        return detail::afterPlain<detail::ValueStops>(at, end);
    } else if constexpr (kClass == kName) {
        using namespace detail;
        for (; end - at >= kBlockLength; at += kBlockLength) {
            const __m128i block = blockAt(at);
            const __m128i letter =
                inRange(_mm_or_si128(block, _mm_set1_epi8(' ')), 'a', 'z' - 'a' + 1);
            const __m128i digitOrColon = inRange(block, '0', ':' - '0' + 1);
            const __m128i mark = _mm_or_si128(inRange(block, '-', 2), equalTo(block, '_'));
            const unsigned name =
                bitsOf(_mm_or_si128(_mm_or_si128(letter, digitOrColon), mark)) ^ 0xFFFFU;
            if (name != 0) {
                return at + std::countr_zero(name);
            }
        }
    }
#endif
    while (at != end && is(*at, kClass)) {
        ++at;
    }
    return at;
}

/// True when the bytes at `at`, which is before `end`, begin with the name. Both are of one text:
/// the name stands before `at`.
[[nodiscard]] inline bool startsWithName(const char* at, const char* end, std::string_view name) {
#if defined(__SSE2__)
    if (name.size() <= sizeof(__m128i) && end - at >= detail::kBlockLength) {
        const unsigned wanted = (1U << name.size()) - 1;
        const unsigned equal =
            detail::bitsOf(_mm_cmpeq_epi8(detail::blockAt(at), detail::blockAt(name.data())));
        return (equal & wanted) == wanted;
    }
#endif
    return std::string_view(at, static_cast<std::size_t>(end - at)).starts_with(name);
}

}  // namespace vornic::xmlchars

#endif
