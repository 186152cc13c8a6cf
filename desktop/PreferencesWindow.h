#ifndef VORNIC_DESKTOP_PREFERENCES_WINDOW_H
#define VORNIC_DESKTOP_PREFERENCES_WINDOW_H

#include <QCheckBox>
#include <QDialog>
#include <functional>
#include <memory>

#include "app/CheckBoxItem.h"

namespace vornic {

/// The application's preferences. Each one is stored as soon as it is changed.
class PreferencesWindow : public QDialog {
  public:
    /// @param toggleAdminPass the action of the check box of the administrator lock.
    explicit PreferencesWindow(std::function<void(CheckBoxItem&)> toggleAdminPass);

    /// The check box of the administrator lock (`prefsAdminPass`).
    [[nodiscard]] std::shared_ptr<CheckBoxItem> prefsAdminPass() const;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    QCheckBox* showOpenPanel_;
    QCheckBox* adminPass_;
};

}  // namespace vornic

#endif
