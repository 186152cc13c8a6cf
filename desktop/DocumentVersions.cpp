#include <QFileDialog>
#include <utility>

#include "desktop/AlertBox.h"
#include "desktop/DocumentMainWindow.h"
#include "desktop/DocumentThread.h"
#include "desktop/FileIcons.h"
#include "desktop/QtText.h"
#include "desktop/SalvageSheet.h"
#include "desktop/SetVersionSheet.h"
#include "desktop/Sheet.h"
#include "job/SalvageFile.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

// What the window of a document does about versions, and for a file that no repair can take.

namespace vornic {

void DocumentMainWindow::convertFCPXMLVersion() {
    if (isActing_ || (versionSheet_ && versionSheet_->isVisible())) {
        return;
    }
    versionSheet_ = new VersionSheet(
        path_,
        {.convert =
             [this](const VersionRequest& request) { convertVersion(*versionSheet_, request); },
         .refuse =
             [this](const std::string& why) {
                 beginAlertSheet("The file cannot be converted to another version of FCPXML", why);
             }},
        this);
    beginSheet(*versionSheet_);
}

void DocumentMainWindow::convertVersion(VersionSheet& sheet, const VersionRequest& request) {
    header_->setBusy(tr("Converting to version %1…").arg(toQString(request.version)));
    runOnThread<ConvertedVersion>(
        [path = path_, request] {
            return convertFCPXML(path, request, programName(), VORNIC_VERSION);
        },
        [this, request, shown = QPointer<VersionSheet>(&sheet)](const ConvertedVersion& converted) {
            if (shown) {
                shown->finish();
            }
            takeConverted(converted, request);
        });
}

void DocumentMainWindow::takeConverted(const ConvertedVersion& converted,
                                       const VersionRequest& request) {
    writeHeader();
    if (converted.isStopped) {
        setOutcome(tr("The conversion was stopped. Nothing was written."), false, false);
        return;
    }
    if (!converted.isDone) {
        if (converted.failure.empty()) {
            tellDone(tr("Nothing was written."), converted);
        } else {
            tellFailure(tr("Unable to convert the file"), converted);
        }
        return;
    }
    if (!request.isInPlace) {
        tellDone(tr("The copy in version %1 is called %2. The file is as it was.")
                     .arg(toQString(request.version), fileNameOf(converted.replaced)),
                 converted);
        return;
    }
    tellDone(tr("Converted to version %1. The original file is in the Trash.")
                 .arg(toQString(request.version)),
             converted);
    inspect({.action = HeaderFacts::Action::conversion,
             .version = request.version,
             .isUndoable = converted.isUndoable},
            converted.replaced);
}

void DocumentMainWindow::treatAsContents() {
    const std::shared_ptr<Document> shown = document();
    if (!shown || isActing_ || shown->isRunning() || !facts_.inspection) {
        return;
    }
    shown->repairAs(fileKindOfRoot(facts_.inspection->file.report.kind));
}

void DocumentMainWindow::setVersion() {
    if (isActing_ || isStillLookedAt()) {
        return;
    }
    const FileKind kind = fileKindOfRoot(table_->inspection().file.report.kind);
    if (kind != FileKind::fcpxml && kind != FileKind::xmeml) {
        beginAlertSheet("The file has no version",
                        "Its root element is neither <xmeml> nor <fcpxml>.");
        return;
    }
    auto* const sheet = new SetVersionSheet(
        kind, [this](const std::string& version) { setVersionTo(version); }, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    beginSheet(*sheet);
}

void DocumentMainWindow::setVersionTo(const std::string& version) {
    header_->setBusy(tr("Writing the version…"));
    runOnThread<FileActionResult>(
        [path = path_, version] {
            return setVersionInPlace(path, version, programName(), VORNIC_VERSION);
        },
        [this](const FileActionResult& result) {
            if (!result.isDone) {
                tellFailure(tr("Unable to set the version"), result);
                inspectAfterFailure();
                return;
            }
            tellDone(tr("The version was set. The original file is in the Trash."), result);
            inspect({.action = HeaderFacts::Action::mend, .isUndoable = result.isUndoable},
                    result.replaced);
        });
}

void DocumentMainWindow::saveSalvagedCopy() {
    if (isActing_) {
        return;
    }
    header_->setBusy(tr("Looking for what is left of the file…"));
    runOnThread<SalvagePreview>([path = path_] { return previewSalvage(path); },
                                [this](const SalvagePreview& preview) { askToSalvage(preview); });
}

void DocumentMainWindow::askToSalvage(const SalvagePreview& preview) {
    writeHeader();
    if (!preview.refusal.empty()) {
        beginAlertSheet("There is nothing to salvage", preview.refusal);
        return;
    }
    const auto save = [this, preview] {
        auto* const panel = new QFileDialog(this, tr("Save a Salvaged Copy"));
        panel->setObjectName(QStringLiteral("saveSalvagedPanel"));
        panel->setAttribute(Qt::WA_DeleteOnClose);
        panel->setAcceptMode(QFileDialog::AcceptSave);
        // What stands there stays; the copy gets a number.
        panel->setOption(QFileDialog::DontConfirmOverwrite);
        FileIcons::useIn(*panel);
        panel->selectFile(pathToQString(salvagedPath(path_)));
        connect(panel, &QFileDialog::fileSelected, this, [this, preview](const QString& chosen) {
            saveSalvagedCopyTo(pathFromQString(chosen), preview);
        });
        panel->open();
    };
    auto* const sheet = new SalvageSheet(preview, save, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    beginSheet(*sheet);
}

void DocumentMainWindow::saveSalvagedCopyTo(const std::string& to, const SalvagePreview& preview) {
    if (isActing_) {
        return;
    }
    header_->setBusy(tr("Saving the salvaged copy…"));
    runOnThread<FileActionResult>(
        [path = path_, to, preview] { return saveSalvaged(path, preview, to); },
        [this](const FileActionResult& result) {
            writeHeader();
            if (!result.isDone) {
                tellFailure(tr("Unable to save the copy"), result);
                return;
            }
            tellDone(tr("The salvaged copy is called %1. The file itself was not written.")
                         .arg(fileNameOf(result.replaced)),
                     result);
        });
}

}  // namespace vornic
