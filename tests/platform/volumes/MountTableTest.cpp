#include <algorithm>
#include <filesystem>

#include <gmock/gmock.h>

#include "platform/volumes/MountTable.h"
#include "tests/support/fakes/SilentVolume.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

using test::SandboxTest;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

std::vector<std::string> mountPoints(const std::vector<MountedVolume>& volumes) {
    std::vector<std::string> paths;
    for (const MountedVolume& volume : volumes) {
        paths.push_back(volume.mountPoint);
    }
    return paths;
}

TEST(MountTable, readsMountPointTypeAndDevice) {
    EXPECT_THAT(volumesInMountInfo("27 1 254:0 / / rw,relatime - ext4 /dev/vda rw,discard\n"),
                ElementsAre(MountedVolume{
                    .mountPoint = "/", .filesystemType = "ext4", .device = "/dev/vda"}));
}

TEST(MountTable, passesOverAnyNumberOfTags) {
    EXPECT_THAT(
        volumesInMountInfo("30 27 0:5 / /a rw - tmpfs one rw\n"
                           "31 27 0:6 / /b rw shared:1 master:2 - tmpfs two rw\n"),
        ElementsAre(MountedVolume{.mountPoint = "/b", .filesystemType = "tmpfs", .device = "two"},
                    MountedVolume{.mountPoint = "/a", .filesystemType = "tmpfs", .device = "one"}));
}

TEST(MountTable, readsBlanksTabsLineBreaksAndBackslashesInPaths) {
    EXPECT_THAT(mountPoints(volumesInMountInfo(
                    R"(30 27 0:5 / /m/Two\040Words\011\012\134x rw - cifs //nas/My\040Share rw)")),
                ElementsAre("/m/Two Words\t\n\\x"));
    EXPECT_EQ(volumesInMountInfo(R"(30 27 0:5 / /m rw - cifs //nas/My\040Share rw)")[0].device,
              "//nas/My Share");
}

TEST(MountTable, keepsABackslashThatBeginsNoNumber) {
    EXPECT_THAT(mountPoints(volumesInMountInfo(R"(30 27 0:5 / /a\09b\7 rw - tmpfs x rw)")),
                ElementsAre(R"(/a\09b\7)"));
}

TEST(MountTable, listsAVolumeBeforeTheOneThatItLiesIn) {
    EXPECT_THAT(mountPoints(volumesInMountInfo("1 0 0:1 / / rw - ext4 a rw\n"
                                               "2 1 0:2 / /run rw - tmpfs b rw\n"
                                               "3 2 0:3 / /run/media/u/Disk rw - xfs c rw\n")),
                ElementsAre("/run/media/u/Disk", "/run", "/"));
}

TEST(MountTable, listsTheUpperOneOfTwoAtOneMountPoint) {
    EXPECT_THAT(
        volumesInMountInfo("2 1 0:2 / /m rw - tmpfs lower rw\n"
                           "3 2 0:3 / /m rw - xfs upper rw\n"),
        ElementsAre(MountedVolume{.mountPoint = "/m", .filesystemType = "xfs", .device = "upper"}));
}

TEST(MountTable, callsHfsplusByItsOwnName) {
    EXPECT_EQ(volumesInMountInfo("2 1 8:1 / /m rw - hfsplus /dev/sda1 rw\n")[0].filesystemType,
              "hfs+");
}

TEST(MountTable, passesOverLinesOfAnotherForm) {
    EXPECT_THAT(volumesInMountInfo("\n"
                                   "one two\n"
                                   "2 1 0:2 / nowhere rw - tmpfs x rw\n"
                                   "2 1 0:2 / /m rw - tmpfs\n"
                                   "2 1 0:2 / /m rw tmpfs x rw\n"),
                IsEmpty());
}

TEST(MountTable, endsWithTheRootVolumeOnThisMachine) {
    ASSERT_THAT(mountedVolumes(), Not(IsEmpty()));
    EXPECT_EQ(mountedVolumes().back().mountPoint, "/");
}

TEST(MountTable, isAnsweredByASubstituteUntilThatIsTakenAway) {
    const MountedVolume drive{
        .mountPoint = "/Volumes/Media", .filesystemType = "apfs", .device = "/dev/disk2s1"};
    setMountTable([drive] { return std::vector{drive}; });
    EXPECT_THAT(mountedVolumes(), ElementsAre(drive));
    setMountTable({});
    EXPECT_THAT(mountedVolumes(), Not(Contains(drive)));
}

class MountTableAsRoot : public SandboxTest {};

TEST_F(MountTableAsRoot, listsAVolumeAsSoonAsItIsMountedAndNoLongerThanThat) {
    const test::PrivateMounts mounts;
    const std::string folder = sandbox.path("Media Drive");
    std::filesystem::create_directory(folder);
    if (!mounts.mountVolume(folder, "tmpfs", "size=1m")) {
        GTEST_SKIP() << "may not mount";
    }
    const MountedVolume volume{.mountPoint = folder, .filesystemType = "tmpfs", .device = "none"};
    EXPECT_THAT(mountedVolumes(), Contains(volume));
    ASSERT_TRUE(mounts.unmountVolume(folder));
    EXPECT_THAT(mountedVolumes(), Not(Contains(volume)));
}

TEST_F(MountTableAsRoot, isNotHinderedByAVolumeThatDoesNotAnswer) {
    const test::SilentVolume volume(sandbox.folder());
    if (!volume.isMounted()) {
        GTEST_SKIP() << "no FUSE, or may not mount";
    }
    EXPECT_THAT(mountPoints(mountedVolumes()), Contains(sandbox.folder()));
}

}  // namespace
}  // namespace vornic::platform
