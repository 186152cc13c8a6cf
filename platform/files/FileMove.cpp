#include <cerrno>
#include <tuple>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryFile.h"
#include "platform/files/TemporaryName.h"
#include "platform/items/ItemInventory.h"
#include "platform/volumes/FileTransfer.h"

namespace vornic::platform {
namespace {

/// Tries the names in order. @param placed the path that was taken @return 0 or the errno value.
int renameToFreeName(const std::string& source, const std::string& folder,
                     const NameForAttempt& names, std::string& placed) {
    int errorNumber = EEXIST;
    for (long attempt = 1; errorNumber == EEXIST; ++attempt) {
        const std::optional<std::string> name = names(attempt);
        if (!name) {
            return EEXIST;
        }
        placed = joinPath(folder, *name);
        errorNumber = renameWithoutReplacing(source, placed);
    }
    return errorNumber;
}

bool failChanged(ErrorSlot& error, const std::string& source, const std::string& verb) {
    return failFileBecause(error, source, verb, EBUSY, "it was changed in the meantime");
}

void tellStep(MoveStep step) {
    if (const auto& observer = moveObserver()) {
        observer(step);
    }
}

/// Puts an item that was set aside back, under a numbered name when another one has come to stand
/// in its place.
void putBack(const std::string& aside, const std::string& source) {
    const SplitName parts = splitExtension(lastComponent(source));
    std::string place = source;
    for (long number = 2; renameWithoutReplacing(aside, place) == EEXIST; ++number) {
        place = joinPath(parentFolder(source),
                         parts.stem + " " + std::to_string(number) + parts.extension);
    }
}

/// Removes the original after its verified copy came to stand at `copy`. It is set aside first, so
/// that nobody who goes by its name can change it after the last look. An original that stays whole
/// makes the copy superfluous; of a folder a part may be gone already, so that the copy stays.
bool removeOriginal(const std::string& source, const std::string& copy,
                    const ItemInventory& original, ErrorSlot& error) {
    const std::string verb = "moved to " + copy;
    const std::string aside = joinPath(parentFolder(source), temporaryName(lastComponent(source)));
    ErrorSlot ignored;
    int errorNumber = renameWithoutReplacing(source, aside);
    if (errorNumber != 0) {
        // A volume may carry out what it reports as failed.
        if (nodeExists(aside)) {
            putBack(aside, source);
        }
        std::ignore = removeItem(copy, ignored);
        return failFile(error, source, verb, errorNumber);
    }
    tellStep(MoveStep::setAside);
    if (!original.matches(aside)) {
        putBack(aside, source);
        std::ignore = removeItem(copy, ignored);
        return failChanged(error, source, verb);
    }
    tellStep(MoveStep::verified);
    errorNumber = original.removeAt(aside);
    if (errorNumber == 0) {
        return true;
    }
    if (original.matches(aside)) {
        std::ignore = removeItem(copy, ignored);
    }
    putBack(aside, source);
    return errorNumber == EBUSY ? failChanged(error, source, verb)
                                : failFile(error, source, "removed", errorNumber);
}

bool moveAcrossVolumes(const std::string& source, const std::string& folder,
                       const NameForAttempt& names, ErrorSlot& error) {
    const ErrnoOr<ItemInventory> original = ItemInventory::of(source);
    if (!original) {
        return failFile(error, source, "moved to " + folder, original.errorNumber());
    }
    // A copy that a kill leaves here is known by the ending, and removed one day.
    const std::string temporary =
        joinPath(folder, temporaryName(lastComponent(source)).append(kPartEnding));
    if (!transferItem(source, temporary, Verification::readBack, error)) {
        return false;
    }
    tellStep(MoveStep::copied);
    std::string placed;
    int errorNumber = renameToFreeName(temporary, folder, names, placed);
    const std::string& copy = errorNumber == 0 ? placed : temporary;
    if (errorNumber == 0) {
        errorNumber = synchronizeFolder(folder);
    }
    if (errorNumber == 0) {
        return removeOriginal(source, copy, *original, error);
    }
    ErrorSlot ignored;
    std::ignore = removeItem(copy, ignored);
    return failFile(error, source, "moved to " + placed, errorNumber);
}

}  // namespace

std::function<void(MoveStep)>& moveObserver() {
    static auto* const observer = new std::function<void(MoveStep)>;  // NOLINT: never destroyed
    return *observer;
}

bool moveInto(const std::string& source, const std::string& folder, const NameForAttempt& names,
              ErrorSlot& error) {
    std::string placed;
    const int errorNumber = renameToFreeName(source, folder, names, placed);
    if (errorNumber == EXDEV) {
        return moveAcrossVolumes(source, folder, names, error);
    }
    return errorNumber == 0 || failFile(error, source, "moved to " + placed, errorNumber);
}

bool moveFile(const std::string& source, const std::string& destination, ErrorSlot& error) {
    if (source.find('\0') != std::string::npos || destination.find('\0') != std::string::npos) {
        return failFile(error, source, "moved to " + destination, EINVAL);
    }
    const std::string name = lastComponent(destination);
    if (name.empty()) {
        return failFile(error, source, "moved to " + destination,
                        destination.empty() ? ENOENT : EEXIST);
    }
    return moveInto(
        source, parentFolder(destination),
        [&name](long attempt) { return attempt == 1 ? std::optional(name) : std::nullopt; }, error);
}

}  // namespace vornic::platform
