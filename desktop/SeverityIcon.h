#ifndef VORNIC_DESKTOP_SEVERITY_ICON_H
#define VORNIC_DESKTOP_SEVERITY_ICON_H

#include <QIcon>
#include <QPalette>
#include <QString>

#include "report/Severity.h"

namespace vornic {

/// A sign whose shape shows the severity as well as its colour does.
[[nodiscard]] QIcon severityIcon(Severity severity, const QPalette& palette);

/// "Error", "Warning", "Note".
[[nodiscard]] QString wordOf(Severity severity);

}  // namespace vornic

#endif
