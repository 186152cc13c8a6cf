#ifndef VORNIC_DESKTOP_DISPLAY_NAME_H
#define VORNIC_DESKTOP_DISPLAY_NAME_H

#include <string>

namespace vornic {

/// What identifies the display that windows are opened on among this user's: the toolkit's
/// way to reach it and its name there, without the number of a screen, which belongs to the same
/// display.
/// @param platform such as "xcb" or "wayland"
/// @param chosen the display that the program was told to use; "" for the environment's
[[nodiscard]] std::string displayName(const std::string& platform, const std::string& chosen);

/// The display named by the option "-display" or "--display"; "" without one. The toolkit takes the
/// option away.
[[nodiscard]] std::string displayOption(int argc, const char* const* argv);

}  // namespace vornic

#endif
