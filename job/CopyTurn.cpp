#include "job/CopyTurn.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/locks/FileClaim.h"

namespace vornic {

using platform::Claim;
using platform::FileDescriptor;

namespace {

using State = FoundCopy::State;

enum class Look { absent, left, busy, changed };

// Folders, pipes and the like are nobody's working copy, and so is a link that leads nowhere.
bool canBeClaimed(const std::string& path, bool followLinks, struct stat& status) {
    return fstatat(AT_FDCWD, path.c_str(), &status, followLinks ? 0 : AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(status.st_mode);
}

ErrnoOr<Look> lookAtUnreadable(int errorNumber, const struct stat& status) {
    if (errorNumber == ENOENT || errorNumber == ELOOP || errorNumber == EINVAL ||
        errorNumber == EISDIR) {
        return Look::changed;
    }
    // A job can read its own file, so that one of this user's that cannot be read is not a job's.
    if (errorNumber == EACCES && status.st_uid == geteuid()) {
        return Look::left;
    }
    return Errno{errorNumber};
}

// @return the errno value when it cannot be determined whether a running job has claimed it.
ErrnoOr<Look> lookAt(const std::string& path, bool followLinks, FileDescriptor& file) {
    struct stat status {};
    if (!platform::nodeExists(path)) {
        return Look::absent;
    }
    if (!canBeClaimed(path, followLinks, status)) {
        return Look::left;
    }
    ErrnoOr<FileDescriptor> opened = platform::openRegularFile(path, followLinks);
    if (!opened) {
        return lookAtUnreadable(opened.errorNumber(), status);
    }
    file = *std::move(opened);
    const ErrnoOr<Claim> claim = platform::claimFile(file.get());
    if (!claim) {
        return Errno{claim.errorNumber()};
    }
    if (*claim == Claim::busy) {
        return Look::busy;
    }
    // The job that has given it back may have moved it meanwhile.
    const bool isSame = canBeClaimed(path, followLinks, status) &&
                        platform::identityOf(file.get()) ==
                            platform::FileIdentity{.device = status.st_dev, .inode = status.st_ino};
    return isSame ? Look::left : Look::changed;
}

// Looks again after short pauses, for no system call waits for a claim and for a cancellation.
class Patience {
  public:
    Patience(std::string path, const Waiting& waiting)
        : path_(std::move(path)), waiting_(waiting) {}

    // False when the wait was cancelled.
    bool pause() {
        constexpr std::chrono::seconds kSilence{1};
        constexpr std::chrono::milliseconds kLongestPause{50};
        if (waiting_.stop.stopRequested()) {
            return false;
        }
        if (!isTold_ && std::chrono::steady_clock::now() - start_ >= kSilence) {
            isTold_ = true;
            if (waiting_.tell) {
                waiting_.tell(path_);
            }
        }
        std::this_thread::sleep_for(pause_);
        pause_ = std::min(pause_ * 2, kLongestPause);
        return true;
    }

  private:
    std::string path_;
    const Waiting& waiting_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::milliseconds pause_{1};
    bool isTold_ = false;
};

}  // namespace

FoundCopy awaitTurn(const std::string& path, bool followLinks, const Waiting& waiting,
                    ErrorSlot& error) {
    Patience patience(path, waiting);
    for (;;) {
        FileDescriptor file;
        const ErrnoOr<Look> look = lookAt(path, followLinks, file);
        if (!look) {
            platform::failFile(error, path, "claimed", look.errorNumber());
            return {.state = State::unknown, .file = {}};
        }
        switch (*look) {
            case Look::absent:
                return {.state = State::absent, .file = {}};
            case Look::left:
                return {.state = State::left, .file = std::move(file)};
            case Look::busy:
            case Look::changed:
                break;
        }
        // Not claimed during the pause, in which another job may look at it.
        file = FileDescriptor();
        if (!patience.pause()) {
            return {.state = State::cancelled, .file = {}};
        }
    }
}

}  // namespace vornic
