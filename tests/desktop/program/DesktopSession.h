#ifndef VORNIC_TESTS_DESKTOP_PROGRAM_DESKTOP_SESSION_H
#define VORNIC_TESTS_DESKTOP_PROGRAM_DESKTOP_SESSION_H

#include <QDBusConnection>
#include <memory>
#include <string>
#include <vector>

#include "tests/desktop/program/AccessibleNode.h"
#include "tests/support/machine/VirtualScreen.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

/// A desktop of a test's own: a screen, a window manager, a message bus and the accessibility bus
/// on it. With the object everything ends that was started in it, which must have happened to the
/// programs that the test itself runs.
class DesktopSession {
  public:
    /// What is missing on this machine for such a desktop, to be told; "" when nothing is.
    [[nodiscard]] static std::string missingParts();

    /// @param folder for sockets and such, made when it is missing
    explicit DesktopSession(std::string folder);
    ~DesktopSession();
    DesktopSession(const DesktopSession&) = delete;
    DesktopSession& operator=(const DesktopSession&) = delete;

    /// What the environment of a program on this desktop holds, "NAME=value" each.
    [[nodiscard]] const std::vector<std::string>& environment() const { return environment_; }
    /// What the program with a process number shows, or nothing while it shows nothing.
    [[nodiscard]] std::optional<AccessibleNode> application(pid_t process) const;

    /// Runs xdotool, which works the keyboard and the mouse. @return what it prints.
    std::string act(const std::vector<std::string>& arguments) const;
    /// Presses keys, such as "ctrl+f", one after the other.
    void pressKeys(const std::vector<std::string>& keys) const;
    /// Brings a window with such a title (a regular expression) to the front, as a task list does.
    void activate(const std::string& title) const;
    /// Has the window manager close a window with such a title, as the button of its frame does.
    void closeWindow(const std::string& title) const;
    void type(const std::string& text) const;
    void movePointer(const QPoint& place) const;
    /// Clicks in the middle of what has come to rest on the screen.
    void click(const AccessibleNode& node) const;

    /// The screen goes, as when its server crashes.
    void loseScreen() { screen_.reset(); }

  private:
    void startWindowManager();
    void startMessageBus();

    std::string folder_;
    std::unique_ptr<VirtualScreen> screen_;
    std::vector<std::string> environment_;
    std::unique_ptr<RunningProgram> windowManager_;
    std::unique_ptr<RunningProgram> messageBus_;
    QString busName_;
};

}  // namespace vornic::test

#endif
