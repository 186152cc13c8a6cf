#ifndef VORNIC_TESTS_SUPPORT_PROGRAMS_STAND_IN_PROGRAM_H
#define VORNIC_TESTS_SUPPORT_PROGRAMS_STAND_IN_PROGRAM_H

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/texts/LogText.h"

namespace vornic::test {

/// A program for a test's own use that writes down its arguments, one a line, in a file that is
/// there as a whole or not at all. Argument texts must not hold line breaks.
class StandInProgram {
  public:
    /// Makes the executable file, and the folders above it, at the path.
    /// @param record the path of the file that it leaves
    StandInProgram(const std::string& path, std::string record) : record_(std::move(record)) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        writeBytes(path, "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" + record_ + ".part' && mv '" +
                             record_ + ".part' '" + record_ + "'\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all |
                                               std::filesystem::perms::group_exec |
                                               std::filesystem::perms::others_exec);
    }

    /// Waits until the program has been run and takes its arguments. A failure when it is not run.
    [[nodiscard]] std::vector<std::string> takeArguments() const {
        if (!becomesTrue([this] { return wasRun(); })) {
            ADD_FAILURE() << "the program was not run";
            return {};
        }
        const std::vector<std::string> arguments = linesOf(readBytes(record_));
        std::filesystem::remove(record_);
        return arguments;
    }
    /// True when arguments are there to be taken.
    [[nodiscard]] bool wasRun() const { return exists(record_); }

  private:
    std::string record_;
};

}  // namespace vornic::test

#endif
