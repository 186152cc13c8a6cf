#ifndef VORNIC_TESTS_UI_ALERTS_HELD_ALERT_PANELS_H
#define VORNIC_TESTS_UI_ALERTS_HELD_ALERT_PANELS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/threads/MainThread.h"
#include "ui/alerts/QMAlert.h"

namespace vornic::test {

/// What happened to windows and panels, in order, in words.
using Happenings = std::vector<std::string>;

/// A panel without a screen that stays until it is answered.
class HeldPanel : public AlertPanel {
  public:
    HeldPanel(AlertContents shown, Happenings& happenings)
        : contents(std::move(shown)), happenings_(happenings) {}

    void showSuppressionCheckBox(const std::string& preferenceKey) override {
        happenings_.push_back("check box for " + preferenceKey);
    }
    void begin(const std::shared_ptr<AlertWindow>& window,
               std::function<void(std::int64_t)> didEnd) override {
        happenings_.push_back(window ? "begin on the window" : "begin free-standing");
        didEnd_ = std::move(didEnd);
        isOnScreen = true;
        if (onShown) {
            platform::MainThread::perform(onShown);
        }
    }
    [[nodiscard]] bool isVisible() const override { return isOnScreen; }
    void orderOut() override {
        happenings_.emplace_back("order out");
        isOnScreen = false;
    }

    /// What a press on a button does: the panel closes and tells the answer, once.
    void answer(std::int64_t returnCode) {
        isOnScreen = false;
        const auto didEnd = std::exchange(didEnd_, nullptr);
        didEnd(returnCode);
    }

    AlertContents contents;
    bool isOnScreen = false;
    std::function<void()> onShown;

  private:
    Happenings& happenings_;
    std::function<void(std::int64_t)> didEnd_;
};

/// Makes held panels and remembers them.
class HeldAlertPanels : public AlertPanelFactory {
  public:
    [[nodiscard]] std::shared_ptr<AlertPanel> makePanel(const AlertContents& contents) override {
        happenings.emplace_back("make panel");
        panels.push_back(std::make_shared<HeldPanel>(contents, happenings));
        panels.back()->onShown = onShown;
        return panels.back();
    }

    Happenings happenings;
    std::vector<std::shared_ptr<HeldPanel>> panels;
    /// Runs as an event of the main thread once a panel is on the screen.
    std::function<void()> onShown;
};

/// A window that says what it is asked.
class TestWindow : public AlertWindow {
  public:
    explicit TestWindow(Happenings& happenings) : happenings_(happenings) {}
    [[nodiscard]] bool hasAttachedSheet() const override { return hasSheet; }
    void makeKeyAndOrderFront() override { happenings_.emplace_back("window to the front"); }

    bool hasSheet = false;

  private:
    Happenings& happenings_;
};

}  // namespace vornic::test

#endif
