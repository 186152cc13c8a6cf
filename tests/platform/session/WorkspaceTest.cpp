#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileSystem.h"
#include "platform/session/Workspace.h"
#include "tests/platform/volumes/SecondVolume.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

std::set<std::string> namesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.insert(entry.path().filename());
    }
    return names;
}

class WorkspaceTest : public test::SandboxTest {
  protected:
    /// Puts a file of that name into the Trash.
    bool recycleOne(const std::string& name, const std::string& bytes = "x") {
        sandbox.write(name, bytes);
        return recycle(sandbox.folder(), trash, {name}, error);
    }

    std::string trash = sandbox.home() + "/.Trash";
    ErrorSlot error;
};

class WorkspacePermissionTest : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
    ErrorSlot error;
};

TEST_F(WorkspaceTest, makesAPrivateTrash) {
    EXPECT_TRUE(recycleOne("Cut.xml", "text"));
    EXPECT_EQ(test::readBytes(trash + "/Cut.xml"), "text");
    EXPECT_FALSE(test::exists(sandbox.path("Cut.xml")));
    EXPECT_EQ(fs::status(trash).permissions(), fs::perms::owner_all);
}

TEST_F(WorkspaceTest, putsANumberBeforeTheExtensionOfATakenName) {
    for (const char* bytes : {"1", "2", "3"}) {
        EXPECT_TRUE(recycleOne("Cut.xml", bytes));
    }
    EXPECT_EQ(test::readBytes(trash + "/Cut.xml"), "1");
    EXPECT_EQ(test::readBytes(trash + "/Cut 2.xml"), "2");
    EXPECT_EQ(test::readBytes(trash + "/Cut 3.xml"), "3");
}

TEST_F(WorkspaceTest, numbersNamesWithoutExtensionAtTheirEnd) {
    for (const char* name : {"name", ".profile", "end.", "Mr. Smith"}) {
        EXPECT_TRUE(recycleOne(name));
        EXPECT_TRUE(recycleOne(name));
    }
    EXPECT_EQ(namesIn(trash),
              (std::set<std::string>{"name", "name 2", ".profile", ".profile 2", "end.", "end. 2",
                                     "Mr. Smith", "Mr. Smith 2"}));
}

TEST_F(WorkspaceTest, keepsNamesThatAreNoText) {
    const std::string name = "a\xFF\n\x01.x\xFE";
    EXPECT_TRUE(recycleOne(name));
    EXPECT_TRUE(recycleOne(name));
    EXPECT_EQ(namesIn(trash), (std::set<std::string>{name, "a\xFF\n\x01 2.x\xFE"}));
}

TEST_F(WorkspaceTest, shortensALongNameForItsNumber) {
    std::string name;
    for (int count = 0; count < 125; ++count) {
        name += "\xC3\xA9";
    }
    name += ".fcpx";
    ASSERT_EQ(name.size(), 255U);
    fs::create_directory(trash);
    EXPECT_TRUE(recycleOne(name));
    EXPECT_TRUE(recycleOne(name));
    EXPECT_EQ(namesIn(trash), (std::set<std::string>{name, name.substr(0, 2 * 124) + " 2.fcpx"}));
}

TEST_F(WorkspaceTest, shortensALongNameWhoseDotIsNearItsBeginning) {
    const std::string name = "a." + std::string(253, 'x');
    fs::create_directory(trash);
    EXPECT_TRUE(recycleOne(name));
    EXPECT_TRUE(recycleOne(name));
    EXPECT_EQ(namesIn(trash), (std::set<std::string>{name, name.substr(0, 253) + " 2"}));
}

TEST_F(WorkspaceTest, takesADanglingLinkInTheTrashForATakenName) {
    fs::create_directory(trash);
    fs::create_symlink("nowhere", trash + "/Cut.xml");
    EXPECT_TRUE(recycleOne("Cut.xml"));
    EXPECT_TRUE(fs::is_symlink(trash + "/Cut.xml"));
    EXPECT_TRUE(test::exists(trash + "/Cut 2.xml"));
}

TEST_F(WorkspaceTest, movesALinkAndNotItsTarget) {
    sandbox.write("target", "x");
    fs::create_symlink("target", sandbox.path("link"));
    EXPECT_TRUE(recycle(sandbox.folder(), trash, {"link"}, error));
    EXPECT_TRUE(fs::is_symlink(trash + "/link"));
    EXPECT_TRUE(test::exists(sandbox.path("target")));
}

TEST_F(WorkspaceTest, movesFolders) {
    fs::create_directories(sandbox.path("Project/a"));
    sandbox.write("Project/a/file", "x");
    EXPECT_TRUE(recycle(sandbox.folder(), trash, {"Project"}, error));
    EXPECT_EQ(test::readBytes(trash + "/Project/a/file"), "x");
}

TEST_F(WorkspaceTest, movesEveryFileUntilOneFails) {
    sandbox.write("a", "");
    sandbox.write("c", "");
    EXPECT_FALSE(recycle(sandbox.folder(), trash, {"a", "missing", "c"}, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
    EXPECT_EQ(namesIn(trash), (std::set<std::string>{"a"}));
    EXPECT_TRUE(test::exists(sandbox.path("c")));
}

TEST_F(WorkspaceTest, refusesNamesThatLeadOutOfTheFolder) {
    sandbox.write("file", "x");
    for (const std::string& name : {std::string(), std::string("."), std::string(".."),
                                    std::string("../files/file"), std::string("file\0", 5)}) {
        EXPECT_FALSE(recycle(sandbox.folder(), trash, {name}, error)) << name;
    }
    EXPECT_TRUE(test::exists(sandbox.path("file")));
    EXPECT_TRUE(fs::is_empty(trash));
}

TEST_F(WorkspaceTest, failsWhenAFileStandsInTheTrashsPlace) {
    std::ofstream(trash) << "a file";
    EXPECT_FALSE(recycleOne("Cut.xml"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description,
              "The folder " + trash + " cannot be made: a file of that name exists already.");
    EXPECT_TRUE(test::exists(sandbox.path("Cut.xml")));
    EXPECT_EQ(test::readBytes(trash), "a file");
}

TEST_F(WorkspaceTest, doesNotMakeAHomeThatIsMissing) {
    fs::remove(sandbox.home());
    EXPECT_FALSE(recycleOne("Cut.xml"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
    EXPECT_FALSE(test::exists(sandbox.home()));
    EXPECT_TRUE(test::exists(sandbox.path("Cut.xml")));
}

TEST_F(WorkspaceTest, refusesATrashWithoutAPlace) {
    sandbox.write("Cut.xml", "x");
    EXPECT_FALSE(recycle(sandbox.folder(), "", {"Cut.xml"}, error));
    EXPECT_FALSE(recycle(sandbox.folder(), ".Trash", {"Cut.xml"}, error));
    EXPECT_TRUE(test::exists(sandbox.path("Cut.xml")));
}

TEST_F(WorkspaceTest, refusesToPutTheTrashIntoItself) {
    fs::create_directory(trash);
    EXPECT_FALSE(recycle(sandbox.home(), trash, {".Trash"}, error));
    EXPECT_TRUE(isDirectory(trash));
}

TEST_F(WorkspaceTest, movesToATrashOnAnotherVolume) {
    const test::SecondVolume other;
    if (!other.isApartFrom(sandbox.folder())) {
        GTEST_SKIP() << "/dev/shm is no volume of its own";
    }
    trash = other.path(".Trash");
    EXPECT_TRUE(recycleOne("Cut.xml", "1"));
    EXPECT_TRUE(recycleOne("Cut.xml", "2"));
    EXPECT_EQ(namesIn(trash), (std::set<std::string>{"Cut.xml", "Cut 2.xml"}));
    EXPECT_EQ(test::readBytes(trash + "/Cut 2.xml"), "2");
    EXPECT_TRUE(fs::is_empty(sandbox.folder()));
}

TEST_F(WorkspaceTest, losesNoFileWhenTwoThreadsUseOneName) {
    constexpr int kFiles = 200;
    const auto work = [this](const std::string& folder) {
        fs::create_directory(sandbox.path(folder));
        for (int count = 0; count < kFiles; ++count) {
            ErrorSlot own;
            std::ofstream(sandbox.path(folder + "/Cut.xml")) << folder << count;
            EXPECT_TRUE(recycle(sandbox.path(folder), trash, {"Cut.xml"}, own));
        }
    };
    std::thread first(work, "a");
    std::thread second(work, "b");
    first.join();
    second.join();
    std::set<std::string> contents;
    for (const auto& entry : fs::directory_iterator(trash)) {
        contents.insert(test::readBytes(entry.path()));
    }
    EXPECT_EQ(contents.size(), 2U * kFiles);
}

TEST_F(WorkspacePermissionTest, saysWhyATrashCannotBeMade) {
    const std::string trash = sandbox.home() + "/.Trash";
    sandbox.write("Cut.xml", "x");
    ASSERT_EQ(chmod(sandbox.home().c_str(), 0500), 0);
    EXPECT_FALSE(recycle(sandbox.folder(), trash, {"Cut.xml"}, error));
    ASSERT_EQ(chmod(sandbox.home().c_str(), 0700), 0);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description, "The folder " + trash + " cannot be made: permission denied.");
    EXPECT_TRUE(test::exists(sandbox.path("Cut.xml")));
}

TEST_F(WorkspacePermissionTest, leavesAFileWhoseFolderIsReadOnly) {
    const std::string trash = sandbox.home() + "/.Trash";
    fs::create_directory(sandbox.path("closed"));
    sandbox.write("closed/Cut.xml", "x");
    ASSERT_EQ(chmod(sandbox.path("closed").c_str(), 0500), 0);
    EXPECT_FALSE(recycle(sandbox.path("closed"), trash, {"Cut.xml"}, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EACCES);
    EXPECT_TRUE(fs::is_empty(trash));
    EXPECT_TRUE(test::exists(sandbox.path("closed/Cut.xml")));
    ASSERT_EQ(chmod(sandbox.path("closed").c_str(), 0700), 0);
}

TEST_F(WorkspaceTest, knowsPackagesByTheirExtensions) {
    for (const char* name : {"Vornic.app", "Library.FCPBundle", "My Photos.photoslibrary"}) {
        fs::create_directory(sandbox.path(name));
        EXPECT_TRUE(isFilePackage(sandbox.path(name))) << name;
        EXPECT_TRUE(isFilePackage(sandbox.path(name) + "/")) << name;
    }
    fs::create_symlink("Vornic.app", sandbox.path("link.app"));
    EXPECT_TRUE(isFilePackage(sandbox.path("link.app")));
    for (const char* name : {"Folder", "Folder.xml", "app", ".app"}) {
        fs::create_directory(sandbox.path(name));
        EXPECT_FALSE(isFilePackage(sandbox.path(name))) << name;
    }
    EXPECT_FALSE(isFilePackage(sandbox.write("file.app", "x")));
    EXPECT_FALSE(isFilePackage(sandbox.path("missing.app")));
}

TEST_F(WorkspaceTest, knowsPackagesByTheirFinderFlag) {
    fs::create_directory(sandbox.path("Folder"));
    std::string info(32, '\0');
    if (!test::setAttribute(sandbox.path("Folder"), test::kFinderInfo, info)) {
        GTEST_SKIP() << "the volume has no extended attributes";
    }
    EXPECT_FALSE(isFilePackage(sandbox.path("Folder")));
    info[8] = 0x20;
    ASSERT_TRUE(test::setAttribute(sandbox.path("Folder"), test::kFinderInfo, info));
    EXPECT_TRUE(isFilePackage(sandbox.path("Folder")));
}

}  // namespace
}  // namespace vornic::platform
