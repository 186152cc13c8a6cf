#ifndef VORNIC_CONVERT_VERSION_CONVERSION_H
#define VORNIC_CONVERT_VERSION_CONVERSION_H

#include <memory>
#include <string>

#include "convert/ConversionHost.h"
#include "xml/XMLDocument.h"

namespace vornic {

/// Rewrites an XMEML document to a version and saves it in place of the file, atomically, with the
/// type and creator codes of Final Cut Pro XML. A downgrade below the host's minimum removes the
/// elements that the target does not know; when the host has a window the user is asked first, and
/// without an agreement, also when nobody could be asked, the file is not touched. Failures are
/// logged and printed, and shown as alerts when the host has a window. What is raised inside (by an
/// alert, say) passes on to the caller, who logs it under its own name.
/// @param version the target, a decimal string, written as it stands.
/// @param document taken over and thrown away.
void convertXMEMLVersion(ConversionHost& host, const std::string& version,
                         std::unique_ptr<XMLDocument> document, const std::string& filePath);

/// Removes the elements, with all that is in them, that every catalogue version above the target
/// introduced. A document that is no XMEML, and a target that the catalogue does not know, change
/// nothing.
/// @return the same document, or null after an exception, which is logged.
[[nodiscard]] std::unique_ptr<XMLDocument> stripTagsFromXMLDoc(
    std::unique_ptr<XMLDocument> document, const std::string& forVersion);

}  // namespace vornic

#endif
