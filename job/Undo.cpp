#include "job/Undo.h"

#include <cerrno>
#include <chrono>
#include <tuple>
#include <utility>

#include "base/PathText.h"
#include "job/JournalFiles.h"
#include "job/UndoRemains.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/files/FileVersion.h"

namespace vornic {

namespace {

constexpr std::chrono::milliseconds kNoWaiting{0};

Error cannotPutBack(const std::string& file, int errorNumber, const std::string& reason) {
    return {.domain = std::string(kPosixErrorDomain),
            .code = errorNumber,
            .description = "The file " + file + " cannot be put back: " + reason + "."};
}

/// Quick, for a list of many: the bytes are looked at only where the Trash has them from another
/// volume, say.
bool isStillThere(const JournalFile& file, const std::string& path) {
    const ErrnoOr<platform::FileVersion> version = platform::versionAt(path);
    return version && ((version->identity.inode == file.identity.inode &&
                        (file.isLink || version->size == file.size)) ||
                       hasContentsOf(file, path));
}

}  // namespace

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
    const std::optional<Journal::News> news = journal_.entriesSince(position_, error);
    if (!news) {
        return false;
    }
    if (news->isAnew) {
        history_ = ChangeHistory();
    }
    for (const JournalEntry& entry : news->entries) {
        history_.add(entry);
    }
    return true;
}

std::optional<std::vector<UndoableChange>> Undo::changes(ErrorSlot& error,
                                                         const std::set<std::string>& files) {
    if (!readJournal(error)) {
        return std::nullopt;
    }
    std::vector<UndoableChange> changes;
    for (JournalEntry& entry : history_.all()) {
        if (!files.empty() && !files.contains(entry.file)) {
            continue;
        }
        std::string original =
            isStillThere(entry.before, entry.original) ? entry.original : std::string();
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
    std::optional<JournalEntry> entry = history_.next(held ? held->path() : file);
    if (!entry) {
        entry = history_.next(file);
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
    if (const std::optional<JournalEntry> entry = history_.newest()) {
        return undoEntry(*entry, goOn);
    }
    result.end = UndoResult::End::nothingToUndo;
    return result;
}

UndoResult Undo::undoEntry(const JournalEntry& entry, const Question& goOn) {
    UndoResult result{.file = entry.file};
    const std::optional<platform::ByteLock> claim =
        journal_.claim(entry.file, kNoWaiting, result.error);
    if (!claim) {
        if (result.error->code == EAGAIN) {
            result.error = cannotPutBack(entry.file, EBUSY, "another run is at work on it");
        }
        return result;
    }
    if (!readJournal(result.error)) {
        return result;
    }
    const std::optional<JournalEntry> next = history_.next(entry.file);
    if (!next || next->id != entry.id) {
        result.error = cannotPutBack(entry.file, EBUSY, "another run has just changed it");
        return result;
    }
    return undoClaimed(entry, goOn);
}

UndoResult Undo::undoClaimed(const JournalEntry& entry, const Question& goOn) {
    UndoResult result{.file = entry.file};
    std::optional<platform::HeldPath> target = platform::holdPath(entry.file);
    if (!target) {
        result.error = posixError("The file " + entry.file + " cannot be put back", ENOENT);
        return result;
    }
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
    UndoPlaces places{.target = std::move(*target),
                      .name = lastComponent(original),
                      .original = entry.before,
                      .present = std::nullopt};
    const std::string path = pathInto(places.target.folder.get(), places.target.name);
    if (platform::nodeExists(path)) {
        places.present = journalFileAt(path, result.error);
        if (!places.present) {
            return result;
        }
    }
    result.hadChanged = !places.present || !hasContentsOf(entry.after, path);
    if (result.hadChanged && (!goOn || !goOn(entry))) {
        result.end = UndoResult::End::changed;
        return result;
    }
    const bool hadChanged = result.hadChanged;
    result = bringBack(entry, places);
    result.hadChanged = hadChanged;
    return result;
}

UndoResult Undo::bringBack(const JournalEntry& entry, const UndoPlaces& places) {
    UndoResult result{.file = entry.file};
    tell(UndoStep::looked);
    std::optional<Journal::Run> run =
        journal_.begin({.program = program_,
                        .version = version_,
                        .action = JournalEntry::Action::undo,
                        .file = entry.file,
                        .workingCopy = joinPath(trash_->folder(), places.name),
                        .before = places.present.value_or(JournalFile()),
                        .after = entry.before,
                        .undoes = entry.id},
                       result.error);
    if (!run) {
        return result;
    }
    UndoSwapResult swap = UndoSwap(*trash_, places, observer_).run();
    result.result = std::move(swap.result);
    result.isBeside = swap.isBeside;
    result.error = std::move(swap.error);
    if (!swap.isDone) {
        ErrorSlot ignored;
        std::ignore = journal_.takeBack(std::move(*run), ignored);
        return result;
    }
    static_cast<void>(
        platform::synchronizeFolder(platform::descriptorPath(places.target.folder.get())));
    result.losses = std::move(swap.losses);
    result.end = UndoResult::End::undone;
    std::ignore = journal_.finish(std::move(*run), result.result, result.error);
    return result;
}

}  // namespace vornic
