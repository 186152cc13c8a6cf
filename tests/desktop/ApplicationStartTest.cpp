#include <QFileDialog>
#include <QTimer>
#include <memory>
#include <string>

#include <gmock/gmock.h>

#include "foundation/rights/QMAuthorization.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "tests/desktop/ApplicationTest.h"
#include "tests/support/fakes/RecordingAuthorizationHost.h"
#include "tests/support/fakes/RecordingWorkspaceOpener.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/StandInProgram.h"

// What the application starts beside its windows, and what keeps it from starting.

namespace vornic::test {
namespace {

using platform::PropertyList;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ApplicationStartTest : public Unprivileged, public ApplicationTest {
  protected:
    ApplicationStartTest() {
        platform::Bundle::setMainBundle(platform::Bundle(bundle));
        QMAuthorization::setSharedController(
            std::make_shared<QMAuthorization>(true, authorization));
        ErrorSlot error;
        EXPECT_TRUE(PropertyList(PropertyList::Dictionary{{"CFBundleExecutable", "updater"}})
                        .writeFile(updaterBundle + "/Contents/Info.plist", error));
    }
    ~ApplicationStartTest() override {
        settle();
        QMAuthorization::setSharedController(nullptr);
        platform::Bundle::setMainBundle(std::nullopt);
    }

    void lock() const {
        ErrorSlot error;
        EXPECT_TRUE(platform::UserPreferences().setValue(
            AppController::kRequireAdminPasswordPreference, 1, error));
    }
    // Whether the application that was launched ends by itself.
    bool ends() {
        bool goesOn = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&goesOn] {
            goesOn = true;
            QApplication::exit();
        });
        timer.start(std::chrono::milliseconds(300));
        application.run();
        return !goesOn;
    }
    [[nodiscard]] std::string log() const {
        QMLog::finishWriting();
        return readBytes(sandbox.home() + "/.local/share/quillmark/Logs/Quillmark/" +
                         QMLog::sharedController().appName() + ".1.log");
    }

    const std::string bundle = sandbox.path("Vornic.app");
    const std::string updaterBundle = bundle + "/Contents/Resources/Quillmark Software Update.app";
    StandInProgram updater{updaterBundle + "/Contents/MacOS/updater", sandbox.path("updated")};
    std::shared_ptr<RecordingAuthorizationHost> authorization =
        std::make_shared<RecordingAuthorizationHost>();
};

TEST_F(ApplicationStartTest, looksForUpdatesBeforeItShowsTheOpenPanel) {
    showOpenPanelAtStart(true);
    platform::MainThread::performAfter(std::chrono::milliseconds(50), [this] {
        EXPECT_NE(visible<QFileDialog>(), nullptr);
        EXPECT_THAT(updater.takeArguments(), ElementsAre("-checkpath", bundle));
        visible<QFileDialog>()->reject();
    });
    application.launch({});
    EXPECT_NE(visible<StartWindow>(), nullptr);
    platform::joinDetachedThreads(std::chrono::seconds(20));
    EXPECT_FALSE(updater.wasRun()) << "once is enough";
}

TEST_F(ApplicationStartTest, looksForNoUpdatesWhereTheFamilysPreferencesSaySo) {
    ErrorSlot error;
    ASSERT_TRUE(platform::UserPreferences("com.quillmark.global")
                    .setValue("SUCheckAtStartup", PropertyList(PropertyList::Value(false)), error));
    application.launch({});
    platform::joinDetachedThreads(std::chrono::seconds(20));
    EXPECT_FALSE(updater.wasRun());
    EXPECT_FALSE(exists(sandbox.path("Quillmark Software Update.app")));
}

TEST_F(ApplicationStartTest, goesOnWhenAnAdministratorAuthorizes) {
    lock();
    application.launch({});
    EXPECT_NE(visible<StartWindow>(), nullptr);
    EXPECT_FALSE(ends());
    application.showPreferences();
    const auto* const box =
        visible<PreferencesWindow>()->findChild<QCheckBox*>(QStringLiteral("prefsAdminPass"));
    EXPECT_TRUE(box->isChecked());
}

TEST_F(ApplicationStartTest, endsWithoutAMessageWhenNobodyAuthorizes) {
    lock();
    showOpenPanelAtStart(true);
    authorization->rightsStatus = platform::kAuthorizationCanceled;
    application.launch({sandbox.write("a.xml", kSound)});
    EXPECT_TRUE(ends());
    EXPECT_EQ(application.currentWindow(), nullptr);
    EXPECT_EQ(visible<QWidget>(), nullptr);
    EXPECT_THAT(log(), HasSubstr("it is locked and no administrator has authorized its start.\n"));
    platform::joinDetachedThreads(std::chrono::seconds(20));
    EXPECT_FALSE(updater.wasRun());
}

TEST_F(ApplicationStartTest, endsWhileAnAdministratorIsAsked) {
    lock();
    authorization->whenAsked = [this] {
        platform::MainThread::performAndWait([this] { application.terminate(); });
    };
    std::optional<bool> told;
    application.whenDecided([&told](bool mayOpen) { told = mayOpen; });
    application.launch({});
    EXPECT_TRUE(ends());
    EXPECT_EQ(told, false);
    EXPECT_EQ(visible<QWidget>(), nullptr);
    platform::joinDetachedThreads(std::chrono::seconds(20));
    EXPECT_FALSE(updater.wasRun());
}

TEST_F(ApplicationStartTest, setsTheLockBackWhereNothingCanAskForAPassword) {
    authorization->canAsk = false;
    application.launch({});
    application.showPreferences();
    auto* const box =
        visible<PreferencesWindow>()->findChild<QCheckBox*>(QStringLiteral("prefsAdminPass"));
    platform::MainThread::performAfter(std::chrono::milliseconds(50), [] {
        auto* const warning = visible<QMessageBox>();
        ASSERT_NE(warning, nullptr);
        EXPECT_EQ(warning->text(), QStringLiteral("Nobody will be able to start the application."));
        QTest::keyClick(warning, Qt::Key_Escape);
    });
    box->click();
    EXPECT_FALSE(box->isChecked());
    EXPECT_EQ(platform::UserPreferences().value(AppController::kRequireAdminPasswordPreference),
              std::nullopt);
}

}  // namespace
}  // namespace vornic::test
