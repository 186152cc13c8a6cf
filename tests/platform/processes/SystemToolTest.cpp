#include <filesystem>

#include <gtest/gtest.h>

#include "platform/processes/SystemTool.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

TEST(SystemToolTest, leavesAPathThatLeadsToATool) {
    EXPECT_EQ(systemToolPath("/bin/rm"), "/bin/rm");
    EXPECT_EQ(systemToolPath("/usr/bin/touch"), "/usr/bin/touch");
}

TEST(SystemToolTest, findsAToolThatThisSystemHasElsewhere) {
    // No system has it among the administrator's tools.
    ASSERT_FALSE(std::filesystem::exists("/usr/sbin/touch"));
    for (const char* path : {"/usr/sbin/touch", "/sbin/touch"}) {
        EXPECT_EQ(systemToolPath(path), "/usr/bin/touch");
    }
}

TEST(SystemToolTest, leavesWhatIsNowhereOrNoToolOfTheSystem) {
    const test::Sandbox sandbox;
    EXPECT_EQ(systemToolPath("/bin/no-such-tool-anywhere"), "/bin/no-such-tool-anywhere");
    EXPECT_EQ(systemToolPath(sandbox.path("touch")), sandbox.path("touch"));
    EXPECT_EQ(systemToolPath("/usr/local/bin/touch"), "/usr/local/bin/touch");
    EXPECT_EQ(systemToolPath("touch"), "touch");
    EXPECT_EQ(systemToolPath("/bin/.."), "/bin/..");
    EXPECT_EQ(systemToolPath(""), "");
}

}  // namespace
}  // namespace vornic::platform
