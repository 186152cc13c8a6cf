#ifndef VORNIC_SALVAGE_COPY_ORIGINS_H
#define VORNIC_SALVAGE_COPY_ORIGINS_H

#include <cstddef>
#include <vector>

#include "salvage/OffsetShifts.h"
#include "salvage/Structure.h"
#include "xml/reader/XMLReader.h"

namespace vornic::salvage {

/// Where in the broken text the characters of a copy stood. Told of each change while the copy is
/// made, it passes them on to another receiver.
class CopyOrigins final : public ChangeSink {
  public:
    CopyOrigins(const CopyRange& range, ChangeSink& next) : range_(range), next_(next) {
        shifts_.add(0, static_cast<std::ptrdiff_t>(range.offset));
    }

    void made(const Change& change, std::size_t copyOffset) override;
    /// To be called once the copy is whole.
    void finish(std::size_t copyLength);
    /// The offset of the text for one of the copy.
    [[nodiscard]] std::size_t of(std::size_t copyOffset) const { return shifts_.of(copyOffset); }

  private:
    void addBehind(std::size_t copyOffset, std::size_t textOffset);

    CopyRange range_;
    ChangeSink& next_;
    OffsetShifts shifts_;
    std::size_t end_ = 0;
    bool hasLast_ = false;
};

/// Where text was put into a copy, or taken out of it: from the offsets before to those after, and
/// back.
struct CopyEdits {
    OffsetShifts forth;
    OffsetShifts back;

    /// Edits come in the order of the text.
    void add(std::size_t offset, std::size_t length, std::size_t newLength);

  private:
    std::ptrdiff_t shift_ = 0;
};

}  // namespace vornic::salvage

#endif
