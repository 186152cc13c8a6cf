#include "platform/FileAttributes.h"

#include <cerrno>

#include <sys/stat.h>

#include "platform/ExtendedAttributes.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"

namespace vornic::platform {
namespace {

constexpr std::size_t kFinderInfoSize = 32;
constexpr std::size_t kTypeOffset = 0;
constexpr std::size_t kCreatorOffset = 4;

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

/// Lets the owner read and write the open file, and puts its mode back at the end.
class ModeOpener {
  public:
    explicit ModeOpener(int descriptor) : path_(descriptorPath(descriptor)) {
        struct stat status {};
        if (stat(path_.c_str(), &status) == 0) {
            mode_ = status.st_mode & 07777;
            opened_ = chmod(path_.c_str(), mode_ | S_IRUSR | S_IWUSR) == 0;
        }
    }
    ~ModeOpener() {
        if (opened_) {
            static_cast<void>(chmod(path_.c_str(), mode_) == 0);
        }
    }
    ModeOpener(const ModeOpener&) = delete;
    ModeOpener& operator=(const ModeOpener&) = delete;
    [[nodiscard]] bool opened() const { return opened_; }

  private:
    std::string path_;
    mode_t mode_ = 0;
    bool opened_ = false;
};

/// @return 0, also where there is nothing to write or no place to write it, or the errno value.
int storeCodes(int descriptor, const FileAttributes& attributes) {
    int errorNumber = 0;
    std::optional<std::string> info =
        extendedAttribute(descriptor, kFinderInfoAttribute, errorNumber);
    if (!info && !isAbsent(errorNumber)) {
        return errorNumber;
    }
    if (!info && (errorNumber != ENODATA || attributes == FileAttributes{})) {
        return 0;
    }
    std::string bytes = info.value_or("");
    if (bytes.size() < kFinderInfoSize) {
        bytes.resize(kFinderInfoSize, '\0');
    }
    putCode(bytes, kTypeOffset, attributes.hfsTypeCode);
    putCode(bytes, kCreatorOffset, attributes.hfsCreatorCode);
    errorNumber = setExtendedAttribute(descriptor, kFinderInfoAttribute, bytes);
    return isAbsent(errorNumber) ? 0 : errorNumber;
}

}  // namespace

std::optional<FileAttributes> readFileAttributes(const std::string& path, ErrorSlot& error) {
    int errorNumber = 0;
    const FileDescriptor file = openForMetadata(path, true, errorNumber);
    if (!file) {
        failFile(error, path, "opened", errorNumber);
        return std::nullopt;
    }
    const std::optional<std::string> info =
        extendedAttribute(file.get(), kFinderInfoAttribute, errorNumber);
    if (!info && !isAbsent(errorNumber)) {
        failFile(error, path, "asked for its type code", errorNumber);
        return std::nullopt;
    }
    const std::string bytes = info.value_or("");
    return FileAttributes{.hfsTypeCode = codeAt(bytes, kTypeOffset),
                          .hfsCreatorCode = codeAt(bytes, kCreatorOffset)};
}

bool writeFileAttributes(const std::string& path, const FileAttributes& attributes,
                         ErrorSlot& error) {
    int errorNumber = 0;
    const FileDescriptor file = openForMetadata(path, true, errorNumber);
    if (!file) {
        return failFile(error, path, "opened", errorNumber);
    }
    errorNumber = storeCodes(file.get(), attributes);
    if (errorNumber == EACCES) {
        const ModeOpener opener(file.get());
        if (opener.opened()) {
            errorNumber = storeCodes(file.get(), attributes);
        }
    }
    return errorNumber == 0 || failFile(error, path, "given its type code", errorNumber);
}

}  // namespace vornic::platform
