#include "tests/desktop/program/DrivenProgram.h"

#include <algorithm>
#include <stdexcept>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/desktop/program/Waiting.h"

namespace vornic::test {

using State = AccessibleNode::State;

DrivenProgram::DrivenProgram(const DesktopSession& session, const ProgramSettings& settings)
    : session_(session), process_(settings) {}

bool DrivenProgram::hasEnded() const {
    siginfo_t ended{};
    return waitid(P_PID, static_cast<id_t>(process_.id()), &ended, WEXITED | WNOHANG | WNOWAIT) ==
               0 &&
           ended.si_pid == process_.id();
}

void DrivenProgram::expectCleanEnd() {
    waitFor("the end of the program", [this] { return hasEnded(); });
    const ProgramResult result = finish();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.signal, 0) << result.errors;
}

void DrivenProgram::waitFor(const std::string& what, const std::function<bool()>& holds) const {
    if (!becomesTrue(holds)) {
        throw std::runtime_error("waited in vain: " + what + "\n" + describe());
    }
}

std::vector<AccessibleNode> DrivenProgram::windows() const {
    std::vector<AccessibleNode> shown;
    if (const auto application = session_.application(process_.id())) {
        for (const AccessibleNode& window : application->children()) {
            if (window.is(State::showing)) {
                shown.push_back(window);
            }
        }
    }
    return shown;
}

std::size_t DrivenProgram::windowCount() const {
    return windows().size();
}

std::optional<AccessibleNode> DrivenProgram::findWindow(const std::string& title) const {
    for (const AccessibleNode& window : windows()) {
        if (window.name().starts_with(title)) {
            return window;
        }
    }
    return std::nullopt;
}

AccessibleNode DrivenProgram::window(const std::string& title) const {
    std::optional<AccessibleNode> found;
    waitFor("the window " + title, [&] { return (found = findWindow(title)).has_value(); });
    return *found;
}

void DrivenProgram::waitUntilGone(const std::string& title) const {
    waitFor("the end of the window " + title, [&] { return !findWindow(title); });
}

void DrivenProgram::waitUntilActive(const std::string& title) const {
    const auto isActive = [&] {
        for (const AccessibleNode& window : windows()) {
            if (window.name().starts_with(title) && window.is(State::active)) {
                return true;
            }
        }
        return false;
    };
    // On a busy machine the window manager may leave the keyboard with nobody when a window goes
    // at the moment that it comes. A user would go on by a click.
    if (!becomesTrue(isActive, std::chrono::seconds(10))) {
        session_.act({"search", "--onlyvisible", "--name", "^" + title, "windowactivate"});
    }
    waitFor("the keyboard for the window " + title, isActive);
}

std::optional<AccessibleNode> DrivenProgram::find(const std::string& role,
                                                  const std::string& name) const {
    for (const AccessibleNode& window : windows()) {
        if (auto found = window.find(role, name)) {
            return found;
        }
    }
    return std::nullopt;
}

AccessibleNode DrivenProgram::control(const std::string& role, const std::string& name) const {
    std::optional<AccessibleNode> found;
    waitFor(role + " " + name, [&] { return (found = find(role, name)).has_value(); });
    return *found;
}

AccessibleNode DrivenProgram::control(const AccessibleNode& window, const std::string& role,
                                      const std::string& name) const {
    std::optional<AccessibleNode> found;
    waitFor(role + " " + name, [&] { return (found = window.find(role, name)).has_value(); });
    return *found;
}

void DrivenProgram::waitForLabel(const std::string& text) const {
    static_cast<void>(control("label", text));
}

void DrivenProgram::clickButton(const std::string& name) const {
    const AccessibleNode button = control("push button", name);
    waitFor(name + " to be pressed", [&button] { return button.is(State::enabled); });
    session_.click(button);
}

void DrivenProgram::answerAlert(const std::string& headline, const std::string& button) const {
    const auto isAsked = [&headline](const AccessibleNode& window) {
        return window.find("label", headline).has_value();
    };
    const auto isActive = [](const AccessibleNode& window) { return window.is(State::active); };
    waitForLabel(headline);
    std::vector<AccessibleNode> shown = windows();
    std::stable_partition(shown.begin(), shown.end(), isActive);
    const auto alert = std::find_if(shown.begin(), shown.end(), isAsked);
    if (alert != shown.end()) {
        const AccessibleNode asked = control(*alert, "push button", button);
        // One that another window covers would not be met by the pointer.
        if (isActive(*alert)) {
            session_.click(asked);
        } else {
            asked.press();
        }
        waitFor("the end of the alert", [&alert] { return !alert->is(State::showing); });
    }
}

void DrivenProgram::choose(const AccessibleNode& window, const std::string& menu,
                           const std::string& entry) const {
    session_.click(control(window, "menu item", menu));
    session_.click(control(window, "menu item", entry));
}

std::string DrivenProgram::report(const AccessibleNode& window) const {
    const auto view = window.find("text", "Report");
    return view ? view->text() : "";
}

void DrivenProgram::waitForReport(const AccessibleNode& window, const std::string& text) const {
    waitFor("the report's text " + text,
            [&] { return report(window).find(text) != std::string::npos; });
}

std::string DrivenProgram::describe() const {
    std::string lines;
    for (const AccessibleNode& window : windows()) {
        lines += window.describe();
    }
    return lines.empty() ? "nothing was on the screen" : lines;
}

}  // namespace vornic::test
