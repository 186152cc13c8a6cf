#ifndef VORNIC_DESKTOP_CONVERT_SHEET_H
#define VORNIC_DESKTOP_CONVERT_SHEET_H

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vornic {

/// The conversion dialog of a document (`windowConvert`): the file's version, the lowest version
/// without a loss, a menu of versions, and the convert button.
class ConvertSheet : public QDialog {
  public:
    ConvertSheet(QWidget* window, std::function<void()> convert, std::function<void()> close);

    /// Empties the labels and the menu and disables both controls, for an analysis that begins.
    void clear();
    void setSpinning(bool spinning);
    void setCurVersion(std::string_view text);
    void setDowngradeVersion(std::string_view text);
    void removeAllVersions() { versions_->clear(); }
    void addVersion(std::string_view title);
    void setLastVersionKey(std::string_view key);
    [[nodiscard]] std::optional<std::string> selectedVersionKey() const;
    void setMenuEnabled(bool enabled) { versions_->setEnabled(enabled); }
    void setButtonEnabled(bool enabled);

    void reject() override { close_(); }

  private:
    void updateButton();
    void makeRoom();

    std::function<void()> close_;
    QLabel* curVersion_;
    QLabel* downgradeVersion_;
    QComboBox* versions_;
    QProgressBar* spinner_;
    QPushButton* convertButton_;
    bool isButtonEnabled_ = false;
    bool isSpinning_ = false;
};

}  // namespace vornic

#endif
