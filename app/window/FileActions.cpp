#include "app/window/FileActions.h"

#include <algorithm>
#include <cerrno>
#include <set>

#include "app/cli/UndoCommand.h"
#include "app/window/HeaderText.h"
#include "app/window/LoggedWaiting.h"
#include "base/FormatString.h"
#include "base/PathText.h"
#include "check/VersionMend.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/QMLocalPaths.h"
#include "job/InPlaceChange.h"
#include "job/Journal.h"
#include "job/JournaledSwap.h"
#include "job/MendFile.h"
#include "job/ProjectText.h"
#include "job/ResultFile.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/rights/HeldPath.h"

namespace vornic {

namespace {

std::string joined(const std::vector<std::string>& sentences) {
    std::string text;
    for (const std::string& sentence : sentences) {
        text += (text.empty() ? "" : " ") + sentence;
    }
    return text;
}

std::string whyNoVersion(FileKind kind, const std::string& version) {
    return kind == FileKind::fcpxml  ? formatString("FCPXML has no version %@", version)
           : kind == FileKind::xmeml ? formatString("XMEML has no version %@", version)
                                     : "it is neither FCPXML nor XMEML";
}

CheckOptions optionsFor(const std::string& path) {
    CheckOptions options;
    options.mostOfARule = kMostListedOfARule;
    options.fileName = lastComponent(path);
    return options;
}

}  // namespace

void takeResult(const std::string& path, InPlaceResult& result, FileActionResult& action) {
    action.notes.insert(action.notes.end(), result.notes.begin(), result.notes.end());
    action.isDone = result.swap && !result.error && !result.isCancelled;
    if (action.isDone) {
        action.replaced = result.swap->original;
        QMLog::appendLog("The file %@ was changed. The original is %@", path, action.replaced);
    } else {
        action.failure = result.error ? result.error->localizedDescription()
                                      : formatString("The file %@ was left as it is.", path);
        QMLog::appendLog("%@", action.failure);
    }
    if (!result.lostMetadata.empty()) {
        action.notes.push_back(
            formatString("Something of the file %@ was not kept. %@", path, result.lostMetadata));
    }
}

RestoreResult restoreOriginal(const std::string& path, const std::string& program,
                              const std::string& version, bool evenIfChanged) {
    RestoreResult restored;
    const std::optional<Journal> journal = Journal::ofUser();
    if (!journal) {
        restored.end = UndoResult::End::nothingToUndo;
        restored.failure = "There is nothing to restore, since there is no home folder.";
        return restored;
    }
    Undo undo(*journal, QMLocalPaths::trashDirectory().value_or(""), program, version);
    const UndoResult result =
        undo.undo(path, [evenIfChanged](const JournalEntry&) { return evenIfChanged; });
    restored.end = result.end;
    restored.isDone = result.end == UndoResult::End::undone;
    restored.replaced = result.result;
    restored.isUndoable = restored.isDone && !result.error;
    const std::vector<std::string> complaints = complaintsAbout(result);
    if (restored.isDone) {
        restored.notes = complaints;
        QMLog::appendLog("The original is back: %@", path);
    } else {
        restored.failure = result.end == UndoResult::End::nothingToUndo
                               ? formatString(
                                     "Nothing has changed the file %@ in its place, or "
                                     "everything has been taken back.",
                                     path)
                               : joined(complaints);
    }
    for (const std::string& complaint : complaints) {
        QMLog::appendLog("%@", complaint);
    }
    return restored;
}

std::string originalOf(const std::string& path) {
    const std::optional<Journal> journal = Journal::ofUser();
    if (!journal) {
        return "";
    }
    std::set<std::string> names{path};
    if (const std::optional<platform::HeldPath> held = platform::holdPath(path)) {
        names.insert(held->path());
    }
    ErrorSlot ignored;
    Undo undo(*journal, QMLocalPaths::trashDirectory().value_or(""), "", "");
    const auto changes = undo.changes(ignored, names);
    return changes && !changes->empty() ? changes->front().original : "";
}

FileActionResult mendInPlace(const std::string& path, const MendRequest& request,
                             const std::string& program, const std::string& version) {
    FileActionResult action;
    const Waiting waiting = loggedWaiting();
    JournaledSwap journaled(program, version, JournalEntry::Action::mend);
    MendedFile result = mendFile(path, request, waiting, journaled);
    if (!result.mended.refusal.empty()) {
        action.failure =
            formatString("The file %@ was not mended: %@.", path, result.mended.refusal);
        QMLog::appendLog("%@", action.failure);
        return action;
    }
    if (!result.swap && !result.error && !result.isCancelled) {
        action.failure = formatString("There is nothing to mend in the file %@.", path);
        return action;
    }
    action.isUndoable = journaled.isWrittenDown();
    takeResult(path, result, action);
    return action;
}

FileActionResult setVersionInPlace(const std::string& path, const std::string& to,
                                   const std::string& program, const std::string& version) {
    FileActionResult action;
    InPlaceResult result;
    const Waiting waiting = loggedWaiting();
    InPlaceChange place(path, {"version", "changed"}, waiting, result);
    if (const std::optional<std::string> bytes = place.read()) {
        const std::unique_ptr<ProjectText> project = ProjectText::read(*bytes, result.error);
        const std::optional<Mend> mend = project ? versionMend(project->index(), to) : std::nullopt;
        const std::optional<EditList> edits =
            mend ? editsOfFile(mend->edits, project->source()) : std::nullopt;
        if (edits) {
            JournaledSwap journaled(program, version, JournalEntry::Action::mend);
            place.write(applyEdits(*bytes, *edits));
            place.finish(true, journaled);
            action.isUndoable = journaled.isWrittenDown();
        } else if (project) {
            platform::failFileBecause(result.error, path, "changed", EINVAL,
                                      mend ? "its encoding cannot hold the version"
                                           : whyNoVersion(project->index().kind(), to));
        }
    }
    place.takeNotes();
    takeResult(path, result, action);
    return action;
}

FileActionResult saveMendedCopy(const std::string& path, const std::string& to) {
    FileActionResult action;
    ErrorSlot error;
    std::optional<std::string> bytes = platform::readFile(path, error);
    if (!bytes) {
        action.failure = error->localizedDescription();
        return action;
    }
    const MendedBytes mended =
        MendedBytes::of(std::move(*bytes), {.asked = {}, .check = optionsFor(path)});
    if (!mended.refusal.empty()) {
        action.failure = formatString("The file %@ was not mended: %@.", path, mended.refusal);
        return action;
    }
    const std::optional<ResultFile> written = writeResultFile(to, mended.bytes, path, error);
    if (!written) {
        action.failure = error->localizedDescription();
        return action;
    }
    action.isDone = true;
    action.replaced = written->path;
    const auto made = static_cast<std::uint64_t>(
        std::count_if(mended.records.begin(), mended.records.end(),
                      [](const MendRecord& record) { return record.isMade; }));
    action.notes.push_back(counted(made, "mend was made", "mends were made") + " in it.");
    if (!written->lostMetadata.empty()) {
        action.notes.push_back(written->lostMetadata);
    }
    return action;
}

MendPreview previewMends(const InspectedFile& file, const std::vector<const Finding*>& findings) {
    MendPreview preview;
    std::vector<ChosenMend> chosen;
    for (const Finding* const finding : findings) {
        chosen.push_back({finding->rule, finding->where.offset});
    }
    std::sort(chosen.begin(), chosen.end());
    preview.request.chosen = std::move(chosen);
    preview.request.expected = file.digest;
    preview.request.check = optionsFor(file.path);
    ErrorSlot error;
    std::optional<std::string> bytes = platform::readFile(file.path, error);
    if (!bytes || platform::ContentDigest::of(*bytes) != file.digest) {
        preview.refusal = error ? error->localizedDescription()
                                : formatString(
                                      "Another program has changed the file %@ since it "
                                      "was checked.",
                                      file.path);
        return preview;
    }
    const MendedBytes mended = MendedBytes::of(std::move(*bytes), preview.request);
    preview.refusal = mended.refusal;
    preview.count = static_cast<std::size_t>(
        std::count_if(mended.records.begin(), mended.records.end(),
                      [](const MendRecord& record) { return record.isMade; }));
    const std::string name = lastComponent(file.path);
    preview.difference = mended.difference(name, name);
    return preview;
}

std::vector<const Finding*> safelyMendable(const Findings& findings) {
    std::vector<const Finding*> safe;
    for (const Finding& finding : findings.kept()) {
        if (finding.mend && finding.mend->confidence == Confidence::safe &&
            !finding.mend->edits.empty()) {
            safe.push_back(&finding);
        }
    }
    return safe;
}

}  // namespace vornic
