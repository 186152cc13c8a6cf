#include <cstdlib>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

namespace {

const std::string kPages = VORNIC_SOURCE "/packaging/man/";

std::set<std::string> optionsIn(const std::string& text) {
    static const std::regex option("(^|[^-\\w])(--[a-z]+(-[a-z]+)*)");
    std::set<std::string> options;
    for (std::sregex_iterator match(text.begin(), text.end(), option), end; match != end; ++match) {
        options.insert((*match)[2]);
    }
    return options;
}

// A page with its escaped hyphens written plainly.
std::string page(const std::string& name) {
    return std::regex_replace(readBytes(kPages + name), std::regex("\\\\-"), "-");
}

std::string help(const char* program = VORNIC_REPAIR_PROGRAM) {
    const ProgramResult result =
        runProgram({.program = program, .arguments = {"--help"}, .environment = {}});
    EXPECT_EQ(result.status, 0);
    return result.output;
}

std::string groff() {
    for (const char* path : {"/usr/bin/groff", "/usr/local/bin/groff"}) {
        if (std::filesystem::exists(path)) {
            return path;
        }
    }
    return "";
}

// What groff has to say about a page.
std::string warnings(const std::string& name) {
    const ProgramResult result = runProgram(
        {.program = groff(),
         .arguments = {"-man", "-Tutf8", "-Kutf8", "-ww", "-z", "-rCHECKSTYLE=3", kPages + name},
         .environment = {"PATH=/usr/local/bin:/usr/bin:/bin"}});
    EXPECT_EQ(result.status, 0);
    return result.output + result.errors;
}

}  // namespace

TEST(ManualPage, namesEveryOptionOfTheHelpAndNoOther) {
    const std::set<std::string> options = optionsIn(help());
    EXPECT_GE(options.size(), 3U);
    EXPECT_EQ(optionsIn(page("vornic-repair.1")), options);
}

TEST(ManualPage, namesEveryOptionOfTheCheckAndNoOther) {
    EXPECT_EQ(optionsIn(page("vornic-check.1")), optionsIn(help(VORNIC_CHECK_PROGRAM)));
}

TEST(ManualPage, namesEveryOptionOfTheMediaProgramAndNoOther) {
    const std::set<std::string> options = optionsIn(help(VORNIC_MEDIA_PROGRAM));
    std::set<std::string> described = optionsIn(page("vornic-media.1"));
    described.erase("--undo");
    EXPECT_EQ(described.count("--map"), 1U);
    std::set<std::string> wanted = options;
    wanted.erase("--undo");
    EXPECT_EQ(described, wanted);
}

TEST(ManualPage, namesEveryOptionOfTheConversionAndNoOther) {
    EXPECT_EQ(optionsIn(page("vornic-convert.1")), optionsIn(help(VORNIC_CONVERT_PROGRAM)));
}

TEST(ManualPage, namesTheOptionsOfTheProgramWithWindows) {
    EXPECT_NE(page("vornic.1").find("-convertxmeml"), std::string::npos);
    EXPECT_EQ(optionsIn(page("vornic.1")), optionsIn(help(VORNIC_PROGRAM)));
}

TEST(Readme, namesEveryOptionOfTheHelp) {
    const std::set<std::string> described = optionsIn(readBytes(VORNIC_SOURCE "/README.md"));
    for (const std::string& option : optionsIn(help())) {
        EXPECT_TRUE(described.contains(option)) << option;
    }
}

TEST(ManualPage, rendersWithoutWarnings) {
    if (groff().empty()) {
        GTEST_SKIP() << "groff is not installed";
    }
    EXPECT_EQ(warnings("vornic.1"), "");
    EXPECT_EQ(warnings("vornic-check.1"), "");
    EXPECT_EQ(warnings("vornic-convert.1"), "");
    EXPECT_EQ(warnings("vornic-repair.1"), "");
    EXPECT_EQ(warnings("vornic-rules.7"), "");
}

}  // namespace vornic::test
