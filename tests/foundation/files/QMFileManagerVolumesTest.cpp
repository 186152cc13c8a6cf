#include <chrono>
#include <filesystem>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "foundation/files/QMFileManager.h"
#include "foundation/tasks/QMTaskEx.h"
#include "platform/threads/Thread.h"
#include "platform/volumes/MountTable.h"
#include "tests/support/fakes/SilentVolume.h"
#include "tests/support/fakes/SubstituteMountTable.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ChildProcess.h"
#include "tests/support/texts/LogCapture.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using platform::MountedVolume;
using test::SubstituteMountTable;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string& text(const QMFileManager::Dictionary& info, const std::string& key) {
    return *info.at(key).string();
}
std::int64_t number(const QMFileManager::Dictionary& info, const std::string& key) {
    return *info.at(key).integer();
}

TEST(QMFileManagerVolumes, takesAPathOutsideTheVolumesForMounted) {
    EXPECT_TRUE(QMFileManager::isDriveMountedForPath("/Users/x"));
    EXPECT_TRUE(QMFileManager::isDriveMountedForPath("/Users/Gone/x"));
    EXPECT_TRUE(QMFileManager::isDriveMountedForPath("Volumes/Gone/f"));
    EXPECT_TRUE(QMFileManager::isDriveMountedForPath(""));
    EXPECT_TRUE(QMFileManager::isVolumeMountedForPath("/Users/x"));
    EXPECT_TRUE(QMFileManager::isVolumeMountedForPath(""));
}

TEST(QMFileManagerVolumes, takesAPathOfFewerThanThreeComponentsForMounted) {
    for (const char* path : {"/Volumes", "/Volumes/", "/", "/Volumes//"}) {
        EXPECT_TRUE(QMFileManager::isDriveMountedForPath(path)) << path;
        EXPECT_TRUE(QMFileManager::isVolumeMountedForPath(path)) << path;
    }
}

TEST(QMFileManagerVolumes, findsADriveMissingWhoseFolderDoesNotExist) {
    for (const char* path : {"/Volumes/Gone/f", "/Volumes/Gone", "/Volumes//Gone/f"}) {
        EXPECT_FALSE(QMFileManager::isDriveMountedForPath(path)) << path;
        EXPECT_FALSE(QMFileManager::isVolumeMountedForPath(path)) << path;
    }
}

TEST(QMFileManagerVolumes, asksOnlyTheVolumeTestAboutNamesThatBeginLikeTheVolumesFolder) {
    EXPECT_TRUE(QMFileManager::isDriveMountedForPath("/VolumesGone/a/b"));
    EXPECT_FALSE(QMFileManager::isVolumeMountedForPath("/VolumesGone/a/b"));
}

TEST(QMFileManagerVolumes, findsTheMountPointThatIsThePathOrAFolderAboveIt) {
    const SubstituteMountTable table(
        {{"/Volumes/Media", "apfs", "/dev/disk2s1"}, {"/", "apfs", "x"}});
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Volumes/Media/a/b"), "/Volumes/Media");
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Volumes/Media"), "/Volumes/Media");
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Volumes/Media/"), "/Volumes/Media");
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Volumes/Media2/a"), std::nullopt);
}

TEST(QMFileManagerVolumes, answersWithTheFirstOfTheListThatFits) {
    const SubstituteMountTable table(
        {{"/m/a", "ext4", "x"}, {"/m", "ext4", "y"}, {"/", "ext4", "z"}});
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/m/a/f"), "/m/a");
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/m/b/f"), "/m");
    const SubstituteMountTable otherOrder({{"/m", "ext4", "y"}, {"/m/a", "ext4", "x"}});
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/m/a/f"), "/m");
}

TEST(QMFileManagerVolumes, findsNoMountPointBelowVolumesAndElsewhereTheRoot) {
    const SubstituteMountTable table({{"/", "ext4", "x"}});
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Volumes/Gone/a"), std::nullopt);
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Volumes"), std::nullopt);
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/VolumesElse/a"), std::nullopt);
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Users/x"), "/");
    EXPECT_EQ(QMFileManager::volumeMountPointForPath("/"), "/");
}

TEST(QMFileManagerVolumes, namesTheFileSystemOfThePath) {
    const SubstituteMountTable table({{"/Volumes/Media", "apfs", "x"}, {"/", "ext4", "y"}});
    EXPECT_EQ(QMFileManager::filesystemForPath("/Volumes/Media/a"), "apfs");
    EXPECT_EQ(QMFileManager::filesystemForPath("/Users/x"), "ext4");
    EXPECT_EQ(QMFileManager::filesystemForPath("/Volumes/Gone/a"), std::nullopt);
}

TEST(QMFileManagerVolumes, countsThreeFileSystemsAsApples) {
    for (const char* type : {"hfs", "hfs+", "apfs", "HFS", "HFS+", "ApFs"}) {
        const SubstituteMountTable table({{"/", type, "x"}});
        EXPECT_TRUE(QMFileManager::isMacFilesystemAtPath("/a")) << type;
    }
    for (const char* type : {"ext4", "hfsplus", "hfs ", "apfs2", "", "fuse.apfs-fuse"}) {
        const SubstituteMountTable table({{"/", type, "x"}});
        EXPECT_FALSE(QMFileManager::isMacFilesystemAtPath("/a")) << type;
    }
}

TEST(QMFileManagerVolumes, countsAPathOnNoVolumeAsNotApples) {
    const SubstituteMountTable table({{"/", "apfs", "x"}});
    EXPECT_FALSE(QMFileManager::isMacFilesystemAtPath("/Volumes/Gone/a"));
    const SubstituteMountTable nothing({});
    EXPECT_FALSE(QMFileManager::isMacFilesystemAtPath("/a"));
}

class QMFileManagerVolumeInfo : public ::testing::Test {
  protected:
    ~QMFileManagerVolumeInfo() override { joinThreads(); }
    /// A process with further threads cannot leave its view of the volumes.
    static void joinThreads() {
        EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(30)));
    }
    test::Sandbox sandbox;
};

TEST_F(QMFileManagerVolumeInfo, reportsSevenThingsAboutTheRootVolume) {
    const auto info = QMFileManager::infoForDiskAtMountpoint("/");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->size(), 7U);
    EXPECT_EQ(text(*info, "MountPoint"), "/");
    EXPECT_NE(text(*info, "VolumeName"), "");
    EXPECT_EQ(text(*info, "FilesystemType"), QMFileManager::filesystemForPath("/"));
    EXPECT_FALSE(text(*info, "DeviceIdentifier").starts_with("/dev/"));
    EXPECT_EQ(number(*info, "TotalSize"), static_cast<std::int64_t>(fs::space("/").capacity));
    EXPECT_LE(number(*info, "FreeSpace"), number(*info, "TotalSize"));
    EXPECT_NE(info->at("WritableVolume").boolean(), nullptr);
}

TEST_F(QMFileManagerVolumeInfo, knowsNothingAboutAFolderThatIsNoMountPoint) {
    EXPECT_FALSE(QMFileManager::infoForDiskAtMountpoint(sandbox.folder()));
    EXPECT_FALSE(QMFileManager::infoForDiskAtMountpoint("/Volumes/Gone"));
    EXPECT_FALSE(QMFileManager::infoForDiskAtMountpoint(""));
}

TEST_F(QMFileManagerVolumeInfo, namesADeviceWithoutItsFolder) {
    const SubstituteMountTable table({{sandbox.folder(), "ext4", "/dev/disk/x1"}});
    EXPECT_EQ(text(*QMFileManager::infoForDiskAtMountpoint(sandbox.folder()), "DeviceIdentifier"),
              "disk/x1");
}

TEST_F(QMFileManagerVolumeInfo, measuresASecondVolume) {
    const test::PrivateMounts mounts;
    const std::string folder = sandbox.path("Media Drive");
    fs::create_directory(folder);
    if (!mounts.mountVolume(folder, "tmpfs", "size=1m") || !mounts.makeReadOnly(folder)) {
        GTEST_SKIP() << "may not mount";
    }
    const auto info = QMFileManager::infoForDiskAtMountpoint(folder + "/");
    ASSERT_TRUE(info);
    EXPECT_EQ(text(*info, "VolumeName"), "Media Drive");
    EXPECT_EQ(text(*info, "MountPoint"), folder);
    EXPECT_EQ(text(*info, "FilesystemType"), "tmpfs");
    EXPECT_EQ(text(*info, "DeviceIdentifier"), "none");
    EXPECT_EQ(number(*info, "TotalSize"), 1 << 20);
    EXPECT_EQ(number(*info, "FreeSpace"), 1 << 20);
    EXPECT_EQ(*info->at("WritableVolume").boolean(), false);
    EXPECT_EQ(QMFileManager::volumeMountPointForPath(folder + "/a"), folder);
    EXPECT_EQ(QMFileManager::filesystemForPath(folder + "/a"), "tmpfs");
    joinThreads();
}

/// A volume on a block device, with a label.
TEST_F(QMFileManagerVolumeInfo, callsAVolumeByItsLabelAndNamesItsDevice) {
    const test::PrivateMounts mounts;
    const std::string folder = sandbox.path("folder");
    const std::string image = sandbox.path("image");
    fs::create_directory(folder);
    const std::string make = "exec 2>/dev/null; truncate -s 1M " + image +
                             " && mke2fs -q -F -t ext4 -O ^has_journal -L 'Media Drive' " + image +
                             " && mount -o loop " + image + " " + folder;
    if (!mounts.isAvailable() || QMTaskEx::terminationCodeFromTask("/bin/sh", {"-c", make}) != 0) {
        GTEST_SKIP() << "may not mount, or there are no loop devices";
    }
    const auto info = QMFileManager::infoForDiskAtMountpoint(folder);
    joinThreads();
    EXPECT_TRUE(mounts.unmountVolume(folder));
    ASSERT_TRUE(info);
    EXPECT_EQ(text(*info, "VolumeName"), "Media Drive");
    EXPECT_EQ(text(*info, "FilesystemType"), "ext4");
    EXPECT_THAT(text(*info, "DeviceIdentifier"), testing::StartsWith("loop"));
    EXPECT_EQ(*info->at("WritableVolume").boolean(), true);
    EXPECT_GT(number(*info, "FreeSpace"), 0);
    EXPECT_LT(number(*info, "FreeSpace"), number(*info, "TotalSize"));
}

TEST_F(QMFileManagerVolumeInfo, waitsFiveSecondsForAVolumeThatDoesNotAnswer) {
    test::SilentVolume volume(sandbox.folder());
    if (!volume.isMounted()) {
        GTEST_SKIP() << "no FUSE, or may not mount";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(QMFileManager::infoForDiskAtMountpoint(sandbox.folder()));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    volume.giveUp();
    joinThreads();
}

/// As another user, whose log is the test's.
class QMFileManagerVolumeFaults : public ::testing::Test {
  protected:
    test::Unprivileged user;
    test::Sandbox sandbox;
    test::LogCapture log;
};

TEST_F(QMFileManagerVolumeFaults, logsAnErrorOfTheVolume) {
    const std::string gone = sandbox.path("gone");
    const SubstituteMountTable table({{gone, "ext4", "/dev/x"}});
    EXPECT_FALSE(QMFileManager::infoForDiskAtMountpoint(gone));
    EXPECT_THAT(log.entries(), ElementsAre("Error converting diskutil output: The folder " + gone +
                                           " cannot be asked for its volume: no such file or "
                                           "folder."));
}

TEST_F(QMFileManagerVolumeFaults, logsNothingAboutAFolderThatIsNoMountPoint) {
    EXPECT_FALSE(QMFileManager::infoForDiskAtMountpoint(sandbox.folder()));
    EXPECT_THAT(log.entries(), IsEmpty());
}

/// In a root folder of the test's own, which has a "/Volumes".
TEST(QMFileManagerVolumesAsRoot, distinguishesAMountedVolumeFromOneThatHasGone) {
    const test::Sandbox sandbox;
    const test::PrivateMounts mounts;
    const std::string media = sandbox.path("Volumes/Media");
    fs::create_directories(media);
    fs::create_directory(sandbox.path("proc"));
    fs::create_directories(sandbox.path("Users/x"));
    // So that the process's own root folder is a mount point, like every real one.
    if (!mounts.bindFolder(sandbox.folder()) || !mounts.mountVolume(media, "tmpfs", "size=1m") ||
        !mounts.mountVolume(sandbox.path("proc"), "proc", "")) {
        GTEST_SKIP() << "may not mount";
    }
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_EQ(chroot(sandbox.folder().c_str()), 0);
        ASSERT_EQ(chdir("/"), 0);
        EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Volumes/Media/a/b"), "/Volumes/Media");
        EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Volumes/Gone/a"), std::nullopt);
        EXPECT_EQ(QMFileManager::volumeMountPointForPath("/Users/x"), "/");
        EXPECT_EQ(QMFileManager::filesystemForPath("/Volumes/Media/a"), "tmpfs");
        EXPECT_EQ(text(*QMFileManager::infoForDiskAtMountpoint("/Volumes/Media"), "VolumeName"),
                  "Media");
        for (const char* path : {"/Volumes/Media/a", "/Volumes/Media"}) {
            EXPECT_TRUE(QMFileManager::isDriveMountedForPath(path));
            EXPECT_TRUE(QMFileManager::isVolumeMountedForPath(path));
        }
        EXPECT_FALSE(QMFileManager::isDriveMountedForPath("/Volumes/Gone/f"));
        EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(30)));
    }));
}

}  // namespace
}  // namespace vornic
