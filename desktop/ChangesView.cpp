#include "desktop/ChangesView.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>
#include <utility>

#include "app/window/HeaderText.h"
#include "base/Exception.h"
#include "desktop/QtText.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

namespace {

QToolButton* makeButton(const char* objectName, const QString& text, const QString& name,
                        QWidget* parent) {
    auto* const button = new QToolButton(parent);
    button->setObjectName(QString::fromLatin1(objectName));
    button->setText(text);
    button->setToolTip(toolTipOf(name));
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

// A text with a heading.
QWidget* makeSide(const QString& heading, SourceView* view, QWidget* parent) {
    auto* const side = new QWidget(parent);
    auto* const label = new QLabel(heading, side);
    label->setTextFormat(Qt::PlainText);
    auto* const column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    column->addWidget(label);
    column->addWidget(view, 1);
    return side;
}

// Scrolled together.
void tie(QScrollBar* one, QScrollBar* other) {
    QObject::connect(one, &QScrollBar::valueChanged, other, &QScrollBar::setValue);
    QObject::connect(other, &QScrollBar::valueChanged, one, &QScrollBar::setValue);
}

}  // namespace

ChangesView::ChangesView(QWidget* parent)
    : QWidget(parent),
      original_(new SourceView(tr("Source of the original"), this)),
      file_(new SourceView(tr("Source of the file as it is now"), this)) {
    setObjectName(QStringLiteral("changesView"));
    original_->setObjectName(QStringLiteral("originalSource"));
    file_->setObjectName(QStringLiteral("changedSource"));
    auto* const sides = new QSplitter(Qt::Horizontal, this);
    sides->addWidget(makeSide(tr("Before"), original_, sides));
    sides->addWidget(makeSide(tr("After"), file_, sides));
    sides->setChildrenCollapsible(false);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(makeBar());
    column->addWidget(sides, 1);
    tie(original_->verticalScrollBar(), file_->verticalScrollBar());
    tie(original_->horizontalScrollBar(), file_->horizontalScrollBar());
    tellPlace();
}

QWidget* ChangesView::makeBar() {
    auto* const bar = new QWidget(this);
    place_ = new QLabel(bar);
    place_->setObjectName(QStringLiteral("changesLabel"));
    place_->setTextFormat(Qt::PlainText);
    place_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    previous_ = makeButton("previousChangeBtn", tr("Previous Change"),
                           tr("Go to the change above (Alt+Up)"), bar);
    next_ = makeButton("nextChangeBtn", tr("Next Change"), tr("Go to the change below (Alt+Down)"),
                       bar);
    previous_->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Up));
    next_->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Down));
    hidesIndentation_ = new QCheckBox(tr("Hide indentation"), bar);
    hidesIndentation_->setObjectName(QStringLiteral("hideIndentationBox"));
    hidesIndentation_->setChecked(true);
    auto* const row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(place_, 1);
    row->addWidget(hidesIndentation_);
    row->addWidget(previous_);
    row->addWidget(next_);
    connect(previous_, &QToolButton::clicked, this, [this] { showPreviousChange(); });
    connect(next_, &QToolButton::clicked, this, [this] { showNextChange(); });
    connect(hidesIndentation_, &QCheckBox::toggled, this, [this] { compare(); });
    return bar;
}

void ChangesView::setTable(std::shared_ptr<const FindingsTable> table) {
    const bool canCompare = table && table->inspection().original;
    table_ = canCompare ? std::move(table) : nullptr;
    original_->setSource(table_ ? table_->inspection().original->source : nullptr);
    file_->setSource(table_ ? table_->inspection().file.source : nullptr);
    if (table_) {
        original_->setMarks(table_->marks(true));
        file_->setMarks(table_->marks(false));
    }
    changes_.clear();
    current_ = 0;
    compare();
}

// Of large files it takes longer than a window may stand still.
void ChangesView::compare() {
    ++number_;
    isCompared_ = false;
    if (!table_) {
        tellPlace();
        return;
    }
    try {
        platform::detachNewThread([self = QPointer<ChangesView>(this), number = number_,
                                   table = table_,
                                   hidesIndentation = hidesIndentation_->isChecked()] {
            const Inspection& inspection = table->inspection();
            const SourceText& original = *inspection.original->source;
            const SourceText& file = *inspection.file.source;
            auto rows = std::make_shared<AlignedRows>(AlignedRows::of(
                original, file,
                hidesIndentation ? inspection.changes
                                 : lineDifference(linesOf(original), linesOf(file), false)));
            platform::MainThread::perform([self, number, rows] {
                if (self && number == self->number_) {
                    self->show(std::move(*rows));
                }
            });
        });
    } catch (const platform::Exception&) {
        tellPlace();
    }
}

void ChangesView::show(AlignedRows rows) {
    changes_ = std::move(rows.changes);
    original_->setRows(std::move(rows.left), rows.isChanged);
    file_->setRows(std::move(rows.right), std::move(rows.isChanged));
    isCompared_ = true;
    showChange(0);
    if (const std::size_t line = std::exchange(wantedLine_, 0); line != 0) {
        showOriginalLine(line);
    }
}

void ChangesView::showOriginalLine(std::size_t line) {
    if (isCompared_) {
        original_->showLine(line);
    } else {
        wantedLine_ = line;
    }
}

void ChangesView::showChange(std::size_t index) {
    if (index < changes_.size()) {
        current_ = index;
        constexpr int kLead = 3;
        file_->verticalScrollBar()->setValue(static_cast<int>(changes_[index]) - kLead);
    }
    tellPlace();
}

void ChangesView::showNextChange() {
    showChange(current_ + 1);
}

void ChangesView::showPreviousChange() {
    if (current_ > 0) {
        showChange(current_ - 1);
    }
}

void ChangesView::tellPlace() {
    if (!table_) {
        place_->setText(tr("There is no original to compare with."));
    } else if (changes_.empty()) {
        place_->setText(hidesIndentation_->isChecked()
                            ? tr("Nothing has changed but, perhaps, indentation.")
                            : tr("Nothing has changed."));
    } else {
        place_->setText(tr("Change %1 of %2")
                            .arg(toQString(withThousands(current_ + 1)),
                                 toQString(withThousands(changes_.size()))));
    }
    previous_->setEnabled(current_ > 0 && !changes_.empty());
    next_->setEnabled(current_ + 1 < changes_.size());
}

}  // namespace vornic
