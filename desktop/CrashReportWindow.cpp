#include "desktop/CrashReportWindow.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/PathText.h"
#include "desktop/FileManager.h"
#include "desktop/QtText.h"
#include "platform/session/WorkspaceOpener.h"

namespace vornic {

namespace {

constexpr QSize kSize(680, 480);

}  // namespace

CrashReportWindow::CrashReportWindow(const std::string& path)
    : path_(path),
      message_(new QLabel(this)),
      report_(new QPlainTextEdit(this)),
      done_(new QLabel(this)) {
    setObjectName(QStringLiteral("crashReportWindow"));
    setWindowTitle(tr("Crash Report"));
    resize(kSize);
    message_->setObjectName(QStringLiteral("crashMessage"));
    message_->setTextFormat(Qt::PlainText);
    message_->setWordWrap(true);
    message_->setText(
        tr("A program ended because of a fault in it. Your files are whole: a file is replaced in "
           "one step, and what was begun is finished or taken back at the next start.\n\nThe "
           "report below says where the fault is. It has no part of your projects in it. To have "
           "the fault mended, copy the report, choose Help > Report a Bug in Vornic, and paste it "
           "there, with a sentence on what you did. Nothing is sent by itself."));
    report_->setObjectName(QStringLiteral("crashReport"));
    report_->setAccessibleName(tr("The report"));
    report_->setReadOnly(true);
    report_->setTabChangesFocus(true);
    report_->setLineWrapMode(QPlainTextEdit::NoWrap);
    report_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    done_->setObjectName(QStringLiteral("crashDone"));
    done_->setTextFormat(Qt::PlainText);

    auto* const copy = new QPushButton(tr("&Copy"), this);
    copy->setObjectName(QStringLiteral("crashCopy"));
    connect(copy, &QPushButton::clicked, this, [this] { copyReport(); });
    auto* const show = new QPushButton(tr("&Show in File Manager"), this);
    show->setObjectName(QStringLiteral("crashShow"));
    connect(show, &QPushButton::clicked, this, [this] { showInFileManager(); });
    auto* const close = new QPushButton(tr("C&lose"), this);
    close->setObjectName(QStringLiteral("crashClose"));
    connect(close, &QPushButton::clicked, this, &QWidget::close);

    auto* const column = new QVBoxLayout(this);
    column->addWidget(message_);
    column->addWidget(report_, 1);
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(done_, 1);
    buttons->addWidget(copy);
    buttons->addWidget(show);
    buttons->addWidget(close);
    column->addLayout(buttons);
    copy->setFocus();
    readReport();
}

void CrashReportWindow::readReport() {
    QFile file(pathToQString(path_));
    if (!file.open(QIODevice::ReadOnly)) {
        report_->setPlainText(tr("The report %1 cannot be read.").arg(pathToQString(path_)));
        return;
    }
    report_->setPlainText(QString::fromUtf8(file.read(kLongestReport)));
}

void CrashReportWindow::copyReport() {
    QApplication::clipboard()->setText(report_->toPlainText());
    done_->setText(tr("The report has been copied."));
}

void CrashReportWindow::showInFileManager() {
    revealInFileManager(path_, this, [this] {
        ErrorSlot error;
        if (!platform::WorkspaceOpener::shared()->openFile(parentFolder(path_), error)) {
            done_->setText(tr("No file manager can be found."));
        }
    });
}

}  // namespace vornic
