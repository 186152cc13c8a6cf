#ifndef VORNIC_PLATFORM_CRASH_REPORTER_H
#define VORNIC_PLATFORM_CRASH_REPORTER_H

#include <string>

namespace vornic::platform {

/// What the report of a crash says of the program, and where it goes. Each text is cut where it is
/// longer than a path may be.
struct CrashReportSettings {
    /// The report's name begins with this and "_".
    std::string program;
    std::string version;
    /// An absolute path; the folders that are missing are made when there is a report.
    std::string folder;
    /// The log that the program is writing; may be empty.
    std::string log;
};

/// From now on a fatal signal (SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS) leaves a
/// report "PROGRAM_2026-11-21-070500-123456.crash", named by date, time and microseconds (UTC),
/// readable by its owner alone. Then the process dies of the signal as it would have without, core
/// dump included. The reason of an exception that nobody caught stands in the report of the abort
/// that follows. A crash whose report cannot be written leaves none.
///
/// Called once, on the main thread, before other threads are started; costs a few system calls. The
/// calling thread, and every thread that keeps a `CrashStack`, is reported even when it crashed
/// because its stack is full.
void installCrashReporter(const CrashReportSettings& settings);

/// True once `installCrashReporter` was called. Any thread.
[[nodiscard]] bool isCrashReporterInstalled();

}  // namespace vornic::platform

#endif
