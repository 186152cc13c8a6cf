#include <csignal>
#include <cstdlib>
#include <optional>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/rights/SystemPathGuard.h"
#include "platform/processes/Pipe.h"
#include "platform/rights/AuthorizationHelper.h"
#include "platform/rights/ProtectedPaths.h"
#include "platform/threads/Thread.h"

// Runs as root for a program that its user has authorized. Standard output is one end of a socket
// whose other end that program alone holds: requests come in on it, answers go out, and its end is
// the helper's. Everything else that the helper was started with is left behind.

namespace {

bool isMessageSocket(int descriptor) {
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET;
}

/// What is on standard input may be a password that nobody asked for.
bool leaveStreamsBehind() {
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    return null >= 0 && dup2(null, STDIN_FILENO) >= 0 && dup2(null, STDOUT_FILENO) >= 0 &&
           dup2(null, STDERR_FILENO) >= 0;
}

void leaveTheUsersSettingsBehind() {
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    const struct rlimit none { 0, 0 };
    setrlimit(RLIMIT_CORE, &none);
    clearenv();
    umask(S_IWGRP | S_IWOTH);
    // The keys that interrupt the program are not meant for the helper, which ends with it.
    for (const int number : {SIGINT, SIGQUIT, SIGHUP, SIGTSTP, SIGPIPE}) {
        static_cast<void>(std::signal(number, SIG_IGN));
    }
}

int serve() {
    using vornic::platform::FileDescriptor;
    const FileDescriptor socket(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!socket || !leaveStreamsBehind() || chdir("/") != 0) {
        return EXIT_FAILURE;
    }
    // Whom the program belongs to is the system's word, not the program's.
    const std::optional<unsigned> caller = vornic::platform::callerOf(socket.get());
    if (!caller) {
        return EXIT_FAILURE;
    }
    return vornic::platform::serveAuthorizedTools(
        socket.get(), {.takingAway = vornic::isGuardedSystemPath,
                       .replacing = vornic::platform::leadsToProtectedPath,
                       .folders = vornic::platform::standardFoldersOf(*caller)});
}

}  // namespace

int main() {
    if (!isMessageSocket(STDOUT_FILENO)) {
        static constexpr char kMessage[] =
            "vornic-auth-helper: This program is started by Vornic and does nothing by itself.\n";
        static_cast<void>(write(STDERR_FILENO, kMessage, sizeof kMessage - 1));
        return 2;
    }
    leaveTheUsersSettingsBehind();
    const int status = serve();
    vornic::platform::joinDetachedThreads(std::chrono::seconds(1));
    return status;
}
