#include "job/WorkingCopy.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "base/PathText.h"
#include "job/CopyTurn.h"
#include "job/FileSwap.h"
#include "job/LeftFiles.h"
#include "job/MoveToTrash.h"
#include "job/NamedSources.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryName.h"
#include "platform/items/FileMetadata.h"
#include "platform/locks/FileClaim.h"
#include "platform/locks/FileWriters.h"
#include "platform/processes/FreeMemory.h"
#include "platform/volumes/FileTransfer.h"

namespace vornic {

using platform::failFile;
using platform::FileDescriptor;

namespace {

constexpr int kMostTries = 100;

// The rest of the name of a file that may be removed when a killed run has left it.
constexpr const char* kPart = ".part";

// Removes a file under a name that no other program knows, unless it is given another one.
class Discarded {
  public:
    explicit Discarded(const SavedCopy& copy) : copy_(copy) {}
    ~Discarded() {
        // Under its name another program's file may stand, which was moved there.
        if (!copy_.path.empty() && copy_.file && copy_.isAt(copy_.path)) {
            std::ignore = unlink(copy_.path.c_str());
        }
    }
    Discarded(const Discarded&) = delete;
    Discarded& operator=(const Discarded&) = delete;

  private:
    const SavedCopy& copy_;
};

}  // namespace

WorkingCopy::WorkingCopy(std::string source, std::string path, Waiting waiting)
    : source_(std::move(source)), path_(std::move(path)), waiting_(std::move(waiting)) {
    own_.path = path_;
}

bool WorkingCopy::sourceExists() const {
    return platform::fileExists(source_);
}

bool WorkingCopy::settleLeft() {
    for (Note& note : clearLeftFiles(parentFolder(source_))) {
        notes_.push_back(std::move(note));
    }
    const std::string aside = FileSwap::asidePath(source_);
    ErrorSlot error;
    const FoundCopy found = awaitTurn(aside, true, waiting_, error);
    if (found.state != FoundCopy::State::left) {
        return found.state != FoundCopy::State::cancelled;
    }
    const int errorNumber = platform::renameWithoutReplacing(aside, source_);
    if (errorNumber == 0) {
        notes_.push_back({"repair-brought-back"_rule, {{"path", source_}}});
        return true;
    }
    const std::optional<std::string> placed =
        errorNumber == EEXIST ? moveToTrash(aside, lastComponent(source_), error) : std::nullopt;
    notes_.push_back(placed
                         ? Note{"repair-left-in-trash"_rule, {{"path", source_}, {"left", *placed}}}
                         : Note{"repair-left-aside"_rule, {{"path", source_}, {"left", aside}}});
    return true;
}

WorkingCopy::Clearing WorkingCopy::clearPath(ErrorSlot& error) {
    const FoundCopy found = awaitTurn(path_, false, waiting_, error);
    switch (found.state) {
        case FoundCopy::State::absent:
            return settleLeft() ? Clearing::done : Clearing::cancelled;
        case FoundCopy::State::cancelled:
            return Clearing::cancelled;
        case FoundCopy::State::unknown:
            return Clearing::noTurn;
        case FoundCopy::State::left:
            break;
    }
    if (NamedSource::isAt(path_)) {
        platform::failFileBecause(error, path_, "moved to the Trash", EBUSY,
                                  "it is open itself, or named as a file to be repaired");
        return Clearing::refused;
    }
    return recycleLeft(path_, lastComponent(path_), error) ? Clearing::done : Clearing::failed;
}

bool WorkingCopy::recycleLeft(const std::string& at, const std::string& name, ErrorSlot& error) {
    std::optional<std::string> placed = moveToTrash(at, name, error);
    if (placed) {
        notes_.push_back({.rule = "repair-old-copy-in-trash"_rule,
                          .arguments = {{"copy", path_}, {"left", *placed}},
                          .isForLog = true});
        recycled_.push_back(std::move(*placed));
        return true;
    }
    return false;
}

WorkingCopy::Clearing WorkingCopy::create(Contents contents, ErrorSlot& error) {
    discardPath_ = joinPath(parentFolder(path_), platform::temporaryName(lastComponent(path_)));
    isWhole_ = false;
    for (int attempt = 0; attempt < kMostTries; ++attempt) {
        opened_ = SourceFile::open(source_, error);
        if (!opened_ || isTooLarge(error)) {
            return Clearing::failed;
        }
        SavedCopy made;
        if (!makeTemporary(made, error)) {
            return Clearing::failed;
        }
        const Discarded discarded(made);
        const int errorNumber = platform::renameWithoutReplacing(made.path, path_);
        if (errorNumber == 0) {
            std::swap(own_.file, made.file);
            own_.version = made.version;
            isSaved_ = false;
            isWhole_ = fill(own_, contents, error);
            if (isWhole_) {
                return Clearing::done;
            }
            static_cast<void>(discard());
            return Clearing::failed;
        }
        if (errorNumber != EEXIST) {
            failFile(error, path_, "made", errorNumber);
            return Clearing::failed;
        }
        // Another run was faster, or another program.
        if (const Clearing clearing = clearPath(error); clearing != Clearing::done) {
            return clearing;
        }
    }
    failFile(error, path_, "made", EEXIST);
    return Clearing::failed;
}

bool WorkingCopy::isTooLarge(ErrorSlot& error) const {
    const std::optional<std::uint64_t> free = platform::freeMemory();
    if (!free || opened_->version.size <= *free) {
        return false;
    }
    platform::failFileBecause(error, source_, "copied", EFBIG, "it is larger than the free memory");
    return true;
}

bool WorkingCopy::makeTemporary(SavedCopy& copy, ErrorSlot& error) const {
    const std::string folder = parentFolder(path_);
    const std::string name = lastComponent(path_);
    int errorNumber = EEXIST;
    for (int attempt = 0; attempt < kMostTries && errorNumber == EEXIST; ++attempt) {
        copy.path = joinPath(folder, platform::temporaryName(name)) + kPart;
        copy.file = FileDescriptor(
            ::open(copy.path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
        errorNumber = copy.file ? 0 : errno;
    }
    if (!copy.file) {
        return failFile(error, path_, "made", errorNumber);
    }
    copy.version.identity = platform::identityOf(copy.file.get());
    const ErrnoOr<platform::Claim> claim = platform::claimFile(copy.file.get());
    if (claim && *claim != platform::Claim::busy) {
        return true;
    }
    std::ignore = unlink(copy.path.c_str());
    return failFile(error, path_, "claimed", claim ? EWOULDBLOCK : claim.errorNumber());
}

bool WorkingCopy::fill(SavedCopy& copy, Contents contents, ErrorSlot& error) const {
    struct stat status {};
    const int from = opened_->file.get();
    int errorNumber = fstat(from, &status) == 0 ? 0 : errno;
    if (errorNumber == 0 && contents == Contents::ofSource) {
        errorNumber = platform::copyContents(from, copy.file.get());
    }
    if (errorNumber != 0) {
        return failFile(error, source_, "copied to " + path_, errorNumber);
    }
    // What is missing here is looked for again when the copy is saved.
    static_cast<void>(platform::copyMetadata(from, status, copy.file.get()));
    static_cast<void>(platform::copyTimes(status, copy.file.get()));
    const ErrnoOr<platform::FileVersion> version = platform::versionOf(copy.file.get());
    if (!version) {
        return failFile(error, source_, "copied to " + path_, version.errorNumber());
    }
    copy.version = *version;
    return true;
}

std::optional<std::string> WorkingCopy::read(ErrorSlot& error, platform::ContentsWatcher* watcher) {
    std::string bytes;
    platform::DigestedContents digested(watcher);
    const auto readSource = [&] {
        return opened_ ? platform::readContents(opened_->file.get(), bytes, digested) : EBADF;
    };
    int errorNumber = readSource();
    if (errorNumber != 0 && opened_) {
        errorNumber = readSource();
    }
    if (errorNumber != 0) {
        failFile(error, source_, "read", errorNumber);
        return std::nullopt;
    }
    const platform::ContentDigest::Value digest = digested.digest();
    isTorn_ = isTorn_ || (opened_->digest && opened_->digest != digest);
    opened_->digest = digest;
    return bytes;
}

void WorkingCopy::expect(const platform::ContentDigest::Value& digest) {
    if (opened_) {
        opened_->digest = digest;
    }
}

void WorkingCopy::save(const Writer& writer, ErrorSlot& error, Sending sending) {
    // The caller's may still hold an earlier step's error.
    ErrorSlot ownError;
    SavedCopy made;
    const Discarded discarded(made);
    if (!makeTemporary(made, ownError) || !write(made, writer, sending, ownError) ||
        !place(made, ownError)) {
        error = std::move(ownError);
        return;
    }
    own_.version = made.version;
    own_.digest = made.digest;
    std::swap(own_.file, made.file);
    isSaved_ = true;
}

bool WorkingCopy::write(SavedCopy& copy, const Writer& writer, Sending sending, ErrorSlot& error) {
    platform::ContentDigest digest;
    int errorNumber = 0;
    const auto writePiece = [&](std::string_view piece) {
        return sending == Sending::atOnce
                   ? platform::writeAllForSync(copy.file.get(), piece)
                   : platform::writeAll(copy.file.get(), piece.data(), piece.size());
    };
    const bool isWhole = writer([&](std::string_view bytes) {
        // What was digested is still in the processor's cache when it is written.
        constexpr std::size_t kPiece = std::size_t{1} << 20U;
        for (; !bytes.empty() && errorNumber == 0;
             bytes.remove_prefix(std::min(kPiece, bytes.size()))) {
            const std::string_view piece = bytes.substr(0, kPiece);
            digest.update(piece);
            errorNumber = writePiece(piece);
        }
        return errorNumber == 0;
    });
    struct stat status {};
    if (errorNumber == 0 && fstat(opened_->file.get(), &status) != 0) {
        errorNumber = errno;
    }
    if (!isWhole || errorNumber != 0) {
        return failFile(error, path_, "written", errorNumber != 0 ? errorNumber : ECANCELED);
    }
    lostMetadata_ = platform::copyMetadata(opened_->file.get(), status, copy.file.get());
    copy.digest = digest.value();
    const ErrnoOr<platform::FileVersion> version = platform::versionOf(copy.file.get());
    if (!version) {
        return failFile(error, path_, "written", version.errorNumber());
    }
    copy.version = *version;
    return true;
}

bool WorkingCopy::place(SavedCopy& copy, ErrorSlot& error) {
    // Without the ending: what an exchange brings out under this name may be another program's.
    const std::string plain = copy.path.substr(0, copy.path.size() - std::strlen(kPart));
    int errorNumber = platform::renameWithoutReplacing(copy.path, plain);
    if (errorNumber != 0) {
        return failFile(error, path_, "written", errorNumber);
    }
    copy.path = plain;
    errorNumber = EEXIST;
    for (int attempt = 0; attempt < kMostTries && errorNumber == EEXIST; ++attempt) {
        errorNumber = takeName(copy, error);
        if (error) {
            return false;
        }
    }
    return errorNumber == 0 || failFile(error, path_, "written", errorNumber);
}

// Gives a new file the name of the copy. @return 0, or the errno value; EEXIST when it is to be
// tried again. The slot is filled when what another program has put there cannot be moved away.
int WorkingCopy::takeName(const SavedCopy& copy, ErrorSlot& error) {
    const ErrnoOr<platform::Exchange> exchange = platform::exchangeNames(copy.path, path_);
    if (!exchange) {
        return exchange.errorNumber() == ENOENT ? platform::renameWithoutReplacing(copy.path, path_)
                                                : exchange.errorNumber();
    }
    if (*exchange == platform::Exchange::unavailable) {
        return takeNameInSteps(copy, error);
    }
    // With other bytes in it, it is another program's.
    if (own_.glanceAt(copy.path).value() == Standing::asExpected) {
        if (unlink(copy.path.c_str()) == 0) {
            return 0;
        }
        const int unlinkError = errno;
        static_cast<void>(platform::exchangeNames(copy.path, path_));
        return unlinkError;
    }
    if (recycleLeft(copy.path, lastComponent(path_), error)) {
        return 0;
    }
    static_cast<void>(platform::exchangeNames(copy.path, path_));
    return EBUSY;
}

// The same where names cannot be exchanged.
int WorkingCopy::takeNameInSteps(const SavedCopy& copy, ErrorSlot& error) {
    const ErrnoOr<platform::Removal> removal =
        platform::removeWhileIs(path_, own_.version.identity);
    if (!removal && removal.errorNumber() != ENOENT) {
        return removal.errorNumber();
    }
    if (removal.value() == platform::Removal::another &&
        !recycleLeft(path_, lastComponent(path_), error)) {
        return EBUSY;
    }
    return platform::renameWithoutReplacing(copy.path, path_);
}

void WorkingCopy::remove(ErrorSlot& error) {
    const ErrnoOr<platform::Removal> removal = removeOwn();
    if (!removal) {
        failFile(error, path_, "removed", removal.errorNumber());
    } else if (*removal == platform::Removal::another) {
        notes_.push_back(
            {.rule = "repair-copy-left"_rule, .arguments = {{"copy", path_}}, .isForLog = true});
    }
}

ErrnoOr<platform::Removal> WorkingCopy::removeOwn() const {
    const ErrnoOr<Standing> found = own_.glanceAt(path_);
    if (!found) {
        return Errno{found.errorNumber()};
    }
    switch (*found) {
        case Standing::asExpected:
            return platform::removeWhileIs(path_, own_.version.identity);
        case Standing::written:
        case Standing::another:
            return platform::Removal::another;
        case Standing::nothing:
            break;
    }
    return Errno{ENOENT};
}

int WorkingCopy::discard() noexcept {
    const ErrnoOr<Standing> found =
        own_.file ? own_.glanceAt(path_) : ErrnoOr<Standing>(Standing::nothing);
    if (!found) {
        return found.errorNumber();
    }
    if (*found != Standing::asExpected && (isWhole_ || *found != Standing::written)) {
        return 0;
    }
    const int errorNumber =
        platform::removeWhileIs(path_, own_.version.identity, discardPath_).errorNumber();
    return errorNumber == ENOENT ? 0 : errorNumber;
}

bool WorkingCopy::isSourceBeingWritten() const {
    return opened_ && platform::isOpenForWriting(opened_->file.get());
}

void WorkingCopy::synchronize() const {
    if (isSaved_) {
        static_cast<void>(platform::synchronize(own_.file.get()));
    }
}

SwapResult WorkingCopy::swap(SwapObserver& observer) {
    if (isTorn_) {
        return {.end = SwapEnd::sourceChanged, .original = source_, .repaired = path_, .error = {}};
    }
    if (!isSaved_ || !opened_) {
        return {.end = SwapEnd::unsaved, .original = source_, .repaired = "", .error = {}};
    }
    return FileSwap(*opened_, own_, observer).run();
}

std::vector<Note> WorkingCopy::takeNotes() {
    return std::exchange(notes_, {});
}

}  // namespace vornic
