#include "desktop/ShortcutKeysPane.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "desktop/AlertBox.h"
#include "desktop/QtText.h"
#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"

namespace vornic {

namespace {

QLabel* makeText(const char* name, const QString& text, QWidget* parent) {
    auto* const label = new QLabel(text, parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    return label;
}

// A text that is there only when there is something to say, marked as such.
QLabel* makeWarning(const char* name, QWidget* parent) {
    QLabel* const label = makeText(name, QString(), parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->hide();
    return label;
}

void showText(QLabel& label, std::string_view text) {
    label.setText(toQString(text));
    label.setVisible(!text.empty());
}

}  // namespace

ShortcutKeysPane::ShortcutKeysPane(QWidget* parent)
    : QWidget(parent),
      table_(new ShortcutKeyTable(this)),
      notice_(makeWarning("managerNotice", this)),
      conflicts_(makeWarning("conflictLabel", this)),
      failure_(makeWarning("shortcutFailureLabel", this)),
      change_(new QPushButton(tr("C&hange Shortcut"), this)),
      clear_(new QPushButton(tr("C&lear"), this)) {
    setObjectName(QStringLiteral("shortcutKeysPane"));
    notice_->setText(
        tr("The shortcut key manager is missing, so that no shortcut can be changed. Please "
           "reinstall this software."));
    change_->setObjectName(QStringLiteral("changeShortcutBtn"));
    change_->setAccessibleDescription(tr("Change the shortcut of the selected command"));
    clear_->setObjectName(QStringLiteral("clearShortcutBtn"));
    clear_->setAccessibleDescription(tr("Clear the shortcut of the selected command"));

    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(change_);
    buttons->addWidget(clear_);
    buttons->addStretch();
    auto* const column = new QVBoxLayout(this);
    column->addWidget(makeText(
        "shortcutKeysText",
        tr("These keys work whichever program is in front. Choose a command and press Return or "
           "double-click it, then press its keys."),
        this));
    column->addWidget(notice_);
    column->addWidget(table_, 1);
    column->addWidget(conflicts_);
    column->addWidget(failure_);
    column->addLayout(buttons);
    setTabOrder(table_, change_);
    setTabOrder(change_, clear_);
    connect(change_, &QPushButton::clicked, this, [this] { table_->beginCapture(); });
    connect(clear_, &QPushButton::clicked, this, [this] {
        if (isEditingEnabled_) {
            QMShortcutKeyTableDelegate::sharedController().clearShortcutKey();
        } else {
            tellMissingManager();
        }
    });
    table_->setRefusal([this] { tellMissingManager(); });
}

void ShortcutKeysPane::setManagerNoticeHidden(bool hidden) {
    notice_->setHidden(hidden);
}

void ShortcutKeysPane::setEditingEnabled(bool enabled) {
    isEditingEnabled_ = enabled;
    table_->setEditingEnabled(enabled);
}

void ShortcutKeysPane::tellMissingManager() {
    showAlert(*window(), tr("No shortcut can be changed"),
              tr("The shortcut key manager is missing. Please reinstall this software."));
}

void ShortcutKeysPane::showConflicts(std::string_view text) {
    showText(*conflicts_, text);
}

void ShortcutKeysPane::showFailure(std::string_view text) {
    showText(*failure_, text);
}

}  // namespace vornic
