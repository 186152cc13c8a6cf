#ifndef VORNIC_APP_APP_CONTROLLER_H
#define VORNIC_APP_APP_CONTROLLER_H

#include <memory>
#include <string>
#include <string_view>

#include "app/ApplicationHost.h"
#include "app/CheckBoxItem.h"

namespace vornic {

/// The desktop application's delegate and the target of its menus: starts the services, locks the
/// application behind an administrator's password where that is wanted, decides what happens when
/// there is nothing to open, and carries out the commands of the menus. Main thread only.
///
/// The order of a launch: `init`, then the menus are made and `setPrefsAdminPass` names the check
/// box, `awakeFromNib`, `applicationOpenFile` for each file that the launch was given or, when
/// there is none, `applicationShouldOpenUntitledFile`, then `applicationDidFinishLaunching`. The
/// last call is `applicationWillTerminate`.
class AppController : public std::enable_shared_from_this<AppController> {
  public:
    /// The action of the convert command, by the name that `validateUserInterfaceItem` knows.
    static constexpr std::string_view kShowConvertDialogAction = "showConvertDialog:";
    /// The integer preference, 1 unless stored, that shows the open panel at a start with nothing
    /// to open when it is exactly 1.
    static constexpr const char* kShowOpenDialogPreference = "showOpenDialogAtStartup";
    /// The preference of any user that locks the application when it equals the number 1.
    static constexpr const char* kRequireAdminPasswordPreference = "requireAdminPassword";

    /// For the desktop: starts crash detection, which reports a crash of the previous run, then a
    /// new log, and registers the defaults of the preferences.
    /// @param host must outlive the controller.
    [[nodiscard]] static std::shared_ptr<AppController> init(ApplicationHost& host);
    /// For use without a user interface: starts crash detection and a log under the application's
    /// name, and makes the shared authorization controller, which may not ask the user. Nothing is
    /// shown at startup.
    [[nodiscard]] static std::shared_ptr<AppController> initWithoutGUI(ApplicationHost& host);
    AppController(const AppController&) = delete;
    AppController& operator=(const AppController&) = delete;

    // Launch.

    /// Says which item shows the administrator lock; null while there is none.
    void setPrefsAdminPass(std::shared_ptr<CheckBoxItem> item);
    /// Called once for each interface that names the controller. The first call, the main
    /// interface's, checks the administrator lock: with the lock on the check box is switched on
    /// and an administrator must authorize, else it is logged and the application is terminated.
    /// Later calls only count. While the administrator is asked the main thread dispatches its
    /// events.
    void awakeFromNib();
    /// Calls `performStartupAction`. @return false: no empty document is ever made.
    bool applicationShouldOpenUntitledFile();
    /// Calls `performStartupAction` one second later, by the loop of the main thread, if the
    /// application has no key window by then and this controller still exists. Before that it sets
    /// out, on a thread that `joinDetachedThreads` waits for, to settle what a program that was
    /// killed has left of its changes (`settleInterruptedRuns`); the log says what was done.
    void applicationDidFinishLaunching();
    /// With a user interface, and when the preference says so, calls `openFile`.
    void performStartupAction();
    /// Opens a file that the system hands to the application. @return true when it was opened.
    bool applicationOpenFile(const std::string& path);
    /// Records that the application ended by itself.
    void applicationWillTerminate();

    // Commands.

    /// Shows the open panel and opens each file that the user chose.
    void openFile();
    /// Opens the conversion dialog of the current document, if there is one.
    void showConvertDialog();
    /// Whether the command with this action is enabled: every one is, but the convert command only
    /// for a current document that is XMEML.
    [[nodiscard]] bool validateUserInterfaceItem(std::string_view action) const;
    /// The action of the check box, whose state has already changed: stores it. Turning the lock
    /// off needs an administrator's authorization; without it the box is set back on and nothing is
    /// stored. Turning it on asks for no authorization; where nothing could ever ask for one, the
    /// user is warned and may undo it. Does nothing for a sender that has no state. While the
    /// administrator is asked the main thread dispatches its events; turning the lock off once more
    /// meanwhile is refused.
    void prefsToggleAdminPass(CheckBoxItem& sender);

    // The Help menu. Web pages are opened in the browser. What cannot be opened is logged and told
    // by an alert.

    /// Opens the user manual with its default application: that of the family, in the machine's
    /// Library, else the one that came with this program. Does nothing when neither is installed.
    void helpUserManual();
    void helpSuiteHome();
    void helpReportBug();
    void helpSuggestFeature();
    void helpSupport();
    void helpQMHome();
    void showAboutDialog();

    // The troubleshooting menu.

    void viewLog();
    void viewTaskLog();
    /// The main thread dispatches its events meanwhile; once more meanwhile does nothing.
    void gatherLogs();

    [[nodiscard]] bool hasGUI() const { return hasGUI_; }
    [[nodiscard]] unsigned awakeCount() const { return awakeCount_; }
    [[nodiscard]] const std::shared_ptr<CheckBoxItem>& prefsAdminPass() const {
        return prefsAdminPass_;
    }
    /// True once the launch was refused and the application told to terminate, and from
    /// `applicationWillTerminate` on: nothing is opened any more.
    [[nodiscard]] bool isTerminating() const { return isTerminating_; }

  private:
    AppController(ApplicationHost& host, bool hasGUI) : host_(host), hasGUI_(hasGUI) {}

    bool authorize();
    [[nodiscard]] static bool keepsLock();

    ApplicationHost& host_;
    bool hasGUI_;
    bool isAuthorizing_ = false;
    bool isGathering_ = false;
    bool isTerminating_ = false;
    unsigned awakeCount_ = 0;
    std::shared_ptr<CheckBoxItem> prefsAdminPass_;
};

}  // namespace vornic

#endif
