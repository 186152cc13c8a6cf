#ifndef VORNIC_DESKTOP_ALERT_BOX_H
#define VORNIC_DESKTOP_ALERT_BOX_H

#include <QMessageBox>

namespace vornic {

/// Gives a message box what all alerts have in common: the application's icon and title, a bold
/// headline, and texts that are shown as they are.
void prepareAlertBox(QMessageBox& box);

/// Shows a message with an OK button, as a sheet on a window or, without one (null), as a window of
/// its own. Returns at once.
void showAlert(QWidget* window, const QString& message, const QString& info);

}  // namespace vornic

#endif
