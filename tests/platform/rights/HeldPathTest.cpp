#include <filesystem>

#include <gtest/gtest.h>

#include "platform/rights/HeldPath.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

class HeldPathTest : public test::SandboxTest {
  protected:
    HeldPathTest() { fs::create_directory(sandbox.path("folder")); }

    /// What stands at the path, reached through the folder that is held.
    [[nodiscard]] static std::string contents(const HeldPath& held) {
        return test::readBytes(descriptorPath(held.folder.get()) + "/" + held.name);
    }
};

TEST_F(HeldPathTest, reportsWhereTheEntryLies) {
    const auto held = holdPath(sandbox.path("folder//file"));
    ASSERT_TRUE(held);
    EXPECT_EQ(held->folderPath, sandbox.path("folder"));
    EXPECT_EQ(held->name, "file");
    EXPECT_EQ(held->path(), sandbox.path("folder/file"));
    EXPECT_EQ(holdPath("/x")->path(), "/x");
}

TEST_F(HeldPathTest, resolvesLinksAndStepsUpInTheFolderButNotTheEntry) {
    sandbox.write("folder/file", "x");
    fs::create_directory_symlink("folder", sandbox.path("link"));
    fs::create_symlink("file", sandbox.path("folder/alias"));
    EXPECT_EQ(holdPath(sandbox.path("link/alias"))->path(), sandbox.path("folder/alias"));
    EXPECT_EQ(holdPath(sandbox.path("link/../x"))->path(), sandbox.path("x"));
}

TEST_F(HeldPathTest, leavesTheSlashAtTheEndOut) {
    EXPECT_EQ(holdPath(sandbox.path("folder/a/"))->name, "a");
    EXPECT_EQ(holdPath(sandbox.path("folder/a//"))->path(), sandbox.path("folder/a"));
}

TEST_F(HeldPathTest, staysWithTheFolderThoughAnotherTakesItsPlace) {
    sandbox.write("folder/file", "first");
    const auto held = holdPath(sandbox.path("folder/file"));
    ASSERT_TRUE(held);
    fs::rename(sandbox.path("folder"), sandbox.path("moved"));
    fs::create_directory(sandbox.path("folder"));
    sandbox.write("folder/file", "second");
    EXPECT_EQ(contents(*held), "first");
}

TEST_F(HeldPathTest, takesNoHoldOfWhatNamesNoEntry) {
    for (const std::string path : {"/", "//", "/.", "/..", "/tmp/.", "/tmp/..", "/tmp/../"}) {
        EXPECT_FALSE(holdPath(path)) << path;
    }
    EXPECT_FALSE(holdPath(sandbox.path("folder/a") + std::string("\0b", 2)));
}

TEST_F(HeldPathTest, takesNoHoldOfAFolderThatCannotBeReached) {
    EXPECT_FALSE(holdPath(sandbox.path("missing/file")));
    EXPECT_FALSE(holdPath(sandbox.write("file", "x") + "/a"));
}

}  // namespace
}  // namespace vornic::platform
