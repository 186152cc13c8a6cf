#ifndef VORNIC_CONVERT_VERSION_CONVERSION_H
#define VORNIC_CONVERT_VERSION_CONVERSION_H

#include <memory>
#include <string>

#include "convert/ConversionHost.h"
#include "xml/XMLDocument.h"

namespace vornic {

/// Rewrites an XMEML document to a version and saves it in place of the file, atomically. Asks
/// before a downgrade that loses information when the host has a window.
/// @param version the target, a decimal string. @param document taken over and thrown away.
void convertXMEMLVersion(ConversionHost& host, const std::string& version,
                         std::unique_ptr<XMLDocument> document, const std::string& filePath);

/// Removes the elements that every catalogue version above the target introduced.
/// @return the same document, or null after an exception, which is logged.
[[nodiscard]] std::unique_ptr<XMLDocument> stripTagsFromXMLDoc(
    std::unique_ptr<XMLDocument> document, const std::string& forVersion);

}  // namespace vornic

#endif
