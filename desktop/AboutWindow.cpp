#include "desktop/AboutWindow.h"

#include <QApplication>
#include <QScrollBar>
#include <QVBoxLayout>

#include "desktop/QtText.h"
#include "ui/about/QMAboutDialogController.h"
#include "ui/about/RichTextReader.h"

namespace vornic {

namespace {

constexpr QSize kSize(420, 484);
constexpr int kIconSize = 96;

QLabel* makeLabel(const char* objectName, const QString& description, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(objectName));
    label->setAccessibleDescription(description);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

}  // namespace

AboutWindow::AboutWindow()
    : icon_(makeLabel("appIconView", tr("Icon"), this)),
      name_(makeLabel("appNameLabel", tr("Name of the application"), this)),
      version_(makeLabel("verLabel", tr("Versions"), this)),
      creditsArea_(new QScrollArea(this)),
      credits_(new QTextEdit(creditsArea_)) {
    setObjectName(QStringLiteral("aboutWindow"));
    resize(kSize);
    icon_->setAccessibleName(tr("The application's icon"));
    QFont large = name_->font();
    large.setPointSizeF(large.pointSizeF() * 1.6);
    large.setBold(true);
    name_->setFont(large);
    version_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    creditsArea_->setObjectName(QStringLiteral("creditsScrollView"));
    creditsArea_->setWidgetResizable(true);
    creditsArea_->setWidget(credits_);
    // The text inside has the focus.
    creditsArea_->setFocusPolicy(Qt::NoFocus);
    creditsArea_->setFrameShape(QFrame::NoFrame);
    credits_->setObjectName(QStringLiteral("creditsTextView"));
    credits_->setAccessibleName(tr("Credits"));
    credits_->setReadOnly(true);
    credits_->setTabChangesFocus(true);

    auto* const column = new QVBoxLayout(this);
    column->addWidget(icon_);
    column->addWidget(name_);
    column->addWidget(version_);
    column->addWidget(creditsArea_, 1);
    QMAboutDialogController(*this).awakeFromNib();
}

std::optional<PanelFrame> AboutWindow::frame() const {
    return PanelFrame{static_cast<double>(x()), static_cast<double>(y()),
                      static_cast<double>(width()), static_cast<double>(height())};
}

void AboutWindow::setFrame(const PanelFrame& frame) {
    resize(qRound(frame.width), qRound(frame.height));
}

void AboutWindow::setTitle(std::string_view title) {
    setWindowTitle(toQString(title));
}

void AboutWindow::setAppName(std::string_view name) {
    name_->setText(toQString(name));
}

void AboutWindow::setVersion(std::string_view text) {
    version_->setText(toQString(text));
}

void AboutWindow::showApplicationIcon() {
    icon_->setPixmap(QApplication::windowIcon().pixmap(kIconSize));
}

void AboutWindow::setCreditsHidden(bool hidden) {
    creditsArea_->setHidden(hidden);
}

void AboutWindow::setCreditsEditable(bool editable) {
    credits_->setReadOnly(!editable);
}

void AboutWindow::insertCredits(std::string_view rtf) {
    for (const StyledRun& run : readRichText(rtf).value_or(std::vector<StyledRun>())) {
        QTextCharFormat format;
        format.setFontWeight(run.isBold ? QFont::Bold : QFont::Normal);
        format.setFontPointSize(run.pointSize);
        credits_->textCursor().insertText(toQString(run.text), format);
    }
}

void AboutWindow::scrollCreditsToBeginning() {
    credits_->moveCursor(QTextCursor::Start);
    credits_->verticalScrollBar()->setValue(0);
}

}  // namespace vornic
