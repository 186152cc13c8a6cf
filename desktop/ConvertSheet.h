#ifndef VORNIC_DESKTOP_CONVERT_SHEET_H
#define VORNIC_DESKTOP_CONVERT_SHEET_H

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/window/ConversionPreview.h"
#include "desktop/LossList.h"
#include "repair/document/ConversionDialog.h"

namespace vornic {

/// The conversion dialog of a document (`windowConvert`): the file's version, the lowest version
/// without a loss, a menu of versions with what the chosen one leaves out, and the convert button.
/// A click on the button makes the dialog busy by itself, so that a second one, however soon,
/// starts nothing.
class ConvertSheet : public QDialog, public ConversionDialog {
  public:
    /// @param path the document's file
    ConvertSheet(std::string path, QWidget* window, std::function<void()> convert,
                 std::function<void()> close);

    void beginConvertSheet() override;
    void endConvertSheet() override;
    void startConvertSpinner() override { setBusy(true); }
    void stopConvertSpinner() override { setBusy(false); }
    void setConvertState(std::string_view text) override;
    void showConvertResult(std::string_view text) override;
    [[nodiscard]] bool keepsOriginal() const override { return keepsOriginal_->isChecked(); }
    void setConvertCurVersion(std::string_view text) override;
    void showOffer(const ConversionOffer& offer) override;
    [[nodiscard]] std::optional<std::string> selectedConvertVersionKey() const override;
    void setConvertInterfaceEnabled(bool enabled) override;

    void reject() override { close_(); }

    /// Lists once more what the chosen version leaves out, after the file has changed.
    void lookAgain();
    /// What is listed; null while it is looked for.
    [[nodiscard]] const ConversionPreview* preview() const { return preview_.get(); }

  private:
    void makeWidgets(std::function<void()> convert);
    QWidget* makeFoot(std::function<void()> convert);
    void look();
    void takePreview(std::shared_ptr<const ConversionPreview> preview);
    void writeState();
    void setBusy(bool busy);
    void updateControls();
    void makeRoom();

    std::string path_;
    std::function<void()> close_;
    QLabel* curVersion_;
    QLabel* downgradeVersion_;
    QComboBox* versions_;
    QLabel* loss_;
    LossList* losses_;
    QCheckBox* keepsOriginal_;
    QLabel* stateLabel_;
    QProgressBar* spinner_;
    QPushButton* convertButton_;
    ConversionOffer offer_;
    // As it was when something was looked for first; shared with the thread that looks.
    std::shared_ptr<const ConvertibleBytes> file_;
    std::shared_ptr<const ConversionPreview> preview_;
    // What an older look brings is dropped.
    unsigned number_ = 0;
    QString state_;
    QString convertResult_;
    bool isEnabled_ = false;
    bool isBusy_ = false;
    QElapsedTimer lastClick_;
};

}  // namespace vornic

#endif
