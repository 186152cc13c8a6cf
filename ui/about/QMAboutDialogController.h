#ifndef VORNIC_UI_ABOUT_QM_ABOUT_DIALOG_CONTROLLER_H
#define VORNIC_UI_ABOUT_QM_ABOUT_DIALOG_CONTROLLER_H

#include <string>

#include "ui/about/AboutPanel.h"

namespace vornic {

/// Fills the about panel: the application's icon, name, version and build, the version of the
/// product family, and the credits when the application ships some. Main thread only.
class QMAboutDialogController {
  public:
    /// @param panel must outlive the controller.
    explicit QMAboutDialogController(AboutPanel& panel) : panel_(panel) {}

    /// Fills the panel, once it is made. Values come from the main bundle: "Credits.rtf" and
    /// "QMUpdates.plist" of its resources and its information property list; a missing value is
    /// shown as nothing. Without credits the panel shrinks to 250 points of height.
    void awakeFromNib();

  private:
    void showCredits(const std::string& path);

    AboutPanel& panel_;
};

}  // namespace vornic

#endif
