#include "desktop/DocumentMainWindow.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>
#include <chrono>
#include <utility>

#include "desktop/AlertBox.h"
#include "desktop/FileIcons.h"
#include "desktop/OutcomeText.h"
#include "desktop/QtText.h"
#include "desktop/Release.h"
#include "desktop/Sheet.h"
#include "desktop/WindowSize.h"
#include "platform/files/AtomicFile.h"

namespace vornic {

namespace {

constexpr QSize kDefaultSize(980, 700);
constexpr QSize kSmallestSize(420, 320);

QPushButton* makeButton(const char* objectName, const QString& text, const QString& description,
                        QWidget* parent) {
    auto* const button = new QPushButton(text, parent);
    button->setObjectName(QString::fromLatin1(objectName));
    button->setAccessibleDescription(description);
    return button;
}

// Why a repair could not take a file: the first thing that it could not mend.
std::string reasonOf(const RepairResult& result) {
    if (!result.obstacle.empty()) {
        return result.obstacle;
    }
    for (const Finding& finding : result.findings.kept()) {
        if (finding.severity == Severity::error) {
            return finding.message();
        }
    }
    return "";
}

}  // namespace

DocumentMainWindow::DocumentMainWindow(const std::shared_ptr<Document>& document, Actions actions)
    : document_(document),
      path_(document->filePath().value_or("")),
      actions_(std::move(actions)),
      report_(new ReportView(this)),
      findBar_(new FindBar(report_, this)),
      progress_(new ProgressSheet(
          this,
          [this] {
              const auto shown = document_.lock();
              return shown ? ProgressSheet::State(shown->progressMax(), shown->progressValue())
                           : ProgressSheet::State();
          },
          [this] {
              if (const auto shown = document_.lock()) {
                  shown->cancelProgress();
              }
          })),
      convert_(new ConvertSheet(
          path_, this,
          [this] {
              if (const auto shown = document_.lock()) {
                  shown->convertVersionOnThread();
              }
          },
          [this] {
              if (const auto shown = document_.lock()) {
                  shown->closeConvertDialog();
              }
          })) {
    setObjectName(QStringLiteral("windowMain"));
    setAcceptDrops(true);
    setMinimumSize(kSmallestSize);
    setWindowFilePath(pathToQString(path_));
    // The toolkit takes "[*]" for the place of a mark.
    setWindowTitle(fileNameOf(path_).replace(QLatin1String("[*]"), QLatin1String("[*][*]")) +
                   QStringLiteral(" — Vornic"));

    auto* const content = new QWidget(this);
    auto* const column = new QVBoxLayout(content);
    header_ = new DocumentHeader(
        path_, [this](HeaderOffer offer) { accept(offer); }, content);
    column->addWidget(header_);
    column->addWidget(makePages(), 1);
    column->addWidget(findBar_);
    column->addWidget(makeFoot());
    setCentralWidget(content);
    setTabOrder(showFileButton_, showTrashButton_);
    setTabOrder(showTrashButton_, repairButton_);
    setTabOrder(repairButton_, mendButton_);
    setTabOrder(mendButton_, saveCopyButton_);
    findBar_->setFinder([this](const QString& text, FindStep step) {
        switch (page()) {
            case Page::source:
                return source_->findText(text, step);
            case Page::changes:
                return changes_->file().findText(text, step);
            default:
                return report_->findText(text, step);
        }
    });
    report_->setFocus();
    inspector_ = new FileInspector(
        path_,
        {.read =
             [this](std::shared_ptr<const SourceText> source) { takeSource(std::move(source)); },
         .inspected =
             [this](std::shared_ptr<const FindingsTable> table) { takeTable(std::move(table)); },
         .changed = [this](bool isThere) { takeChange(isThere); }},
        this);
    restoreWindowSize(*this, kDefaultSize);
}

DocumentMainWindow::~DocumentMainWindow() {
    releaseOnThread({findings_->model().shared(), source_->source()});
}

QWidget* DocumentMainWindow::makePages() {
    pages_ = new QTabWidget(this);
    pages_->setObjectName(QStringLiteral("documentPages"));
    pages_->setAccessibleName(tr("Pages"));
    pages_->setDocumentMode(true);
    auto* const splitter = new QSplitter(Qt::Vertical, pages_);
    splitter->setObjectName(QStringLiteral("reportSplitter"));
    findings_ =
        new FindingsView({.showPlace = [this](const ListedFinding& listed) { showPlaceOf(listed); },
                          .mend = [this] { mendTicked(); }},
                         splitter);
    splitter->addWidget(findings_);
    splitter->addWidget(report_);
    splitter->setChildrenCollapsible(false);
    constexpr int kFindingsPart = 3;
    constexpr int kReportPart = 2;
    splitter->setStretchFactor(0, kFindingsPart);
    splitter->setStretchFactor(1, kReportPart);
    source_ = new SourceView(tr("Source"), pages_);
    source_->setObjectName(QStringLiteral("sourceView"));
    changes_ = new ChangesView(pages_);
    pages_->addTab(splitter, tr("Findings and Report"));
    pages_->addTab(source_, tr("Source"));
    media_ = new MediaView(path_,
                           {.findInFolder = [this] { findMediaInFolder(); },
                            .changeFolder = [this] { changeMediaFolder(); },
                            .showFile = [this](const MediaTableRow& /*medium*/) { showMedium(); },
                            .showLine =
                                [this](std::size_t line) {
                                    source_->showLine(line);
                                    showPage(Page::source);
                                }},
                           pages_);
    pages_->addTab(changes_, tr("Changes"));
    pages_->addTab(media_, tr("Media"));
    timeline_ = makeTimeline();
    pages_->addTab(timeline_, tr("Timeline"));
    return pages_;
}

QWidget* DocumentMainWindow::makeFoot() {
    auto* const foot = new QWidget(this);
    auto* const row = new QHBoxLayout(foot);
    row->setContentsMargins(0, 0, 0, 0);
    outcomeLabel_ = new QLabel(foot);
    outcomeLabel_->setObjectName(QStringLiteral("outcomeLabel"));
    outcomeLabel_->setAccessibleDescription(tr("Outcome of the repair"));
    outcomeLabel_->setTextFormat(Qt::PlainText);
    outcomeLabel_->setWordWrap(true);
    showFileButton_ =
        makeButton("showFileBtn", tr("&Show File"), tr("Show the file in its folder"), foot);
    showTrashButton_ = makeButton("showTrashBtn", tr("Show Tr&ash"),
                                  tr("Show the Trash, where the original file is"), foot);
    repairButton_ = makeButton("repairBtn", tr("&Repair"), tr("Repair the file"), foot);
    mendButton_ = new QPushButton(tr("Men&d…"), foot);
    mendButton_->setObjectName(QStringLiteral("mendFileBtn"));
    saveCopyButton_ = new QPushButton(tr("Save Repaired &Copy As…"), foot);
    saveCopyButton_->setObjectName(QStringLiteral("saveCopyBtn"));
    connect(mendButton_, &QPushButton::clicked, this, [this] { mendSafely(); });
    connect(saveCopyButton_, &QPushButton::clicked, this, [this] { saveMendedCopy(); });
    connect(showFileButton_, &QPushButton::clicked, this, [this] { actions_.showFile(path_); });
    connect(showTrashButton_, &QPushButton::clicked, this, [this] { actions_.showTrash(); });
    connect(repairButton_, &QPushButton::clicked, this, [this] {
        if (const auto shown = document_.lock()) {
            shown->repair();
        }
    });
    row->addWidget(outcomeLabel_, 1);
    row->addWidget(showFileButton_);
    row->addWidget(showTrashButton_);
    row->addWidget(repairButton_);
    row->addWidget(mendButton_);
    row->addWidget(saveCopyButton_);
    mendButton_->hide();
    saveCopyButton_->hide();
    setOutcome(QString(), false, false);
    return foot;
}

void DocumentMainWindow::saveReport() {
    auto* const panel = new QFileDialog(this, tr("Save Report"));
    panel->setObjectName(QStringLiteral("saveReportPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    FileIcons::useIn(*panel);
    panel->setNameFilters({tr("Text files (*.txt)"), tr("All files (*)")});
    panel->setDefaultSuffix(QStringLiteral("txt"));
    panel->selectFile(proposedPath(tr(" report") + QStringLiteral(".txt")));
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& chosen) { writeReport(pathFromQString(chosen)); });
    panel->open();
}

void DocumentMainWindow::writeReport(const std::string& path) {
    if (isOwnFile(path, "Unable to save the report")) {
        return;
    }
    report_->flush();
    ErrorSlot error;
    const std::string text = report_->toPlainText().toStdString() + "\n";
    if (!platform::writeFileAtomically(path, text, platform::Durability::synced, error)) {
        beginAlertSheet("Unable to save the report",
                        error ? error->localizedDescription() : std::string());
    }
}

bool DocumentMainWindow::hasAttachedSheet() const {
    return hasSheet(*this);
}

void DocumentMainWindow::makeKeyAndOrderFront() {
    if (isMinimized()) {
        showNormal();
    }
    show();
    raise();
    activateWindow();
}

void DocumentMainWindow::clearReport() {
    report_->clearReport();
}

bool DocumentMainWindow::reportIsEmpty() const {
    return report_->isEmpty();
}

void DocumentMainWindow::insertReportText(std::string_view text, bool isError, bool isBold) {
    report_->append(text, isError, isBold);
}

void DocumentMainWindow::setProgressCancelEnabled(bool enabled) {
    progress_->setCancelEnabled(enabled);
}

void DocumentMainWindow::startProgressAnimation() {
    progress_->setAnimated(true);
}

void DocumentMainWindow::stopProgressAnimation() {
    progress_->setAnimated(false);
}

void DocumentMainWindow::setProgressIndeterminate(bool indeterminate) {
    progress_->setIndeterminate(indeterminate);
}

void DocumentMainWindow::setProgressStatusText(std::string_view text) {
    progress_->setStatusText(text);
}

bool DocumentMainWindow::progressSheetIsVisible() const {
    return progress_->isVisible();
}

bool DocumentMainWindow::progressSheetIsSheet() const {
    return progress_->isVisible() && progress_->windowModality() == Qt::WindowModal;
}

void DocumentMainWindow::beginProgressSheet() {
    setOutcome(QString(), false, false);
    header_->setBusy(tr("Repairing…"));
    repairButton_->setEnabled(false);
    beginSheet(*progress_);
}

void DocumentMainWindow::endProgressSheet() {
    progress_->hide();
}

void DocumentMainWindow::showOutcome(const RepairResult& result) {
    const OutcomeText outcome = outcomeText(result);
    repairButton_->setEnabled(true);
    setOutcome(outcome.text, outcome.showsFile, outcome.showsTrash);
    const bool isSwapped = result.outcome == RepairOutcome::repairedAndSwapped;
    inspect({.action = HeaderFacts::Action::repair,
             .outcome = result.outcome,
             .reason = reasonOf(result),
             .isUndoable = result.isUndoable},
            isSwapped ? result.original : std::string());
}

void DocumentMainWindow::setOutcome(const QString& text, bool showsFile, bool showsTrash) {
    outcomeLabel_->setText(text);
    showFileButton_->setVisible(showsFile);
    showTrashButton_->setVisible(showsTrash);
}

void DocumentMainWindow::beginAlertSheet(std::string_view message, std::string_view info) {
    if (tellsFailure(toQString(message))) {
        showFailure(*this, toQString(message), toQString(info), fileNameOf(path_));
    } else {
        showAlert(*this, toQString(message), toQString(info));
    }
}

void DocumentMainWindow::showConverted(const DialogConversion& conversion) {
    QString outcome = tr("Converted to version %1.").arg(toQString(conversion.version));
    if (!conversion.original.empty()) {
        outcome += QStringLiteral(" ") + tr("The original file is in the Trash.");
    }
    for (const std::string& note : conversion.notes) {
        outcome += QStringLiteral(" ") + toQString(note);
    }
    setOutcome(outcome, true, !conversion.original.empty());
    inspect({.action = HeaderFacts::Action::conversion,
             .version = conversion.version,
             .isUndoable = conversion.isUndoable},
            conversion.original);
}

void DocumentMainWindow::showPage(Page page) {
    pages_->setCurrentIndex(static_cast<int>(page));
    switch (page) {
        case Page::findings:
            findings_->tree().setFocus(Qt::OtherFocusReason);
            break;
        case Page::source:
            source_->setFocus(Qt::OtherFocusReason);
            break;
        case Page::changes:
            changes_->file().setFocus(Qt::OtherFocusReason);
            break;
        case Page::media:
            media_->table().setFocus(Qt::OtherFocusReason);
            break;
        case Page::timeline:
            timeline_->area().setFocus(Qt::OtherFocusReason);
            break;
    }
}

DocumentMainWindow::Page DocumentMainWindow::page() const {
    return static_cast<Page>(pages_->currentIndex());
}

void DocumentMainWindow::check() {
    const std::shared_ptr<Document> shown = document_.lock();
    if (shown && !isActing_ && !shown->isRunning()) {
        shown->setXmlType(xmlTypeOf(fileKindOfPath(path_)));
        setOutcome(QString(), false, false);
        inspect({.action = HeaderFacts::Action::check}, "");
    }
}

// What was found before says nothing about the file any more.
void DocumentMainWindow::inspect(HeaderFacts facts, const std::string& original) {
    facts_ = std::move(facts);
    facts_.inspection = nullptr;
    original_ = original;
    untoldChange_.reset();
    table_ = nullptr;
    findings_->setMayMend(false);
    writeHeader();
    inspector_->inspect(original);
}

// Often it is another program's change that the action has stopped at.
void DocumentMainWindow::inspectAfterFailure() {
    HeaderFacts facts = facts_;
    if (untoldChange_) {
        facts.isThere = *untoldChange_;
        facts.hasChangedSince = true;
    }
    inspect(std::move(facts), original_);
}

void DocumentMainWindow::takeSource(std::shared_ptr<const SourceText> source) {
    releaseOnThread({source_->source()});
    source_->setSource(std::move(source));
}

void DocumentMainWindow::takeTable(std::shared_ptr<const FindingsTable> table) {
    releaseOnThread({findings_->model().shared(), source_->source()});
    table_ = std::move(table);
    const std::shared_ptr<const Inspection> inspection = table_->shared();
    facts_.inspection = inspection;
    if (source_->source() != inspection->file.source) {
        source_->setSource(inspection->file.source);
    }
    source_->setMarks(table_->marks(false));
    findings_->setTable(table_);
    findings_->setMayMend(!isActing_);
    changes_->setTable(table_);
    media_->expire();
    timeline_->setInspection(inspection);
    writeHeader();
    if (actions_.tellOutcome) {
        actions_.tellOutcome(path_, headerText(facts_).sentence);
    }
    if (std::exchange(showsChangesNext_, false)) {
        showPage(Page::changes);
    }
}

// What the window does with the file by itself tells what it has done; a change that is left untold
// by then was another program's.
void DocumentMainWindow::takeChange(bool isThere) {
    const std::shared_ptr<Document> shown = document_.lock();
    if (!shown || isClosed_) {
        return;
    }
    if (isActing_ || shown->isRunning() || shown->isConverting()) {
        untoldChange_ = isThere;
        constexpr std::chrono::milliseconds kUntilItsEnd{200};
        QTimer::singleShot(kUntilItsEnd, this, [this] {
            if (const auto untold = std::exchange(untoldChange_, std::nullopt)) {
                takeChange(*untold);
            }
        });
        return;
    }
    HeaderFacts facts = facts_;
    facts.isThere = isThere;
    facts.hasChangedSince = true;
    if (convert_->isVisible()) {
        convert_->lookAgain();
    }
    inspect(std::move(facts), "");
}

void DocumentMainWindow::writeHeader() {
    if (facts_.inspection && facts_.action == HeaderFacts::Action::conversion) {
        facts_.version = facts_.inspection->file.report.version;
    }
    header_->setText(headerText(facts_));
    const bool isChecked = facts_.action == HeaderFacts::Action::check;
    mendButton_->setVisible(isChecked);
    saveCopyButton_->setVisible(isChecked);
    header_->setFacts(
        facts_.inspection && facts_.inspection->file.isRead()
            ? toQString(factsOf(facts_.inspection->file.report, fileKindOfPath(path_)))
            : QString());
}

void DocumentMainWindow::accept(HeaderOffer offer) {
    switch (offer) {
        case HeaderOffer::showRemoved:
            return showRemoved();
        case HeaderOffer::bringBackAndMend:
            return restore(false, true);
        case HeaderOffer::mend:
            return mendSafely();
        case HeaderOffer::restoreOriginal:
            return restoreOriginal();
        case HeaderOffer::treatAsContents:
            return treatAsContents();
        case HeaderOffer::setVersion:
            return setVersion();
        case HeaderOffer::saveSalvagedCopy:
            return saveSalvagedCopy();
    }
}

void DocumentMainWindow::showRemoved() {
    if (!table_) {
        return;
    }
    changes_->showOriginalLine(table_->inspection().removed.firstLine);
    showPage(Page::changes);
}

void DocumentMainWindow::showPlaceOf(const ListedFinding& listed) {
    const std::size_t line = listed.finding->where.line;
    if (line == 0) {
        return;
    }
    if (listed.isInOriginal) {
        changes_->showOriginalLine(line);
        showPage(Page::changes);
        return;
    }
    source_->showLine(line);
    showPage(Page::source);
}

void DocumentMainWindow::copy() {
    const QWidget* const focused = focusWidget();
    if (focused == &findings_->tree()) {
        findings_->copy();
    } else if (focused == &media_->table()) {
        media_->copy();
    } else if (focused == &timeline_->area()) {
        timeline_->copy();
    } else if (auto* const source = dynamic_cast<SourceView*>(focusWidget())) {
        source->copy();
    } else if (auto* const text = qobject_cast<QPlainTextEdit*>(focusWidget())) {
        text->copy();
    } else if (auto* const line = qobject_cast<QLineEdit*>(focusWidget())) {
        line->copy();
    } else {
        report_->copy();
    }
}

void DocumentMainWindow::selectAll() {
    if (focusWidget() == &findings_->tree()) {
        findings_->selectAll();
    } else if (focusWidget() == &media_->table()) {
        media_->table().selectAll();
    } else if (auto* const source = dynamic_cast<SourceView*>(focusWidget())) {
        source->selectAll();
    } else if (auto* const text = qobject_cast<QPlainTextEdit*>(focusWidget())) {
        text->selectAll();
    } else if (auto* const line = qobject_cast<QLineEdit*>(focusWidget())) {
        line->selectAll();
    } else {
        report_->selectAll();
    }
}

void DocumentMainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    // What happened on a shared volume is not told.
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && table_) {
        inspector_->look();
    }
}

void DocumentMainWindow::closeEvent(QCloseEvent* event) {
    const std::shared_ptr<Document> shown = document_.lock();
    event->ignore();
    if (shown && shown->windowShouldClose()) {
        event->accept();
        isClosed_ = true;
        saveWindowSize(*this);
        hideSheets(*this);
        actions_.closed(*this);
    }
}

}  // namespace vornic
