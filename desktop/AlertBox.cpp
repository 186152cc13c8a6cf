#include "desktop/AlertBox.h"

#include <QApplication>
#include <QIcon>

namespace vornic {

void prepareAlertBox(QMessageBox& box) {
    constexpr int kIconSize = 48;
    box.setObjectName(QStringLiteral("alert"));
    box.setWindowTitle(QStringLiteral("Vornic"));
    box.setTextFormat(Qt::PlainText);
    box.setIconPixmap(QApplication::windowIcon().pixmap(kIconSize));
    box.setStyleSheet(QStringLiteral("QLabel#qt_msgbox_label { font-weight: bold; }"));
}

}  // namespace vornic
