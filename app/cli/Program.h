#ifndef VORNIC_APP_CLI_PROGRAM_H
#define VORNIC_APP_CLI_PROGRAM_H

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/cli/CommandLine.h"

namespace vornic {

/// What the command-line programs have in common: how they begin, answer `--help` and `--version`,
/// refuse a wrong command line, and end. All views are fixed texts. Main thread.
struct Program {
    std::string_view name;
    std::string_view usage;
    std::span<const OptionForm> options;
    /// The log's name: one of its own, so that no run moves on the logs of the programs that change
    /// files; "" for the program's own log.
    std::string_view log;

    /// Runs the program. Secures the standard streams, takes the command line apart, and calls
    /// `action` unless the command line is wrong or asks for help or version.
    /// @param arguments the program's path first
    /// @return the exit status: that of the action, or `kNotDone` when there is not enough memory
    int run(const std::vector<std::string>& arguments,
            const std::function<int(const CommandLine&)>& action) const;
    /// Calls `work` between what every run on files begins and ends with: crash reports, signals,
    /// the log, and, for one that changes files in their place, what killed runs have left.
    int runOnFiles(bool changesFiles, const std::function<int()>& work) const;

    /// Tells standard error what is wrong with the command line, and the usage. @return the status
    int refuseUsage(std::string_view fault) const;
    /// Writes what was asked for to standard output.
    /// @return `kSomethingToSay` when it got lost on its way
    int print(std::string_view text) const;
};

}  // namespace vornic

#endif
