#include <array>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

namespace fs = std::filesystem;

namespace {

constexpr std::array kScripts = {"run", "test", "scripts/setup.sh"};

std::vector<std::string> scriptTexts() {
    std::vector<std::string> texts;
    for (const std::string script : kScripts) {
        texts.push_back(readBytes(VORNIC_SOURCE "/" + script));
    }
    return texts;
}

// A checkout with a machine of its own: the only programs to be found are the plain tools of every
// system and what a test puts there. A stand-in for a tool writes how it was called into a record.
class SetUpScripts : public ::testing::Test {
  protected:
    explicit SetUpScripts(bool asRoot = false)
        : unprivileged_(asRoot ? nullptr : std::make_unique<Unprivileged>()) {}

    void SetUp() override {
        fs::create_directories(checkout_ + "/scripts");
        fs::create_directories(tools_);
        for (std::size_t index = 0; index < kScripts.size(); ++index) {
            sandbox.write(std::string("checkout/") + kScripts.at(index), texts_.at(index));
        }
        sandbox.write("checkout/CMakePresets.json", "{}");
        for (const char* tool :
             {"basename", "bash", "cat", "chmod", "dirname", "env", "grep", "head", "mkdir",
              "mktemp", "nproc", "readlink", "rm", "sort", "tail"}) {
            linkTool(tool);
        }
    }

    void linkTool(const std::string& name) {
        for (const char* folder : {"/usr/bin/", "/bin/"}) {
            if (fs::exists(folder + name)) {
                fs::create_symlink(folder + name, tools_ + "/" + name);
                return;
            }
        }
        ADD_FAILURE() << "this system has no " << name;
    }

    // Puts a stand-in where it is found as `path`. It notes its call and then runs `script`.
    void fake(const std::string& path, const std::string& script) {
        fs::create_directories(fs::path(path).parent_path());
        const std::string file = sandbox.write(
            fs::relative(path, sandbox.folder()).string(),
            "#!" + tools_ + "/bash\necho \"${0##*/} $*\" >>'" + record_ + "'\n" + script + "\n");
        fs::permissions(file, fs::perms::owner_all);
    }

    void fakeTool(const std::string& name, const std::string& script = "") {
        fake(tools_ + "/" + name, script);
    }

    void fakeBuildTools() {
        fakeTool("c++");
        fakeTool("cmake", kFakeCMake);
        fakeTool("ninja", "echo 'ninja: no work to do.'");
        fakeTool("pkg-config");
        fakeTool("ccache");
        fakeTool("mold");
    }

    void removeTool(const std::string& name) const { fs::remove(tools_ + "/" + name); }

    // Debian, where installing means that the build tools appear.
    void fakeDebian() {
        fakeTool("dpkg");
        std::string script = "[[ $* == *install* ]] || exit 0\n";
        for (const char* tool : {"c++", "ninja", "pkg-config", "ccache"}) {
            script += "printf '#!" + tools_ + "/bash\\necho ninja: no work to do.\\n' >'" + tools_ +
                      "/" + tool + "'; ";
        }
        script +=
            "cat >'" + tools_ + "/cmake' <<'END'\n#!" + tools_ + "/bash\n" + kFakeCMake + "\nEND\n";
        script += "chmod +x '" + tools_ + "'/{c++,cmake,ninja,pkg-config,ccache}\n";
        fakeTool("apt-get", script);
    }

    void fakeProgram(const std::string& name) {
        fake(checkout_ + "/build/release/bin/" + name, "printf '<%s>\\n' \"$PWD\" \"$@\"");
    }

    ProgramResult run(const std::string& command, const std::vector<std::string>& arguments = {}) {
        std::vector<std::string> all = {command};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runProgram({.program = tools_ + "/bash",
                           .arguments = all,
                           .environment = {"HOME=" + sandbox.home(), "PATH=" + tools_,
                                           "TMPDIR=" + sandbox.folder()},
                           .folder = sandbox.folder()});
    }

    [[nodiscard]] std::string record() const { return exists(record_) ? readBytes(record_) : ""; }

  private:
    const std::vector<std::string> texts_ = scriptTexts();
    const std::unique_ptr<Unprivileged> unprivileged_;

  protected:
    const Sandbox sandbox;
    const std::string checkout_ = sandbox.path("checkout");

  private:
    const std::string tools_ = sandbox.path("tools");
    const std::string record_ = sandbox.path("record");
    // Configuring leaves what the scripts look for.
    const std::string kFakeCMake =
        "if [[ $1 == --version ]]; then echo 'cmake version 3.25.1'; exit; fi\n"
        "mkdir -p build/release; echo >build/release/build.ninja\n"
        "echo \"CMAKE_HOME_DIRECTORY:INTERNAL=$PWD\" >build/release/CMakeCache.txt";
};

class SetUpScriptsAsRoot : public SetUpScripts {
  protected:
    SetUpScriptsAsRoot() : SetUpScripts(true) {}
};

}  // namespace

TEST_F(SetUpScripts, listsWhatIsNeededWhereNothingCanBeInstalled) {
    fakeTool("c++");
    const ProgramResult result = run(checkout_ + "/run", {"a.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find("  * CMake 3.25 or newer"), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find("(Debian: libplist-dev)"), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find("    a C++20 compiler"), std::string::npos) << result.errors;
    EXPECT_EQ(record(), "");
}

TEST_F(SetUpScripts, refusesACMakeThatIsTooOld) {
    fakeBuildTools();
    fakeTool("cmake", "echo 'cmake version 3.9.6'");
    const ProgramResult result = run(checkout_ + "/run", {"a.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("  * CMake 3.25 or newer"), std::string::npos) << result.errors;
}

TEST_F(SetUpScripts, goesOnWithoutDebianWhenAllIsThere) {
    fakeBuildTools();
    fakeProgram("vornic-repair");
    const ProgramResult result = run(checkout_ + "/run", {"a.xml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "run: configuring build/release\n");
}

TEST_F(SetUpScripts, doesAndSaysNothingTheSecondTime) {
    fakeBuildTools();
    fakeProgram("vornic-repair");
    EXPECT_EQ(run(checkout_ + "/run", {"a.xml"}).status, 0);
    const ProgramResult second = run(checkout_ + "/run", {"a.xml"});
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.errors, "");
    EXPECT_EQ(record().find("--preset"), record().rfind("--preset")) << record();
}

TEST_F(SetUpScripts, configuresAgainInAMovedCheckout) {
    fakeBuildTools();
    fakeProgram("vornic-repair");
    EXPECT_EQ(run(checkout_ + "/run", {"a.xml"}).status, 0);
    fs::rename(checkout_, sandbox.path("moved"));
    EXPECT_EQ(run(sandbox.path("moved/run"), {"a.xml"}).status, 0);
    EXPECT_NE(record().find("cmake --preset release --fresh"), std::string::npos) << record();
}

TEST_F(SetUpScripts, installsWhatIsMissingOnDebian) {
    fakeDebian();
    fakeProgram("vornic-repair");
    fakeTool("sudo", "exec \"$@\"");
    const ProgramResult result = run(checkout_ + "/run", {"a.xml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.errors.find("run: installing g++ cmake ninja-build pkgconf libpugixml-dev"),
              std::string::npos)
        << result.errors;
    EXPECT_NE(record().find("apt-get -q update\n"), std::string::npos) << record();
    EXPECT_NE(record().find("--no-install-recommends install g++ cmake"), std::string::npos)
        << record();
    EXPECT_NE(record().find("sudo env "), std::string::npos) << record();
}

TEST_F(SetUpScriptsAsRoot, needsNoSudo) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "not root";
    }
    fakeDebian();
    fakeProgram("vornic-repair");
    EXPECT_EQ(run(checkout_ + "/run", {"a.xml"}).status, 0);
    EXPECT_NE(record().find("apt-get -q update\n"), std::string::npos) << record();
}

TEST_F(SetUpScripts, saysWhatRootHasToDoWhereThereIsNoSudo) {
    fakeDebian();
    const ProgramResult result = run(checkout_ + "/run", {"a.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("not root, and there is no sudo. As root: apt-get update && "
                                 "apt-get install g++ cmake ninja-build"),
              std::string::npos)
        << result.errors;
    EXPECT_EQ(record().find("apt-get"), std::string::npos) << record();
}

TEST_F(SetUpScripts, doesWithoutWhatOnlySavesTime) {
    fakeDebian();
    fakeBuildTools();
    removeTool("ccache");
    fakeProgram("vornic-repair");
    const ProgramResult result = run(checkout_ + "/run", {"a.xml"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(record().find("apt-get"), std::string::npos) << record();
}

TEST_F(SetUpScripts, installsOtherPeoplesToolsForTheTests) {
    fakeDebian();
    fakeBuildTools();
    fakeTool("sudo", "exec \"$@\"");
    fakeTool("ctest");
    EXPECT_EQ(run(checkout_ + "/test").status, 0);
    // The accessibility bus is there or not, as a file and no program.
    EXPECT_THAT(record(),
                ::testing::ContainsRegex(
                    "install unzip libarchive-tools xdg-utils file libxml2-utils xvfb xdotool "
                    "openbox dbus-daemon sway( qt6-wayland)? libglib2.0-bin( gvfs)?( "
                    "at-spi2-core)? x11-xkb-utils locales "
                    "groff-base zsh fish( polkitd)? pkexec\n"))
        << record();
}

TEST_F(SetUpScripts, testsWithoutOtherPeoplesToolsWhereTheyCannotBeHad) {
    fakeTool("dpkg");
    fakeBuildTools();
    fakeTool("sudo", "exec \"$@\"");
    fakeTool("apt-get", "exit 100");
    fakeTool("ctest");
    EXPECT_EQ(run(checkout_ + "/test").status, 0);
    EXPECT_NE(record().find("ctest "), std::string::npos) << record();
}

TEST_F(SetUpScripts, givesUpWhenTheInstallationFails) {
    fakeTool("dpkg");
    fakeTool("sudo", "exec \"$@\"");
    fakeTool("apt-get", "echo 'E: no network'; exit 100");
    const ProgramResult result = run(checkout_ + "/test");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("E: no network"), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find("test: install what is missing and start again"),
              std::string::npos)
        << result.errors;
}

TEST_F(SetUpScripts, repairsFilesOfTheCallersFolderThroughALink) {
    fakeBuildTools();
    fakeProgram("vornic-repair");
    fs::create_symlink(checkout_ + "/run", sandbox.path("repair files"));
    const ProgramResult result = run("repair files", {"a file.xml", "--quiet", "b'.xml"});
    EXPECT_EQ(result.output, "<" + sandbox.folder() + ">\n<a file.xml>\n<--quiet>\n<b'.xml>\n");
}

TEST_F(SetUpScripts, checksFilesWhenAsked) {
    fakeBuildTools();
    fakeProgram("vornic-check");
    const ProgramResult result = run(checkout_ + "/run", {"--check", "--least", "info", "a b.xml"});
    EXPECT_EQ(result.output, "<" + sandbox.folder() + ">\n<--least>\n<info>\n<a b.xml>\n");
}

TEST_F(SetUpScripts, reportsMediaWhenAsked) {
    fakeBuildTools();
    fakeProgram("vornic-media");
    const ProgramResult result = run(checkout_ + "/run", {"--media", "missing", "a b.xml"});
    EXPECT_EQ(result.output, "<" + sandbox.folder() + ">\n<missing>\n<a b.xml>\n");
}

TEST_F(SetUpScripts, convertsToTheVersionThatIsNamed) {
    fakeBuildTools();
    fakeProgram("vornic-convert");
    const ProgramResult result = run(checkout_ + "/run", {"--convert", "1.10", "--strict", "a b"});
    EXPECT_EQ(result.output, "<" + sandbox.folder() + ">\n<--to>\n<1.10>\n<--strict>\n<a b>\n");
    const ProgramResult unnamed = run(checkout_ + "/run", {"--convert"});
    EXPECT_EQ(unnamed.status, 2);
    EXPECT_NE(unnamed.errors.find("./run --convert VERSION FILE..."), std::string::npos);
}

TEST_F(SetUpScripts, startsTheDesktopProgramThroughTheEntryPoint) {
    fakeBuildTools();
    fakeProgram("vornic");
    fakeProgram("vornic-desktop");
    const ProgramResult result = run(checkout_ + "/run", {"--desktop", "a file.xml"});
    EXPECT_EQ(result.output, "<" + sandbox.folder() + ">\n<a file.xml>\n");
}

TEST_F(SetUpScripts, passesArgumentsOnToCtest) {
    fakeBuildTools();
    fakeTool("ctest", "printf '<%s>\\n' \"$PWD\" \"$@\"");
    const ProgramResult result = run(checkout_ + "/test", {"-R", "Reader|Writer"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(result.output.starts_with("<" + checkout_ + ">\n<--preset>\n<release>\n"))
        << result.output;
    EXPECT_TRUE(result.output.ends_with("<-R>\n<Reader|Writer>\n")) << result.output;
}

TEST_F(SetUpScripts, countsAndNamesTheSkippedTestsBeforeCtestsOwnSummary) {
    fakeBuildTools();
    const std::string summary =
        "100% tests passed, 0 tests failed out of 4\n"
        "\n"
        "Total Test time (real) =   0.10 sec\n"
        "\n"
        "The following tests did not run:\n"
        "\t  2 - Sudo.refuses (Skipped)\n"
        "\t  3 - Names/Odd.byte/0  # GetParam() = \"a b\" (Skipped)\n"
        "\t  4 - Off.now (Disabled)\n";
    const std::string log =
        "2/4 Testing: Sudo.refuses\n"
        "/a/b.cpp:129: Skipped\n"
        "sudo is not installed\n"
        "\n"
        "3/4 Testing: Names/Odd.byte/0  # GetParam() = \"a b\"\n"
        "nothing\n";
    sandbox.write("summary", summary);
    sandbox.write("log", log);
    fakeTool("ctest",
             "mkdir -p build/release/Testing/Temporary\n"
             "cat '" +
                 sandbox.path("log") +
                 "' >build/release/Testing/Temporary/LastTest.log\n"
                 "echo '1/4 Test #2: Sudo.refuses ...***Skipped   0.01 sec'\n"
                 "cat '" +
                 sandbox.path("summary") + "'");
    const ProgramResult result = run(checkout_ + "/test");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output,
              "1/4 Test #2: Sudo.refuses ...***Skipped   0.01 sec\n"
              "2 of the tests were skipped:\n"
              "  Sudo.refuses: sudo is not installed\n"
              "  Names/Odd.byte/0  # GetParam() = \"a b\": it does not say why\n"
              "\n" +
                  summary);
}

TEST_F(SetUpScripts, saysNothingOfSkippedTestsWhereThereAreNone) {
    fakeBuildTools();
    fakeTool("ctest", "echo before; echo '100% tests passed, 0 tests failed out of 1'; echo after");
    const ProgramResult result = run(checkout_ + "/test");
    EXPECT_EQ(result.output, "before\n100% tests passed, 0 tests failed out of 1\nafter\n");
}

TEST_F(SetUpScripts, endsWithCtestsOwnStatus) {
    fakeBuildTools();
    fakeTool("ctest", "echo '50% tests passed, 1 tests failed out of 2'; printf last; exit 8");
    const ProgramResult result = run(checkout_ + "/test");
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(result.output, "50% tests passed, 1 tests failed out of 2\nlast\n");
}

}  // namespace vornic::test
