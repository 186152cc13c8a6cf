#include <algorithm>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>
#include <poll.h>

#include "platform/files/FolderWatch.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

class FolderWatchTest : public test::SandboxTest {
  protected:
    // The names that something has happened to, once something has.
    static std::vector<std::string> changes(FolderWatch& watch) {
        pollfd waited{watch.descriptor(), POLLIN, 0};
        EXPECT_EQ(poll(&waited, 1, 5000), 1);
        return watch.takeChanges();
    }
    static bool holds(const std::vector<std::string>& names, const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    }
};

TEST_F(FolderWatchTest, reportsFilesThatAreWrittenRenamedAndRemoved) {
    const std::string path = sandbox.write("cut.xml", "one");
    ErrorSlot error;
    std::optional<FolderWatch> watch = FolderWatch::of(sandbox.folder(), error);
    ASSERT_TRUE(watch);
    EXPECT_TRUE(watch->takeChanges().empty());
    sandbox.write("cut.xml", "two");
    EXPECT_TRUE(holds(changes(*watch), "cut.xml"));
    ASSERT_EQ(std::rename(path.c_str(), sandbox.path("moved.xml").c_str()), 0);
    const std::vector<std::string> renamed = changes(*watch);
    EXPECT_TRUE(holds(renamed, "cut.xml") && holds(renamed, "moved.xml"));
    ASSERT_EQ(std::remove(sandbox.path("moved.xml").c_str()), 0);
    EXPECT_TRUE(holds(changes(*watch), "moved.xml"));
}

TEST_F(FolderWatchTest, refusesWhatIsNoFolder) {
    ErrorSlot error;
    EXPECT_FALSE(FolderWatch::of(sandbox.write("cut.xml", ""), error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(FolderWatch::of(sandbox.path("gone"), error));
}

}  // namespace
}  // namespace vornic::platform
