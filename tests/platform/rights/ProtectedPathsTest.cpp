#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>

#include "platform/files/FileDescriptor.h"
#include "platform/rights/ProtectedPaths.h"
#include "tests/support/machine/PrivateMounts.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST(ProtectedPathsTest, protectsTheSystemsTreesWithEverythingInThem) {
    for (const std::string tree :
         {"/etc", "/boot", "/dev", "/proc", "/sys", "/bin", "/sbin", "/lib", "/lib64", "/usr"}) {
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
    }
    EXPECT_FALSE(isProtectedPath("/homex"));
}

TEST(ProtectedPathsTest, protectsTheFirstLevelOfVarAndNoMore) {
    EXPECT_TRUE(isProtectedPath("/var"));
    EXPECT_TRUE(isProtectedPath("/var/lib"));
    EXPECT_TRUE(isProtectedPath("/var//lib/"));
    EXPECT_FALSE(isProtectedPath("/var/lib/thing"));
    EXPECT_FALSE(isProtectedPath("/variable/lib"));
}

TEST(ProtectedPathsTest, protectsTheTopItself) {
    EXPECT_TRUE(isProtectedPath("/"));
    EXPECT_TRUE(isProtectedPath("//"));
    EXPECT_FALSE(isProtectedPath("/thing"));
}

TEST(ProtectedPathsTest, leavesTheAdministratorsOwnTreeOpen) {
    EXPECT_TRUE(isProtectedPath("/usr/local"));
    EXPECT_TRUE(isProtectedPath("/usr/localx"));
    EXPECT_FALSE(isProtectedPath("/usr/local/bin/thing"));
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

class ProtectedEntryTest : public test::SandboxTest {
  protected:
    static bool isProtected(const std::string& folder, const std::string& name) {
        const FileDescriptor opened(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        return isProtectedEntry(opened.get(), name);
    }
};

TEST_F(ProtectedEntryTest, knowsFoldersByWhatTheyAreAndNotByTheirNames) {
    fs::create_symlink("/usr", sandbox.path("alias"));
    for (const std::string name : {"bin", "lib", "local", "bin/env", "no such file"}) {
        const fs::path path(sandbox.path("alias/" + name));
        EXPECT_TRUE(isProtected(path.parent_path(), path.filename())) << name;
    }
    EXPECT_TRUE(isProtected("/", "usr"));
    EXPECT_TRUE(isProtected("/", "bin")) << "link or folder";
    EXPECT_TRUE(isProtected("/", "."));
    EXPECT_TRUE(isProtected("/var", "lib"));
    EXPECT_TRUE(isProtected("/usr/bin", "env"));
    EXPECT_TRUE(isProtected("/proc/self", "stat"));
}

TEST_F(ProtectedEntryTest, leavesTheRestAlone) {
    fs::create_symlink("/usr", sandbox.path("alias"));
    EXPECT_FALSE(isProtected(sandbox.folder(), "alias")) << "a link of the user's own";
    EXPECT_FALSE(isProtected(sandbox.folder(), "bin"));
    EXPECT_FALSE(isProtected("/usr/local", "bin"));
    EXPECT_FALSE(isProtected("/usr/local/bin", "thing"));
    EXPECT_FALSE(isProtected("/var/lib", "thing"));
    EXPECT_FALSE(isProtected("/tmp", "thing"));
}

TEST_F(ProtectedEntryTest, knowsATreeThatIsMountedElsewhere) {
    const test::PrivateMounts mounts;
    if (!mounts.isAvailable()) {
        GTEST_SKIP() << "needs root and the right to mount";
    }
    fs::create_directory(sandbox.path("etc"));
    ASSERT_EQ(mount("/etc", sandbox.path("etc").c_str(), nullptr, MS_BIND, nullptr), 0);
    EXPECT_TRUE(isProtected(sandbox.path("etc"), "passwd"));
    EXPECT_TRUE(isProtected(sandbox.folder(), "etc"));
    EXPECT_TRUE(isProtectedItem(sandbox.path("etc/passwd")));
    EXPECT_TRUE(mounts.unmountVolume(sandbox.path("etc")));
}

TEST_F(ProtectedEntryTest, asksAboutWhatAFolderWouldTakeUnderTheItemsName) {
    fs::create_directory(sandbox.path("folder"));
    fs::create_symlink("/etc/hosts", sandbox.path("folder/file"));
    EXPECT_TRUE(writingLeadsToProtectedPath("/x/file", sandbox.path("folder")));
    EXPECT_FALSE(writingLeadsToProtectedPath("/x/other", sandbox.path("folder")));
    EXPECT_FALSE(writingLeadsToProtectedPath("/x/other", sandbox.path("new")));
    fs::create_symlink("/etc", sandbox.path("settings"));
    EXPECT_TRUE(makingLeadsToProtectedPath(sandbox.path("settings/new/deep/er")));
    EXPECT_TRUE(makingLeadsToProtectedPath("/usr/no such/folder/"));
    EXPECT_FALSE(makingLeadsToProtectedPath(sandbox.path("new/deep/er")));
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
