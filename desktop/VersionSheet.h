#ifndef VORNIC_DESKTOP_VERSION_SHEET_H
#define VORNIC_DESKTOP_VERSION_SHEET_H

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "app/window/ConversionPreview.h"
#include "desktop/LossList.h"

namespace vornic {

/// "Convert FCPXML Version…": which version a file is in, which ones it can become, what each would
/// leave out, and whether a copy or the file itself is converted. The default is not to convert
/// where something is left out. Main thread.
class VersionSheet : public QDialog {
  public:
    struct Actions {
        /// The user wants the conversion; the sheet stays until it is told `finish`.
        std::function<void(const VersionRequest&)> convert;
        /// There is no conversion for the file; the sheet has closed.
        std::function<void(const std::string& why)> refuse;
    };

    /// Shows the versions of a file as soon as it has been read.
    VersionSheet(std::string path, Actions actions, QWidget* parent);
    /// Stops what is going on.
    ~VersionSheet() override;
    VersionSheet(const VersionSheet&) = delete;
    VersionSheet& operator=(const VersionSheet&) = delete;

    /// The conversion has ended.
    void finish();
    /// Closes the sheet. A conversion ends before it writes.
    void reject() override;

    [[nodiscard]] const ConversionPreview* preview() const { return preview_.get(); }

  private:
    void makeWidgets();
    QWidget* makeWays();
    void read();
    void takeVersions(const FCPXMLVersions& versions);
    void look();
    void takePreview(std::shared_ptr<const ConversionPreview> preview);
    void convert();
    // What is going on; "" for nothing.
    void setState(const QString& state);
    void updateControls();

    std::string path_;
    Actions actions_;
    QLabel* current_ = nullptr;
    QLabel* lowest_ = nullptr;
    QComboBox* targets_ = nullptr;
    QLabel* result_ = nullptr;
    LossList* losses_ = nullptr;
    QRadioButton* copy_ = nullptr;
    QRadioButton* inPlace_ = nullptr;
    QLabel* state_ = nullptr;
    QProgressBar* spinner_ = nullptr;
    QPushButton* convert_ = nullptr;
    QPushButton* cancel_ = nullptr;

    std::shared_ptr<const ConvertibleBytes> file_;
    std::shared_ptr<const ConversionPreview> preview_;
    // Set once the sheet is closed.
    std::shared_ptr<std::atomic<bool>> isStopped_ = std::make_shared<std::atomic<bool>>(false);
    bool isConverting_ = false;
    // What an older look brings is dropped.
    unsigned number_ = 0;
};

}  // namespace vornic

#endif
