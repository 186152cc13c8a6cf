#include <filesystem>
#include <string>
#include <vector>

#include "desktop/RecentFiles.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/fakes/SilentVolume.h"

namespace vornic::test {
namespace {

using Paths = std::vector<std::string>;

class RecentFilesTest : public DesktopTest {};

TEST_F(RecentFilesTest, areNoneAtFirst) {
    EXPECT_EQ(RecentFiles::paths(), Paths{});
}

TEST_F(RecentFilesTest, beginWithTheLatest) {
    const std::string a = sandbox.write("a.xml", "");
    const std::string b = sandbox.write("b.xml", "");
    RecentFiles::add(a);
    RecentFiles::add(b);
    EXPECT_EQ(RecentFiles::paths(), (Paths{b, a}));
    RecentFiles::add(a);
    EXPECT_EQ(RecentFiles::paths(), (Paths{a, b}));
    RecentFiles::clear();
    EXPECT_EQ(RecentFiles::paths(), Paths{});
}

TEST_F(RecentFilesTest, areTenAtMost) {
    for (int file = 0; file < 12; ++file) {
        RecentFiles::add(sandbox.write(std::to_string(file), ""));
    }
    EXPECT_EQ(RecentFiles::paths().size(), RecentFiles::kMost);
    EXPECT_EQ(RecentFiles::paths().front(), sandbox.path("11"));
    EXPECT_EQ(RecentFiles::paths().back(), sandbox.path("2"));
}

TEST_F(RecentFilesTest, leaveOutWhatHasGoneOnceThatIsKnown) {
    const std::string a = sandbox.write("a.xml", "");
    const std::string gone = sandbox.path("gone.xml");
    RecentFiles::add(a);
    RecentFiles::add(gone);
    EXPECT_EQ(RecentFiles::paths(), (Paths{gone, a}));
    QObject owner;
    int changes = 0;
    RecentFiles::look(owner, [&changes] { ++changes; });
    EXPECT_TRUE(waitUntil([&changes] { return changes > 0; }));
    EXPECT_EQ(RecentFiles::paths(), Paths{a});
    sandbox.write("gone.xml", "");
    RecentFiles::look(owner, [&changes] { ++changes; });
    EXPECT_TRUE(waitUntil([&changes] { return changes > 1; }));
    EXPECT_EQ(RecentFiles::paths(), (Paths{gone, a})) << "it is back";
}

TEST_F(RecentFilesTest, waitForNoVolumeThatDoesNotAnswer) {
    const std::string folder = sandbox.path("volume");
    std::filesystem::create_directory(folder);
    SilentVolume volume(folder);
    if (!volume.isMounted()) {
        GTEST_SKIP() << "needs root and FUSE";
    }
    RecentFiles::add(sandbox.path("gone.xml"));
    RecentFiles::add(folder + "/cut.xml");
    QObject owner;
    int changes = 0;
    RecentFiles::look(owner, [&changes] { ++changes; });
    EXPECT_TRUE(waitUntil([&changes] { return changes > 0; }));
    EXPECT_EQ(RecentFiles::paths(), Paths{folder + "/cut.xml"});
    // Nor does the end of a program.
    EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(0)));
    volume.giveUp();
    EXPECT_TRUE(waitUntil([&changes] { return changes > 1; }));
    EXPECT_EQ(RecentFiles::paths(), Paths{});
}

TEST_F(RecentFilesTest, leaveOutNamesThatAreNoText) {
    RecentFiles::add(sandbox.write("\xFF.xml", ""));
    EXPECT_EQ(RecentFiles::paths(), Paths{});
}

}  // namespace
}  // namespace vornic::test
