// What shells complete after the programs' names.

#include <algorithm>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ProgramRunner.h"
#include "tests/support/texts/LogText.h"

namespace vornic::test {

namespace {

using ::testing::Contains;
using ::testing::UnorderedElementsAre;

const std::string kCompletions = VORNIC_SOURCE "/packaging/completions/";

struct Program {
    std::string name;
    std::string path;
};

const std::vector<Program>& programs() {
    static const std::vector<Program> kPrograms = {{"vornic-check", VORNIC_CHECK_PROGRAM},
                                                   {"vornic-media", VORNIC_MEDIA_PROGRAM},
                                                   {"vornic-convert", VORNIC_CONVERT_PROGRAM},
                                                   {"vornic-repair", VORNIC_REPAIR_PROGRAM},
                                                   {"vornic", VORNIC_PROGRAM}};
    return kPrograms;
}

// The options that a program's help lists at the beginning of lines.
std::set<std::string> optionsOf(const Program& program) {
    const ProgramResult help =
        runProgram({.program = program.path, .arguments = {"--help"}, .environment = {}});
    static const std::regex kOption("\\n  (--?[a-z][a-z-]*)");
    std::set<std::string> options;
    for (std::sregex_iterator match(help.output.begin(), help.output.end(), kOption), end;
         match != end; ++match) {
        options.insert((*match)[1]);
    }
    return options;
}

std::set<std::string> wordsOf(const std::string& text) {
    const std::vector<std::string> lines = linesOf(text);
    return {lines.begin(), lines.end()};
}

class BashCompletion : public SandboxTest {
  protected:
    // What bash offers for the last of the words; the first is the program.
    std::set<std::string> offered(const std::vector<std::string>& words) {
        std::string script = "source '" + kCompletions + "vornic.bash'\nCOMP_WORDS=(";
        for (const std::string& word : words) {
            script += "'" + word + "' ";
        }
        script += ")\nCOMP_CWORD=" + std::to_string(words.size() - 1) +
                  "\nread -r _ _ function _ < <(complete -p '" + words[0] + "')\n" +
                  "$function \"$program\" \"${COMP_WORDS[COMP_CWORD]}\" "
                  "\"${COMP_WORDS[COMP_CWORD - 1]}\"\n"
                  "for word in \"${COMPREPLY[@]}\"; do printf '%s\\n' \"$word\"; done\n";
        const ProgramResult result = runProgram(
            {.program = "/bin/bash",
             .arguments = {"--norc", "-c", script},
             .environment = {"PATH=/usr/bin:/bin", std::string("program=") + VORNIC_CHECK_PROGRAM},
             .folder = sandbox.folder()});
        EXPECT_EQ(result.errors, "");
        return wordsOf(result.output);
    }
};

}  // namespace

TEST_F(BashCompletion, offersEveryOptionOfTheHelpAndNoOther) {
    for (const Program& program : programs()) {
        const std::set<std::string> options = optionsOf(program);
        EXPECT_GE(options.size(), 3U);
        EXPECT_EQ(offered({program.name, "-"}), options);
        for (const std::string& option : options) {
            const std::string start = option.substr(0, option.size() - (option.size() > 3 ? 1 : 0));
            EXPECT_THAT(offered({program.name, "a.xml", start}), Contains(option)) << start;
        }
    }
}

TEST_F(BashCompletion, offersTheValuesOfOptions) {
    EXPECT_THAT(offered({"vornic-check", "--format", ""}),
                UnorderedElementsAre("text", "json", "sarif", "gnu"));
    EXPECT_THAT(offered({"vornic-check", "--format", "=", "s"}), UnorderedElementsAre("sarif"));
    EXPECT_THAT(offered({"vornic-check", "--format", "="}),
                UnorderedElementsAre("text", "json", "sarif", "gnu"));
    EXPECT_THAT(offered({"vornic-check", "--fail-on", "n"}), UnorderedElementsAre("never"));
    EXPECT_THAT(offered({"vornic-check", "--fix", "=", "values-stand"}),
                UnorderedElementsAre("values-standalone"));
    EXPECT_THAT(offered({"vornic-check", "--fix", "--dry"}), UnorderedElementsAre("--dry-run"));
    EXPECT_THAT(offered({"vornic-check", "--explain", "values-stand"}),
                UnorderedElementsAre("values-standalone"));
    EXPECT_THAT(offered({"vornic-check", "--ignore", "structure,values-stand"}),
                UnorderedElementsAre("structure,values-standalone"));
    EXPECT_THAT(offered({"vornic-check", "--fix", "values-stand"}), ::testing::IsEmpty());
    EXPECT_THAT(offered({"vornic-check", "--reads", "1.1"}),
                UnorderedElementsAre("1.1", "1.10", "1.11", "1.12", "1.13", "1.14"));
    EXPECT_THAT(offered({"vornic-convert", "--to", "1.1"}),
                UnorderedElementsAre("1.10", "1.11", "1.12", "1.13", "1.14"));
    EXPECT_THAT(offered({"vornic-convert", "--format", ""}), UnorderedElementsAre("text", "json"));
    EXPECT_THAT(offered({"vornic", "-convertxmeml", ""}),
                UnorderedElementsAre("1", "2", "3", "4", "5"));
}

TEST_F(BashCompletion, takesNoValueOfAnOptionThatItDoesNotHave) {
    for (const std::string value : {"xml", "fatal", "9"}) {
        for (const std::string option : {"--format", "--least", "--fail-on", "--reads"}) {
            EXPECT_TRUE(offered({"vornic-check", option, value}).empty()) << option << value;
        }
    }
}

// Each value that completion offers is one that the program takes.
TEST_F(BashCompletion, offersNothingThatTheProgramRefuses) {
    (void)sandbox.write("a.xml", "<xmeml version=\"5\"/>");
    for (const std::string option :
         {"--format", "--least", "--fail-on", "--reads", "--only", "--ignore"}) {
        for (const std::string& value : offered({"vornic-check", option, ""})) {
            const ProgramResult result = runProgram({.program = VORNIC_CHECK_PROGRAM,
                                                     .arguments = {option, value, "a.xml"},
                                                     .environment = {"HOME=" + sandbox.home()},
                                                     .folder = sandbox.folder()});
            EXPECT_NE(result.status, 2) << option << " " << value;
        }
    }
}

TEST_F(BashCompletion, offersProjectFilesAndFolders) {
    for (const char* name : {"a.xml", "b.FCPXML", "c.txt", "d e.fcpxml"}) {
        (void)sandbox.write(name, "");
    }
    for (const Program& program : programs()) {
        EXPECT_THAT(offered({program.name, ""}),
                    ::testing::IsSupersetOf({"a.xml", "b.FCPXML", "d e.fcpxml"}));
        EXPECT_THAT(offered({program.name, ""}), ::testing::Not(Contains("c.txt")));
    }
    EXPECT_THAT(offered({"vornic-check", "--report", "c"}), UnorderedElementsAre("c.txt"));
}

TEST(Completion, namesEveryOptionForZshAndFish) {
    const std::string zsh = readBytes(kCompletions + "_vornic");
    const std::string fish = readBytes(kCompletions + "vornic.fish");
    for (const Program& program : programs()) {
        const std::size_t start = zsh.find("    " + program.name + ")");
        ASSERT_NE(start, std::string::npos);
        const std::string part = zsh.substr(start, zsh.find(";;", start) - start);
        for (const std::string& option : optionsOf(program)) {
            EXPECT_TRUE(std::regex_search(part, std::regex("[')*]" + option + "=?-?\\[")))
                << program.name << " " << option;
            const std::string form = option.starts_with("--") ? " -l " + option.substr(2)
                                     : option.size() == 2     ? " -s " + option.substr(1)
                                                              : " -o " + option.substr(1);
            EXPECT_NE(fish.find("complete -c " + program.name + form + " "), std::string::npos)
                << program.name << " " << option;
        }
    }
}

TEST(Completion, isReadByZsh) {
    if (!exists("/usr/bin/zsh")) {
        GTEST_SKIP() << "zsh is not installed";
    }
    const ProgramResult result = runProgram({.program = "/usr/bin/zsh",
                                             .arguments = {"-f", "-n", kCompletions + "_vornic"},
                                             .environment = {"PATH=/usr/bin:/bin"}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
}

TEST_F(BashCompletion, offersTheSameInFish) {
    if (!exists("/usr/bin/fish")) {
        GTEST_SKIP() << "fish is not installed";
    }
    const std::string program = VORNIC_CHECK_PROGRAM;
    const auto offeredByFish = [&](const std::string& words) {
        const ProgramResult result = runProgram(
            {.program = "/usr/bin/fish",
             .arguments = {"--no-config", "-c",
                           "source '" + kCompletions + "vornic.fish'; complete -C '" + words +
                               "' | string replace -r '\\t.*' ''"},
             .environment = {"HOME=" + sandbox.home(),
                             "PATH=" + program.substr(0, program.rfind('/')) + ":/usr/bin:/bin"},
             .folder = sandbox.folder()});
        EXPECT_EQ(result.errors, "");
        return wordsOf(result.output);
    };
    std::set<std::string> options = optionsOf(programs()[0]);
    std::erase_if(options, [](const std::string& option) { return !option.starts_with("--"); });
    EXPECT_EQ(offeredByFish("vornic-check --"), options);
    for (const std::string option : {"--format", "--least", "--fail-on"}) {
        EXPECT_EQ(offeredByFish("vornic-check " + option + " "),
                  offered({"vornic-check", option, ""}));
    }
    EXPECT_EQ(offeredByFish("vornic-check --explain values-stand"),
              std::set<std::string>{"values-standalone"});
}

}  // namespace vornic::test
