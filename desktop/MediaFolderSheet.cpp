#include "desktop/MediaFolderSheet.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "desktop/QtText.h"

namespace vornic {

namespace {

constexpr int kWidth = 380;
constexpr int kShortestField = 12;

void makePlain(QFormLayout& form, QWidget* field) {
    qobject_cast<QLabel*>(form.labelForField(field))->setTextFormat(Qt::PlainText);
}

}  // namespace

MediaFolderSheet::MediaFolderSheet(const std::vector<std::string>& folders, Change change,
                                   QWidget* parent)
    : QDialog(parent), old_(new QComboBox(this)), new_(new QLineEdit(this)) {
    setObjectName(QStringLiteral("mediaFolderSheet"));
    setWindowTitle(tr("Change Folder"));
    setMinimumWidth(kWidth);
    old_->setObjectName(QStringLiteral("oldFolder"));
    old_->setEditable(true);
    old_->setInsertPolicy(QComboBox::NoInsert);
    // A long path widens neither the sheet nor the window.
    old_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    old_->setMinimumContentsLength(kShortestField);
    for (const std::string& folder : folders) {
        old_->addItem(toQString(folder));
    }
    new_->setObjectName(QStringLiteral("newFolder"));
    auto* const choose = new QPushButton(tr("&Choose…"), this);
    choose->setObjectName(QStringLiteral("chooseFolderBtn"));
    choose->setAutoDefault(false);
    auto* const newRow = new QWidget(this);
    auto* const row = new QHBoxLayout(newRow);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(new_, 1);
    row->addWidget(choose);
    newRow->setFocusProxy(new_);
    auto* const text = new QLabel(
        tr("All media in the old folder, and in the folders in it, are looked for in the new one."),
        this);
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    auto* const form = new QFormLayout;
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("&Old folder:"), old_);
    form->addRow(tr("&New folder:"), newRow);
    makePlain(*form, old_);
    makePlain(*form, newRow);
    new_->setAccessibleName(tr("New folder:"));
    auto* const buttons = new QDialogButtonBox(this);
    QPushButton* const show =
        buttons->addButton(tr("&Show Changes…"), QDialogButtonBox::AcceptRole);
    show->setObjectName(QStringLiteral("showFolderChangeBtn"));
    show->setDefault(true);
    buttons->addButton(QDialogButtonBox::Cancel);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(text);
    column->addLayout(form);
    column->addWidget(buttons);
    connect(choose, &QPushButton::clicked, this, [this] { browse(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this, change = std::move(change)] {
        const std::string from = old_->currentText().toStdString();
        const std::string to = new_->text().toStdString();
        accept();
        change(from, to);
    });
    new_->setFocus();
}

void MediaFolderSheet::browse() {
    auto* const panel = new QFileDialog(this, tr("New Folder of the Media"), new_->text());
    panel->setObjectName(QStringLiteral("newFolderPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    connect(panel, &QFileDialog::fileSelected, new_, &QLineEdit::setText);
    panel->open();
}

}  // namespace vornic
