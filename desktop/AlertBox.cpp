#include "desktop/AlertBox.h"

#include <QApplication>
#include <QFont>
#include <QIcon>
#include <QLabel>
#include <memory>

#include "desktop/QtText.h"
#include "desktop/Sheet.h"

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

void showAlert(QWidget* window, const QString& message, const QString& info) {
    auto box = std::make_unique<QMessageBox>(window);
    prepareAlertBox(*box);
    box->setText(wrappable(message));
    box->setInformativeText(wrappable(info));
    box->setStandardButtons(QMessageBox::Ok);
    // From here on it belongs to the screen.
    box->setAttribute(Qt::WA_DeleteOnClose);
    if (window != nullptr) {
        beginSheet(*box.release());
    } else {
        beginAlone(*box.release());
    }
}

}  // namespace vornic
