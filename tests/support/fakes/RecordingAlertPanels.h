#ifndef VORNIC_TESTS_SUPPORT_FAKES_RECORDING_ALERT_PANELS_H
#define VORNIC_TESTS_SUPPORT_FAKES_RECORDING_ALERT_PANELS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ui/alerts/QMAlert.h"

namespace vornic::test {

/// Alerts without a screen: writes down what is shown and answers at once. Main thread only, like
/// everything that shows alerts.
class RecordingAlertPanels : public AlertPanelFactory {
  public:
    struct Shown {
        AlertContents contents;
        QMAlert::Window parentWindow;
    };

    /// The answer to every alert: 1 for the default button, 0 for the alternate, -1 for the other.
    std::int64_t answer = 1;
    /// When set, runs before an alert is shown; may raise.
    std::function<void(const AlertContents& contents)> onShow;
    /// The alerts in the order in which they were shown.
    std::vector<Shown> shown;

    /// The alerts as "MESSAGE | INFORMATION".
    [[nodiscard]] std::vector<std::string> texts() const {
        std::vector<std::string> texts;
        texts.reserve(shown.size());
        for (const Shown& alert : shown) {
            texts.push_back(alert.contents.messageText + " | " + alert.contents.informativeText);
        }
        return texts;
    }

    [[nodiscard]] std::shared_ptr<AlertPanel> makePanel(const AlertContents& contents) override {
        if (onShow) {
            onShow(contents);
        }
        shown.push_back({contents, nullptr});
        return std::make_shared<Panel>(*this, shown.size() - 1);
    }

  private:
    class Panel : public AlertPanel {
      public:
        Panel(RecordingAlertPanels& owner, std::size_t index) : owner_(owner), index_(index) {}
        void showSuppressionCheckBox(const std::string& /*preferenceKey*/) override {}
        void begin(const std::shared_ptr<AlertWindow>& parentWindow,
                   std::function<void(std::int64_t)> didEnd) override {
            owner_.shown[index_].parentWindow = parentWindow;
            didEnd(owner_.answer);
        }
        [[nodiscard]] bool isVisible() const override { return false; }
        void orderOut() override {}

      private:
        RecordingAlertPanels& owner_;
        std::size_t index_;
    };
};

/// Puts recording panels in place while it lives.
class InstalledAlertPanels {
  public:
    InstalledAlertPanels() : panels_(std::make_shared<RecordingAlertPanels>()) {
        QMAlert::setPanelFactory(panels_);
    }
    ~InstalledAlertPanels() { QMAlert::setPanelFactory(nullptr); }
    InstalledAlertPanels(const InstalledAlertPanels&) = delete;
    InstalledAlertPanels& operator=(const InstalledAlertPanels&) = delete;

    RecordingAlertPanels* operator->() const { return panels_.get(); }

  private:
    std::shared_ptr<RecordingAlertPanels> panels_;
};

/// A window that alerts can be sheets of.
class PlainAlertWindow : public AlertWindow {
  public:
    [[nodiscard]] bool hasAttachedSheet() const override { return false; }
    void makeKeyAndOrderFront() override {}
};

}  // namespace vornic::test

#endif
