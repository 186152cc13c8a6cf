#ifndef VORNIC_REPAIR_SPECIAL_BYTES_H
#define VORNIC_REPAIR_SPECIAL_BYTES_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vornic {

/// Finds the bytes of a text that the character filter has to look at: markup characters, quotes,
/// control characters other than tab, line feed and carriage return, and everything from 0x7F up.
/// Looks at sixteen bytes at once, each only one time.
class SpecialBytes {
  public:
    using Pointer = const unsigned char*;

    SpecialBytes(Pointer begin, Pointer end) : block_(begin), next_(begin), end_(end) {}

    /// The first special byte at or after `from`, or the end. `from` must never go back.
    [[nodiscard]] Pointer firstFrom(Pointer from) {
        for (;;) {
            for (; marks_[0] != 0; marks_[0] &= marks_[0] - 1) {
                if (const Pointer found = block_ + byteOfLowestBit(marks_[0]); found >= from) {
                    return found;
                }
            }
            if (marks_[1] != 0) {
                marks_ = {marks_[1], 0};
                block_ += sizeof(std::uint64_t);
            } else if (next_ < end_) {
                readBlock();
            } else {
                return end_;
            }
        }
    }

  private:
    static constexpr std::ptrdiff_t kBlockLength = 16;
    using Block = unsigned char __attribute__((vector_size(kBlockLength)));
    using Marks = std::array<std::uint64_t, 2>;
    static_assert(std::endian::native == std::endian::little, "the lowest byte is the first");

    void readBlock() {
        Block bytes = Block{} + ' ';
        block_ = next_;
        if (end_ - next_ >= kBlockLength) {
            std::memcpy(&bytes, next_, kBlockLength);
            next_ += kBlockLength;
        } else {
            std::memcpy(&bytes, next_, static_cast<std::size_t>(end_ - next_));
            next_ = end_;
        }
        marks_ = marksOf(bytes);
    }

    // The highest bit of every special byte. The two less-than and greater-than signs differ in one
    // bit, and so do the ampersand and the apostrophe.
    [[nodiscard]] static Marks marksOf(const Block& bytes) {
        const auto special = ((bytes | 2) == '>') | ((bytes | 1) == '\'') | (bytes == '"') |
                             (bytes >= 0x7F) |
                             ((bytes < 0x20) & (bytes != '\t') & (bytes != '\n') & (bytes != '\r'));
        Marks marks{};
        std::memcpy(&marks, &special, sizeof marks);
        constexpr std::uint64_t kHighestBits = 0x8080808080808080U;
        return {marks[0] & kHighestBits, marks[1] & kHighestBits};
    }

    [[nodiscard]] static std::ptrdiff_t byteOfLowestBit(std::uint64_t marks) {
        return std::countr_zero(marks) / 8;
    }

    Pointer block_;
    Pointer next_;
    Pointer end_;
    Marks marks_{};
};

}  // namespace vornic

#endif
