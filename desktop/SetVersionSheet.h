#ifndef VORNIC_DESKTOP_SET_VERSION_SHEET_H
#define VORNIC_DESKTOP_SET_VERSION_SHEET_H

#include <QDialog>
#include <functional>
#include <string>

#include "formats/FileKind.h"

namespace vornic {

/// Asks which version the root element of a file is to declare.
class SetVersionSheet : public QDialog {
  public:
    /// @param kind by the file's root element: XMEML or FCPXML
    /// @param set called with the version that the user has chosen
    SetVersionSheet(FileKind kind, std::function<void(const std::string& version)> set,
                    QWidget* parent);
};

}  // namespace vornic

#endif
