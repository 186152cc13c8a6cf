#ifndef VORNIC_DESKTOP_MAIN_MENU_H
#define VORNIC_DESKTOP_MAIN_MENU_H

#include <QMainWindow>

namespace vornic {

class Application;

/// Gives a window the application's menus. Each command has an id, its object name.
/// @param application must outlive the window.
void makeMainMenu(QMainWindow& window, Application& application);

}  // namespace vornic

#endif
