#include "desktop/PreferencesWindow.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>
#include <utility>

#include "app/AppController.h"
#include "platform/UserPreferences.h"

namespace vornic {

namespace {

class BoxItem : public CheckBoxItem {
  public:
    explicit BoxItem(QCheckBox* box) : box_(box) {}
    [[nodiscard]] std::optional<bool> state() const override { return box_->isChecked(); }
    // Only what the user does sends the action.
    void setState(bool on) override { box_->setChecked(on); }

  private:
    QCheckBox* box_;
};

bool showsOpenPanel() {
    const auto value = platform::UserPreferences().value(AppController::kShowOpenDialogPreference);
    const std::int64_t* const number = value ? value->integer() : nullptr;
    return !value || (number != nullptr && *number == 1);
}

}  // namespace

PreferencesWindow::PreferencesWindow(std::function<void(CheckBoxItem&)> toggleAdminPass)
    : showOpenPanel_(new QCheckBox(tr("Show the &open panel when the application starts"), this)),
      adminPass_(new QCheckBox(tr("Require an administrator &password at the start"), this)) {
    setObjectName(QStringLiteral("preferencesWindow"));
    setWindowTitle(tr("Preferences"));
    showOpenPanel_->setObjectName(QStringLiteral("prefsShowOpenPanel"));
    showOpenPanel_->setAccessibleName(tr("Show the open panel when the application starts"));
    adminPass_->setObjectName(QStringLiteral("prefsAdminPass"));
    adminPass_->setAccessibleName(tr("Require an administrator password at the start"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(showOpenPanel_);
    column->addWidget(adminPass_);
    column->addStretch();
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::hide);
    connect(showOpenPanel_, &QCheckBox::clicked, this, [](bool on) {
        ErrorSlot ignored;  // the box shows what is stored the next time
        platform::UserPreferences().setValue(AppController::kShowOpenDialogPreference, on ? 1 : 0,
                                             ignored);
    });
    connect(adminPass_, &QCheckBox::clicked, this,
            [this, toggle = std::move(toggleAdminPass)] { toggle(*prefsAdminPass()); });
}

std::shared_ptr<CheckBoxItem> PreferencesWindow::prefsAdminPass() const {
    return std::make_shared<BoxItem>(adminPass_);
}

void PreferencesWindow::showEvent(QShowEvent* event) {
    showOpenPanel_->setChecked(showsOpenPanel());
    QDialog::showEvent(event);
}

}  // namespace vornic
