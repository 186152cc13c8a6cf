#include "formats/FileCodes.h"

#include <cstdint>

#include "platform/FileAttributes.h"

namespace vornic {

namespace {

// The four characters "XML " and "KeyG".
constexpr std::uint32_t kTypeCode = 0x584D4C20;
constexpr std::uint32_t kCreatorCode = 0x4B657947;

}  // namespace

FileCodes setFinalCutFileCodes(const std::string& path, ErrorSlot& error) {
    platform::FileAttributes attributes =
        platform::readFileAttributes(path, error).value_or(platform::FileAttributes{});
    if (error) {
        return FileCodes::unread;
    }
    attributes.hfsTypeCode = kTypeCode;
    attributes.hfsCreatorCode = kCreatorCode;
    platform::writeFileAttributes(path, attributes, error);
    return error ? FileCodes::unwritten : FileCodes::set;
}

}  // namespace vornic
