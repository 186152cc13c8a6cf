#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/rights/AuthorizationHelper.h"
#include "platform/rights/AuthorizationProtocol.h"
#include "platform/threads/Thread.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Waiting.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// The helper's work on a thread of the test, with the rights of the test.
class AuthorizationHelperTest : public test::SandboxTest {
  protected:
    AuthorizationHelperTest() {
        std::array<int, 2> ends{};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
        socket = FileDescriptor(ends[0]);
        helper = std::thread([this, end = ends[1]] {
            const FileDescriptor own(end);
            const auto isForbidden = [this](std::vector<std::string>& questions,
                                            const std::string& path) {
                questions.push_back(path);
                if (whenAsked) {
                    whenAsked(path);
                }
                return path == forbidden;
            };
            const PathGuards guards{
                .takingAway = [&](const std::string& path) { return isForbidden(asked, path); },
                .replacing =
                    [&](const std::string& path) { return isForbidden(askedAboutReplacing, path); },
                .folders = {}};
            status = serveAuthorizedTools(
                own.get(), guards,
                [this](const std::string& tool, const std::vector<std::string>& arguments,
                       std::vector<FileDescriptor> folders) {
                    if (beforeTool) {
                        beforeTool();
                    }
                    return runSystemTool(tool, arguments, std::move(folders));
                });
        });
        EXPECT_EQ(receiveMessage(socket.get()), kHelperGreeting);
    }
    ~AuthorizationHelperTest() override {
        stop();
        EXPECT_TRUE(joinDetachedThreads(std::chrono::seconds(20)));
    }

    /// Hangs up. @return the helper's exit status.
    int stop() {
        socket.close();
        if (helper.joinable()) {
            helper.join();
        }
        return status;
    }

    /// Runs a tool and waits for its end.
    AuthorizationStatus run(const std::string& tool, const std::vector<std::string>& arguments) {
        const AuthorizationStatus result = request(tool, arguments, true);
        if (result == kAuthorizationSuccess) {
            output = "";
            std::string chunk = nextOutput();
            for (; !chunk.empty(); chunk = nextOutput()) {
                output += chunk;
            }
        }
        return result;
    }
    AuthorizationStatus request(const std::string& tool, const std::vector<std::string>& arguments,
                                bool wantsOutput) {
        const std::optional<std::string> message =
            encodeRequest({.wantsOutput = wantsOutput,
                           .tool = tool,
                           .arguments = arguments,
                           .seen = lookAtArguments(tool, arguments)});
        EXPECT_TRUE(message && sendMessage(socket.get(), *message));
        return decodeStatus(receiveMessage(socket.get()).value_or("")).value_or(1);
    }
    /// While a guard is asked about "folder", a link to "target" takes its place, as somebody might
    /// do who wants to see another file go. @return the file of the same name in "target".
    std::string swapWhenAsked() {
        fs::create_directory(sandbox.path("folder"));
        fs::create_directory(sandbox.path("target"));
        sandbox.write("folder/file", "goes");
        whenAsked = [this](const std::string& path) {
            if (path == sandbox.path("folder/file")) {
                fs::rename(sandbox.path("folder"), sandbox.path("moved"));
                fs::create_directory_symlink(sandbox.path("target"), sandbox.path("folder"));
            }
        };
        return sandbox.write("target/file", "kept");
    }
    std::string nextOutput() {
        const std::optional<std::string> chunk =
            decodeOutput(receiveMessage(socket.get()).value_or(""));
        EXPECT_TRUE(chunk);
        return chunk.value_or("");
    }

    FileDescriptor socket;
    std::thread helper;
    int status = -1;
    std::string output = "nothing was read";
    std::string forbidden;
    /// Called by the guards on the helper's thread.
    std::function<void(const std::string& path)> whenAsked;
    /// Called on a thread of the helper before each tool.
    std::function<void()> beforeTool;
    std::vector<std::string> asked;
    std::vector<std::string> askedAboutReplacing;
};

TEST_F(AuthorizationHelperTest, removesFoldersWithEverythingInThem) {
    fs::create_directories(sandbox.path("folder/deep"));
    sandbox.write("folder/deep/file", "x");
    EXPECT_EQ(run("/bin/rm", {"-Rdf", sandbox.path("folder")}), kAuthorizationSuccess);
    EXPECT_FALSE(test::exists(sandbox.path("folder")));
    EXPECT_EQ(output, "");
    EXPECT_THAT(asked, ElementsAre(sandbox.path("folder")));
}

TEST_F(AuthorizationHelperTest, runsEachToolThatIsAllowed) {
    const std::string file = sandbox.write("-file", "text");
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("a/b")}), 0);
    EXPECT_EQ(run("/bin/cp", {"-f", "-p", "-R", file, sandbox.path("a/b/copy")}), 0);
    EXPECT_EQ(test::readBytes(sandbox.path("a/b/copy")), "text");
    EXPECT_EQ(run("/bin/mv", {"-f", file, sandbox.path("a/moved")}), 0);
    EXPECT_EQ(test::readBytes(sandbox.path("a/moved")), "text");
    EXPECT_FALSE(test::exists(file));
    fs::last_write_time(sandbox.path("a/moved"), fs::file_time_type{});
    EXPECT_EQ(run("/usr/bin/touch", {"-c", sandbox.path("a/moved")}), 0);
    EXPECT_NE(fs::last_write_time(sandbox.path("a/moved")), fs::file_time_type{});
    EXPECT_EQ(run("/bin/rm", {"-R", "-f", sandbox.path("a")}), 0);
    EXPECT_FALSE(test::exists(sandbox.path("a")));
    EXPECT_THAT(asked, ElementsAre(file, sandbox.path("a"))) << "only what goes is asked about";
    EXPECT_THAT(askedAboutReplacing, ElementsAre(sandbox.path("a/b"), sandbox.path("a/b/copy"),
                                                 sandbox.path("a/moved")));
}

TEST_F(AuthorizationHelperTest, doesNotWaitForAToolWhoseOutputNobodyWants) {
    const std::string folder = sandbox.path("made");
    EXPECT_EQ(request("/bin/mkdir", {"-p", folder}, false), kAuthorizationSuccess);
    // The next answer comes without output in between.
    EXPECT_EQ(request("/bin/mkdir", {"-p", folder}, false), kAuthorizationSuccess);
    EXPECT_TRUE(test::becomesTrue([&] { return fs::exists(folder); }));
}

TEST_F(AuthorizationHelperTest, succeedsInStartingAToolThatFails) {
    EXPECT_EQ(run("/bin/mv", {"-f", sandbox.path("missing"), sandbox.path("x")}),
              kAuthorizationSuccess);
    EXPECT_EQ(output, "") << "errors are not part of the output";
}

TEST_F(AuthorizationHelperTest, refusesEveryOtherTool) {
    const std::string mark = sandbox.path("mark");
    EXPECT_EQ(run("/bin/sh", {"-c", "echo x > " + mark}), kAuthorizationDenied);
    EXPECT_EQ(run("/usr/bin/touch", {mark}), kAuthorizationDenied);
    EXPECT_EQ(run("", {}), kAuthorizationDenied);
    EXPECT_FALSE(test::exists(mark));
    EXPECT_THAT(asked, IsEmpty());
}

TEST_F(AuthorizationHelperTest, refusesToTakeAwayWhatTheGuardForbids) {
    forbidden = sandbox.write("kept", "text");
    EXPECT_EQ(run("/bin/rm", {"-Rdf", forbidden}), kAuthorizationDenied);
    EXPECT_EQ(run("/bin/rm", {"-R", "-f", forbidden}), kAuthorizationDenied);
    EXPECT_EQ(run("/bin/mv", {"-f", forbidden, sandbox.path("x")}), kAuthorizationDenied);
    EXPECT_EQ(test::readBytes(forbidden), "text");
    EXPECT_THAT(asked, ElementsAre(forbidden, forbidden, forbidden));
}

TEST_F(AuthorizationHelperTest, refusesToReplaceWhatTheGuardForbids) {
    const std::string file = sandbox.write("file", "other");
    forbidden = sandbox.write("kept", "text");
    EXPECT_EQ(run("/bin/mv", {"-f", file, forbidden}), kAuthorizationDenied);
    EXPECT_EQ(run("/bin/cp", {"-f", "-p", "-R", file, forbidden}), kAuthorizationDenied);
    EXPECT_EQ(test::readBytes(forbidden), "text");
    EXPECT_THAT(askedAboutReplacing, ElementsAre(forbidden, forbidden));
}

TEST_F(AuthorizationHelperTest, asksAboutThePathWithItsFolderResolvedToo) {
    fs::create_directory(sandbox.path("real"));
    forbidden = sandbox.write("real/kept", "text");
    fs::create_directory_symlink(sandbox.path("real"), sandbox.path("link"));
    const std::string given = sandbox.path("link/kept");
    const std::string other = sandbox.write("other", "x");
    EXPECT_EQ(run("/bin/rm", {"-Rdf", given}), kAuthorizationDenied);
    EXPECT_EQ(run("/bin/mv", {"-f", other, given}), kAuthorizationDenied);
    EXPECT_EQ(test::readBytes(forbidden), "text");
    EXPECT_THAT(asked, ElementsAre(given, forbidden, other));
    EXPECT_THAT(askedAboutReplacing, ElementsAre(given, forbidden));
}

TEST_F(AuthorizationHelperTest, removesInTheFolderThatWasAskedAboutThoughALinkTakesItsPlace) {
    const std::string kept = swapWhenAsked();
    EXPECT_EQ(run("/bin/rm", {"-Rdf", sandbox.path("folder/file")}), kAuthorizationSuccess);
    EXPECT_EQ(test::readBytes(kept), "kept");
    EXPECT_FALSE(test::exists(sandbox.path("moved/file")));
}

TEST_F(AuthorizationHelperTest, movesOutOfTheFolderThatWasAskedAboutThoughALinkTakesItsPlace) {
    const std::string kept = swapWhenAsked();
    EXPECT_EQ(run("/bin/mv", {"-f", sandbox.path("folder/file"), sandbox.path("taken")}),
              kAuthorizationSuccess);
    EXPECT_EQ(test::readBytes(kept), "kept");
    EXPECT_EQ(test::readBytes(sandbox.path("taken")), "goes");
}

TEST_F(AuthorizationHelperTest, writesIntoTheFolderThatWasAskedAboutThoughALinkTakesItsPlace) {
    const std::string kept = swapWhenAsked();
    const std::string source = sandbox.write("source", "new");
    EXPECT_EQ(run("/bin/cp", {"-f", "-p", "-R", source, sandbox.path("folder/file")}),
              kAuthorizationSuccess);
    EXPECT_EQ(test::readBytes(kept), "kept");
    EXPECT_EQ(test::readBytes(sandbox.path("moved/file")), "new");
}

TEST_F(AuthorizationHelperTest, runsNothingOnAPathWhoseFolderCannotBeReached) {
    const std::string path = sandbox.path("missing/file");
    EXPECT_EQ(run("/bin/rm", {"-Rdf", path}), kAuthorizationToolExecuteFailure);
    EXPECT_EQ(run("/bin/rm", {"-Rdf", sandbox.folder() + "/."}), kAuthorizationToolExecuteFailure);
    forbidden = path;
    EXPECT_EQ(run("/bin/rm", {"-Rdf", path}), kAuthorizationDenied);
    EXPECT_TRUE(fs::exists(sandbox.folder()));
}

TEST_F(AuthorizationHelperTest, removesALinkAndNotWhatItLeadsToThoughThePathSaysFolder) {
    fs::create_directory(sandbox.path("real"));
    sandbox.write("real/kept", "text");
    fs::create_directory_symlink(sandbox.path("real"), sandbox.path("link"));
    EXPECT_EQ(run("/bin/rm", {"-Rdf", sandbox.path("link/")}), kAuthorizationSuccess);
    EXPECT_EQ(test::readBytes(sandbox.path("real/kept")), "text");
    EXPECT_FALSE(test::exists(sandbox.path("link")));
}

TEST_F(AuthorizationHelperTest, answersNewRequestsWhileAToolRuns) {
    std::promise<void> mayGoOn;
    beforeTool = [waiting = mayGoOn.get_future().share()] { waiting.wait(); };
    const std::string file = sandbox.write("file", "x");
    EXPECT_EQ(request("/bin/rm", {"-Rdf", file}, false), kAuthorizationSuccess);
    EXPECT_FALSE(test::exists(file)) << "it is out of the way at once";
    EXPECT_EQ(request("/bin/mkdir", {"-p", sandbox.path("made")}, false), kAuthorizationSuccess);
    EXPECT_TRUE(test::exists(sandbox.path("made"))) << "so that the next request finds it";
    mayGoOn.set_value();
    EXPECT_EQ(stop(), 0);
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("made"));
}

TEST_F(AuthorizationHelperTest, endsWhatWasBegunBeforeItEndsItself) {
    std::promise<void> mayGoOn;
    std::promise<void> isAtTool;
    beforeTool = [&isAtTool, waiting = mayGoOn.get_future().share()] {
        isAtTool.set_value();
        waiting.wait();
    };
    const std::string source = sandbox.write("source", "x");
    EXPECT_EQ(request("/bin/cp", {"-f", "-p", "-R", source, sandbox.path("copy")}, false), 0);
    isAtTool.get_future().wait();
    socket.close();
    mayGoOn.set_value();
    EXPECT_EQ(stop(), 0);
    EXPECT_EQ(test::readBytes(sandbox.path("copy")), "x");
    EXPECT_THAT(test::namesIn(sandbox.folder()), ElementsAre("copy", "source"));
}

TEST_F(AuthorizationHelperTest, knowsWhoseProgramItServes) {
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
    const FileDescriptor one(ends[0]);
    const FileDescriptor other(ends[1]);
    EXPECT_EQ(callerOf(other.get()), geteuid());
    EXPECT_EQ(callerOf(-1), std::nullopt);
}

TEST(StandardFoldersTest, areTheUsersOwnAndNoOthers) {
    const std::vector<FileIdentity> ofRoot = standardFoldersOf(0);
    struct stat status {};
    ASSERT_EQ(stat("/root", &status), 0);
    const FileIdentity home{.device = status.st_dev, .inode = status.st_ino};
    EXPECT_THAT(ofRoot, testing::Contains(home));
    EXPECT_THAT(standardFoldersOf(4000000000U), IsEmpty());
}

TEST_F(AuthorizationHelperTest, endsWhenTheOtherEndGoes) {
    EXPECT_EQ(stop(), 0);
}

TEST_F(AuthorizationHelperTest, endsOnWhatIsNoRequest) {
    EXPECT_TRUE(sendMessage(socket.get(), "nonsense"));
    EXPECT_EQ(receiveMessage(socket.get()), std::nullopt);
    EXPECT_EQ(stop(), 1);
}

}  // namespace
}  // namespace vornic::platform
