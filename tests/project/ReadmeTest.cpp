#include <cstddef>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/app/TestMaterial.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

namespace {

// The home folder in the README's sessions.
constexpr std::string_view kShownHome = "/home/anna";

// A session: a code block of the README marked "console", in which lines with "$ " are commands and
// the others what they print.
struct Session {
    std::vector<std::string> commands;
    std::string shown;
};

std::vector<Session> sessions(const std::string& readme) {
    std::vector<Session> found;
    bool inside = false;
    std::istringstream lines(readme);
    for (std::string line; std::getline(lines, line);) {
        if (line == "```console") {
            inside = true;
            found.emplace_back();
        } else if (line == "```") {
            inside = false;
        } else if (inside) {
            found.back().shown += line + "\n";
            if (line.starts_with("$ ")) {
                found.back().commands.push_back(line.substr(2));
            }
        }
    }
    return found;
}

std::string quoted(std::string text) {
    for (std::size_t at = text.find('\''); at != std::string::npos; at = text.find('\'', at + 4)) {
        text.replace(at, 1, "'\\''");
    }
    return "'" + text + "'";
}

std::string replacingAll(std::string text, std::string_view what, std::string_view with) {
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

class ReadmeSessions : public ::testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::copy(material_.fixture(""), projects_,
                              std::filesystem::copy_options::recursive);
    }

    // What a terminal would show of the session: each command and then what it prints.
    std::string play(const Session& session) {
        std::string script = "exec 2>&1\n";
        for (const std::string& command : session.commands) {
            script += "status=$?; printf '%s\\n' " + quoted("$ " + command) + "; (exit $status)\n" +
                      command + "\n";
        }
        const std::string programs =
            std::filesystem::path(material_.program("vornic")).parent_path();
        const ProgramResult result =
            runProgram({.program = "/bin/bash",
                        .arguments = {"-c", script},
                        .environment = {"HOME=" + sandbox_.home(), "LC_ALL=C.UTF-8",
                                        "PATH=" + programs + ":/usr/bin:/bin"},
                        .folder = projects_});
        return replacingAll(result.output, sandbox_.home(), kShownHome);
    }

    const std::string readme_ = readBytes(VORNIC_SOURCE "/README.md");

  private:
    TestMaterial material_;
    Unprivileged unprivileged_;
    Sandbox sandbox_;
    std::string projects_ = sandbox_.home() + "/Projects";
};

}  // namespace

TEST_F(ReadmeSessions, printWhatTheReadmeShows) {
    const std::vector<Session> all = sessions(readme_);
    EXPECT_GE(all.size(), 3U);
    for (const Session& session : all) {
        EXPECT_FALSE(session.commands.empty());
        EXPECT_EQ(play(session), session.shown);
    }
}

}  // namespace vornic::test
