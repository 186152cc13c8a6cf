#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

class BundleTest : public test::SandboxTest {
  protected:
    /// Makes `Vornic.app` with a resource in a folder below the sandbox's.
    std::string makeBundle(const std::string& folder) {
        std::string path = sandbox.path(folder) + "/Vornic.app";
        fs::create_directories(path + "/Contents/Resources");
        fs::create_directories(path + "/Contents/MacOS");
        std::ofstream(path + "/Contents/Resources/probe.txt") << "text";
        return path;
    }
};

/// What the probe at a path tells, line by line.
std::vector<std::string> tellings(const std::string& path) {
    const test::ProgramResult result =
        test::runProgram({.program = path, .arguments = {}, .environment = {}});
    EXPECT_EQ(result.status, 0) << result.errors;
    std::vector<std::string> lines;
    std::istringstream output(result.output);
    for (std::string line; std::getline(output, line);) {
        lines.push_back(line);
    }
    EXPECT_EQ(lines.size(), 4U) << result.output;
    lines.resize(4);
    return lines;
}

/// What a copy of the probe at a path tells.
std::vector<std::string> probeFrom(const std::string& path) {
    fs::create_directories(fs::path(path).parent_path());
    fs::copy_file(VORNIC_PLATFORM_PROBE, path, fs::copy_options::overwrite_existing);
    return tellings(path);
}

TEST_F(BundleTest, isFoundBesideTheFolderOfTheExecutableInABuildTree) {
    const std::string bundle = makeBundle("build/release");
    for (const char* folder : {"bin", "tests", "tests/more", "desktop/deeper/still"}) {
        const std::string probe = sandbox.path("build/release/") + folder + "/probe";
        EXPECT_EQ(probeFrom(probe),
                  (std::vector<std::string>{probe, bundle, "there",
                                            bundle + "/Contents/Resources/probe.txt"}));
    }
}

TEST_F(BundleTest, isFoundInTheLibraryFolderOfThePrefix) {
    const std::string bundle = makeBundle("prefix/lib/vornic");
    EXPECT_EQ(probeFrom(sandbox.path("prefix/bin/vornic"))[1], bundle);
    EXPECT_EQ(probeFrom(sandbox.path("prefix/libexec/vornic/helper"))[1], bundle);
}

TEST_F(BundleTest, isFoundFromTheProgramInIt) {
    const std::string bundle = makeBundle("Applications");
    EXPECT_EQ(probeFrom(bundle + "/Contents/MacOS/Vornic")[1], bundle);
}

TEST_F(BundleTest, prefersTheInstalledBundleToOneThatLiesAbout) {
    makeBundle("prefix");
    const std::string installed = makeBundle("prefix/lib/vornic");
    EXPECT_EQ(probeFrom(sandbox.path("prefix/bin/vornic"))[1], installed);
}

TEST_F(BundleTest, hasASensiblePathWhereThereIsNone) {
    const std::vector<std::string> told = probeFrom(sandbox.path("prefix/bin/vornic"));
    EXPECT_EQ(told[1], sandbox.path("prefix/lib/vornic/Vornic.app"));
    EXPECT_EQ(told[2], "missing");
    EXPECT_EQ(told[3], "nothing");
}

TEST_F(BundleTest, searchesTheDataFolderOfThePrefixAfterItsOwn) {
    const std::string bundle = makeBundle("prefix/lib/vornic");
    fs::create_directories(sandbox.path("prefix/share/vornic"));
    std::ofstream(sandbox.path("prefix/share/vornic/probe.txt")) << "text";
    EXPECT_EQ(probeFrom(sandbox.path("prefix/bin/vornic"))[3],
              bundle + "/Contents/Resources/probe.txt");
    fs::remove(bundle + "/Contents/Resources/probe.txt");
    EXPECT_EQ(probeFrom(sandbox.path("prefix/bin/vornic"))[3],
              sandbox.path("prefix/share/vornic/probe.txt"));
}

TEST_F(BundleTest, resolvesALinkToTheExecutable) {
    const std::string bundle = makeBundle("prefix/lib/vornic");
    probeFrom(sandbox.path("prefix/bin/vornic"));
    fs::create_directories(sandbox.path("elsewhere"));
    const std::string link = sandbox.path("elsewhere/vornic");
    fs::create_symlink(sandbox.path("prefix/bin/vornic"), link);
    EXPECT_EQ(tellings(link)[0], sandbox.path("prefix/bin/vornic"));
    EXPECT_EQ(tellings(link)[1], bundle);
}

TEST_F(BundleTest, readsStringsOfItsInformation) {
    const Bundle bundle(makeBundle("a"));
    EXPECT_EQ(bundle.infoString("CFBundleVersion"), std::nullopt);
    ErrorSlot error;
    PropertyList::Dictionary information{{"CFBundleVersion", "17"}, {"number", 3}};
    ASSERT_TRUE(PropertyList(std::move(information))
                    .writeFile(bundle.path() + "/Contents/Info.plist", error));
    EXPECT_EQ(bundle.infoString("CFBundleVersion"), "17");
    EXPECT_EQ(bundle.infoString("number"), std::nullopt);
    EXPECT_EQ(bundle.infoString("missing"), std::nullopt);
}

TEST_F(BundleTest, findsResourcesInItsOwnFolderFirst) {
    const std::string path = makeBundle("a");
    const std::string further = sandbox.path("further");
    fs::create_directories(further);
    std::ofstream(further + "/probe.txt") << "other";
    std::ofstream(further + "/plain") << "other";
    const Bundle bundle(path, {sandbox.path("none"), further});
    EXPECT_EQ(bundle.pathForResource("probe", "txt"), path + "/Contents/Resources/probe.txt");
    EXPECT_EQ(bundle.pathForResource("plain", ""), further + "/plain");
    EXPECT_EQ(bundle.pathForResource("probe", "plist"), std::nullopt);
    EXPECT_EQ(bundle.pathForResource("", ""), std::nullopt);
}

TEST_F(BundleTest, hasAPathWithoutTrailingSlash) {
    EXPECT_EQ(Bundle("/a/Vornic.app//").path(), "/a/Vornic.app");
    EXPECT_FALSE(Bundle("/a/Vornic.app/").exists());
    EXPECT_TRUE(Bundle(makeBundle("a") + "/").exists());
}

TEST_F(BundleTest, canBeChosenByTheProgram) {
    const std::string before = Bundle::mainBundle().path();
    Bundle::setMainBundle(Bundle("/chosen/Vornic.app"));
    EXPECT_EQ(Bundle::mainBundle().path(), "/chosen/Vornic.app");
    Bundle::setMainBundle(std::nullopt);
    EXPECT_EQ(Bundle::mainBundle().path(), before);
}

TEST_F(BundleTest, knowsApplicationAndExecutable) {
    EXPECT_EQ(applicationName(), "Vornic");
    EXPECT_EQ(executablePath(), fs::read_symlink("/proc/self/exe"));
}

class BundleExecutableTest : public BundleTest {
  protected:
    std::string path = makeBundle("apps");

    std::string makeExecutable(const std::string& name) const {
        const std::string file = path + "/Contents/MacOS/" + name;
        std::ofstream(file) << "#!/bin/sh\n";
        fs::permissions(file, fs::perms::owner_all);
        return file;
    }
    void nameExecutable(const char* name) const {
        ErrorSlot error;
        PropertyList::Dictionary information;
        information["CFBundleExecutable"] = name;
        ASSERT_TRUE(PropertyList(information).writeFile(path + "/Contents/Info.plist", error));
    }
};

TEST_F(BundleExecutableTest, isTheOneThatTheInformationNames) {
    const std::string file = makeExecutable("main");
    nameExecutable("main");
    EXPECT_EQ(Bundle(path).executablePath(), file);
}

TEST_F(BundleExecutableTest, hasTheBundlesNameWhenTheInformationNamesNone) {
    const std::string file = makeExecutable("Vornic");
    EXPECT_EQ(Bundle(path).executablePath(), file);
}

TEST_F(BundleExecutableTest, isNothingWhenItIsMissingOrCannotBeRun) {
    EXPECT_EQ(Bundle(path).executablePath(), std::nullopt);
    const std::string file = makeExecutable("Vornic");
    fs::permissions(file, fs::perms::owner_read);
    EXPECT_EQ(Bundle(path).executablePath(), std::nullopt);
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_EQ(Bundle(path).executablePath(), std::nullopt);
}

TEST_F(BundleExecutableTest, liesInTheBundleItself) {
    nameExecutable("../../../../../../../../../bin/sh");
    EXPECT_EQ(Bundle(path).executablePath(), std::nullopt);
}

}  // namespace
}  // namespace vornic::platform
