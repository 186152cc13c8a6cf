#include <array>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <sys/socket.h>

#include "platform/AuthorizationHelper.h"
#include "platform/AuthorizationProtocol.h"
#include "platform/FileDescriptor.h"
#include "platform/Thread.h"
#include "tests/support/Sandbox.h"

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
            status = serveAuthorizedTools(own.get(), [this](const std::string& path) {
                asked.push_back(path);
                return path == forbidden;
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
            encodeRequest({.wantsOutput = wantsOutput, .tool = tool, .arguments = arguments});
        EXPECT_TRUE(message && sendMessage(socket.get(), *message));
        return decodeStatus(receiveMessage(socket.get()).value_or("")).value_or(1);
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
    std::vector<std::string> asked;
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
}

TEST_F(AuthorizationHelperTest, doesNotWaitForAToolWhoseOutputNobodyWants) {
    const std::string folder = sandbox.path("made");
    EXPECT_EQ(request("/bin/mkdir", {"-p", folder}, false), kAuthorizationSuccess);
    // The next answer comes without output in between.
    EXPECT_EQ(request("/bin/mkdir", {"-p", folder}, false), kAuthorizationSuccess);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!fs::exists(folder) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_TRUE(fs::exists(folder));
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
