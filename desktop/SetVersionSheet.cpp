#include "desktop/SetVersionSheet.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "app/window/ConversionPreview.h"
#include "desktop/QtText.h"

namespace vornic {

SetVersionSheet::SetVersionSheet(FileKind kind, std::function<void(const std::string&)> set,
                                 QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("setVersionSheet"));
    setWindowTitle(tr("Set Version"));
    constexpr int kWidth = 380;
    setMinimumWidth(kWidth);
    auto* const text = new QLabel(
        tr("Only the number is written; nothing else of the file changes. The original goes to the "
           "Trash and can be restored."),
        this);
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    auto* const menu = new QComboBox(this);
    menu->setObjectName(QStringLiteral("versionToSet"));
    for (const VersionOfKind& version : versionsOf(kind)) {
        menu->addItem(toQString(version.title), toQString(version.version));
    }
    auto* const form = new QFormLayout;
    form->addRow(tr("&Version:"), menu);
    qobject_cast<QLabel*>(form->labelForField(menu))->setTextFormat(Qt::PlainText);
    auto* const buttons = new QDialogButtonBox(this);
    QPushButton* const setButton = buttons->addButton(tr("&Set"), QDialogButtonBox::AcceptRole);
    setButton->setObjectName(QStringLiteral("setVersionNowBtn"));
    setButton->setDefault(true);
    buttons->addButton(QDialogButtonBox::Cancel);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(text);
    column->addLayout(form);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this, menu, set = std::move(set)] {
        const std::string version = menu->currentData().toString().toStdString();
        accept();
        set(version);
    });
}

}  // namespace vornic
