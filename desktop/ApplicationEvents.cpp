#include <QApplication>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QUrl>
#include <algorithm>

#include "desktop/Application.h"
#include "desktop/QtText.h"
#include "platform/threads/MainThread.h"

// What the application does about the events of all its windows: their order, drops, keys.

namespace vornic {

namespace {

// Takes files as a copy or a link, whatever keys are held: the program that they come from removes
// what was moved. @return false when they can only be moved.
bool takeAsCopy(QDropEvent& event) {
    for (const Qt::DropAction action : {Qt::CopyAction, Qt::LinkAction}) {
        if (event.possibleActions().testFlag(action)) {
            event.setDropAction(action);
            event.accept();
            return true;
        }
    }
    event.ignore();
    return false;
}

// Shift+F10 opens the menu of what has the focus, which the toolkit does for the menu key alone.
bool showsMenuOf(QObject* object, const QKeyEvent& key) {
    auto* const widget = qobject_cast<QWidget*>(object);
    if (widget == nullptr || key.key() != Qt::Key_F10 || key.modifiers() != Qt::ShiftModifier) {
        return false;
    }
    const QPoint place = widget->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, place, widget->mapToGlobal(place));
    return QApplication::sendEvent(widget, &menu) && menu.isAccepted();
}

std::vector<std::string> pathsOf(const QMimeData& data) {
    std::vector<std::string> paths;
    for (const QUrl& url : data.urls()) {
        if (url.isLocalFile()) {
            paths.push_back(pathFromQString(url.toLocalFile()));
        }
    }
    return paths;
}

}  // namespace

bool Application::eventFilter(QObject* object, QEvent* event) {
    switch (event->type()) {
        case QEvent::WindowActivate:
            putInFront(object);
            break;
        case QEvent::Show:
            if (isWindow(*object)) {
                static_cast<QWidget*>(object)->setAcceptDrops(true);
            }
            break;
        case QEvent::Hide:
            if (isLaunched_ && isWindow(*object)) {
                platform::MainThread::perform([this] { endWhenNothingIsOpen(); });
            }
            break;
        // A view of text that cannot be changed would turn the movement down.
        case QEvent::DragEnter:
        case QEvent::DragMove:
            if (takesDrag(*object, *static_cast<QDragMoveEvent*>(event))) {
                return true;
            }
            break;
        case QEvent::DragLeave:
            showDrag(false);
            break;
        case QEvent::Drop:
            showDrag(false);
            if (takesDrop(*object, *static_cast<QDropEvent*>(event))) {
                return true;
            }
            break;
        case QEvent::KeyPress:
            return showsMenuOf(object, *static_cast<QKeyEvent*>(event));
        default:
            break;
    }
    return QObject::eventFilter(object, event);
}

bool Application::isWindow(const QObject& object) {
    const auto* const widget = qobject_cast<const QWidget*>(&object);
    return widget != nullptr &&
           (widget->windowType() == Qt::Window || widget->windowType() == Qt::Dialog);
}

void Application::putInFront(const QObject* object) {
    const auto found =
        std::find_if(windows_.begin(), windows_.end(),
                     [object](const WindowPointer& each) { return each.get() == object; });
    if (found != windows_.end()) {
        std::rotate(found, found + 1, windows_.end());
    }
}

void Application::showDrag(bool isTaken) {
    if (startWindow_) {
        startWindow_->setTakesDrop(isTaken);
    }
}

bool Application::takesDrag(const QObject& object, QDragMoveEvent& drag) {
    const bool hasFiles = object.isWidgetType() && !pathsOf(*drag.mimeData()).empty();
    if (hasFiles) {
        showDrag(takeAsCopy(drag));
    }
    return hasFiles;
}

bool Application::takesDrop(const QObject& object, QDropEvent& drop) {
    const std::vector<std::string> paths = pathsOf(*drop.mimeData());
    if (!object.isWidgetType() || paths.empty()) {
        return false;
    }
    if (takeAsCopy(drop)) {
        // The program that the files come from waits until the drop is done.
        const auto* const window = static_cast<const QWidget&>(object).window();
        const bool isBatch = batch_ && window == batch_.get();
        platform::MainThread::perform(
            [this, paths, isBatch] { isBatch ? showBatch(paths) : openDocuments(paths); });
    }
    return true;
}

}  // namespace vornic
