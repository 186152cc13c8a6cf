#include "desktop/BatchSheets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "app/window/ConversionPreview.h"
#include "app/window/HeaderText.h"
#include "desktop/FileIcons.h"
#include "desktop/QtText.h"
#include "media/MediaPath.h"

namespace vornic {

namespace {

constexpr int kWidth = 420;

QString tr(const char* text) {
    return QCoreApplication::translate("BatchSheets", text);
}

QLabel* makeText(const QString& text, QWidget* parent) {
    auto* const label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QDialog* makeSheet(const char* objectName, const QString& title, QWidget* parent) {
    auto* const sheet = new QDialog(parent);
    sheet->setObjectName(QString::fromLatin1(objectName));
    sheet->setWindowTitle(title);
    sheet->setMinimumWidth(kWidth);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    return sheet;
}

void addRow(QFormLayout& form, const QString& title, QWidget* field) {
    form.addRow(title, field);
    qobject_cast<QLabel*>(form.labelForField(field))->setTextFormat(Qt::PlainText);
}

QPushButton* addButtons(QDialog& sheet, QVBoxLayout& column, const QString& title) {
    auto* const buttons = new QDialogButtonBox(&sheet);
    QPushButton* const begin = buttons->addButton(title, QDialogButtonBox::AcceptRole);
    begin->setObjectName(QStringLiteral("batchBeginBtn"));
    begin->setAutoDefault(false);
    buttons->addButton(QDialogButtonBox::Cancel)->setDefault(true);
    column.addWidget(buttons);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &sheet, &QDialog::reject);
    return begin;
}

QCheckBox* makeInPlaceBox(QWidget* parent) {
    auto* const box =
        new QCheckBox(tr("In &place of the files, whose originals go to the Trash"), parent);
    box->setObjectName(QStringLiteral("batchInPlace"));
    return box;
}

// A field for a folder, with a button that asks for it.
QLineEdit* makeFolderField(const char* objectName, const QString& name, QWidget* row) {
    auto* const field = new QLineEdit(row);
    field->setObjectName(QString::fromLatin1(objectName));
    field->setAccessibleName(name);
    auto* const choose = new QPushButton(tr("Choose…"), row);
    choose->setAccessibleName(tr("Choose…"));
    choose->setAccessibleDescription(name);
    choose->setAutoDefault(false);
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field, 1);
    layout->addWidget(choose);
    row->setFocusProxy(field);
    QObject::connect(choose, &QPushButton::clicked, row, [row, field, name] {
        auto* const panel = new QFileDialog(row, name, field->text());
        panel->setAttribute(Qt::WA_DeleteOnClose);
        panel->setFileMode(QFileDialog::Directory);
        panel->setOption(QFileDialog::ShowDirsOnly);
        FileIcons::useIn(*panel);
        QObject::connect(panel, &QFileDialog::fileSelected, field, &QLineEdit::setText);
        panel->open();
    });
    return field;
}

QString filesText(std::size_t files) {
    return toQString(counted(files, "file", "files"));
}

}  // namespace

QDialog* makeBatchConvertSheet(std::size_t files, BatchStart start, QWidget* parent) {
    QDialog* const sheet = makeSheet("batchConvertSheet", tr("Convert"), parent);
    auto* const versions = new QComboBox(sheet);
    versions->setObjectName(QStringLiteral("batchVersion"));
    for (const auto& [kind, name] :
         {std::pair(FileKind::fcpxml, "FCPXML"), std::pair(FileKind::xmeml, "XMEML")}) {
        for (const VersionOfKind& version : versionsOf(kind)) {
            versions->addItem(
                QLatin1String(name) + u' ' + toQString(version.title),
                QVariant::fromValue(QStringList{QLatin1String(name), toQString(version.version)}));
        }
    }
    auto* const strips =
        new QCheckBox(tr("&Leave out of XMEML what the version has no place for"), sheet);
    strips->setObjectName(QStringLiteral("batchStrips"));
    QCheckBox* const inPlace = makeInPlaceBox(sheet);
    auto* const column = new QVBoxLayout(sheet);
    column->addWidget(makeText(tr("%1 will be converted. A file of the other format is left as it "
                                  "is; what each has lost is in its report.")
                                   .arg(filesText(files)),
                               sheet));
    auto* const form = new QFormLayout;
    addRow(*form, tr("&Version:"), versions);
    column->addLayout(form);
    column->addWidget(strips);
    column->addWidget(inPlace);
    const QPushButton* const begin = addButtons(*sheet, *column, tr("&Convert"));
    QObject::connect(begin, &QPushButton::clicked, sheet,
                     [sheet, versions, strips, inPlace, start = std::move(start)] {
                         BatchRequest request;
                         request.action = BatchAction::convert;
                         request.version =
                             versions->currentData().toStringList().at(1).toStdString();
                         request.strips = strips->isChecked();
                         request.isInPlace = inPlace->isChecked();
                         sheet->accept();
                         start(std::move(request));
                     });
    return sheet;
}

QDialog* makeBatchRelinkSheet(std::size_t files, BatchStart start, QWidget* parent) {
    QDialog* const sheet = makeSheet("batchRelinkSheet", tr("Relink"), parent);
    auto* const searchRow = new QWidget(sheet);
    auto* const newRow = new QWidget(sheet);
    QLineEdit* const search = makeFolderField("batchSearch", tr("Search in"), searchRow);
    auto* const oldFolder = new QLineEdit(sheet);
    oldFolder->setObjectName(QStringLiteral("batchOldFolder"));
    QLineEdit* const newFolder = makeFolderField("batchNewFolder", tr("New folder"), newRow);
    QCheckBox* const inPlace = makeInPlaceBox(sheet);
    inPlace->setChecked(true);
    QLabel* const complaint = makeText(QString(), sheet);
    complaint->setObjectName(QStringLiteral("batchRelinkLabel"));
    auto* const column = new QVBoxLayout(sheet);
    column->addWidget(makeText(
        tr("The media of %1 that are not where the files say are searched for in a folder, "
           "or a folder that has moved is given its new place.")
            .arg(filesText(files)),
        sheet));
    auto* const form = new QFormLayout;
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    addRow(*form, tr("&Search in:"), searchRow);
    addRow(*form, tr("&Old folder:"), oldFolder);
    addRow(*form, tr("&New folder:"), newRow);
    column->addLayout(form);
    column->addWidget(inPlace);
    column->addWidget(complaint);
    complaint->hide();
    const QPushButton* const begin = addButtons(*sheet, *column, tr("&Relink"));
    QObject::connect(begin, &QPushButton::clicked, sheet, [=] {
        BatchRequest request;
        request.action = BatchAction::relink;
        request.isInPlace = inPlace->isChecked();
        const std::string folder = pathFromQString(search->text());
        const bool isMoved = !oldFolder->text().isEmpty() || !newFolder->text().isEmpty();
        const bool isFolder = folder.starts_with('/');
        if (isFolder) {
            request.relink.folders = {folder};
        }
        const bool isMapped =
            isMoved && request.relink.map.add(readTypedPath(oldFolder->text().toStdString()),
                                              readTypedPath(newFolder->text().toStdString()));
        if ((isMoved && !isMapped) || (!folder.empty() && !isFolder) || (!isMoved && !isFolder)) {
            complaint->setText(
                tr("A whole path is needed to search in, or two of them for a folder that has "
                   "moved, such as /Volumes/Old and /Volumes/New."));
            complaint->show();
            return;
        }
        sheet->accept();
        start(std::move(request));
    });
    search->setFocus();
    return sheet;
}

}  // namespace vornic
