#include "desktop/AlertBox.h"

#include <QApplication>
#include <QFont>
#include <QIcon>
#include <QLabel>
#include <memory>

#include "desktop/QtText.h"
#include "desktop/SeverityIcon.h"
#include "desktop/Sheet.h"

namespace vornic {

namespace {

constexpr int kIconSize = 48;

}  // namespace

void prepareAlertBox(QMessageBox& box, const QString& message, const QString& info) {
    box.setObjectName(QStringLiteral("alert"));
    box.setWindowTitle(QStringLiteral("Vornic"));
    box.setTextFormat(Qt::PlainText);
    box.setText(wrappable(message));
    box.setInformativeText(wrappable(info));
    // The box passes its text format on to the headline alone.
    if (auto* const below = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
        below->setTextFormat(Qt::PlainText);
    }
    box.setIconPixmap(QApplication::windowIcon().pixmap(kIconSize));
    if (auto* const headline = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
        QFont bold = headline->font();
        bold.setBold(true);
        headline->setFont(bold);
    }
}

bool tellsFailure(const QString& message) {
    return message.startsWith(QLatin1String("Unable")) ||
           message.startsWith(QLatin1String("Error")) ||
           message == QLatin1String("Version not set") ||
           message.startsWith(QLatin1String("No editor")) ||
           message.contains(QLatin1String(" could not be ")) ||
           message.contains(QLatin1String(" cannot be "));
}

void markAsFailure(QMessageBox& box, const QString& fileName) {
    if (!fileName.isEmpty()) {
        box.setWindowTitle(fileName);
    }
    box.setIconPixmap(severityIcon(Severity::error, box.palette())
                          .pixmap(QSize(kIconSize, kIconSize), box.devicePixelRatio()));
}

void tell(AlertWindow* window, const QString& message, const QString& info) {
    // Asked for once and at once, the window need not be owned; the toolkit takes the sheets on it
    // along.
    const QMAlert::Window parent(std::shared_ptr<void>(), window);
    QMAlert::alertSheetWithMessageText(message.toStdString(), std::nullopt, std::nullopt,
                                       std::nullopt, info.toStdString(), parent, nullptr,
                                       std::nullopt, false, nullptr);
}

namespace {

std::unique_ptr<QMessageBox> makeSheet(QWidget& window, const QString& message,
                                       const QString& info) {
    auto box = std::make_unique<QMessageBox>(&window);
    prepareAlertBox(*box, message, info);
    box->setStandardButtons(QMessageBox::Ok);
    // Once it is shown it belongs to the screen.
    box->setAttribute(Qt::WA_DeleteOnClose);
    return box;
}

}  // namespace

void showAlert(QWidget& window, const QString& message, const QString& info) {
    beginSheet(*makeSheet(window, message, info).release());
}

void showFailure(QWidget& window, const QString& message, const QString& info,
                 const QString& fileName) {
    std::unique_ptr<QMessageBox> box = makeSheet(window, message, info);
    markAsFailure(*box, fileName);
    beginSheet(*box.release());
}

}  // namespace vornic
