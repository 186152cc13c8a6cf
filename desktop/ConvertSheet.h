#ifndef VORNIC_DESKTOP_CONVERT_SHEET_H
#define VORNIC_DESKTOP_CONVERT_SHEET_H

#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "repair/document/ConversionDialog.h"

namespace vornic {

/// The conversion dialog of a document (`windowConvert`): the file's version, the lowest version
/// without a loss, a menu of versions, and the convert button. A click on the button makes the
/// dialog busy by itself, so that a second one, however soon, starts nothing.
class ConvertSheet : public QDialog, public ConversionDialog {
  public:
    ConvertSheet(QWidget* window, std::function<void()> convert, std::function<void()> close);

    void beginConvertSheet() override;
    void endConvertSheet() override;
    void startConvertSpinner() override { setBusy(true); }
    void stopConvertSpinner() override { setBusy(false); }
    void setConvertCurVersion(std::string_view text) override;
    void showOffer(const ConversionOffer& offer) override;
    [[nodiscard]] std::optional<std::string> selectedConvertVersionKey() const override;
    void setConvertInterfaceEnabled(bool enabled) override;

    void reject() override { close_(); }

  private:
    void setBusy(bool busy);
    void updateControls();
    void makeRoom();

    std::function<void()> close_;
    QLabel* curVersion_;
    QLabel* downgradeVersion_;
    QComboBox* versions_;
    QProgressBar* spinner_;
    QPushButton* convertButton_;
    bool isEnabled_ = false;
    bool isBusy_ = false;
    QElapsedTimer lastClick_;
};

}  // namespace vornic

#endif
