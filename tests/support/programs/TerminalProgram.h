#ifndef VORNIC_TESTS_SUPPORT_PROGRAMS_TERMINAL_PROGRAM_H
#define VORNIC_TESTS_SUPPORT_PROGRAMS_TERMINAL_PROGRAM_H

#include <string>
#include <string_view>

#include <sys/types.h>

#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

/// A program that somebody uses at a terminal: a pseudo-terminal of its own is its controlling one
/// and all its three streams. What is typed there is not echoed.
class TerminalProgram {
  public:
    /// @param settings but for the streams
    explicit TerminalProgram(const ProgramSettings& settings);
    /// Kills the program if it is still at work.
    ~TerminalProgram();
    TerminalProgram(const TerminalProgram&) = delete;
    TerminalProgram& operator=(const TerminalProgram&) = delete;

    /// Reads until the text has been shown. @return false when the program ended without it, or has
    /// said nothing for a minute.
    [[nodiscard]] bool readUntil(std::string_view text);
    /// Types; "\x03" is Ctrl-C, "\x04" at the beginning of a line the end of the input.
    void type(std::string_view keys) const;
    /// Reads what is still to come and waits for the end. `output` is all that was shown.
    ProgramResult finish();

  private:
    bool readOnce();

    pid_t process_ = -1;
    int terminal_ = -1;
    std::string shown_;
};

}  // namespace vornic::test

#endif
