#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "tests/app/TestMaterial.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

namespace {

std::size_t occurrences(const std::string& text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace

TEST(Demo, repairsItsSamplesInAHomeOfTheirOwn) {
    const TestMaterial material;
    const std::string script = readBytes(VORNIC_SOURCE "/scripts/demo.sh");
    const Unprivileged unprivileged;
    const Sandbox sandbox;
    const std::string demo = sandbox.write("demo.sh", script);
    const ProgramResult result =
        runProgram({.program = "/bin/bash",
                    .arguments = {demo, material.program("vornic-repair")},
                    .environment = {"HOME=" + sandbox.home(), "PATH=/usr/bin:/bin",
                                    "TMPDIR=" + sandbox.folder()},
                    .folder = sandbox.folder()});
    EXPECT_EQ(occurrences(result.errors, "; vornic-repair --undo brings it back.\n"), 4U)
        << result.errors;
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(occurrences(result.output, "The file was repaired successfully."), 4U)
        << result.output;
    EXPECT_EQ(occurrences(result.output, "Unable to repair file."), 1U) << result.output;
    EXPECT_FALSE(exists(sandbox.home() + "/.Trash"));
}

}  // namespace vornic::test
