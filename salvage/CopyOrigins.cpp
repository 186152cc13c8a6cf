#include "salvage/CopyOrigins.h"

#include <algorithm>

namespace vornic::salvage {

// The shift behind a change is known once the next one is, or the copy's length.
void CopyOrigins::made(const Change& change, std::size_t copyOffset) {
    if (hasLast_) {
        addBehind(copyOffset, change.offset);
    }
    hasLast_ = true;
    end_ = std::size_t{change.offset} + change.length;
    next_.made(change, copyOffset);
}

void CopyOrigins::finish(std::size_t copyLength) {
    if (hasLast_) {
        addBehind(copyLength, std::max(range_.end, end_));
    }
}

void CopyOrigins::addBehind(std::size_t copyOffset, std::size_t textOffset) {
    const std::size_t kept = textOffset - std::min(end_, textOffset);
    shifts_.add(copyOffset - std::min(kept, copyOffset),
                static_cast<std::ptrdiff_t>(textOffset) - static_cast<std::ptrdiff_t>(copyOffset));
}

void CopyEdits::add(std::size_t offset, std::size_t length, std::size_t newLength) {
    const std::ptrdiff_t before = shift_;
    shift_ += static_cast<std::ptrdiff_t>(newLength) - static_cast<std::ptrdiff_t>(length);
    forth.add(offset + std::max<std::size_t>(length, 1), shift_);
    const auto moved = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(offset) + before);
    back.add(moved + newLength, -shift_);
}

}  // namespace vornic::salvage
