#ifndef VORNIC_APP_CLI_REPAIR_COMMAND_H
#define VORNIC_APP_CLI_REPAIR_COMMAND_H

#include <string>
#include <vector>

namespace vornic {

/// The headless repair tool: `vornic-repair [--quiet] [--] FILE...`.
class RepairCommand {
  public:
    /// Repairs each named file in turn. The report goes to standard output, what only an alert
    /// would say to standard error, with a progress bar there when that is a terminal. Main thread.
    /// @param arguments the program's path first.
    /// @return 0 when every run ended sound or repaired and swapped, 1 when one did not, or when
    ///     the report, or the help, could not be written, 2 for wrong usage, 128 and the number of
    ///     a signal that asked the program to end.
    static int run(const std::vector<std::string>& arguments);
};

}  // namespace vornic

#endif
