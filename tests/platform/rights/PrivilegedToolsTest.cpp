#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/rights/PrivilegedTools.h"

namespace vornic::platform {
namespace {

bool isAllowed(const std::string& tool, const std::vector<std::string>& arguments) {
    return allowedPrivilegedRun(tool, arguments).has_value();
}

using Argument = std::optional<std::size_t>;

Argument takenAway(const std::string& tool, const std::vector<std::string>& arguments) {
    const std::optional<PrivilegedRun> run = allowedPrivilegedRun(tool, arguments);
    EXPECT_TRUE(run.has_value());
    return run ? run->takenAway : std::nullopt;
}

Argument replaced(const std::string& tool, const std::vector<std::string>& arguments) {
    const std::optional<PrivilegedRun> run = allowedPrivilegedRun(tool, arguments);
    EXPECT_TRUE(run.has_value());
    return run ? run->replaced : std::nullopt;
}

TEST(PrivilegedToolsTest, allowsEachToolInItsForm) {
    EXPECT_TRUE(isAllowed("/bin/rm", {"-Rdf", "/a/b"}));
    EXPECT_TRUE(isAllowed("/bin/rm", {"-R", "-f", "/a/b"}));
    EXPECT_TRUE(isAllowed("/bin/mv", {"-f", "/a/b", "/c/d"}));
    EXPECT_TRUE(isAllowed("/bin/cp", {"-f", "-p", "-R", "/a/b", "/c/d"}));
    EXPECT_TRUE(isAllowed("/bin/mkdir", {"-p", "/a/b"}));
    EXPECT_TRUE(isAllowed("/usr/bin/touch", {"-c", "/a/b"}));
}

TEST(PrivilegedToolsTest, reportsWhichPathARunTakesAway) {
    EXPECT_EQ(takenAway("/bin/rm", {"-Rdf", "/a"}), 1U);
    EXPECT_EQ(takenAway("/bin/rm", {"-R", "-f", "/a"}), 2U);
    EXPECT_EQ(takenAway("/bin/mv", {"-f", "/a", "/b"}), 1U);
    EXPECT_EQ(takenAway("/bin/cp", {"-f", "-p", "-R", "/a", "/b"}), std::nullopt);
    EXPECT_EQ(takenAway("/bin/mkdir", {"-p", "/a"}), std::nullopt);
    EXPECT_EQ(takenAway("/usr/bin/touch", {"-c", "/a"}), std::nullopt);
}

TEST(PrivilegedToolsTest, reportsWhichPathARunReplaces) {
    EXPECT_EQ(replaced("/bin/rm", {"-Rdf", "/a"}), std::nullopt);
    EXPECT_EQ(replaced("/bin/rm", {"-R", "-f", "/a"}), std::nullopt);
    EXPECT_EQ(replaced("/bin/mv", {"-f", "/a", "/b"}), 2U);
    EXPECT_EQ(replaced("/bin/cp", {"-f", "-p", "-R", "/a", "/b"}), 4U);
    EXPECT_EQ(replaced("/bin/mkdir", {"-p", "/a"}), std::nullopt);
    EXPECT_EQ(replaced("/usr/bin/touch", {"-c", "/a"}), std::nullopt);
}

TEST(PrivilegedToolsTest, allowsNoOtherTool) {
    EXPECT_FALSE(isAllowed("/bin/sh", {"-c", "/a"}));
    EXPECT_FALSE(isAllowed("/usr/bin/chown", {"/a", "/b"}));
    EXPECT_FALSE(isAllowed("/usr/bin/rm", {"-Rdf", "/a"})) << "only under the one path";
    EXPECT_FALSE(isAllowed("rm", {"-Rdf", "/a"}));
    EXPECT_FALSE(isAllowed("", {}));
}

TEST(PrivilegedToolsTest, allowsNoOtherOptions) {
    EXPECT_FALSE(isAllowed("/bin/rm", {"-rf", "/a"}));
    EXPECT_FALSE(isAllowed("/bin/rm", {"-f", "-R", "/a"}));
    EXPECT_FALSE(isAllowed("/bin/mv", {"-f", "-v", "/a", "/b"}));
    EXPECT_FALSE(isAllowed("/bin/cp", {"-f", "-p", "/a", "/b"}));
    EXPECT_FALSE(isAllowed("/bin/mkdir", {"/a"}));
}

TEST(PrivilegedToolsTest, allowsNoOtherNumberOfPaths) {
    EXPECT_FALSE(isAllowed("/bin/rm", {"-Rdf"}));
    EXPECT_FALSE(isAllowed("/bin/rm", {"-Rdf", "/a", "/b"}));
    EXPECT_FALSE(isAllowed("/bin/mv", {"-f", "/a"}));
    EXPECT_FALSE(isAllowed("/bin/mv", {"-f", "/a", "/b", "/c"}));
}

TEST(PrivilegedToolsTest, allowsAbsolutePathsAlone) {
    EXPECT_FALSE(isAllowed("/bin/rm", {"-Rdf", "a"}));
    EXPECT_FALSE(isAllowed("/bin/rm", {"-Rdf", "--no-preserve-root"}));
    EXPECT_FALSE(isAllowed("/bin/rm", {"-Rdf", ""}));
    EXPECT_FALSE(isAllowed("/bin/mv", {"-f", "/a", "b"}));
    EXPECT_FALSE(isAllowed("/bin/cp", {"-f", "-p", "-R", "-t", "/a"}));
    EXPECT_FALSE(isAllowed("/bin/rm", {"-Rdf", std::string("/a\0b", 4)}));
}

}  // namespace
}  // namespace vornic::platform
