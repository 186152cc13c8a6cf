#ifndef VORNIC_PLATFORM_FILE_ATTRIBUTES_H
#define VORNIC_PLATFORM_FILE_ATTRIBUTES_H

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Error.h"

namespace vornic::platform {

/// The classic type and creator codes of a file, four characters each, the first one in the highest
/// byte ("XML " is 0x584D4C20); 0 when there is none.
struct FileAttributes {
    std::uint32_t hfsTypeCode = 0;
    std::uint32_t hfsCreatorCode = 0;
    friend bool operator==(const FileAttributes&, const FileAttributes&) = default;
};

/// The name of the extended attribute that holds the codes: the 32-byte FinderInfo structure, type
/// in bytes 0 to 3 and creator in bytes 4 to 7, most significant byte first.
inline constexpr const char* kFinderInfoAttribute = "user.com.apple.FinderInfo";

/// Reads the codes of the file (links followed). A volume without extended attributes, or a file
/// without the attribute, yields zeros.
/// @return nothing when the file cannot be reached, with the slot filled.
[[nodiscard]] std::optional<FileAttributes> readFileAttributes(const std::string& path,
                                                               ErrorSlot& error);

/// Stores the codes; every other byte of the structure is kept. On a volume without extended
/// attributes the codes are left out and that is success. A file whose mode forbids it is made
/// writable for the moment and its mode put back.
bool writeFileAttributes(const std::string& path, const FileAttributes& attributes,
                         ErrorSlot& error);

}  // namespace vornic::platform

#endif
