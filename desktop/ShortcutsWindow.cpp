#include "desktop/ShortcutsWindow.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <initializer_list>
#include <utility>

#include "desktop/WindowSize.h"

namespace vornic {

namespace {

constexpr QSize kSize(460, 520);

QString plain(QString title) {
    return title.remove(u'&');
}

void addKeys(QTreeWidgetItem& group, const QString& command, const QString& keys) {
    new QTreeWidgetItem(&group, {command, keys});  // which the group owns
}

QTreeWidgetItem& addGroup(QTreeWidget& list, const QString& title) {
    return *new QTreeWidgetItem(&list, {title, QString()});
}

void addGroup(QTreeWidget& list, const QString& title,
              std::initializer_list<std::pair<QString, QString>> commandsAndKeys) {
    QTreeWidgetItem& group = addGroup(list, title);
    for (const auto& [command, keys] : commandsAndKeys) {
        addKeys(group, command, keys);
    }
}

void addMenu(QTreeWidget& list, const QAction& title, const QMenu& menu) {
    QTreeWidgetItem* group = nullptr;
    for (const QAction* const action : menu.actions()) {
        const QString keys = action->shortcut().toString(QKeySequence::NativeText);
        if (!keys.isEmpty()) {
            group = group != nullptr ? group : &addGroup(list, plain(title.text()));
            addKeys(*group, plain(action->text()), keys);
        }
    }
}

}  // namespace

ShortcutsWindow::ShortcutsWindow(QMainWindow& window) : QDialog(&window) {
    setObjectName(QStringLiteral("shortcutsWindow"));
    setWindowTitle(tr("Keyboard Shortcuts"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* const list = new QTreeWidget(this);
    list->setObjectName(QStringLiteral("shortcutsList"));
    list->setAccessibleName(tr("Keyboard shortcuts"));
    list->setHeaderLabels({tr("Command"), tr("Keys")});
    list->setTabKeyNavigation(false);
    list->setAllColumnsShowFocus(true);
    for (const QAction* const title : window.menuBar()->actions()) {
        if (title->menu() != nullptr) {
            addMenu(*list, *title, *title->menu());
        }
    }
    addGroup(*list, tr("Everywhere"),
             {{tr("Go to the menus"), QStringLiteral("F10")},
              {tr("Open the menu of what has the focus"), QStringLiteral("Shift+F10")},
              {tr("Go to the next control"), tr("Tab")},
              {tr("Choose the marked row, or open it"), tr("Return")},
              {tr("Close a sheet or the search"), tr("Esc")},
              {tr("Take a file off the list of recent files"), tr("Del")}});
    addGroup(*list, tr("In the Timeline"),
             {{tr("The clip before or behind, on the same track"), tr("Left, Right")},
              {tr("The clip at the same time, on the next track"), tr("Up, Down")},
              {tr("Ten clips back, ten clips on"), tr("PgUp, PgDown")},
              {tr("The first, the last clip of the track"), tr("Home, End")},
              {tr("Open the clip, or show its line"), tr("Return")},
              {tr("Back to the sequence that this one was opened in"), tr("Backspace")},
              {tr("Zoom in, zoom out"), QStringLiteral("Ctrl++, Ctrl+-")},
              {tr("Show the whole sequence"), QStringLiteral("Ctrl+0")}});
    list->expandAll();
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    list->header()->setStretchLastSection(false);
    list->setCurrentItem(list->topLevelItem(0));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(list, 1);
    column->addWidget(buttons);
    fitOnScreen(*this, kSize);
    list->setFocus();
}

}  // namespace vornic
