#ifndef VORNIC_FORMATS_FCPXML_RETIMING_H
#define VORNIC_FORMATS_FCPXML_RETIMING_H

#include "formats/ElementIndex.h"

namespace vornic::fcpxml {

/// Whether a clip's own time, or that of a clip that it stands in, runs otherwise than its media:
/// it has a `<timeMap>` or a `<conform-rate>`. Any thread.
[[nodiscard]] bool isRetimed(const ElementIndex& index, ElementNumber clip);

}  // namespace vornic::fcpxml

#endif
