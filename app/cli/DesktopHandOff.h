#ifndef VORNIC_APP_CLI_DESKTOP_HAND_OFF_H
#define VORNIC_APP_CLI_DESKTOP_HAND_OFF_H

namespace vornic {

/// Replaces the process by the desktop program, with the arguments unchanged. It is looked for as
/// `vornic-desktop` beside the running executable, then among the helpers of its install.
/// @return only when that fails: 1, after a message on standard error.
int runDesktopProgram(char* const* arguments);

}  // namespace vornic

#endif
