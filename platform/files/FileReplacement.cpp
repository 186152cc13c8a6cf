#include "platform/files/FileReplacement.h"

#include <atomic>
#include <cerrno>
#include <new>
#include <optional>
#include <tuple>

#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryFile.h"
#include "platform/files/TemporaryName.h"
#include "platform/items/ExtendedAttributes.h"
#include "platform/items/FileMetadata.h"

namespace vornic::platform {

namespace {

std::atomic<FileReplacement::Hook>& installedHook() {
    static std::atomic<FileReplacement::Hook> hook = nullptr;
    return hook;
}

void reach(FileReplacement::Moment moment) {
    if (const FileReplacement::Hook hook = installedHook()) {
        hook(moment);
    }
}

bool hasContents(const std::string& path, const ContentDigest::Value& digest) {
    const ErrnoOr<FileDescriptor> file = openRegularFile(path, false);
    return file && ContentDigest::ofFile(file->get()).value() == digest;
}

/// True when what stands at the path is what was read.
/// @param isRenamed true when this process has renamed it, which is a change of its own
bool isStill(const FileSnapshot& expected, const std::string& path, bool isRenamed) {
    std::optional<FileVersion> now = versionAt(path).value();
    if (now && isRenamed) {
        now->changed = expected.version.changed;
    }
    if (!now || compareVersions(*now, expected.version) == VersionMatch::different) {
        return false;
    }
    return *now == expected.version || hasContents(path, expected.digest);
}

/// The same for what this process has renamed and must not leave under that name. What cannot be
/// looked at for want of memory counts as changed.
bool isStillAside(const FileSnapshot& expected, const std::string& path) {
    try {
        return isStill(expected, path, true);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// True for what tells that this user or this volume cannot keep something at all.
bool isBeyondReach(int errorNumber) {
    return errorNumber == EPERM || errorNumber == EACCES || errorNumber == EINVAL ||
           errorNumber == EOPNOTSUPP || errorNumber == ENOSYS;
}

/// @return 0, or the errno value for which `to` does not have this attribute of `from`.
int keepAttribute(int from, int to, const std::string& name) {
    const ErrnoOr<std::string> value = extendedAttribute(from, name);
    if (!value || extendedAttribute(to, name).value() == value.value()) {
        return value.errorNumber();
    }
    const int errorNumber = setExtendedAttribute(to, name, *value);
    // An access control list, say, of users that this volume does not know.
    return errorNumber == EINVAL ? 0 : errorNumber;
}

/// Gives `to` owner, attributes and mode of `from`. @return 0, or the errno value for which
/// something that could be kept was not.
int keepMetadata(int from, int to) {
    struct stat status {};
    struct stat own {};
    if (fstat(from, &status) != 0 || fstat(to, &own) != 0) {
        return errno;
    }
    const bool hasOwner = own.st_uid == status.st_uid && own.st_gid == status.st_gid;
    if (!hasOwner && fchown(to, status.st_uid, status.st_gid) != 0 && !isBeyondReach(errno)) {
        return errno;
    }
    if (const int errorNumber = copyOwnerAttributesAndMode(from, status, to); errorNumber != 0) {
        return errorNumber;
    }
    const auto names = extendedAttributeNames(from);
    if (!names) {
        return names.errorNumber();
    }
    for (const std::string& name : *names) {
        const int errorNumber = keepAttribute(from, to, name);
        if (losesAttribute(name, errorNumber)) {
            return errorNumber;
        }
    }
    return 0;
}

}  // namespace

struct FileReplacement::State : TemporaryFile {
    enum class Outcome { done, changed };

    /// What was written, as it was when it was finished.
    std::optional<FileVersion> own;

    /// Writes the rest of what belongs to the file, and closes it. @return 0 or the errno value.
    [[nodiscard]] int finish();
    [[nodiscard]] ErrnoOr<Outcome> takeName(const FileSnapshot& expected);
    /// After the exchange, with what came out under the temporary name.
    [[nodiscard]] Outcome judge(const FileSnapshot& expected);
    void giveBack();
    [[nodiscard]] bool isOwn(const std::string& where) const;
    [[nodiscard]] ErrnoOr<Outcome> takeNameInSteps(const FileSnapshot& expected);
};

int FileReplacement::State::finish() {
    if (old) {
        if (const int lost = keepMetadata(old.get(), file.get()); lost != 0) {
            return lost;
        }
    }
    int errorNumber = synchronize(file.get());
    if (errorNumber == 0) {
        const ErrnoOr<FileVersion> version = versionOf(file.get());
        own = version.value();
        errorNumber = version.errorNumber();
    }
    const int closeError = file.close();
    return errorNumber != 0 ? errorNumber : closeError;
}

ErrnoOr<FileReplacement::State::Outcome> FileReplacement::State::takeName(
    const FileSnapshot& expected) {
    if (!isStill(expected, target, false)) {
        return Outcome::changed;
    }
    reach(Moment::beforeExchange);
    if (const int errorNumber = becomeExchangeable(); errorNumber != 0) {
        return Errno{errorNumber};
    }
    const ErrnoOr<Exchange> exchange = exchangeNames(temporary, target);
    if (!exchange) {
        return Errno{exchange.errorNumber()};
    }
    if (*exchange == Exchange::unavailable) {
        return takeNameInSteps(expected);
    }
    return judge(expected);
}

FileReplacement::State::Outcome FileReplacement::State::judge(const FileSnapshot& expected) {
    reach(Moment::afterExchange);
    if (isStillAside(expected, temporary)) {
        return Outcome::done;
    }
    giveBack();
    return Outcome::changed;
}

// Other programs may go on replacing the file meanwhile. What an exchange brings out is either what
// the exchange before has put there, and can go, or newer than that, and is put back in its turn.
// Nothing that came out is removed before something newer has taken its place.
void FileReplacement::State::giveBack() {
    constexpr int kMostTurns = 100;
    std::optional<FileIdentity> placed;
    std::optional<FileSnapshot> placedContents;
    for (int turn = 0; turn < kMostTurns; ++turn) {
        reach(Moment::beforeReturn);
        const std::optional<FileIdentity> returned = fileIdentity(temporary);
        const std::optional<FileSnapshot> returnedContents = snapshotAt(temporary);
        if (exchangeNames(temporary, target).value() != Exchange::done) {
            // Nothing stands at the target any more, say.
            static_cast<void>(renameWithoutReplacing(temporary, target));
            break;
        }
        const bool isPlaced = placed && fileIdentity(temporary) == placed &&
                              (!placedContents || isStillAside(*placedContents, temporary));
        if (isPlaced || (!placed && isOwn(temporary))) {
            return;
        }
        placed = returned;
        placedContents = returnedContents;
    }
    temporary.clear();
}

// False for what was written here once another program has written into it.
bool FileReplacement::State::isOwn(const std::string& where) const {
    const ErrnoOr<FileVersion> now = versionAt(where);
    return now && own && now->identity == own->identity && now->size == own->size &&
           now->modified == own->modified;
}

// Where names cannot be exchanged. Nothing stands at the target for a moment, and whatever comes
// there meanwhile is newer and stays.
ErrnoOr<FileReplacement::State::Outcome> FileReplacement::State::takeNameInSteps(
    const FileSnapshot& expected) {
    const std::string aside = joinPath(parentFolder(target), temporaryName(lastComponent(target)));
    int errorNumber = renameWithoutReplacing(target, aside);
    if (errorNumber != 0) {
        return Errno{errorNumber};
    }
    reach(Moment::afterExchange);
    const bool isExpected = isStillAside(expected, aside);
    errorNumber = renameWithoutReplacing(isExpected ? temporary : aside, target);
    if (errorNumber != 0 && errorNumber != EEXIST) {
        static_cast<void>(renameWithoutReplacing(aside, target));
        return Errno{errorNumber};
    }
    if (errorNumber == EEXIST || isExpected) {
        std::ignore = unlink(aside.c_str());
    }
    if (errorNumber != 0 || !isExpected) {
        return Outcome::changed;
    }
    temporary.clear();
    return Outcome::done;
}

void FileReplacement::setHook(Hook hook) {
    installedHook() = hook;
}

FileReplacement::FileReplacement() = default;
FileReplacement::~FileReplacement() = default;

bool FileReplacement::open(const std::string& path, ErrorSlot& error) {
    state_ = std::make_unique<State>();
    if (!state_->open(path, error)) {
        state_.reset();
        return false;
    }
    removeDeadTemporaries(parentFolder(state_->target));
    return true;
}

bool FileReplacement::write(std::string_view bytes, ErrorSlot& error) {
    const int errorNumber = writeAllForSync(state_->file.get(), bytes);
    return errorNumber == 0 || failFile(error, state_->path, "written", errorNumber);
}

bool FileReplacement::commit(const FileSnapshot& expected, ErrorSlot& error) {
    // Made before the names are exchanged: what is in place must not be told as a failure for want
    // of memory.
    const std::string path = state_->path;
    const std::string folder = parentFolder(state_->target);
    const int finishError = state_->finish();
    const ErrnoOr<State::Outcome> outcome =
        finishError == 0 ? state_->takeName(expected) : Errno{finishError};
    state_.reset();
    if (outcome && *outcome == State::Outcome::changed) {
        return failFileBecause(error, path, "written", EBUSY,
                               "another program has changed it since it was read");
    }
    if (!outcome) {
        return failFile(error, path, "written", outcome.errorNumber());
    }
    // As for `AtomicFile`: a folder that cannot be synced is no failure.
    static_cast<void>(synchronizeFolder(folder));
    return true;
}

}  // namespace vornic::platform
