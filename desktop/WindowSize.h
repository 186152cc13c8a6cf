#ifndef VORNIC_DESKTOP_WINDOW_SIZE_H
#define VORNIC_DESKTOP_WINDOW_SIZE_H

#include <QSize>
#include <QWidget>

namespace vornic {

/// What a window manager puts around a window, at most.
inline constexpr QSize kWindowFrame(8, 32);

/// Gives a window a size, or what the screen has room for with a frame around.
void fitOnScreen(QWidget& window, QSize size);

/// Gives a window the size that the last one with its object name had, or the given one, as far as
/// the screen has room.
void restoreWindowSize(QWidget& window, QSize otherwise);
/// Remembers a window's size for the next one with its object name.
void saveWindowSize(const QWidget& window);

}  // namespace vornic

#endif
