#include "app/OpenPanelSettings.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "base/PathText.h"
#include "base/Text.h"
#include "platform/items/FileAttributes.h"

namespace vornic {
namespace {

using Kind = AllowedFileType::Kind;

/// The code of a file as four characters; nothing for a file without one.
std::optional<std::string> typeCodeOf(const std::string& path) {
    ErrorSlot ignored;
    const auto attributes = platform::readFileAttributes(path, ignored);
    if (!attributes || attributes->hfsTypeCode == 0) {
        return std::nullopt;
    }
    std::string characters;
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        characters += static_cast<char>((attributes->hfsTypeCode >> shift) & 0xFFU);
    }
    return characters;
}

}  // namespace

bool OpenPanelSettings::allowsFile(const std::string& path) const {
    const std::string extension = lowercased(pathExtension(path));
    const auto hasExtension = [&](const AllowedFileType& type) {
        return type.kind == Kind::extension && lowercased(type.text) == extension;
    };
    if (std::any_of(allowedFileTypes.begin(), allowedFileTypes.end(), hasExtension)) {
        return true;
    }
    const std::optional<std::string> code = typeCodeOf(path);
    const auto hasCode = [&](const AllowedFileType& type) {
        return type.kind == Kind::typeCode && type.text == code;
    };
    return std::any_of(allowedFileTypes.begin(), allowedFileTypes.end(), hasCode);
}

}  // namespace vornic
