#include "repair/WorkingCopy.h"

#include <string_view>
#include <utility>

#include "foundation/QMLog.h"
#include "foundation/Text.h"
#include "platform/AtomicFile.h"
#include "platform/FileSystem.h"
#include "platform/Workspace.h"

namespace vornic {

namespace {

// The folder of a path, in a form that system calls take.
std::string folderOf(const std::string& path) {
    std::string folder = deletingLastPathComponent(path);
    return folder.empty() ? "." : folder;
}

}  // namespace

WorkingCopy::WorkingCopy(std::string source, std::string path)
    : source_(std::move(source)), path_(std::move(path)), folder_(folderOf(source_)) {}

bool WorkingCopy::sourceExists() const {
    const platform::FolderLock lock = turn();
    return platform::fileExists(source_);
}

bool WorkingCopy::recycleOld() const {
    const platform::FolderLock lock = turn();
    ErrorSlot ignored;  // the report does not say why
    return !platform::nodeExists(path_) || moveToTrash(path_, ignored);
}

bool WorkingCopy::create(ErrorSlot& error) {
    const platform::FolderLock lock = turn();
    return copySource(error);
}

// Another run may have put its own result in this place; judged by that, the user's file would pass
// for sound.
std::optional<std::string> WorkingCopy::read(ErrorSlot& error) {
    ErrorSlot readError;
    std::optional<std::string> bytes = platform::readFile(path_, readError);
    if (!isOwn()) {
        const platform::FolderLock lock = turn();
        return ensureOwn(error) ? platform::readFile(path_, error) : std::nullopt;
    }
    if (readError) {
        error = std::move(readError);
    }
    return bytes;
}

void WorkingCopy::save(const XMLDocument& document, ErrorSlot& error) {
    platform::AtomicFile file;
    const auto write = [&](std::string_view piece) { return file.write(piece, error); };
    if (!openToSave(file, error) || !document.serialize(write)) {
        return;
    }
    // A run that makes its copy must not come to hold the file that is put in this place meanwhile.
    const platform::FolderLock lock = turn();
    // Most working copies are removed again, so this one reaches the disk just before the swap.
    if (file.commit(platform::Durability::passing, error)) {
        hold();
        isSaved_ = own_ && platform::identityOf(own_.get()) == file.identity();
    }
}

void WorkingCopy::remove(ErrorSlot& error) const {
    const platform::FolderLock lock = turn();
    if (platform::nodeExists(path_) && !isOwn()) {
        QMLog::appendLog("The temporary file %@ was replaced by another program and left there.",
                         path_);
    } else {
        platform::removeFile(path_, error);
    }
}

WorkingCopy::Swap WorkingCopy::swap(ErrorSlot& error) const {
    ErrorSlot trashError;
    // May wait for a slow disk, so that the look at the copy comes after it.
    const bool isSafe = platform::synchronizeFile(path_, trashError);
    const platform::FolderLock lock = turn();
    if (!isOwn()) {
        return Swap::foreign;
    }
    if (!isSaved_) {
        return Swap::unsaved;
    }
    if (!isSafe || !moveToTrash(source_, trashError)) {
        QMLog::appendLog("The file %@ could not be moved to the Trash. %@ The repaired file is %@.",
                         source_, trashError ? trashError->localizedDescription() : "", path_);
        return Swap::failed;
    }
    return platform::moveFile(path_, source_, error) ? Swap::done : Swap::failed;
}

platform::FolderLock WorkingCopy::turn() const {
    return platform::FolderLock(folder_);
}

bool WorkingCopy::moveToTrash(const std::string& path, ErrorSlot& error) const {
    return platform::recycle(folder_, expandingTildeInPath("~/.Trash"), {lastPathComponent(path)},
                             error);
}

bool WorkingCopy::isOwn() const {
    return own_ && platform::fileIdentity(path_) == platform::identityOf(own_.get());
}

bool WorkingCopy::copySource(ErrorSlot& error) {
    if (!platform::copyFile(source_, path_, error)) {
        return false;
    }
    hold();
    isSaved_ = false;
    return true;
}

// What is saved gets its mode, owner and attributes from the file that it replaces, and a link to
// the user's file, say, in this place must not be written through.
bool WorkingCopy::openToSave(platform::AtomicFile& file, ErrorSlot& error) {
    const platform::FolderLock lock = turn();
    return ensureOwn(error) && file.open(path_, error);
}

bool WorkingCopy::ensureOwn(ErrorSlot& error) {
    if (isOwn()) {
        return true;
    }
    return (!platform::nodeExists(path_) || platform::removeFile(path_, error)) &&
           copySource(error);
}

void WorkingCopy::hold() {
    int ignored = 0;  // what cannot be held is not this run's
    own_ = platform::openForMetadata(path_, false, ignored);
}

}  // namespace vornic
