#ifndef VORNIC_DESKTOP_ALERT_BOX_H
#define VORNIC_DESKTOP_ALERT_BOX_H

#include <QMessageBox>

#include "ui/alerts/QMAlert.h"

namespace vornic {

/// Gives a message box what all alerts have in common: the application's icon and title, a bold
/// headline, and below it the information. Nothing in the texts is taken for markup.
void prepareAlertBox(QMessageBox& box, const QString& message, const QString& info);

/// Whether the headline of an alert says that something has failed.
[[nodiscard]] bool tellsFailure(const QString& message);

/// Gives an alert the sign of an error in place of the application's, and a file's name as its
/// title.
/// @param fileName "" to leave the title as it is
void markAsFailure(QMessageBox& box, const QString& fileName);

/// Shows a message with an OK button through `QMAlert`, on a window or, without one (null),
/// free-standing. Returns at once.
void tell(AlertWindow* window, const QString& message, const QString& info);

/// Shows a failure with an OK button as a sheet on a document's window: with the sign of an error
/// and the name of the file in its title. Returns at once.
void showFailure(QWidget& window, const QString& message, const QString& info,
                 const QString& fileName);

/// Shows a message with an OK button as a sheet on a document's window, beside any other sheet on
/// it. Returns at once.
void showAlert(QWidget& window, const QString& message, const QString& info);

}  // namespace vornic

#endif
