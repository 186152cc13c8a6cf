#ifndef VORNIC_DESKTOP_SETTINGS_PORTAL_H
#define VORNIC_DESKTOP_SETTINGS_PORTAL_H

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <functional>
#include <optional>

#include "desktop/ColorScheme.h"

namespace vornic {

/// The colour scheme that the user chose for the whole desktop, asked of the settings service that
/// desktops offer to programs (the freedesktop settings portal). Nothing is waited for. Main thread
/// only.
class SettingsPortal : public QObject {
    Q_OBJECT

  public:
    /// Nothing: the user has no preference.
    using Listener = std::function<void(std::optional<ColorScheme>)>;

    /// Asks for the scheme.
    /// @param listener told what the scheme is, once that is known, and whenever it changes, by the
    ///     event loop; never where there is no such service or bus
    SettingsPortal(const QDBusConnection& bus, Listener listener);

    /// The user's bus. Nothing, without a try to reach it, where there is none.
    [[nodiscard]] static std::optional<QDBusConnection> sessionBus();

  private:
    // A slot by name, which the bus wants.
    Q_SLOT void settingChanged(const QDBusMessage& news);
    void tell(const QVariant& value);

    Listener listener_;
};

}  // namespace vornic

#endif
