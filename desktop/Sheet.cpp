#include "desktop/Sheet.h"

#include <QApplication>
#include <QEvent>
#include <algorithm>

namespace vornic {

namespace {

// What stays in sight of the window above a sheet: its menus and its head.
constexpr int kShareAbove = 5;
constexpr int kMostAbove = 96;

void bringUp(QDialog& dialog) {
    dialog.show();
    dialog.raise();
    dialog.activateWindow();
}

void placeOn(const QWidget& window, QDialog& sheet) {
    const QRect area = window.geometry();
    sheet.move(area.left() + (area.width() - sheet.width()) / 2,
               area.top() + std::min(area.height() / kShareAbove, kMostAbove));
}

// Keeps a sheet in its place. A window that has just been shown, too, is moved yet: by the window
// manager, which tells so later.
class Follower : public QObject {
  public:
    explicit Follower(QDialog& sheet) : QObject(&sheet), sheet_(sheet) {}

    bool eventFilter(QObject* object, QEvent* event) override {
        const bool hasMoved = event->type() == QEvent::Move || event->type() == QEvent::Resize;
        if (hasMoved && sheet_.isVisible()) {
            placeOn(*static_cast<QWidget*>(object), sheet_);
        }
        return false;
    }

  private:
    QDialog& sheet_;
};

void follow(QWidget& window, QDialog& sheet) {
    const QString name = QStringLiteral("follower");
    if (sheet.findChild<QObject*>(name, Qt::FindDirectChildrenOnly) == nullptr) {
        auto* const follower = new Follower(sheet);
        follower->setObjectName(name);
        window.installEventFilter(follower);
    }
}

QList<QDialog*> dialogsOf(const QWidget& window) {
    return window.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly);
}

}  // namespace

void beginSheet(QDialog& dialog) {
    dialog.setWindowModality(Qt::WindowModal);
    dialog.adjustSize();
    if (QWidget* const window = dialog.parentWidget()) {
        placeOn(*window, dialog);
        follow(*window, dialog);
    }
    bringUp(dialog);
}

void beginAlone(QDialog& dialog) {
    const QWidget* window = QApplication::activeWindow();
    while (window != nullptr && window->parentWidget() != nullptr) {
        window = window->parentWidget()->window();
    }
    dialog.setWindowModality(Qt::NonModal);
    dialog.adjustSize();
    if (window != nullptr) {
        dialog.move(window->geometry().center() - dialog.rect().center());
    }
    bringUp(dialog);
}

bool hasSheet(const QWidget& window) {
    const QList<QDialog*> dialogs = dialogsOf(window);
    return std::any_of(dialogs.begin(), dialogs.end(), [](const QDialog* dialog) {
        return dialog->isVisible() && dialog->windowModality() == Qt::WindowModal;
    });
}

void hideSheets(const QWidget& window) {
    for (QDialog* const dialog : dialogsOf(window)) {
        dialog->hide();
    }
}

}  // namespace vornic
