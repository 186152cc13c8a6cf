#ifndef VORNIC_APP_CLI_CONVERT_COMMAND_H
#define VORNIC_APP_CLI_CONVERT_COMMAND_H

#include <string>
#include <vector>

namespace vornic {

/// The command-line converter: `... -convertxmeml <version> <file> [<file> ...]`. Converts each
/// named XMEML file in place, without a window or a question.
class ConvertCommand {
  public:
    /// True when one of the arguments, the program's own path included, is the switch.
    [[nodiscard]] static bool isWanted(const std::vector<std::string>& arguments);

    /// Runs the command. Messages go to the console, those of the conversion to standard output and
    /// the log too. Main thread.
    /// @return 0 when syntax and version were valid, whatever became of the files; 1 when not; 128
    ///     and the number of a signal that asked the program to end, after which no further file is
    ///     begun.
    static int run(const std::vector<std::string>& arguments);
};

}  // namespace vornic

#endif
