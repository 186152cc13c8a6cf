#include "desktop/ConvertSheet.h"

#include <QApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "desktop/QtText.h"
#include "desktop/Sheet.h"

namespace vornic {

namespace {

constexpr int kWidth = 440;

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

ConvertSheet::ConvertSheet(QWidget* window, std::function<void()> convert,
                           std::function<void()> close)
    : QDialog(window),
      close_(std::move(close)),
      curVersion_(makeLabel(QStringLiteral("convertCurVersion"), tr("Current version"), this)),
      downgradeVersion_(makeLabel(QStringLiteral("convertDowngradeVersion"),
                                  tr("Lowest version without a loss"), this)),
      versions_(new QComboBox(this)),
      spinner_(new QProgressBar(this)),
      convertButton_(new QPushButton(tr("Con&vert"), this)) {
    setObjectName(QStringLiteral("windowConvert"));
    setWindowTitle(tr("Convert XML Interchange Version"));
    setMinimumWidth(kWidth);
    versions_->setObjectName(QStringLiteral("convertVersionPopUp"));
    versions_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    spinner_->setObjectName(QStringLiteral("convertSpinner"));
    spinner_->setAccessibleName(tr("Busy"));
    spinner_->setRange(0, 0);
    spinner_->setTextVisible(false);
    spinner_->setMaximumWidth(kWidth / 4);
    QSizePolicy policy = spinner_->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    spinner_->setSizePolicy(policy);
    convertButton_->setObjectName(QStringLiteral("convertBtn"));
    convertButton_->setAccessibleDescription(tr("Convert the file"));
    convertButton_->setDefault(true);
    auto* const closeButton = new QPushButton(tr("Close"), this);
    closeButton->setObjectName(QStringLiteral("convertCloseBtn"));
    closeButton->setAccessibleDescription(tr("Close without converting"));
    closeButton->setAutoDefault(false);

    auto* const column = new QVBoxLayout(this);
    column->addWidget(curVersion_);
    column->addWidget(downgradeVersion_);
    column->addSpacing(column->spacing());
    auto* const form = new QFormLayout;
    form->addRow(tr("Convert &to version:"), versions_);
    qobject_cast<QLabel*>(form->labelForField(versions_))->setTextFormat(Qt::PlainText);
    column->addLayout(form);
    column->addSpacing(column->spacing());
    auto* const row = new QHBoxLayout;
    row->addWidget(spinner_);
    row->addStretch();
    row->addWidget(closeButton);
    row->addWidget(convertButton_);
    column->addLayout(row);

    connect(convertButton_, &QPushButton::clicked, this, [this, convert = std::move(convert)] {
        // A short conversion is over before the second click of a double click, which would start
        // another one with what the menu shows by then.
        const int interval = QApplication::doubleClickInterval();
        if (lastClick_.isValid() && lastClick_.elapsed() < interval) {
            return;
        }
        lastClick_.start();
        setBusy(true);
        convert();
    });
    connect(closeButton, &QPushButton::clicked, this, [this] { close_(); });
    setBusy(false);
}

void ConvertSheet::beginConvertSheet() {
    setConvertCurVersion("");
    downgradeVersion_->clear();
    versions_->clear();
    setConvertInterfaceEnabled(false);
    setBusy(false);
    beginSheet(*this);
}

void ConvertSheet::endConvertSheet() {
    hide();
    // A question that went together with the dialog has had the keyboard.
    if (parentWidget() != nullptr && parentWidget()->isVisible()) {
        parentWidget()->activateWindow();
    }
}

// While it is busy the dialog takes neither a choice nor a click: a conversion that is going on is
// not started a second time, and its version stays the one that is shown.
void ConvertSheet::setBusy(bool busy) {
    isBusy_ = busy;
    spinner_->setVisible(busy);
    updateControls();
}

void ConvertSheet::updateControls() {
    versions_->setEnabled(isEnabled_ && !isBusy_);
    convertButton_->setEnabled(isEnabled_ && !isBusy_);
}

void ConvertSheet::setConvertCurVersion(std::string_view text) {
    curVersion_->setText(toQString(text));
    makeRoom();
}

void ConvertSheet::showOffer(const ConversionOffer& offer) {
    versions_->clear();
    for (const ConversionOffer::Version& version : offer.versions) {
        for (int item = 0; item < version.menuItems; ++item) {
            versions_->addItem(toQString(version.title), toQString(version.key));
        }
    }
    downgradeVersion_->setText(toQString(offer.lowestText()));
    makeRoom();
    if (!offer.versions.empty()) {
        setConvertInterfaceEnabled(true);
    }
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
