#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>

#include "platform/session/DesktopEntry.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Command = std::vector<std::string>;

std::vector<Command> commandsFor(const std::string& exec, const Command& files) {
    return commandLines({.path = "/e/v.desktop", .name = "A Viewer", .icon = "eye", .exec = exec},
                        files);
}

constexpr const char* kViewer =
    "# a viewer\n"
    "[Desktop Entry]\n"
    "Type=Application\n"
    "Name = Viewer\n"
    "Name[de]=Betrachter\n"
    "Icon=eye\n"
    "Exec=viewer %F\n"
    "\n"
    "[Desktop Action new]\n"
    "Exec=viewer --new\n";

TEST(DesktopEntryTest, readsTheMainGroupInTheLanguageOfTheFile) {
    const auto entry = parseDesktopEntry(kViewer, "/e/v.desktop");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->path, "/e/v.desktop");
    EXPECT_EQ(entry->name, "Viewer");
    EXPECT_EQ(entry->icon, "eye");
    EXPECT_EQ(entry->exec, "viewer %F");
}

TEST(DesktopEntryTest, refusesWhatIsNoApplicationThatCanBeStarted) {
    EXPECT_FALSE(parseDesktopEntry("", "/e"));
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Link\nExec=a\n", "/e"));
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Application\n", "/e"));
    EXPECT_FALSE(parseDesktopEntry("Type=Application\nExec=a\n", "/e"));
    EXPECT_FALSE(
        parseDesktopEntry("[Desktop Entry]\nType=Application\nExec=a\nHidden=true\n", "/e"));
    EXPECT_TRUE(parseDesktopEntry("[Desktop Entry]\nType=Application\nExec=a\nHidden=false", "/e"));
}

TEST(DesktopEntryTest, resolvesTheEscapesOfStringValues) {
    const auto entry = parseDesktopEntry(
        "[Desktop Entry]\nType=Application\nName=a\\sb\\tc\\\\n\nExec=run \"\\\\$x\" \\q\n", "/e");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->name, "a b\tc\\n");
    EXPECT_EQ(entry->exec, "run \"\\$x\" \\q");
}

TEST(DesktopEntryTest, cutsTheCommandLineAtBlanksOutsideQuotationMarks) {
    EXPECT_THAT(commandsFor(R"(  run   "a b" -x=" y"z "\"\$\`\\" "" %F)", {}),
                ElementsAre(Command{"run", "a b", "-x= yz", R"("$`\)", ""}));
}

TEST(DesktopEntryTest, hasNoCommandLineForAMalformedOne) {
    EXPECT_THAT(commandsFor("run \"a b", {}), IsEmpty());
    EXPECT_THAT(commandsFor("run \"a b\\", {}), IsEmpty());
    EXPECT_THAT(commandsFor("   ", {}), IsEmpty());
}

TEST(DesktopEntryTest, putsAllFilesInThePlaceOfAList) {
    EXPECT_THAT(commandsFor("run %F -x", {"/a b", "/c"}),
                ElementsAre(Command{"run", "/a b", "/c", "-x"}));
    EXPECT_THAT(commandsFor("run %U", {"/a b", "/c"}),
                ElementsAre(Command{"run", "file:///a%20b", "file:///c"}));
}

TEST(DesktopEntryTest, startsTheProgramOnceForEachFileWhenItTakesOne) {
    EXPECT_THAT(commandsFor("run %f", {"/a", "/b"}),
                ElementsAre(Command{"run", "/a"}, Command{"run", "/b"}));
    EXPECT_THAT(
        commandsFor("run --open=%u", {"/a", "/b"}),
        ElementsAre(Command{"run", "--open=file:///a"}, Command{"run", "--open=file:///b"}));
    EXPECT_THAT(commandsFor("run %f", {}), ElementsAre(Command{"run"}));
}

TEST(DesktopEntryTest, appendsFilesWhereNoPlaceIsMeantForThem) {
    EXPECT_THAT(commandsFor("run -x", {"/a", "/b"}), ElementsAre(Command{"run", "-x", "/a", "/b"}));
    EXPECT_THAT(commandsFor("run 100%%f", {"/a"}), ElementsAre(Command{"run", "100%f", "/a"}));
}

TEST(DesktopEntryTest, fillsInIconNameAndPath) {
    EXPECT_THAT(
        commandsFor("run %i -c %c --from=%k %%", {}),
        ElementsAre(Command{"run", "--icon", "eye", "-c", "A Viewer", "--from=/e/v.desktop", "%"}));
    EXPECT_THAT(commandLines({.path = "/e", .name = "", .icon = "", .exec = "run %i x"}, {}),
                ElementsAre(Command{"run", "x"}));
}

TEST(DesktopEntryTest, leavesOutCodesThatMeanNothingAnyMore) {
    EXPECT_THAT(commandsFor("run %d %m a%vb 5%", {}), ElementsAre(Command{"run", "ab", "5%"}));
}

TEST(DesktopEntryTest, takesQuotedPercentSignsForThemselves) {
    EXPECT_THAT(commandsFor("run \"%F\"", {"/a"}), ElementsAre(Command{"run", "%F", "/a"}));
}

TEST(DesktopEntryTest, escapesThePathOfAnAddress) {
    EXPECT_EQ(fileURL("/Plain-1._~/x"), "file:///Plain-1._~/x");
    EXPECT_EQ(fileURL("/a b%#?\xC3\xA9\xFF"), "file:///a%20b%25%23%3F%C3%A9%FF");
}

class DesktopEntryFilesTest : public test::SandboxTest {
  protected:
    DesktopEntryFilesTest() {
        std::filesystem::create_directories(usersFolder);
        std::filesystem::create_directories(sandbox.path("share/applications"));
        setenv("XDG_DATA_DIRS", sandbox.path("share").c_str(), 1);
    }
    ~DesktopEntryFilesTest() override { unsetenv("XDG_DATA_DIRS"); }

    std::string usersFolder = sandbox.home() + "/.local/share/applications";
};

TEST_F(DesktopEntryFilesTest, isFoundByIdentifierInTheFoldersForSharedData) {
    EXPECT_FALSE(findDesktopEntry("com.example.Viewer"));
    const std::string shared =
        sandbox.write("share/applications/com.example.Viewer.desktop", kViewer);
    ASSERT_TRUE(findDesktopEntry("com.example.Viewer"));
    EXPECT_EQ(findDesktopEntry("com.example.Viewer")->path, shared);
    std::filesystem::copy_file(shared, usersFolder + "/com.example.Viewer.desktop");
    EXPECT_EQ(findDesktopEntry("com.example.Viewer")->path,
              usersFolder + "/com.example.Viewer.desktop");
}

TEST_F(DesktopEntryFilesTest, hidesTheMachinesEntryBehindAHiddenOneOfTheUser) {
    const std::string shared =
        sandbox.write("share/applications/com.example.Viewer.desktop", kViewer);
    const std::string hidden = sandbox.write("hidden", "[Desktop Entry]\nHidden=true\n");
    std::filesystem::copy_file(hidden, usersFolder + "/com.example.Viewer.desktop");
    EXPECT_FALSE(findDesktopEntry("com.example.Viewer"));
}

TEST_F(DesktopEntryFilesTest, isLookedForNowhereElse) {
    sandbox.write("share/com.example.Viewer.desktop", kViewer);
    EXPECT_FALSE(findDesktopEntry("../com.example.Viewer"));
    EXPECT_FALSE(findDesktopEntry(""));
}

}  // namespace
}  // namespace vornic::platform
