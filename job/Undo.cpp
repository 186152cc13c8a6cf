#include "job/Undo.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "job/JournalFiles.h"
#include "platform/FileDescriptor.h"
#include "platform/FileSystem.h"
#include "platform/FileTransfer.h"
#include "platform/PathText.h"
#include "platform/Rename.h"

namespace vornic {

using platform::Exchange;
using platform::joinPath;
using platform::lastComponent;
using platform::parentFolder;

namespace {

std::string pathInto(int folder, const std::string& name) {
    return joinPath(platform::descriptorPath(folder), name);
}

bool failMove(ErrorSlot& error, const std::string& path, int errorNumber) {
    error = posixError("The file " + path + " cannot be put back", errorNumber);
    return false;
}

bool failChanged(ErrorSlot& error, const std::string& path) {
    error = Error{
        .domain = std::string(kPosixErrorDomain),
        .code = EBUSY,
        .description = "The file " + path + " cannot be put back: it was changed in the meantime."};
    return false;
}

}  // namespace

/// Where the two files of an undo are. Both folders are held open.
struct Undo::Places {
    JournalEntry entry;
    /// The user's path, in a folder known by itself.
    platform::HeldPath target;
    /// The original's name in the Trash.
    std::string name;
    /// What stands at the target; nothing when that has gone.
    std::optional<JournalFile> present;
    bool hadChanged = false;
    /// Where the result is in the Trash at the end.
    std::string result;

    [[nodiscard]] std::string targetPath() const {
        return pathInto(target.folder.get(), target.name);
    }
};

Undo::Undo(const Journal& journal, std::string trash, std::string program, std::string version)
    : journal_(journal),
      trashPath_(std::move(trash)),
      program_(std::move(program)),
      version_(std::move(version)) {}

bool Undo::openTrash(ErrorSlot& error) {
    if (!trash_) {
        trash_ = platform::Trash::open(trashPath_, error);
    }
    return trash_.has_value();
}

void Undo::tell(UndoStep step) const {
    if (observer_) {
        observer_(step);
    }
}

bool Undo::readJournal(ErrorSlot& error) {
    if (history_) {
        return true;
    }
    const std::optional<std::vector<JournalEntry>> entries = journal_.entries(error);
    if (!entries) {
        return false;
    }
    history_.emplace();
    for (const JournalEntry& entry : *entries) {
        history_->add(entry);
    }
    return true;
}

std::optional<std::vector<UndoableChange>> Undo::changes(ErrorSlot& error) {
    if (!readJournal(error)) {
        return std::nullopt;
    }
    std::vector<UndoableChange> changes;
    for (JournalEntry& entry : history_->all()) {
        std::string original =
            hasContentsOf(entry.before, entry.original) ? entry.original : std::string();
        changes.push_back({.entry = std::move(entry), .original = std::move(original)});
    }
    return changes;
}

UndoResult Undo::undo(const std::string& file, const Question& goOn) {
    UndoResult result{.file = file};
    if (!readJournal(result.error)) {
        return result;
    }
    const std::optional<platform::HeldPath> held = platform::holdPath(file);
    std::optional<JournalEntry> entry = history_->next(held ? held->path() : file);
    if (!entry) {
        entry = history_->next(file);
    }
    if (entry) {
        return undoEntry(*entry, goOn);
    }
    result.end = UndoResult::End::nothingToUndo;
    return result;
}

UndoResult Undo::undoNewest(const Question& goOn) {
    UndoResult result;
    if (!readJournal(result.error)) {
        return result;
    }
    if (const std::optional<JournalEntry> entry = history_->newest()) {
        return undoEntry(*entry, goOn);
    }
    result.end = UndoResult::End::nothingToUndo;
    return result;
}

UndoResult Undo::undoEntry(const JournalEntry& entry, const Question& goOn) {
    UndoResult result{.file = entry.file};
    Places places;
    places.entry = entry;
    std::optional<platform::HeldPath> target = platform::holdPath(entry.file);
    if (!target) {
        failMove(result.error, entry.file, ENOENT);
        return result;
    }
    places.target = std::move(*target);
    if (!openTrash(result.error)) {
        return result;
    }
    const std::string original =
        findInTrash(entry.before, platform::descriptorPath(trash_->descriptor()),
                    lastComponent(entry.original));
    if (original.empty() || entry.original.empty()) {
        result.end = UndoResult::End::emptied;
        return result;
    }
    places.name = lastComponent(original);
    if (platform::nodeExists(places.targetPath())) {
        places.present = journalFileAt(places.targetPath(), result.error);
        if (!places.present) {
            return result;
        }
    }
    places.hadChanged = !places.present || !hasContentsOf(entry.after, places.targetPath());
    if (places.hadChanged && (!goOn || !goOn(entry))) {
        result.end = UndoResult::End::changed;
        return result;
    }
    return bringBack(places);
}

UndoResult Undo::bringBack(Places& places) {
    UndoResult result{.file = places.entry.file, .hadChanged = places.hadChanged};
    JournalEntry entry{.program = program_,
                       .version = version_,
                       .action = JournalEntry::Action::undo,
                       .file = places.entry.file,
                       .workingCopy = joinPath(trash_->folder(), places.name),
                       .before = places.present.value_or(JournalFile()),
                       .after = places.entry.before,
                       .undoes = places.entry.id};
    tell(UndoStep::looked);
    std::optional<Journal::Run> run = journal_.begin(std::move(entry), result.error);
    if (!run) {
        return result;
    }
    if (!exchange(places, result.error)) {
        ErrorSlot ignored;
        journal_.takeBack(std::move(*run), ignored);
        return result;
    }
    static_cast<void>(platform::synchronizeFolder(parentFolder(places.entry.file)));
    JournalEntry done = run->entry();
    done.state = JournalEntry::State::done;
    done.original = places.result;
    history_->add(done);
    journal_.finish(std::move(*run), places.result, result.error);
    result.end = UndoResult::End::undone;
    result.result = places.result;
    return result;
}

bool Undo::exchange(Places& places, ErrorSlot& error) {
    if (!places.present) {
        return restore(places, error);
    }
    const std::string target = places.targetPath();
    const std::string trashed = pathInto(trash_->descriptor(), places.name);
    int errorNumber = 0;
    const Exchange end = platform::exchangeNames(target, trashed, errorNumber);
    if (end == Exchange::unavailable || (end == Exchange::failed && errorNumber == EXDEV)) {
        return moveInSteps(places, error);
    }
    if (end == Exchange::failed) {
        return failMove(error, places.entry.file, errorNumber);
    }
    tell(UndoStep::exchanged);
    if (!isSameFile(*places.present, trashed)) {
        return platform::exchangeNames(target, trashed, errorNumber) == Exchange::done
                   ? failChanged(error, places.entry.file)
                   : failMove(error, places.entry.file, errorNumber);
    }
    // A note that cannot be renewed is still right about the place.
    static_cast<void>(trash_->replaceInfo(places.name, places.target.path()));
    places.result = joinPath(trash_->folder(), places.name);
    return true;
}

/// The original comes back to a path at which nothing stands.
bool Undo::restore(Places& places, ErrorSlot& error) {
    ErrorSlot moveError;
    const bool isMoved = platform::moveFile(pathInto(trash_->descriptor(), places.name),
                                            places.targetPath(), moveError);
    if (!isMoved) {
        return failMove(error, places.entry.file, moveError->code);
    }
    trash_->removeInfo(places.name);
    return true;
}

/// Between volumes, and where names cannot be exchanged: the original comes into the folder under a
/// name of its own first.
bool Undo::moveInSteps(Places& places, ErrorSlot& error) {
    const int folder = places.target.folder.get();
    const std::string target = places.targetPath();
    // Where the next start looks for them, should this be interrupted.
    const std::string waiting = lastComponent(undoWaitingPath(places.target.name));
    const std::string aside = lastComponent(undoAsidePath(places.target.name));
    const std::string trashed = pathInto(trash_->descriptor(), places.name);
    ErrorSlot moveError;
    if (!platform::moveFile(trashed, pathInto(folder, waiting), moveError)) {
        return failMove(error, places.entry.file, moveError->code);
    }
    const auto giveUp = [&](int errorNumber) {
        platform::moveFile(pathInto(folder, waiting), trashed, moveError);
        return errorNumber == EBUSY ? failChanged(error, places.entry.file)
                                    : failMove(error, places.entry.file, errorNumber);
    };
    int errorNumber = platform::renameWithoutReplacing(target, pathInto(folder, aside));
    if (errorNumber != 0) {
        return giveUp(errorNumber);
    }
    tell(UndoStep::exchanged);
    const bool isSame = isSameFile(*places.present, pathInto(folder, aside));
    errorNumber =
        isSame ? platform::renameWithoutReplacing(pathInto(folder, waiting), target) : EBUSY;
    if (errorNumber != 0) {
        static_cast<void>(platform::renameWithoutReplacing(pathInto(folder, aside), target));
        return giveUp(errorNumber);
    }
    trash_->removeInfo(places.name);
    platform::HeldPath item;
    item.folder = platform::FileDescriptor(fcntl(folder, F_DUPFD_CLOEXEC, 0));
    item.folderPath = places.target.folderPath;
    item.name = aside;
    const auto result = trash_->take(item, places.target.name, moveError);
    places.result = result ? result->path() : joinPath(places.target.folderPath, aside);
    return true;
}

}  // namespace vornic
