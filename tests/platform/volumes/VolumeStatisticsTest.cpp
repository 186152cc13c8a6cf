#include <filesystem>

#include <gtest/gtest.h>

#include "platform/threads/Thread.h"
#include "platform/volumes/VolumeStatistics.h"
#include "tests/support/fakes/SilentVolume.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class VolumeStatisticsTest : public test::SandboxTest {
  protected:
    ~VolumeStatisticsTest() override { EXPECT_TRUE(joinDetachedThreads(seconds(30))); }
    ErrorSlot error;
};

TEST_F(VolumeStatisticsTest, agreeWithTheSystem) {
    const auto statistics = volumeStatistics(sandbox.folder(), seconds(30), error);
    ASSERT_TRUE(statistics);
    const std::filesystem::space_info space = std::filesystem::space(sandbox.folder());
    EXPECT_EQ(statistics->totalBytes, space.capacity);
    EXPECT_LE(statistics->freeBytes, space.free);
    EXPECT_TRUE(statistics->isWritable);
    EXPECT_FALSE(error);
}

TEST_F(VolumeStatisticsTest, reportASizeAWayOfWritingAndWhatIsLeft) {
    const test::PrivateMounts mounts;
    if (!mounts.mountVolume(sandbox.folder(), "tmpfs", "size=1m")) {
        GTEST_SKIP() << "may not mount";
    }
    sandbox.write("a", std::string(1 << 16, 'a'));
    ASSERT_TRUE(mounts.makeReadOnly(sandbox.folder()));
    const auto statistics = volumeStatistics(sandbox.folder(), seconds(30), error);
    ASSERT_TRUE(statistics);
    EXPECT_EQ(statistics->totalBytes, 1U << 20U);
    EXPECT_EQ(statistics->freeBytes, (1U << 20U) - (1U << 16U));
    EXPECT_FALSE(statistics->isWritable);
    EXPECT_EQ(statistics->label, "");
    EXPECT_TRUE(joinDetachedThreads(seconds(30)));
}

TEST_F(VolumeStatisticsTest, areAnErrorForAPathThatLeadsNowhere) {
    EXPECT_FALSE(volumeStatistics(sandbox.path("gone"), seconds(30), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
}

TEST_F(VolumeStatisticsTest, areGivenUpAfterTheLimitAndAnErrorWhenTheVolumeHasGone) {
    test::SilentVolume volume(sandbox.folder());
    if (!volume.isMounted()) {
        GTEST_SKIP() << "no FUSE, or may not mount";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(volumeStatistics(sandbox.folder(), milliseconds(100), error));
    EXPECT_FALSE(error);
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(100));
    volume.giveUp();
    EXPECT_FALSE(volumeStatistics(sandbox.folder(), seconds(30), error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOTCONN);
    EXPECT_TRUE(joinDetachedThreads(seconds(30)));
}

}  // namespace
}  // namespace vornic::platform
