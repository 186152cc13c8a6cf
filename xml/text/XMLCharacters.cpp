#include "xml/text/XMLCharacters.h"

#include <algorithm>
#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "base/Utf8.h"
#include "xml/text/PlainBytes.h"

namespace vornic::xmlchars {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

constexpr std::array<Range, 12> kNameStartRanges = {{{0xC0, 0xD6},
                                                     {0xD8, 0xF6},
                                                     {0xF8, 0x2FF},
                                                     {0x370, 0x37D},
                                                     {0x37F, 0x1FFF},
                                                     {0x200C, 0x200D},
                                                     {0x2070, 0x218F},
                                                     {0x2C00, 0x2FEF},
                                                     {0x3001, 0xD7FF},
                                                     {0xF900, 0xFDCF},
                                                     {0xFDF0, 0xFFFD},
                                                     {0x10000, 0xEFFFF}}};

}  // namespace

const char* afterLongSpace(const char* at, const char* end) {
#if defined(__SSE2__)
    const auto each = [](char byte) { return _mm_set1_epi8(byte); };
    for (; end - at >= static_cast<std::ptrdiff_t>(sizeof(__m128i)); at += sizeof(__m128i)) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i space = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(block, each(' ')), _mm_cmpeq_epi8(block, each('\t'))),
            _mm_or_si128(_mm_cmpeq_epi8(block, each('\n')), _mm_cmpeq_epi8(block, each('\r'))));
        const unsigned others = static_cast<unsigned>(_mm_movemask_epi8(space)) ^ 0xFFFFU;
        if (others != 0) {
            return at + std::countr_zero(others);
        }
    }
#endif
    while (at != end && is(*at, kSpace)) {
        ++at;
    }
    return at;
}

Decoded decode(const char* at, const char* end) {
    const Utf8Character read = utf8CharacterAt({at, static_cast<std::size_t>(end - at)}, 0);
    return read.isValid ? Decoded{read.code, read.length} : Decoded{};
}

bool isNameStart(char32_t c) {
    if (c < 0x80) {
        return is(static_cast<char>(c), kNameStart);
    }
    return std::any_of(kNameStartRanges.begin(), kNameStartRanges.end(),
                       [c](Range range) { return c >= range.first && c <= range.last; });
}

bool isNameCharacter(char32_t c) {
    if (c < 0x80) {
        return is(static_cast<char>(c), kName);
    }
    return isNameStart(c) || c == 0xB7 || (c >= 0x300 && c <= 0x36F) || c == 0x203F || c == 0x2040;
}

std::size_t nameLength(const char* at, const char* end) {
    if (at == end) {
        return 0;
    }
    if (!is(*at, kNameStart)) {
        const Decoded first = decode(at, end);
        if (isASCII(*at) || first.length == 0 || !isNameStart(first.character)) {
            return 0;
        }
    }
    return nameTokenLength(at, end);
}

std::size_t nameTokenLength(const char* at, const char* end) {
    const char* const start = at;
    for (;;) {
        at = afterBytes<kName>(at, end);
        if (at == end || isASCII(*at)) {
            break;
        }
        const Decoded next = decode(at, end);
        if (next.length == 0 || !isNameCharacter(next.character)) {
            break;
        }
        at += next.length;
    }
    return static_cast<std::size_t>(at - start);
}

}  // namespace vornic::xmlchars
