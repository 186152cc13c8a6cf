#include "desktop/Sheet.h"

#include <algorithm>

namespace vornic {

void beginSheet(QDialog& dialog) {
    const QWidget* const window = dialog.parentWidget();
    dialog.setWindowModality(Qt::WindowModal);
    dialog.adjustSize();
    if (window != nullptr) {
        const QRect area = window->geometry();
        const int left = area.left() + (area.width() - dialog.width()) / 2;
        const int top = area.top() + std::min(area.height() / 6, 60);
        dialog.move(left, top);
    }
    dialog.show();
    dialog.raise();
    dialog.activateWindow();
}

bool hasSheet(const QWidget& window) {
    const QList<QDialog*> dialogs =
        window.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly);
    return std::any_of(dialogs.begin(), dialogs.end(), [](const QDialog* dialog) {
        return dialog->isVisible() && dialog->windowModality() == Qt::WindowModal;
    });
}

}  // namespace vornic
