#include "desktop/QtRunLoop.h"

#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <utility>

namespace vornic {

void QtRunLoop::post(std::function<void()> function) {
    QMetaObject::invokeMethod(&receiver_, std::move(function), Qt::QueuedConnection);
}

void QtRunLoop::postAfter(std::chrono::milliseconds delay, std::function<void()> function) {
    // A timer belongs to the thread that starts it.
    post([this, delay, function = std::move(function)] {
        QTimer::singleShot(std::max(delay, std::chrono::milliseconds::zero()), &receiver_,
                           function);
    });
}

bool QtRunLoop::dispatchOne(std::chrono::milliseconds limit) {
    QEventLoop loop;
    if (loop.processEvents(QEventLoop::AllEvents)) {
        return true;
    }
    if (limit <= std::chrono::milliseconds::zero()) {
        return false;
    }
    bool isLate = false;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, [&isLate] { isLate = true; });
    timer.start(limit);
    loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return !isLate;
}

}  // namespace vornic
