#ifndef VORNIC_DESKTOP_MEND_SHEET_H
#define VORNIC_DESKTOP_MEND_SHEET_H

#include <QDialog>
#include <functional>

#include "app/window/FileActions.h"

namespace vornic {

/// Shows what mends would change, line by line, before they are made. The default is not to make
/// them.
class MendSheet : public QDialog {
  public:
    /// @param mend called when the user wants them made
    MendSheet(const MendPreview& preview, std::function<void()> mend, QWidget* parent);
};

}  // namespace vornic

#endif
