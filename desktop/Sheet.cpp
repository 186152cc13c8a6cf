#include "desktop/Sheet.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <algorithm>

#include "desktop/WindowSize.h"

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
    const QRect screen = window.screen()->availableGeometry();
    const int wanted = area.top() + std::min(area.height() / kShareAbove, kMostAbove);
    // Its buttons are at its end.
    const int lowest = screen.top() + screen.height() - sheet.height() - kWindowFrame.height();
    sheet.move(area.left() + (area.width() - sheet.width()) / 2,
               std::max(std::min(wanted, lowest), std::min(wanted, screen.top())));
}

QList<QDialog*> dialogsOf(const QWidget& window) {
    return window.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly);
}

// The sheet that was made last of those on the screen; null when there is none.
QDialog* lastSheetOf(const QWidget& window) {
    QDialog* last = nullptr;
    for (QDialog* const dialog : dialogsOf(window)) {
        last = dialog->isVisible() && dialog->windowModality() == Qt::WindowModal ? dialog : last;
    }
    return last;
}

// Keeps a sheet in its place. A window that has just been shown, too, is moved yet: by the window
// manager, which tells so later. And a window manager that gives the keyboard to the window when
// another sheet has gone would leave it with what takes no key.
class Follower : public QObject {
  public:
    explicit Follower(QDialog& sheet) : QObject(&sheet), sheet_(sheet) {}

    bool eventFilter(QObject* object, QEvent* event) override {
        const bool hasMoved = event->type() == QEvent::Move || event->type() == QEvent::Resize;
        if (hasMoved && sheet_.isVisible()) {
            placeOn(*static_cast<QWidget*>(object), sheet_);
        } else if (event->type() == QEvent::WindowActivate) {
            QMetaObject::invokeMethod(
                this, [this] { takeKeyboard(); }, Qt::QueuedConnection);
        }
        return false;
    }

  private:
    void takeKeyboard() {
        if (sheet_.parentWidget() != nullptr && lastSheetOf(*sheet_.parentWidget()) == &sheet_) {
            sheet_.activateWindow();
        }
    }

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

}  // namespace

void giveRoom(QDialog& dialog) {
    constexpr QSize kComfortable(760, 440);
    constexpr int kPart = 20;
    const QSize window =
        dialog.parentWidget() != nullptr ? dialog.parentWidget()->size() : kComfortable;
    const int above = std::min(window.height() / kShareAbove, kMostAbove);
    const QSize room(window.width() - window.width() / kPart, window.height() - above);
    // A sheet takes the size that its contents ask for.
    dialog.setMinimumSize(kComfortable.boundedTo(room));
}

void beginSheet(QDialog& dialog) {
    dialog.setWindowModality(Qt::WindowModal);
    dialog.adjustSize();
    if (QWidget* const window = dialog.parentWidget()) {
        placeOn(*window, dialog);
        follow(*window, dialog);
    }
    bringUp(dialog);
}

QWidget* windowInUse() {
    QWidget* window = QApplication::activeWindow();
    while (window != nullptr && window->parentWidget() != nullptr) {
        window = window->parentWidget()->window();
    }
    return window;
}

void beginAlone(QDialog& dialog, const QWidget* over) {
    const QWidget* const window = over != nullptr ? over : windowInUse();
    dialog.setWindowModality(Qt::NonModal);
    dialog.adjustSize();
    if (window != nullptr) {
        dialog.move(window->geometry().center() - dialog.rect().center());
    }
    bringUp(dialog);
}

bool hasSheet(const QWidget& window) {
    return lastSheetOf(window) != nullptr;
}

void hideSheets(const QWidget& window) {
    for (QDialog* const dialog : dialogsOf(window)) {
        dialog->hide();
    }
}

}  // namespace vornic
