#include <algorithm>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <sys/mount.h>
#include <unistd.h>

#include "foundation/files/QMFileManager.h"
#include "foundation/rights/QMAuthorization.h"
#include "platform/rights/LinuxAuthorizationServices.h"
#include "tests/support/machine/AuthorizationMachine.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Waiting.h"
#include "tests/support/programs/CapturedChild.h"
#include "tests/support/programs/HelperCopy.h"
#include "tests/support/texts/LogCapture.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using test::AuthorizationMachine;
using test::becomesTrue;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Whether a text, given backwards, stands anywhere in what this process could write.
bool writableMemoryHolds(std::string_view backwards) {
    constexpr std::uintptr_t kLargest = std::uintptr_t{256} << 20U;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream stream(line);
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        std::string rights;
        // What a sanitizer maps for itself is larger than any of ours.
        if (!(stream >> std::hex >> begin >> dash >> end >> rights) || !rights.starts_with("rw") ||
            end - begin > kLargest) {
            continue;
        }
        const std::string_view memory(reinterpret_cast<const char*>(begin),  // NOLINT
                                      end - begin);
        if (std::search(memory.begin(), memory.end(), backwards.rbegin(), backwards.rend()) !=
            memory.end()) {
            return true;
        }
    }
    return false;
}

/// The process as it is, with the helper of the test's machine.
class MachineHost : public AuthorizationHost {
  public:
    [[nodiscard]] bool isSuperUser() const override { return getuid() == 0; }
    void runTask(const std::string& tool, const Arguments& /*arguments*/) override {
        ADD_FAILURE() << tool << " without rights";
    }
    void runTaskAndReturn(const std::string& tool, const Arguments& arguments) override {
        runTask(tool, arguments);
    }
    [[nodiscard]] platform::AuthorizationServices& services() override { return services_; }

  private:
    platform::LinuxAuthorizationServices services_{{.pkexec = "/usr/bin/pkexec",
                                                    .sudo = "/usr/bin/sudo",
                                                    .helper = AuthorizationMachine::helper()}};
};

/// Privileged operations as they are, for a throw-away user: the real sudo, the real polkit, the
/// real helper with root's rights, in a view of the machine that is the test's own.
class QMAuthorizationMachineTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!machine.fault().empty()) {
            GTEST_SKIP() << machine.fault();
        }
        fs::create_directories(secret());
        fs::permissions(secret(), fs::perms::owner_all);
        std::ofstream(secret() + "/file") << "root's";
    }
    void TearDown() override { EXPECT_TRUE(helperEnds()) << "a helper is left"; }

    static bool helperEnds() {
        return becomesTrue(
            [] { return !test::someProcessHasArgument(AuthorizationMachine::helper()); });
    }

    /// A folder that its owner, root, alone may look into.
    static std::string secret() { return std::string(AuthorizationMachine::kFolder) + "/secret"; }

    /// Runs a function as the throw-away user.
    static test::ChildOutcome asUser(const std::function<void(QMAuthorization&)>& function) {
        return test::runInChild([&] {
            AuthorizationMachine::becomeUser();
            const test::Sandbox sandbox;
            const test::LogCapture log;
            QMAuthorization authorization(true, std::make_shared<MachineHost>());
            function(authorization);
            authorization.authEnd();
            EXPECT_TRUE(helperEnds());
        });
    }
    static bool show(QMAuthorization& authorization, const std::string& password,
                     const std::string& user = AuthorizationMachine::kUser) {
        return authorization.authStartWithUser(user, platform::SecretText(password));
    }

    AuthorizationMachine machine;
};

class SudoTest : public QMAuthorizationMachineTest {
  protected:
    void SetUp() override {
        QMAuthorizationMachineTest::SetUp();
        if (!IsSkipped()) {
            const std::string fault =
                machine.setUpSudo(std::string(AuthorizationMachine::kUser) + " ALL=(root) " +
                                  AuthorizationMachine::helper() + "\n");
            if (!fault.empty()) {
                GTEST_SKIP() << fault;
            }
        }
    }
};

TEST_F(SudoTest, givesRightsForTheCallersOwnPassword) {
    const test::ChildOutcome outcome = asUser([](QMAuthorization& authorization) {
        ASSERT_TRUE(show(authorization, AuthorizationMachine::kPassword));
        EXPECT_TRUE(authorization.isAuthorized());
        EXPECT_EQ(authorization.authExecTask("/bin/mkdir", {"-p", secret() + "/a/b"}, false), 0);
        EXPECT_EQ(authorization.authExecTask("/bin/rm", {"-Rdf", secret() + "/file"}, false), 0);
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(fs::is_directory(secret() + "/a/b"));
    EXPECT_FALSE(fs::exists(secret() + "/file"));
}

TEST_F(SudoTest, doesTheOperations) {
    const test::ChildOutcome outcome = asUser([](QMAuthorization& authorization) {
        ASSERT_TRUE(show(authorization, AuthorizationMachine::kPassword));
        EXPECT_TRUE(authorization.authCreateDir(secret() + "/made"));
        EXPECT_TRUE(authorization.authCopyFile("/etc/hostname", secret() + "/copy"));
        EXPECT_TRUE(authorization.authRemoveFile(secret() + "/file"));
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(becomesTrue([] {
        return fs::is_directory(secret() + "/made") && fs::exists(secret() + "/copy") &&
               !fs::exists(secret() + "/file");
    }));
}

TEST_F(SudoTest, touchesAFileThatTheUserMayNotWrite) {
    const std::string file = secret() + "/file";
    fs::last_write_time(file, fs::file_time_type{});
    const test::ChildOutcome outcome = asUser([&](QMAuthorization& authorization) {
        ASSERT_TRUE(show(authorization, AuthorizationMachine::kPassword));
        const std::shared_ptr<QMAuthorization> shared(&authorization, [](QMAuthorization*) {});
        QMAuthorization::setSharedController(shared);
        EXPECT_TRUE(QMFileManager::touchFile(file, true));
        EXPECT_TRUE(QMFileManager::touchFile(secret() + "/missing"));
        QMAuthorization::setSharedController(nullptr);
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(fs::last_write_time(file), fs::file_time_type{});
    EXPECT_FALSE(fs::exists(secret() + "/missing"));
}

TEST_F(SudoTest, hasAHelperThatKeepsItsHandsOffTheSystem) {
    // An empty folder in the place of the machine's own, should a guard be missing.
    ASSERT_EQ(mount("none", "/boot", "tmpfs", 0, nullptr), 0);
    std::ofstream("/boot/kept") << "text";
    fs::create_directory_symlink("/boot", secret() + "/link");
    const test::ChildOutcome outcome = asUser([](QMAuthorization& authorization) {
        ASSERT_TRUE(show(authorization, AuthorizationMachine::kPassword));
        const std::string file = secret() + "/file";
        for (const std::string& path : {std::string("/boot/kept"), secret() + "/link/kept"}) {
            EXPECT_EQ(authorization.authExecTask("/bin/rm", {"-Rdf", path}, false),
                      platform::kAuthorizationDenied);
            EXPECT_EQ(authorization.authExecTask("/bin/mv", {"-f", path, file}, false),
                      platform::kAuthorizationDenied);
            EXPECT_EQ(authorization.authExecTask("/bin/mv", {"-f", file, path}, false),
                      platform::kAuthorizationDenied);
            EXPECT_EQ(authorization.authExecTask("/bin/cp", {"-f", "-p", "-R", file, path}, false),
                      platform::kAuthorizationDenied);
        }
        EXPECT_EQ(authorization.authExecTask("/bin/cp",
                                             {"-f", "-p", "-R", file, secret() + "/link"}, false),
                  platform::kAuthorizationDenied);
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(test::readBytes("/boot/kept"), "text");
    EXPECT_FALSE(fs::exists("/boot/file"));
    EXPECT_TRUE(fs::exists(secret() + "/file"));
}

TEST_F(SudoTest, hasAHelperThatKnowsTheCallersOwnFolders) {
    // The home folder of the user is the test's own volume.
    const std::string home = AuthorizationMachine::kFolder;
    const std::string documents = home + "/Documents";
    fs::create_directory(documents);
    std::ofstream(documents + "/kept") << "text";
    fs::create_directory_symlink(home, secret() + "/home");
    const test::ChildOutcome outcome = asUser([&](QMAuthorization& authorization) {
        ASSERT_TRUE(show(authorization, AuthorizationMachine::kPassword));
        for (const std::string& path : {documents, secret() + "/home/Documents"}) {
            EXPECT_EQ(authorization.authExecTask("/bin/rm", {"-Rdf", path}, false),
                      platform::kAuthorizationDenied);
            EXPECT_EQ(authorization.authExecTask("/bin/mv", {"-f", path, home + "/x"}, false),
                      platform::kAuthorizationDenied);
        }
        EXPECT_EQ(authorization.authExecTask("/bin/rm", {"-Rdf", documents + "/kept"}, false), 0);
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(fs::is_directory(documents));
    EXPECT_FALSE(fs::exists(documents + "/kept"));
}

TEST_F(SudoTest, hasAHelperThatFollowsNoLinkThatWasPutInTheWay) {
    const std::string victim = std::string(AuthorizationMachine::kFolder) + "/victim";
    std::ofstream(victim) << "precious";
    fs::create_symlink(victim, secret() + "/link");
    fs::create_directory(secret() + "/folder");
    fs::create_symlink(victim, secret() + "/folder/file");
    const test::ChildOutcome outcome = asUser([](QMAuthorization& authorization) {
        ASSERT_TRUE(show(authorization, AuthorizationMachine::kPassword));
        for (const char* name : {"/link", "/folder"}) {
            EXPECT_EQ(
                authorization.authExecTask(
                    "/bin/cp", {"-f", "-p", "-R", secret() + "/file", secret() + name}, false),
                platform::kAuthorizationDenied);
        }
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(test::readBytes(victim), "precious");
}

TEST_F(SudoTest, refusesAWrongPassword) {
    const test::ChildOutcome outcome = asUser([](QMAuthorization& authorization) {
        EXPECT_FALSE(show(authorization, "wrong password"));
        EXPECT_FALSE(authorization.isAuthorized());
        EXPECT_THAT(test::LogCapture::entries(),
                    ElementsAre("Authorization failed. Invalid username or password"));
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors,
                HasSubstr("] Authorization failed. Invalid username or password\n"));
    EXPECT_EQ(outcome.errors.find("wrong password"), std::string::npos);
    EXPECT_TRUE(fs::exists(secret() + "/file"));
}

TEST_F(SudoTest, refusesAnotherUsersName) {
    EXPECT_EQ(asUser([](QMAuthorization& authorization) {
                  EXPECT_FALSE(show(authorization, AuthorizationMachine::kPassword, "root"));
                  EXPECT_FALSE(authorization.isAuthorized());
              }).status,
              0);
}

TEST_F(SudoTest, doesNotTakeAWrongPasswordBecauseARightOneCameBefore) {
    EXPECT_EQ(asUser([](QMAuthorization& authorization) {
                  EXPECT_TRUE(show(authorization, AuthorizationMachine::kPassword));
                  authorization.authEnd();
                  EXPECT_FALSE(show(authorization, "wrong password"));
              }).status,
              0);
}

TEST_F(SudoTest, refusesAUserWithoutARule) {
    const std::string fault = machine.setUpSudo("somebodyelse ALL=(root) ALL\n");
    ASSERT_EQ(fault, "");
    EXPECT_EQ(asUser([](QMAuthorization& authorization) {
                  EXPECT_FALSE(show(authorization, AuthorizationMachine::kPassword));
              }).status,
              0);
}

TEST_F(SudoTest, showsThePasswordInNoProcessAndNoLog) {
    const std::string exchange = std::string(AuthorizationMachine::kFolder) + "/exchange";
    fs::create_directories(exchange);
    fs::permissions(exchange, fs::perms::all);
    test::ChildProcess program([&] {
        AuthorizationMachine::becomeUser();
        const test::Sandbox sandbox;
        const test::LogCapture log;
        QMAuthorization authorization(true, std::make_shared<MachineHost>());
        EXPECT_TRUE(show(authorization, AuthorizationMachine::kPassword));
        EXPECT_THAT(test::LogCapture::entries(), IsEmpty());
        std::ofstream(exchange + "/ready") << "x";
        EXPECT_TRUE(becomesTrue([&] { return fs::exists(exchange + "/seen"); }));
    });
    EXPECT_TRUE(becomesTrue([&] { return fs::exists(exchange + "/ready"); }));
    EXPECT_TRUE(test::someProcessHasArgument(AuthorizationMachine::helper()));
    EXPECT_FALSE(test::someProcessHas("cmdline", AuthorizationMachine::kPassword));
    EXPECT_FALSE(test::someProcessHas("environ", AuthorizationMachine::kPassword));
    std::ofstream(exchange + "/seen") << "x";
    EXPECT_EQ(program.wait(), 0);
    EXPECT_TRUE(helperEnds());
}

TEST_F(SudoTest, keepsThePasswordNowhereInMemory) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer keeps memory that cannot be read";
#endif
    EXPECT_EQ(asUser([](QMAuthorization& authorization) {
                  // Spelt backwards, so that nothing but the secret itself is found.
                  static constexpr std::string_view kBackwards = "drowssap thgir";
                  EXPECT_EQ(writableMemoryHolds(kBackwards), false);
                  platform::SecretText secret(std::string(kBackwards.rbegin(), kBackwards.rend()));
                  EXPECT_EQ(writableMemoryHolds(kBackwards), true) << "the search finds nothing";
                  EXPECT_TRUE(authorization.authStartWithUser(AuthorizationMachine::kUser,
                                                              std::move(secret)));
                  EXPECT_EQ(writableMemoryHolds(kBackwards), false);
              }).status,
              0);
}

TEST_F(SudoTest, endsTheHelperWithItsProgram) {
    test::ChildProcess program([] {
        AuthorizationMachine::becomeUser();
        const test::Sandbox sandbox;
        QMAuthorization authorization(true, std::make_shared<MachineHost>());
        EXPECT_TRUE(show(authorization, AuthorizationMachine::kPassword));
        EXPECT_TRUE(test::someProcessHasArgument(AuthorizationMachine::helper()));
        raise(SIGKILL);
    });
    const int status = program.wait();
    EXPECT_TRUE(WIFSIGNALED(status)) << "no rights were given";
    EXPECT_TRUE(helperEnds());
}

class PolkitTest : public QMAuthorizationMachineTest {
  protected:
    /// @return true when polkit runs; otherwise the test is skipped.
    bool setUp(const std::string& rule) {
        const std::string fault = machine.setUpPolkit(rule);
        if (!fault.empty()) {
            [&] { GTEST_SKIP() << fault; }();
        }
        return fault.empty();
    }
    static std::string ruleWithAnswer(const std::string& answer) {
        return "if (action.id == 'com.quillmark.vornic.administer' && subject.user == '" +
               std::string(AuthorizationMachine::kUser) + "') return polkit.Result." + answer + ";";
    }
};

TEST_F(PolkitTest, givesRightsWhenThePolicyDoes) {
    if (!setUp(ruleWithAnswer("YES"))) {
        return;
    }
    const test::ChildOutcome outcome = asUser([](QMAuthorization& authorization) {
        ASSERT_TRUE(authorization.authStart());
        EXPECT_TRUE(authorization.isAuthorized());
        EXPECT_EQ(authorization.authExecTask("/bin/rm", {"-Rdf", secret() + "/file"}, false), 0);
        EXPECT_EQ(authorization.authExecTask("/bin/sh", {"-c", "exit 0"}, false),
                  platform::kAuthorizationDenied);
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_FALSE(fs::exists(secret() + "/file"));
}

TEST_F(PolkitTest, obtainsRightsWhenAnOperationNeedsThem) {
    if (!setUp(ruleWithAnswer("YES"))) {
        return;
    }
    EXPECT_EQ(asUser([](QMAuthorization& authorization) {
                  EXPECT_TRUE(authorization.authRemoveFile(secret() + "/file"));
                  EXPECT_TRUE(authorization.isAuthorized());
              }).status,
              0);
    EXPECT_TRUE(becomesTrue([] { return !fs::exists(secret() + "/file"); }));
}

TEST_F(PolkitTest, refusesRightsWhenThePolicyDoes) {
    if (!setUp(ruleWithAnswer("NO"))) {
        return;
    }
    EXPECT_EQ(
        asUser([](QMAuthorization& authorization) {
            EXPECT_FALSE(authorization.authStart());
            EXPECT_FALSE(authorization.isAuthorized());
            EXPECT_FALSE(authorization.authRemoveFile(secret() + "/file"));
            EXPECT_EQ(authorization.authExecTask("/bin/rm", {"-Rdf", secret() + "/file"}), -1);
        }).status,
        0);
    EXPECT_TRUE(fs::exists(secret() + "/file"));
}

TEST_F(PolkitTest, refusesRightsWhenNobodyCanBeAsked) {
    // No rule decides, so that an administrator would have to show a password.
    if (!setUp("return null;")) {
        return;
    }
    EXPECT_EQ(asUser([](QMAuthorization& authorization) {
                  EXPECT_FALSE(authorization.authStart());
              }).status,
              0);
}

}  // namespace
}  // namespace vornic
