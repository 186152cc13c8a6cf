#include "platform/files/TemporaryFile.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/files/TemporaryName.h"

namespace vornic::platform {

namespace {

/// "NAME" of ".NAME.vornic-xxxxxxxxxx"; "" of other names.
std::string_view nameWithin(std::string_view name) {
    constexpr std::string_view kMark = ".vornic-";
    constexpr std::size_t kRandomLength = 10;
    const std::size_t mark = name.rfind(kMark);
    if (!name.starts_with('.') || mark == std::string_view::npos || mark == 0 ||
        name.size() != mark + kMark.size() + kRandomLength) {
        return "";
    }
    const std::string_view random = name.substr(mark + kMark.size());
    const bool isRandom = std::all_of(random.begin(), random.end(), [](unsigned char byte) {
        return std::islower(byte) != 0 || std::isdigit(byte) != 0;
    });
    return isRandom ? name.substr(1, mark - 1) : "";
}

/// True for ".NAME.vornic-xxxxxxxxxx.part".
bool isPartName(std::string_view name) {
    return name.ends_with(kPartEnding) &&
           !nameWithin(name.substr(0, name.size() - kPartEnding.size())).empty();
}

/// True for a file of this user that nothing has changed for long and nobody holds.
bool isLeft(int file, std::chrono::seconds age) {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
           status.st_ctim.tv_sec + age.count() <= time(nullptr) &&
           flock(file, LOCK_EX | LOCK_NB) == 0;
}

/// The same for one that has no other name, either.
bool isDead(int file, std::chrono::seconds age) {
    struct stat status {};
    return fstat(file, &status) == 0 && status.st_nlink == 1 && isLeft(file, age);
}

/// Knows which folder was looked at last, so that many files of one folder cost one look at it.
class LastFolder {
  public:
    bool isAnother(int folder) {
        const std::lock_guard lock(mutex_);
        const FileIdentity identity = identityOf(folder);
        return std::exchange(last_, identity) != identity;
    }

  private:
    std::mutex mutex_;
    FileIdentity last_;
};

/// The names in a folder, unless it is the one that was looked at last.
std::vector<std::string> namesToLookAt(const FileDescriptor& folder, LastFolder& last) {
    std::vector<std::string> names;
    if (!folder || !last.isAnother(folder.get()) || listFolder(folder.get(), names) != 0) {
        names.clear();
    }
    return names;
}

FileDescriptor openFolder(const std::string& folder) {
    return FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
}

FileDescriptor openEntry(const FileDescriptor& folder, const std::string& name) {
    return FileDescriptor(
        openat(folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
}

void removeIfDead(const FileDescriptor& folder, const std::string& name, std::chrono::seconds age) {
    const FileDescriptor file = openEntry(folder, name);
    struct stat status {};
    if (file && isDead(file.get(), age) &&
        fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        identityOf(file.get()) == FileIdentity{status.st_dev, status.st_ino}) {
        std::ignore = unlinkat(folder.get(), name.c_str(), 0);
    }
}

}  // namespace

bool TemporaryFile::open(const std::string& wantedPath, ErrorSlot& error) {
    path = wantedPath;
    constexpr int kMostTries = 100;
    int errorNumber = EBUSY;
    // It is busy while another program is replacing it.
    for (int attempt = 0; attempt < kMostTries && errorNumber == EBUSY; ++attempt) {
        errorNumber = findTarget();
    }
    if (errorNumber == 0) {
        errorNumber = makeTemporary();
    }
    if (errorNumber == 0) {
        return true;
    }
    return errorNumber == EINVAL
               ? failFileBecause(error, path, "written", EINVAL, "it is no ordinary file")
               : failFile(error, path, "written", errorNumber);
}

int TemporaryFile::becomeExchangeable() {
    std::string plain = temporary.substr(0, temporary.size() - kPartEnding.size());
    if (std::rename(temporary.c_str(), plain.c_str()) != 0) {
        return errno;
    }
    temporary = std::move(plain);
    return 0;
}

void TemporaryFile::discard() {
    if (!temporary.empty()) {
        std::ignore = unlink(temporary.c_str());
        temporary.clear();
    }
}

int TemporaryFile::findTarget() {
    if (path.find('\0') != std::string::npos) {
        return EINVAL;
    }
    // Asked first by the system itself, which knows links that this user must not follow.
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) {
        return errno;
    }
    if (exists && !S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    ErrnoOr<std::string> resolved = resolveFinalLink(path);
    if (!resolved) {
        return resolved.errorNumber();
    }
    target = *std::move(resolved);
    if (!exists) {
        return target.empty() || target.back() == '/' ? ENOENT : 0;
    }
    ErrnoOr<FileDescriptor> opened = openForMetadata(target, false);
    if (!opened) {
        return opened.errorNumber();
    }
    old = *std::move(opened);
    return identityOf(old.get()) == FileIdentity{status.st_dev, status.st_ino} ? 0 : EBUSY;
}

int TemporaryFile::makeTemporary() {
    const std::string folder = parentFolder(target);
    const std::string name = lastComponent(target);
    // Contents that replace an existing file stay private until they have that file's mode.
    const mode_t mode = old ? 0600 : 0666;
    constexpr int kMostTries = 100;
    for (int attempt = 0; attempt < kMostTries; ++attempt) {
        std::string candidate = joinPath(folder, temporaryName(name)).append(kPartEnding);
        file = FileDescriptor(
            ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
        if (file) {
            // Where files cannot be locked, the age alone tells the living from the dead.
            std::ignore = flock(file.get(), LOCK_EX | LOCK_NB);
            temporary = std::move(candidate);
            return 0;
        }
        if (errno != EEXIST && errno != EINTR) {
            return errno;
        }
    }
    return EEXIST;
}

void removeDeadTemporaries(const std::string& folder, std::chrono::seconds age) {
    static LastFolder last;
    const FileDescriptor opened = openFolder(folder);
    for (const std::string& name : namesToLookAt(opened, last)) {
        if (isPartName(name)) {
            removeIfDead(opened, name, age);
        }
    }
}

std::vector<LeftFile> filesLeftAside(const std::string& folder, std::chrono::seconds age) {
    static LastFolder last;
    const FileDescriptor opened = openFolder(folder);
    std::vector<LeftFile> left;
    for (const std::string& name : namesToLookAt(opened, last)) {
        const std::string_view original = nameWithin(name);
        FileDescriptor file = original.empty() ? FileDescriptor() : openEntry(opened, name);
        if (file && isLeft(file.get(), age)) {
            left.push_back({.file = std::move(file),
                            .path = joinPath(folder, name),
                            .original = std::string(original)});
        }
    }
    return left;
}

}  // namespace vornic::platform
