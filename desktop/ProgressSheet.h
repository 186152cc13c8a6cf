#ifndef VORNIC_DESKTOP_PROGRESS_SHEET_H
#define VORNIC_DESKTOP_PROGRESS_SHEET_H

#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

namespace vornic {

/// The progress of a run (`windowProgress`): a bar, what the run is doing, and a cancel button. The
/// bar asks for its state when it is time to paint it, so that a run never waits for its bar.
class ProgressSheet : public QDialog {
  public:
    /// The bar's maximum, 0 while it is indeterminate, and its value.
    using State = std::pair<std::int64_t, std::int64_t>;

    ProgressSheet(QWidget* window, std::function<State()> state, std::function<void()> cancel);

    void setCancelEnabled(bool enabled) { cancelButton_->setEnabled(enabled); }
    void setAnimated(bool animated);
    void setIndeterminate(bool indeterminate);
    void setStatusText(std::string_view text);

    /// Escape and the window manager's close button cancel the run, which ends the sheet.
    void reject() override { cancelButton_->click(); }

  private:
    void paintState();

    std::function<State()> state_;
    QLabel* statusText_;
    QProgressBar* bar_;
    QPushButton* cancelButton_;
    QTimer clock_;
    bool isIndeterminate_ = true;
};

}  // namespace vornic

#endif
