#include "platform/files/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/ContentsWatcher.h"
#include "platform/processes/LargePages.h"

namespace vornic::platform {
namespace {

constexpr int kReadWithoutWaiting = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

/// Reads to the end of the file, which may be longer or shorter than it was said to be. Through a
/// block that stays in the processor's cache: to fill the text with zeros first would touch all of
/// its memory once more.
int readToEnd(int descriptor, std::size_t expectedSize, std::string& bytes,
              ContentsWatcher* watcher) {
    // Some files do not tell their size.
    constexpr std::size_t kSmallestBlock = std::size_t{16} << 10U;
    constexpr std::size_t kLargestBlock = std::size_t{256} << 10U;
    const std::size_t blockSize =
        std::min(std::max(expectedSize + 1, kSmallestBlock), kLargestBlock);
    const auto block = std::make_unique_for_overwrite<char[]>(blockSize);
    bytes.clear();
    reserveInLargePages(bytes, expectedSize);
    // Until the text moves, as it does where the file has grown meanwhile.
    std::optional<PagesAhead> ahead(std::in_place, bytes.data(), bytes.capacity());
    for (;;) {
        const ssize_t got =
            pread(descriptor, block.get(), blockSize, static_cast<off_t>(bytes.size()));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return errno;
        }
        if (got == 0) {
            break;
        }
        if (bytes.size() + static_cast<std::size_t>(got) > bytes.capacity()) {
            ahead.reset();
        }
        if (watcher != nullptr) {
            watcher->take({block.get(), static_cast<std::size_t>(got)});
        }
        bytes.append(block.get(), static_cast<std::size_t>(got));
    }
    return 0;
}

int readAll(int descriptor, std::string& bytes, ContentsWatcher* watcher) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        return errno;
    }
    try {
        return readToEnd(descriptor, static_cast<std::size_t>(status.st_size), bytes, watcher);
    } catch (const std::exception&) {
        // A file may claim any size; one that memory cannot hold is the file's fault.
        return ENOMEM;
    }
}

}  // namespace

int FileDescriptor::close() {
    if (descriptor_ < 0) {
        return 0;
    }
    // Linux frees the descriptor even when the call is interrupted; calling again could close
    // another thread's file.
    const int result = ::close(std::exchange(descriptor_, -1));
    return result == 0 || errno == EINTR ? 0 : errno;
}

ErrnoOr<FileDescriptor> openRegularFile(const std::string& path, bool followLinks) {
    if (path.find('\0') != std::string::npos) {
        return Errno{EINVAL};
    }
    struct stat status {};
    if (fstatat(AT_FDCWD, path.c_str(), &status, followLinks ? 0 : AT_SYMLINK_NOFOLLOW) != 0) {
        return Errno{errno};
    }
    if (!S_ISREG(status.st_mode)) {
        return Errno{S_ISDIR(status.st_mode) ? EISDIR : EINVAL};
    }
    FileDescriptor file(::open(path.c_str(), kReadWithoutWaiting | (followLinks ? 0 : O_NOFOLLOW)));
    if (!file) {
        return Errno{errno};
    }
    // Something else may have taken the name meanwhile.
    if (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return Errno{EINVAL};
    }
    return file;
}

ErrnoOr<FileDescriptor> openForMetadata(const std::string& path, bool followLinks) {
    if (path.find('\0') != std::string::npos) {
        return Errno{EINVAL};
    }
    const int linkFlag = followLinks ? 0 : O_NOFOLLOW;
    struct stat status {};
    if (fstatat(AT_FDCWD, path.c_str(), &status, followLinks ? 0 : AT_SYMLINK_NOFOLLOW) != 0) {
        return Errno{errno};
    }
    if (S_ISLNK(status.st_mode)) {
        return Errno{ELOOP};
    }
    if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) {
        FileDescriptor file(::open(path.c_str(), kReadWithoutWaiting | linkFlag));
        if (file) {
            return file;
        }
        if (errno != EACCES && errno != EPERM) {
            return Errno{errno};
        }
    }
    FileDescriptor file(::open(path.c_str(), O_PATH | O_CLOEXEC | linkFlag));
    if (!file) {
        return Errno{errno};
    }
    return file;
}

std::string descriptorPath(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

FileIdentity identityOf(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        return {};
    }
    return {.device = status.st_dev, .inode = status.st_ino};
}

BlockRead readBlock(int descriptor, char* buffer, std::size_t size) {
    BlockRead block;
    while (block.length < size) {
        const ssize_t got = ::read(descriptor, buffer + block.length, size - block.length);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            block.errorNumber = errno;
        }
        if (got <= 0) {
            break;
        }
        block.length += static_cast<std::size_t>(got);
    }
    return block;
}

void DigestedContents::begin() {
    digest_ = ContentDigest();
    if (next_ != nullptr) {
        next_->begin();
    }
}

void DigestedContents::take(std::string_view piece) {
    digest_.update(piece);
    if (next_ != nullptr) {
        next_->take(piece);
    }
}

int readContents(int descriptor, std::string& bytes) {
    return readAll(descriptor, bytes, nullptr);
}

int readContents(int descriptor, std::string& bytes, ContentsWatcher& watcher) {
    watcher.begin();
    return readAll(descriptor, bytes, &watcher);
}

int writeAll(int descriptor, const char* bytes, std::size_t count) {
    constexpr std::size_t kLargestWrite = std::size_t{1} << 30U;
    while (count > 0) {
        const ssize_t written = ::write(descriptor, bytes, std::min(count, kLargestWrite));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return written < 0 ? errno : EIO;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return 0;
}

int writeAllForSync(int descriptor, std::string_view bytes) {
    constexpr std::size_t kStep = std::size_t{4} << 20U;
    constexpr auto kFileStep = static_cast<off_t>(kStep);
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, kStep);
        if (const int errorNumber = writeAll(descriptor, piece.data(), piece.size())) {
            return errorNumber;
        }
        // A step that has been filled goes ahead; where it cannot, the sync sends it.
        const off_t end = lseek(descriptor, 0, SEEK_CUR);
        const off_t step = (end - static_cast<off_t>(piece.size())) / kFileStep * kFileStep;
        if (end - step >= kFileStep) {
            static_cast<void>(sync_file_range(descriptor, step, end - step, SYNC_FILE_RANGE_WRITE));
        }
        bytes.remove_prefix(piece.size());
    }
    return 0;
}

int synchronize(int descriptor) {
    while (fsync(descriptor) != 0) {
        if (errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP || errno == EROFS) {
            return 0;
        }
        if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int synchronizeFolder(const std::string& folder) {
    const FileDescriptor opened(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (!opened) {
        // A folder that may be written but not listed cannot be opened, hence not be synced.
        return errno == EACCES ? 0 : errno;
    }
    return synchronize(opened.get());
}

int listFolder(int folder, std::vector<std::string>& names) {
    struct Closer {
        void operator()(DIR* directory) const { closedir(directory); }
    };
    // Opened anew, for a duplicate would share its position with the original.
    FileDescriptor opened(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, Closer> directory(opened ? fdopendir(opened.get()) : nullptr);
    if (!directory) {
        return errno;
    }
    static_cast<void>(opened.release());
    for (;;) {
        errno = 0;
        const struct dirent* entry = readdir(directory.get());
        if (entry == nullptr) {
            return errno;
        }
        const std::string_view name(&entry->d_name[0]);
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
}

}  // namespace vornic::platform
