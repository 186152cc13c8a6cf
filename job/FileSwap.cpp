#include "job/FileSwap.h"

#include <cerrno>
#include <optional>
#include <utility>

#include <unistd.h>

#include "base/PathText.h"
#include "job/MoveToTrash.h"
#include "platform/files/CarefulRemoval.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryName.h"
#include "platform/locks/FileClaim.h"

namespace vornic {

using platform::Exchange;

/// What stood at a path under which no other program writes.
struct SeenFile {
    std::optional<platform::FileVersion> version;
    std::optional<platform::ContentDigest::Value> digest;

    friend bool operator==(const SeenFile&, const SeenFile&) = default;

    static SeenFile at(const std::string& path) {
        SeenFile seen{.version = platform::versionAt(path).value(), .digest = {}};
        if (seen.version) {
            // Renaming changes it.
            seen.version->changed = {};
        }
        if (const ErrnoOr<platform::FileDescriptor> file = platform::openRegularFile(path, false)) {
            seen.digest = platform::ContentDigest::ofFile(file->get()).value();
        }
        return seen;
    }
};

FileSwap::FileSwap(const SourceFile& source, const SavedCopy& copy, SwapObserver& observer)
    : source_(source), copy_(copy), observer_(observer), aside_(asidePath(source.path)) {}

std::string FileSwap::asidePath(const std::string& source) {
    // Short enough for file systems that take less than 255 bytes.
    constexpr std::size_t kKeptOfName = 100;
    std::string name = lastComponent(source);
    if (name.size() > kKeptOfName) {
        const std::uint64_t rest = platform::ContentDigest::of(name)[0];
        name = std::string(truncateUTF8(name, kKeptOfName)) + "-" + std::to_string(rest);
    }
    return joinPath(parentFolder(source), "." + name + ".vornic.swap");
}

SwapResult FileSwap::run() && {
    ErrorSlot error;
    // May wait for a slow disk, so that the looks at the files come after it.
    if (const int syncError = platform::synchronize(copy_.file.get()); syncError != 0) {
        platform::failFile(error, copy_.path, "synchronized", syncError);
        return untouched(SwapEnd::failed, std::move(error));
    }
    const ErrnoOr<Standing> copy = copy_.glanceAt(copy_.path);
    if (copy.value() != Standing::asExpected) {
        return copyDiffers(copy);
    }
    observer_.reached(SwapPoint::verified);
    const SwapIntent about = intent();
    if (!observer_.willSwap(about, error)) {
        return untouched(SwapEnd::failed, std::move(error));
    }
    // The original will lie beside its path for a moment, where another run would take it for a
    // thing left by a dead one. A claim of somebody else keeps that run away just as well.
    static_cast<void>(platform::claimFile(source_.file.get()));
    SwapResult result;
    try {
        result = swap();
    } catch (...) {
        // Memory that has run out, say.
        restoreNames();
        observer_.didNotSwap(about);
        throw;
    }
    if (result.end == SwapEnd::done) {
        observer_.didSwap(about, result.original);
    } else {
        observer_.didNotSwap(about);
    }
    return result;
}

SwapIntent FileSwap::intent() const {
    return {.source = source_.path,
            .workingCopy = copy_.path,
            .sourceVersion = source_.version,
            .sourceDigest = source_.digest.value_or(platform::ContentDigest::Value{}),
            .copyVersion = copy_.version,
            .copyDigest = copy_.digest};
}

SwapResult FileSwap::swap() {
    // By this second name the copy goes to its place, and under it the original comes out.
    const int errorNumber = platform::linkOpenFile(copy_.file.get(), aside_);
    if (errorNumber == EEXIST) {
        ErrorSlot error;
        platform::failFile(error, aside_, "made", errorNumber);
        return untouched(SwapEnd::failed, std::move(error));
    }
    return errorNumber == 0 ? swapByExchange() : swapInSteps(copy_.path);
}

SwapResult FileSwap::swapByExchange() {
    // From now on nobody gets at the new file but by the source's path, once it has that.
    remark_ = dropCopyName();
    const ErrnoOr<Standing> copy = copy_.standingAt(aside_);
    if (copy.value() != Standing::asExpected) {
        return settleCopy(copyDiffers(copy));
    }
    const ErrnoOr<Exchange> exchange = platform::exchangeNames(aside_, source_.path);
    if (!exchange) {
        return settleCopy(notRenamed(exchange.errorNumber()));
    }
    if (*exchange == Exchange::unavailable) {
        return swapInSteps(aside_);
    }
    observer_.reached(SwapPoint::exchanged);
    return judgeExchange();
}

SwapResult FileSwap::judgeExchange() {
    ErrorSlot error;
    const ErrnoOr<Standing> out = source_.standingAt(aside_);
    if (!out) {
        platform::failFile(error, source_.path, "read", out.errorNumber());
    }
    const bool isExpected = out.value() == Standing::asExpected;
    observer_.reached(isExpected ? SwapPoint::compared : SwapPoint::differed);
    const ErrnoOr<Standing> in = copy_.standingAt(source_.path);
    if (!in) {
        platform::failFile(error, source_.path, "read", in.errorNumber());
    }
    if (in && *in != Standing::asExpected) {
        return giveWay(untouched(SwapEnd::sourceChanged, {}));
    }
    if (error) {
        return takeBack(SwapEnd::failed, std::move(error));
    }
    if (!isExpected) {
        return takeBack(SwapEnd::sourceChanged, {});
    }
    return recycleOriginal(&FileSwap::takeBack);
}

/// @param undo takes the swap back when the Trash does not take the original
SwapResult FileSwap::recycleOriginal(SwapResult (FileSwap::*undo)(SwapEnd, ErrorSlot)) {
    observer_.reached(SwapPoint::beforeTrash);
    ErrorSlot error;
    const auto original = recycle(aside_, error);
    return original ? finish(*original) : (this->*undo)(SwapEnd::trashFailed, std::move(error));
}

// Exchanges the names again.
SwapResult FileSwap::takeBack(SwapEnd end, ErrorSlot error) {
    const SeenFile placed = SeenFile::at(aside_);
    SwapResult result = untouched(end, std::move(error));
    const ErrnoOr<Exchange> exchange = platform::exchangeNames(aside_, source_.path);
    if (exchange.value() != Exchange::done) {
        if (exchange.errorNumber() == ENOENT && placed.version) {
            // Another program has taken away what stood at the path.
            return giveWay(std::move(result));
        }
        platform::failFile(result.error, aside_, "moved to " + source_.path,
                           exchange ? EOPNOTSUPP : exchange.errorNumber());
        result.end = SwapEnd::failed;
        result.original = aside_;
        result.repaired = source_.path;
        result.isAside = true;
        return result;
    }
    observer_.reached(SwapPoint::takenBack);
    const ErrnoOr<Standing> came = copy_.standingAt(aside_);
    if (came ? *came == Standing::asExpected : copy_.isAt(aside_)) {
        return settleCopy(std::move(result));
    }
    return returnNewest(placed, std::move(result));
}

// Another program has put a file at the source's path, or written into what stood there, before it
// was exchanged: that is the newest, and gets the path. What comes out for it is what this swap had
// put there, which goes to the Trash, or newer still, and gets the path in its turn.
SwapResult FileSwap::returnNewest(const SeenFile& placed, SwapResult result) {
    constexpr int kMostTurns = 100;
    SeenFile older = placed;
    for (int turn = 0; turn < kMostTurns; ++turn) {
        SeenFile newest = SeenFile::at(aside_);
        if (platform::exchangeNames(aside_, source_.path).value() != Exchange::done) {
            break;
        }
        observer_.reached(SwapPoint::takenBack);
        if (SeenFile::at(aside_) == older) {
            break;
        }
        older = std::move(newest);
    }
    return giveWay(std::move(result));
}

SwapResult FileSwap::swapInSteps(const std::string& from) {
    hidden_ =
        joinPath(parentFolder(copy_.path), platform::temporaryName(lastComponent(copy_.path))) +
        ".part";
    int errorNumber = platform::renameWithoutReplacing(from, hidden_);
    if (errorNumber != 0) {
        ErrorSlot error;
        platform::failFile(error, copy_.path, "moved to " + source_.path, errorNumber);
        return settleCopy(untouched(SwapEnd::failed, std::move(error)));
    }
    const ErrnoOr<Standing> copy = copy_.standingAt(hidden_);
    if (copy.value() != Standing::asExpected) {
        static_cast<void>(platform::renameWithoutReplacing(hidden_, copy_.path));
        return copyDiffers(copy);
    }
    errorNumber = platform::renameWithoutReplacing(source_.path, aside_);
    if (errorNumber != 0) {
        return settleCopy(notRenamed(errorNumber));
    }
    observer_.reached(SwapPoint::exchanged);
    const ErrnoOr<Standing> out = source_.standingAt(aside_);
    if (!out) {
        ErrorSlot error;
        platform::failFile(error, source_.path, "read", out.errorNumber());
        return bringBack(SwapEnd::failed, std::move(error));
    }
    if (*out != Standing::asExpected) {
        observer_.reached(SwapPoint::differed);
        return bringBack(SwapEnd::sourceChanged, {});
    }
    observer_.reached(SwapPoint::compared);
    return moveIn();
}

// The source is aside and the copy hidden.
SwapResult FileSwap::moveIn() {
    ErrorSlot error;
    const int errorNumber = platform::renameWithoutReplacing(hidden_, source_.path);
    if (errorNumber == EEXIST) {
        return giveWay(untouched(SwapEnd::sourceChanged, {}));
    }
    if (errorNumber != 0) {
        platform::failFile(error, copy_.path, "moved to " + source_.path, errorNumber);
        return bringBack(SwapEnd::failed, std::move(error));
    }
    observer_.reached(SwapPoint::movedIn);
    const ErrnoOr<Standing> in = copy_.standingAt(source_.path);
    if (!in) {
        platform::failFile(error, source_.path, "read", in.errorNumber());
        return withdraw(SwapEnd::failed, std::move(error));
    }
    if (*in != Standing::asExpected) {
        return giveWay(untouched(SwapEnd::sourceChanged, {}));
    }
    return recycleOriginal(&FileSwap::withdraw);
}

// Takes what was moved to the source's path away again.
SwapResult FileSwap::withdraw(SwapEnd end, ErrorSlot error) {
    SwapResult result = untouched(end, std::move(error));
    const int errorNumber = platform::renameWithoutReplacing(source_.path, hidden_);
    if (errorNumber == ENOENT) {
        return giveWay(std::move(result));
    }
    if (errorNumber != 0) {
        platform::failFile(result.error, source_.path, "moved to " + copy_.path, errorNumber);
        result.end = SwapEnd::failed;
        result.original = aside_;
        result.repaired = source_.path;
        result.isAside = true;
        return result;
    }
    const ErrnoOr<Standing> came = copy_.standingAt(hidden_);
    if (came ? *came == Standing::asExpected : copy_.isAt(hidden_)) {
        return bringBack(end, std::move(result.error));
    }
    // The newest; unless there is a newer one again.
    if (platform::renameWithoutReplacing(hidden_, source_.path) != 0) {
        static_cast<void>(recycle(hidden_, result.error));
    }
    return giveWay(std::move(result));
}

// Gives what is aside the source's path back. What another program has put there meanwhile is
// newer and stays.
SwapResult FileSwap::bringBack(SwapEnd end, ErrorSlot error) {
    SwapResult result = untouched(end, std::move(error));
    const int errorNumber = platform::renameWithoutReplacing(aside_, source_.path);
    if (errorNumber == EEXIST) {
        return giveWay(std::move(result));
    }
    if (errorNumber != 0) {
        result.end = SwapEnd::failed;
        result.original = aside_;
        result.isAside = true;
        platform::failFile(result.error, aside_, "moved to " + source_.path, errorNumber);
    }
    return settleCopy(std::move(result));
}

// Leaves the path to another program, which has put the newest there or nothing. What it replaced
// is aside and goes to the Trash.
SwapResult FileSwap::giveWay(SwapResult result) {
    const auto placed = recycle(aside_, result.error);
    const bool isBack = !placed && platform::renameWithoutReplacing(aside_, source_.path) == 0;
    result.end = SwapEnd::sourceChanged;
    result.isInTrash = placed.has_value();
    result.isAside = !placed && !isBack;
    result.original = isBack ? source_.path : placed.value_or(aside_);
    return settleCopy(std::move(result));
}

SwapResult FileSwap::finish(const std::string& original) {
    // Both files are where they belong; a folder that cannot be synced can at worst bring the old
    // entries back after a loss of power.
    static_cast<void>(platform::synchronizeFolder(parentFolder(source_.path)));
    return {.end = SwapEnd::done,
            .original = original,
            .repaired = source_.path,
            .isInTrash = true,
            .error = std::move(remark_)};
}

SwapResult FileSwap::untouched(SwapEnd end, ErrorSlot error) const {
    return {.end = end,
            .original = source_.path,
            .repaired = end == SwapEnd::copyChanged ? "" : copy_.path,
            .error = std::move(error)};
}

SwapResult FileSwap::notRenamed(int errorNumber) const {
    ErrorSlot error;
    if (errorNumber == ENOENT && !platform::nodeExists(source_.path)) {
        SwapResult gone = untouched(SwapEnd::sourceChanged, {});
        gone.original.clear();
        return gone;
    }
    platform::failFile(error, copy_.path, "moved to " + source_.path, errorNumber);
    return untouched(SwapEnd::failed, std::move(error));
}

SwapResult FileSwap::copyDiffers(const ErrnoOr<Standing>& standing) const {
    if (standing) {
        return untouched(SwapEnd::copyChanged, {});
    }
    ErrorSlot error;
    platform::failFile(error, copy_.path, "read", standing.errorNumber());
    return untouched(SwapEnd::failed, std::move(error));
}

// Gives the copy its own name again, unless it is gone or another file has that name now.
SwapResult FileSwap::settleCopy(SwapResult result) const {
    std::string place;
    for (const std::string& name : {aside_, hidden_}) {
        if (!name.empty() && copy_.isAt(name)) {
            place = name;
        }
    }
    if (copy_.isAt(copy_.path)) {
        if (!place.empty()) {
            static_cast<void>(platform::removeWhileIs(place, copy_.version.identity));
        }
        place = copy_.path;
    } else if (!place.empty() && platform::renameWithoutReplacing(place, copy_.path) == 0) {
        place = copy_.path;
    }
    result.repaired = result.end == SwapEnd::copyChanged ? "" : place;
    return result;
}

// Without a need for memory: only names that are known are changed.
void FileSwap::restoreNames() {
    const bool isIn = copy_.isAt(source_.path);
    const bool isOriginalAside = platform::nodeExists(aside_) && !copy_.isAt(aside_);
    const bool isWritten = copy_.glanceAt(source_.path).value() == Standing::written;
    if (isIn && (!isOriginalAside || isWritten)) {
        // The swap is all but done, or the file is another program's now, and the newest.
        return;
    }
    if (isIn && platform::exchangeNames(aside_, source_.path).value() != Exchange::done) {
        static_cast<void>(platform::renameWithoutReplacing(source_.path, copy_.path));
    }
    if (isOriginalAside && !copy_.isAt(aside_)) {
        static_cast<void>(platform::renameWithoutReplacing(aside_, source_.path));
    }
    for (const std::string* name : {&aside_, &hidden_}) {
        if (!name->empty() && copy_.isAt(*name) &&
            platform::renameWithoutReplacing(*name, copy_.path) == EEXIST &&
            copy_.isAt(copy_.path)) {
            static_cast<void>(unlink(name->c_str()));
        }
    }
}

std::optional<std::string> FileSwap::recycle(const std::string& path, ErrorSlot& error) const {
    return moveToTrash(path, lastComponent(source_.path), error);
}

ErrorSlot FileSwap::dropCopyName() {
    ErrorSlot error;
    const ErrnoOr<platform::Removal> removal =
        platform::removeWhileIs(copy_.path, copy_.version.identity);
    if (!removal && removal.errorNumber() != ENOENT) {
        platform::failFile(error, copy_.path, "removed", removal.errorNumber());
    }
    return error;
}

}  // namespace vornic
