#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "foundation/places/QMLocalPaths.h"
#include "foundation/rights/QMAuthorization.h"
#include "tests/foundation/rights/AuthorizationTest.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

class QMAuthorizationTest : public test::AuthorizationTest {
  protected:
    [[nodiscard]] std::string trash(const std::string& name) const {
        return sandbox.home() + "/.Trash/" + name;
    }
    void putIntoTrash(const std::string& name) const {
        fs::create_directories(sandbox.home() + "/.Trash");
        std::ofstream(trash(name)) << "trashed before";
    }
};

class AuthorizationStateTest : public QMAuthorizationTest {};

TEST_F(AuthorizationStateTest, asksTheUserForTheOneRight) {
    const auto authorization = make();
    EXPECT_FALSE(authorization->isAuthorized());
    EXPECT_TRUE(authorization->canAuthorize());
    EXPECT_TRUE(authorization->authStart());
    EXPECT_TRUE(authorization->isAuthorized());
    EXPECT_THAT(host->events, ElementsAre("copyPrivilegedReference 0", "create 0",
                                          "copyRights system.privilege.admin 19"));
    EXPECT_THAT(console(), IsEmpty());
}

TEST_F(AuthorizationStateTest, asksOnlyOnce) {
    const auto authorization = make();
    EXPECT_TRUE(authorization->authStart());
    host->events.clear();
    EXPECT_TRUE(authorization->authStart());
    EXPECT_THAT(host->events, IsEmpty());
}

TEST_F(AuthorizationStateTest, asksAgainWhenWhatHeldTheRightsHasDied) {
    const auto authorization = make();
    EXPECT_TRUE(authorization->authStart());
    host->isHelperAlive = false;
    EXPECT_FALSE(authorization->isAuthorized());
    host->events.clear();
    EXPECT_TRUE(authorization->authStart());
    EXPECT_THAT(host->events,
                ElementsAre("free 0", "create 0", "copyRights system.privilege.admin 19"));
}

TEST_F(AuthorizationStateTest, knowsWhetherRightsCanBeAskedForWithoutAsking) {
    const auto authorization = make();
    EXPECT_TRUE(authorization->canAskForRights());
    host->canAsk = false;
    EXPECT_FALSE(authorization->canAskForRights());
    EXPECT_FALSE(make(false)->canAskForRights());
    EXPECT_THAT(host->events, testing::Each("copyPrivilegedReference 0"));
    EXPECT_TRUE(authorization->authStart());
    EXPECT_TRUE(authorization->canAskForRights());
}

TEST_F(AuthorizationStateTest, isUnauthorizedWhenTheUserRefuses) {
    host->rightsStatus = platform::kAuthorizationCanceled;
    const auto authorization = make();
    EXPECT_FALSE(authorization->authStart());
    EXPECT_FALSE(authorization->isAuthorized());
    EXPECT_EQ(host->events.back(), "free 0");
}

TEST_F(AuthorizationStateTest, isUnauthorizedWithoutAHandle) {
    host->createStatus = platform::kAuthorizationInternalError;
    const auto authorization = make();
    EXPECT_FALSE(authorization->authStart());
    EXPECT_FALSE(authorization->isAuthorized());
    EXPECT_EQ(host->events.back(), "create 0");
}

TEST_F(AuthorizationStateTest, asksNobodyWithoutAnInterface) {
    const auto authorization = make(false);
    EXPECT_FALSE(authorization->canAuthorize());
    EXPECT_FALSE(authorization->authStart());
    EXPECT_FALSE(authorization->isAuthorized());
    EXPECT_THAT(host->events, ElementsAre("copyPrivilegedReference 0"));
    EXPECT_THAT(console(), ElementsAre("Unable to authorize"));
    EXPECT_THAT(log.entries(), IsEmpty()) << "the console alone";
}

TEST_F(AuthorizationStateTest, refusesEveryOperationWithoutAnInterface) {
    const auto authorization = make(false);
    const std::string file = sandbox.write("file", "x");
    EXPECT_FALSE(authorization->authRemoveFile(file));
    EXPECT_FALSE(authorization->authTrashFile(file));
    EXPECT_FALSE(authorization->authTrashFolderContents(sandbox.folder()));
    EXPECT_FALSE(authorization->authMoveFile(file, sandbox.path("x")));
    EXPECT_FALSE(authorization->authMoveFolderContents(sandbox.folder(), sandbox.path("x")));
    EXPECT_FALSE(authorization->authCopyFile(file, sandbox.path("x")));
    EXPECT_FALSE(authorization->authCreateDir(sandbox.path("x")));
    EXPECT_EQ(authorization->authExecTask("/bin/rm", {"-Rdf", file}), -1);
    EXPECT_EQ(authorization->authExecTask("/bin/rm", {"-Rdf", file}, false), -1);
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_THAT(console(), testing::Each("Unable to authorize"));
    EXPECT_EQ(console().size(), 9U);
}

TEST_F(AuthorizationStateTest, takesACallersNameAndPassword) {
    const auto authorization = make(false);
    EXPECT_TRUE(authorization->authStartWithUser("editor", "p\xC3\xA4ss"));
    EXPECT_TRUE(authorization->isAuthorized());
    EXPECT_THAT(host->events, ElementsAre("copyPrivilegedReference 0",
                                          "create 0 username=editor/0 password=p\xC3\xA4ss/0",
                                          "copyRights system.privilege.admin 18 username=editor/0 "
                                          "password=p\xC3\xA4ss/0"));
}

TEST_F(AuthorizationStateTest, reportsThatNameOrPasswordAreWrong) {
    host->rightsStatus = platform::kAuthorizationDenied;
    const auto authorization = make();
    EXPECT_FALSE(authorization->authStartWithUser("editor", "wrong"));
    EXPECT_FALSE(authorization->isAuthorized());
    EXPECT_EQ(host->events.back(), "free 0");
    EXPECT_THAT(console(), ElementsAre("Authorization failed. Invalid username or password"));
    EXPECT_THAT(log.entries(), ElementsAre("Authorization failed. Invalid username or password"));
}

TEST_F(AuthorizationStateTest, reportsThatThereIsNoHandleForCredentials) {
    host->createStatus = -60008;
    const auto authorization = make();
    EXPECT_FALSE(authorization->authStartWithUser("editor", "secret"));
    EXPECT_FALSE(authorization->isAuthorized());
    EXPECT_THAT(console(), ElementsAre("Unable to create authRef - error -60008"));
    EXPECT_THAT(log.entries(), IsEmpty());
}

TEST_F(AuthorizationStateTest, needsBothNameAndPassword) {
    const auto authorization = make();
    EXPECT_FALSE(authorization->authStartWithUser(std::nullopt, "secret"));
    EXPECT_FALSE(authorization->authStartWithUser("editor", std::nullopt));
    EXPECT_THAT(host->events, ElementsAre("copyPrivilegedReference 0"));
    EXPECT_THAT(console(), IsEmpty());
}

TEST_F(AuthorizationStateTest, givesTheRightsUp) {
    const auto authorization = make();
    EXPECT_TRUE(authorization->authStart());
    authorization->authEnd();
    EXPECT_FALSE(authorization->isAuthorized());
    EXPECT_EQ(host->events.back(), "free 0");
    host->events.clear();
    authorization->authEnd();
    EXPECT_THAT(host->events, IsEmpty());
}

TEST_F(AuthorizationStateTest, givesTheRightsUpWhenTheInstanceGoes) {
    auto authorization = make();
    EXPECT_TRUE(authorization->authStart());
    authorization.reset();
    EXPECT_EQ(host->events.back(), "free 0");
}

TEST_F(AuthorizationStateTest, adoptsWhatAPrivilegedParentHandedOver) {
    host->inherited = std::make_shared<platform::Authorization>();
    const auto authorization = make(false);
    EXPECT_TRUE(authorization->isAuthorized());
    EXPECT_TRUE(authorization->authRemoveFile(sandbox.path("x")));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/rm -Rdf " + sandbox.path("x")));
}

TEST_F(AuthorizationStateTest, neverAsksTheSuperUser) {
    const auto authorization = makeForSuperUser(false);
    EXPECT_TRUE(authorization->isAuthorized());
    EXPECT_TRUE(authorization->canAuthorize());
    EXPECT_TRUE(authorization->authStart());
    EXPECT_TRUE(authorization->authStartWithUser(std::nullopt, std::nullopt));
    authorization->authEnd();
    EXPECT_TRUE(authorization->isAuthorized());
    EXPECT_THAT(host->events, ElementsAre("copyPrivilegedReference 0"));
    EXPECT_THAT(console(), IsEmpty());
}

TEST_F(AuthorizationStateTest, freesNothingForTheSuperUser) {
    host->inherited = std::make_shared<platform::Authorization>();
    const auto authorization = makeForSuperUser();
    authorization->authEnd();
    EXPECT_THAT(host->events, ElementsAre("copyPrivilegedReference 0"));
}

TEST_F(AuthorizationStateTest, isOneForTheProcess) {
    QMAuthorization::setSharedController(nullptr);
    QMAuthorization& first = QMAuthorization::sharedController(false);
    EXPECT_EQ(&first, &QMAuthorization::sharedController(true));
    EXPECT_EQ(&first, &QMAuthorization::sharedController());
    EXPECT_FALSE(first.canAuthorize()) << "the flag of the first call counts";
    QMAuthorization::setSharedController(nullptr);
    EXPECT_TRUE(QMAuthorization::sharedController().canAuthorize());
    QMAuthorization::setSharedController(nullptr);
}

class AuthExecTaskTest : public QMAuthorizationTest {};

TEST_F(AuthExecTaskTest, reportsThatTheToolIsMissingBeforeItAsks) {
    const auto authorization = make();
    EXPECT_EQ(authorization->authExecTask("/no/such/tool", {}), -2);
    EXPECT_EQ(authorization->authExecTask("/no/such/tool", {}, false), -2);
    EXPECT_THAT(host->events, ElementsAre("copyPrivilegedReference 0"));
    EXPECT_THAT(console(),
                testing::Each("Unable to execute task: path /no/such/tool doesn't exist"));
}

TEST_F(AuthExecTaskTest, asksWhenThereAreNoRightsYet) {
    const auto authorization = make();
    EXPECT_EQ(authorization->authExecTask("/bin/mkdir", {"-p", "/a b"}), 0);
    EXPECT_EQ(authorization->authExecTask("/bin/mkdir", {"-p", "/c"}), 0);
    EXPECT_THAT(
        host->events,
        ElementsAre("copyPrivilegedReference 0", "create 0", "copyRights system.privilege.admin 19",
                    "execute /bin/mkdir -p /a b", "execute /bin/mkdir -p /c"));
}

TEST_F(AuthExecTaskTest, isNotAuthorizedWhenTheUserRefuses) {
    host->rightsStatus = platform::kAuthorizationCanceled;
    const auto authorization = make();
    EXPECT_EQ(authorization->authExecTask("/bin/mkdir", {"-p", "/a"}), -1);
    EXPECT_THAT(runs(), IsEmpty());
}

TEST_F(AuthExecTaskTest, yieldsTheServicesStatus) {
    host->executeStatus = platform::kAuthorizationToolExecuteFailure;
    const auto authorization = make();
    EXPECT_EQ(authorization->authExecTask("/bin/mkdir", {"-p", "/a"}), -60031);
    EXPECT_EQ(authorization->authExecTask("/bin/mkdir", {"-p", "/a"}, false), -60031);
}

TEST_F(AuthExecTaskTest, readsTheOutputToItsEndWhenItWaits) {
    host->output = {"one", "two"};
    const auto authorization = make();
    EXPECT_TRUE(authorization->authStart());
    host->events.clear();
    EXPECT_EQ(authorization->authExecTask("/bin/mkdir", {"-p", "/a"}, false), 0);
    EXPECT_THAT(host->events,
                ElementsAre("execute /bin/mkdir -p /a", "read one", "read two", "end of output"));
}

TEST_F(AuthExecTaskTest, leavesTheOutputAloneWhenItDoesNotWait) {
    host->output = {"one"};
    const auto authorization = make();
    EXPECT_EQ(authorization->authExecTask("/bin/mkdir", {"-p", "/a"}, true), 0);
    EXPECT_EQ(host->events.back(), "execute /bin/mkdir -p /a");
}

TEST_F(AuthExecTaskTest, runsTheSuperUsersToolsDirectly) {
    const auto authorization = makeForSuperUser(false);
    EXPECT_EQ(authorization->authExecTask("/bin/mkdir", {"-p", "/a"}), 0);
    EXPECT_EQ(authorization->authExecTask("/bin/mkdir", {"-p", "/b"}, false), 0);
    EXPECT_EQ(authorization->authExecTask("/no/such/tool", {}), -2);
    EXPECT_THAT(runs(), ElementsAre("start /bin/mkdir -p /a", "run /bin/mkdir -p /b"));
}

class AuthFileTest : public QMAuthorizationTest {};

TEST_F(AuthFileTest, removes) {
    EXPECT_TRUE(make()->authRemoveFile("/data/folder"));
    EXPECT_TRUE(makeForSuperUser()->authRemoveFile("/data/folder"));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/rm -Rdf /data/folder",
                                    "start /bin/rm -Rdf /data/folder"));
}

TEST_F(AuthFileTest, moves) {
    const std::string file = sandbox.write("file", "x");
    EXPECT_TRUE(make()->authMoveFile(file, "/data/x"));
    EXPECT_TRUE(makeForSuperUser()->authMoveFile(file, "/data/x"));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mv -f " + file + " /data/x",
                                    "start /bin/mv -f " + file + " /data/x"));
}

TEST_F(AuthFileTest, copies) {
    const std::string file = sandbox.write("file", "x");
    EXPECT_TRUE(make()->authCopyFile(file, "/data/x"));
    EXPECT_TRUE(makeForSuperUser()->authCopyFile(file, "/data/x"));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/cp -f -p -R " + file + " /data/x",
                                    "start /bin/cp -f -p -R " + file + " /data/x"));
}

TEST_F(AuthFileTest, makesFolders) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(make()->authCreateDir("/data/a/b"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::microseconds(500));
    EXPECT_TRUE(makeForSuperUser()->authCreateDir("/data/a/b"));
    EXPECT_THAT(runs(),
                ElementsAre("execute /bin/mkdir -p /data/a/b", "start /bin/mkdir -p /data/a/b"));
}

TEST_F(AuthFileTest, failsWhenTheToolCannotBeStarted) {
    host->executeStatus = -60031;
    const std::string file = sandbox.write("file", "x");
    const auto authorization = make();
    EXPECT_FALSE(authorization->authRemoveFile(file));
    EXPECT_FALSE(authorization->authMoveFile(file, "/data/x"));
    EXPECT_FALSE(authorization->authCopyFile(file, "/data/x"));
    EXPECT_FALSE(authorization->authCreateDir("/data/x"));
    EXPECT_FALSE(authorization->authTrashFile(file));
    EXPECT_EQ(runs().size(), 5U);
}

TEST_F(AuthFileTest, reportsWhichPathIsMissing) {
    const auto authorization = make();
    const std::string file = sandbox.write("file", "x");
    EXPECT_FALSE(authorization->authMoveFile(std::nullopt, std::nullopt));
    EXPECT_FALSE(authorization->authMoveFile(file, std::nullopt));
    EXPECT_FALSE(authorization->authCopyFile(std::nullopt, "/data/x"));
    EXPECT_FALSE(authorization->authCopyFile(file, std::nullopt));
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_THAT(console(), ElementsAre("Error in authMoveFile: old path is null",
                                       "Error in authMoveFile: new path is null",
                                       "Error in authCopyFile: old path is null",
                                       "Error in authCopyFile: new path is null"));
}

TEST_F(AuthFileTest, movesAndCopiesNothingThatDoesNotExist) {
    for (const auto& authorization : {make(), makeForSuperUser()}) {
        EXPECT_FALSE(authorization->authMoveFile(sandbox.path("missing"), "/data/x"));
        EXPECT_FALSE(authorization->authCopyFile(sandbox.path("missing"), "/data/x"));
    }
    EXPECT_THAT(runs(), IsEmpty());
    EXPECT_THAT(console(), IsEmpty());
}

TEST_F(AuthFileTest, givesToolsAbsolutePathsAlone) {
    const fs::path before = fs::current_path();
    sandbox.write("-file", "x");
    fs::current_path(sandbox.folder());
    const std::string here = fs::current_path().string();
    const auto authorization = make();
    EXPECT_TRUE(authorization->authRemoveFile("-file"));
    EXPECT_TRUE(authorization->authMoveFile("-file", "-x"));
    EXPECT_TRUE(authorization->authCopyFile("-file", "-x"));
    EXPECT_TRUE(authorization->authCreateDir("-x"));
    EXPECT_TRUE(authorization->authTrashFile("-file"));
    fs::current_path(before);
    EXPECT_THAT(runs(), ElementsAre("execute /bin/rm -Rdf " + here + "/-file",
                                    "execute /bin/mv -f " + here + "/-file " + here + "/-x",
                                    "execute /bin/cp -f -p -R " + here + "/-file " + here + "/-x",
                                    "execute /bin/mkdir -p " + here + "/-x",
                                    "execute /bin/mv -f " + here + "/-file " + trash("-file")));
}

TEST_F(AuthFileTest, refusesEmptyPaths) {
    const std::string file = sandbox.write("file", "x");
    for (const auto& authorization : {make(), makeForSuperUser()}) {
        EXPECT_FALSE(authorization->authRemoveFile(""));
        EXPECT_FALSE(authorization->authMoveFile("", "/data/x"));
        EXPECT_FALSE(authorization->authMoveFile(file, ""));
        EXPECT_FALSE(authorization->authCopyFile(file, ""));
        EXPECT_FALSE(authorization->authCreateDir(""));
        EXPECT_FALSE(authorization->authTrashFile(""));
    }
    EXPECT_THAT(runs(), IsEmpty());
}

TEST_F(AuthFileTest, movesTheContentsOfAFolder) {
    sandbox.write("b", "x");
    sandbox.write("a", "x");
    fs::create_directories(sandbox.path("c/deep"));
    EXPECT_TRUE(make()->authMoveFolderContents(sandbox.folder(), "/data/to"));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mv -f " + sandbox.path("a") + " /data/to/a",
                                    "execute /bin/mv -f " + sandbox.path("b") + " /data/to/b",
                                    "execute /bin/mv -f " + sandbox.path("c") + " /data/to/c"));
}

TEST_F(AuthFileTest, movesNothingOfAFolderThatIsEmptyOrCannotBeRead) {
    EXPECT_TRUE(make()->authMoveFolderContents(sandbox.folder(), "/data/to"));
    EXPECT_TRUE(make()->authMoveFolderContents(sandbox.path("missing"), "/data/to"));
    EXPECT_TRUE(make()->authTrashFolderContents(sandbox.folder()));
    EXPECT_TRUE(make()->authTrashFolderContents(sandbox.path("missing"), true));
    EXPECT_THAT(runs(), IsEmpty());
}

TEST_F(AuthFileTest, triesEveryEntryThoughOneFails) {
    sandbox.write("a", "x");
    fs::create_symlink(sandbox.path("missing"), sandbox.path("b"));
    sandbox.write("c", "x");
    EXPECT_FALSE(make()->authMoveFolderContents(sandbox.folder(), "/data/to"));
    EXPECT_FALSE(make()->authTrashFolderContents(sandbox.folder()));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mv -f " + sandbox.path("a") + " /data/to/a",
                                    "execute /bin/mv -f " + sandbox.path("c") + " /data/to/c",
                                    "execute /bin/mv -f " + sandbox.path("a") + " " + trash("a"),
                                    "execute /bin/mv -f " + sandbox.path("c") + " " + trash("c")));
}

class AuthTrashTest : public QMAuthorizationTest {
  protected:
    [[nodiscard]] std::string note(const std::string& name) const {
        return sandbox.home() + "/.local/share/Trash/info/" + name + ".trashinfo";
    }
    /// The 14 digits of a date in a destination lie between both calls.
    static std::string stampNow() {
        const std::time_t now = std::time(nullptr);
        char text[16];
        EXPECT_EQ(std::strftime(text, sizeof text, "%Y%m%d%H%M%S", std::localtime(&now)), 14U);
        return text;
    }
};

TEST_F(AuthTrashTest, movesIntoTheUsersTrash) {
    const std::string file = sandbox.write("Cut.xml", "x");
    EXPECT_TRUE(make()->authTrashFile(file));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mv -f " + file + " " + trash("Cut.xml")));
}

TEST_F(AuthTrashTest, notesThePlaceOfWhatComesIntoTheDesktopsTrash) {
    const std::string file = sandbox.write("Cut.xml", "x");
    host->whenExecuted = [this] {
        EXPECT_TRUE(test::exists(note("Cut.xml"))) << "written before the move";
    };
    EXPECT_TRUE(make()->authTrashFile(file));
    EXPECT_THAT(test::readBytes(note("Cut.xml")), testing::HasSubstr("/files/Cut.xml\n"));
}

TEST_F(AuthTrashTest, takesTheNoteAwayWhenNothingIsMoved) {
    const std::string file = sandbox.write("Cut.xml", "x");
    host->executeStatus = platform::kAuthorizationDenied;
    EXPECT_FALSE(make()->authTrashFile(file));
    EXPECT_FALSE(make()->authTrashFile(sandbox.path("missing")));
    EXPECT_TRUE(fs::is_empty(sandbox.home() + "/.local/share/Trash/info"));
}

TEST_F(AuthTrashTest, followsNoLinkThatIsNoTrash) {
    const std::string file = sandbox.write("Cut.xml", "x");
    fs::create_directory(sandbox.path("open"));
    fs::permissions(sandbox.path("open"), static_cast<fs::perms>(0755));
    fs::create_directory_symlink(sandbox.path("open"), sandbox.home() + "/.Trash");
    EXPECT_FALSE(make()->authTrashFile(file));
    EXPECT_THAT(runs(), IsEmpty());
}

TEST_F(AuthTrashTest, makesNoTrashForTheUserWhoBecameTheSuperUser) {
    const std::string file = sandbox.write("Cut.xml", "x");
    const auto authorization = make();
    host->superUser = true;
    EXPECT_TRUE(authorization->authTrashFile(file));
    EXPECT_FALSE(test::exists(sandbox.home() + "/.Trash"));
}

TEST_F(AuthTrashTest, putsTheLocalTimeBehindANameThatIsTaken) {
    setenv("TZ", "Asia/Kathmandu", 1);
    tzset();
    const std::string file = sandbox.write("Cut.txt", "x");
    putIntoTrash("Cut.txt");
    const std::string before = stampNow();
    EXPECT_TRUE(make()->authTrashFile(file));
    const std::string after = stampNow();
    unsetenv("TZ");
    tzset();
    ASSERT_EQ(runs().size(), 1U);
    const std::string start = "execute /bin/mv -f " + file + " " + trash("Cut_");
    const std::string run = runs()[0];
    ASSERT_TRUE(run.starts_with(start)) << run;
    EXPECT_THAT(run.substr(start.size()), MatchesRegex("[0-9]{14}\\.txt"));
    EXPECT_GE(run.substr(start.size(), 14), before);
    EXPECT_LE(run.substr(start.size(), 14), after);
}

TEST_F(AuthTrashTest, replacesNothingThatWasTrashedInTheSameSecond) {
    const std::string file = sandbox.write("Cut.txt", "x");
    putIntoTrash("Cut.txt");
    const std::string taken = "Cut_" + stampNow() + ".txt";
    putIntoTrash(taken);
    EXPECT_TRUE(make()->authTrashFile(file));
    ASSERT_EQ(runs().size(), 1U);
    EXPECT_THAT(runs()[0], MatchesRegex(".*/\\.Trash/Cut_[0-9]{14}\\.txt"));
    EXPECT_FALSE(runs()[0].ends_with(taken)) << runs()[0];
}

TEST_F(AuthTrashTest, endsATakenNameWithoutExtensionInADot) {
    const std::string file = sandbox.write("Cut", "x");
    putIntoTrash("Cut");
    EXPECT_TRUE(make()->authTrashFile(file));
    EXPECT_THAT(runs(), ElementsAre(MatchesRegex(".*/\\.Trash/Cut_[0-9]{14}\\.")));
}

TEST_F(AuthTrashTest, usesTheTrashOfTheUserWhoBecameTheSuperUser) {
    const std::string file = sandbox.write("Cut.xml", "x");
    const auto authorization = make();
    host->superUser = true;
    const std::string before = sandbox.home();
    setenv("HOME", sandbox.path("roots").c_str(), 1);
    EXPECT_TRUE(authorization->authTrashFile(file, true));
    setenv("HOME", before.c_str(), 1);
    EXPECT_THAT(runs(), ElementsAre("start /bin/mv -f " + file + " " + trash("Cut.xml")));
}

TEST_F(AuthTrashTest, usesTheSuperUsersOwnTrashInHisOwnSession) {
    const std::string file = sandbox.write("Cut.xml", "x");
    EXPECT_TRUE(makeForSuperUser()->authTrashFile(file));
    EXPECT_THAT(runs(), ElementsAre("start /bin/mv -f " + file + " " + trash("Cut.xml")));
}

TEST_F(AuthTrashTest, removesTheDestinationAndNotTheItemInTheSuperUsersSession) {
    const std::string file = sandbox.write("Cut.xml", "x");
    EXPECT_TRUE(makeForSuperUser()->authTrashFile(file, true));
    putIntoTrash("Cut.xml");
    EXPECT_TRUE(makeForSuperUser()->authTrashFile(file, true));
    EXPECT_THAT(runs(), ElementsAre("start /bin/rm -Rdf " + trash("Cut.xml"),
                                    MatchesRegex("start /bin/rm -Rdf .*/\\.Trash/"
                                                 "Cut_[0-9]{14}\\.xml")));
}

TEST_F(AuthTrashTest, removesNothingInsteadForOtherUsers) {
    const std::string file = sandbox.write("Cut.xml", "x");
    EXPECT_TRUE(make()->authTrashFile(file, true));
    EXPECT_TRUE(make()->authTrashFolderContents(sandbox.folder(), true));
    EXPECT_THAT(runs(), testing::Each("execute /bin/mv -f " + file + " " + trash("Cut.xml")));
    EXPECT_EQ(runs().size(), 2U);
}

TEST_F(AuthTrashTest, trashesEachEntryOfAFolder) {
    sandbox.write("b", "x");
    sandbox.write("a", "x");
    EXPECT_TRUE(make()->authTrashFolderContents(sandbox.folder()));
    EXPECT_THAT(runs(), ElementsAre("execute /bin/mv -f " + sandbox.path("a") + " " + trash("a"),
                                    "execute /bin/mv -f " + sandbox.path("b") + " " + trash("b")));
}

TEST_F(AuthTrashTest, removesEachEntryOfAFolderInTheSuperUsersSession) {
    sandbox.write("b", "x");
    sandbox.write("a", "x");
    EXPECT_TRUE(makeForSuperUser()->authTrashFolderContents(sandbox.folder(), true));
    EXPECT_TRUE(makeForSuperUser()->authTrashFolderContents(sandbox.folder(), false));
    EXPECT_THAT(runs(), ElementsAre("start /bin/rm -R -f " + sandbox.path("a"),
                                    "start /bin/rm -R -f " + sandbox.path("b"),
                                    "start /bin/mv -f " + sandbox.path("a") + " " + trash("a"),
                                    "start /bin/mv -f " + sandbox.path("b") + " " + trash("b")));
}

TEST_F(AuthTrashTest, failsWithoutATrash) {
    constexpr unsigned kUnknownUser = 61233;
    if (setresuid(0, 0, 0) != 0) {
        GTEST_SKIP() << "a user without a home folder can be had by root alone";
    }
    const std::string file = sandbox.write("Cut.xml", "x");
    fs::permissions(fs::path(sandbox.folder()).parent_path(), fs::perms::all);
    EXPECT_TRUE(test::passesInChild([&] {
        ASSERT_EQ(setresuid(kUnknownUser, kUnknownUser, kUnknownUser), 0);
        unsetenv("HOME");
        ASSERT_EQ(QMLocalPaths::trashDirectory(), std::nullopt);
        EXPECT_FALSE(make()->authTrashFile(file));
        EXPECT_FALSE(makeForSuperUser()->authTrashFile(file, true));
        EXPECT_THAT(runs(), IsEmpty());
    }));
    EXPECT_THAT(console(), ElementsAre("Error in authMoveFile: new path is null"));
}

}  // namespace
}  // namespace vornic
