#include "desktop/CloseRequests.h"

#include <QApplication>
#include <QWidget>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

#include "desktop/Sheet.h"

namespace vornic {

namespace {

std::uint32_t atomNamed(xcb_connection_t* connection, std::string_view name) {
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : 0;
}

// Whether nothing keeps the user from the window but a sheet on it.
bool isBlockedByItsSheet(const QWidget& window) {
    const QWidget* const modal = QApplication::activeModalWidget();
    return modal != nullptr && modal->windowModality() == Qt::WindowModal && hasSheet(window);
}

}  // namespace

CloseRequests::CloseRequests() {
    const auto* const display = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (display == nullptr) {
        return;
    }
    protocols_ = atomNamed(display->connection(), "WM_PROTOCOLS");
    deleteWindow_ = atomNamed(display->connection(), "WM_DELETE_WINDOW");
    qApp->installNativeEventFilter(this);
}

CloseRequests::~CloseRequests() {
    qApp->removeNativeEventFilter(this);
}

bool CloseRequests::nativeEventFilter(const QByteArray& eventType, void* message,
                                      qintptr* /*result*/) {
    constexpr std::uint8_t kSentBySomebody = 0x80;
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto* const event = static_cast<const xcb_client_message_event_t*>(message);
    if ((event->response_type & ~kSentBySomebody) != XCB_CLIENT_MESSAGE ||
        event->type != protocols_ || event->data.data32[0] != deleteWindow_) {
        return false;
    }
    QWidget* const window = QWidget::find(event->window);
    if (window == nullptr || !isBlockedByItsSheet(*window)) {
        return false;
    }
    // Not from within the reading of events: closing may ask, and wait for the answer.
    QMetaObject::invokeMethod(window, &QWidget::close, Qt::QueuedConnection);
    return true;
}

}  // namespace vornic
