#ifndef VORNIC_FORMATS_FCPXML_RETIMING_H
#define VORNIC_FORMATS_FCPXML_RETIMING_H

#include <unordered_map>

#include "formats/ElementIndex.h"

namespace vornic::fcpxml {

/// Which clips run otherwise than their media. Looks at each element once, however many clips stand
/// in it. One thread; the index must outlive it.
class Retiming {
  public:
    explicit Retiming(const ElementIndex& index) : index_(index) {}

    /// Whether a clip's own time, or that of a clip that it stands in, runs otherwise than its
    /// media: it has a `<timeMap>` or a `<conform-rate>`.
    [[nodiscard]] bool isRetimed(ElementNumber clip);

  private:
    [[nodiscard]] bool saysSo(ElementNumber clip) const;

    const ElementIndex& index_;
    std::unordered_map<ElementNumber, bool> known_;
};

}  // namespace vornic::fcpxml

#endif
