#ifndef VORNIC_APP_CLI_WINDOW_HELP_H
#define VORNIC_APP_CLI_WINDOW_HELP_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vornic {

/// Answers `--help` and `--version` for the programs that open windows, so that neither needs a
/// display. Both count anywhere in front of `--`. Main thread.
/// @param arguments the program's path first
/// @param name what the program is called, which stands in front of its version
/// @return the exit status, or nothing when the arguments ask for neither
std::optional<int> answerWithoutWindow(const std::vector<std::string>& arguments,
                                       std::string_view name);

}  // namespace vornic

#endif
