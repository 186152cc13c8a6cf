#include "tests/support/machine/AuthorizationMachine.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>

#if !defined(VORNIC_AUTH_HELPER) || !defined(VORNIC_AUTH_POLICY)
#error "VORNIC_AUTH_HELPER and VORNIC_AUTH_POLICY are the root helper and its polkit policy"
#endif

namespace vornic::test {

namespace {

namespace fs = std::filesystem;

constexpr unsigned kUserId = 61234;
/// Of the password.
constexpr const char* kPasswordHash =
    "$6$vornictest$OsVKMh6p9JMDXW9zgyl6gWJCMbi6SaZiYOnvEL1sJDnl."
    "KBePkyWwycte4zaDeeVW9OELHT92xcnQbV6pX"
    "uA10";

std::string inFolder(const std::string& name) {
    return std::string(AuthorizationMachine::kFolder) + "/" + name;
}

std::string contentsOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

/// Lays a text over a file of the machine.
bool cover(const std::string& path, const std::string& text, fs::perms mode) {
    const std::string copy = inFolder(fs::path(path).filename().string() + ".own");
    std::ofstream(copy) << text;
    fs::permissions(copy, mode);
    if (!fs::exists(path)) {
        return false;
    }
    return mount(copy.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

bool coverFolder(const std::string& path, const std::string& own) {
    fs::create_directories(own);
    fs::permissions(own, fs::perms(0755));
    return fs::is_directory(path) &&
           mount(own.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

std::string firstThatExists(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        if (fs::exists(path)) {
            return path;
        }
    }
    return "";
}

std::unique_ptr<RunningProgram> startProgram(const std::string& path,
                                             std::vector<std::string> arguments) {
    ProgramSettings settings;
    settings.program = path;
    settings.arguments = std::move(arguments);
    settings.environment = {"PATH=/usr/sbin:/usr/bin:/sbin:/bin"};
    return std::make_unique<RunningProgram>(settings);
}

std::string policyForHelper() {
    std::string policy = contentsOf(VORNIC_AUTH_POLICY);
    const std::string begin = "org.freedesktop.policykit.exec.path\">";
    const std::size_t start = policy.find(begin);
    EXPECT_NE(start, std::string::npos);
    const std::size_t path = start + begin.size();
    return policy.replace(path, policy.find('<', path) - path, AuthorizationMachine::helper());
}

}  // namespace

AuthorizationMachine::AuthorizationMachine() {
    if (!mounts_.isAvailable() || !mounts_.mountVolume(kFolder, "tmpfs", "mode=755") ||
        !mounts_.mountVolume("/run", "tmpfs", "mode=755")) {
        fault_ = "needs root and the right to mount";
        return;
    }
    if (prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) != 0) {
        fault_ = "programs get no new rights here";
        return;
    }
    fs::copy_file(VORNIC_AUTH_HELPER, helper());
    const std::string id = std::to_string(kUserId);
    const std::string entry = std::string(kUser) + ":x:" + id + ":" + id + "::/mnt:/bin/sh\n";
    const std::string shadow = std::string(kUser) + ":" + kPasswordHash + ":19000:0:99999:7:::\n";
    if (!cover("/etc/passwd", contentsOf("/etc/passwd") + entry, fs::perms(0644)) ||
        !cover("/etc/shadow", contentsOf("/etc/shadow") + shadow, fs::perms(0600))) {
        fault_ = "the user database cannot be covered";
    }
}

AuthorizationMachine::~AuthorizationMachine() = default;

std::string AuthorizationMachine::setUpSudo(const std::string& rules) {
    if (!fs::exists("/usr/bin/sudo")) {
        return "sudo is not installed";
    }
    if (fs::is_directory("/var/lib/sudo") &&
        !mounts_.mountVolume("/var/lib/sudo", "tmpfs", "mode=755")) {
        return "sudo's memory cannot be covered";
    }
    // Without the wait after a wrong password.
    constexpr std::string_view kStack =
        "auth required pam_unix.so nodelay\n"
        "account required pam_unix.so\n"
        "session required pam_permit.so\n";
    return cover("/etc/sudoers", rules, fs::perms(0440)) &&
                   cover("/etc/pam.d/sudo", std::string(kStack), fs::perms(0644))
               ? ""
               : "sudo's settings cannot be covered";
}

std::string AuthorizationMachine::setUpPolkit(const std::string& rule) {
    const std::string polkit = firstThatExists(
        {"/usr/lib/polkit-1/polkitd", "/usr/libexec/polkitd", "/usr/lib/policykit-1/polkitd"});
    const std::string bus = firstThatExists({"/usr/bin/dbus-daemon", "/bin/dbus-daemon"});
    const std::string standard = "/usr/share/polkit-1/actions/org.freedesktop.policykit.policy";
    if (polkit.empty() || bus.empty() || !fs::exists("/usr/bin/pkexec") || !fs::exists(standard)) {
        return "polkit, pkexec or dbus-daemon is not installed";
    }
    fs::create_directories(inFolder("actions"));
    fs::copy_file(standard, inFolder("actions/org.freedesktop.policykit.policy"));
    std::ofstream(inFolder("actions/com.quillmark.vornic.policy")) << policyForHelper();
    fs::create_directories(inFolder("rules"));
    std::ofstream(inFolder("rules/00-test.rules"))
        << "polkit.addRule(function(action, subject) {" << rule << "});\n";
    if (!coverFolder("/usr/share/polkit-1/actions", inFolder("actions")) ||
        !coverFolder("/etc/polkit-1/rules.d", inFolder("rules")) ||
        !coverFolder("/usr/share/polkit-1/rules.d", inFolder("no-rules"))) {
        return "polkit's settings cannot be covered";
    }
    fs::create_directories("/run/dbus");
    bus_ = startProgram(bus, {"--system", "--nofork", "--nopidfile", "--print-address"});
    if (!bus_->readUntil("unix:")) {
        return "no bus can be started";
    }
    polkit_ = startProgram(polkit, {});
    return polkit_->readUntil("Acquired the name") ? "" : "polkit cannot be started";
}

// Processes are seen across such views, hence each has a helper of a name of its own.
std::string AuthorizationMachine::helper() {
    static const std::string path = inFolder("vornic-auth-helper-" + std::to_string(getpid()));
    return path;
}

void AuthorizationMachine::becomeUser() {
    ASSERT_GE(setsid(), 0);
    ASSERT_EQ(setgroups(0, nullptr), 0);
    ASSERT_EQ(setresgid(kUserId, kUserId, kUserId), 0);
    ASSERT_EQ(setresuid(kUserId, kUserId, kUserId), 0);
    // Lets the process read its own /proc entries.
    ASSERT_EQ(prctl(PR_SET_DUMPABLE, 1, 0, 0, 0), 0);
}

}  // namespace vornic::test
