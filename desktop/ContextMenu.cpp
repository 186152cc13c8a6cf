#include "desktop/ContextMenu.h"

#include <QMenu>
#include <utility>

namespace vornic {

void addContextMenu(QAbstractScrollArea& area, const char* objectName,
                    std::vector<ContextCommand> commands) {
    area.setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(&area, &QWidget::customContextMenuRequested, &area,
                     [&area, objectName, commands = std::move(commands)](const QPoint& at) {
                         auto* const menu = new QMenu(&area);
                         menu->setObjectName(QString::fromLatin1(objectName));
                         menu->setAttribute(Qt::WA_DeleteOnClose);
                         for (const ContextCommand& command : commands) {
                             QAction* const action = menu->addAction(command.text);
                             action->setEnabled(!command.isPossible || command.isPossible());
                             QObject::connect(action, &QAction::triggered, &area, command.run);
                         }
                         menu->popup(area.viewport()->mapToGlobal(at));
                     });
}

}  // namespace vornic
