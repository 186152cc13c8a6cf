#ifndef VORNIC_REPAIR_PIPELINE_HEADER_CHECKS_H
#define VORNIC_REPAIR_PIPELINE_HEADER_CHECKS_H

#include <memory>

#include "repair/pipeline/RepairFinding.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

/// Check the head of a document: the document type declaration, which is mended, the root element
/// and the elements that a project needs, which are only found to be missing. A null document has
/// no declaration, no root element and no query results.
/// @return the same document, mended in place, or null after an exception, which is logged.
[[nodiscard]] std::unique_ptr<XMLDocument> checkXMEMLHeaderTags(
    std::unique_ptr<XMLDocument> document, const FoundInRepair& found);
[[nodiscard]] std::unique_ptr<XMLDocument> checkFCPXMLHeaderTags(
    std::unique_ptr<XMLDocument> document, const FoundInRepair& found);

}  // namespace vornic

#endif
