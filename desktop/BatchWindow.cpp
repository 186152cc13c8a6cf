#include "desktop/BatchWindow.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPointer>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <new>
#include <numeric>
#include <utility>

#include "app/window/HeaderText.h"
#include "base/Exception.h"
#include "base/FormatString.h"
#include "desktop/AlertBox.h"
#include "desktop/BatchWork.h"
#include "desktop/FlowLayout.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "desktop/SureCall.h"
#include "desktop/WindowSize.h"
#include "foundation/log/QMLog.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr QSize kDefaultSize(980, 620);
constexpr QSize kSmallestSize(420, 320);
// The filter is asked again this often while results come in.
constexpr std::chrono::milliseconds kBetweenLooks{400};

QString verbOf(BatchAction action) {
    switch (action) {
        case BatchAction::check:
            return BatchWindow::tr("Checking");
        case BatchAction::repair:
            return BatchWindow::tr("Repairing");
        case BatchAction::mend:
            return BatchWindow::tr("Mending");
        case BatchAction::convert:
            return BatchWindow::tr("Converting");
        case BatchAction::relink:
            return BatchWindow::tr("Relinking");
        default:
            return BatchWindow::tr("Restoring");
    }
}

// What stood at the path is no original after one has been brought back.
const char* replacedWords(BatchResult result) {
    return result == BatchResult::restored ? "What stood there before is %@."
                                           : "The original is %@.";
}

bool hasFailures(const BatchSummary& summary) {
    return summary.count(BatchResult::findings) + summary.count(BatchResult::unable) +
                   summary.count(BatchResult::failed) !=
               0 ||
           !summary.complaint.empty();
}

}  // namespace

BatchWindow::Work::Work(BatchWindow* window)
    : feed(window), batch({program_invocation_short_name, VORNIC_VERSION}, feed) {}

BatchWindow::BatchWindow(Actions actions)
    : actions_(std::move(actions)),
      work_(std::make_shared<Work>(this)),
      model_(new BatchModel(work_->batch, palette(), this)),
      table_(new QTreeView(this)) {
    setObjectName(QStringLiteral("batchWindow"));
    setWindowTitle(tr("Batch — Vornic"));
    setAcceptDrops(true);
    setMinimumSize(kSmallestSize);
    makeTable();
    auto* const content = new QWidget(this);
    auto* const column = new QVBoxLayout(content);
    column->addWidget(makeActions());
    column->addWidget(makeFilter());
    column->addWidget(table_, 1);
    column->addWidget(makeFoot());
    setCentralWidget(content);
    filterClock_.setSingleShot(true);
    connect(&filterClock_, &QTimer::timeout, this, [this] { filter(); });
    restoreWindowSize(*this, kDefaultSize);
    updateControls();
    writeStatus();
    table_->setFocus();
}

// The files that are at work take their time to end.
BatchWindow::~BatchWindow() {
    stop();
    delete table_;
    delete model_;
    try {
        platform::detachNewThread([work = std::move(work_)]() mutable { work.reset(); });
    } catch (const platform::Exception&) {
        // Then it ends here.
        work_.reset();
    }
}

void BatchWindow::makeTable() {
    table_->setObjectName(QStringLiteral("batchTable"));
    table_->setAccessibleName(tr("Files"));
    table_->setModel(model_);
    table_->setRootIsDecorated(false);
    table_->setUniformRowHeights(true);
    table_->setAlternatingRowColors(true);
    table_->setAllColumnsShowFocus(true);
    table_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table_->setTabKeyNavigation(false);
    table_->setTextElideMode(Qt::ElideMiddle);
    // Signs make no row higher than its text does.
    const int sign = table_->fontMetrics().height();
    table_->setIconSize(QSize(sign, sign));
    table_->setContextMenuPolicy(Qt::CustomContextMenu);
    table_->header()->setFocusPolicy(Qt::NoFocus);
    table_->header()->setStretchLastSection(false);
    table_->header()->setSectionResizeMode(BatchModel::name, QHeaderView::Stretch);
    const int unit = table_->fontMetrics().averageCharWidth();
    constexpr std::array kCharacters = {34, 34, 10, 36, 12, 14};
    for (int column = 0; column < BatchModel::columnCount_; ++column) {
        table_->setColumnWidth(column, unit * kCharacters.at(static_cast<std::size_t>(column)));
    }
    connect(table_, &QTreeView::activated, this,
            [this](const QModelIndex& index) { openCurrent(index); });
    connect(table_, &QTreeView::customContextMenuRequested, this,
            [this](const QPoint& at) { showMenu(at); });
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { writeStatus(); });
    connect(table_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this] { writeDetails(); });
}

QPushButton* BatchWindow::addButton(QWidget* bar, const char* objectName, const QString& text,
                                    std::function<void()> clicked) {
    auto* const button = new QPushButton(text, bar);
    button->setObjectName(QString::fromLatin1(objectName));
    button->setAutoDefault(false);
    bar->layout()->addWidget(button);
    connect(button, &QPushButton::clicked, this, [clicked = std::move(clicked)] { clicked(); });
    return button;
}

QWidget* BatchWindow::makeActions() {
    auto* const bar = new QWidget(this);
    new FlowLayout(bar);  // which the bar owns
    adders_.push_back(
        addButton(bar, "batchAddFilesBtn", tr("Add Fi&les…"), [this] { askForFiles(false); }));
    adders_.push_back(
        addButton(bar, "batchAddFolderBtn", tr("Add Fol&der…"), [this] { askForFiles(true); }));
    const auto addAction = [&](const char* objectName, const QString& text,
                               std::function<void()> clicked) {
        actors_.push_back(addButton(bar, objectName, text, std::move(clicked)));
    };
    addAction("batchCheckBtn", tr("Chec&k"), [this] { begin(BatchAction::check); });
    addAction("batchRepairBtn", tr("&Repair"), [this] { begin(BatchAction::repair); });
    addAction("batchMendBtn", tr("&Mend"), [this] { begin(BatchAction::mend); });
    addAction("batchConvertBtn", tr("&Convert…"), [this] { askToConvert(); });
    addAction("batchRelinkBtn", tr("Rel&ink…"), [this] { askToRelink(); });
    addAction("batchRestoreBtn", tr("Restore &Originals"), [this] { begin(BatchAction::restore); });
    addAction("batchSaveBtn", tr("Save Re&ports…"), [this] { askWhereToSaveReports(); });
    addAction("batchClearBtn", tr("Remove &All"), [this] { clearAll(); });
    return bar;
}

QWidget* BatchWindow::makeFilter() {
    auto* const bar = new QWidget(this);
    auto* const row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    filter_ = new QLineEdit(bar);
    filter_->setObjectName(QStringLiteral("batchFilter"));
    filter_->setAccessibleName(tr("Filter files"));
    filter_->setPlaceholderText(tr("Filter files"));
    filter_->setClearButtonEnabled(true);
    onlyFailures_ = new QCheckBox(tr("Show Onl&y Failures"), bar);
    onlyFailures_->setObjectName(QStringLiteral("batchOnlyFailures"));
    row->addWidget(filter_, 1);
    row->addWidget(onlyFailures_);
    connect(filter_, &QLineEdit::textChanged, this, [this] { filter(); });
    connect(onlyFailures_, &QCheckBox::toggled, this, [this] { filter(); });
    return bar;
}

QWidget* BatchWindow::makeFoot() {
    auto* const foot = new QWidget(this);
    details_ = new QLabel(foot);
    details_->setObjectName(QStringLiteral("batchDetails"));
    details_->setAccessibleDescription(tr("About the file"));
    details_->setTextFormat(Qt::PlainText);
    details_->setWordWrap(true);
    status_ = new ElidedLabel(foot);
    status_->setObjectName(QStringLiteral("batchStatus"));
    bar_ = new QProgressBar(foot);
    bar_->setObjectName(QStringLiteral("batchProgress"));
    bar_->setAccessibleName(tr("Progress of the batch"));
    bar_->setTextVisible(false);
    constexpr int kBarWidth = 160;
    bar_->setMaximumWidth(kBarWidth);
    auto* const column = new QVBoxLayout(foot);
    auto* const line = new QWidget(foot);
    auto* const row = new QHBoxLayout(line);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(status_, 1);
    row->addWidget(bar_);
    stopButton_ = addButton(line, "batchStopBtn", tr("&Stop"), [this] { stop(); });
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(details_);
    column->addWidget(line);
    return foot;
}

bool BatchWindow::onThread(std::function<void()> work, std::function<void()> askToEnd) {
    try {
        platform::detachNewThread(std::move(work), std::move(askToEnd));
        return true;
    } catch (const platform::Exception&) {
        showFailure(*this, tr("Unable to begin"), tr("The system has no thread to give."), {});
        return false;
    }
}

void BatchWindow::add(const std::vector<std::string>& paths) {
    toAdd_.insert(toAdd_.end(), paths.begin(), paths.end());
    if (!isRunning_ && !isAdding_) {
        search(std::exchange(toAdd_, {}));
    }
    writeStatus();
}

void BatchWindow::search(std::vector<std::string> paths) {
    if (paths.empty()) {
        return;
    }
    work_->isStopped = false;
    isAdding_ = onThread(
        [self = QPointer<BatchWindow>(this), work = work_, paths = std::move(paths)] {
            std::vector<ProjectFiles::Refusal> refused;
            bool isShort = false;
            try {
                refused =
                    work->batch.add(paths, StopToken([work] { return work->isStopped.load(); }));
            } catch (const std::bad_alloc&) {
                isShort = true;
            }
            performSurely([&] {
                return [self, refused, isShort] {
                    if (self) {
                        self->takeAdded(refused, isShort);
                    }
                };
            });
        },
        [work = work_] { work->isStopped = true; });
    updateControls();
    writeStatus();
}

void BatchWindow::takeAdded(const std::vector<ProjectFiles::Refusal>& refused, bool isShort) {
    isAdding_ = false;
    if (!isVisible()) {
        // Closed while files were looked for.
        clearAll();
        return;
    }
    sentence_.clear();
    updateControls();
    filter();
    search(std::exchange(toAdd_, {}));
    if (refused.empty() && !isShort) {
        return;
    }
    constexpr std::size_t kMostTold = 5;
    QStringList reasons;
    if (isShort) {
        reasons += tr("There is not enough memory for all files.");
    }
    for (const ProjectFiles::Refusal& each : refused) {
        QMLog::appendLog("%@", each.reason);
        if (reasons.size() < static_cast<qsizetype>(kMostTold)) {
            reasons += toQString(each.reason);
        }
    }
    if (refused.size() > kMostTold) {
        reasons += tr("And %1 more; the log has them all.").arg(refused.size() - kMostTold);
    }
    showFailure(*this, tr("Not all could be added"), reasons.join(u'\n'), {});
}

// On a thread, since thousands of names are compared.
void BatchWindow::filter() {
    ++number_;
    const BatchFilter wanted{.text = filter_->text().toStdString(),
                             .onlyFailures = onlyFailures_->isChecked()};
    static_cast<void>(onThread(
        [self = QPointer<BatchWindow>(this), work = work_, wanted, number = number_] {
            try {
                std::vector<std::size_t> rows = work->batch.rowsShownBy(wanted);
                platform::MainThread::perform([self, number, rows = std::move(rows)]() mutable {
                    if (self && number == self->number_) {
                        self->takeShown(std::move(rows));
                    }
                });
            } catch (const std::bad_alloc&) {
                QMLog::appendLog("%@", "There was not enough memory to look through the rows.");
            }
        },
        [] {}));
}

// The rows that stay keep their choice and their place.
void BatchWindow::takeShown(std::vector<std::size_t> rows) {
    if (rows == model_->shown()) {
        writeStatus();
        return;
    }
    const bool hasChoice = table_->selectionModel()->hasSelection();
    const std::vector<std::size_t> chosen = hasChoice ? chosenRows() : std::vector<std::size_t>();
    const QModelIndex currentIndex = table_->currentIndex();
    const std::size_t current = currentIndex.isValid() ? model_->numberAt(currentIndex) : 0;
    const int top = table_->verticalScrollBar()->value();
    model_->show(std::move(rows));
    QItemSelection selection;
    QModelIndex first;
    QModelIndex last;
    for (const std::size_t number : chosen) {
        const QModelIndex index = model_->indexOf(number);
        if (last.isValid() && index.isValid() && index.row() == last.row() + 1) {
            last = index;
        } else if (index.isValid()) {
            if (first.isValid()) {
                selection.select(first, last.siblingAtColumn(BatchModel::progress));
            }
            first = last = index;
        }
    }
    if (first.isValid()) {
        selection.select(first, last.siblingAtColumn(BatchModel::progress));
    }
    const QModelIndex now = model_->indexOf(current);
    table_->selectionModel()->setCurrentIndex(now.isValid() ? now : model_->index(0, 0),
                                              QItemSelectionModel::NoUpdate);
    table_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    table_->verticalScrollBar()->setValue(top);
    updateControls();
    writeStatus();
    writeDetails();
}

std::vector<std::size_t> BatchWindow::chosenRows() const {
    std::vector<std::size_t> rows;
    for (const QItemSelectionRange& range : table_->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            rows.push_back(model_->shown()[static_cast<std::size_t>(row)]);
        }
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows.empty() ? model_->shown() : rows;
}

void BatchWindow::begin(BatchAction action) {
    BatchRequest request;
    request.action = action;
    begin(std::move(request));
}

void BatchWindow::begin(BatchRequest request) {
    if (isRunning_ || isAdding_ || isSaving_) {
        return;
    }
    const std::vector<std::size_t> rows = chosenRows();
    if (rows.empty()) {
        showAlert(*this, tr("There is no file to work on"),
                  tr("Add files or a folder, or show more of those that are there."));
        return;
    }
    work_->action = request.action;
    running_ = rows.size();
    isRunning_ = work_->batch.start(std::move(request), rows);
    sentence_.clear();
    if (!isRunning_) {
        showFailure(*this, tr("Unable to begin"), tr("The system has no thread to give."), {});
    }
    updateControls();
    writeStatus();
}

void BatchWindow::stop() {
    toAdd_.clear();
    if (work_) {
        work_->isStopped = true;
        work_->batch.cancel();
    }
}

void BatchWindow::takeChanges(const std::vector<std::size_t>& rows) {
    model_->tellChanges(rows);
    const QModelIndex current = table_->currentIndex();
    if (current.isValid() &&
        std::binary_search(rows.begin(), rows.end(), model_->numberAt(current))) {
        writeDetails();
    }
    const bool isNarrowed = onlyFailures_->isChecked() || !filter_->text().isEmpty();
    if (isNarrowed && !filterClock_.isActive()) {
        filterClock_.start(kBetweenLooks);
    }
    writeStatus();
}

void BatchWindow::takeEnd(const BatchSummary& summary) {
    isRunning_ = false;
    sentence_ = toQString(summary.sentence());
    QMLog::appendLog("%@", summary.sentence());
    updateControls();
    filter();
    if (closesAtEnd_) {
        close();
        return;
    }
    const QString title =
        summary.isCancelled ? tr("The batch was stopped") : tr("The batch has ended");
    if (hasFailures(summary)) {
        showFailure(*this, title, sentence_, {});
    } else {
        showAlert(*this, title, sentence_);
    }
    actions_.notify(title, sentence_);
    search(std::exchange(toAdd_, {}));
}

void BatchWindow::updateControls() {
    const bool isBusy = isRunning_ || isAdding_ || isSaving_;
    for (QPushButton* const button : adders_) {
        button->setEnabled(!isBusy);
    }
    for (QPushButton* const button : actors_) {
        button->setEnabled(!isBusy && work_->batch.size() != 0);
    }
    stopButton_->setEnabled(isRunning_ || isAdding_);
    bar_->setVisible(isBusy);
    bar_->setRange(0, isRunning_ ? static_cast<int>(running_) : 0);
}

void BatchWindow::writeStatus() {
    QString text;
    const std::size_t shown = model_->shown().size();
    if (isRunning_) {
        const std::size_t ended = work_->batch.endedCount();
        bar_->setValue(static_cast<int>(ended));
        text = tr("%1: %2 of %3 done")
                   .arg(verbOf(work_->action), toQString(withThousands(ended)),
                        toQString(counted(running_, "file", "files")));
        if (!toAdd_.empty()) {
            text += QStringLiteral(". ") + tr("What was dropped is added at the end.");
        }
    } else if (isAdding_) {
        text = tr("Looking for files…");
    } else if (isSaving_) {
        text = tr("Saving the reports…");
    } else if (work_->batch.size() == 0) {
        text = tr("Drop files, bundles or folders here.");
    } else {
        const bool isChosen = table_->selectionModel()->hasSelection();
        const std::size_t chosen = isChosen ? chosenRows().size() : 0;
        text = isChosen ? tr("%1 of %2 chosen.")
                              .arg(toQString(withThousands(chosen)),
                                   toQString(counted(shown, "file", "files")))
                        : tr("%1 shown; what you choose is done with all of them.")
                              .arg(toQString(counted(shown, "file", "files")));
        if (!sentence_.isEmpty()) {
            const QString all = tr("%1 shown.").arg(toQString(counted(shown, "file", "files")));
            text = sentence_ + u' ' + (isChosen ? text : all);
        }
    }
    status_->setWholeText(oneLine(text));
}

void BatchWindow::writeDetails() {
    const QModelIndex current = table_->currentIndex();
    QString text;
    if (current.isValid()) {
        const BatchRow row = model_->rowAt(current);
        text = oneLine(pathToQString(row.path));
        for (const std::string& sentence :
             {row.reason,
              row.replaced.empty() ? "" : formatString(replacedWords(row.result), row.replaced),
              row.written.empty() ? "" : formatString("The new file is %@.", row.written)}) {
            text += sentence.empty() ? QString() : u'\n' + oneLine(toQString(sentence));
        }
    }
    details_->setText(wrappable(text));
}

void BatchWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (isRunning_) {
        if (!hasSheet(*this)) {
            askToClose();
        }
        return;
    }
    closesAtEnd_ = false;
    stop();
    saveWindowSize(*this);
    hideSheets(*this);
    clearAll();
    event->accept();
}

void BatchWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && model_ != nullptr) {
        model_->setPalette(palette());
    }
}

}  // namespace vornic
