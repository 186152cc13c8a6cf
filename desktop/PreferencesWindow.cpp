#include "desktop/PreferencesWindow.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "app/AppController.h"
#include "desktop/AlertBox.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "foundation/places/PreferenceValues.h"
#include "platform/settings/UserPreferences.h"
#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"

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

// 1: a file that is opened is checked; anything else: it is repaired.
constexpr const char* kOnlyCheckKey = "onlyCheckOpenedFiles";
// 1: more than three files that are opened at once go to the batch window.
constexpr const char* kBatchKey = "openManyFilesInBatch";

}  // namespace

PreferencesWindow::PreferencesWindow(std::function<void(CheckBoxItem&)> toggleAdminPass)
    : panes_(new QTabWidget(this)),
      showOpenPanel_(new QCheckBox(tr("Show the &open panel when the application starts"), this)),
      adminPass_(new QCheckBox(tr("Require an administrator &password at the start"), this)),
      whenOpened_(new QComboBox(this)),
      manyInBatch_(new QCheckBox(tr("Open &more than three files in the batch window"), this)) {
    setObjectName(QStringLiteral("preferencesWindow"));
    setWindowTitle(tr("Preferences"));
    showOpenPanel_->setObjectName(QStringLiteral("prefsShowOpenPanel"));
    adminPass_->setObjectName(QStringLiteral("prefsAdminPass"));
    auto* const general = new QWidget(panes_);
    auto* const boxes = new QVBoxLayout(general);
    boxes->addWidget(showOpenPanel_);
    boxes->addWidget(adminPass_);
    auto* const opening = new QLabel(tr("&When a file is opened:"), general);
    opening->setTextFormat(Qt::PlainText);
    opening->setBuddy(whenOpened_);
    whenOpened_->setObjectName(QStringLiteral("prefsWhenOpened"));
    whenOpened_->addItems({tr("Repair it"), tr("Check it only")});
    auto* const openingRow = new QHBoxLayout();
    openingRow->addWidget(opening);
    openingRow->addWidget(whenOpened_);
    openingRow->addStretch();
    boxes->addLayout(openingRow);
    boxes->addWidget(manyInBatch_);
    boxes->addStretch();
    panes_->setObjectName(QStringLiteral("preferencesPanes"));
    panes_->setAccessibleName(tr("Preferences"));
    panes_->addTab(general, tr("&General"));
    auto* const column = new QVBoxLayout(this);
    column->addWidget(panes_, 1);
    connect(showOpenPanel_, &QCheckBox::clicked, this,
            [this](bool on) { storeShowsOpenPanel(on); });
    connect(whenOpened_, &QComboBox::activated, this,
            [this](int index) { storeOnlyChecks(index == 1); });
    manyInBatch_->setObjectName(QStringLiteral("prefsManyInBatch"));
    connect(manyInBatch_, &QCheckBox::clicked, this, [this](bool on) { storeManyInBatch(on); });
    connect(adminPass_, &QCheckBox::clicked, this,
            [this, toggle = std::move(toggleAdminPass)] { toggle(*prefsAdminPass()); });
}

void PreferencesWindow::storeShowsOpenPanel(bool shows) {
    constexpr const char* kKey = AppController::kShowOpenDialogPreference;
    ErrorSlot error;
    if (!platform::UserPreferences().setValue(kKey, shows ? 1 : 0, error)) {
        logUnsavedPreference(kKey, error);
        showOpenPanel_->setChecked(showsOpenPanel());
        tell(this, tr("The preference could not be saved."),
             error ? toQString(error->localizedDescription()) : QString());
    }
}

bool PreferencesWindow::onlyChecksOpenedFiles() {
    return isNumberEqualTo(platform::UserPreferences().value(kOnlyCheckKey), 1);
}

void PreferencesWindow::storeOnlyChecks(bool onlyChecks) {
    ErrorSlot error;
    if (!platform::UserPreferences().setValue(kOnlyCheckKey, onlyChecks ? 1 : 0, error)) {
        logUnsavedPreference(kOnlyCheckKey, error);
        whenOpened_->setCurrentIndex(onlyChecksOpenedFiles() ? 1 : 0);
        tell(this, tr("The preference could not be saved."),
             error ? toQString(error->localizedDescription()) : QString());
    }
}

bool PreferencesWindow::opensManyInBatch() {
    return isNumberEqualTo(platform::UserPreferences().value(kBatchKey), 1);
}

void PreferencesWindow::storeManyInBatch(bool inBatch) {
    ErrorSlot error;
    if (!platform::UserPreferences().setValue(kBatchKey, inBatch ? 1 : 0, error)) {
        logUnsavedPreference(kBatchKey, error);
        manyInBatch_->setChecked(opensManyInBatch());
        tell(this, tr("The preference could not be saved."),
             error ? toQString(error->localizedDescription()) : QString());
    }
}

std::shared_ptr<CheckBoxItem> PreferencesWindow::prefsAdminPass() const {
    return std::make_shared<BoxItem>(adminPass_);
}

void PreferencesWindow::setVisible(bool visible) {
    if (visible && !isVisible()) {
        readPreferences();
    }
    QDialog::setVisible(visible);
}

bool PreferencesWindow::hasAttachedSheet() const {
    return hasSheet(*this);
}

void PreferencesWindow::makeKeyAndOrderFront() {
    show();
    raise();
    activateWindow();
}

void PreferencesWindow::readPreferences() {
    showOpenPanel_->setChecked(showsOpenPanel());
    whenOpened_->setCurrentIndex(onlyChecksOpenedFiles() ? 1 : 0);
    manyInBatch_->setChecked(opensManyInBatch());
    if (shortcutKeys_ != nullptr) {
        QMShortcutKeyTableDelegate::sharedController().populateKeyData();
        return;
    }
    // Made when it is wanted, so that it costs the start of the application nothing; the button
    // comes last in the order of the keyboard.
    shortcutKeys_ = new ShortcutKeysView(panes_);
    panes_->addTab(shortcutKeys_, tr("&Shortcuts"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    layout()->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::hide);
}

}  // namespace vornic
