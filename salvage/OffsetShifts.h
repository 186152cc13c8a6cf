#ifndef VORNIC_SALVAGE_OFFSET_SHIFTS_H
#define VORNIC_SALVAGE_OFFSET_SHIFTS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "formats/Blocks.h"

namespace vornic::salvage {

/// Turns offsets of a text into those of the text that it was made from, or the other way round. A
/// few bytes for each place where the texts differ, of which there may be millions.
class OffsetShifts {
  public:
    /// From this offset on, offsets of the other text are those of this one plus the shift. Offsets
    /// come in their order; of those that are equal the last one holds.
    void add(std::size_t offset, std::ptrdiff_t shift);

    [[nodiscard]] std::size_t of(std::size_t offset) const;

  private:
    // One of many shifts is kept as it is, and those behind it as differences.
    struct Mark {
        std::size_t offset = 0;
        std::ptrdiff_t shift = 0;
        // Where the shifts behind it begin.
        std::size_t code = 0;
    };

    void write(std::size_t number);
    [[nodiscard]] std::size_t read(std::size_t& at) const;

    std::vector<Mark> marks_;
    Blocks<std::uint8_t> codes_;
    Mark last_;
    std::size_t count_ = 0;
};

}  // namespace vornic::salvage

#endif
