#ifndef VORNIC_DESKTOP_SHEET_H
#define VORNIC_DESKTOP_SHEET_H

#include <QDialog>
#include <QWidget>

namespace vornic {

/// Shows a dialog as a sheet: modal to its parent window alone, at the top of that window, in the
/// middle.
void beginSheet(QDialog& dialog);

/// True when a dialog that is modal to the window is on the screen.
[[nodiscard]] bool hasSheet(const QWidget& window);

}  // namespace vornic

#endif
