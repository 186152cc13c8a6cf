#include "desktop/DocumentMainWindow.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <utility>

#include "desktop/AlertBox.h"
#include "desktop/FileIcons.h"
#include "desktop/OutcomeText.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "desktop/WindowSize.h"
#include "foundation/Text.h"
#include "platform/AtomicFile.h"

namespace vornic {

namespace {

constexpr QSize kDefaultSize(760, 560);
constexpr QSize kSmallestSize(420, 320);

// One line of text that is shortened in the middle where there is no room for it, so that no text
// makes the window wider.
class ElidedLabel : public QLabel {
  public:
    ElidedLabel(QString text, QWidget* parent) : QLabel(parent), whole_(std::move(text)) {
        setTextFormat(Qt::PlainText);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        setText(whole_);
        setAccessibleName(whole_);
    }

  protected:
    void resizeEvent(QResizeEvent* event) override {
        QLabel::resizeEvent(event);
        setText(fontMetrics().elidedText(whole_, Qt::ElideMiddle, width()));
    }

  private:
    QString whole_;
};

QPushButton* makeButton(const char* objectName, const QString& text, const QString& accessibleName,
                        QWidget* parent) {
    auto* const button = new QPushButton(text, parent);
    button->setObjectName(QString::fromLatin1(objectName));
    button->setAccessibleName(accessibleName);
    return button;
}

QString kindOf(const std::string& path) {
    return lowercased(pathExtension(path)) == "fcpxml"
               ? DocumentMainWindow::tr("Final Cut Pro X file (FCPXML)")
               : DocumentMainWindow::tr("Final Cut Pro 7 file (XMEML)");
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
          this,
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
    column->addWidget(makeHead());
    column->addWidget(report_, 1);
    column->addWidget(findBar_);
    column->addWidget(makeFoot());
    setCentralWidget(content);
    setTabOrder(report_, showFileButton_);
    setTabOrder(showFileButton_, showTrashButton_);
    setTabOrder(showTrashButton_, repairButton_);
    report_->setFocus();
    restoreWindowSize(*this, kDefaultSize);
}

QWidget* DocumentMainWindow::makeHead() {
    auto* const head = new QWidget(this);
    auto* const column = new QVBoxLayout(head);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    auto* const name = new ElidedLabel(fileNameOf(path_), head);
    name->setObjectName(QStringLiteral("fileNameLabel"));
    name->setAccessibleDescription(tr("File"));
    name->setToolTip(toolTipOf(path_));
    QFont large = name->font();
    large.setPointSizeF(large.pointSizeF() * 1.4);
    large.setBold(true);
    name->setFont(large);
    auto* const kind = new QLabel(kindOf(path_), head);
    kind->setObjectName(QStringLiteral("fileKindLabel"));
    kind->setTextFormat(Qt::PlainText);
    kind->setAccessibleDescription(tr("Kind of file"));
    column->addWidget(name);
    column->addWidget(kind);
    return head;
}

QWidget* DocumentMainWindow::makeFoot() {
    auto* const foot = new QWidget(this);
    auto* const row = new QHBoxLayout(foot);
    row->setContentsMargins(0, 0, 0, 0);
    outcomeBadge_ = new OutcomeBadge(foot);
    outcomeBadge_->setObjectName(QStringLiteral("outcomeBadge"));
    outcomeLabel_ = new QLabel(foot);
    outcomeLabel_->setObjectName(QStringLiteral("outcomeLabel"));
    outcomeLabel_->setAccessibleDescription(tr("Outcome of the repair"));
    outcomeLabel_->setTextFormat(Qt::PlainText);
    outcomeLabel_->setWordWrap(true);
    QFont bold = outcomeLabel_->font();
    bold.setBold(true);
    outcomeLabel_->setFont(bold);
    showFileButton_ =
        makeButton("showFileBtn", tr("&Show File"), tr("Show the file in its folder"), foot);
    showTrashButton_ = makeButton("showTrashBtn", tr("Show Tr&ash"),
                                  tr("Show the Trash, where the original file is"), foot);
    repairButton_ = makeButton("repairBtn", tr("&Repair"), tr("Repair the file"), foot);
    connect(showFileButton_, &QPushButton::clicked, this, [this] { actions_.showFile(*this); });
    connect(showTrashButton_, &QPushButton::clicked, this, [this] { actions_.showTrash(); });
    connect(repairButton_, &QPushButton::clicked, this, [this] {
        if (const auto shown = document_.lock()) {
            shown->repair();
        }
    });
    row->addWidget(outcomeBadge_);
    row->addWidget(outcomeLabel_, 1);
    row->addWidget(showFileButton_);
    row->addWidget(showTrashButton_);
    row->addWidget(repairButton_);
    showPlaces(false, false);
    return foot;
}

void DocumentMainWindow::showPlaces(bool showsFile, bool showsTrash) {
    showFileButton_->setVisible(showsFile);
    showTrashButton_->setVisible(showsTrash);
}

void DocumentMainWindow::saveReport() {
    const QString proposal =
        pathToQString(deletingPathExtension(path_)) + tr(" report") + QStringLiteral(".txt");
    auto* const panel = new QFileDialog(this, tr("Save Report"));
    panel->setObjectName(QStringLiteral("saveReportPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    FileIcons::useIn(*panel);
    panel->setNameFilters({tr("Text files (*.txt)"), tr("All files (*)")});
    panel->setDefaultSuffix(QStringLiteral("txt"));
    panel->selectFile(proposal);
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& chosen) { writeReport(pathFromQString(chosen)); });
    panel->open();
}

void DocumentMainWindow::writeReport(const std::string& path) {
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
    setOutcome(OutcomeBadge::Kind::none, QString());
    repairButton_->setEnabled(false);
    showPlaces(false, false);
    beginSheet(*progress_);
}

void DocumentMainWindow::endProgressSheet() {
    progress_->hide();
}

void DocumentMainWindow::showOutcome(const RepairResult& result) {
    const OutcomeText outcome = outcomeText(result);
    repairButton_->setEnabled(true);
    showPlaces(outcome.showsFile, outcome.showsTrash);
    setOutcome(outcome.kind, outcome.text);
}

void DocumentMainWindow::setOutcome(OutcomeBadge::Kind kind, const QString& text) {
    outcomeBadge_->setKind(kind);
    outcomeLabel_->setText(text);
}

void DocumentMainWindow::beginAlertSheet(std::string_view message, std::string_view info) {
    showAlert(*this, toQString(message), toQString(info));
}

void DocumentMainWindow::showConverted(std::string_view version) {
    setOutcome(OutcomeBadge::Kind::good, tr("Converted to version %1.").arg(toQString(version)));
}

void DocumentMainWindow::closeEvent(QCloseEvent* event) {
    const std::shared_ptr<Document> shown = document_.lock();
    event->ignore();
    if (shown && shown->windowShouldClose()) {
        event->accept();
        saveWindowSize(*this);
        hideSheets(*this);
        actions_.closed(*this);
    }
}

}  // namespace vornic
