#ifndef VORNIC_FORMATS_XMEML_VERSIONED_XMEML_H
#define VORNIC_FORMATS_XMEML_VERSIONED_XMEML_H

#include "xml/tree/XMLDocument.h"

namespace vornic {

/// True for a document whose root element is "xmeml" and has a "version" attribute, whatever its
/// value. Needs no tree. One thread at a time, as the document.
[[nodiscard]] inline bool isVersionedXMEML(const XMLDocument& document) {
    return document.rootName() == "xmeml" && document.rootAttribute("version");
}

}  // namespace vornic

#endif
