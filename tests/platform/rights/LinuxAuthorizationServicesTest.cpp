#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "platform/rights/AuthorizationProtocol.h"
#include "platform/rights/LinuxAuthorizationServices.h"
#include "platform/settings/Directories.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/programs/ChildProcess.h"
#include "tests/support/programs/HelperCopy.h"

namespace vornic::platform {
namespace {

namespace fs = std::filesystem;
using test::becomesTrue;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

constexpr AuthorizationFlags kAsking = 19;
constexpr AuthorizationFlags kWithoutAsking = 18;
constexpr const char* kPassword = "right password";

/// The services with the real helper, and scripts in the places of pkexec and sudo that start it
/// with the test's own rights.
class LinuxAuthorizationServicesTest : public testing::Test {
  protected:
    LinuxAuthorizationServicesTest()
        : services({.pkexec = program("pkexec", "exec \"$1\""),
                    .sudo = program("sudo",
                                    "IFS= read -r password; "
                                    "test \"$password\" = 'right password' || exit 1; "
                                    "for helper; do :; done; exec \"$helper\""),
                    .helper = helper.path()}) {}
    ~LinuxAuthorizationServicesTest() override {
        reference = nullptr;
        EXPECT_TRUE(becomesTrue([this] { return !test::someProcessHasArgument(helper.path()); }));
        EXPECT_TRUE(joinDetachedThreads(std::chrono::seconds(20)));
    }

    /// A script that leaves behind how it was started.
    [[nodiscard]] std::string program(const std::string& name, const std::string& body) const {
        const std::string trace = sandbox.path(name);
        std::string path = sandbox.write(name + ".sh",
                                         "#!/bin/sh\n"
                                         "tr '\\0' '\\n' < /proc/$$/cmdline >> " +
                                             trace +
                                             ".arguments\n"
                                             "tr '\\0' '\\n' < /proc/$$/environ > " +
                                             trace +
                                             ".environment\n"
                                             "echo $$ > " +
                                             trace + ".process\n" + body + "\n");
        fs::permissions(path, fs::perms(0755));
        return path;
    }
    [[nodiscard]] LinuxAuthorizationServices withPkexec(const std::string& body) const {
        return LinuxAuthorizationServices(
            {.pkexec = program("other", body), .sudo = "", .helper = helper.path()});
    }

    AuthorizationStatus ask() { return ask(services); }
    AuthorizationStatus ask(LinuxAuthorizationServices& asked) {
        EXPECT_EQ(asked.create({}, 0, reference), kAuthorizationSuccess);
        return asked.copyRights(reference, "system.privilege.admin", {}, kAsking);
    }
    AuthorizationStatus show(const std::string& name, std::string_view password) {
        AuthorizationEnvironment credentials;
        credentials.push_back({.name = "username", .value = SecretText(std::string_view(name))});
        credentials.push_back({.name = "password", .value = SecretText(password)});
        EXPECT_EQ(services.create(credentials, 0, reference), kAuthorizationSuccess);
        return services.copyRights(reference, "system.privilege.admin", credentials,
                                   kWithoutAsking);
    }
    AuthorizationStatus execute(const std::string& tool, const std::vector<std::string>& arguments,
                                std::unique_ptr<CommunicationsPipe>* pipe) {
        return services.executeWithPrivileges(reference, tool, 0, arguments,
                                              lookAtArguments(tool, arguments), pipe);
    }
    /// Runs a tool and waits for its end.
    AuthorizationStatus run(const std::string& tool, const std::vector<std::string>& arguments) {
        std::unique_ptr<CommunicationsPipe> pipe;
        const AuthorizationStatus status = execute(tool, arguments, &pipe);
        while (pipe && !pipe->readAvailable().empty()) {
        }
        return status;
    }
    [[nodiscard]] int processOf(const std::string& name) const {
        return std::stoi(test::readBytes(sandbox.path(name + ".process")));
    }
    [[nodiscard]] static bool isThere(int process) {
        return fs::exists("/proc/" + std::to_string(process));
    }

    const test::HelperCopy helper;
    const test::Unprivileged user;
    const test::Sandbox sandbox;
    LinuxAuthorizationServices services;
    AuthorizationRef reference;
};

TEST_F(LinuxAuthorizationServicesTest, inheritsNoAuthorization) {
    EXPECT_NE(services.copyPrivilegedReference(reference, 0), kAuthorizationSuccess);
    EXPECT_EQ(reference, nullptr);
}

TEST_F(LinuxAuthorizationServicesTest, runsNothingWithoutRights) {
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("x")}), kAuthorizationInvalidReference);
    ASSERT_EQ(services.create({}, 0, reference), kAuthorizationSuccess);
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("x")}), kAuthorizationInvalidReference);
    EXPECT_FALSE(test::exists(sandbox.path("x")));
}

TEST_F(LinuxAuthorizationServicesTest, takesNoReferenceOfSomebodyElses) {
    reference = std::make_shared<Authorization>();
    EXPECT_EQ(services.copyRights(reference, "system.privilege.admin", {}, kAsking),
              kAuthorizationInvalidReference);
    EXPECT_EQ(services.free(reference, 0), kAuthorizationInvalidReference);
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("x")}), kAuthorizationInvalidReference);
}

TEST_F(LinuxAuthorizationServicesTest, runsToolsOnceTheUserHasAgreed) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("a/b")}), kAuthorizationSuccess);
    EXPECT_TRUE(fs::is_directory(sandbox.path("a/b")));
    EXPECT_EQ(run("/bin/rm", {"-Rdf", sandbox.path("a")}), kAuthorizationSuccess);
    EXPECT_FALSE(test::exists(sandbox.path("a")));
}

TEST_F(LinuxAuthorizationServicesTest, givesPkexecTheHelperAlone) {
    setenv("SHELL", "/odd/shell", 1);
    setenv("LD_PRELOAD_OF_OURS", "x", 1);
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    EXPECT_EQ(test::readBytes(sandbox.path("pkexec.arguments")),
              "/bin/sh\n" + sandbox.path("pkexec.sh") + "\n" + helper.path() + "\n");
    const std::string environment = test::readBytes(sandbox.path("pkexec.environment"));
    EXPECT_THAT(environment, HasSubstr("SHELL=/bin/sh\n"));
    EXPECT_THAT(environment, Not(HasSubstr("OF_OURS")));
    unsetenv("LD_PRELOAD_OF_OURS");
}

TEST_F(LinuxAuthorizationServicesTest, waitsForTheToolWhoseOutputIsRead) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    fs::create_directories(sandbox.path("many"));
    for (int index = 0; index < 2000; ++index) {
        sandbox.write("many/" + std::to_string(index), "");
    }
    EXPECT_EQ(run("/bin/rm", {"-R", "-f", sandbox.path("many")}), kAuthorizationSuccess);
    EXPECT_FALSE(test::exists(sandbox.path("many")));
}

TEST_F(LinuxAuthorizationServicesTest, goesOnWithoutOutputThatNobodyRead) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    std::unique_ptr<CommunicationsPipe> first;
    ASSERT_EQ(execute("/bin/mkdir", {"-p", sandbox.path("a")}, &first), kAuthorizationSuccess);
    std::unique_ptr<CommunicationsPipe> second;
    ASSERT_EQ(execute("/bin/mkdir", {"-p", sandbox.path("b")}, &second), kAuthorizationSuccess);
    EXPECT_EQ(first->readAvailable(), "");
    EXPECT_EQ(second->readAvailable(), "");
    EXPECT_TRUE(test::exists(sandbox.path("a")));
    EXPECT_TRUE(test::exists(sandbox.path("b")));
}

TEST_F(LinuxAuthorizationServicesTest, returnsAtOnceWhenNobodyWantsTheOutput) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    EXPECT_EQ(execute("/bin/mkdir", {"-p", sandbox.path("a")}, nullptr), kAuthorizationSuccess);
    EXPECT_TRUE(becomesTrue([this] { return test::exists(sandbox.path("a")); }));
}

TEST_F(LinuxAuthorizationServicesTest, servesManyThreads) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([this, index] {
            for (int round = 0; round < 5; ++round) {
                const std::string folder =
                    sandbox.path(std::to_string(index) + "-" + std::to_string(round));
                EXPECT_EQ(execute("/bin/mkdir", {"-p", folder}, nullptr), kAuthorizationSuccess);
                EXPECT_TRUE(becomesTrue([&] { return test::exists(folder); }));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(LinuxAuthorizationServicesTest, doesNothingToWhatTookThePlaceOfWhatWasSeen) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    const std::vector<std::string> arguments{"-Rdf", sandbox.write("file", "first")};
    const std::vector<SeenPath> seen = lookAtArguments("/bin/rm", arguments);
    fs::rename(sandbox.write("other", "second"), sandbox.path("file"));
    EXPECT_EQ(services.executeWithPrivileges(reference, "/bin/rm", 0, arguments, seen, nullptr),
              kAuthorizationDenied);
    EXPECT_EQ(test::readBytes(sandbox.path("file")), "second");
}

TEST_F(LinuxAuthorizationServicesTest, refusesToolsAndPathsThatAreNotAllowed) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    EXPECT_EQ(run("/bin/sh", {"-c", "touch " + sandbox.path("x")}), kAuthorizationDenied);
    EXPECT_EQ(run("/bin/mkdir", {"-p", "relative"}), kAuthorizationDenied);
    EXPECT_EQ(run("/bin/mkdir", {"-p", std::string("/a\0b", 4)}), kAuthorizationInternalError);
    EXPECT_FALSE(test::exists(sandbox.path("x")));
}

TEST_F(LinuxAuthorizationServicesTest, startsOneHelperForAnAuthorization) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    const int first = processOf("pkexec");
    EXPECT_EQ(services.copyRights(reference, "system.privilege.admin", {}, kAsking),
              kAuthorizationSuccess);
    EXPECT_EQ(processOf("pkexec"), first);
    EXPECT_TRUE(isThere(first));
}

TEST_F(LinuxAuthorizationServicesTest, endsTheHelperWhenTheRightsAreGivenUp) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    const int process = processOf("pkexec");
    EXPECT_EQ(services.free(reference, 0), kAuthorizationSuccess);
    EXPECT_TRUE(becomesTrue([&] { return !isThere(process); })) << "a zombie counts too";
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("x")}), kAuthorizationInvalidReference);
}

TEST_F(LinuxAuthorizationServicesTest, keepsOthersOutOfTheProcessThatHoldsRights) {
    const auto isTraceable = [] { return prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) == 1; };
    EXPECT_TRUE(isTraceable());
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    EXPECT_FALSE(isTraceable());
    const AuthorizationRef first = std::exchange(reference, nullptr);
    ASSERT_EQ(show(userName(), kPassword), kAuthorizationSuccess);
    EXPECT_EQ(services.free(first, 0), kAuthorizationSuccess);
    EXPECT_FALSE(isTraceable()) << "one of two is left";
    EXPECT_EQ(services.free(reference, 0), kAuthorizationSuccess);
    EXPECT_TRUE(isTraceable());
    EXPECT_EQ(show(userName(), "wrong"), kAuthorizationDenied);
    EXPECT_TRUE(isTraceable());
}

TEST_F(LinuxAuthorizationServicesTest, endsTheHelperWhenItsProgramIsKilled) {
    test::ChildProcess program([this] {
        EXPECT_EQ(ask(), kAuthorizationSuccess);
        sandbox.write("ready", "");
        std::this_thread::sleep_for(std::chrono::seconds(60));
    });
    ASSERT_TRUE(becomesTrue([this] { return test::exists(sandbox.path("ready")); }));
    const int process = processOf("pkexec");
    EXPECT_TRUE(isThere(process));
    kill(program.id(), SIGKILL);
    program.wait();
    EXPECT_TRUE(becomesTrue([&] { return !isThere(process); }));
}

TEST_F(LinuxAuthorizationServicesTest, outlivesTheKeysThatInterruptTheProgram) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    for (const int number : {SIGINT, SIGQUIT, SIGHUP, SIGTSTP}) {
        kill(processOf("pkexec"), number);
    }
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("x")}), kAuthorizationSuccess);
}

TEST_F(LinuxAuthorizationServicesTest, hasAHelperThatDumpsNoCoreAndLetsNobodyElseWrite) {
    LinuxAuthorizationServices careless = withPkexec("umask 000; exec \"$1\"");
    ASSERT_EQ(ask(careless), kAuthorizationSuccess);
    const std::string folder = "/proc/" + std::to_string(processOf("other"));
    EXPECT_THAT(test::readBytes(folder + "/limits"),
                ContainsRegex("Max core file size +0 +0 +bytes"));
    EXPECT_THAT(test::readBytes(folder + "/status"), HasSubstr("Umask:\t0022"));
}

TEST_F(LinuxAuthorizationServicesTest, reportsWhenTheHelperIsGone) {
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    kill(processOf("pkexec"), SIGKILL);
    EXPECT_TRUE(becomesTrue([this] {
        return run("/bin/mkdir", {"-p", sandbox.path("x")}) == kAuthorizationToolExecuteFailure;
    }));
}

TEST_F(LinuxAuthorizationServicesTest, knowsWhetherTheHelperIsThere) {
    EXPECT_FALSE(services.isAlive(reference));
    ASSERT_EQ(ask(), kAuthorizationSuccess);
    EXPECT_TRUE(services.isAlive(reference));
    kill(processOf("pkexec"), SIGKILL);
    EXPECT_TRUE(becomesTrue([this] { return !services.isAlive(reference); }));
    EXPECT_EQ(services.copyRights(reference, "system.privilege.admin", {}, kAsking),
              kAuthorizationSuccess);
    EXPECT_TRUE(services.isAlive(reference)) << "a helper was started in its place";
}

TEST_F(LinuxAuthorizationServicesTest, waitsForNoPasswordOnceTheProgramQuits) {
    LinuxAuthorizationServices patient = withPkexec("exec sleep 600");
    std::thread quitting([this] {
        EXPECT_TRUE(becomesTrue([this] { return test::exists(sandbox.path("other.process")); }));
        MainThread::shutdown();
    });
    EXPECT_EQ(ask(patient), kAuthorizationInternalError);
    quitting.join();
    MainThread::restart();
    EXPECT_TRUE(becomesTrue([this] { return !isThere(processOf("other")); }));
}

TEST_F(LinuxAuthorizationServicesTest, knowsWhetherAnythingCanAskTheUser) {
    const AuthorizationPrograms all{.pkexec = "/bin/true",
                                    .sudo = "",
                                    .helper = helper.path(),
                                    .systemBus = sandbox.write("bus", ""),
                                    .polkitService = sandbox.write("polkit", "")};
    EXPECT_TRUE(LinuxAuthorizationServices(all).canAskUser());
    for (std::string AuthorizationPrograms::*const part :
         {&AuthorizationPrograms::pkexec, &AuthorizationPrograms::helper,
          &AuthorizationPrograms::systemBus, &AuthorizationPrograms::polkitService}) {
        AuthorizationPrograms some = all;
        some.*part = sandbox.path("missing");
        EXPECT_FALSE(LinuxAuthorizationServices(some).canAskUser());
    }
}

TEST_F(LinuxAuthorizationServicesTest, reportsHowAskingFailed) {
    LinuxAuthorizationServices dismissed = withPkexec("exit 126");
    EXPECT_EQ(ask(dismissed), kAuthorizationCanceled);
    LinuxAuthorizationServices refused = withPkexec("exit 127");
    EXPECT_EQ(ask(refused), kAuthorizationDenied);
    LinuxAuthorizationServices odd = withPkexec("echo no greeting; exit 0");
    EXPECT_EQ(ask(odd), kAuthorizationInternalError);
    LinuxAuthorizationServices noPkexec(
        {.pkexec = sandbox.path("missing"), .sudo = "", .helper = helper.path()});
    EXPECT_EQ(ask(noPkexec), kAuthorizationInternalError);
    LinuxAuthorizationServices noHelper({.pkexec = "/bin/true", .sudo = "", .helper = ""});
    EXPECT_EQ(ask(noHelper), kAuthorizationInternalError);
}

TEST_F(LinuxAuthorizationServicesTest, asksNobodyWithoutLeave) {
    ASSERT_EQ(services.create({}, 0, reference), kAuthorizationSuccess);
    EXPECT_EQ(services.copyRights(reference, "system.privilege.admin", {}, kWithoutAsking),
              kAuthorizationInteractionNotAllowed);
    EXPECT_FALSE(test::exists(sandbox.path("pkexec.process")));
}

TEST_F(LinuxAuthorizationServicesTest, hasNoOtherRight) {
    ASSERT_EQ(services.create({}, 0, reference), kAuthorizationSuccess);
    EXPECT_EQ(services.copyRights(reference, "system.preferences", {}, kAsking),
              kAuthorizationDenied);
    EXPECT_FALSE(test::exists(sandbox.path("pkexec.process")));
}

TEST_F(LinuxAuthorizationServicesTest, acceptsTheCallersOwnPassword) {
    ASSERT_EQ(show(userName(), kPassword), kAuthorizationSuccess);
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("x")}), kAuthorizationSuccess);
    EXPECT_TRUE(test::exists(sandbox.path("x")));
}

TEST_F(LinuxAuthorizationServicesTest, refusesAWrongPassword) {
    EXPECT_EQ(show(userName(), "wrong"), kAuthorizationDenied);
    EXPECT_EQ(show(userName(), ""), kAuthorizationDenied);
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("x")}), kAuthorizationInvalidReference);
}

TEST_F(LinuxAuthorizationServicesTest, refusesAnotherUsersNameLikeAWrongPassword) {
    EXPECT_EQ(show("root", kPassword), kAuthorizationDenied);
    EXPECT_EQ(show("", kPassword), kAuthorizationDenied);
    EXPECT_FALSE(test::exists(sandbox.path("sudo.process"))) << "and asks nobody";
}

TEST_F(LinuxAuthorizationServicesTest, refusesAPasswordThatIsNoLine) {
    EXPECT_EQ(show(userName(), "right password\n"), kAuthorizationDenied);
    EXPECT_EQ(show(userName(), std::string("right password\0", 15)), kAuthorizationDenied);
    EXPECT_EQ(show(userName(), std::string(100000, 'x')), kAuthorizationDenied);
    EXPECT_FALSE(test::exists(sandbox.path("sudo.process")));
}

TEST_F(LinuxAuthorizationServicesTest, showsThePasswordToNobodyElse) {
    ASSERT_EQ(show(userName(), kPassword), kAuthorizationSuccess);
    EXPECT_EQ(test::readBytes(sandbox.path("sudo.arguments")),
              "/bin/sh\n" + sandbox.path("sudo.sh") + "\n-k\n-S\n-p\n\n-u\nroot\n--\n" +
                  helper.path() + "\n");
    EXPECT_THAT(test::readBytes(sandbox.path("sudo.environment")), Not(HasSubstr(kPassword)));
    EXPECT_FALSE(test::someProcessHasArgument(kPassword));
}

TEST_F(LinuxAuthorizationServicesTest, startsAHelperThatWasAskedForNoPassword) {
    LinuxAuthorizationServices free({.pkexec = "",
                                     .sudo = program("other",
                                                     "for helper; do :; done; "
                                                     "exec \"$helper\""),
                                     .helper = helper.path()});
    std::swap(services, free);
    ASSERT_EQ(show(userName(), "not looked at"), kAuthorizationSuccess);
    EXPECT_EQ(run("/bin/mkdir", {"-p", sandbox.path("x")}), kAuthorizationSuccess);
}

TEST_F(LinuxAuthorizationServicesTest, hasAHelperThatDoesNothingByItself) {
    EXPECT_EXIT(
        {
            execl(helper.path().c_str(), helper.path().c_str(), nullptr);  // NOLINT: a C interface
            _exit(1);
        },
        testing::ExitedWithCode(2), "started by Vornic and does nothing by itself");
}

}  // namespace
}  // namespace vornic::platform
