#include "desktop/VersionSheet.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <utility>

#include "base/Exception.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "desktop/SheetThread.h"

namespace vornic {

namespace {

QLabel* makeLabel(const char* objectName, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(objectName));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

}  // namespace

VersionSheet::VersionSheet(std::string path, Actions actions, QWidget* parent)
    : QDialog(parent), path_(std::move(path)), actions_(std::move(actions)) {
    setObjectName(QStringLiteral("versionSheet"));
    setWindowTitle(tr("Convert FCPXML Version"));
    makeWidgets();
    giveRoom(*this);
    read();
}

VersionSheet::~VersionSheet() {
    *isStopped_ = true;
}

void VersionSheet::makeWidgets() {
    auto* const column = new QVBoxLayout(this);
    current_ = makeLabel("versionCurrent", this);
    lowest_ = makeLabel("versionLowest", this);
    targets_ = new QComboBox(this);
    targets_->setObjectName(QStringLiteral("versionTargets"));
    auto* const form = new QFormLayout;
    form->addRow(tr("Convert &to version:"), targets_);
    qobject_cast<QLabel*>(form->labelForField(targets_))->setTextFormat(Qt::PlainText);
    result_ = makeLabel("versionResult", this);
    QFont bold = result_->font();
    bold.setBold(true);
    result_->setFont(bold);
    losses_ = new LossList(this);
    state_ = makeLabel("versionState", this);
    spinner_ = new QProgressBar(this);
    spinner_->setObjectName(QStringLiteral("versionSpinner"));
    spinner_->setAccessibleName(tr("Busy"));
    spinner_->setRange(0, 0);
    spinner_->setTextVisible(false);
    constexpr int kSpinnerWidth = 110;
    spinner_->setMaximumWidth(kSpinnerWidth);
    convert_ = new QPushButton(tr("Con&vert"), this);
    convert_->setObjectName(QStringLiteral("versionConvertBtn"));
    cancel_ = new QPushButton(tr("Cancel"), this);
    cancel_->setObjectName(QStringLiteral("versionCancelBtn"));
    auto* const row = new QHBoxLayout;
    row->addWidget(spinner_);
    row->addWidget(state_, 1);
    row->addWidget(cancel_);
    row->addWidget(convert_);
    column->addWidget(current_);
    column->addWidget(lowest_);
    column->addLayout(form);
    column->addWidget(result_);
    column->addWidget(losses_, 1);
    column->addWidget(makeWays());
    column->addLayout(row);
    connect(targets_, &QComboBox::currentIndexChanged, this, [this] { look(); });
    connect(convert_, &QPushButton::clicked, this, [this] { convert(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

QWidget* VersionSheet::makeWays() {
    auto* const ways = new QWidget(this);
    copy_ = new QRadioButton(tr("Write a &copy beside the file"), ways);
    copy_->setObjectName(QStringLiteral("versionAsCopy"));
    copy_->setChecked(true);
    inPlace_ = new QRadioButton(tr("Convert the file &itself"), ways);
    inPlace_->setObjectName(QStringLiteral("versionInPlace"));
    inPlace_->setToolTip(toolTipOf(tr("The original goes to the Trash and can be restored.")));
    auto* const column = new QVBoxLayout(ways);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(copy_);
    column->addWidget(inPlace_);
    return ways;
}

void VersionSheet::read() {
    setState(tr("Reading the file…"));
    try {
        runForSheet<VersionSheet, FCPXMLVersions>(
            this, [path = path_] { return fcpxmlVersionsOf(path); },
            [](VersionSheet& sheet, const FCPXMLVersions& versions) {
                sheet.takeVersions(versions);
            });
    } catch (const platform::Exception&) {
        setState(tr("The file could not be read."));
    }
}

void VersionSheet::takeVersions(const FCPXMLVersions& versions) {
    if (!versions.refusal.empty()) {
        hide();
        deleteLater();
        actions_.refuse(versions.refusal);
        return;
    }
    file_ = versions.file;
    current_->setText(
        tr("The file is in version %1.").arg(toQString(withRelease(versions.current))));
    lowest_->setText(versions.lowest.empty() ? tr("Every other version leaves something out.")
                                             : tr("Lowest version that leaves nothing out: %1.")
                                                   .arg(toQString(withRelease(versions.lowest))));
    const QSignalBlocker quiet(targets_);
    int chosen = 0;
    for (const std::string& target : versions.targets) {
        if (target == versions.lowest) {
            chosen = targets_->count();
        }
        targets_->addItem(toQString(withRelease(target)), toQString(target));
    }
    targets_->setCurrentIndex(chosen);
    look();
}

void VersionSheet::look() {
    preview_ = nullptr;
    result_->clear();
    losses_->clear();
    setState(tr("Looking for what is left out…"));
    const std::string version = targets_->currentData().toString().toStdString();
    try {
        runForSheet<VersionSheet, ConversionPreview>(
            this, [file = file_, version] { return file->previewOf(version); },
            [number = ++number_](VersionSheet& sheet, ConversionPreview preview) {
                if (number == sheet.number_) {
                    sheet.takePreview(std::make_shared<ConversionPreview>(std::move(preview)));
                }
            });
    } catch (const platform::Exception&) {
        setState(tr("The file could not be looked at."));
    }
}

void VersionSheet::takePreview(std::shared_ptr<const ConversionPreview> preview) {
    preview_ = std::move(preview);
    result_->setText(oneLine(toQString(preview_->result())));
    losses_->show(preview_->list);
    setState(QString());
}

void VersionSheet::convert() {
    if (!preview_ || isConverting_) {
        return;
    }
    isConverting_ = true;
    setState(tr("Converting to version %1…").arg(toQString(preview_->version)));
    actions_.convert({.version = preview_->version,
                      .isInPlace = inPlace_->isChecked(),
                      .digest = preview_->digest,
                      .stop = StopToken([stopped = isStopped_] {
                          return stopped->load() || platform::MainThread::isShutDown();
                      })});
}

void VersionSheet::finish() {
    hide();
    deleteLater();
}

void VersionSheet::reject() {
    *isStopped_ = true;
    ++number_;
    finish();
}

void VersionSheet::setState(const QString& state) {
    state_->setText(state);
    spinner_->setVisible(!state.isEmpty());
    updateControls();
}

void VersionSheet::updateControls() {
    targets_->setEnabled(file_ != nullptr && !isConverting_);
    copy_->setEnabled(!isConverting_);
    inPlace_->setEnabled(!isConverting_);
    convert_->setEnabled(preview_ && preview_->refusal.empty() && !isConverting_);
    // What loses something is not done by a key that is pressed without looking.
    const bool isHarmless = preview_ && preview_->losses == 0;
    convert_->setDefault(isHarmless);
    convert_->setAutoDefault(isHarmless);
    cancel_->setDefault(!isHarmless);
}

}  // namespace vornic
