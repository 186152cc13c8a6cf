// Programs that stand elsewhere than in the build tree: what they find beside them, and what they
// do without it.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/texts/LogText.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class InstalledProgramsTest : public ProgramTest {
  protected:
    void SetUp() override { fs::create_directories(files.path("prefix/bin")); }

    [[nodiscard]] std::string inPrefix(const std::string& name) const {
        return files.path("prefix/" + name);
    }

    /// Copies a program into the prefix and starts the copy.
    ProgramResult run(const std::string& program, std::vector<std::string> arguments) const {
        const std::string copy = inPrefix("bin/" + program);
        if (!exists(copy)) {
            fs::copy(material.program(program), copy);
        }
        ProgramSettings settings = files.repairer(std::move(arguments));
        settings.program = copy;
        return runProgram(settings);
    }

    void installScript(const std::string& name, const std::string& script) const {
        fs::create_directories(fs::path(inPrefix(name)).parent_path());
        writeBytes(inPrefix(name), script);
        fs::permissions(inPrefix(name), fs::perms::owner_all);
    }

    void installCatalogue(const std::string& name) const {
        fs::create_directories(fs::path(inPrefix(name)).parent_path());
        fs::copy(material.bundle() + "/Contents/Resources/xml_versions.plist", inPrefix(name));
    }

    [[nodiscard]] static std::string reportWithoutCatalogue(const std::string& path) {
        std::string report = soundReport(path);
        report.resize(report.find("Updating type/creator codes..."));
        return report +
               "Unable to load XML version information. Please reinstall Brindle Tools.\n"
               "Updating type/creator codes...\n"
               "Unable to repair file. Errors were found in the file and Vornic was unable to fix "
               "them.\n";
    }
};

constexpr const char* kShowArguments =
    "#!/bin/sh\n"
    "for argument; do printf '<%s>\\n' \"$argument\"; done\n"
    "exit 7\n";

using DesktopHandOffTest = InstalledProgramsTest;

TEST_F(DesktopHandOffTest, withoutTheDesktopProgramAnErrorSaysWhatToDo) {
    const ProgramResult result = run("vornic", {});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "vornic: The desktop program (vornic-desktop) is not installed.\n"
              "To convert files without it: vornic -convertxmeml VERSION FILE...\n"
              "To repair files without it: vornic-repair FILE...\n");
    EXPECT_FALSE(exists(files.logPath()));
}

TEST_F(DesktopHandOffTest, helpAndVersionNeedNoDesktopProgram) {
    const ProgramResult help = run("vornic", {"cut.xml", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, ::testing::StartsWith("Usage: vornic [FILE...]\n"));
    const ProgramResult version = run("vornic", {"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.output, MatchesRegex("vornic [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    EXPECT_EQ(version.errors, "");
    EXPECT_FALSE(exists(files.logPath()));
}

TEST_F(DesktopHandOffTest, aFileThatIsNamedLikeAnOptionIsHandedOver) {
    installScript("bin/vornic-desktop", kShowArguments);
    EXPECT_EQ(run("vornic", {"--", "--help"}).output, "<-->\n<--help>\n");
}

TEST_F(DesktopHandOffTest, aSwitchInOtherLettersStartsTheDesktopProgram) {
    const std::string path = files.writeSound("cut.xml");
    for (const char* wrong :
         {"-ConvertXMEML", "--convertxmeml", "-convertxmeml=3", "convertxmeml"}) {
        const ProgramResult result = run("vornic", {wrong, "3", path});
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, HasSubstr("is not installed"));
        EXPECT_EQ(readBytes(path), soundXMEML());
    }
}

TEST_F(DesktopHandOffTest, theDesktopProgramGetsEveryArgumentUnchanged) {
    installScript("bin/vornic-desktop", kShowArguments);
    const ProgramResult result = run(
        "vornic", {"a file.xml", "", "--", "-x", "%s%n", "'\"$HOME\\", "two\nlines", "Caf\xE9"});
    EXPECT_EQ(result.output,
              "<a file.xml>\n<>\n<-->\n<-x>\n<%s%n>\n<'\"$HOME\\>\n<two\nlines>\n<Caf\xE9>\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(DesktopHandOffTest, theDesktopProgramsStatusIsTheResult) {
    installScript("bin/vornic-desktop", kShowArguments);
    EXPECT_EQ(run("vornic", {}).status, 7);
}

TEST_F(DesktopHandOffTest, theDesktopProgramGetsTheEnvironmentAndTheWorkingFolder) {
    installScript("bin/vornic-desktop", "#!/bin/sh\nprintf '%s\\n' \"$HOME\" \"$(pwd -P)\"\n");
    const ProgramResult result = run("vornic", {});
    EXPECT_EQ(result.output, files.home() + "\n" + fs::canonical(files.folder()).string() + "\n");
}

TEST_F(DesktopHandOffTest, theDesktopProgramIsAlsoFoundInTheInstallPrefix) {
    installScript("libexec/vornic/vornic-desktop", kShowArguments);
    const ProgramResult result = run("vornic", {"cut.xml"});
    EXPECT_EQ(result.output, "<cut.xml>\n");
    EXPECT_EQ(result.status, 7);
}

TEST_F(DesktopHandOffTest, theDesktopProgramBesideTheExecutableComesFirst) {
    installScript("libexec/vornic/vornic-desktop", "#!/bin/sh\necho installed\n");
    installScript("bin/vornic-desktop", "#!/bin/sh\necho beside\n");
    EXPECT_EQ(run("vornic", {}).output, "beside\n");
}

TEST_F(DesktopHandOffTest, theDesktopProgramIsFoundThroughALinkToTheExecutable) {
    installScript("bin/vornic-desktop", kShowArguments);
    EXPECT_EQ(run("vornic", {}).status, 7);
    fs::create_symlink(inPrefix("bin/vornic"), files.path("link"));
    ProgramSettings settings = files.converter({"cut.xml"});
    settings.program = files.path("link");
    EXPECT_EQ(runProgram(settings).output, "<cut.xml>\n");
}

TEST_F(DesktopHandOffTest, aDesktopProgramThatCannotBeStartedIsAnError) {
    writeBytes(inPrefix("bin/vornic-desktop"), kShowArguments);
    const ProgramResult result = run("vornic", {});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "vornic: The program " + inPrefix("bin/vornic-desktop") +
                                 " cannot be started: permission denied.\n");
}

TEST_F(DesktopHandOffTest, theSwitchNeedsNoDesktopProgram) {
    installScript("bin/vornic-desktop", kShowArguments);
    const std::string path = files.writeSound("cut.xml");
    const ProgramResult result = run("vornic", {"-convertxmeml", "3", path});
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readBytes(path), soundXMEML("3"));
}

using MissingCatalogueTest = InstalledProgramsTest;

TEST_F(MissingCatalogueTest, anXMEMLFileCannotBeJudged) {
    const std::string path = files.writeSound("cut.xml");
    const ProgramResult result = run("vornic-repair", {path});
    EXPECT_EQ(result.output, reportWithoutCatalogue(path));
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(readBytes(path), soundXMEML());
}

TEST_F(MissingCatalogueTest, aDamagedXMEMLFileIsLeftAlone) {
    const std::string path = files.writeDamaged("cut.xml");
    EXPECT_EQ(run("vornic-repair", {path}).status, 1);
    EXPECT_EQ(readBytes(path), damagedXMEML());
    EXPECT_FALSE(exists(files.trash()));
}

TEST_F(MissingCatalogueTest, anFCPXMLFileNeedsNone) {
    const std::string path = files.write(
        "cut.fcpxml",
        "<!DOCTYPE fcpxml>\n<fcpxml version=\"1.10\"><resources/><project/></fcpxml>\n");
    EXPECT_EQ(run("vornic-repair", {path}).status, 0);
}

TEST_F(MissingCatalogueTest, aConversionNeedsNone) {
    const std::string path = files.writeSound("cut.xml");
    EXPECT_EQ(run("vornic", {"-convertxmeml", "1", path}).output, "");
    EXPECT_EQ(readBytes(path), soundXMEML("1"));
}

TEST_F(MissingCatalogueTest, theLogNamesNoBundleThatIsNotThere) {
    run("vornic-repair", {files.writeSound("cut.xml")});
    const std::vector<std::string> messages = logMessages(readBytes(files.logPath()));
    ASSERT_GT(messages.size(), 3U);
    EXPECT_THAT(messages[0], ::testing::StartsWith("Log started: "));
    EXPECT_THAT(messages[1], ::testing::StartsWith("System: macOS "));
    EXPECT_EQ(messages[2], "Running in 64-bit mode");
}

TEST_F(MissingCatalogueTest, oneThatCannotBeReadIsAsGoodAsNone) {
    fs::create_directories(inPrefix("share/vornic"));
    writeBytes(inPrefix("share/vornic/xml_versions.plist"), "no property list");
    const std::string path = files.writeSound("cut.xml");
    EXPECT_EQ(run("vornic-repair", {path}).output, reportWithoutCatalogue(path));
}

TEST_F(MissingCatalogueTest, itIsReadAgainForEveryFile) {
    installCatalogue("share/vornic/xml_versions.plist");
    const std::string path = files.writeSound("cut.xml");
    EXPECT_EQ(run("vornic-repair", {path}).output, soundReport(path));
    fs::remove(inPrefix("share/vornic/xml_versions.plist"));
    EXPECT_EQ(run("vornic-repair", {path}).output, reportWithoutCatalogue(path));
}

TEST_F(MissingCatalogueTest, itIsFoundInTheInstalledBundleToo) {
    installCatalogue("lib/vornic/Vornic.app/Contents/Resources/xml_versions.plist");
    const std::string path = files.writeSound("cut.xml");
    EXPECT_EQ(run("vornic-repair", {path}).output, soundReport(path));
}

}  // namespace vornic::test
