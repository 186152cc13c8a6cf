#include "platform/volumes/FileTransfer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/items/FileMetadata.h"

namespace vornic::platform {
namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;

/// @return the number of bytes read, less than asked for only at the end; -1 with errno set.
ssize_t readFully(int descriptor, char* buffer, std::size_t size, off_t offset) {
    std::size_t length = 0;
    while (length < size) {
        const ssize_t got =
            pread(descriptor, buffer + length, size - length, offset + static_cast<off_t>(length));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return -1;
        }
        if (got == 0) {
            break;
        }
        length += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(length);
}

/// Copies as much as the kernel does by itself; both positions move on. What is left, be it all, is
/// for the ordinary way. @return 0, or an errno value that the ordinary way would meet as well.
int copyInsideKernel(int from, int to) {
    constexpr std::size_t kStep = std::size_t{256} << 20U;
    for (;;) {
        const ssize_t copied = copy_file_range(from, nullptr, to, nullptr, kStep, 0);
        if (copied == 0) {
            return 0;
        }
        if (copied < 0 && errno != EINTR) {
            const bool full = errno == ENOSPC || errno == EDQUOT || errno == EFBIG;
            return full ? errno : 0;
        }
    }
}

int copyThroughBuffer(int from, int to) {
    const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
    for (;;) {
        const ssize_t got = ::read(from, buffer.get(), kBufferSize);
        if (got == 0) {
            return 0;
        }
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return errno;
        }
        const int errorNumber = writeAll(to, buffer.get(), static_cast<std::size_t>(got));
        if (errorNumber != 0) {
            return errorNumber;
        }
    }
}

/// Copies an open file into a new one that is still empty.
/// @param losses told what of the metadata was lost; null when nobody wants to know
/// @return 0 or the errno value.
int fillCopy(int source, FileDescriptor& copy, Verification verification, std::string* losses) {
    struct stat status {};
    if (fstat(source, &status) != 0) {
        return errno;
    }
    int errorNumber = copyContents(source, copy.get());
    if (errorNumber == 0 && verification == Verification::readBack) {
        errorNumber = compareWithSource(source, copy.get());
    }
    if (errorNumber != 0) {
        return errorNumber;
    }
    if (losses != nullptr) {
        *losses = copyMetadata(source, status, copy.get());
    } else if (verification == Verification::readBack) {
        errorNumber = moveOwnerAttributesAndMode(source, status, copy.get());
    } else {
        copyOwnerAttributesAndMode(source, status, copy.get());
    }
    copyTimes(status, copy.get());
    if (errorNumber == 0 && verification == Verification::readBack) {
        errorNumber = synchronize(copy.get());
    }
    const int closeError = copy.close();
    return errorNumber != 0 ? errorNumber : closeError;
}

bool copyRegularFile(const std::string& source, const std::string& destination, bool followLinks,
                     Verification verification, ErrorSlot& error, std::string* losses = nullptr) {
    const ErrnoOr<FileDescriptor> from = openRegularFile(source, followLinks);
    if (!from) {
        return from.errorNumber() == EINVAL
                   ? failFileBecause(error, source, "copied", EINVAL, "it is no ordinary file")
                   : failFile(error, source, "copied", from.errorNumber());
    }
    if (destination.find('\0') != std::string::npos) {
        return failFile(error, destination, "made", EINVAL);
    }
    FileDescriptor copy(
        ::open(destination.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!copy) {
        return failFile(error, destination, "made", errno);
    }
    if (verification == Verification::readBack) {
        // Whoever looks for what killed processes have left finds that this one lives.
        std::ignore = flock(copy.get(), LOCK_EX | LOCK_NB);
    }
    const int errorNumber = fillCopy(from->get(), copy, verification, losses);
    if (errorNumber == 0) {
        return true;
    }
    std::ignore = unlink(destination.c_str());
    return failFile(error, source, "copied to " + destination, errorNumber);
}

bool copyLink(const std::string& source, const std::string& destination, const struct stat& status,
              ErrorSlot& error) {
    std::array<char, PATH_MAX + 1> target{};
    // One byte stays zero, so that the text ends there.
    if (readlink(source.c_str(), target.data(), target.size() - 1) < 0 ||
        symlink(target.data(), destination.c_str()) != 0) {
        return failFile(error, source, "copied to " + destination, errno);
    }
    std::ignore = lchown(destination.c_str(), status.st_uid, status.st_gid);
    const std::array<struct timespec, 2> times{status.st_atim, status.st_mtim};
    static_cast<void>(utimensat(AT_FDCWD, destination.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) ==
                      0);
    return true;
}

bool copyPipe(const std::string& source, const std::string& destination, const struct stat& status,
              ErrorSlot& error) {
    if (mkfifo(destination.c_str(), 0600) != 0) {
        return failFile(error, source, "copied to " + destination, errno);
    }
    std::ignore = lchown(destination.c_str(), status.st_uid, status.st_gid);
    std::ignore = chmod(destination.c_str(), status.st_mode & 0777);
    return true;
}

bool copyNode(const std::string& source, const std::string& destination, dev_t volume,
              Verification verification, ErrorSlot& error);

bool copyFolderContents(int descriptor, const std::string& source, const std::string& destination,
                        dev_t volume, Verification verification, ErrorSlot& error) {
    std::vector<std::string> names;
    const int errorNumber = listFolder(descriptor, names);
    if (errorNumber != 0) {
        return failFolder(error, source, "read", errorNumber);
    }
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
        return copyNode(joinPath(source, name), joinPath(destination, name), volume, verification,
                        error);
    });
}

bool fillFolder(const std::string& source, const std::string& destination,
                const struct stat& status, Verification verification, ErrorSlot& error) {
    const FileDescriptor from(
        ::open(source.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!from) {
        return failFolder(error, source, "read", errno);
    }
    const FileDescriptor to(
        ::open(destination.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!to) {
        return failFolder(error, destination, "opened", errno);
    }
    if (!copyFolderContents(from.get(), source, destination, status.st_dev, verification, error)) {
        return false;
    }
    copyOwnerAttributesAndMode(from.get(), status, to.get());
    copyTimes(status, to.get());
    const int errorNumber = verification == Verification::readBack ? synchronize(to.get()) : 0;
    return errorNumber == 0 || failFolder(error, destination, "written", errorNumber);
}

bool copyFolder(const std::string& source, const std::string& destination,
                const struct stat& status, Verification verification, ErrorSlot& error) {
    if (mkdir(destination.c_str(), 0700) != 0) {
        return failFolder(error, destination, "made", errno);
    }
    if (fillFolder(source, destination, status, verification, error)) {
        return true;
    }
    ErrorSlot ignored;
    std::ignore = removeItem(destination, ignored);
    return false;
}

bool copyNode(const std::string& source, const std::string& destination, dev_t volume,
              Verification verification, ErrorSlot& error) {
    struct stat status {};
    if (lstat(source.c_str(), &status) != 0) {
        return failFile(error, source, "copied", errno);
    }
    if (status.st_dev != volume) {
        return failFileBecause(error, source, "copied", EXDEV,
                               "another volume is mounted in this place");
    }
    if (S_ISDIR(status.st_mode)) {
        return copyFolder(source, destination, status, verification, error);
    }
    if (S_ISLNK(status.st_mode)) {
        return copyLink(source, destination, status, error);
    }
    if (S_ISFIFO(status.st_mode)) {
        return copyPipe(source, destination, status, error);
    }
    return copyRegularFile(source, destination, false, verification, error);
}

std::optional<std::string> realPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? std::optional<std::string>(real.get()) : std::nullopt;
}

bool nothingHolds(const std::string& path) {
    return path.empty() || path.find('\0') != std::string::npos;
}

}  // namespace

int copyContents(int from, int to) {
    const int errorNumber = copyInsideKernel(from, to);
    return errorNumber != 0 ? errorNumber : copyThroughBuffer(from, to);
}

int compareWithSource(int source, int written) {
    const int errorNumber = synchronize(written);
    if (errorNumber != 0) {
        return errorNumber;
    }
    static_cast<void>(posix_fadvise(written, 0, 0, POSIX_FADV_DONTNEED));
    const auto first = std::make_unique_for_overwrite<char[]>(kBufferSize);
    const auto second = std::make_unique_for_overwrite<char[]>(kBufferSize);
    for (off_t offset = 0;; offset += static_cast<off_t>(kBufferSize)) {
        const ssize_t expected = readFully(source, first.get(), kBufferSize, offset);
        const ssize_t got =
            expected < 0 ? -1 : readFully(written, second.get(), kBufferSize, offset);
        if (got < 0) {
            return errno;
        }
        if (got != expected ||
            std::memcmp(first.get(), second.get(), static_cast<std::size_t>(got)) != 0) {
            return EIO;
        }
        if (static_cast<std::size_t>(got) < kBufferSize) {
            return 0;
        }
    }
}

bool liesWithin(const std::string& inner, const std::string& outer) {
    const std::optional<std::string> folder = realPath(outer);
    const std::optional<std::string> parent = realPath(parentFolder(inner));
    if (!folder || !parent || !isDirectory(outer)) {
        return false;
    }
    return joinPath(*parent, lastComponent(inner)).starts_with(withTrailingSlash(*folder)) ||
           withTrailingSlash(*parent).starts_with(withTrailingSlash(*folder));
}

bool transferItem(const std::string& source, const std::string& destination,
                  Verification verification, ErrorSlot& error) {
    struct stat status {};
    if (nothingHolds(source) || nothingHolds(destination)) {
        return failFile(error, source, "copied", EINVAL);
    }
    if (lstat(source.c_str(), &status) != 0) {
        return failFile(error, source, "copied", errno);
    }
    if (nodeExists(destination)) {
        return failFile(error, destination, "made", EEXIST);
    }
    if (S_ISDIR(status.st_mode) && liesWithin(destination, source)) {
        return failFileBecause(error, source, "copied to " + destination, EINVAL,
                               "a folder cannot go into itself");
    }
    return copyNode(source, destination, status.st_dev, verification, error);
}

bool copyTellingLosses(const std::string& source, const std::string& destination,
                       std::string& losses, ErrorSlot& error) {
    struct stat status {};
    losses.clear();
    if (lstat(source.c_str(), &status) != 0) {
        return failFile(error, source, "copied", errno);
    }
    if (!S_ISLNK(status.st_mode)) {
        return copyRegularFile(source, destination, false, Verification::readBack, error, &losses);
    }
    struct stat made {};
    if (!copyLink(source, destination, status, error)) {
        return false;
    }
    const bool isKept = lstat(destination.c_str(), &made) == 0 && made.st_uid == status.st_uid &&
                        made.st_gid == status.st_gid;
    if (!isKept && geteuid() == 0) {
        losses = posixError("The owner cannot be kept", EPERM).description;
    }
    return true;
}

bool copyFile(const std::string& source, const std::string& destination, ErrorSlot& error) {
    return copyRegularFile(source, destination, true, Verification::none, error);
}

bool copyItem(const std::string& source, const std::string& destination, ErrorSlot& error) {
    return transferItem(source, destination, Verification::none, error);
}

}  // namespace vornic::platform
