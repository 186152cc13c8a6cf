#include "desktop/FindBar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QToolButton>
#include <chrono>

#include "desktop/QtText.h"

namespace vornic {

namespace {

QToolButton* makeButton(const QString& text, const QString& description, QWidget* parent) {
    auto* const button = new QToolButton(parent);
    button->setText(text);
    button->setAccessibleDescription(description);
    button->setToolTip(toolTipOf(description));
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

}  // namespace

FindBar::FindBar(ReportView* report, QWidget* parent)
    : QWidget(parent), report_(report), text_(new QLineEdit(this)), notFound_(new QLabel(this)) {
    setObjectName(QStringLiteral("findBar"));
    text_->setObjectName(QStringLiteral("findText"));
    text_->setAccessibleName(tr("Find"));
    text_->setPlaceholderText(tr("Find"));
    text_->setClearButtonEnabled(true);
    notFound_->setTextFormat(Qt::PlainText);
    notFound_->setText(tr("Not found"));
    notFound_->hide();
    QToolButton* const previous = makeButton(tr("Previous"), tr("Find the previous place"), this);
    QToolButton* const next = makeButton(tr("Next"), tr("Find the next place"), this);
    QToolButton* const done = makeButton(tr("Done"), tr("End the search"), this);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(text_, 1);
    row->addWidget(notFound_);
    row->addWidget(previous);
    row->addWidget(next);
    row->addWidget(done);
    connect(text_, &QLineEdit::returnPressed, this, [this] { findNext(); });
    connect(text_, &QLineEdit::textChanged, notFound_, &QWidget::hide);
    constexpr std::chrono::milliseconds kBetweenKeys{150};
    typing_.setSingleShot(true);
    typing_.setInterval(kBetweenKeys);
    connect(text_, &QLineEdit::textEdited, &typing_, qOverload<>(&QTimer::start));
    connect(&typing_, &QTimer::timeout, this, [this] {
        if (!text_->text().isEmpty()) {
            find(FindStep::here);
        }
    });
    connect(previous, &QToolButton::clicked, this, [this] { findPrevious(); });
    connect(next, &QToolButton::clicked, this, [this] { findNext(); });
    connect(done, &QToolButton::clicked, this, [this] { end(); });
    hide();
}

void FindBar::begin() {
    show();
    text_->selectAll();
    text_->setFocus(Qt::ShortcutFocusReason);
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        end();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void FindBar::find(FindStep step) {
    typing_.stop();
    if (text_->text().isEmpty()) {
        begin();
        return;
    }
    const bool isFound =
        finder_ ? finder_(text_->text(), step) : report_->findText(text_->text(), step);
    notFound_->setVisible(!isFound);
}

void FindBar::end() {
    hide();
    report_->setFocus(Qt::OtherFocusReason);
}

}  // namespace vornic
