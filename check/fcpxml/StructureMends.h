#ifndef VORNIC_CHECK_FCPXML_STRUCTURE_MENDS_H
#define VORNIC_CHECK_FCPXML_STRUCTURE_MENDS_H

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Version.h"
#include "report/Findings.h"

namespace vornic {

/// Hangs mends on those findings about the structure that need no guess: a part that stands behind
/// others and has one place alone among them, a sample rate in Hz, a standalone declaration, the
/// path of an asset that belongs into its media-rep (which asks). To be called before the findings
/// get their places.
/// @param version the one that the file was compared with.
void addStructureMends(const ElementIndex& index, fcpxml::Version version, Findings& findings);

}  // namespace vornic

#endif
