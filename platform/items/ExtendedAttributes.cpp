#include "platform/items/ExtendedAttributes.h"

#include <algorithm>
#include <cerrno>

#include <sys/xattr.h>

#include "platform/files/FileDescriptor.h"

// A descriptor that was opened for the path alone (O_PATH) is refused by the calls that take
// descriptors with EBADF; its entry below /proc leads to the same file.
namespace vornic::platform {
namespace {

ssize_t listAttributes(int descriptor, char* buffer, std::size_t size) {
    const ssize_t length = flistxattr(descriptor, buffer, size);
    if (length < 0 && errno == EBADF) {
        return listxattr(descriptorPath(descriptor).c_str(), buffer, size);
    }
    return length;
}

ssize_t getAttribute(int descriptor, const char* name, char* buffer, std::size_t size) {
    const ssize_t length = fgetxattr(descriptor, name, buffer, size);
    if (length < 0 && errno == EBADF) {
        return getxattr(descriptorPath(descriptor).c_str(), name, buffer, size);
    }
    return length;
}

/// Asks for the size, then for the bytes, again when they grew in between. `read` is called with
/// buffer and size as the system calls take them.
template <typename Read>
ErrnoOr<std::string> readGrowing(const Read& read) {
    for (;;) {
        const ssize_t size = read(nullptr, 0);
        if (size < 0) {
            return Errno{errno};
        }
        std::string bytes(static_cast<std::size_t>(size), '\0');
        if (size == 0) {
            return bytes;
        }
        const ssize_t length = read(bytes.data(), bytes.size());
        if (length >= 0) {
            bytes.resize(static_cast<std::size_t>(length));
            return bytes;
        }
        if (errno != ERANGE) {
            return Errno{errno};
        }
    }
}

/// Attributes that the kernel computes from a file's own contents.
bool isComputed(const std::string& name) {
    return name == "security.ima" || name == "security.evm";
}

}  // namespace

bool losesAttribute(const std::string& name, int errorNumber) {
    const bool isForbidden = errorNumber == EPERM || errorNumber == EACCES;
    // Gone since it was listed, or of a kind that not every volume knows.
    const bool isAbsent = errorNumber == ENODATA || errorNumber == ENOTSUP;
    return errorNumber != 0 && !isAbsent && (!isForbidden || name.starts_with("user."));
}

ErrnoOr<std::vector<std::string>> extendedAttributeNames(int fileDescriptor) {
    const ErrnoOr<std::string> list = readGrowing([fileDescriptor](char* buffer, std::size_t size) {
        return listAttributes(fileDescriptor, buffer, size);
    });
    std::vector<std::string> names;
    if (!list && list.errorNumber() != ENOTSUP && list.errorNumber() != ENOSYS) {
        return Errno{list.errorNumber()};
    }
    for (std::size_t start = 0; list && start < list->size();) {
        const std::size_t end = std::min(list->find('\0', start), list->size());
        names.emplace_back(*list, start, end - start);
        start = end + 1;
    }
    return names;
}

ErrnoOr<std::string> extendedAttribute(int fileDescriptor, const std::string& name) {
    return readGrowing([&](char* buffer, std::size_t size) {
        return getAttribute(fileDescriptor, name.c_str(), buffer, size);
    });
}

int setExtendedAttribute(int fileDescriptor, const std::string& name, std::string_view value) {
    int result = fsetxattr(fileDescriptor, name.c_str(), value.data(), value.size(), 0);
    if (result != 0 && errno == EBADF) {
        result = setxattr(descriptorPath(fileDescriptor).c_str(), name.c_str(), value.data(),
                          value.size(), 0);
    }
    return result == 0 ? 0 : errno;
}

int removeExtendedAttribute(int fileDescriptor, const std::string& name) {
    int result = fremovexattr(fileDescriptor, name.c_str());
    if (result != 0 && errno == EBADF) {
        result = removexattr(descriptorPath(fileDescriptor).c_str(), name.c_str());
    }
    return result == 0 ? 0 : errno;
}

int copyExtendedAttributes(int from, int to) {
    const auto names = extendedAttributeNames(from);
    if (!names) {
        return names.errorNumber();
    }
    int firstError = 0;
    for (const std::string& name : *names) {
        if (isComputed(name)) {
            continue;
        }
        const ErrnoOr<std::string> value = extendedAttribute(from, name);
        const int errorNumber =
            value ? setExtendedAttribute(to, name, *value) : value.errorNumber();
        if (firstError == 0 && losesAttribute(name, errorNumber)) {
            firstError = errorNumber;
        }
    }
    return firstError;
}

}  // namespace vornic::platform
