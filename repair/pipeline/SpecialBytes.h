#ifndef VORNIC_REPAIR_PIPELINE_SPECIAL_BYTES_H
#define VORNIC_REPAIR_PIPELINE_SPECIAL_BYTES_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vornic {

/// Finds the bytes of a text that the character filter has to look at: markup characters, quotes,
/// control characters other than tab, line feed and carriage return, and everything from 0x7F up.
/// Looks at sixty-four bytes at once, each only one time, so that the many short runs of a project
/// file cost no guesses of the processor about their lengths.
class SpecialBytes {
  public:
    using Pointer = const unsigned char*;

    SpecialBytes(Pointer begin, Pointer end) : block_(begin), next_(begin), end_(end) {}

    /// The first special byte at or after `from`, or the end. `from` must never go back.
    [[nodiscard]] Pointer firstFrom(Pointer from) {
        for (;;) {
            if (from < next_) {
                const std::ptrdiff_t passed = from > block_ ? from - block_ : 0;
                if (const std::uint64_t marks = marks_ >> passed << passed; marks != 0) {
                    return block_ + std::countr_zero(marks);
                }
            }
            if (next_ >= end_) {
                return end_;
            }
            readBlock();
        }
    }

  private:
    static constexpr std::ptrdiff_t kBlockLength = 64;

    void readBlock() {
        block_ = next_;
        if (end_ - next_ >= kBlockLength) {
            next_ += kBlockLength;
            marks_ = marksOf(block_);
            return;
        }
        std::array<unsigned char, kBlockLength> bytes;
        bytes.fill(' ');
        std::memcpy(bytes.data(), next_, static_cast<std::size_t>(end_ - next_));
        next_ = end_;
        marks_ = marksOf(bytes.data());
    }

    // A bit for each byte of a block, set where the byte is special. The less-than and greater-than
    // signs differ in one bit, and so do the ampersand and the apostrophe.
#ifdef __SSE2__
    [[nodiscard]] static std::uint64_t marksOf(Pointer block) {
        std::uint64_t marks = 0;
        for (int quarter = 0; quarter < 4; ++quarter) {
            marks |= std::uint64_t{marksOfSixteen(block + std::ptrdiff_t{16} * quarter)}
                     << (16 * quarter);
        }
        return marks;
    }

    [[nodiscard]] static std::uint32_t marksOfSixteen(Pointer at) {
        const auto each = [](char byte) { return _mm_set1_epi8(byte); };
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i kept = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(bytes, each('\t')), _mm_cmpeq_epi8(bytes, each('\n'))),
            _mm_cmpeq_epi8(bytes, each('\r')));
        // Compared with a sign, bytes from 0x80 up lie below the blank too.
        const __m128i outside = _mm_andnot_si128(kept, _mm_cmplt_epi8(bytes, each(' ')));
        const __m128i markup =
            _mm_or_si128(_mm_cmpeq_epi8(_mm_or_si128(bytes, each(2)), each('>')),
                         _mm_cmpeq_epi8(_mm_or_si128(bytes, each(1)), each('\'')));
        const __m128i others =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, each('"')), _mm_cmpeq_epi8(bytes, each('\x7F')));
        return static_cast<std::uint32_t>(
            _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(outside, markup), others)));
    }
#else
    [[nodiscard]] static std::uint64_t marksOf(Pointer block) {
        std::uint64_t marks = 0;
        for (std::ptrdiff_t index = 0; index < kBlockLength; ++index) {
            marks |= std::uint64_t{isSpecial(block[index])} << index;
        }
        return marks;
    }

    [[nodiscard]] static bool isSpecial(unsigned char byte) {
        return (byte | 2U) == '>' || (byte | 1U) == '\'' || byte == '"' || byte >= 0x7F ||
               (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r');
    }
#endif

    Pointer block_;
    Pointer next_;
    Pointer end_;
    std::uint64_t marks_ = 0;
};

}  // namespace vornic

#endif
