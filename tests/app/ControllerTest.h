#ifndef VORNIC_TESTS_APP_CONTROLLER_TEST_H
#define VORNIC_TESTS_APP_CONTROLLER_TEST_H

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "app/AppController.h"
#include "foundation/log/QMLog.h"
#include "foundation/rights/QMAuthorization.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "platform/settings/UserPreferences.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "tests/app/RecordingApplicationHost.h"
#include "tests/support/fakes/RecordingAlertPanels.h"
#include "tests/support/fakes/RecordingAuthorizationHost.h"
#include "tests/support/fakes/RecordingWorkspaceOpener.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::test {

/// Tests of the controller on the plain run loop, in an unprivileged process with a home folder and
/// a bundle of its own, in which nothing is opened or authorized really.
class ControllerTest : public ::testing::Test {
  protected:
    ControllerTest() {
        platform::MainThread::setLoop(nullptr);
        platform::Bundle::setMainBundle(platform::Bundle(sandbox.path("Vornic.app")));
        authorization->rightsStatus = platform::kAuthorizationCanceled;
        QMAuthorization::setSharedController(
            std::make_shared<QMAuthorization>(true, authorization));
    }
    ~ControllerTest() override {
        EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(20)));
        QMLog::finishWriting();
        QMAuthorization::setSharedController(nullptr);
        platform::Bundle::setMainBundle(std::nullopt);
        platform::MainThread::setLoop(nullptr);
    }

    static void store(const std::string& key, const platform::PropertyList& value) {
        ErrorSlot error;
        ASSERT_TRUE(platform::UserPreferences().setValue(key, value, error));
    }
    [[nodiscard]] static std::optional<platform::PropertyList> stored(const std::string& key) {
        return platform::UserPreferences().value(key);
    }
    void writeInformation(const platform::PropertyList::Dictionary& entries) const {
        ErrorSlot error;
        ASSERT_TRUE(platform::PropertyList(entries).writeFile(
            sandbox.path("Vornic.app/Contents/Info.plist"), error));
    }
    /// Whether an administrator authorizes when asked.
    void authorize(bool given) const {
        authorization->rightsStatus =
            given ? platform::kAuthorizationSuccess : platform::kAuthorizationCanceled;
    }
    [[nodiscard]] bool wasAsked() const {
        for (const std::string& event : authorization->events) {
            if (event.starts_with("copyRights")) {
                return true;
            }
        }
        return false;
    }
    /// Lets the main thread's events go on for a time.
    static void runLoopFor(std::chrono::milliseconds time) {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
            platform::MainThread::dispatchOne(std::chrono::milliseconds(5));
        }
    }
    [[nodiscard]] std::string preferencesFolder() const {
        return sandbox.home() + "/.local/share/quillmark/Preferences";
    }

    Unprivileged user;
    Sandbox sandbox;
    InstalledAlertPanels alerts;
    InstalledWorkspaceOpener opener;
    std::shared_ptr<RecordingAuthorizationHost> authorization =
        std::make_shared<RecordingAuthorizationHost>();
    RecordingApplicationHost host;
};

}  // namespace vornic::test

#endif
