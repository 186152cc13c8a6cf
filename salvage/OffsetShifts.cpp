#include "salvage/OffsetShifts.h"

#include <algorithm>

namespace vornic::salvage {

namespace {

constexpr std::size_t kShiftsOfAMark = 64;
constexpr unsigned kBits = 7;
constexpr std::uint8_t kMore = 1U << kBits;

// Small numbers of either sign become small numbers.
std::size_t folded(std::ptrdiff_t number) {
    const auto doubled = static_cast<std::size_t>(number) << 1U;
    return number < 0 ? ~doubled : doubled;
}

std::ptrdiff_t unfolded(std::size_t number) {
    const auto half = static_cast<std::ptrdiff_t>(number >> 1U);
    return (number & 1U) != 0 ? ~half : half;
}

}  // namespace

void OffsetShifts::write(std::size_t number) {
    for (; number >= kMore; number >>= kBits) {
        codes_.push_back(static_cast<std::uint8_t>(number | kMore));
    }
    codes_.push_back(static_cast<std::uint8_t>(number));
}

std::size_t OffsetShifts::read(std::size_t& at) const {
    std::size_t number = 0;
    for (unsigned bits = 0;; bits += kBits) {
        const std::uint8_t code = codes_[at++];
        number |= (code & std::size_t{kMore - 1U}) << bits;
        if (code < kMore) {
            return number;
        }
    }
}

void OffsetShifts::add(std::size_t offset, std::ptrdiff_t shift) {
    if (count_++ % kShiftsOfAMark == 0) {
        last_ = {offset, shift, codes_.size()};
        marks_.push_back(last_);
        return;
    }
    write(offset - last_.offset);
    write(folded(shift - last_.shift));
    last_.offset = offset;
    last_.shift = shift;
}

std::size_t OffsetShifts::of(std::size_t offset) const {
    const auto behind =
        std::upper_bound(marks_.begin(), marks_.end(), offset,
                         [](std::size_t value, const Mark& mark) { return value < mark.offset; });
    if (behind == marks_.begin()) {
        return offset;
    }
    const std::size_t end = behind == marks_.end() ? codes_.size() : behind->code;
    Mark found = *std::prev(behind);
    for (std::size_t at = found.code; at < end;) {
        const std::size_t next = found.offset + read(at);
        if (next > offset) {
            break;
        }
        found.offset = next;
        found.shift += unfolded(read(at));
    }
    return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(offset) + found.shift);
}

}  // namespace vornic::salvage
