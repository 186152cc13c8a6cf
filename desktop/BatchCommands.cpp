#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <new>
#include <utility>

#include "desktop/AlertBox.h"
#include "desktop/BatchSheets.h"
#include "desktop/BatchWindow.h"
#include "desktop/BatchWork.h"
#include "desktop/FileIcons.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "desktop/SureCall.h"
#include "platform/files/AtomicFile.h"

// What the window of a batch asks its user, and the commands for its rows and reports.

namespace vornic {

namespace {

// @return why they could not be written; "" when they were.
std::string writeReports(const Batch& batch, const std::string& path) {
    try {
        if (batch.holds(path)) {
            return "They would take the place of a file of the batch.";
        }
        ErrorSlot error;
        platform::AtomicFile file;
        const bool isWritten =
            file.open(path, error) &&
            batch.writeHTML([&](std::string_view piece) { return file.write(piece, error); }) &&
            file.commit(platform::Durability::synced, error);
        if (isWritten) {
            return "";
        }
        return error ? error->localizedDescription() : "Nothing was written.";
    } catch (const std::bad_alloc&) {
        return "There is not enough memory.";
    }
}

}  // namespace

void BatchWindow::askForFiles(bool areFolders) {
    auto* const panel =
        new QFileDialog(this, areFolders ? tr("Add Folder or Bundle") : tr("Add Files"));
    panel->setObjectName(QStringLiteral("batchAddPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(areFolders ? QFileDialog::Directory : QFileDialog::ExistingFiles);
    panel->setOption(QFileDialog::ShowDirsOnly, areFolders);
    panel->setNameFilters({tr("Final Cut Pro XML files (*.xml *.fcpxml)"), tr("All files (*)")});
    FileIcons::useIn(*panel);
    connect(panel, &QFileDialog::filesSelected, this, [this](const QStringList& chosen) {
        std::vector<std::string> paths;
        for (const QString& path : chosen) {
            paths.push_back(pathFromQString(path));
        }
        add(paths);
    });
    panel->open();
}

void BatchWindow::openCurrent(const QModelIndex& index) {
    if (index.isValid()) {
        actions_.open(model_->rowAt(index).path);
    }
}

void BatchWindow::showMenu(const QPoint& at) {
    const QModelIndex current = table_->currentIndex();
    if (!current.isValid()) {
        return;
    }
    auto* const menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("batchRowMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(tr("&Open")), &QAction::triggered, this,
            [this] { openCurrent(table_->currentIndex()); });
    connect(menu->addAction(tr("Show in File Mana&ger")), &QAction::triggered, this,
            [this, path = model_->rowAt(current).path] { actions_.showFile(path); });
    connect(menu->addAction(tr("Cop&y")), &QAction::triggered, this, [this] { copy(); });
    menu->addSeparator();
    for (QPushButton* const button : actors_) {
        QAction* const action = menu->addAction(button->text());
        action->setEnabled(button->isEnabled());
        connect(action, &QAction::triggered, button, &QPushButton::click);
    }
    menu->popup(table_->viewport()->mapToGlobal(at));
}

void BatchWindow::copy() {
    if (filter_->hasFocus()) {
        filter_->copy();
        return;
    }
    QString text;
    const auto rows =
        table_->selectionModel()->hasSelection() ? chosenRows() : std::vector<std::size_t>{};
    for (const std::size_t number : rows) {
        QStringList cells;
        for (int column = 0; column < BatchModel::columnCount_; ++column) {
            cells += model_->data(model_->indexOf(number).siblingAtColumn(column), Qt::DisplayRole)
                         .toString();
        }
        text += cells.join(u'\t') + u'\n';
    }
    if (!text.isEmpty()) {
        QApplication::clipboard()->setText(text);
    }
}

void BatchWindow::selectAll() {
    if (filter_->hasFocus()) {
        filter_->selectAll();
    } else {
        table_->selectAll();
    }
}

void BatchWindow::beginFilter() {
    filter_->setFocus(Qt::ShortcutFocusReason);
    filter_->selectAll();
}

void BatchWindow::askToConvert() {
    beginSheet(*makeBatchConvertSheet(
        chosenRows().size(), [this](BatchRequest request) { begin(std::move(request)); }, this));
}

void BatchWindow::askToRelink() {
    beginSheet(*makeBatchRelinkSheet(
        chosenRows().size(), [this](BatchRequest request) { begin(std::move(request)); }, this));
}

void BatchWindow::askWhereToSaveReports() {
    auto* const panel = new QFileDialog(this, tr("Save Reports"));
    panel->setObjectName(QStringLiteral("batchSavePanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilters({tr("Web page (*.html)"), tr("All files (*)")});
    panel->setDefaultSuffix(QStringLiteral("html"));
    FileIcons::useIn(*panel);
    panel->selectFile(tr("Reports") + QStringLiteral(".html"));
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& chosen) { saveReportsTo(pathFromQString(chosen)); });
    panel->open();
}

void BatchWindow::saveReportsTo(const std::string& path) {
    if (isRunning_ || isAdding_ || isSaving_) {
        return;
    }
    isSaving_ = onThread(
        [self = QPointer<BatchWindow>(this), work = work_, path] {
            const std::string failure = writeReports(work->batch, path);
            performSurely([&] {
                return [self, path, failure] {
                    if (self) {
                        self->takeSaved(path, failure);
                    }
                };
            });
        },
        [] {});
    updateControls();
    writeStatus();
}

void BatchWindow::takeSaved(const std::string& path, const std::string& failure) {
    isSaving_ = false;
    sentence_ = failure.empty() ? tr("The reports are in %1.").arg(fileNameOf(path)) : QString();
    updateControls();
    writeStatus();
    if (!failure.empty()) {
        showFailure(*this, tr("Unable to save the reports"), toQString(failure), {});
    }
}

void BatchWindow::clearAll() {
    if (!isRunning_ && !isAdding_ && !isSaving_) {
        work_->batch.clear();
        sentence_.clear();
        model_->show({});
        ++number_;
        updateControls();
        writeStatus();
        writeDetails();
    }
}

void BatchWindow::askToClose() {
    auto* const box = new QMessageBox(this);
    prepareAlertBox(*box, tr("The batch is still at work"),
                    tr("The files that are at work are finished or left as they were, and no "
                       "further one is begun."));
    box->setAttribute(Qt::WA_DeleteOnClose);
    const QPushButton* const stopping =
        box->addButton(tr("Stop and Close"), QMessageBox::DestructiveRole);
    box->setDefaultButton(box->addButton(QMessageBox::Cancel));
    connect(box, &QMessageBox::finished, this, [this, box, stopping] {
        if (box->clickedButton() == stopping) {
            closesAtEnd_ = true;
            stop();
            if (!isRunning_) {
                close();
            }
        }
    });
    beginSheet(*box);
}

}  // namespace vornic
