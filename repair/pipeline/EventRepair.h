#ifndef VORNIC_REPAIR_PIPELINE_EVENT_REPAIR_H
#define VORNIC_REPAIR_PIPELINE_EVENT_REPAIR_H

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "repair/pipeline/RepairFinding.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

using FileText = std::function<std::optional<std::string>()>;

/// Gives every audio child of a video clip in the first library's events the reference of the first
/// one that has a reference, where some lack it. A mend by which the document would grow beyond 64
/// MiB and beyond four times its size is refused: that is a finding with its place, and no further
/// clip is looked at.
/// @param document null when there is none. @param hasErrors when not null, set to whether any clip
///     was mended.
/// @param fileText gives the text of the user's file, in which a refused mend is placed; nothing
///     when it is not to be had. Asked for then alone.
/// @return the same document, mended in place.
[[nodiscard]] std::unique_ptr<XMLDocument> repairFCPXDocument(std::unique_ptr<XMLDocument> document,
                                                              bool* hasErrors,
                                                              const FoundInRepair& found,
                                                              const FileText& fileText = {});

}  // namespace vornic

#endif
