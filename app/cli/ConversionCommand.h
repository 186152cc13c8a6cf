#ifndef VORNIC_APP_CLI_CONVERSION_COMMAND_H
#define VORNIC_APP_CLI_CONVERSION_COMMAND_H

#include <string>
#include <vector>

namespace vornic {

/// The conversion of project files between versions: `vornic-convert --to VERSION [options] [--]
/// FILE...`. Unlike `vornic -convertxmeml` it also converts FCPXML, lists what is lost, and leaves
/// the file as it is unless it is asked to replace it.
class ConversionCommand {
  public:
    /// Converts the named files one after the other. Main thread.
    /// @param arguments the program's path first.
    /// @return 0 when nothing is lost, 1 when a result has lost something, 2 for wrong usage, 3
    /// when
    ///     something was not written, 128 and the number of a signal that asked the program to end.
    static int run(const std::vector<std::string>& arguments);
};

}  // namespace vornic

#endif
