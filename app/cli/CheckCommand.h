#ifndef VORNIC_APP_CLI_CHECK_COMMAND_H
#define VORNIC_APP_CLI_CHECK_COMMAND_H

#include <string>
#include <vector>

namespace vornic {

/// The inspection of project files: `vornic-check [options] [--] FILE|FOLDER...`. It writes none of
/// them.
class CheckCommand {
  public:
    /// Checks each named file and reports to standard output, in the order of the arguments. Main
    /// thread.
    /// @param arguments the program's path first.
    /// @return 0 when nothing weighs as much as `--fail-on` says, 1 when something does, 2 for
    /// wrong
    ///     usage, 3 when a file could not be read or the report not be written, 128 and the number
    ///     of a signal that asked the program to end.
    static int run(const std::vector<std::string>& arguments);
};

}  // namespace vornic

#endif
