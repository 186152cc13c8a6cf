#ifndef VORNIC_REPAIR_PIPELINE_VERSION_TAG_CHECK_H
#define VORNIC_REPAIR_PIPELINE_VERSION_TAG_CHECK_H

#include "repair/pipeline/RepairFinding.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

/// Warns about elements that the version which the document declares does not know. The serialised
/// text is searched for all of them in one pass, without being kept. An exception is logged, not
/// raised.
/// @param document null when there is none.
void checkVersionTags(const XMLDocument* document, const FoundInRepair& found);

}  // namespace vornic

#endif
