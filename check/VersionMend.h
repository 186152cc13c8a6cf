#ifndef VORNIC_CHECK_VERSION_MEND_H
#define VORNIC_CHECK_VERSION_MEND_H

#include <optional>
#include <string>

#include "formats/ElementIndex.h"
#include "report/Mend.h"

namespace vornic {

/// Writes a version into a root element that declares none.
/// @param version nothing when the user has named none.
/// @return nothing then, and when the format has no such version.
[[nodiscard]] std::optional<Mend> versionMend(const ElementIndex& index,
                                              const std::optional<std::string>& version);

}  // namespace vornic

#endif
