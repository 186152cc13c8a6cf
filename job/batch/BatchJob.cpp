#include "job/batch/BatchJob.h"

#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/QMLocalPaths.h"
#include "job/ConvertFile.h"
#include "job/JournaledSwap.h"
#include "job/MendFile.h"
#include "job/ProjectText.h"
#include "job/RelinkFile.h"
#include "job/ResultFile.h"
#include "platform/files/FileSystem.h"
#include "repair/pipeline/RepairPipeline.h"

namespace vornic {

namespace {

using Progress = std::function<void(double)>;

BatchOutcome failed(std::string reason, BatchResult result = BatchResult::failed) {
    BatchOutcome outcome;
    outcome.result = result;
    outcome.reason = std::move(reason);
    return outcome;
}

BatchResult resultOf(const Findings& findings, Severity failOn) {
    for (const Severity severity : {Severity::info, Severity::warning, Severity::error}) {
        if (severity >= failOn && findings.count(severity) != 0) {
            return BatchResult::findings;
        }
    }
    return BatchResult::sound;
}

// Takes what has become of a file in its place.
void takeChange(const std::string& path, const InPlaceResult& change, BatchResult done,
                BatchOutcome& outcome) {
    outcome.notes.insert(outcome.notes.end(), change.notes.begin(), change.notes.end());
    if (!change.lostMetadata.empty()) {
        outcome.notes.push_back(
            formatString("Something of the file %@ was not kept. %@", path, change.lostMetadata));
    }
    if (change.isCancelled) {
        outcome.result = BatchResult::cancelled;
    } else if (change.error || !change.swap || change.swap->end != SwapEnd::done) {
        outcome.result = BatchResult::failed;
        outcome.reason = change.error ? change.error->localizedDescription()
                                      : formatString("The file %@ was left as it is.", path);
    } else {
        outcome.result = done;
        outcome.replaced = change.swap->original;
    }
}

// Keeps what a repair says.
class BatchEvents final : public Events {
  public:
    BatchEvents(BatchOutcome& outcome, const Progress& progress)
        : outcome_(outcome), progress_(progress) {}

    void line(const ReportLine& line) override {
        constexpr std::size_t kMostLines = 1000;
        if (outcome_.lines.size() < kMostLines) {
            outcome_.lines.emplace_back(line.text);
        } else if (outcome_.lines.size() == kMostLines) {
            outcome_.lines.emplace_back("And so on.");
        }
    }
    void logLine(std::string_view text) override { QMLog::appendLog("%@", text); }
    void label(std::string_view /*text*/) override {}
    void progressMaximum(std::int64_t maximum) override { maximum_ = maximum; }
    void progressValue(std::int64_t value) override {
        if (maximum_ > 0) {
            progress_(static_cast<double>(value) / static_cast<double>(maximum_));
        }
    }
    void progressIsBusy() override { maximum_ = 0; }
    void verdict(const Verdict& /*verdict*/) override {}

  private:
    BatchOutcome& outcome_;
    const Progress& progress_;
    std::int64_t maximum_ = 0;
};

void takeRepair(const RepairResult& result, const std::string& path, BatchOutcome& outcome) {
    outcome.reason =
        result.closing ? result.closing->title + ". " + result.closing->information : "";
    switch (result.outcome) {
        case RepairOutcome::sound:
            outcome.result = BatchResult::sound;
            outcome.reason.clear();
            break;
        case RepairOutcome::repairedAndSwapped:
            outcome.result = BatchResult::repaired;
            outcome.reason.clear();
            outcome.replaced = result.swap.original;
            break;
        case RepairOutcome::repairedNotSwapped:
            outcome.reason = formatString(
                "The repaired file %@ could not take the place of the file %@; the log says why.",
                result.swap.repaired, path);
            break;
        case RepairOutcome::unable:
            outcome.result = BatchResult::unable;
            break;
        case RepairOutcome::cancelled:
            outcome.result = BatchResult::cancelled;
            break;
        case RepairOutcome::stopped:
            break;
    }
}

std::string whyNotRestored(const UndoResult& result, const std::string& path) {
    switch (result.end) {
        case UndoResult::End::nothingToUndo:
            return formatString("There is nothing to restore for the file %@.", path);
        case UndoResult::End::emptied:
            return formatString("The original of the file %@ is no longer in the Trash.", path);
        case UndoResult::End::changed:
            return formatString("The file %@ has changed since and was left as it is.", path);
        default:
            return result.error ? result.error->localizedDescription()
                                : formatString("The file %@ could not be put back.", path);
    }
}

}  // namespace

BatchJob::BatchJob(const BatchRequest& request, const BatchProgram& program, StopToken stop)
    : request_(request),
      program_(program),
      stop_(std::move(stop)),
      relinker_(request.relink),
      journal_(Journal::ofUser()) {
    if (journal_) {
        undo_.emplace(*journal_, QMLocalPaths::trashDirectory().value_or(""), program.name,
                      program.version);
    }
}

std::string BatchJob::prepare(const std::vector<std::string>& paths) {
    if (request_.action != BatchAction::relink || request_.relink.folders.empty()) {
        return "";
    }
    for (const std::string& path : paths) {
        if (stop_.stopRequested()) {
            return "";
        }
        // What is wrong with a file is told when its turn comes.
        ErrorSlot ignored;
        if (std::optional<std::string> bytes = platform::readFile(path, ignored)) {
            if (const auto project = ProjectText::read(std::move(*bytes), ignored)) {
                relinker_.prepare(*project, path);
            }
        }
    }
    std::string unread;
    for (const std::string& folder : relinker_.search(stop_)) {
        unread +=
            (unread.empty() ? "" : " ") + formatString("%@ could not be looked through.", folder);
    }
    return unread;
}

BatchOutcome BatchJob::perform(const std::string& path, const Progress& progress,
                               bool usesThreads) {
    BatchOutcome outcome;
    try {
        outcome = act(path, progress, usesThreads);
    } catch (const std::bad_alloc&) {
        outcome = failed(formatString("There was not enough memory for the file %@.", path));
    } catch (const std::exception& exception) {
        outcome = failed(formatString("The file %@: %@", path, exception.what()));
    }
    if (!outcome.reason.empty()) {
        QMLog::appendLog("%@", outcome.reason);
    }
    return outcome;
}

BatchOutcome BatchJob::act(const std::string& path, const Progress& progress, bool usesThreads) {
    switch (request_.action) {
        case BatchAction::check:
            return check(path, usesThreads);
        case BatchAction::repair:
            return repair(path, progress);
        case BatchAction::mend:
            return mend(path, usesThreads);
        case BatchAction::convert:
            return convert(path);
        case BatchAction::relink:
            return relink(path);
        default:
            return restore(path);
    }
}

CheckOptions BatchJob::checkOptions(const std::string& path, bool usesThreads) const {
    CheckOptions options = request_.check;
    options.fileName = lastComponent(path);
    options.usesThreads = usesThreads;
    return options;
}

BatchOutcome BatchJob::check(const std::string& path, bool usesThreads) const {
    ErrorSlot error;
    const std::optional<std::string> bytes = platform::readFile(path, error);
    if (!bytes) {
        return failed(error->localizedDescription());
    }
    BatchOutcome outcome;
    outcome.report = checkFile(*bytes, checkOptions(path, usesThreads));
    outcome.report->path = path;
    outcome.result = resultOf(outcome.report->findings, request_.failOn);
    return outcome;
}

BatchOutcome BatchJob::repair(const std::string& path, const Progress& progress) const {
    BatchOutcome outcome;
    JournaledSwap journaled(program_.name, program_.version);
    BatchEvents events(outcome, progress);
    RepairResult result = RepairPipeline(path, events, stop_, journaled).run();
    takeRepair(result, path, outcome);
    outcome.report.emplace();
    outcome.report->path = path;
    outcome.report->kind = nameOf(result.kind);
    outcome.report->findings = std::move(result.findings);
    return outcome;
}

Waiting BatchJob::waiting() const {
    return {.tell =
                [](const std::string& path) {
                    QMLog::appendLog("Another program uses the file %@; waiting.", path);
                },
            .stop = stop_};
}

BatchOutcome BatchJob::mend(const std::string& path, bool usesThreads) const {
    MendRequest request;
    request.asked = request_.asked;
    request.check = checkOptions(path, usesThreads);
    const Waiting wait = waiting();
    JournaledSwap journaled(program_.name, program_.version, JournalEntry::Action::mend);
    MendedFile file = mendFile(path, request, wait, journaled);
    if (!file.mended.refusal.empty()) {
        return failed(formatString("The file %@ was not mended: %@.", path, file.mended.refusal));
    }
    BatchOutcome outcome;
    if (!file.swap && !file.error && !file.isCancelled) {
        outcome.result = resultOf(file.mended.report.findings, request_.failOn);
    } else {
        takeChange(path, file, BatchResult::mended, outcome);
    }
    if (outcome.result != BatchResult::failed && outcome.result != BatchResult::cancelled) {
        outcome.report = std::move(file.mended.report);
        outcome.report->path = path;
        outcome.report->mends = std::move(file.mended.records);
    }
    return outcome;
}

BatchOutcome BatchJob::convert(const std::string& path) const {
    ConvertFileRequest request;
    request.conversion.to = request_.version;
    request.conversion.strips = request_.strips;
    request.conversion.mostOfARule = request_.check.mostOfARule;
    request.isInPlace = request_.isInPlace;
    request.output = request_.isInPlace ? std::nullopt : request_.folder;
    request.stop = stop_;
    const Waiting wait = waiting();
    JournaledSwap journaled(program_.name, program_.version, JournalEntry::Action::convert);
    ConvertedFile file = convertFile(path, request, wait, journaled);
    BatchOutcome outcome;
    outcome.notes = std::move(file.notes);
    outcome.replaced = file.original;
    if (!request_.isInPlace && file.report.conversion) {
        outcome.written = file.report.conversion->result;
    }
    if (!file.report.groups.empty()) {
        outcome.report = std::move(file.report);
    }
    if (file.refusal.empty()) {
        outcome.result = BatchResult::converted;
        return outcome;
    }
    outcome.result = stop_.stopRequested() ? BatchResult::cancelled
                     : file.isOtherFormat  ? BatchResult::unable
                                           : BatchResult::failed;
    outcome.reason = std::move(file.refusal);
    return outcome;
}

BatchOutcome BatchJob::relink(const std::string& path) {
    ErrorSlot error;
    std::optional<std::string> bytes = platform::readFile(path, error);
    if (!bytes) {
        return failed(error->localizedDescription());
    }
    const std::unique_ptr<ProjectText> project = ProjectText::read(*bytes, error);
    if (project == nullptr || project->fault()) {
        return failed(formatString("%@: %@ Nothing was relinked; repair the file first.", path,
                                   project == nullptr ? error->localizedDescription()
                                                      : project->fault()->localizedDescription()));
    }
    const FileKind kind = project->index().kind();
    if (kind != FileKind::fcpxml && kind != FileKind::xmeml) {
        return failed(formatString("%@: It is neither XMEML nor FCPXML.", path));
    }
    std::unique_lock lock(mutex_);
    RelinkedBytes relinked = relinker_.relink(*project, *bytes, path);
    lock.unlock();
    if (!relinked.refusal.empty()) {
        return failed(formatString("%@: Nothing was relinked: %@.", path, relinked.refusal));
    }
    return writeRelinked(path, *bytes, std::move(relinked));
}

BatchOutcome BatchJob::writeRelinked(const std::string& path, const std::string& oldBytes,
                                     RelinkedBytes relinked) const {
    BatchOutcome outcome;
    if (relinked.left != 0) {
        outcome.notes.push_back(
            formatString("%llu media files were not found and stay as they are.", relinked.left));
    }
    outcome.report = std::move(relinked.report);
    outcome.report->path = path;
    if (relinked.bytes == oldBytes) {
        if (request_.isInPlace) {
            const std::vector<std::string> notes = clearLeftByRelinking(path, waiting());
            outcome.notes.insert(outcome.notes.end(), notes.begin(), notes.end());
        }
        outcome.result = relinked.left == 0 ? BatchResult::sound : BatchResult::findings;
    } else if (stop_.stopRequested()) {
        outcome.result = BatchResult::cancelled;
    } else if (request_.isInPlace) {
        const Waiting wait = waiting();
        JournaledSwap journaled(program_.name, program_.version, JournalEntry::Action::relink);
        takeChange(path, relinkInPlace(path, oldBytes, relinked.bytes, wait, journaled),
                   BatchResult::relinked, outcome);
    } else {
        std::string wanted = relinkedPath(path);
        if (request_.folder) {
            wanted = joinPath(*request_.folder, lastComponent(wanted));
        }
        ErrorSlot error;
        const auto written = writeResultFile(wanted, relinked.bytes, path, error);
        outcome.result = written ? BatchResult::relinked : BatchResult::failed;
        outcome.reason = written ? "" : error->localizedDescription();
        outcome.written = written ? written->path : "";
    }
    return outcome;
}

BatchOutcome BatchJob::restore(const std::string& path) {
    const std::lock_guard lock(mutex_);
    if (!undo_) {
        return failed("There is nothing to restore, since there is no home folder.");
    }
    const UndoResult result =
        undo_->undo(path, [this](const JournalEntry&) { return request_.evenIfChanged; });
    BatchOutcome outcome;
    if (result.end == UndoResult::End::undone) {
        outcome.result = BatchResult::restored;
        outcome.replaced = result.result;
        if (!result.losses.empty()) {
            outcome.notes.push_back(
                formatString("The file %@ is not all that it was. %@", path, result.losses));
        }
    } else {
        outcome.result =
            result.end == UndoResult::End::failed ? BatchResult::failed : BatchResult::unable;
        outcome.reason = whyNotRestored(result, path);
    }
    return outcome;
}

}  // namespace vornic
