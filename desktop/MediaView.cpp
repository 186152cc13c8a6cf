#include "desktop/MediaView.h"

#include <QApplication>
#include <QClipboard>
#include <QEvent>
#include <QHeaderView>
#include <QPointer>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "base/Exception.h"
#include "desktop/ContextMenu.h"
#include "desktop/FlowLayout.h"
#include "desktop/QtText.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

namespace {

QTreeView* makeTable(QAbstractItemModel* model, QWidget* parent) {
    auto* const table = new QTreeView(parent);
    table->setObjectName(QStringLiteral("mediaTable"));
    table->setAccessibleName(MediaView::tr("Media"));
    table->setModel(model);
    table->setRootIsDecorated(false);
    table->setUniformRowHeights(true);
    table->setAlternatingRowColors(true);
    table->setAllColumnsShowFocus(true);
    table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table->setTabKeyNavigation(false);
    table->setTextElideMode(Qt::ElideMiddle);
    table->setSortingEnabled(true);
    table->header()->setSortIndicator(MediaModel::state, Qt::DescendingOrder);
    table->header()->setStretchLastSection(false);
    table->header()->setFocusPolicy(Qt::NoFocus);
    table->header()->setSectionResizeMode(MediaModel::folder, QHeaderView::Stretch);
    const int unit = table->fontMetrics().averageCharWidth();
    constexpr std::array kCharacters = {22, 36, 60, 10};
    for (int column = 0; column < MediaModel::columnCount_; ++column) {
        table->setColumnWidth(column, unit * kCharacters.at(static_cast<std::size_t>(column)));
    }
    return table;
}

}  // namespace

MediaView::MediaView(std::string path, Actions actions, QWidget* parent)
    : QWidget(parent),
      path_(std::move(path)),
      actions_(std::move(actions)),
      model_(new MediaModel(palette(), this)),
      table_(makeTable(model_, this)) {
    setObjectName(QStringLiteral("mediaView"));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(makeBar());
    column->addWidget(table_, 1);
    setTabOrder(showButton_, table_);
    connect(table_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this] { updateButtons(); });
    connect(table_, &QTreeView::activated, this, [this](const QModelIndex& index) {
        if (const MediaTableRow* const medium = model_->mediumAt(index)) {
            actions_.showLine(medium->line);
        }
    });
    addContextMenu(*table_, "mediumMenu",
                   {{tr("&Show in Source"),
                     [this] {
                         if (const MediaTableRow* const medium = currentMedium()) {
                             actions_.showLine(medium->line);
                         }
                     },
                     [this] { return currentMedium() != nullptr; }},
                    {tr("Show in Fi&le Manager"), [this] { showButton_->click(); },
                     [this] { return showButton_->isEnabled(); }},
                    {tr("&Copy"), [this] { copy(); }}});
    updateButtons();
}

QWidget* MediaView::makeBar() {
    auto* const bar = new QWidget(this);
    summary_ = new ElidedLabel(bar);
    summary_->setObjectName(QStringLiteral("mediaLabel"));
    auto* const buttons = new QWidget(bar);
    auto* const flow = new FlowLayout(buttons);
    const auto add = [&](const char* objectName, const QString& text) {
        auto* const button = new QPushButton(text, buttons);
        button->setObjectName(QString::fromLatin1(objectName));
        flow->addWidget(button);
        return button;
    };
    findButton_ = add("findMediaBtn", tr("F&ind in Folder…"));
    changeButton_ = add("changeMediaFolderBtn", tr("Chan&ge Folder…"));
    showButton_ = add("showMediumBtn", tr("Show in Fi&le Manager"));
    auto* const column = new QVBoxLayout(bar);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(summary_);
    column->addWidget(buttons);
    connect(findButton_, &QPushButton::clicked, this, [this] { actions_.findInFolder(); });
    connect(changeButton_, &QPushButton::clicked, this, [this] { actions_.changeFolder(); });
    connect(showButton_, &QPushButton::clicked, this, [this] {
        if (const MediaTableRow* const medium = currentMedium()) {
            actions_.showFile(*medium);
        }
    });
    return bar;
}

const MediaTableRow* MediaView::currentMedium() const {
    return model_->mediumAt(table_->currentIndex());
}

void MediaView::expire() {
    isRead_ = false;
    if (isVisible()) {
        read();
    }
}

void MediaView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // A volume may have come or gone meanwhile.
    read();
}

void MediaView::read() {
    ++number_;
    summary_->setWholeText(tr("Looking for the media…"));
    try {
        platform::startUnattendedThread(
            [self = QPointer<MediaView>(this), number = number_, path = path_] {
                auto table = std::make_shared<MediaTable>();
                try {
                    *table = mediaTableOf(path);
                } catch (const std::bad_alloc&) {
                    table->failure = "There is not enough memory to read the file.";
                }
                platform::MainThread::perform([self, number, table = std::move(table)] {
                    if (self && number == self->number_) {
                        self->show(table);
                    }
                });
            });
    } catch (const platform::Exception&) {
        summary_->setWholeText(tr("The media could not be looked for."));
    }
}

void MediaView::show(std::shared_ptr<const MediaTable> table) {
    const QModelIndex current = table_->currentIndex();
    summary_->setWholeText(oneLine(toQString(table->summary())));
    model_->setTable(std::move(table));
    isRead_ = true;
    table_->setCurrentIndex(model_->index(std::max(0, current.row()), 0));
    table_->clearSelection();
    updateButtons();
}

void MediaView::setMayChange(bool mayChange) {
    mayChange_ = mayChange;
    updateButtons();
}

void MediaView::updateButtons() {
    const bool hasMedia = model_->rowCount() > 0 && mayChange_;
    findButton_->setEnabled(hasMedia);
    changeButton_->setEnabled(hasMedia);
    showButton_->setEnabled(currentMedium() != nullptr);
}

QString MediaView::selectedText() const {
    QModelIndexList rows = table_->selectionModel()->selectedRows();
    if (rows.isEmpty() && table_->currentIndex().isValid()) {
        rows.push_back(table_->currentIndex());
    }
    std::sort(rows.begin(), rows.end());
    QString text;
    for (const QModelIndex& row : rows) {
        QStringList cells;
        for (int column = 0; column < MediaModel::columnCount_; ++column) {
            cells += model_->data(row.siblingAtColumn(column), Qt::DisplayRole).toString();
        }
        text += cells.join(u'\t') + u'\n';
    }
    return text;
}

void MediaView::copy() {
    QApplication::clipboard()->setText(selectedText());
}

void MediaView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && model_ != nullptr) {
        model_->setPalette(palette());
    }
}

}  // namespace vornic
