#ifndef VORNIC_PLATFORM_ITEMS_FILE_ATTRIBUTES_H
#define VORNIC_PLATFORM_ITEMS_FILE_ATTRIBUTES_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/Error.h"

namespace vornic::platform {

/// The classic type and creator codes of a file, four characters each, the first one in the highest
/// byte ("XML " is 0x584D4C20); 0 when there is none.
struct FileAttributes {
    std::uint32_t hfsTypeCode = 0;
    std::uint32_t hfsCreatorCode = 0;
    friend bool operator==(const FileAttributes&, const FileAttributes&) = default;
};

/// The name of the extended attribute that holds the codes: the 32-byte FinderInfo structure, type
/// in bytes 0 to 3, creator in bytes 4 to 7 and flags in bytes 8 and 9, most significant byte
/// first. Bits 1 to 3 of the flags are the number of the colour label.
inline constexpr const char* kFinderInfoAttribute = "user.com.apple.FinderInfo";

/// Reads the codes of the file (links followed). A volume without extended attributes, or a file
/// without the attribute, yields zeros.
/// @return nothing when the file cannot be reached, with the slot filled.
[[nodiscard]] std::optional<FileAttributes> readFileAttributes(const std::string& path,
                                                               ErrorSlot& error);

/// Stores the codes; every other byte of the structure is kept. On a volume without extended
/// attributes the codes are left out and that is success. A file whose mode forbids it is made
/// writable for the moment and its mode put back.
[[nodiscard]] bool writeFileAttributes(const std::string& path, const FileAttributes& attributes,
                                       ErrorSlot& error);

/// Reads the number of the file's colour label, 0 (none) to 7, as `readFileAttributes` reads codes.
[[nodiscard]] std::optional<int> readColorLabel(const std::string& path, ErrorSlot& error);

/// Stores the number of the file's colour label, as `writeFileAttributes` stores codes.
/// @param label 0 to 7; any other is refused
[[nodiscard]] bool writeColorLabel(const std::string& path, int label, ErrorSlot& error);

}  // namespace vornic::platform

#endif
