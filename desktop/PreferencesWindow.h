#ifndef VORNIC_DESKTOP_PREFERENCES_WINDOW_H
#define VORNIC_DESKTOP_PREFERENCES_WINDOW_H

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QTabWidget>
#include <functional>
#include <memory>

#include "app/CheckBoxItem.h"
#include "desktop/ShortcutKeysView.h"
#include "ui/alerts/QMAlert.h"

namespace vornic {

/// The application's preferences: general ones and the shortcut keys. Each one is stored as soon as
/// it is changed, and all are read anew whenever the window is shown.
class PreferencesWindow : public QDialog, public AlertWindow {
  public:
    /// @param toggleAdminPass the action of the check box of the administrator lock.
    explicit PreferencesWindow(std::function<void(CheckBoxItem&)> toggleAdminPass);

    /// The check box of the administrator lock (`prefsAdminPass`).
    [[nodiscard]] std::shared_ptr<CheckBoxItem> prefsAdminPass() const;

    /// Whether a file that is opened is checked and not repaired (false unless stored).
    [[nodiscard]] static bool onlyChecksOpenedFiles();

    /// Whether more than three files that are opened at once go to the batch window (false unless
    /// stored).
    [[nodiscard]] static bool opensManyInBatch();

    void setVisible(bool visible) override;

    [[nodiscard]] bool hasAttachedSheet() const override;
    void makeKeyAndOrderFront() override;

  private:
    void readPreferences();
    void storeShowsOpenPanel(bool shows);
    void storeOnlyChecks(bool onlyChecks);
    void storeManyInBatch(bool inBatch);

    QTabWidget* panes_;
    ShortcutKeysView* shortcutKeys_ = nullptr;
    QCheckBox* showOpenPanel_;
    QCheckBox* adminPass_;
    QComboBox* whenOpened_;
    QCheckBox* manyInBatch_;
};

}  // namespace vornic

#endif
