#include "desktop/ConvertSheet.h"

#include <QApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <memory>
#include <utility>

#include "base/Exception.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "desktop/SheetThread.h"

namespace vornic {

namespace {

constexpr int kWidth = 440;

// The bytes of a file, or why there are none.
struct ReadBytes {
    std::shared_ptr<const ConvertibleBytes> file;
    ConversionPreview preview;
    std::string refusal;
};

QLabel* makeLabel(const QString& objectName, const QString& description, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setObjectName(objectName);
    label->setAccessibleDescription(description);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

}  // namespace

ConvertSheet::ConvertSheet(std::string path, QWidget* window, std::function<void()> convert,
                           std::function<void()> close)
    : QDialog(window),
      path_(std::move(path)),
      close_(std::move(close)),
      curVersion_(makeLabel(QStringLiteral("convertCurVersion"), tr("Current version"), this)),
      downgradeVersion_(makeLabel(QStringLiteral("convertDowngradeVersion"),
                                  tr("Lowest version without a loss"), this)),
      versions_(new QComboBox(this)),
      loss_(makeLabel(QStringLiteral("convertLoss"), tr("What the version leaves out"), this)),
      losses_(new LossList(this)),
      keepsOriginal_(new QCheckBox(tr("&Keep the original in the Trash"), this)),
      stateLabel_(makeLabel(QStringLiteral("convertState"), tr("State of the conversion"), this)),
      spinner_(new QProgressBar(this)),
      convertButton_(new QPushButton(tr("Con&vert"), this)) {
    setObjectName(QStringLiteral("windowConvert"));
    setWindowTitle(tr("Convert XML Interchange Version"));
    setMinimumWidth(kWidth);
    makeWidgets(std::move(convert));
    setBusy(false);
}

void ConvertSheet::makeWidgets(std::function<void()> convert) {
    versions_->setObjectName(QStringLiteral("convertVersionPopUp"));
    versions_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    QFont bold = loss_->font();
    bold.setBold(true);
    loss_->setFont(bold);
    keepsOriginal_->setObjectName(QStringLiteral("convertKeepOriginal"));
    auto* const column = new QVBoxLayout(this);
    column->addWidget(curVersion_);
    column->addWidget(downgradeVersion_);
    column->addSpacing(column->spacing());
    auto* const form = new QFormLayout;
    form->addRow(tr("Convert &to version:"), versions_);
    qobject_cast<QLabel*>(form->labelForField(versions_))->setTextFormat(Qt::PlainText);
    column->addLayout(form);
    column->addWidget(loss_);
    column->addWidget(losses_, 1);
    column->addWidget(keepsOriginal_);
    column->addWidget(makeFoot(std::move(convert)));
    connect(versions_, &QComboBox::currentIndexChanged, this, [this] { look(); });
}

QWidget* ConvertSheet::makeFoot(std::function<void()> convert) {
    auto* const foot = new QWidget(this);
    spinner_->setObjectName(QStringLiteral("convertSpinner"));
    spinner_->setAccessibleName(tr("Busy"));
    spinner_->setRange(0, 0);
    spinner_->setTextVisible(false);
    spinner_->setMaximumWidth(kWidth / 4);
    convertButton_->setObjectName(QStringLiteral("convertBtn"));
    convertButton_->setAccessibleDescription(tr("Convert the file"));
    convertButton_->setDefault(true);
    auto* const closeButton = new QPushButton(tr("Close"), foot);
    closeButton->setObjectName(QStringLiteral("convertCloseBtn"));
    closeButton->setAccessibleDescription(tr("Close without converting"));
    closeButton->setAutoDefault(false);
    auto* const row = new QHBoxLayout(foot);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(spinner_);
    row->addWidget(stateLabel_, 1);
    row->addWidget(closeButton);
    row->addWidget(convertButton_);
    connect(convertButton_, &QPushButton::clicked, this, [this, convert = std::move(convert)] {
        // A short conversion is over before the second click of a double click, which would start
        // another one with what the menu shows by then.
        const int interval = QApplication::doubleClickInterval();
        if (lastClick_.isValid() && lastClick_.elapsed() < interval) {
            return;
        }
        lastClick_.start();
        convertResult_.clear();
        setBusy(true);
        convert();
    });
    connect(closeButton, &QPushButton::clicked, this, [this] { close_(); });
    return foot;
}

void ConvertSheet::beginConvertSheet() {
    giveRoom(*this);
    setConvertCurVersion("");
    downgradeVersion_->clear();
    versions_->clear();
    offer_ = {};
    lookAgain();
    keepsOriginal_->setChecked(false);
    convertResult_.clear();
    setConvertInterfaceEnabled(false);
    setBusy(false);
    beginSheet(*this);
}

void ConvertSheet::endConvertSheet() {
    hide();
    file_.reset();
    ++number_;
    // A question that went together with the dialog has had the keyboard.
    if (parentWidget() != nullptr && parentWidget()->isVisible()) {
        parentWidget()->activateWindow();
    }
}

// While it is busy the dialog takes neither a choice nor a click: a conversion that is going on is
// not started a second time, and its version stays the one that is shown.
void ConvertSheet::setBusy(bool busy) {
    isBusy_ = busy;
    if (!busy) {
        state_.clear();
    }
    spinner_->setVisible(busy);
    writeState();
    updateControls();
}

void ConvertSheet::setConvertState(std::string_view text) {
    state_ = toQString(text);
    writeState();
}

void ConvertSheet::showConvertResult(std::string_view text) {
    convertResult_ = toQString(text);
    writeState();
}

void ConvertSheet::writeState() {
    stateLabel_->setText(wrappable(oneLine(isBusy_ ? state_ : convertResult_)));
    makeRoom();
}

void ConvertSheet::updateControls() {
    versions_->setEnabled(isEnabled_ && !isBusy_);
    convertButton_->setEnabled(isEnabled_ && !isBusy_);
    keepsOriginal_->setEnabled(!isBusy_);
}

void ConvertSheet::setConvertCurVersion(std::string_view text) {
    curVersion_->setText(toQString(text));
    makeRoom();
}

void ConvertSheet::showOffer(const ConversionOffer& offer) {
    offer_ = offer;
    {
        const QSignalBlocker quiet(versions_);
        versions_->clear();
        for (const ConversionOffer::Version& version : offer.versions) {
            for (int item = 0; item < version.menuItems; ++item) {
                versions_->addItem(toQString(version.title), toQString(version.key));
            }
        }
    }
    downgradeVersion_->setText(toQString(offer.lowestText()));
    makeRoom();
    if (!offer.versions.empty()) {
        setConvertInterfaceEnabled(true);
    }
    if (losses_->hasFocus()) {
        // It had it for as long as there was no menu.
        versions_->setFocus();
    }
    lookAgain();
}

void ConvertSheet::lookAgain() {
    file_.reset();
    look();
}

void ConvertSheet::look() {
    const std::optional<std::string> version = selectedConvertVersionKey();
    ++number_;
    preview_ = nullptr;
    losses_->clear();
    loss_->clear();
    if (!version) {
        return;
    }
    loss_->setText(tr("Looking for what is left out…"));
    const auto work = [file = file_, path = path_, offer = offer_, version = *version] {
        ReadBytes read{.file = file, .preview = {}, .refusal = {}};
        ErrorSlot error;
        if (!read.file) {
            read.file = ConvertibleBytes::read(path, error);
        }
        if (read.file) {
            read.preview = read.file->previewOf(offer, version);
        } else {
            read.refusal = error->localizedDescription();
        }
        return read;
    };
    try {
        runForSheet<ConvertSheet, ReadBytes>(
            this, work, [number = number_](ConvertSheet& sheet, ReadBytes read) {
                if (number != sheet.number_) {
                    return;
                }
                sheet.file_ = std::move(read.file);
                if (!read.refusal.empty()) {
                    read.preview.refusal = std::move(read.refusal);
                }
                sheet.takePreview(std::make_shared<ConversionPreview>(std::move(read.preview)));
            });
    } catch (const platform::Exception&) {
        loss_->setText(tr("What is left out could not be looked for."));
    }
}

void ConvertSheet::takePreview(std::shared_ptr<const ConversionPreview> preview) {
    preview_ = std::move(preview);
    const QString result = oneLine(toQString(preview_->result()));
    loss_->setText(preview_->refusal.empty()
                       ? result
                       : tr("What is left out cannot be listed: %1").arg(result));
    losses_->show(preview_->list);
    makeRoom();
}

// A text that wraps to more lines than before makes no window higher by itself.
void ConvertSheet::makeRoom() {
    resize(width(), std::max(height(), heightForWidth(width())));
}

std::optional<std::string> ConvertSheet::selectedConvertVersionKey() const {
    const QVariant key = versions_->currentData();
    return key.isValid() ? std::optional(key.toString().toStdString()) : std::nullopt;
}

void ConvertSheet::setConvertInterfaceEnabled(bool enabled) {
    isEnabled_ = enabled;
    updateControls();
}

}  // namespace vornic
