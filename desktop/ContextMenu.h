#ifndef VORNIC_DESKTOP_CONTEXT_MENU_H
#define VORNIC_DESKTOP_CONTEXT_MENU_H

#include <QAbstractScrollArea>
#include <QString>
#include <functional>
#include <vector>

namespace vornic {

/// A command for what has the focus.
struct ContextCommand {
    QString text;
    std::function<void()> run;
    /// Whether it can be used at the moment; without it, always.
    std::function<bool()> isPossible = {};
};

/// Opens a menu of these commands where the user asks for one: by the right button, the menu key,
/// or Shift+F10. @param objectName of the menu
void addContextMenu(QAbstractScrollArea& area, const char* objectName,
                    std::vector<ContextCommand> commands);

}  // namespace vornic

#endif
