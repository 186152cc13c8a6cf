#include "desktop/StartWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "desktop/QtText.h"
#include "desktop/RecentFiles.h"
#include "desktop/WindowSize.h"

namespace vornic {

namespace {

constexpr QSize kDefaultSize(460, 420);
constexpr int kIconSize = 64;

}  // namespace

StartWindow::StartWindow(std::function<void()> browse, std::function<void(const std::string&)> open)
    : open_(std::move(open)), recentFiles_(new QListWidget(this)) {
    setObjectName(QStringLiteral("startWindow"));
    setWindowTitle(QStringLiteral("Vornic"));
    setAcceptDrops(true);
    auto* const content = new QWidget(this);
    auto* const icon = new QLabel(content);
    icon->setPixmap(QApplication::windowIcon().pixmap(kIconSize));
    icon->setAlignment(Qt::AlignCenter);
    auto* const invitation =
        new QLabel(tr("Drop Final Cut Pro XML files here to repair them."), content);
    invitation->setObjectName(QStringLiteral("dropLabel"));
    invitation->setAlignment(Qt::AlignCenter);
    invitation->setWordWrap(true);
    auto* const button = new QPushButton(tr("&Open Files…"), content);
    button->setObjectName(QStringLiteral("startOpenBtn"));
    button->setAccessibleName(tr("Open files to repair"));
    button->setDefault(true);
    auto* const heading = new QLabel(tr("&Recent files"), content);
    heading->setBuddy(recentFiles_);
    recentFiles_->setObjectName(QStringLiteral("recentFilesList"));
    recentFiles_->setAccessibleName(tr("Recent files"));
    recentFiles_->setTextElideMode(Qt::ElideMiddle);
    recentFiles_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    recentFiles_->setAcceptDrops(false);
    recentFiles_->viewport()->setAcceptDrops(false);

    auto* const column = new QVBoxLayout(content);
    column->addSpacing(column->spacing());
    column->addWidget(icon);
    column->addWidget(invitation);
    column->addWidget(button, 0, Qt::AlignHCenter);
    column->addSpacing(column->spacing());
    column->addWidget(heading);
    column->addWidget(recentFiles_, 1);
    setCentralWidget(content);
    setTabOrder(button, recentFiles_);
    button->setFocus();

    connect(button, &QPushButton::clicked, this, std::move(browse));
    connect(recentFiles_, &QListWidget::itemActivated, this,
            [this](const QListWidgetItem* item) { openItem(item); });
    showRecentFiles();
    restoreWindowSize(*this, kDefaultSize);
}

void StartWindow::showRecentFiles() {
    recentFiles_->clear();
    for (const std::string& path : RecentFiles::paths()) {
        auto* const item = new QListWidgetItem(fileNameOf(path), recentFiles_);
        item->setToolTip(toolTipOf(path));
        item->setData(Qt::UserRole, QByteArray::fromStdString(path));
    }
    if (recentFiles_->count() > 0) {
        recentFiles_->setCurrentRow(0);
    }
}

void StartWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    saveWindowSize(*this);
}

void StartWindow::openItem(const QListWidgetItem* item) {
    open_(item->data(Qt::UserRole).toByteArray().toStdString());
}

}  // namespace vornic
