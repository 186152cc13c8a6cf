#include "job/UndoRemains.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "base/PathText.h"
#include "job/JournalFiles.h"
#include "platform/files/CarefulRemoval.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/files/TemporaryName.h"

namespace vornic {

using platform::FileDescriptor;

namespace {

/// Whether all bytes of one file are those with which another one begins.
bool isBeginningOf(const std::string& path, const std::string& whole) {
    constexpr std::size_t kBlock = std::size_t{64} * 1024;
    const ErrnoOr<FileDescriptor> part = platform::openRegularFile(path, false);
    const ErrnoOr<FileDescriptor> all = platform::openRegularFile(whole, false);
    if (!part || !all) {
        return false;
    }
    const auto first = std::make_unique<std::array<char, kBlock>>();
    const auto second = std::make_unique<std::array<char, kBlock>>();
    std::size_t size = kBlock;
    while (size == kBlock) {
        const platform::BlockRead one = platform::readBlock(part->get(), first->data(), kBlock);
        const platform::BlockRead other =
            platform::readBlock(all->get(), second->data(), one.length);
        size = one.length;
        if (one.errorNumber != 0 || other.errorNumber != 0 || other.length != size ||
            !std::equal(first->begin(), first->begin() + static_cast<std::ptrdiff_t>(size),
                        second->begin())) {
            return false;
        }
    }
    return true;
}

bool isSameLink(const std::string& one, const std::string& other) {
    std::error_code error;
    const std::filesystem::path text = std::filesystem::read_symlink(one, error);
    return !error && text == std::filesystem::read_symlink(other, error) && !error;
}

/// Removes an original that was given a hidden name in the Trash, just before it was to go.
void dropHiddenOriginal(const platform::Trash& trash, const std::string& name,
                        const JournalFile& original) {
    ErrorSlot ignored;
    const std::vector<std::string> names =
        platform::namesInFolder(platform::descriptorPath(trash.descriptor()), ignored)
            .value_or(std::vector<std::string>());
    for (const std::string& other : names) {
        if (platform::isTemporaryName(other) && other.starts_with("." + name + ".") &&
            hasContentsOf(original, pathInto(trash.descriptor(), other))) {
            std::ignore = unlinkat(trash.descriptor(), other.c_str(), 0);
        }
    }
}

}  // namespace

std::string pathInto(int folder, const std::string& name) {
    return joinPath(platform::descriptorPath(folder), name);
}

std::optional<std::string> recycleBeside(const platform::Trash& trash,
                                         const platform::HeldPath& target,
                                         const std::string& hiddenName, ErrorSlot& error) {
    platform::HeldPath item;
    item.folder = FileDescriptor(fcntl(target.folder.get(), F_DUPFD_CLOEXEC, 0));
    item.folderPath = target.folderPath;
    item.name = hiddenName;
    ErrorSlot moveError;
    const auto taken = trash.take(item, target.name, moveError);
    if (!taken) {
        // In words that name no hidden file.
        error = posixError("The file " + target.path() + " cannot be moved to the Trash",
                           moveError ? moveError->code : 0);
    }
    return taken ? std::optional(taken->path()) : std::nullopt;
}

bool clearWaiting(const platform::Trash& trash, const std::string& original,
                  const platform::HeldPath& target) {
    const std::string name = lastComponent(undoWaitingPath(target.name));
    const std::string waiting = pathInto(target.folder.get(), name);
    const std::string trashed = pathInto(trash.descriptor(), original);
    const auto identity = platform::fileIdentity(waiting);
    if (!identity) {
        return true;
    }
    // No other program knows the name, so that it cannot come to lead to another file here.
    if (identity == platform::fileIdentity(trashed) || isBeginningOf(waiting, trashed) ||
        isSameLink(waiting, trashed)) {
        return unlinkat(target.folder.get(), name.c_str(), 0) == 0;
    }
    ErrorSlot ignored;
    return recycleBeside(trash, target, name, ignored).has_value();
}

void dropOriginal(const platform::Trash& trash, const std::string& name,
                  const JournalFile& original, const platform::HeldPath& target) {
    if (!hasContentsOf(original, pathInto(target.folder.get(), target.name))) {
        return;
    }
    const std::string trashed = pathInto(trash.descriptor(), name);
    const auto identity = platform::fileIdentity(trashed);
    if (identity && hasContentsOf(original, trashed) &&
        platform::removeWhileIs(trashed, *identity).value() == platform::Removal::removed) {
        trash.removeInfo(name);
    }
    dropHiddenOriginal(trash, name, original);
}

}  // namespace vornic
