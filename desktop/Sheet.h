#ifndef VORNIC_DESKTOP_SHEET_H
#define VORNIC_DESKTOP_SHEET_H

#include <QDialog>
#include <QWidget>

namespace vornic {

/// Shows a dialog as a sheet: modal to its parent window alone, at the top of that window, in the
/// middle, where it stays when the window is moved.
void beginSheet(QDialog& dialog);

/// Shows a dialog as a window of its own, over the middle of the window that it belongs to; null
/// for the document's window that is in use.
void beginAlone(QDialog& dialog, const QWidget* over = nullptr);

/// The document's window that is in use, or another one of the application's; null for none.
[[nodiscard]] QWidget* windowInUse();

/// True when a dialog that is modal to the window is on the screen.
[[nodiscard]] bool hasSheet(const QWidget& window);

/// Gives a sheet with a list in it as much room as its window leaves, up to a comfortable size.
void giveRoom(QDialog& dialog);

/// Takes all sheets off a window that goes; they would stay without it.
void hideSheets(const QWidget& window);

}  // namespace vornic

#endif
