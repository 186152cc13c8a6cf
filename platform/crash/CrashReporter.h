#ifndef VORNIC_PLATFORM_CRASH_REPORTER_H
#define VORNIC_PLATFORM_CRASH_REPORTER_H

#include <string>
#include <string_view>

namespace vornic::platform {

/// What the report of a crash says of the program, and where it goes. Each text is cut where it is
/// longer than a path may be.
struct CrashReportSettings {
    /// The report's name begins with this and "_".
    std::string program;
    std::string version;
    /// An absolute path; the folders that are missing are made when there is a report.
    std::string folder;
    /// Where the log is that the program is about to write; may be empty.
    std::string log;
};

/// From now on a fatal signal (SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS) leaves a
/// report "PROGRAM_2026-11-21-070500-123456.crash", named by date, time and microseconds (UTC),
/// readable by its owner alone. Then the process dies of the signal as it would have without, core
/// dump included. The reason of an exception that nobody caught stands in the report of the abort
/// that follows. A crash whose report cannot be written leaves none. Standard error gets a line in
/// either case.
///
/// Called once, on the main thread, before other threads are started; costs a few system calls. The
/// calling thread, and every thread that keeps a `CrashStack`, is reported even when it crashed
/// because its stack is full.
void installCrashReporter(const CrashReportSettings& settings);

/// Says which log the program writes from now on. The report names the file where it is at the
/// moment of the crash, and when the log was started, by which it is found when it is moved on
/// later.
/// @param descriptor of the open log; -1 for none: the report names what the settings say
/// @param started as the log's first line has it; may be empty
/// Any thread, one at a time.
void setCrashReportLog(int descriptor, std::string_view started);

/// True once `installCrashReporter` was called. Any thread.
[[nodiscard]] bool isCrashReporterInstalled();

}  // namespace vornic::platform

#endif
