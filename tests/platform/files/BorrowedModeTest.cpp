#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/files/BorrowedMode.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;

constexpr fs::perms kClosed{0555};
constexpr fs::perms kOther{0750};

class BorrowedModeTest : public test::SandboxTest {
  protected:
    std::string folder(const std::string& name, fs::perms mode) const {
        const std::string path = sandbox.path(name);
        fs::create_directory(path);
        fs::permissions(path, mode);
        return path;
    }

    static fs::perms modeOf(const std::string& path) { return fs::status(path).permissions(); }
};

TEST_F(BorrowedModeTest, letsTheOwnerChangeAFolderUntilItsModeIsGivenBack) {
    const std::string path = folder("Cut.fcpxmld", kClosed);

    const BorrowedMode mode(path);
    EXPECT_EQ(modeOf(path), fs::perms(0755));
    mode.giveBack();

    EXPECT_EQ(modeOf(path), kClosed);
}

TEST_F(BorrowedModeTest, givesItsModeToTheRenamedFolderAndNotToALinkInItsPlace) {
    const std::string path = folder("Cut.fcpxmld", kClosed);
    const std::string other = folder("other", kOther);
    const std::string renamed = sandbox.path("renamed");

    const BorrowedMode mode(path);
    fs::rename(path, renamed);
    fs::create_directory_symlink(other, path);
    mode.giveBack();

    EXPECT_EQ(modeOf(renamed), kClosed);
    EXPECT_EQ(modeOf(other), kOther);
}

TEST_F(BorrowedModeTest, leavesWhereALinkLeadsAsItIs) {
    const std::string other = folder("other", kClosed);
    const std::string link = sandbox.path("link");
    fs::create_directory_symlink(other, link);

    const BorrowedMode mode(link);

    EXPECT_EQ(modeOf(other), kClosed);
}

TEST_F(BorrowedModeTest, doesNothingToAFolderThatIsNotThereYet) {
    const BorrowedMode mode(sandbox.path("later"));
    const std::string later = folder("later", kOther);

    mode.giveBack();

    EXPECT_EQ(modeOf(later), kOther);
}

}  // namespace
}  // namespace vornic::platform
