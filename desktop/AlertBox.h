#ifndef VORNIC_DESKTOP_ALERT_BOX_H
#define VORNIC_DESKTOP_ALERT_BOX_H

#include <QMessageBox>

namespace vornic {

/// Gives a message box what all alerts have in common: the application's icon and title, a bold
/// headline, and texts that are shown as they are.
void prepareAlertBox(QMessageBox& box);

}  // namespace vornic

#endif
