#include "desktop/QtRunLoop.h"

#include <utility>

#include <QEventLoop>
#include <QTimer>

namespace vornic {

void QtRunLoop::post(std::function<void()> function) {
    QMetaObject::invokeMethod(&receiver_, std::move(function), Qt::QueuedConnection);
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
