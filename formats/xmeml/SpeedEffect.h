#ifndef VORNIC_FORMATS_XMEML_SPEED_EFFECT_H
#define VORNIC_FORMATS_XMEML_SPEED_EFFECT_H

#include "formats/xmeml/View.h"

namespace vornic::xmeml {

/// True for a clip item that does not run at its own speed, so that its in and out say nothing
/// about its length in the timeline: it has a time remap, or says that it is reversed.
[[nodiscard]] bool hasSpeedEffect(const View& view, ElementNumber clipItem);

}  // namespace vornic::xmeml

#endif
