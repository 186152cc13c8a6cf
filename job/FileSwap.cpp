#include "job/FileSwap.h"

#include <cerrno>
#include <utility>

#include <unistd.h>

#include "job/MoveToTrash.h"
#include "platform/CarefulRemoval.h"
#include "platform/Failure.h"
#include "platform/FileClaim.h"
#include "platform/FileDescriptor.h"
#include "platform/PathText.h"
#include "platform/Rename.h"

namespace vornic {

using platform::Exchange;

FileSwap::FileSwap(const SourceFile& source, const SavedCopy& copy, SwapObserver& observer)
    : source_(source), copy_(copy), observer_(observer), aside_(asidePath(source.path)) {}

std::string FileSwap::asidePath(const std::string& source) {
    // Short enough for file systems that take less than 255 bytes.
    constexpr std::size_t kKeptOfName = 100;
    std::string name = platform::lastComponent(source);
    if (name.size() > kKeptOfName) {
        const std::uint64_t rest = platform::ContentDigest::of(name)[0];
        name = std::string(platform::truncateUTF8(name, kKeptOfName)) + "-" + std::to_string(rest);
    }
    return platform::joinPath(platform::parentFolder(source), "." + name + ".vornic.swap");
}

SwapResult FileSwap::run() && {
    ErrorSlot error;
    // May wait for a slow disk, so that the looks at the files come after it.
    if (const int errorNumber = platform::synchronize(copy_.file.get()); errorNumber != 0) {
        platform::failFile(error, copy_.path, "synchronized", errorNumber);
        return untouched(SwapEnd::failed, std::move(error));
    }
    if (!copy_.isAt(copy_.path) || !copy_.isIntact()) {
        return untouched(SwapEnd::copyChanged, {});
    }
    observer_.reached(SwapPoint::verified);
    const SwapIntent about = intent();
    if (!observer_.willSwap(about, error)) {
        return untouched(SwapEnd::failed, std::move(error));
    }
    // The original will lie beside its path for a moment, where another run would take it for a
    // thing left by a dead one. A claim of somebody else keeps that run away just as well.
    int ignored = 0;
    static_cast<void>(platform::claimFile(source_.file.get(), ignored));
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
    // By this second name the copy goes to its place, and under it the original comes out: a name
    // that no other program writes to.
    const int errorNumber = platform::linkOpenFile(copy_.file.get(), aside_);
    if (errorNumber == EEXIST) {
        ErrorSlot error;
        platform::failFile(error, aside_, "made", errorNumber);
        return untouched(SwapEnd::failed, std::move(error));
    }
    return errorNumber == 0 ? swapByExchange() : swapInSteps();
}

SwapResult FileSwap::swapByExchange() {
    int errorNumber = 0;
    const Exchange exchange = platform::exchangeNames(aside_, source_.path, errorNumber);
    if (exchange != Exchange::done) {
        int ignored = 0;
        static_cast<void>(platform::removeWhileIs(aside_, copy_.version.identity, ignored));
        return exchange == Exchange::unavailable ? swapInSteps() : notRenamed(errorNumber);
    }
    observer_.reached(SwapPoint::exchanged);
    if (!source_.isAt(aside_)) {
        observer_.reached(SwapPoint::differed);
        return takeBack(SwapEnd::sourceChanged, {});
    }
    observer_.reached(SwapPoint::compared);
    // From now on nobody gets at the new file but by the source's path.
    ErrorSlot dropped = dropCopyName();
    if (!copy_.isIntact()) {
        return takeBack(SwapEnd::copyChanged, {});
    }
    observer_.reached(SwapPoint::beforeTrash);
    ErrorSlot error;
    const auto original = recycleAside(error);
    return original ? finish(*original, std::move(dropped))
                    : takeBack(SwapEnd::trashFailed, std::move(error));
}

// Exchanges the names again.
SwapResult FileSwap::takeBack(SwapEnd end, ErrorSlot error) {
    int errorNumber = 0;
    if (platform::exchangeNames(aside_, source_.path, errorNumber) != Exchange::done) {
        if (errorNumber == ENOENT) {
            // Another program has taken the new file away.
            return bringBack(end, std::move(error));
        }
        platform::failFile(error, aside_, "moved to " + source_.path, errorNumber);
        return {.end = SwapEnd::failed,
                .original = aside_,
                .repaired = source_.path,
                .isAside = true,
                .error = std::move(error)};
    }
    if (!copy_.isAt(aside_)) {
        return giveWay(end, std::move(error));
    }
    SwapResult result = untouched(end, std::move(error));
    int ignored = 0;
    if (copy_.isAt(copy_.path)) {
        static_cast<void>(platform::removeWhileIs(aside_, copy_.version.identity, ignored));
    } else if (platform::renameWithoutReplacing(aside_, copy_.path) != 0) {
        result.repaired = aside_;
    }
    return result;
}

// Another program has put a file at the source's path after the exchange, which was thereby moved
// aside: the newest one keeps the path, and what it replaced goes to the Trash.
SwapResult FileSwap::giveWay(SwapEnd end, ErrorSlot error) {
    int errorNumber = 0;
    if (platform::exchangeNames(aside_, source_.path, errorNumber) != Exchange::done) {
        platform::failFile(error, aside_, "moved to " + source_.path, errorNumber);
    }
    const auto original = recycleAside(error);
    return {.end = end == SwapEnd::copyChanged ? end : SwapEnd::sourceChanged,
            .original = original.value_or(aside_),
            .repaired = copy_.isAt(copy_.path) ? copy_.path : "",
            .isInTrash = original.has_value(),
            .isAside = !original.has_value(),
            .error = std::move(error)};
}

SwapResult FileSwap::swapInSteps() {
    if (const int errorNumber = platform::renameWithoutReplacing(source_.path, aside_);
        errorNumber != 0) {
        return notRenamed(errorNumber);
    }
    observer_.reached(SwapPoint::exchanged);
    if (!source_.isAt(aside_)) {
        observer_.reached(SwapPoint::differed);
        return bringBack(SwapEnd::sourceChanged, {});
    }
    observer_.reached(SwapPoint::compared);
    ErrorSlot error;
    const int errorNumber = platform::renameWithoutReplacing(copy_.path, source_.path);
    if (errorNumber == EEXIST) {
        return bringBack(SwapEnd::sourceChanged, {});
    }
    if (errorNumber != 0) {
        platform::failFile(error, copy_.path, "moved to " + source_.path, errorNumber);
        return bringBack(SwapEnd::failed, std::move(error));
    }
    if (!copy_.isAt(source_.path) || !copy_.isIntact()) {
        return withdraw(SwapEnd::copyChanged, {});
    }
    observer_.reached(SwapPoint::beforeTrash);
    const auto original = recycleAside(error);
    return original ? finish(*original, {}) : withdraw(SwapEnd::trashFailed, std::move(error));
}

// Takes what was moved from the copy's path to the source's back again.
SwapResult FileSwap::withdraw(SwapEnd end, ErrorSlot error) {
    const int errorNumber = platform::renameWithoutReplacing(source_.path, copy_.path);
    SwapResult result = bringBack(end, std::move(error));
    if (errorNumber != 0 && result.repaired.empty() && copy_.isAt(source_.path)) {
        result.repaired = source_.path;
    }
    return result;
}

// Gives what is aside the source's path back. What another program has put there meanwhile is
// newer and stays, and what is aside, which it would have replaced, goes to the Trash.
SwapResult FileSwap::bringBack(SwapEnd end, ErrorSlot error) {
    SwapResult result = untouched(end, std::move(error));
    result.repaired = copy_.isAt(copy_.path) ? copy_.path : "";
    const int errorNumber = platform::renameWithoutReplacing(aside_, source_.path);
    if (errorNumber == 0) {
        return result;
    }
    if (errorNumber == EEXIST && !copy_.isAt(source_.path)) {
        result.end = SwapEnd::sourceChanged;
        const auto original = recycleAside(result.error);
        result.original = original.value_or(aside_);
        result.isInTrash = original.has_value();
        result.isAside = !original;
        return result;
    }
    result.end = SwapEnd::failed;
    result.original = aside_;
    result.isAside = true;
    platform::failFile(result.error, aside_, "moved to " + source_.path, errorNumber);
    return result;
}

SwapResult FileSwap::finish(const std::string& original, ErrorSlot error) {
    // Both files are where they belong; a folder that cannot be synced can at worst bring the old
    // entries back after a loss of power.
    static_cast<void>(platform::synchronizeFolder(platform::parentFolder(source_.path)));
    return {.end = SwapEnd::done,
            .original = original,
            .repaired = source_.path,
            .isInTrash = true,
            .error = std::move(error)};
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

// Without a need for memory: only names that are known are changed.
void FileSwap::restoreNames() {
    int errorNumber = 0;
    if (copy_.isAt(source_.path) && source_.hasEntryAt(aside_)) {
        static_cast<void>(platform::exchangeNames(aside_, source_.path, errorNumber));
    }
    if (source_.hasEntryAt(aside_)) {
        static_cast<void>(platform::renameWithoutReplacing(source_.path, copy_.path));
        static_cast<void>(platform::renameWithoutReplacing(aside_, source_.path));
    }
    if (copy_.isAt(aside_) && !copy_.isAt(copy_.path)) {
        static_cast<void>(platform::renameWithoutReplacing(aside_, copy_.path));
    } else if (copy_.isAt(aside_)) {
        static_cast<void>(unlink(aside_.c_str()));
    }
}

std::optional<std::string> FileSwap::recycleAside(ErrorSlot& error) const {
    return moveToTrash(aside_, platform::lastComponent(source_.path), error);
}

ErrorSlot FileSwap::dropCopyName() {
    ErrorSlot error;
    int errorNumber = 0;
    if (platform::removeWhileIs(copy_.path, copy_.version.identity, errorNumber) ==
            platform::Removal::failed &&
        errorNumber != ENOENT) {
        platform::failFile(error, copy_.path, "removed", errorNumber);
    }
    return error;
}

}  // namespace vornic
