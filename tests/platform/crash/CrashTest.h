#ifndef VORNIC_TESTS_PLATFORM_CRASH_TEST_H
#define VORNIC_TESTS_PLATFORM_CRASH_TEST_H

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include "platform/crash/CrashReporter.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/programs/ChildProcess.h"

namespace vornic::test {

// What the optimizer must not see through.
inline volatile int* volatile nowhere = reinterpret_cast<volatile int*>(8);
inline volatile int depthWanted = 1'000'000'000;

extern "C" [[gnu::noinline]] inline void crashingFunction() {
    *nowhere = 1;
}

extern "C" [[gnu::noinline]] inline void callerOfTheCrashingFunction() {
    crashingFunction();
    depthWanted = 5;
}

extern "C" [[gnu::noinline]] inline int endlessRecursion(int depth) {
    volatile char room[256] = {};
    room[depth % 256] = 1;
    return depth < depthWanted ? endlessRecursion(depth + 1) + room[0] : 0;
}

extern "C" [[gnu::noinline]] inline void jumpToNowhere() {
    reinterpret_cast<void (*)()>(const_cast<int*>(nowhere))();
    depthWanted = 5;
}

/// Lets a child process crash and reads its report.
class CrashTest : public SandboxTest {
  protected:
    /// Runs a function in a child that reports its crashes.
    /// @return the number of the signal that ended the child, or minus its exit status.
    int crash(const std::function<void()>& function) const {
        ChildProcess child([&] {
            const rlimit none{.rlim_cur = 0, .rlim_max = 0};
            setrlimit(RLIMIT_CORE, &none);
            platform::installCrashReporter(settings);
            function();
        });
        const int status = child.wait();
        return WIFSIGNALED(status) ? WTERMSIG(status) : -WEXITSTATUS(status);
    }
    [[nodiscard]] std::vector<std::string> reports() const { return namesIn(settings.folder); }
    /// The text of the only report.
    [[nodiscard]] std::string report() const {
        const std::vector<std::string> names = reports();
        if (names.size() != 1) {
            ADD_FAILURE() << names.size() << " reports";
            return "";
        }
        return readBytes(settings.folder + "/" + names.front());
    }

    platform::CrashReportSettings settings{.program = "probe",
                                           .version = "1.2.3",
                                           .folder = sandbox.path("Logs/DiagnosticReports"),
                                           .log = "/a/Vornic.1.log"};
};

}  // namespace vornic::test

#endif
