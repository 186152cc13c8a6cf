#include "platform/AtomicFile.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "platform/FileMetadata.h"
#include "platform/PathText.h"

namespace vornic::platform {

struct AtomicFile::State {
    /// As the caller named it, for messages.
    std::string path;
    /// What the path leads to, links followed.
    std::string target;
    std::string temporary;
    /// The file that is replaced; closed when there is none.
    FileDescriptor old;
    FileDescriptor file;

    State() = default;
    ~State() { discard(); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void discard() {
        if (!temporary.empty()) {
            static_cast<void>(unlink(temporary.c_str()) == 0);
            temporary.clear();
        }
    }
    /// @return 0 or the errno value.
    [[nodiscard]] int findTarget();
    [[nodiscard]] int makeTemporary();
    [[nodiscard]] int takeName(Durability durability);
    [[nodiscard]] int putInPlace(Durability durability, FileIdentity& identity);
};

int AtomicFile::State::findTarget() {
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
    int errorNumber = 0;
    std::optional<std::string> resolved = resolveFinalLink(path, errorNumber);
    if (!resolved) {
        return errorNumber;
    }
    target = std::move(*resolved);
    if (!exists) {
        return target.empty() || target.back() == '/' ? ENOENT : 0;
    }
    old = openForMetadata(target, false, errorNumber);
    if (old && identityOf(old.get()) != FileIdentity{status.st_dev, status.st_ino}) {
        return EBUSY;
    }
    return old ? 0 : errorNumber;
}

int AtomicFile::State::makeTemporary() {
    const std::string folder = parentFolder(target);
    const std::string name = lastComponent(target);
    // Contents that replace an existing file stay private until they have that file's mode.
    const mode_t mode = old ? 0600 : 0666;
    constexpr int kMostTries = 100;
    for (int attempt = 0; attempt < kMostTries; ++attempt) {
        std::string candidate = joinPath(folder, temporaryName(name));
        file = FileDescriptor(
            ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
        if (file) {
            temporary = std::move(candidate);
            return 0;
        }
        if (errno != EEXIST && errno != EINTR) {
            return errno;
        }
    }
    return EEXIST;
}

// Gives the temporary file the name of the target. File systems take a rename over another file for
// a program that wants its data safe, and send them to the disk; an exchange writes nothing.
int AtomicFile::State::takeName(Durability durability) {
    const auto exchange = [this] {
        return renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) ==
               0;
    };
    if (durability == Durability::passing && exchange()) {
        if (unlink(temporary.c_str()) == 0) {
            temporary.clear();
            return 0;
        }
        // What has come in the target's place meanwhile, a folder say, stays there.
        const int errorNumber = errno;
        static_cast<void>(exchange());
        return errorNumber;
    }
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        return errno;
    }
    temporary.clear();
    return 0;
}

int AtomicFile::State::putInPlace(Durability durability, FileIdentity& identity) {
    struct stat status {};
    if (old && fstat(old.get(), &status) == 0) {
        copyOwnerAttributesAndMode(old.get(), status, file.get());
    }
    int errorNumber = durability == Durability::synced ? synchronize(file.get()) : 0;
    identity = identityOf(file.get());
    const int closeError = file.close();
    if (errorNumber == 0) {
        errorNumber = closeError;
    }
    if (errorNumber != 0) {
        return errorNumber;
    }
    errorNumber = takeName(durability);
    if (errorNumber != 0) {
        return errorNumber;
    }
    if (durability == Durability::synced) {
        // The new contents are in place and safe on the disk; a folder that cannot be synced can
        // at worst bring the old ones back after a loss of power, so that this is no failure.
        static_cast<void>(synchronizeFolder(parentFolder(target)));
    }
    return 0;
}

AtomicFile::AtomicFile() = default;
AtomicFile::~AtomicFile() = default;

bool AtomicFile::open(const std::string& path, ErrorSlot& error) {
    identity_.reset();
    state_ = std::make_unique<State>();
    state_->path = path;
    constexpr int kMostTries = 100;
    int errorNumber = EBUSY;
    // It is busy while another program is replacing it.
    for (int attempt = 0; attempt < kMostTries && errorNumber == EBUSY; ++attempt) {
        errorNumber = state_->findTarget();
    }
    if (errorNumber == 0) {
        errorNumber = state_->makeTemporary();
    }
    if (errorNumber == 0) {
        return true;
    }
    state_.reset();
    return errorNumber == EINVAL
               ? failFileBecause(error, path, "written", EINVAL, "it is no ordinary file")
               : failFile(error, path, "written", errorNumber);
}

bool AtomicFile::write(std::string_view bytes, ErrorSlot& error) {
    if (!state_) {
        error = posixError("Nothing can be written", EBADF);
        return false;
    }
    const int errorNumber = writeAll(state_->file.get(), bytes.data(), bytes.size());
    if (errorNumber == 0) {
        return true;
    }
    failFile(error, state_->path, "written", errorNumber);
    abort();
    return false;
}

bool AtomicFile::commit(Durability durability, ErrorSlot& error) {
    if (!state_) {
        error = posixError("Nothing can be written", EBADF);
        return false;
    }
    FileIdentity identity;
    const int errorNumber = state_->putInPlace(durability, identity);
    if (errorNumber == 0) {
        identity_ = identity;
    } else {
        failFile(error, state_->path, "written", errorNumber);
    }
    abort();
    return errorNumber == 0;
}

void AtomicFile::abort() {
    state_.reset();
}

bool writeFileAtomically(const std::string& path, std::string_view bytes, Durability durability,
                         ErrorSlot& error) {
    AtomicFile file;
    return file.open(path, error) && file.write(bytes, error) && file.commit(durability, error);
}

}  // namespace vornic::platform
