#include "platform/items/FileAttributes.h"

#include <cerrno>
#include <functional>
#include <string_view>

#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/items/ExtendedAttributes.h"
#include "platform/items/OwnerAccess.h"

namespace vornic::platform {
namespace {

constexpr std::size_t kFinderInfoSize = 32;
constexpr std::size_t kTypeOffset = 0;
constexpr std::size_t kCreatorOffset = 4;
/// The lower byte of the flags.
constexpr std::size_t kLabelOffset = 9;
constexpr unsigned kLabelBits = 0x0EU;
constexpr unsigned kLabelShift = 1U;
constexpr int kLargestLabel = 7;

std::uint32_t codeAt(const std::string& info, std::size_t offset) {
    std::uint32_t code = 0;
    for (std::size_t index = offset; index < offset + 4; ++index) {
        const auto byte = index < info.size() ? static_cast<unsigned char>(info[index]) : 0U;
        code = code << 8U | byte;
    }
    return code;
}

void putCode(std::string& info, std::size_t offset, std::uint32_t code) {
    for (std::size_t index = 0; index < 4; ++index) {
        info[offset + index] = static_cast<char>(code >> (24U - 8U * index) & 0xFFU);
    }
}

bool isAbsent(int errorNumber) {
    return errorNumber == ENODATA || errorNumber == ENOTSUP || errorNumber == ENOSYS;
}

/// The structure that one kind of value is put into.
using Change = std::function<void(std::string& info)>;

/// @return 0, also where there is nothing to write or no place to write it, or the errno value.
int changeFinderInfo(int descriptor, const Change& change) {
    const ErrnoOr<std::string> info = extendedAttribute(descriptor, kFinderInfoAttribute);
    if (!info && info.errorNumber() != ENODATA) {
        return isAbsent(info.errorNumber()) ? 0 : info.errorNumber();
    }
    std::string bytes = info.value().value_or("");
    if (bytes.size() < kFinderInfoSize) {
        bytes.resize(kFinderInfoSize, '\0');
    }
    change(bytes);
    if (!info && bytes == std::string(kFinderInfoSize, '\0')) {
        return 0;
    }
    const int errorNumber = setExtendedAttribute(descriptor, kFinderInfoAttribute, bytes);
    return isAbsent(errorNumber) ? 0 : errorNumber;
}

bool storeFinderInfo(const std::string& path, std::string_view verb, const Change& change,
                     ErrorSlot& error) {
    const ErrnoOr<FileDescriptor> file = openForMetadata(path, true);
    if (!file) {
        return failFile(error, path, "opened", file.errorNumber());
    }
    const int errorNumber =
        withOwnerAccess(file->get(), [&] { return changeFinderInfo(file->get(), change); });
    return errorNumber == 0 || failFile(error, path, verb, errorNumber);
}

/// @return the structure, "" where there is none; nothing with the slot filled on failure.
std::optional<std::string> finderInfo(const std::string& path, std::string_view verb,
                                      ErrorSlot& error) {
    const ErrnoOr<FileDescriptor> file = openForMetadata(path, true);
    if (!file) {
        failFile(error, path, "opened", file.errorNumber());
        return std::nullopt;
    }
    ErrnoOr<std::string> info = extendedAttribute(file->get(), kFinderInfoAttribute);
    if (!info && !isAbsent(info.errorNumber())) {
        failFile(error, path, verb, info.errorNumber());
        return std::nullopt;
    }
    return info ? *std::move(info) : "";
}

}  // namespace

std::optional<FileAttributes> readFileAttributes(const std::string& path, ErrorSlot& error) {
    const std::optional<std::string> info = finderInfo(path, "asked for its type code", error);
    if (!info) {
        return std::nullopt;
    }
    return FileAttributes{.hfsTypeCode = codeAt(*info, kTypeOffset),
                          .hfsCreatorCode = codeAt(*info, kCreatorOffset)};
}

bool writeFileAttributes(const std::string& path, const FileAttributes& attributes,
                         ErrorSlot& error) {
    const auto putCodes = [&](std::string& info) {
        putCode(info, kTypeOffset, attributes.hfsTypeCode);
        putCode(info, kCreatorOffset, attributes.hfsCreatorCode);
    };
    return storeFinderInfo(path, "given its type code", putCodes, error);
}

std::optional<int> readColorLabel(const std::string& path, ErrorSlot& error) {
    const std::optional<std::string> info = finderInfo(path, "asked for its colour label", error);
    if (!info) {
        return std::nullopt;
    }
    const unsigned flags =
        info->size() > kLabelOffset ? static_cast<unsigned char>((*info)[kLabelOffset]) : 0U;
    return static_cast<int>((flags & kLabelBits) >> kLabelShift);
}

bool writeColorLabel(const std::string& path, int label, ErrorSlot& error) {
    constexpr std::string_view kVerb = "given its colour label";
    if (label < 0 || label > kLargestLabel) {
        return failFile(error, path, kVerb, EINVAL);
    }
    const auto putLabel = [label](std::string& info) {
        const unsigned others = static_cast<unsigned char>(info[kLabelOffset]) & ~kLabelBits;
        info[kLabelOffset] =
            static_cast<char>((others | static_cast<unsigned>(label) << kLabelShift) & 0xFFU);
    };
    return storeFinderInfo(path, kVerb, putLabel, error);
}

}  // namespace vornic::platform
