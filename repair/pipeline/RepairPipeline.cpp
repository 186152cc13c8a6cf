#include "repair/pipeline/RepairPipeline.h"

#include <new>
#include <string_view>
#include <tuple>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "base/Utf8.h"
#include "formats/FileCodes.h"
#include "foundation/log/QMException.h"
#include "platform/files/Failure.h"
#include "platform/items/ItemStatus.h"
#include "platform/settings/UserPreferences.h"
#include "repair/pipeline/CharacterFilter.h"
#include "repair/pipeline/ClosingMessage.h"
#include "repair/pipeline/EventRepair.h"
#include "repair/pipeline/HeaderChecks.h"
#include "repair/pipeline/SwapReport.h"
#include "repair/pipeline/VersionTagCheck.h"
#include "report/RuleTable.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

namespace {

// The preferences hold text; a path may hold any bytes.
platform::PropertyList asPreference(const std::string& path) {
    std::string text;
    appendAsValidUtf8(text, path);
    return platform::PropertyList(std::move(text));
}

RunEnd stoppedWith(ClosingMessage closing) {
    return {RepairOutcome::stopped, std::move(closing)};
}

std::size_t markLength(std::string_view bytes) {
    return bytes.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
}

}  // namespace

std::string RepairPipeline::workingCopyPath(const std::string& path, FileKind kind) {
    return withoutExtension(path) +
           formatString("-backup.%@", kind == FileKind::fcpxml ? "fcpxml" : "xml");
}

RepairPipeline::RepairPipeline(const std::string& path, Events& events, StopToken stop,
                               SwapObserver& observer)
    : RepairPipeline(path, fileKindOfPath(path), events, std::move(stop), observer) {}

RepairPipeline::RepairPipeline(const std::string& path, FileKind kind, Events& events,
                               StopToken stop, SwapObserver& observer)
    : path_(path),
      kind_(kind),
      report_(events),
      stop_(std::move(stop)),
      observer_(observer),
      named_(path),
      workingCopy_(path, workingCopyPath(path, kind_),
                   {.tell = [this](const std::string& file) { tellWait(file); }, .stop = stop_}),
      markup_(report_, stop_, error_) {}

RepairResult RepairPipeline::run() && {
    RepairResult result;
    try {
        const Stage<Done> judged = judge();
        if (const RunEnd* const end = judged.end()) {
            result.outcome = end->outcome;
            result.closing = end->closing;
        } else {
            finish(result);
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document startRepair:]");
    } catch (const std::bad_alloc&) {
        dropWorkingCopy(result.outcome);
        reportMemoryEnd();
        throw;
    } catch (...) {
        dropWorkingCopy(result.outcome);
        throw;
    }
    dropWorkingCopy(result.outcome);
    complete(result);
    return result;
}

// What holds of every run.
void RepairPipeline::complete(RepairResult& result) {
    const bool isRepaired = result.outcome == RepairOutcome::repairedAndSwapped ||
                            result.outcome == RepairOutcome::repairedNotSwapped;
    result.kind = kind_;
    result.verdict = report_.verdict();
    result.findings = std::move(report_.findings());
    result.obstacle = report_.obstacle();
    result.original = isRepaired ? result.swap.original : path_;
    if (result.outcome == RepairOutcome::repairedNotSwapped) {
        result.workingCopy = result.swap.repaired;
    } else if (result.outcome == RepairOutcome::cancelled && workingCopy_.isMade()) {
        result.workingCopy = workingCopy_.path();
    }
    if (!workingCopy_.recycled().empty()) {
        result.oldCopy = workingCopy_.recycled().back();
    }
}

Stage<Done> RepairPipeline::judge() {
    return begin()
        .then([this](Done) { return clearWorkingCopyPath(); })
        .then([this](Done) { return makeWorkingCopy(); })
        .then([this](Done) { return readText(); })
        .then([this](SourceText text) { return markup_.load(std::move(text)); })
        .then([this](LoadedText loaded) {
            return loaded.hasDocument ? mend(std::move(loaded)) : Stage<Done>(Done());
        });
}

Stage<Done> RepairPipeline::begin() {
    report_.log("repair-begins"_rule, {{"path", path_}});
    if (!workingCopy_.settleLeft()) {
        return cancelledRun();
    }
    if (!workingCopy_.sourceExists()) {
        report_.log("repair-file-missing"_rule, {{"path", path_}});
        if (const ErrorSlot reason = platform::failedLook(path_)) {
            report_.say("repair-reason"_rule, {{"reason", reason->localizedDescription()}});
        }
        return stoppedWith(closingMessage("repair-not-located"_rule, {{"path", path_}}));
    }
    ErrorSlot ignored;  // a preference that can't be stored is no reason not to repair
    std::ignore = platform::UserPreferences().setValue("filepath", asPreference(path_), ignored);
    report_.say("repair-start"_rule, {{"path", path_}});
    report_.label("repair-start"_rule, {{"path", path_}});
    report_.label("repair-making-copy"_rule);
    report_.say("repair-making-copy"_rule);
    reportNotes();
    return Done();
}

void RepairPipeline::tellWait(const std::string& path) {
    report_.label("repair-waiting"_rule, {{"path", path}});
    report_.say("repair-waiting"_rule, {{"path", path}});
}

Stage<Done> RepairPipeline::clearWorkingCopyPath() {
    ErrorSlot reason;
    const WorkingCopy::Clearing clearing = workingCopy_.clearPath(reason);
    reportNotes();
    if (clearing != WorkingCopy::Clearing::done) {
        return uncleared(clearing, reason);
    }
    return Done();
}

Stage<Done> RepairPipeline::makeWorkingCopy() {
    if (isCancelled()) {
        return cancelledRun();
    }
    error_.reset();
    const WorkingCopy::Clearing clearing = workingCopy_.create(error_);
    reportNotes();
    if (clearing == WorkingCopy::Clearing::failed) {
        return uncreated(slotDescription());
    }
    if (clearing != WorkingCopy::Clearing::done) {
        return uncleared(clearing, error_);
    }
    return Done();
}

RunEnd RepairPipeline::uncleared(WorkingCopy::Clearing clearing, const ErrorSlot& reason) {
    const std::string why = reason ? reason->localizedDescription() : std::string();
    if (clearing == WorkingCopy::Clearing::cancelled) {
        return cancelledRun();
    }
    if (clearing == WorkingCopy::Clearing::noTurn) {
        return uncreated(why);
    }
    report_.say("repair-old-copy-stays"_rule, {{"copy", workingCopy_.path()}});
    if (clearing == WorkingCopy::Clearing::refused) {
        report_.say("repair-reason"_rule, {{"reason", why}});
    } else {
        report_.log("repair-reason"_rule, {{"reason", why}});
    }
    report_.setVerdict({});
    return stoppedWith(
        closingMessage("repair-old-copy-in-the-way"_rule, {{"copy", workingCopy_.path()}}));
}

RunEnd RepairPipeline::uncreated(const std::string& why) {
    report_.say("repair-copy-failed"_rule, {{"reason", why}});
    report_.setVerdict({});
    return stoppedWith(closingMessage("repair-not-copied"_rule, {{"reason", why}}));
}

void RepairPipeline::reportNotes() {
    for (const Note& note : workingCopy_.takeNotes()) {
        if (note.isForLog) {
            report_.events().logLine(note.text());
        } else {
            report_.say(note);
        }
    }
}

Stage<SourceText> RepairPipeline::readText() {
    report_.sayAndLabel("repair-checking-file"_rule);
    report_.setVerdict({false, true});
    if (isCancelled()) {
        return cancelledRun();
    }
    TextSurvey survey;
    std::optional<std::string> bytes = workingCopy_.read(error_, &survey);
    if (!bytes) {
        report_.noteErrors();
        return isCancelled() ? cancelledRun() : criticalEnd();
    }
    const std::size_t start = markLength(*bytes);
    std::optional<std::string> text = textFromUTF8(std::move(*bytes), survey, error_);
    if (isCancelled()) {
        return cancelledRun();
    }
    if (!text) {
        return readRawBytes();
    }
    return SourceText{.text = std::move(*text), .start = start, .forbidden = survey.forbidden()};
}

Stage<SourceText> RepairPipeline::readRawBytes() {
    error_.reset();
    report_.noteErrors();
    const std::optional<std::string> bytes = workingCopy_.read(error_);
    if (!bytes) {
        return criticalEnd();
    }
    if (isCancelled()) {
        return cancelledRun();
    }
    report_.log("repair-stripping"_rule);
    std::string stripped = stripInvalidCharsFromData(*bytes);
    if (isCancelled()) {
        return cancelledRun();
    }
    std::optional<std::string> text = textFromUTF8(std::move(stripped), error_);
    if (!text) {
        return criticalEnd();
    }
    return unlessCancelled(stop_, SourceText{std::move(*text), std::nullopt});
}

RunEnd RepairPipeline::criticalEnd() {
    report_.setVerdict({report_.verdict().hasErrors, false});
    report_.sayReason(error_);
    report_.say("repair-not-loaded"_rule);
    report_.say("repair-critical"_rule);
    return stoppedWith(closingMessage("repair-canceled"_rule));
}

Stage<Done> RepairPipeline::mend(LoadedText loaded) {
    return markup_.filterAndParse(std::move(loaded))
        .then([this](Tree document) { return checkHeader(std::move(document)); })
        .then([this](Tree document) { return repairEvents(std::move(document)); })
        .then([this](Tree document) { return save(std::move(document)); })
        .then([this](Done) { return updateCodes(); });
}

Stage<RepairPipeline::Tree> RepairPipeline::checkHeader(Tree document) {
    report_.sayAndLabel("repair-checking-header"_rule);
    if (isCancelled()) {
        return cancelledRun();
    }
    report_.log("repair-checking-header"_rule);
    if (kind_ == FileKind::fcpxml) {
        const FoundInRepair found = reporting(document);
        return checkFCPXMLHeaderTags(std::move(document), found);
    }
    const FoundInRepair found = reporting(document);
    document = checkXMEMLHeaderTags(std::move(document), found);
    report_.sayAndLabel("repair-checking-version"_rule);
    if (isCancelled()) {
        return cancelledRun();
    }
    report_.log("repair-checking-version"_rule);
    checkVersionTags(document.get(), reporting(document));
    return document;
}

Stage<RepairPipeline::Tree> RepairPipeline::repairEvents(Tree document) {
    if (isCancelled()) {
        return cancelledRun();
    }
    if (kind_ != FileKind::fcpxml) {
        return document;
    }
    report_.say("repair-checking-events"_rule);
    std::size_t start = 0;
    bool hasErrors = false;
    document = repairFCPXDocument(
        std::move(document), &hasErrors,
        [&](RepairFinding finding) {
            finding.where.offset += start;
            report_.add(finding);
        },
        [&]() -> std::optional<std::string> {
            ErrorSlot ignored;  // then there is no place to tell
            std::optional<std::string> bytes = workingCopy_.read(ignored);
            start = markLength(bytes.value_or(""));
            return bytes ? textFromUTF8(std::move(*bytes), ignored) : std::nullopt;
        });
    if (hasErrors) {
        report_.noteErrors();
    }
    return document;
}

Stage<Done> RepairPipeline::save(Tree document) {
    if (document) {
        workingCopy_.save([&](const WorkingCopy::Sink& sink) { return document->serialize(sink); },
                          error_);
    }
    if (error_) {
        report_.giveUp();
        report_.say("repair-save-failed"_rule, {{"reason", slotDescription()}});
    }
    return unlessCancelled(stop_, Done());
}

Stage<Done> RepairPipeline::updateCodes() {
    if (kind_ == FileKind::fcpxml) {
        return unlessCancelled(stop_, Done());
    }
    report_.sayAndLabel("repair-updating-codes"_rule);
    const FileCodes codes = setFinalCutFileCodes(workingCopy_.path(), error_);
    if (codes != FileCodes::set) {
        const bool isUnread = codes == FileCodes::unread;
        report_.say(isUnread ? "repair-codes-unread"_rule : "repair-codes-unwritten"_rule,
                    {{"reason", slotDescription()}});
    }
    return unlessCancelled(stop_, Done());
}

void RepairPipeline::finish(RepairResult& result) {
    report_.label("repair-finishing"_rule);
    const Verdict verdict = report_.verdict();
    if (!verdict.hasErrors) {
        finishSound(result);
    } else if (!verdict.wasRepaired) {
        finishUnable(result);
    } else {
        finishRepaired(result);
    }
}

void RepairPipeline::finishSound(RepairResult& result) {
    report_.say("repair-sound"_rule);
    removeWorkingCopy();
    result.outcome = RepairOutcome::sound;
    result.closing = closingMessage("repair-sound"_rule);
}

void RepairPipeline::finishUnable(RepairResult& result) {
    report_.say("repair-unable"_rule);
    removeWorkingCopy();
    result.outcome = RepairOutcome::unable;
    result.closing = closingMessage("repair-unable"_rule);
}

void RepairPipeline::finishRepaired(RepairResult& result) {
    report_.say("repair-done"_rule);
    result.swap = workingCopy_.swap(observer_);
    const SwapResult& swap = result.swap;
    result.outcome = swap.end == SwapEnd::done ? RepairOutcome::repairedAndSwapped
                                               : RepairOutcome::repairedNotSwapped;
    const std::string lost = workingCopy_.lostMetadata();
    if (swap.end == SwapEnd::done && !lost.empty()) {
        report_.say("repair-metadata-lost"_rule, {{"path", path_}, {"what", lost}});
    }
    if (swap.error && (swap.end == SwapEnd::done || swap.end == SwapEnd::failed)) {
        error_ = swap.error;
    }
    reportSwap(report_, swap, path_, workingCopy_.path());
    if (error_) {
        reportUnremovedCopy();
    }
    result.closing = closingMessage("repair-done"_rule);
}

void RepairPipeline::removeWorkingCopy() {
    workingCopy_.remove(error_);
    reportNotes();
    if (error_) {
        reportUnremovedCopy();
    }
}

// After a run that came to no judgement: the copy is of no use to anybody.
void RepairPipeline::dropWorkingCopy(RepairOutcome outcome) {
    const int errorNumber = outcome == RepairOutcome::stopped ? workingCopy_.discard() : 0;
    if (errorNumber == 0) {
        return;
    }
    try {
        platform::failFile(error_, workingCopy_.path(), "removed", errorNumber);
        reportUnremovedCopy();
    } catch (const std::bad_alloc&) {
        // It stays, and the next run moves it to the Trash.
    }
}

void RepairPipeline::reportUnremovedCopy() {
    report_.say("repair-copy-unremoved"_rule,
                {{"copy", workingCopy_.path()}, {"reason", slotDescription()}});
}

void RepairPipeline::reportMemoryEnd() {
    try {
        report_.say("repair-no-memory"_rule, {{"path", path_}});
    } catch (const std::bad_alloc&) {
        // Whoever started the run is told by the exception.
    }
}

FoundInRepair RepairPipeline::reporting(const Tree& document) {
    // Without a document its markup is at fault, and that is counted.
    return [this, isThere = document != nullptr](const RepairFinding& finding) {
        isThere ? report_.add(finding) : report_.say(finding);
    };
}

std::string RepairPipeline::slotDescription() const {
    return error_ ? error_->localizedDescription() : std::string();
}

}  // namespace vornic
