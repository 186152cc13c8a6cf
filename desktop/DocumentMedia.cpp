#include <QFileDialog>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "desktop/DocumentMainWindow.h"
#include "desktop/DocumentThread.h"
#include "desktop/FileIcons.h"
#include "desktop/MediaFolderSheet.h"
#include "desktop/QtText.h"
#include "desktop/RelinkSheet.h"
#include "desktop/Sheet.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

// What the window of a document does about the media that its file names.

namespace vornic {

void DocumentMainWindow::findMediaInFolder() {
    if (isActing_) {
        return;
    }
    auto* const panel =
        new QFileDialog(this, tr("Find Media in Folder"), pathToQString(parentFolder(path_)));
    panel->setObjectName(QStringLiteral("findMediaPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    FileIcons::useIn(*panel);
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& chosen) { findMediaIn(pathFromQString(chosen), std::nullopt); });
    panel->open();
}

void DocumentMainWindow::findMediaIn(const std::string& folder, std::optional<Pick> pick) {
    if (isActing_) {
        return;
    }
    header_->setBusy(tr("Searching the folder…"));
    runOnThread<RelinkPreview>(
        [path = path_, folder, pick] { return previewSearch(path, folder, pick); },
        [this, folder, pick](const RelinkPreview& preview) { askToRelink(preview, pick, folder); });
}

void DocumentMainWindow::changeMediaFolder() {
    if (isActing_) {
        return;
    }
    std::vector<std::string> folders;
    if (const MediaTable* const table = media_->model().table()) {
        folders = table->missingFolders();
    }
    if (const MediaTableRow* const medium = media_->currentMedium()) {
        std::erase(folders, medium->folder);
        folders.insert(folders.begin(), medium->folder);
    }
    auto* const sheet = new MediaFolderSheet(
        folders, [this](const std::string& from, const std::string& to) { changeFolder(from, to); },
        this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    beginSheet(*sheet);
}

void DocumentMainWindow::changeFolder(const std::string& oldFolder, const std::string& newFolder) {
    if (isActing_) {
        return;
    }
    header_->setBusy(tr("Looking for the media in the new folder…"));
    runOnThread<RelinkPreview>(
        [path = path_, oldFolder, newFolder] {
            return previewFolderChange(path, oldFolder, newFolder);
        },
        [this](const RelinkPreview& preview) { askToRelink(preview, std::nullopt, ""); });
}

// @param searched the folder; "" where none was searched
void DocumentMainWindow::askToRelink(const RelinkPreview& preview, std::optional<Pick> pick,
                                     const std::string& searched) {
    writeHeader();
    if (!preview.refusal.empty()) {
        beginAlertSheet("Unable to relink the media", preview.refusal);
        return;
    }
    if (preview.moves.empty() && preview.stays.empty()) {
        beginAlertSheet("There is nothing to relink",
                        searched.empty()
                            ? "The file names no media in the old folder."
                            : "All media that the file names are where it says that they are.");
        return;
    }
    RelinkSheet::Actions actions{.relink = [this](const RelinkPreview& shown) { relink(shown); },
                                 .searchAgain = {}};
    if (!searched.empty()) {
        actions.searchAgain = [this, searched](std::optional<Pick> chosen) {
            findMediaIn(searched, chosen);
        };
    }
    auto* const sheet = new RelinkSheet(preview, pick, std::move(actions), this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    beginSheet(*sheet);
}

void DocumentMainWindow::relink(const RelinkPreview& preview) {
    header_->setBusy(tr("Relinking the media…"));
    runOnThread<FileActionResult>(
        [path = path_, preview] {
            return relinkAsShown(path, preview, programName(), VORNIC_VERSION);
        },
        [this, count = preview.moves.size()](const FileActionResult& result) {
            takeRelinked(result, count);
        });
}

void DocumentMainWindow::takeRelinked(const FileActionResult& result, std::size_t count) {
    if (!result.isDone) {
        tellFailure(tr("Unable to relink the media"), result);
        inspectAfterFailure();
        return;
    }
    tellDone(tr("Relinked. The original file is in the Trash."), result);
    inspect(
        {.action = HeaderFacts::Action::relink, .relinked = count, .isUndoable = result.isUndoable},
        result.replaced);
}

void DocumentMainWindow::showMedium() {
    const MediaTableRow* const medium = media_->currentMedium();
    if (medium == nullptr) {
        beginAlertSheet("No medium is chosen", "Choose one on the page of the media.");
    } else if (!isThere(medium->state) || medium->pathHere.empty()) {
        beginAlertSheet("The medium is not there",
                        formatString("There is no file %@ on this computer.",
                                     medium->pathHere.empty() ? medium->name : medium->pathHere));
    } else {
        actions_.showFile(medium->pathHere);
    }
}

}  // namespace vornic
