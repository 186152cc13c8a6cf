#include "desktop/AlertBox.h"

#include <QApplication>
#include <QFont>
#include <QIcon>
#include <QLabel>

namespace vornic {

void prepareAlertBox(QMessageBox& box) {
    constexpr int kIconSize = 48;
    box.setObjectName(QStringLiteral("alert"));
    box.setWindowTitle(QStringLiteral("Vornic"));
    box.setTextFormat(Qt::PlainText);
    box.setIconPixmap(QApplication::windowIcon().pixmap(kIconSize));
    if (auto* const headline = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
        QFont bold = headline->font();
        bold.setBold(true);
        headline->setFont(bold);
    }
}

}  // namespace vornic
