#ifndef VORNIC_DESKTOP_DESKTOP_NOTIFICATION_H
#define VORNIC_DESKTOP_DESKTOP_NOTIFICATION_H

#include <QDBusConnection>
#include <QString>
#include <optional>

namespace vornic {

/// Has the desktop show a notification (freedesktop.org Desktop Notifications 1.2,
/// org.freedesktop.Notifications) without waiting for it. Nothing in the text is taken for markup.
/// @param bus the session's; nothing happens without one
void notifyDesktop(const std::optional<QDBusConnection>& bus, const QString& title,
                   const QString& text);

}  // namespace vornic

#endif
