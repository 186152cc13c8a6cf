#include <chrono>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/TemporaryFile.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kAnyAge{0};
constexpr const char* kName = ".Cut.xml.vornic-abcdefgh01.part";

class TemporaryFileTest : public test::SandboxTest {
  protected:
    // A folder may be found under the number that another one had, and is then no other one.
    void SetUp() override { removeDeadTemporaries(sandbox.home(), kAnyAge); }
    void expectKept(const std::string& name) const {
        removeDeadTemporaries(sandbox.folder(), kAnyAge);
        EXPECT_TRUE(test::exists(sandbox.path(name))) << name;
    }
};

TEST_F(TemporaryFileTest, removesWhatAKilledProcessHasLeft) {
    const std::string path = sandbox.write(kName, "half");
    removeDeadTemporaries(sandbox.folder(), kAnyAge);
    EXPECT_FALSE(test::exists(path));
}

TEST_F(TemporaryFileTest, keepsWhatIsYoung) {
    const std::string path = sandbox.write(kName, "half");
    removeDeadTemporaries(sandbox.folder());
    EXPECT_TRUE(test::exists(path));
}

TEST_F(TemporaryFileTest, keepsWhatIsBeingWritten) {
    ErrorSlot error;
    TemporaryFile file;
    ASSERT_TRUE(file.open(sandbox.path("Cut.xml"), error));
    const std::string path = file.temporary;
    EXPECT_TRUE(path.ends_with(".part")) << path;
    removeDeadTemporaries(sandbox.folder(), kAnyAge);
    EXPECT_TRUE(test::exists(path));
}

TEST_F(TemporaryFileTest, keepsWhatMayBeAnothersFile) {
    sandbox.write(".Cut.xml.vornic-abcdefgh01", "what an exchange brought out");
    expectKept(".Cut.xml.vornic-abcdefgh01");
}

TEST_F(TemporaryFileTest, keepsWhatOnlyLooksAlike) {
    for (const std::string name :
         {"Cut.xml.vornic-abcdefgh01.part", ".Cut.xml.vornic-abcdefgh0.part",
          ".Cut.xml.vornic-ABCDEFGH01.part", ".Cut.xml.part"}) {
        sandbox.write(name, "the user's");
        expectKept(name);
        // Another folder, so that the next look is a new one.
        removeDeadTemporaries(sandbox.home(), kAnyAge);
    }
}

TEST_F(TemporaryFileTest, keepsLinksAndFolders) {
    fs::create_directory(sandbox.path(kName));
    expectKept(kName);
    fs::remove(sandbox.path(kName));
    removeDeadTemporaries(sandbox.home(), kAnyAge);
    fs::create_hard_link(sandbox.write("Cut.xml", "the user's"), sandbox.path(kName));
    expectKept(kName);
}

TEST_F(TemporaryFileTest, findsWhatAnExchangeHasLeft) {
    const std::string path =
        sandbox.write(".Cut.xml.vornic-abcdefgh01", "what an exchange brought out");
    sandbox.write(kName, "half");
    sandbox.write(".Cut.xml.vornic-short", "the user's");
    sandbox.write(".vornic-abcdefgh01", "the user's");
    static_cast<void>(filesLeftAside(sandbox.home(), kAnyAge));
    EXPECT_TRUE(filesLeftAside(sandbox.folder()).empty()) << "it is too young";
    static_cast<void>(filesLeftAside(sandbox.home(), kAnyAge));
    const std::vector<LeftFile> left = filesLeftAside(sandbox.folder(), kAnyAge);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left[0].path, path);
    EXPECT_EQ(left[0].original, "Cut.xml");
    EXPECT_TRUE(test::exists(path));
}

TEST_F(TemporaryFileTest, doesNotFindWhatALivingProcessHolds) {
    const std::string path = sandbox.write(".Cut.xml.vornic-abcdefgh01", "in exchange");
    const FileDescriptor holder(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(flock(holder.get(), LOCK_EX), 0);
    static_cast<void>(filesLeftAside(sandbox.home(), kAnyAge));
    EXPECT_TRUE(filesLeftAside(sandbox.folder(), kAnyAge).empty());
}

TEST_F(TemporaryFileTest, looksIntoAFolderOnceForManyFilesInARow) {
    removeDeadTemporaries(sandbox.folder(), kAnyAge);
    sandbox.write(kName, "half");
    expectKept(kName);
    removeDeadTemporaries(sandbox.home(), kAnyAge);
    removeDeadTemporaries(sandbox.folder(), kAnyAge);
    EXPECT_FALSE(test::exists(sandbox.path(kName)));
}

}  // namespace
}  // namespace vornic::platform
