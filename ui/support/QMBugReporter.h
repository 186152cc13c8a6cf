#ifndef VORNIC_UI_SUPPORT_QM_BUG_REPORTER_H
#define VORNIC_UI_SUPPORT_QM_BUG_REPORTER_H

#include <memory>
#include <optional>
#include <string>

#include "ui/support/BugReporterDelegate.h"

namespace vornic {

/// Finds out at the start of a program whether its previous run crashed, and hands the newest crash
/// report to a separate bug reporting application. Two dates tell a crash: "launch", written at
/// every start, and "exit", written at every clean end. They are kept in the application's
/// preferences or, where the path of a preference file is given, in that property list, a
/// dictionary that is made when it is missing and whose other keys are kept.
///
/// Class-level operations without state. Nothing raises to the caller; failures are silent but for
/// what is logged. Any thread, but start and end belong to one at a time.
class QMBugReporter {
  public:
    using Text = std::optional<std::string>;
    using Delegate = std::shared_ptr<BugReporterDelegate>;

    /// `checkForCrashes`, tells the delegate on the main thread, without waiting, when a report was
    /// found, and records "launch" as now. Called at the start; the shorter forms pass nothing.
    static void startBugReporter();
    static void startBugReporterWithDelegate(const Delegate& delegate);
    static void startBugReporter(const Text& applicationName, const Text& plistPath);
    static void startBugReporter(const Text& applicationName, const Text& plistPath,
                                 const Delegate& delegate);

    /// Records "exit" as now. Called at a clean end.
    static void stopBugReporter();
    static void stopBugReporter(const Text& plistPath);

    /// Looks for the crash report of a run that has a "launch" and no "exit" at or after it: in the
    /// folders "CrashReporter" and "DiagnosticReports" of the user's log folder, then of the
    /// machine's, the last file whose name begins with the application's name (letters in any case)
    /// and "_", when it was changed after the launch. A crash that is found is logged and its
    /// report opened in the bug reporting application, unless the family's preferences switch that
    /// off ("disable-crash-reporter").
    /// @param applicationName nothing: the "CFBundleName" of the application's bundle
    /// @return the report's path, or nothing.
    static Text checkForCrashes();
    static Text checkForCrashes(const Text& applicationName, const Text& plistPath);

    /// Gives a file below a user's home folder ("…/Users/NAME/…") back to that user, for a program
    /// that runs with raised rights, by running the system's "/usr/sbin/chown" (`systemToolPath`)
    /// to its end; what comes of it does not matter. Other paths are left alone.
    static void chownPlist(const std::string& path);
};

}  // namespace vornic

#endif
