#include "job/UndoSwap.h"

#include <cerrno>
#include <tuple>
#include <utility>

#include <unistd.h>

#include "base/PathText.h"
#include "job/JournalFiles.h"
#include "job/UndoRemains.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Rename.h"
#include "platform/locks/FileClaim.h"
#include "platform/volumes/FileTransfer.h"

namespace vornic {

using platform::Exchange;
using platform::FileIdentity;
using platform::renameWithoutReplacing;

UndoSwap::UndoSwap(const platform::Trash& trash, const UndoPlaces& places, const Observer& observer)
    : trash_(trash),
      places_(places),
      observer_(observer),
      target_(pathInto(places.target.folder.get(), places.target.name)),
      trashed_(pathInto(trash.descriptor(), places.name)),
      waiting_(undoWaitingPath(target_)),
      aside_(undoAsidePath(target_)) {}

UndoSwapResult UndoSwap::run() && {
    return places_.present ? swapAtOnce() : restore();
}

UndoSwapResult UndoSwap::swapAtOnce() {
    const std::optional<FileIdentity> original = platform::fileIdentity(trashed_);
    const ErrnoOr<Exchange> exchange = platform::exchangeNames(target_, trashed_);
    if (exchange.value() == Exchange::unavailable || exchange.errorNumber() == EXDEV) {
        return swapBeside();
    }
    if (!exchange) {
        return failed(exchange.errorNumber());
    }
    tell(UndoStep::exchanged);
    if (!isSameFile(*places_.present, trashed_)) {
        giveBack(trashed_, original);
        return changed();
    }
    tell(UndoStep::compared);
    // A note that cannot be renewed is still right about the place.
    static_cast<void>(trash_.replaceInfo(places_.name, places_.target.path()));
    result_.isDone = true;
    result_.result = joinPath(trash_.folder(), places_.name);
    return std::move(result_);
}

// What came out gets its place back. Other programs may go on saving the file meanwhile: what an
// exchange brings out is what the one before has put there, or else newer, and is put back in its
// turn.
void UndoSwap::giveBack(const std::string& other, std::optional<FileIdentity> own) {
    constexpr int kMostTurns = 100;
    for (int turn = 0; turn < kMostTurns; ++turn) {
        const std::optional<FileIdentity> returned = platform::fileIdentity(other);
        if (platform::exchangeNames(target_, other).value() != Exchange::done) {
            // Nothing stands at the path any more, say.
            static_cast<void>(renameWithoutReplacing(other, target_));
            return;
        }
        if (platform::fileIdentity(other) == own) {
            return;
        }
        own = returned;
    }
}

UndoSwapResult UndoSwap::swapBeside() {
    if (!placeBeside()) {
        return failed(EIO);
    }
    tell(UndoStep::waiting);
    const ErrnoOr<Exchange> exchange = platform::exchangeNames(waiting_, target_);
    if (!exchange) {
        dropWaiting();
        return failed(exchange.errorNumber());
    }
    if (*exchange == Exchange::unavailable) {
        return swapInSteps();
    }
    tell(UndoStep::exchanged);
    if (!isSameFile(*places_.present, waiting_)) {
        giveBack(waiting_, own_);
        dropWaiting();
        return changed();
    }
    tell(UndoStep::compared);
    const auto result =
        recycleBeside(trash_, places_.target, lastComponent(waiting_), result_.error);
    if (result) {
        return finish(*result);
    }
    giveBack(waiting_, own_);
    if (platform::fileIdentity(target_) == own_) {
        return leaveBeside(waiting_);
    }
    dropWaiting();
    return failed(EIO);
}

// Where names cannot be exchanged. Nothing stands at the path for a moment, and what comes there
// meanwhile is newer and stays.
UndoSwapResult UndoSwap::swapInSteps() {
    // A repair of the same file must not take what is aside for something that was left.
    const ErrnoOr<platform::FileDescriptor> present = platform::openRegularFile(target_, false);
    if (present) {
        static_cast<void>(platform::claimFile(present->get()));
    }
    int errorNumber = renameWithoutReplacing(target_, aside_);
    if (errorNumber != 0) {
        dropWaiting();
        return failed(errorNumber);
    }
    tell(UndoStep::exchanged);
    if (!isSameFile(*places_.present, aside_)) {
        return giveAsideBack(EBUSY);
    }
    tell(UndoStep::compared);
    errorNumber = renameWithoutReplacing(waiting_, target_);
    if (errorNumber != 0) {
        return giveAsideBack(errorNumber);
    }
    const auto result = recycleBeside(trash_, places_.target, lastComponent(aside_), result_.error);
    if (result) {
        return finish(*result);
    }
    const bool isOwn = platform::fileIdentity(target_) == own_;
    return isOwn && renameWithoutReplacing(target_, waiting_) == 0 ? giveAsideBack(EIO)
                                                                   : leaveBeside(aside_);
}

UndoSwapResult UndoSwap::giveAsideBack(int errorNumber) {
    dropWaiting();
    const int renameError = renameWithoutReplacing(aside_, target_);
    if (renameError == 0) {
        return errorNumber == EBUSY || errorNumber == EEXIST ? changed() : failed(errorNumber);
    }
    // What another program has put there is newer; what it would have replaced is in its way.
    ErrorSlot ignored;
    const auto placed = recycleBeside(trash_, places_.target, lastComponent(aside_), ignored);
    result_.result = placed.value_or(userPath(aside_));
    result_.isBeside = !placed;
    return renameError == EEXIST ? changed() : failed(renameError);
}

// To a path at which nothing stands.
UndoSwapResult UndoSwap::restore() {
    int errorNumber = renameWithoutReplacing(trashed_, target_);
    if (errorNumber == 0) {
        trash_.removeInfo(places_.name);
        result_.isDone = true;
        return std::move(result_);
    }
    if (errorNumber != EXDEV) {
        return errorNumber == EEXIST ? changed() : failed(errorNumber);
    }
    if (!placeBeside()) {
        return failed(EIO);
    }
    tell(UndoStep::waiting);
    errorNumber = renameWithoutReplacing(waiting_, target_);
    if (errorNumber != 0) {
        dropWaiting();
        return errorNumber == EEXIST ? changed() : failed(errorNumber);
    }
    tell(UndoStep::exchanged);
    return finish("");
}

// A second name for the original beside the file; on another volume a copy of it.
bool UndoSwap::placeBeside() {
    clearWaiting(trash_, places_.name, places_.target);
    const ErrnoOr<platform::FileDescriptor> original = platform::openRegularFile(trashed_, false);
    const bool hasSecondName = original && platform::linkOpenFile(original->get(), waiting_) == 0;
    ErrorSlot error;
    if (!hasSecondName && !platform::copyTellingLosses(trashed_, waiting_, result_.losses, error)) {
        result_.error = cannotPutBack(error->code);
        return false;
    }
    own_ = platform::fileIdentity(waiting_);
    if (hasContentsOf(places_.original, waiting_)) {
        return true;
    }
    dropWaiting();
    return false;
}

// What is beside the file by now: the original's copy, or what another program has replaced at the
// path since.
void UndoSwap::dropWaiting() {
    if (platform::fileIdentity(waiting_) == own_ && hasContentsOf(places_.original, waiting_)) {
        std::ignore = unlink(waiting_.c_str());
    } else if (!clearWaiting(trash_, places_.name, places_.target)) {
        result_.result = userPath(waiting_);
        result_.isBeside = true;
    }
}

// Once the original is in its place for good.
UndoSwapResult UndoSwap::finish(const std::string& result) {
    tell(UndoStep::trashed);
    // The copy in the Trash goes only when the one in the place would survive a loss of power.
    const std::string folder = platform::descriptorPath(places_.target.folder.get());
    if (platform::synchronizeFolder(folder) == 0) {
        dropOriginal(trash_, places_.name, places_.original, places_.target);
    }
    result_.isDone = true;
    result_.result = result;
    return std::move(result_);
}

UndoSwapResult UndoSwap::leaveBeside(const std::string& path) {
    result_.isDone = true;
    result_.isBeside = true;
    result_.result = userPath(path);
    return std::move(result_);
}

std::string UndoSwap::userPath(const std::string& path) const {
    return joinPath(places_.target.folderPath, lastComponent(path));
}

Error UndoSwap::cannotPutBack(int errorNumber) const {
    return posixError("The file " + places_.target.path() + " cannot be put back", errorNumber);
}

UndoSwapResult UndoSwap::failed(int errorNumber) {
    if (!result_.error) {
        result_.error = cannotPutBack(errorNumber);
    }
    return std::move(result_);
}

UndoSwapResult UndoSwap::changed() {
    result_.error = Error{.domain = std::string(kPosixErrorDomain),
                          .code = EBUSY,
                          .description = "The file " + places_.target.path() +
                                         " cannot be put back: it was changed in the meantime."};
    return std::move(result_);
}

void UndoSwap::tell(UndoStep step) const {
    if (observer_) {
        observer_(step);
    }
}

}  // namespace vornic
