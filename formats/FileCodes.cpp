#include "formats/FileCodes.h"

#include <cstdint>

#include "platform/items/FileAttributes.h"

namespace vornic {

namespace {

constexpr std::uint32_t numberOf(std::string_view code) {
    std::uint32_t number = 0;
    for (const char character : code) {
        number = (number << 8U) | static_cast<unsigned char>(character);
    }
    return number;
}

}  // namespace

FileCodes setFinalCutFileCodes(const std::string& path, ErrorSlot& error) {
    platform::FileAttributes attributes =
        platform::readFileAttributes(path, error).value_or(platform::FileAttributes{});
    if (error) {
        return FileCodes::unread;
    }
    attributes.hfsTypeCode = numberOf(kFinalCutTypeCode);
    attributes.hfsCreatorCode = numberOf(kFinalCutCreatorCode);
    return platform::writeFileAttributes(path, attributes, error) ? FileCodes::set
                                                                  : FileCodes::unwritten;
}

}  // namespace vornic
