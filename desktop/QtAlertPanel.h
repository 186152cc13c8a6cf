#ifndef VORNIC_DESKTOP_QT_ALERT_PANEL_H
#define VORNIC_DESKTOP_QT_ALERT_PANEL_H

#include <memory>

#include "ui/alerts/QMAlert.h"

namespace vornic {

/// Draws alerts: as sheets on document windows, else as windows of their own.
class QtAlertPanelFactory : public AlertPanelFactory {
  public:
    [[nodiscard]] std::shared_ptr<AlertPanel> makePanel(const AlertContents& contents) override;
};

}  // namespace vornic

#endif
