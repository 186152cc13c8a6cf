#include "desktop/ProgressSheet.h"

#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>

#include "desktop/QtText.h"

namespace vornic {

namespace {

constexpr std::chrono::milliseconds kPaintInterval{33};
// The toolkit's bar counts in `int`, which a large text would overrun.
constexpr int kSteps = 1000;
constexpr int kWidth = 420;

}  // namespace

ProgressSheet::ProgressSheet(QWidget* window, std::function<State()> state,
                             std::function<void()> cancel)
    : QDialog(window),
      state_(std::move(state)),
      statusText_(new QLabel(this)),
      bar_(new QProgressBar(this)),
      cancelButton_(new QPushButton(tr("Cancel"), this)) {
    setObjectName(QStringLiteral("windowProgress"));
    setWindowTitle(tr("Repair"));
    setMinimumWidth(kWidth);
    statusText_->setObjectName(QStringLiteral("progressStatusText"));
    statusText_->setAccessibleDescription(tr("What the repair is doing"));
    statusText_->setTextFormat(Qt::PlainText);
    statusText_->setWordWrap(true);
    bar_->setObjectName(QStringLiteral("progressBar"));
    bar_->setAccessibleName(tr("Progress"));
    bar_->setTextVisible(false);
    bar_->setRange(0, 0);
    cancelButton_->setObjectName(QStringLiteral("progressCancelBtn"));
    cancelButton_->setAccessibleDescription(tr("Cancel the repair"));

    auto* const column = new QVBoxLayout(this);
    column->addWidget(statusText_);
    column->addWidget(bar_);
    auto* const row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(cancelButton_);
    column->addLayout(row);

    connect(cancelButton_, &QPushButton::clicked, this, std::move(cancel));
    connect(&clock_, &QTimer::timeout, this, [this] { paintState(); });
}

void ProgressSheet::setAnimated(bool animated) {
    if (animated) {
        clock_.start(kPaintInterval);
    } else {
        clock_.stop();
    }
}

void ProgressSheet::setIndeterminate(bool indeterminate) {
    isIndeterminate_ = indeterminate;
    bar_->setRange(0, indeterminate ? 0 : kSteps);
    bar_->setValue(0);
}

void ProgressSheet::setStatusText(std::string_view text) {
    // A path of any length stays inside the sheet.
    constexpr int kLines = 3;
    const QString whole = toQString(text);
    const int room = std::max(width(), kWidth) * kLines - kWidth / 2;
    statusText_->setText(fontMetrics().elidedText(whole, Qt::ElideMiddle, room));
    statusText_->setAccessibleName(whole);
    statusText_->setToolTip(toolTipOf(whole));
}

void ProgressSheet::paintState() {
    const auto [maximum, value] = state_();
    if (!isIndeterminate_ && maximum > 0) {
        const double share = static_cast<double>(value) / static_cast<double>(maximum);
        bar_->setValue(static_cast<int>(std::clamp(share, 0.0, 1.0) * kSteps));
    }
}

}  // namespace vornic
