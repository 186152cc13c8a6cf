#include <QFileDialog>
#include <utility>

#include "desktop/DocumentMainWindow.h"
#include "desktop/DocumentThread.h"
#include "desktop/FileIcons.h"
#include "desktop/QtText.h"
#include "desktop/timeline/TimelineExport.h"

// What the window of a document does with the timeline of its file.

namespace vornic {

TimelinePage* DocumentMainWindow::makeTimeline() {
    return new TimelinePage({.looked = [this](std::size_t line) { source_->showLine(line); },
                             .showLine =
                                 [this](std::size_t line) {
                                     source_->showLine(line);
                                     showPage(Page::source);
                                 },
                             .showFinding =
                                 [this](const Finding& finding) {
                                     findings_->showFinding(finding);
                                     showPage(Page::findings);
                                 },
                             .savePicture = [this] { savePicture(); }},
                            pages_);
}

void DocumentMainWindow::savePicture() {
    if (!timeline_->timeline()) {
        beginAlertSheet("There is no timeline yet",
                        "It is read when its page is shown: choose Timeline in the View menu.");
        return;
    }
    auto* const panel = new QFileDialog(this, tr("Save Picture"));
    panel->setObjectName(QStringLiteral("savePicturePanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    FileIcons::useIn(*panel);
    panel->setNameFilters({tr("SVG (*.svg)"), tr("PNG (*.png)"), tr("PDF (*.pdf)")});
    panel->setDefaultSuffix(QStringLiteral("svg"));
    panel->selectFile(proposedPath(tr(" timeline") + QStringLiteral(".svg")));
    connect(panel, &QFileDialog::filterSelected, panel, [panel](const QString& filter) {
        const qsizetype dot = filter.indexOf(QStringLiteral("*."));
        panel->setDefaultSuffix(filter.mid(dot + 2).chopped(1));
    });
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& chosen) { savePictureTo(pathFromQString(chosen)); });
    panel->open();
}

void DocumentMainWindow::savePictureTo(const std::string& path) {
    if (isActing_ || !timeline_->timeline() || isOwnFile(path, "Unable to save the picture")) {
        return;
    }
    header_->setBusy(tr("Saving the picture…"));
    runOnThread<std::string>(
        [timeline = timeline_->timeline(), path] { return writeTimelinePicture(*timeline, path); },
        [this](const std::string& failure) {
            writeHeader();
            if (!failure.empty()) {
                beginAlertSheet("Unable to save the picture", failure);
            }
        });
}

}  // namespace vornic
