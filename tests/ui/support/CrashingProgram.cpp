/// A program that lives as an application does, and ends as it is told by its only argument.

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include <sys/resource.h>

#include "foundation/log/QMLog.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "ui/support/CrashReports.h"
#include "ui/support/QMBugReporter.h"

namespace {

using namespace vornic;

// What the optimizer must not see through.
volatile int* volatile nowhere = reinterpret_cast<volatile int*>(8);
volatile int depthWanted = 1'000'000'000;

int recurse(int depth) {
    volatile char room[256] = {};
    room[depth % 256] = 1;
    return depth < depthWanted ? recurse(depth + 1) + room[0] : 0;
}

void onAnotherThread(void (*function)()) {
    platform::detachNewThread(function);
    platform::joinDetachedThreads(std::chrono::minutes(1));
}

void crashBy(const std::string& way) {
    if (way == "memory") {
        *nowhere = 1;
    } else if (way == "abort") {
        std::abort();
    } else if (way == "exception") {
        throw std::runtime_error("nobody catches this");
    } else if (way == "stack") {
        depthWanted = recurse(0);
    } else if (way == "memory on a thread") {
        onAnotherThread([] { *nowhere = 1; });
    } else if (way == "stack on a thread") {
        onAnotherThread([] { depthWanted = recurse(0); });
    } else if (way == "exception on a thread") {
        onAnotherThread([] { throw std::runtime_error("nobody catches this"); });
    } else if (way == "wait") {
        std::cout << "waiting" << std::endl;
        std::this_thread::sleep_for(std::chrono::minutes(1));
    }
}

class Printer : public BugReporterDelegate {
  public:
    void applicationDidCrashWithLog(const std::string& path) override {
        std::cout << "crashed: " << path << std::endl;
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return EXIT_FAILURE;
    }
    const rlimit none{.rlim_cur = 0, .rlim_max = 0};
    setrlimit(RLIMIT_CORE, &none);
    startCrashReports(kDesktopProgram);
    QMLog::createNewLog();
    QMBugReporter::startBugReporterWithDelegate(std::make_shared<Printer>());
    platform::MainThread::dispatchOne(std::chrono::milliseconds(0));
    QMLog::finishWriting();
    crashBy(argv[1]);
    QMBugReporter::stopBugReporter();
    QMLog::finishWriting();
    return EXIT_SUCCESS;
}
