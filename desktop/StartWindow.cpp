#include "desktop/StartWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>
#include <utility>

#include "desktop/QtText.h"
#include "desktop/RecentFiles.h"
#include "desktop/WindowSize.h"

namespace vornic {

namespace {

constexpr QSize kDefaultSize(460, 420);
constexpr int kIconSize = 64;
constexpr int kItemSpacing = 2;

}  // namespace

StartWindow::StartWindow(std::function<void()> browse, std::function<void(const std::string&)> open)
    : open_(std::move(open)), recentFiles_(new QListWidget(this)) {
    setObjectName(QStringLiteral("startWindow"));
    setWindowTitle(QStringLiteral("Vornic"));
    setAcceptDrops(true);
    auto* const content = new QWidget(this);
    area_ = new DropArea(content);
    DropArea* const area = area_;
    auto* const icon = new QLabel(area);
    icon->setTextFormat(Qt::PlainText);
    icon->setPixmap(QApplication::windowIcon().pixmap(kIconSize));
    icon->setAlignment(Qt::AlignCenter);
    auto* const invitation =
        new QLabel(tr("Drop Final Cut Pro XML files here to repair them."), area);
    invitation->setObjectName(QStringLiteral("dropLabel"));
    invitation->setTextFormat(Qt::PlainText);
    invitation->setAlignment(Qt::AlignCenter);
    invitation->setWordWrap(true);
    auto* const button = new QPushButton(tr("&Open Files…"), area);
    button->setObjectName(QStringLiteral("startOpenBtn"));
    button->setAccessibleDescription(tr("Open files to repair"));
    button->setDefault(true);
    recentHeading_ = new QLabel(tr("&Recent files"), content);
    recentHeading_->setTextFormat(Qt::PlainText);
    recentHeading_->setBuddy(recentFiles_);
    recentFiles_->setObjectName(QStringLiteral("recentFilesList"));
    recentFiles_->setAccessibleName(tr("Recent files"));
    recentFiles_->setTextElideMode(Qt::ElideMiddle);
    recentFiles_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    recentFiles_->setSpacing(kItemSpacing);
    recentFiles_->setAcceptDrops(false);
    recentFiles_->viewport()->setAcceptDrops(false);

    auto* const column = new QVBoxLayout(content);
    column->addWidget(area, 1);
    column->addWidget(recentHeading_);
    column->addWidget(recentFiles_, 1);
    auto* const invitationColumn = new QVBoxLayout(area);
    invitationColumn->setSpacing(2 * column->spacing());
    invitationColumn->addStretch();
    invitationColumn->addWidget(icon);
    invitationColumn->addWidget(invitation);
    invitationColumn->addWidget(button, 0, Qt::AlignHCenter);
    invitationColumn->addStretch();
    setCentralWidget(content);
    setTabOrder(button, recentFiles_);
    button->setFocus();

    connect(button, &QPushButton::clicked, this, std::move(browse));
    connect(recentFiles_, &QListWidget::itemActivated, this,
            [this](const QListWidgetItem* item) { openItem(item); });
    recentFiles_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(recentFiles_, &QListWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { showMenu(at); });
    auto* const forgetting = new QShortcut(QKeySequence::Delete, recentFiles_);
    forgetting->setContext(Qt::WidgetShortcut);
    connect(forgetting, &QShortcut::activated, this,
            [this] { forget(recentFiles_->currentItem()); });
    showRecentFiles();
    restoreWindowSize(*this, kDefaultSize);
}

void StartWindow::showRecentFiles() {
    listRecentFiles();
    RecentFiles::look(*this, [this] { listRecentFiles(); });
}

void StartWindow::listRecentFiles() {
    recentFiles_->clear();
    for (const std::string& path : RecentFiles::paths()) {
        auto* const item =
            new QListWidgetItem(fileNameOf(path) + u'\n' + RecentFiles::about(path), recentFiles_);
        item->setToolTip(toolTipOf(path));
        item->setData(Qt::UserRole, QByteArray::fromStdString(path));
    }
    const bool hasFiles = recentFiles_->count() > 0;
    if (hasFiles) {
        // Ready for the keyboard, but not marked before it comes there.
        recentFiles_->setCurrentRow(0, QItemSelectionModel::NoUpdate);
    }
    recentHeading_->setVisible(hasFiles);
    recentFiles_->setVisible(hasFiles);
}

void StartWindow::forget(const QListWidgetItem* item) {
    if (item != nullptr) {
        RecentFiles::forget(item->data(Qt::UserRole).toByteArray().toStdString());
        listRecentFiles();
    }
}

void StartWindow::showMenu(const QPoint& at) {
    if (recentFiles_->currentItem() == nullptr) {
        return;
    }
    auto* const menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("recentFileMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(tr("&Open")), &QAction::triggered, this,
            [this] { openItem(recentFiles_->currentItem()); });
    connect(menu->addAction(tr("&Forget")), &QAction::triggered, this,
            [this] { forget(recentFiles_->currentItem()); });
    menu->popup(recentFiles_->viewport()->mapToGlobal(at));
}

void StartWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    saveWindowSize(*this);
}

void StartWindow::openItem(const QListWidgetItem* item) {
    open_(item->data(Qt::UserRole).toByteArray().toStdString());
}

}  // namespace vornic
