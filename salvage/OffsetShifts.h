#ifndef VORNIC_SALVAGE_OFFSET_SHIFTS_H
#define VORNIC_SALVAGE_OFFSET_SHIFTS_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vornic::salvage {

/// Turns offsets of a text into those of the text that it was made from, or the other way round.
class OffsetShifts {
  public:
    /// From this offset on, offsets of the other text are those of this one plus the shift. Offsets
    /// come in their order.
    void add(std::size_t offset, std::ptrdiff_t shift) { shifts_.push_back({offset, shift}); }

    [[nodiscard]] std::size_t of(std::size_t offset) const {
        const auto next = std::upper_bound(
            shifts_.begin(), shifts_.end(), offset,
            [](std::size_t value, const Shift& shift) { return value < shift.offset; });
        return next == shifts_.begin()
                   ? offset
                   : static_cast<std::size_t>(static_cast<std::ptrdiff_t>(offset) +
                                              std::prev(next)->shift);
    }

  private:
    struct Shift {
        std::size_t offset;
        std::ptrdiff_t shift;
    };

    std::vector<Shift> shifts_;
};

}  // namespace vornic::salvage

#endif
