#ifndef VORNIC_UI_SUPPORT_QM_SOFTWARE_UPDATE_H
#define VORNIC_UI_SUPPORT_QM_SOFTWARE_UPDATE_H

#include <optional>
#include <string>

namespace vornic {

/// Starts the maker's updater, a separate application: by itself when the program starts, and when
/// the user asks for it. The updater decides whether it shows anything. Nothing raises to the
/// caller; what cannot be started is logged and printed. Any thread.
class QMSoftwareUpdate {
  public:
    /// What the interface does once the object in it is made: `startup`.
    void awakeFromNib();
    /// What the menu does: `launchSoftwareUpdate`, and an alert when there is no updater.
    void manualUpdateCheck();

    /// Runs `automaticallyCheckForUpdates` on a thread of its own, unless the family-wide
    /// preference "SUCheckAtStartup" is a number equal to false. Nothing is run in a program that
    /// quits meanwhile.
    static void startup();
    /// Starts the updater's executable with "-checkpath" and the path of this application's bundle,
    /// and returns at once.
    static void automaticallyCheckForUpdates();
    /// Starts the updater as an application.
    /// @return false when there is none, which is logged and printed.
    static bool launchSoftwareUpdate();
    /// The path of the updater to use. One that is installed in the machine's folder of
    /// applications is used in its place. One that came with this application is first copied to
    /// the temporary folder, in the place of an older copy, so that it can replace the application;
    /// whether that succeeds does not matter here.
    /// @return nothing, which is logged and printed, when there is no updater, and when something
    ///     that is not this user's stands in the copy's place.
    [[nodiscard]] static std::optional<std::string> updaterPath();
};

}  // namespace vornic

#endif
