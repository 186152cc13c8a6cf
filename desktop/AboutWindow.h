#ifndef VORNIC_DESKTOP_ABOUT_WINDOW_H
#define VORNIC_DESKTOP_ABOUT_WINDOW_H

#include <QDialog>
#include <QLabel>
#include <QScrollArea>
#include <QTextEdit>

#include "ui/about/AboutPanel.h"

namespace vornic {

/// The about panel (`aboutWindow`).
class AboutWindow : public QDialog, public AboutPanel {
  public:
    AboutWindow();

    [[nodiscard]] std::optional<PanelFrame> frame() const override;
    void setFrame(const PanelFrame& frame) override;
    void setTitle(std::string_view title) override;
    void setAppName(std::string_view name) override;
    void setVersion(std::string_view text) override;
    void showApplicationIcon() override;
    void setCreditsHidden(bool hidden) override;
    void setCreditsEditable(bool editable) override;
    void insertCredits(std::string_view rtf) override;
    void scrollCreditsToBeginning() override;

  private:
    QLabel* icon_;
    QLabel* name_;
    QLabel* version_;
    QScrollArea* creditsArea_;
    QTextEdit* credits_;
};

}  // namespace vornic

#endif
