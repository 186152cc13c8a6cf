#ifndef VORNIC_DESKTOP_OPEN_PANEL_H
#define VORNIC_DESKTOP_OPEN_PANEL_H

#include <QFileDialog>
#include <string>
#include <vector>

#include "app/OpenPanelSettings.h"
#include "ui/alerts/QMAlert.h"

namespace vornic {

/// The panel that files are opened with. It lists, and takes, folders to look into and files of the
/// allowed types alone; a file of another kind whose name is typed is refused with an alert, and
/// the panel stays. Main thread.
class OpenPanel : public QFileDialog, public AlertWindow {
  public:
    explicit OpenPanel(const OpenPanelSettings& settings);

    /// The chosen files, in the panel's order.
    [[nodiscard]] std::vector<std::string> paths() const;

    [[nodiscard]] bool hasAttachedSheet() const override;
    void makeKeyAndOrderFront() override;

  protected:
    void accept() override;

  private:
    OpenPanelSettings settings_;
};

}  // namespace vornic

#endif
