#include <chrono>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/TemporaryFolder.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::chrono::seconds kAnyAge{0};
constexpr const char* kName = ".Cut.fcpxmld.vornic-abcdefgh01.parts";

class TemporaryFolderTest : public test::SandboxTest {
  protected:
    std::string left(const std::string& name = kName) const {
        fs::create_directories(sandbox.path(name) + "/Cut.fcpxmld");
        sandbox.write(name + "/Cut.fcpxmld/Info.fcpxml", "half");
        return sandbox.path(name);
    }
};

TEST_F(TemporaryFolderTest, goesWithAllThatIsInIt) {
    {
        ErrorSlot error;
        TemporaryFolder folder;
        ASSERT_TRUE(folder.make(sandbox.path("Cut.fcpxmld"), error));
        EXPECT_TRUE(folder.path().ends_with(".parts")) << folder.path();
        EXPECT_EQ(fs::status(folder.path()).permissions(), fs::perms::owner_all);
        fs::create_directory(folder.path() + "/Cut.fcpxmld");
    }
    EXPECT_THAT(test::namesIn(sandbox.folder()), IsEmpty());
}

TEST(TemporaryFolderWithoutRights, goesWithFoldersThatNobodyMayChange) {
    const test::Unprivileged unprivileged;
    const test::Sandbox sandbox;
    const std::string left = sandbox.path(kName);
    for (const std::string& name : {left, std::string()}) {
        ErrorSlot error;
        TemporaryFolder folder;
        if (name.empty()) {
            ASSERT_TRUE(folder.make(sandbox.path("Cut.fcpxmld"), error));
        }
        const std::string bundle = (name.empty() ? folder.path() : name) + "/Cut.fcpxmld";
        fs::create_directories(bundle + "/Data/Sub");
        fs::create_symlink("../..", bundle + "/Data/link");
        for (const char* const inside : {"/Data/Sub", "/Data", ""}) {
            fs::permissions(bundle + inside, fs::perms(0555));
        }
        fs::permissions(bundle + "/Data/Sub", fs::perms::none);
    }
    removeDeadTemporaryFolders(sandbox.folder(), kAnyAge);
    EXPECT_THAT(test::namesIn(sandbox.folder()), IsEmpty());
}

TEST_F(TemporaryFolderTest, namesWhatIsMadeWhereItCannotBe) {
    ErrorSlot error;
    TemporaryFolder folder;
    EXPECT_FALSE(folder.make(sandbox.path("none/Cut.fcpxmld"), error));
    EXPECT_EQ(error->localizedDescription(), "The file " + sandbox.path("none/Cut.fcpxmld") +
                                                 " cannot be written: no such file or folder.");
}

TEST_F(TemporaryFolderTest, removesWhatAKilledProcessHasLeft) {
    const std::string path = left();
    sandbox.write("kept.mov", "the user's");
    fs::create_symlink("../../kept.mov", path + "/Cut.fcpxmld/link");
    removeDeadTemporaryFolders(sandbox.folder(), kAnyAge);
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("kept.mov"));
}

TEST_F(TemporaryFolderTest, keepsWhatIsYoungAndWhatIsBeingMade) {
    const std::string path = left();
    removeDeadTemporaryFolders(sandbox.folder());
    EXPECT_TRUE(test::exists(path + "/Cut.fcpxmld/Info.fcpxml"));
    ErrorSlot error;
    TemporaryFolder folder;
    ASSERT_TRUE(folder.make(sandbox.path("Cut.fcpxmld"), error));
    fs::create_directory(folder.path() + "/Cut.fcpxmld");
    removeDeadTemporaryFolders(sandbox.folder(), kAnyAge);
    EXPECT_TRUE(test::exists(folder.path() + "/Cut.fcpxmld"));
}

TEST_F(TemporaryFolderTest, keepsWhatOnlyLooksAlike) {
    for (const std::string name :
         {"Cut.fcpxmld.vornic-abcdefgh01.parts", ".Cut.fcpxmld.vornic-abcdefgh0.parts",
          ".Cut.fcpxmld.vornic-ABCDEFGH01.parts", ".Cut.fcpxmld.parts",
          ".Cut.fcpxmld.vornic-abcdefgh01", ".Cut.fcpxmld.vornic-abcdefgh01.part"}) {
        const std::string path = left(name);
        removeDeadTemporaryFolders(sandbox.folder(), kAnyAge);
        EXPECT_TRUE(test::exists(path + "/Cut.fcpxmld/Info.fcpxml")) << name;
    }
    const std::string link = ".Cut.fcpxmld.vornic-abcdefgh02.parts";
    fs::create_directory(sandbox.path("own"));
    fs::create_directory_symlink("own", sandbox.path(link));
    sandbox.write(kName, "a file");
    removeDeadTemporaryFolders(sandbox.folder(), kAnyAge);
    EXPECT_TRUE(fs::is_symlink(sandbox.path(link)));
    EXPECT_TRUE(test::exists(sandbox.path("own")));
    EXPECT_TRUE(test::exists(sandbox.path(kName)));
}

}  // namespace
}  // namespace vornic::platform
