#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/programs/ProgramRunner.h"

// Which libraries the built programs load.

namespace vornic::test {

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string librariesOf(const std::string& program) {
    const ProgramResult result = RunningProgram({.program = "/usr/bin/ldd",
                                                 .arguments = {program},
                                                 .environment = {"PATH=/usr/bin:/bin"}})
                                     .finish();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("libc.so"));
    return result.output;
}

}  // namespace

TEST(Links, giveTheCommandLineToolsNoLibraryOfTheKeyboardOrTheDesktop) {
    for (const char* const program : {VORNIC_PROGRAM, VORNIC_REPAIR_PROGRAM}) {
        const std::string libraries = librariesOf(program);
        for (const char* const library :
             {"libxkbcommon", "libxcb", "libQt", "libcrypto", "libarchive"}) {
            EXPECT_THAT(libraries, Not(HasSubstr(library))) << program;
        }
    }
}

}  // namespace vornic::test
