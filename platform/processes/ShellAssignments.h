#ifndef VORNIC_PLATFORM_PROCESSES_SHELL_ASSIGNMENTS_H
#define VORNIC_PLATFORM_PROCESSES_SHELL_ASSIGNMENTS_H

#include <map>
#include <string>
#include <string_view>

namespace vornic::platform {

/// Reads the shell-like assignments of os-release(5) and user-dirs.dirs: `NAME="value"`, one a
/// line, with quotes, backslashes and comments as a shell takes them. A line of any other form is
/// passed over, and of two assignments to one name the later one counts.
/// @param home what stands for `$HOME` and `${HOME}`; other variables are kept as written
[[nodiscard]] std::map<std::string, std::string> parseShellAssignments(std::string_view text,
                                                                       std::string_view home);

}  // namespace vornic::platform

#endif
