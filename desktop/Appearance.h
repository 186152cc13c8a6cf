#ifndef VORNIC_DESKTOP_APPEARANCE_H
#define VORNIC_DESKTOP_APPEARANCE_H

#include <memory>
#include <optional>

#include "desktop/ColorScheme.h"
#include "desktop/SettingsPortal.h"

namespace vornic {

/// The colours and the style of all windows while an object lives. Where the desktop gives the
/// toolkit colours or a style of its own, nothing is changed. Elsewhere the program draws in one of
/// its own two palettes and follows what the user chose for the desktop, also while it runs. Main
/// thread only.
class Appearance {
  public:
    /// The environment variable that chooses the scheme, "light" or "dark", whatever the desktop
    /// says; another value sets nothing.
    static constexpr const char* kSchemeVariable = "VORNIC_COLOR_SCHEME";

    /// To be made after the toolkit's application and before the first window.
    /// @param bus where the desktop's settings are asked for, without waiting for the answer
    explicit Appearance(const std::optional<QDBusConnection>& bus);

  private:
    std::unique_ptr<SettingsPortal> portal_;
};

}  // namespace vornic

#endif
