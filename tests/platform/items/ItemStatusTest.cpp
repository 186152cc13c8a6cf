#include <chrono>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/items/ItemStatus.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using std::chrono::system_clock;

class ItemStatusTest : public test::SandboxTest {};

TEST_F(ItemStatusTest, reportsKindAndSize) {
    sandbox.write("file", "12345");
    fs::create_symlink("file", sandbox.path("link"));
    const auto file = itemStatus(sandbox.path("file"));
    const auto link = itemStatus(sandbox.path("link"));
    const auto folder = itemStatus(sandbox.folder());
    ASSERT_TRUE(file && link && folder);
    EXPECT_FALSE(file->isFolder || file->isLink);
    EXPECT_EQ(file->size, 5U);
    EXPECT_TRUE(link->isLink);
    EXPECT_EQ(link->size, 4U);
    EXPECT_TRUE(folder->isFolder);
}

TEST_F(ItemStatusTest, reportsWhyALookAtAPathFailed) {
    fs::create_symlink("loop", sandbox.path("loop"));
    const ErrorSlot loop = failedLook(sandbox.path("loop"));
    ASSERT_TRUE(loop);
    EXPECT_EQ(loop->description, "The file " + sandbox.path("loop") +
                                     " cannot be looked at: too many symbolic links lead to each "
                                     "other.");
    EXPECT_FALSE(failedLook(sandbox.path("missing")));
    EXPECT_FALSE(failedLook(sandbox.write("file", "x") + "/below"));
    EXPECT_FALSE(failedLook(sandbox.path("file")));
}

TEST_F(ItemStatusTest, reportsWhenItWasMadeWhateverItsOtherDates) {
    const system_clock::time_point before = system_clock::now() - std::chrono::seconds(1);
    sandbox.write("file", "");
    const struct timespec times[2] = {{1000000000, 5}, {1000000000, 5}};
    ASSERT_EQ(utimensat(AT_FDCWD, sandbox.path("file").c_str(), times, 0), 0);
    const auto status = itemStatus(sandbox.path("file"));
    ASSERT_TRUE(status);
    if (!status->created) {
        GTEST_SKIP() << "the volume keeps no creation dates";
    }
    EXPECT_GE(*status->created, before);
    EXPECT_LE(*status->created, system_clock::now());
}

TEST_F(ItemStatusTest, reportsNothingAboutWhatIsMissing) {
    EXPECT_FALSE(itemStatus(sandbox.path("missing")));
    EXPECT_FALSE(itemStatus(""));
    EXPECT_FALSE(itemStatus(sandbox.write("file", "") + std::string("\0x", 2)));
}

TEST_F(ItemStatusTest, knowsNoCreationDateWhereTheVolumeKeepsNone) {
    const auto status = itemStatus("/proc/self/status");
    ASSERT_TRUE(status);
    EXPECT_FALSE(status->created);
}

}  // namespace
}  // namespace vornic::platform
