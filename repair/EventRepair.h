#ifndef VORNIC_REPAIR_EVENT_REPAIR_H
#define VORNIC_REPAIR_EVENT_REPAIR_H

#include <memory>

#include "repair/RepairHost.h"
#include "xml/XMLDocument.h"

namespace vornic {

/// Gives every audio child of a video clip in the first library's events the reference of the first
/// one that has a reference, where some lack it.
/// @param document null when there is none. @param hasErrors when not null, set to whether any clip
///     was mended.
/// @return the same document, mended in place.
[[nodiscard]] std::unique_ptr<XMLDocument> repairFCPXDocument(RepairHost& host,
                                                              std::unique_ptr<XMLDocument> document,
                                                              bool* hasErrors);

}  // namespace vornic

#endif
