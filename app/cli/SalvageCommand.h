#ifndef VORNIC_APP_CLI_SALVAGE_COMMAND_H
#define VORNIC_APP_CLI_SALVAGE_COMMAND_H

#include <string>
#include <vector>

namespace vornic {

/// `vornic-repair --salvage`: makes copies that load of files that are no XML any more. The report
/// goes to standard output, everything else to standard error. Main thread.
class SalvageCommand {
  public:
    /// Whether a command line asks for a salvage.
    [[nodiscard]] static bool isMeantBy(const std::vector<std::string>& arguments);

    /// @param arguments the program's path first.
    /// @return 0 when every file is sound, 1 when copies were written, 2 for wrong usage, 3 when a
    ///     file could not be read or no copy of it be written, 128 + signal when interrupted.
    static int run(const std::vector<std::string>& arguments);
};

}  // namespace vornic

#endif
