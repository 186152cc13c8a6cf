#ifndef VORNIC_DESKTOP_SHEET_H
#define VORNIC_DESKTOP_SHEET_H

#include <QDialog>
#include <QWidget>

namespace vornic {

/// Shows a dialog as a sheet: modal to its parent window alone, at the top of that window, in the
/// middle, where it stays when the window is moved.
void beginSheet(QDialog& dialog);

/// Shows a dialog as a window of its own, over the middle of the document's window that is in use.
void beginAlone(QDialog& dialog);

/// True when a dialog that is modal to the window is on the screen.
[[nodiscard]] bool hasSheet(const QWidget& window);

/// Takes all sheets off a window that goes; they would stay without it.
void hideSheets(const QWidget& window);

}  // namespace vornic

#endif
