#ifndef VORNIC_DESKTOP_CLOSE_REQUESTS_H
#define VORNIC_DESKTOP_CLOSE_REQUESTS_H

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <cstdint>

namespace vornic {

/// Closes the windows that a sheet blocks when the window manager asks for it: the toolkit drops
/// such requests, so that the close button of a document's window would do nothing during a repair.
/// Works where windows are those of an X server (ICCCM, WM_DELETE_WINDOW), and does nothing
/// elsewhere. In use from its making to its end. Main thread only.
class CloseRequests : public QAbstractNativeEventFilter {
  public:
    CloseRequests();
    ~CloseRequests() override;
    CloseRequests(const CloseRequests&) = delete;
    CloseRequests& operator=(const CloseRequests&) = delete;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  private:
    // 0 where there is no X server.
    std::uint32_t protocols_ = 0;
    std::uint32_t deleteWindow_ = 0;
};

}  // namespace vornic

#endif
