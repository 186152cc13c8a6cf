#ifndef VORNIC_TESTS_APP_RECORDING_APPLICATION_HOST_H
#define VORNIC_TESTS_APP_RECORDING_APPLICATION_HOST_H

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/ApplicationHost.h"
#include "platform/threads/MainThread.h"

namespace vornic::test {

/// An application without a screen that writes down what it is told: "panel", "open PATH", "about",
/// "terminate".
class RecordingApplicationHost : public ApplicationHost {
  public:
    bool isKeyWindowUp = false;
    /// The user's answer to every open panel.
    std::optional<std::vector<std::string>> chosen;
    /// The files that cannot be opened.
    std::set<std::string> damaged;
    std::shared_ptr<Document> document;

    std::vector<std::string> calls;
    /// How the last panel was run.
    OpenPanelSettings settings;

    [[nodiscard]] bool hasKeyWindow() const override { return isKeyWindowUp; }
    [[nodiscard]] std::optional<std::vector<std::string>> runOpenPanel(
        const OpenPanelSettings& panelSettings) override {
        settings = panelSettings;
        note("panel");
        return chosen;
    }
    bool openDocument(const std::string& path) override {
        note("open " + path);
        return !damaged.contains(path);
    }
    [[nodiscard]] std::shared_ptr<Document> currentDocument() const override { return document; }
    void showAboutPanel() override { note("about"); }
    void terminate() override { note("terminate"); }

  private:
    void note(const std::string& call) {
        calls.push_back(call);
        EXPECT_TRUE(platform::MainThread::isCurrent()) << call;
    }
};

}  // namespace vornic::test

#endif
