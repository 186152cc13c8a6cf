#ifndef VORNIC_DESKTOP_SOURCE_COLORS_H
#define VORNIC_DESKTOP_SOURCE_COLORS_H

#include <QColor>
#include <QPalette>

#include "app/window/SourceText.h"
#include "report/Severity.h"

namespace vornic {

/// The colour of a part of a text on the ground of a palette's texts, with a contrast of at least
/// 4.5 to 1.
[[nodiscard]] QColor sourceColor(SourceText::Kind kind, const QPalette& palette);

/// The line below what a finding is about.
[[nodiscard]] QColor markColor(Severity severity, const QPalette& palette);

/// The ground of a row that differs, on which every colour above keeps its contrast.
[[nodiscard]] QColor changedGround(const QPalette& palette);

}  // namespace vornic

#endif
