#ifndef VORNIC_XML_XML_FILE_CODES_H
#define VORNIC_XML_XML_FILE_CODES_H

#include <cstdint>

namespace vornic {

/// The classic type code of a Final Cut Pro XML file, the four characters "XML ".
inline constexpr std::uint32_t kXMLFileTypeCode = 0x584D4C20;
/// The classic creator code of the application that opens it, the four characters "KeyG".
inline constexpr std::uint32_t kXMLFileCreatorCode = 0x4B657947;

}  // namespace vornic

#endif
