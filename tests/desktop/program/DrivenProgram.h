#ifndef VORNIC_TESTS_DESKTOP_PROGRAM_DRIVEN_PROGRAM_H
#define VORNIC_TESTS_DESKTOP_PROGRAM_DRIVEN_PROGRAM_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/desktop/program/AccessibleNode.h"
#include "tests/desktop/program/DesktopSession.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

/// The built desktop program at work in a session, as its user sees it. What does not come within
/// the longest wait ends the test by an exception that tells what was on the screen instead.
class DrivenProgram {
  public:
    DrivenProgram(const DesktopSession& session, const ProgramSettings& settings);

    [[nodiscard]] RunningProgram& process() { return process_; }
    /// Waits for the program to end.
    ProgramResult finish() { return process_.finish(); }
    [[nodiscard]] bool hasEnded() const;
    /// Waits for a clean end: status 0, no signal.
    void expectCleanEnd();

    /// A window on the screen whose title begins so, or nothing.
    [[nodiscard]] std::optional<AccessibleNode> findWindow(const std::string& title) const;
    /// The same, waited for.
    AccessibleNode window(const std::string& title) const;
    /// Waits until no window with such a title is on the screen.
    void waitUntilGone(const std::string& title) const;
    /// Waits until a window with such a title has the keyboard.
    void waitUntilActive(const std::string& title) const;
    /// How many windows are on the screen.
    [[nodiscard]] std::size_t windowCount() const;

    /// What has a role and a name in any window on the screen, or nothing.
    [[nodiscard]] std::optional<AccessibleNode> find(const std::string& role,
                                                     const std::string& name) const;
    /// The same, waited for.
    AccessibleNode control(const std::string& role, const std::string& name) const;
    /// The same in one window.
    AccessibleNode control(const AccessibleNode& window, const std::string& role,
                           const std::string& name) const;
    /// Waits for a label with a text.
    void waitForLabel(const std::string& text) const;
    /// Waits for a push button that can be pressed, and clicks on it.
    void clickButton(const std::string& name) const;
    /// Waits for an alert with a headline, clicks on one of its buttons, and waits for its end.
    void answerAlert(const std::string& headline, const std::string& button) const;
    /// Chooses an entry of a menu of the menu bar of a window.
    void choose(const AccessibleNode& window, const std::string& menu,
                const std::string& entry) const;
    /// The text of the report in a window.
    [[nodiscard]] std::string report(const AccessibleNode& window) const;
    /// Waits until the report in a window holds a text.
    void waitForReport(const AccessibleNode& window, const std::string& text) const;

    /// Ends the test when something does not become true. @param what it is, for the failure's
    /// text
    void waitFor(const std::string& what, const std::function<bool()>& holds) const;
    /// All that is on the screen, to be read by people.
    [[nodiscard]] std::string describe() const;

  private:
    [[nodiscard]] std::vector<AccessibleNode> windows() const;

    const DesktopSession& session_;
    RunningProgram process_;
};

}  // namespace vornic::test

#endif
