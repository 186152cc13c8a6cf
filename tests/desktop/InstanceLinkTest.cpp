#include <optional>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

#include "desktop/InstanceLink.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

using Paths = InstanceLink::Paths;

class InstanceLinkTest : public DesktopTest {
  protected:
    std::string folder = sandbox.path("instance folder");

    // Hands paths over on another thread, as another start of the program does.
    bool handOverFromElsewhere(const Paths& paths) {
        std::optional<bool> taken;
        std::thread other([&] {
            InstanceLink link(folder);
            taken = link.handOver(paths);
        });
        EXPECT_TRUE(waitUntil([&taken] { return taken.has_value(); }));
        other.join();
        return taken.value_or(false);
    }
};

TEST_F(InstanceLinkTest, letsTheFirstStartRun) {
    InstanceLink link(folder);
    EXPECT_FALSE(link.handOver({"/a"}));
    struct stat status {};
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(InstanceLinkTest, handsTheFilesOfLaterStartsOver) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    std::vector<Paths> received;
    link.listen([&received](const Paths& paths) { received.push_back(paths); });
    const Paths odd = {"/with blank", "/with\nline", "/with \xFF byte", "/é"};
    EXPECT_TRUE(handOverFromElsewhere(odd));
    EXPECT_TRUE(handOverFromElsewhere({}));
    EXPECT_EQ(received, (std::vector<Paths>{odd, {}}));
}

TEST_F(InstanceLinkTest, takesManyFiles) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    Paths received;
    link.listen([&received](const Paths& paths) { received = paths; });
    const Paths many(3000, "/" + std::string(200, 'x'));
    EXPECT_TRUE(handOverFromElsewhere(many));
    EXPECT_EQ(received, many);
}

TEST_F(InstanceLinkTest, runsAgainAfterTheOtherProgramHasEnded) {
    {
        InstanceLink link(folder);
        ASSERT_FALSE(link.handOver({}));
        link.listen([](const Paths&) {});
    }
    InstanceLink next(folder);
    EXPECT_FALSE(next.handOver({}));
    Paths received;
    next.listen([&received](const Paths& paths) { received = paths; });
    EXPECT_TRUE(handOverFromElsewhere({"/a"}));
    EXPECT_EQ(received, Paths{"/a"});
}

TEST_F(InstanceLinkTest, runsByItselfWhereOthersMayEnterTheFolder) {
    ASSERT_EQ(mkdir(folder.c_str(), 0700), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0777), 0);
    InstanceLink link(folder);
    EXPECT_FALSE(link.handOver({"/a"}));
    link.listen([](const Paths&) { FAIL(); });
    EXPECT_FALSE(exists(folder + "/instance"));
}

TEST_F(InstanceLinkTest, runsByItselfWhereTheFolderIsALink) {
    ASSERT_EQ(mkdir(sandbox.path("real").c_str(), 0700), 0);
    ASSERT_EQ(symlink(sandbox.path("real").c_str(), folder.c_str()), 0);
    InstanceLink link(folder);
    EXPECT_FALSE(link.handOver({"/a"}));
    EXPECT_FALSE(exists(sandbox.path("real") + "/lock"));
}

}  // namespace
}  // namespace vornic::test
