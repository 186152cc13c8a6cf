#ifndef VORNIC_UI_SUPPORT_QM_TROUBLESHOOTING_UTILS_H
#define VORNIC_UI_SUPPORT_QM_TROUBLESHOOTING_UTILS_H

#include <string>
#include <vector>

namespace vornic {

/// What the troubleshooting commands do: gather everything that helps support, and show logs.
/// Class-level, without state; any thread. Alerts are free-standing, and a call that shows one
/// waits for its answer.
class QMTroubleshootingUtils {
  public:
    using Names = std::vector<std::string>;
    using Paths = std::vector<std::string>;

    QMTroubleshootingUtils() = delete;

    /// Gathers the logs, crash reports and preference files of the user and of the machine whose
    /// names belong to the applications, and further files, into a zip archive on the user's
    /// desktop, which is named after the first application ("Vornic Logs.zip", with a time stamp
    /// when that name is taken). In it each file stands below "QM_App_Logs" under the full path
    /// that it came from.
    ///
    /// The files pass through a folder of that name in the temporary folder. One that is left from
    /// before is removed; a link in its place, or another user's folder, ends the operation.
    /// Several runs at once wait for each other; the main thread dispatches its events meanwhile. A
    /// failure up to here is reported on the console alone, and the folder is left as it is.
    /// @param appNames without one there is nothing to gather
    /// @param silent show no alert: neither that the archive is there or could not be made, nor
    ///     that there was nothing to gather
    /// @param additionalFiles files or folders to be gathered as well
    /// @return true when an archive was made
    static bool gatherLogsForAppsWithNames(const Names& appNames, bool silent,
                                           const Paths& additionalFiles);
    static bool gatherLogsForAppsWithNames(const Names& appNames, bool silent);
    /// With alerts.
    static bool gatherLogsForAppsWithNames(const Names& appNames);
    /// With alerts; nothing is done for an empty name.
    static bool gatherLogsForAppWithName(const std::string& appName);

    /// Opens the current log of an application, from the user's log folder, with the default
    /// application for it: this process's own is the one that it writes, also when another program
    /// of the name has begun a newer one. Without a log an alert tells how to come by one.
    /// When it cannot be opened, that is logged.
    /// @return true when it was opened
    static bool viewLogForApp(const std::string& appName);
    /// The same for the log that the application writes when it runs as a scheduled task.
    static bool viewTaskLogForApp(const std::string& appName);
};

}  // namespace vornic

#endif
