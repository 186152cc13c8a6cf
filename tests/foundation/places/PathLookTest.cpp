#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/places/PathLook.h"
#include "tests/support/fakes/SilentVolume.h"
#include "tests/support/fakes/SubstituteMountTable.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;
using Kind = PathSight::Kind;
using std::chrono::steady_clock;

class PathLookTest : public SandboxTest {
  protected:
    PathSight look(const std::string& name) {
        return PathLook().lookAt({name.starts_with('/') ? name : sandbox.path(name)})[0];
    }
    // Without links, as answers are.
    [[nodiscard]] std::string real(const std::string& name) const {
        return fs::canonical(sandbox.path(name)).string();
    }
};

TEST_F(PathLookTest, reportsFilesFoldersAndNothing) {
    sandbox.write("a.mov", "1234");
    const PathSight file = look("a.mov");
    EXPECT_EQ(file.kind, Kind::file);
    EXPECT_EQ(file.path, real("a.mov"));
    EXPECT_EQ(file.size, 4U);
    EXPECT_GT(file.modified, 0);
    EXPECT_FALSE(file.hasOtherName);
    EXPECT_EQ(look(sandbox.folder()).kind, Kind::folder);
    EXPECT_EQ(look("b.mov").kind, Kind::missing);
    EXPECT_EQ(look("a.mov/b.mov").kind, Kind::missing);
    EXPECT_EQ(look("x/y/z.mov").kind, Kind::missing);
    EXPECT_EQ(PathLook().lookAt({"relative", std::string("/a\0b", 4), "", "/"})[1].kind,
              Kind::missing);
    EXPECT_EQ(look(std::string("/") + std::string(5000, 'a')).kind, Kind::missing);
}

TEST_F(PathLookTest, answersEachOfManyPathsInTheirOrder) {
    std::vector<std::string> paths;
    for (int number = 0; number < 3000; ++number) {
        const std::string name = std::to_string(number) + ".mov";
        paths.push_back(number % 3 == 0 ? sandbox.write(name, "") : sandbox.path(name));
    }
    const std::vector<PathSight> sights = PathLook().lookAt(paths);
    ASSERT_EQ(sights.size(), paths.size());
    for (std::size_t number = 0; number < paths.size(); ++number) {
        EXPECT_EQ(sights[number].kind, number % 3 == 0 ? Kind::file : Kind::missing) << number;
    }
}

TEST_F(PathLookTest, findsNamesThatDifferByCaseOrNormalisation) {
    fs::create_directory(sandbox.path("Cafe\u0301"));
    sandbox.write("Cafe\u0301/CLIP.MOV", "");
    const PathSight both = look("caf\u00E9/clip.mov");
    EXPECT_EQ(both.kind, Kind::file);
    EXPECT_TRUE(both.hasOtherName);
    EXPECT_EQ(both.path, real("Cafe\u0301/CLIP.MOV"));
    EXPECT_FALSE(look("Cafe\u0301/CLIP.MOV").hasOtherName);
    sandbox.write("e\u0301.mov", "");
    sandbox.write("E\u0301.mov", "");
    EXPECT_EQ(look("\u00E9.mov").path, real("e\u0301.mov")) << "case is kept where it can be";
}

TEST_F(PathLookTest, followsLinksAndNoCircle) {
    fs::create_directories(sandbox.path("real/deep"));
    sandbox.write("real/deep/a.mov", "");
    fs::create_symlink("real/deep", sandbox.path("link"));
    fs::create_symlink("../../link/a.mov", sandbox.path("real/deep/second"));
    fs::create_symlink("round", sandbox.path("round"));
    fs::create_symlink("/nowhere", sandbox.path("dangling"));
    EXPECT_EQ(look("link/a.mov").path, real("real/deep/a.mov"));
    EXPECT_EQ(look("link/second").kind, Kind::file);
    EXPECT_EQ(look("link/../deep/a.mov").kind, Kind::file) << ".. is that of the folder itself";
    EXPECT_EQ(look("round").kind, Kind::missing);
    EXPECT_EQ(look("dangling").kind, Kind::missing);
}

TEST_F(PathLookTest, neverOpensAPipe) {
    ASSERT_EQ(mkfifo(sandbox.path("pipe.mov").c_str(), 0600), 0);
    EXPECT_EQ(look("pipe.mov").kind, Kind::special);
}

TEST_F(PathLookTest, reportsWhatMayNotBeRead) {
    sandbox.write("a.mov", "");
    fs::create_directory(sandbox.path("closed"));
    sandbox.write("closed/b.mov", "");
    ASSERT_EQ(chmod(sandbox.path("a.mov").c_str(), 0), 0);
    ASSERT_EQ(chmod(sandbox.path("closed").c_str(), 0), 0);
    ASSERT_EQ(chmod(fs::path(sandbox.folder()).parent_path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(sandbox.folder().c_str(), 0755), 0);
    {
        const Unprivileged unprivileged;
        EXPECT_EQ(look("a.mov").kind, Kind::unreadable);
        EXPECT_EQ(look("closed/b.mov").kind, Kind::unreadable);
    }
    chmod(sandbox.path("closed").c_str(), 0700);
}

TEST_F(PathLookTest, goesFromVolumeToVolume) {
    const PrivateMounts mounts;
    const std::string folder = sandbox.path("volume");
    fs::create_directory(folder);
    if (!mounts.mountVolume(folder, "tmpfs", "size=1m")) {
        GTEST_SKIP() << "may not mount";
    }
    sandbox.write("volume/a.mov", "");
    fs::create_symlink("volume", sandbox.path("way"));
    fs::create_symlink("../outside.mov", sandbox.path("volume/out"));
    sandbox.write("outside.mov", "");
    EXPECT_EQ(look("way/a.mov").path, real("volume/a.mov"));
    EXPECT_EQ(look("way/out").path, real("outside.mov"));
    EXPECT_EQ(look("volume").kind, Kind::folder);
}

TEST_F(PathLookTest, aVolumeThatIsSilentCostsItsTimeOnce) {
    sandbox.write("a.mov", "");
    const std::string folder = sandbox.path("silent");
    fs::create_directory(folder);
    const SilentVolume volume(folder);
    if (!volume.isMounted()) {
        GTEST_SKIP() << "may not mount a FUSE volume";
    }
    const auto start = steady_clock::now();
    PathLook looking(std::chrono::milliseconds(500));
    const std::vector<std::string> paths = {folder + "/x.mov", sandbox.path("a.mov"),
                                            folder + "/y/z.mov"};
    for (int round = 0; round < 3; ++round) {
        const std::vector<PathSight> sights = looking.lookAt(paths);
        EXPECT_EQ(sights[0].kind, Kind::noAnswer);
        EXPECT_EQ(sights[1].kind, Kind::file);
        EXPECT_EQ(sights[2].kind, Kind::noAnswer);
    }
    EXPECT_LT(steady_clock::now() - start, std::chrono::milliseconds(1400));
}

TEST_F(PathLookTest, mountsNothing) {
    const SubstituteMountTable table({{"/net", "autofs", "auto.net"}, {"/", "ext4", "/dev/sda1"}});
    EXPECT_EQ(look("/net/server/a.mov").kind, Kind::notMounted);
}

TEST_F(PathLookTest, knowsTheFoldersThatVolumesHave) {
    EXPECT_EQ(look("/Volumes/No Such Volume/a.mov").kind, Kind::notMounted);
    EXPECT_EQ(look("/run/media/nobody/No Such Volume/x/a.mov").kind, Kind::notMounted);
    EXPECT_EQ(look("/mnt").kind == Kind::notMounted, false);
    EXPECT_EQ(look("/no-such-folder/a.mov").kind, Kind::missing);
}

TEST_F(PathLookTest, aFolderOfAVolumeThatHoldsSomethingIsThere) {
    const PrivateMounts mounts;
    if (!mounts.mountVolume("/mnt", "tmpfs", "size=1m")) {
        GTEST_SKIP() << "may not mount";
    }
    fs::create_directory("/mnt/Media");
    const std::vector<std::string> path = {"/mnt/Media/a.mov"};
    EXPECT_EQ(look(path[0]).kind, Kind::notMounted);
    fs::create_directory("/mnt/Media/Reel 1");
    EXPECT_EQ(look(path[0]).kind, Kind::missing);
}

}  // namespace

}  // namespace vornic::test
