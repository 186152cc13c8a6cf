#include <cerrno>
#include <filesystem>
#include <set>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/files/FileSystem.h"
#include "platform/volumes/Trash.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/fakes/FailingSystemCall.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/RightsOfRoot.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/ScopedEnvironment.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ChildProcess.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

class TrashTest : public ::testing::Test {
  protected:
    /// Puts a new file of that name into the Trash.
    std::optional<TrashedItem> take(const std::string& name, const std::string& bytes = "x") {
        sandbox.write(name, bytes);
        return takeWhatIsThere(name, name);
    }
    std::optional<TrashedItem> takeWhatIsThere(const std::string& name,
                                               const std::string& originalName) {
        error.reset();
        const std::optional<Trash> trash = Trash::open(place, error);
        std::optional<HeldPath> item = holdPath(sandbox.path(name));
        EXPECT_TRUE(item);
        return trash && item ? trash->take(*item, originalName, error) : std::nullopt;
    }
    [[nodiscard]] std::string info(const std::string& name) const {
        return desktops + "/info/" + name + ".trashinfo";
    }
    [[nodiscard]] std::string reason() const { return error ? error->description : ""; }

    test::Unprivileged user;
    test::Sandbox sandbox;
    std::string place = sandbox.home() + "/.Trash";
    std::string desktops = sandbox.home() + "/.local/share/Trash";
    ErrorSlot error;
};

TEST_F(TrashTest, isALinkToTheDesktopsInAFreshHome) {
    const std::optional<TrashedItem> item = take("Cut.xml", "text");
    ASSERT_TRUE(item) << reason();
    EXPECT_EQ(fs::read_symlink(place), desktops + "/files");
    EXPECT_EQ(item->path(), fs::canonical(desktops).string() + "/files/Cut.xml");
    EXPECT_EQ(test::readBytes(place + "/Cut.xml"), "text");
    for (const char* folder : {"", "/files", "/info"}) {
        EXPECT_EQ(test::fileState(desktops + folder).mode, S_IFDIR | 0700U) << folder;
    }
    EXPECT_EQ(test::fileState(sandbox.home() + "/.local").mode, S_IFDIR | 0700U);
}

TEST_F(TrashTest, followsTheDataFolderOfTheEnvironment) {
    const test::ScopedEnvironment data("XDG_DATA_HOME", sandbox.path("data"));
    ASSERT_TRUE(take("Cut.xml")) << reason();
    EXPECT_TRUE(test::exists(sandbox.path("data/Trash/files/Cut.xml")));
    EXPECT_TRUE(test::exists(sandbox.path("data/Trash/info/Cut.xml.trashinfo")));
}

TEST_F(TrashTest, notesPlaceAndDateOfEachItem) {
    ASSERT_TRUE(take("Cut 100% \xC3\xA9\xFF\n.xml")) << reason();
    const std::string note = info("Cut 100% \xC3\xA9\xFF\n.xml");
    EXPECT_EQ(test::fileState(note).mode, S_IFREG | 0600U);
    EXPECT_THAT(test::readBytes(note),
                MatchesRegex("\\[Trash Info\\]\nPath=" + fs::canonical(sandbox.folder()).string() +
                             "/Cut%20100%25%20%C3%A9%FF%0A\\.xml\nDeletionDate=[0-9]{4}-[0-9]{2}-"
                             "[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\n"));
}

TEST_F(TrashTest, notesThePlaceWithLinksInItsFoldersResolved) {
    fs::create_directory(sandbox.path("real"));
    fs::create_directory_symlink("real", sandbox.path("alias"));
    sandbox.write("real/Cut.xml", "x");
    const std::optional<Trash> trash = Trash::open(place, error);
    const std::optional<HeldPath> item = holdPath(sandbox.path("alias/Cut.xml"));
    ASSERT_TRUE(trash && item && trash->take(*item, "Cut.xml", error));
    EXPECT_THAT(test::readBytes(info("Cut.xml")), HasSubstr("/real/Cut.xml\n"));
}

TEST_F(TrashTest, keepsTheNameThatAnItemHad) {
    sandbox.write("Cut-backup.xml", "original");
    const std::optional<TrashedItem> item = takeWhatIsThere("Cut-backup.xml", "Cut.xml");
    ASSERT_TRUE(item) << reason();
    EXPECT_EQ(item->name, "Cut.xml");
    EXPECT_EQ(test::readBytes(place + "/Cut.xml"), "original");
    EXPECT_THAT(test::readBytes(info("Cut.xml")), HasSubstr("/files/Cut.xml\n"));
    EXPECT_FALSE(test::exists(sandbox.path("Cut-backup.xml")));
}

TEST_F(TrashTest, takesANameThatIsFreeAmongItemsAndNotes) {
    ASSERT_TRUE(take("Cut.xml", "1"));
    test::writeBytes(desktops + "/files/Cut 2.xml", "without a note");
    test::writeBytes(info("Cut 3.xml"), "without an item");
    const std::optional<TrashedItem> item = take("Cut.xml", "2");
    ASSERT_TRUE(item) << reason();
    EXPECT_EQ(item->name, "Cut 4.xml");
    EXPECT_EQ(test::readBytes(desktops + "/files/Cut 2.xml"), "without a note");
    EXPECT_EQ(test::readBytes(info("Cut 3.xml")), "without an item");
    EXPECT_FALSE(test::exists(info("Cut 2.xml")));
}

TEST_F(TrashTest, leavesRoomForTheNoteInALongName) {
    const std::string name = std::string(251, 'n') + ".xml";
    const std::optional<TrashedItem> item = take(name);
    ASSERT_TRUE(item) << reason();
    EXPECT_EQ(item->name, std::string(241, 'n') + ".xml");
    EXPECT_TRUE(test::exists(info(item->name)));
    EXPECT_THAT(test::readBytes(info(item->name)), HasSubstr("/" + name + "\n"));
}

TEST_F(TrashTest, usesAFolderThatIsThereAsItIs) {
    fs::create_directory(place);
    fs::permissions(place, static_cast<fs::perms>(0755));
    const std::optional<TrashedItem> item = take("Cut.xml");
    ASSERT_TRUE(item) << reason();
    EXPECT_EQ(item->folder, fs::canonical(place).string());
    EXPECT_THAT(test::namesIn(place), ElementsAre("Cut.xml"));
    EXPECT_EQ(test::fileState(place).mode, S_IFDIR | 0755U);
    EXPECT_FALSE(test::exists(desktops));
}

TEST_F(TrashTest, isAPlainFolderInASandbox) {
    for (const char* variable : {"FLATPAK_ID", "SNAP"}) {
        const test::ScopedEnvironment sandboxed(variable, "something");
        ASSERT_TRUE(take("Cut.xml")) << reason();
        EXPECT_FALSE(fs::is_symlink(place)) << variable;
        EXPECT_EQ(test::fileState(place).mode, S_IFDIR | 0700U);
        fs::remove_all(place);
    }
    EXPECT_FALSE(test::exists(desktops));
}

TEST_F(TrashTest, isAPlainFolderWhereTheDesktopsIsOpenToOthers) {
    fs::create_directories(desktops + "/files");
    fs::permissions(desktops + "/files", static_cast<fs::perms>(0755));
    ASSERT_TRUE(take("Cut.xml")) << reason();
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(place)));
    EXPECT_THAT(test::namesIn(desktops + "/files"), IsEmpty());
}

TEST_F(TrashTest, isAPlainFolderWhereTheDesktopsCannotBeMade) {
    fs::create_directories(sandbox.home() + "/.local");
    test::writeBytes(sandbox.home() + "/.local/share", "no folder");
    ASSERT_TRUE(take("Cut.xml")) << reason();
    EXPECT_THAT(test::namesIn(place), ElementsAre("Cut.xml"));
}

TEST_F(TrashTest, isAPlainFolderElsewhereThanAtHome) {
    place = sandbox.path("Trash");
    ASSERT_TRUE(take("Cut.xml")) << reason();
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(place)));
    EXPECT_FALSE(test::exists(desktops));
}

TEST_F(TrashTest, makesTheDesktopsAnewWhenAllOfItWasRemoved) {
    ASSERT_TRUE(take("Cut.xml", "1"));
    fs::remove_all(desktops);
    ASSERT_TRUE(take("Cut.xml", "2")) << reason();
    EXPECT_EQ(test::readBytes(place + "/Cut.xml"), "2");
    EXPECT_TRUE(test::exists(info("Cut.xml")));
}

TEST_F(TrashTest, usesALinkToAPrivateFolderOfTheUsersOwn) {
    fs::create_directory(sandbox.path("mine"));
    fs::permissions(sandbox.path("mine"), fs::perms::owner_all);
    fs::create_directory_symlink(sandbox.path("mine"), place);
    ASSERT_TRUE(take("Cut.xml")) << reason();
    EXPECT_THAT(test::namesIn(sandbox.path("mine")), ElementsAre("Cut.xml"));
    EXPECT_FALSE(test::exists(desktops));
}

TEST_F(TrashTest, refusesALinkToAFolderThatOthersCanRead) {
    fs::create_directory(sandbox.path("open"));
    fs::permissions(sandbox.path("open"), static_cast<fs::perms>(0750));
    fs::create_directory_symlink(sandbox.path("open"), place);
    EXPECT_FALSE(take("Cut.xml"));
    EXPECT_EQ(reason(), "The folder " + place +
                            " cannot be used as the Trash: it is a link to a folder that is not "
                            "for you alone.");
    EXPECT_TRUE(test::exists(sandbox.path("Cut.xml")));
    EXPECT_THAT(test::namesIn(sandbox.path("open")), IsEmpty());
}

TEST_F(TrashTest, refusesALinkThatLeadsNowhereOrToAFile) {
    sandbox.write("file", "kept");
    for (const std::string& target : {sandbox.path("missing"), sandbox.path("file"), place}) {
        fs::create_symlink(target, place);
        EXPECT_FALSE(take("Cut.xml")) << target;
        EXPECT_THAT(reason(), HasSubstr(place + " cannot be used as the Trash: "));
        EXPECT_TRUE(test::exists(sandbox.path("Cut.xml")));
        fs::remove(place);
    }
    EXPECT_EQ(test::readBytes(sandbox.path("file")), "kept");
    EXPECT_FALSE(test::exists(sandbox.path("missing")));
}

TEST_F(TrashTest, refusesALinkOrATargetOfAnotherUser) {
    const test::SecondVolume foreign;
    const bool isRoot = [&] {
        const test::RightsOfRoot root;
        if (!root.available()) {
            return false;
        }
        fs::create_directory(foreign.path("theirs"));
        fs::permissions(foreign.path("theirs"), fs::perms::owner_all);
        // The link is root's, its target the user's.
        fs::create_directory_symlink(desktops + "/files", place);
        return true;
    }();
    if (!isRoot) {
        GTEST_SKIP() << "needs root's rights";
    }
    fs::create_directories(desktops + "/files");
    fs::permissions(desktops + "/files", fs::perms::owner_all);
    EXPECT_FALSE(take("Cut.xml"));
    EXPECT_EQ(reason(), "The folder " + place +
                            " cannot be used as the Trash: it is a link that belongs to somebody "
                            "else.");
    fs::remove(place);
    // The link is the user's, its target root's.
    fs::create_directory_symlink(foreign.path("theirs"), place);
    EXPECT_FALSE(take("Cut.xml"));
    EXPECT_TRUE(test::exists(sandbox.path("Cut.xml")));
}

TEST_F(TrashTest, isAPlainFolderForRootInAnothersHome) {
    const test::RightsOfRoot root;
    if (!root.available()) {
        GTEST_SKIP() << "needs root's rights";
    }
    ASSERT_TRUE(take("Cut.xml")) << reason();
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(place)));
    EXPECT_FALSE(test::exists(desktops));
}

TEST_F(TrashTest, refusesNotesThatWouldGoThroughALink) {
    fs::create_directories(desktops + "/files");
    fs::permissions(desktops + "/files", fs::perms::owner_all);
    fs::create_directory(sandbox.path("elsewhere"));
    fs::create_directory_symlink(sandbox.path("elsewhere"), desktops + "/info");
    fs::create_directory_symlink(desktops + "/files", place);
    EXPECT_FALSE(take("Cut.xml"));
    EXPECT_THAT(reason(), HasSubstr("what is put into it cannot be noted down."));
    EXPECT_THAT(test::namesIn(sandbox.path("elsewhere")), IsEmpty());
    EXPECT_TRUE(test::exists(sandbox.path("Cut.xml")));
}

TEST_F(TrashTest, takesTheNoteAwayWhenTheMoveFails) {
    ASSERT_TRUE(take("first"));
    fs::create_directory(sandbox.path("closed"));
    sandbox.write("closed/Cut.xml", "x");
    fs::permissions(sandbox.path("closed"), static_cast<fs::perms>(0500));
    const std::string closed = fs::canonical(sandbox.path("closed")).string();
    const std::optional<HeldPath> item = holdPath(sandbox.path("closed/Cut.xml"));
    const std::optional<Trash> trash = Trash::open(place, error);
    ASSERT_TRUE(item && trash);
    EXPECT_FALSE(trash->take(*item, "Cut.xml", error));
    fs::permissions(sandbox.path("closed"), fs::perms::owner_all);
    EXPECT_EQ(reason(), "The file " + closed + "/Cut.xml cannot be moved to " + trash->folder() +
                            "/Cut.xml: permission denied.");
    EXPECT_THAT(test::namesIn(desktops + "/info"), ElementsAre("first.trashinfo"));
    EXPECT_THAT(test::namesIn(desktops + "/files"), ElementsAre("first"));
}

TEST_F(TrashTest, leavesAnItemThatCannotBeNoted) {
    ASSERT_TRUE(take("first"));
    fs::permissions(desktops + "/info", static_cast<fs::perms>(0500));
    EXPECT_FALSE(take("Cut.xml"));
    fs::permissions(desktops + "/info", fs::perms::owner_all);
    EXPECT_THAT(reason(), HasSubstr("Cut.xml cannot be moved to the Trash: permission denied."));
    EXPECT_TRUE(test::exists(sandbox.path("Cut.xml")));
    EXPECT_THAT(test::namesIn(desktops + "/files"), ElementsAre("first"));
}

TEST_F(TrashTest, staysWithTheFolderThatItHasOpened) {
    ASSERT_TRUE(take("first"));
    const std::optional<Trash> trash = Trash::open(place, error);
    sandbox.write("Cut.xml", "x");
    const std::optional<HeldPath> item = holdPath(sandbox.path("Cut.xml"));
    ASSERT_TRUE(trash && item);
    fs::create_directory(sandbox.path("other"));
    fs::remove(place);
    fs::create_directory_symlink(sandbox.path("other"), place);
    fs::rename(desktops, sandbox.home() + "/moved");
    fs::create_directories(desktops + "/files");
    EXPECT_TRUE(trash->take(*item, "Cut.xml", error)) << reason();
    EXPECT_THAT(test::namesIn(sandbox.home() + "/moved/files"), ElementsAre("Cut.xml", "first"));
    EXPECT_THAT(test::namesIn(sandbox.path("other")), IsEmpty());
    EXPECT_THAT(test::namesIn(desktops + "/files"), IsEmpty());
}

TEST_F(TrashTest, staysWithTheFolderOfTheItem) {
    fs::create_directory(sandbox.path("folder"));
    sandbox.write("folder/Cut.xml", "meant");
    const std::optional<HeldPath> item = holdPath(sandbox.path("folder/Cut.xml"));
    const std::optional<Trash> trash = Trash::open(place, error);
    ASSERT_TRUE(trash && item);
    fs::rename(sandbox.path("folder"), sandbox.path("moved"));
    fs::create_directory(sandbox.path("folder"));
    sandbox.write("folder/Cut.xml", "another");
    EXPECT_TRUE(trash->take(*item, "Cut.xml", error)) << reason();
    EXPECT_EQ(test::readBytes(place + "/Cut.xml"), "meant");
    EXPECT_EQ(test::readBytes(sandbox.path("folder/Cut.xml")), "another");
}

TEST_F(TrashTest, takesFromAnotherVolumeWithANote) {
    const test::SecondVolume other;
    if (!other.isApartFrom(sandbox.folder())) {
        GTEST_SKIP() << "/dev/shm is no volume of its own";
    }
    ASSERT_TRUE(take("Cut.xml", "1"));
    test::writeBytes(other.path("Cut.xml"), "2");
    const std::optional<HeldPath> item = holdPath(other.path("Cut.xml"));
    const std::optional<Trash> trash = Trash::open(place, error);
    ASSERT_TRUE(trash && item);
    const std::optional<TrashedItem> taken = trash->take(*item, "Cut.xml", error);
    ASSERT_TRUE(taken) << reason();
    EXPECT_EQ(taken->name, "Cut 2.xml");
    EXPECT_EQ(test::readBytes(taken->path()), "2");
    EXPECT_THAT(test::namesIn(other.folder()), IsEmpty());
    EXPECT_THAT(test::namesIn(desktops + "/info"),
                ElementsAre("Cut 2.xml.trashinfo", "Cut.xml.trashinfo"));
    EXPECT_THAT(test::namesIn(desktops + "/files"), ElementsAre("Cut 2.xml", "Cut.xml"));
}

TEST_F(TrashTest, renewsTheNoteOfAnItemThatTookAnothersPlace) {
    ASSERT_TRUE(take("Cut.xml"));
    const std::optional<Trash> trash = Trash::open(place, error);
    ASSERT_TRUE(trash);
    EXPECT_EQ(trash->replaceInfo("Cut.xml", "/elsewhere/Cut.xml"), 0);
    EXPECT_THAT(test::readBytes(info("Cut.xml")), HasSubstr("Path=/elsewhere/Cut.xml\n"));
    trash->removeInfo("Cut.xml");
    EXPECT_THAT(test::namesIn(desktops + "/info"), IsEmpty());
}

TEST_F(TrashTest, losesNoItemWhenTwoThreadsUseOneName) {
    constexpr int kFiles = 100;
    const auto work = [this](const std::string& folder) {
        fs::create_directory(sandbox.path(folder));
        for (int count = 0; count < kFiles; ++count) {
            ErrorSlot own;
            test::writeBytes(sandbox.path(folder + "/Cut.xml"), folder + std::to_string(count));
            const std::optional<HeldPath> item = holdPath(sandbox.path(folder + "/Cut.xml"));
            const std::optional<Trash> trash = Trash::open(place, own);
            EXPECT_TRUE(trash && item && trash->take(*item, "Cut.xml", own));
        }
    };
    std::thread first(work, "a");
    std::thread second(work, "b");
    first.join();
    second.join();
    std::set<std::string> contents;
    std::set<std::string> notes;
    for (const std::string& name : test::namesIn(desktops + "/files")) {
        contents.insert(test::readBytes(place + "/" + name));
        notes.insert(name + ".trashinfo");
    }
    EXPECT_EQ(contents.size(), 2U * kFiles);
    EXPECT_THAT(test::namesIn(desktops + "/info"), testing::ElementsAreArray(notes));
}

/// GLib's own client lists what is there and puts it back.
TEST_F(TrashTest, isListedAndRestoredByAFileManagersTool) {
    for (const char* tool :
         {"/usr/bin/dbus-run-session", "/usr/bin/gio", "/usr/libexec/gvfsd-trash"}) {
        if (!test::exists(tool)) {
            GTEST_SKIP() << "needs " << tool;
        }
    }
    const std::string runtime = sandbox.home() + "/run";
    fs::create_directory(runtime);
    fs::permissions(runtime, fs::perms::owner_all);
    const auto gio = [&](const std::vector<std::string>& arguments) {
        std::vector<std::string> line{"--", "/usr/bin/gio", "trash"};
        line.insert(line.end(), arguments.begin(), arguments.end());
        return test::runProgram(
            {.program = "/usr/bin/dbus-run-session",
             .arguments = line,
             .environment = {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", "HOME=" + sandbox.home(),
                             "XDG_DATA_HOME=" + sandbox.home() + "/.local/share",
                             "XDG_RUNTIME_DIR=" + runtime}});
    };
    const std::string folder = fs::canonical(sandbox.folder()).string();
    ASSERT_TRUE(take("Cut 1.xml", "first"));
    ASSERT_TRUE(take("Cut 1.xml", "second"));
    const test::ProgramResult listed = gio({"--list"});
    EXPECT_EQ(listed.status, 0) << listed.errors;
    EXPECT_THAT(listed.output, HasSubstr("trash:///Cut%201.xml\t" + folder + "/Cut 1.xml\n"));
    EXPECT_THAT(listed.output, HasSubstr("trash:///Cut%201%202.xml\t" + folder + "/Cut 1.xml\n"));
    const test::ProgramResult restored = gio({"--restore", "trash:///Cut%201%202.xml"});
    EXPECT_EQ(restored.status, 0) << restored.errors;
    EXPECT_EQ(test::readBytes(sandbox.path("Cut 1.xml")), "second");
    EXPECT_THAT(test::namesIn(desktops + "/files"), ElementsAre("Cut 1.xml"));
    EXPECT_THAT(test::namesIn(desktops + "/info"), ElementsAre("Cut 1.xml.trashinfo"));
}

}  // namespace
}  // namespace vornic::platform
