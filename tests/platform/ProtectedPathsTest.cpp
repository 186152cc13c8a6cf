#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "platform/ProtectedPaths.h"
#include "tests/support/Sandbox.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST(ProtectedPathsTest, protectsTheSystemsTreesWithEverythingInThem) {
    for (const std::string tree : {"/etc", "/boot", "/dev", "/proc", "/sys", "/lib", "/lib64"}) {
        EXPECT_TRUE(isProtectedPath(tree));
        EXPECT_TRUE(isProtectedPath(tree + "/"));
        EXPECT_TRUE(isProtectedPath(tree + "/a"));
        EXPECT_TRUE(isProtectedPath(tree + "/a/b.xml"));
        EXPECT_FALSE(isProtectedPath(tree + "x")) << "only begins alike";
        EXPECT_FALSE(isProtectedPath("/a" + tree)) << "lies elsewhere";
    }
}

TEST(ProtectedPathsTest, protectsSharedFoldersAsThemselvesAlone) {
    for (const std::string folder :
         {"/home", "/root", "/run", "/mnt", "/media", "/srv", "/opt", "/tmp", "/usr/local"}) {
        EXPECT_TRUE(isProtectedPath(folder));
        EXPECT_TRUE(isProtectedPath(folder + "/"));
        EXPECT_FALSE(isProtectedPath(folder + "/a"));
        EXPECT_FALSE(isProtectedPath(folder + "x"));
    }
}

TEST(ProtectedPathsTest, looksThroughExtraSlashes) {
    EXPECT_TRUE(isProtectedPath("//etc"));
    EXPECT_TRUE(isProtectedPath("///etc///passwd"));
    EXPECT_TRUE(isProtectedPath("/usr//local/"));
}

TEST(ProtectedPathsTest, protectsNothingElse) {
    EXPECT_FALSE(isProtectedPath(""));
    EXPECT_FALSE(isProtectedPath("etc"));
    EXPECT_FALSE(isProtectedPath("/Users/Shared/Project"));
    EXPECT_FALSE(isProtectedPath("/var/spool")) << "the other guard's";
}

class FormsOfPathTest : public test::SandboxTest {
  protected:
    /// The test's folder as the system sees it.
    std::string real(const std::string& name) const {
        return fs::canonical(sandbox.folder()).string() + "/" + name;
    }
    void link(const std::string& target, const std::string& name) const {
        fs::create_symlink(target, sandbox.path(name));
    }
};

TEST_F(FormsOfPathTest, isThePathAloneWhereNothingDiffers) {
    EXPECT_THAT(formsOfPath("/etc/hosts"), ElementsAre("/etc/hosts"));
    EXPECT_THAT(formsOfPath("/"), ElementsAre("/"));
    EXPECT_THAT(formsOfPath(""), ElementsAre(""));
}

TEST_F(FormsOfPathTest, resolvesLinksInTheParentFolder) {
    link("/etc", "settings");
    EXPECT_THAT(formsOfPath(sandbox.path("settings/hosts")),
                ElementsAre(sandbox.path("settings/hosts"), "/etc/hosts"));
}

TEST_F(FormsOfPathTest, resolvesChainsOfLinks) {
    link("/etc", "first");
    link("first", "second");
    EXPECT_THAT(formsOfPath(sandbox.path("second/hosts")), Contains("/etc/hosts"));
}

TEST_F(FormsOfPathTest, doesNotFollowTheLastComponent) {
    link("/etc", "settings");
    EXPECT_THAT(formsOfPath(sandbox.path("settings")), Not(Contains("/etc")));
}

TEST_F(FormsOfPathTest, followsALastComponentThatSaysFolder) {
    link("/etc", "settings");
    EXPECT_THAT(formsOfPath(sandbox.path("settings/")), Contains("/etc"));
    EXPECT_THAT(formsOfPath(sandbox.path("settings/.")), Contains("/etc"));
    EXPECT_THAT(formsOfPath(sandbox.path("settings/..")), Contains("/"));
}

TEST_F(FormsOfPathTest, resolvesStepsUp) {
    fs::create_directories(sandbox.path("a/b"));
    EXPECT_THAT(formsOfPath(sandbox.path("a/b/../c")), Contains(real("a/c")));
    EXPECT_THAT(formsOfPath("/usr/../etc"), ElementsAre("/usr/../etc", "/etc"));
    EXPECT_THAT(formsOfPath("/usr/.."), ElementsAre("/usr/..", "/"));
    EXPECT_THAT(formsOfPath("//etc"), ElementsAre("//etc", "/etc"));
}

TEST_F(FormsOfPathTest, stepsUpFromWhereALinkLeads) {
    fs::create_directories(sandbox.path("deep/er"));
    link(sandbox.path("deep/er"), "short");
    EXPECT_THAT(formsOfPath(sandbox.path("short/../x")), Contains(real("deep/x")));
}

TEST_F(FormsOfPathTest, takesStepsUpByTheTextWhereNothingCanBeResolved) {
    EXPECT_THAT(formsOfPath("/no/such/../../etc/hosts"),
                ElementsAre("/no/such/../../etc/hosts", "/etc/hosts"));
}

TEST_F(FormsOfPathTest, startsRelativePathsInTheWorkingFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(sandbox.folder());
    EXPECT_THAT(formsOfPath("x"), ElementsAre("x", real("x")));
    EXPECT_THAT(formsOfPath("../../../../../../../../etc"), Contains("/etc"));
    fs::current_path(before);
}

class LeadsToProtectedPathTest : public test::SandboxTest {};

TEST_F(LeadsToProtectedPathTest, isTrueForProtectedPathsThemselves) {
    EXPECT_TRUE(leadsToProtectedPath("/etc/passwd"));
    EXPECT_TRUE(leadsToProtectedPath("/etc/no such file"));
    EXPECT_TRUE(leadsToProtectedPath("/home"));
    EXPECT_FALSE(leadsToProtectedPath(sandbox.path("file")));
    EXPECT_FALSE(leadsToProtectedPath(sandbox.write("there", "x")));
    EXPECT_FALSE(leadsToProtectedPath("/opt/no such folder/file"));
}

TEST_F(LeadsToProtectedPathTest, isTrueForALinkToOneAndForWhatLiesBehindALink) {
    std::filesystem::create_symlink("/etc/passwd", sandbox.path("file"));
    std::filesystem::create_symlink("/etc/no such file", sandbox.path("dangling"));
    std::filesystem::create_symlink("/etc", sandbox.path("folder"));
    std::filesystem::create_symlink("folder", sandbox.path("chain"));
    for (const char* name :
         {"file", "dangling", "folder", "chain", "folder/x", "chain/x", "folder/../etc/x"}) {
        EXPECT_TRUE(leadsToProtectedPath(sandbox.path(name))) << name;
    }
}

}  // namespace
}  // namespace vornic::platform
