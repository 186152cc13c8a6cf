#include <utility>

#include "desktop/DocumentMainWindow.h"
#include "desktop/DocumentThread.h"
#include "desktop/MendSheet.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "ui/alerts/QMAlert.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

// What the window of a document does with the file besides its repair.

namespace vornic {

void DocumentMainWindow::setActing(bool isActing) {
    isActing_ = isActing;
    repairButton_->setEnabled(!isActing);
    findings_->setMayMend(!isActing && table_ != nullptr);
    header_->setEnabled(!isActing);
    media_->setMayChange(!isActing);
}

void DocumentMainWindow::tellNoThread() {
    writeHeader();
    beginAlertSheet("Unable to begin", "The system has no thread to give.");
}

bool DocumentMainWindow::isStillLookedAt() {
    if (!table_) {
        beginAlertSheet("There are no findings yet", "The file is still looked at.");
    }
    return !table_;
}

void DocumentMainWindow::tellFailure(const QString& message, const FileActionResult& result) {
    beginAlertSheet(message.toStdString(), result.failure);
}

void DocumentMainWindow::tellDone(const QString& outcome, const FileActionResult& result) {
    QString text = outcome;
    for (const std::string& note : result.notes) {
        text += u' ' + toQString(note);
    }
    setOutcome(text, true, result.isUndoable);
}

void DocumentMainWindow::mendTicked() {
    if (isActing_ || isStillLookedAt()) {
        return;
    }
    const auto ticked = findings_->model().tickedFindings();
    if (ticked.empty()) {
        beginAlertSheet("Nothing is selected",
                        "Tick the findings in the list that are to be mended. Those without a box "
                        "have no mend.");
        return;
    }
    preview(ticked);
}

void DocumentMainWindow::mendSafely() {
    if (isActing_ || isStillLookedAt()) {
        return;
    }
    auto safe = safelyMendable(table_->inspection().file.report.findings);
    if (safe.empty()) {
        beginAlertSheet("There is nothing to mend",
                        "No finding in this file has a mend that can be made without a choice.");
        return;
    }
    preview(std::move(safe));
}

void DocumentMainWindow::preview(std::vector<const Finding*> findings) {
    header_->setBusy(tr("Looking at what the mends would change…"));
    runOnThread<MendPreview>(
        [table = table_, findings = std::move(findings)] {
            return previewMends(table->inspection().file, findings);
        },
        [this](const MendPreview& preview) { askToMend(preview); });
}

void DocumentMainWindow::askToMend(const MendPreview& preview) {
    writeHeader();
    if (!preview.refusal.empty() || preview.count == 0) {
        beginAlertSheet("The mends cannot be made", preview.refusal);
        return;
    }
    auto* const sheet = new MendSheet(
        preview, [this, request = preview.request] { mend(request); }, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    beginSheet(*sheet);
}

void DocumentMainWindow::mend(const MendRequest& request) {
    header_->setBusy(tr("Mending the file…"));
    runOnThread<FileActionResult>(
        [path = path_, request] {
            return mendInPlace(path, request, programName(), VORNIC_VERSION);
        },
        [this](const FileActionResult& result) { takeMended(result); });
}

void DocumentMainWindow::takeMended(const FileActionResult& result) {
    if (!result.isDone) {
        tellFailure(tr("Unable to mend the file"), result);
        inspectAfterFailure();
        return;
    }
    tellDone(tr("Mended. The original file is in the Trash."), result);
    inspect({.action = HeaderFacts::Action::mend, .isUndoable = result.isUndoable},
            result.replaced);
}

void DocumentMainWindow::restoreOriginal() {
    if (!isActing_) {
        restore(false, false);
    }
}

void DocumentMainWindow::restore(bool evenIfChanged, bool mendsAfterwards) {
    header_->setBusy(tr("Restoring the original…"));
    runOnThread<RestoreResult>(
        [path = path_, evenIfChanged] {
            return vornic::restoreOriginal(path, programName(), VORNIC_VERSION, evenIfChanged);
        },
        [this, mendsAfterwards](const RestoreResult& result) {
            takeRestored(result, mendsAfterwards);
        });
}

void DocumentMainWindow::takeRestored(const RestoreResult& result, bool mendsAfterwards) {
    if (result.end == UndoResult::End::changed) {
        writeHeader();
        const std::shared_ptr<Document> shown = document();
        const std::int64_t answer = QMAlert::alertSheetWithMessageText(
            "The file has changed since", "Cancel", "Restore", std::nullopt,
            "Restoring the original moves what is there now to the Trash.",
            shown ? shown->windowMain() : nullptr, nullptr, std::nullopt, true, nullptr);
        constexpr std::int64_t kRestore = 0;
        if (answer == kRestore && document()) {
            restore(true, mendsAfterwards);
        }
        return;
    }
    if (!result.isDone) {
        writeHeader();
        tellFailure(tr("Unable to restore the original"), result);
        return;
    }
    QString outcome = tr("The original is back.");
    if (!result.replaced.empty()) {
        outcome += QStringLiteral(" ") + tr("What was there is in the Trash.");
    }
    for (const std::string& note : result.notes) {
        outcome += QStringLiteral(" ") + toQString(note);
    }
    setOutcome(outcome, true, !result.replaced.empty());
    if (mendsAfterwards) {
        mend({.asked = {}, .check = {}});
        return;
    }
    inspect({.action = HeaderFacts::Action::restore, .isUndoable = result.isUndoable}, "");
}

void DocumentMainWindow::compareWithOriginal() {
    if (table_ && table_->inspection().original) {
        showPage(Page::changes);
        return;
    }
    if (isActing_) {
        return;
    }
    runOnThread<std::string>([path = path_] { return originalOf(path); },
                             [this](const std::string& original) {
                                 if (original.empty()) {
                                     beginAlertSheet("There is no original to compare with",
                                                     "Nothing has changed the file in its place, "
                                                     "or the Trash has been emptied since.");
                                     return;
                                 }
                                 showsChangesNext_ = true;
                                 inspect(facts_, original);
                             });
}

}  // namespace vornic
