#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "foundation/places/QMLocalPaths.h"
#include "foundation/rights/QMAuthorization.h"
#include "foundation/rights/SystemPathGuard.h"
#include "platform/rights/AuthorizationProtocol.h"
#include "tests/foundation/rights/AuthorizationTest.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// The guards of what must not be removed or moved. The process only records what would have run.
class QMAuthorizationGuardTest : public test::AuthorizationTest {
  protected:
    void link(const std::string& target, const std::string& name) const {
        fs::create_symlink(target, sandbox.path(name));
    }
    [[nodiscard]] std::string library() const { return sandbox.home() + "/.local/share/quillmark"; }
    /// Paths that are guarded, in every disguise.
    [[nodiscard]] std::vector<std::string> guarded() const {
        link("/etc", "settings");
        link("/", "top");
        link("settings", "chain");
        return {"/",
                "/usr",
                "/bin",
                "/sbin",
                "/var",
                "/System",
                "/Users/Shared",
                sandbox.home(),
                sandbox.home() + "/",
                library(),
                library() + "/Preferences",
                sandbox.home() + "/Applications",
                "/var/lib/quillmark",
                "/opt",
                "/etc",
                "/etc/",
                "/etc/hosts",
                "//etc//hosts",
                "/boot/loader",
                "/dev/null",
                "/proc/1",
                "/sys/kernel",
                "/lib/x",
                "/lib64",
                "/home",
                "/root",
                "/run",
                "/mnt",
                "/media",
                "/srv",
                "/tmp",
                "/tmp/",
                "/usr/local",
                "/usr/",
                "/usr/.",
                "/usr/..",
                "/usr/../etc",
                "/usr/../etc/hosts",
                "/no/such/../../etc/hosts",
                "/tmp/../home",
                sandbox.path("settings/hosts"),
                sandbox.path("settings/"),
                sandbox.path("settings/."),
                sandbox.path("settings/../etc/hosts"),
                sandbox.path("chain/hosts"),
                sandbox.path("top/usr"),
                sandbox.path("top/System"),
                sandbox.path("../home")};
    }
    void expectNothingRan() {
        EXPECT_THAT(runs(), IsEmpty());
        EXPECT_THAT(host->events, testing::Each("copyPrivilegedReference 0"))
            << "nobody is asked for a password either";
    }
    static std::vector<std::string> messages(const std::string& before,
                                             const std::vector<std::string>& paths) {
        std::vector<std::string> lines;
        for (const std::string& path : paths) {
            lines.push_back(before + path + " because it is a system directory.");
        }
        return lines;
    }
};

TEST_F(QMAuthorizationGuardTest, removesNoSystemFolder) {
    const std::vector<std::string> paths = guarded();
    for (const std::string& path : paths) {
        EXPECT_FALSE(make()->authRemoveFile(path)) << path;
    }
    expectNothingRan();
    EXPECT_EQ(console(), messages("Unable to delete path ", paths));
}

TEST_F(QMAuthorizationGuardTest, removesNoSystemFolderForTheSuperUserEither) {
    const auto authorization = makeForSuperUser();
    for (const std::string& path : guarded()) {
        EXPECT_FALSE(authorization->authRemoveFile(path)) << path;
        EXPECT_FALSE(authorization->authTrashFile(path)) << path;
        EXPECT_FALSE(authorization->authTrashFile(path, true)) << path;
        EXPECT_FALSE(authorization->authTrashFolderContents(path, true)) << path;
        EXPECT_FALSE(authorization->authMoveFile(path, "/data/x")) << path;
        EXPECT_FALSE(authorization->authMoveFolderContents(path, "/data/x")) << path;
    }
    expectNothingRan();
}

TEST_F(QMAuthorizationGuardTest, trashesNoSystemFolder) {
    const std::vector<std::string> paths = guarded();
    for (const std::string& path : paths) {
        EXPECT_FALSE(make()->authTrashFile(path)) << path;
    }
    expectNothingRan();
    EXPECT_EQ(console(), messages("Unable to trash path ", paths));
}

TEST_F(QMAuthorizationGuardTest, trashesNoContentsOfASystemFolder) {
    const std::vector<std::string> paths = guarded();
    for (const std::string& path : paths) {
        EXPECT_FALSE(make()->authTrashFolderContents(path)) << path;
    }
    expectNothingRan();
    EXPECT_EQ(console(), messages("Unable to trash folder contents of path ", paths));
}

TEST_F(QMAuthorizationGuardTest, movesNoSystemFolder) {
    const std::vector<std::string> paths = guarded();
    for (const std::string& path : paths) {
        EXPECT_FALSE(make()->authMoveFile(path, "/data/x")) << path;
    }
    expectNothingRan();
    EXPECT_EQ(console(), messages("Unable to move path ", paths));
}

TEST_F(QMAuthorizationGuardTest, movesNoContentsOfASystemFolder) {
    const std::vector<std::string> paths = guarded();
    for (const std::string& path : paths) {
        EXPECT_FALSE(make()->authMoveFolderContents(path, "/data/x")) << path;
    }
    expectNothingRan();
    EXPECT_EQ(console(), messages("Unable to move contents of path ", paths));
}

TEST_F(QMAuthorizationGuardTest, asksAboutEachEntryOfAFolder) {
    // The folder is nobody's, one of its entries is.
    const std::string above = fs::path(library()).parent_path().string();
    fs::create_directories(library());
    fs::create_directories(above + "/other");
    fs::create_directory(sandbox.home() + "/.Trash");
    EXPECT_FALSE(makeForSuperUser()->authTrashFolderContents(above, true));
    EXPECT_FALSE(makeForSuperUser()->authTrashFolderContents(above, false));
    EXPECT_FALSE(makeForSuperUser()->authMoveFolderContents(above, "/data"));
    EXPECT_THAT(runs(), ElementsAre("start /bin/rm -R -f " + above + "/other",
                                    "start /bin/mv -f " + above + "/other " + sandbox.home() +
                                        "/.Trash/other",
                                    "start /bin/mv -f " + above + "/other /data/other"));
}

TEST_F(QMAuthorizationGuardTest, proceedsInsideTheUsersLibrary) {
    EXPECT_TRUE(make()->authRemoveFile(library() + "/Logs"));
    EXPECT_TRUE(make()->authRemoveFile(sandbox.home() + "/Movies/Cut.xml"));
    EXPECT_TRUE(make()->authRemoveFile("/usr/local/share/thing"));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/rm -Rdf " + library() + "/Logs",
                                    "execute /bin/rm -Rdf " + sandbox.home() + "/Movies/Cut.xml",
                                    "execute /bin/rm -Rdf /usr/local/share/thing"));
    EXPECT_THAT(console(), IsEmpty());
}

TEST_F(QMAuthorizationGuardTest, actsOnALinkAndNotOnItsTarget) {
    link("/etc", "settings");
    EXPECT_TRUE(make()->authRemoveFile(sandbox.path("settings")));
    EXPECT_TRUE(make()->authTrashFile(sandbox.path("settings")));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/rm -Rdf " + sandbox.path("settings"),
                                    "execute /bin/mv -f " + sandbox.path("settings") + " " +
                                        sandbox.home() + "/.Trash/settings"));
}

TEST_F(QMAuthorizationGuardTest, copiesFromAndCreatesInSystemFolders) {
    EXPECT_TRUE(make()->authCopyFile("/etc/hostname", "/data/x"));
    EXPECT_TRUE(make()->authCreateDir("/usr/local/share/thing"));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/cp -f -p -R /etc/hostname /data/x",
                                    "execute /bin/mkdir -p /usr/local/share/thing"));
    EXPECT_THAT(console(), IsEmpty());
}

TEST_F(QMAuthorizationGuardTest, writesNothingInTheSystemsPlaceOnAnyRoad) {
    const std::string file = sandbox.write("file", "x");
    link("/etc/hosts", "hosts");
    link("/etc", "settings");
    fs::create_directory(sandbox.path("folder"));
    link("/bin/sh", "folder/file");
    for (const bool superUser : {false, true}) {
        host->superUser = superUser;
        const auto authorization = make();
        for (const std::string& path :
             {sandbox.path("hosts"), sandbox.path("settings"), sandbox.path("settings/new"),
              sandbox.path("folder"), std::string("/bin"), std::string("/bin/sh"),
              std::string("/usr/lib/thing"), std::string("/etc/new")}) {
            EXPECT_FALSE(authorization->authCopyFile(file, path)) << path;
            EXPECT_FALSE(authorization->authMoveFile(file, path)) << path;
        }
        EXPECT_FALSE(authorization->authCreateDir("/usr/lib/thing/deep"));
        EXPECT_FALSE(authorization->authCreateDir(sandbox.path("settings/new/deep")));
    }
    expectNothingRan();
}

TEST_F(QMAuthorizationGuardTest, asksTheListOfStandardFoldersOnlyAboutWhatGoes) {
    const std::string file = sandbox.write("file", "x");
    fs::create_directories(library());
    EXPECT_TRUE(make()->authCopyFile(file, library()));
    EXPECT_TRUE(make()->authMoveFile(file, library()));
    EXPECT_TRUE(make()->authCreateDir(library()));
    EXPECT_EQ(runs().size(), 3U);
}

TEST_F(QMAuthorizationGuardTest, hasLookedBeforeTheUserIsAsked) {
    const std::string file = sandbox.write("file", "first");
    const auto seen = platform::lookAtArguments("/bin/rm", {"-Rdf", file});
    host->whenAsked = [&] { fs::rename(sandbox.write("other", "second"), file); };
    EXPECT_TRUE(make()->authRemoveFile(file));
    EXPECT_EQ(host->seenPaths, seen);
    EXPECT_NE(host->seenPaths, platform::lookAtArguments("/bin/rm", {"-Rdf", file}));
}

TEST_F(QMAuthorizationGuardTest, guardsEachFormOfAPath) {
    for (const std::string& path : guarded()) {
        EXPECT_TRUE(isGuardedSystemPath(path)) << path;
    }
    for (const std::string& path :
         {std::string(""), sandbox.folder(), sandbox.path("settings"), std::string("/usr/local/x"),
          std::string("/tmp/x"), std::string("/home/x/y"), std::string("/data")}) {
        EXPECT_FALSE(isGuardedSystemPath(path)) << path;
    }
}

}  // namespace
}  // namespace vornic
