#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/threads/Thread.h"
#include "tests/app/ControllerTest.h"
#include "tests/support/fakes/OwnMachineLibrary.h"

namespace vornic {
namespace {

using platform::PropertyList;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr const char* kLock = "requireAdminPassword";

/// A check box that writes down how it is set; the user's clicks go past it.
class RecordingCheckBox : public CheckBoxItem {
  public:
    explicit RecordingCheckBox(std::optional<bool> on = false) : current(on) {}
    [[nodiscard]] std::optional<bool> state() const override { return current; }
    void setState(bool on) override {
        current = on;
        changes.push_back(on);
    }

    std::optional<bool> current;
    std::vector<bool> changes;
};

class AppControllerLockTest : public test::ControllerTest {
  protected:
    AppControllerLockTest() { controller->setPrefsAdminPass(checkBox); }

    /// The administrator answers no sooner than the main thread has dispatched an event.
    void answerWhenTheInterfaceIsLive() {
        const auto live = std::make_shared<std::promise<void>>();
        platform::MainThread::performAfter(std::chrono::milliseconds(50), [this, live] {
            // The answer reaches this thread only when the rest is done.
            live->set_value();
            if (whileAsked) {
                whileAsked();
            }
        });
        authorization->whenAsked = [this, live] {
            wasLive =
                live->get_future().wait_for(std::chrono::seconds(20)) == std::future_status::ready;
        };
    }

    /// What the user's click on the check box does.
    void click(bool on) {
        checkBox->current = on;
        controller->prefsToggleAdminPass(*checkBox);
    }

    std::shared_ptr<AppController> controller = AppController::init(host);
    std::shared_ptr<RecordingCheckBox> checkBox = std::make_shared<RecordingCheckBox>();
    std::function<void()> whileAsked;
    bool wasLive = false;
};

// Launch

TEST_F(AppControllerLockTest, asksForNothingWithoutALock) {
    controller->awakeFromNib();
    EXPECT_EQ(controller->awakeCount(), 1U);
    EXPECT_FALSE(wasAsked());
    EXPECT_THAT(checkBox->changes, IsEmpty());
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(AppControllerLockTest, goesOnWhenAnAdministratorAuthorizes) {
    store(kLock, 1);
    authorize(true);
    controller->awakeFromNib();
    EXPECT_TRUE(wasAsked());
    EXPECT_THAT(checkBox->changes, ElementsAre(true));
    EXPECT_THAT(host.calls, IsEmpty());
    EXPECT_FALSE(controller->isTerminating());
}

TEST_F(AppControllerLockTest, terminatesWithoutAMessageWhenItIsRefused) {
    store(kLock, 1);
    controller->awakeFromNib();
    EXPECT_TRUE(wasAsked());
    EXPECT_THAT(checkBox->changes, ElementsAre(true));
    EXPECT_THAT(host.calls, ElementsAre("terminate"));
    EXPECT_TRUE(controller->isTerminating());
    EXPECT_THAT(alerts->shown, IsEmpty());
    QMLog::finishWriting();
    EXPECT_THAT(
        test::readBytes(sandbox.home() + "/.local/share/quillmark/Logs/Quillmark/Vornic.1.log"),
        HasSubstr("The application ends: it is locked and no administrator has authorized its "
                  "start.\n"));
}

TEST_F(AppControllerLockTest, terminatesAtOnceWhenTheProgramQuitsWhileItAsks) {
    store(kLock, 1);
    authorize(true);
    const auto answer = std::make_shared<std::promise<void>>();
    authorization->whenAsked = [answer] { answer->get_future().wait(); };
    platform::MainThread::performAfter(std::chrono::milliseconds(50),
                                       [] { platform::MainThread::shutdown(); });
    controller->awakeFromNib();
    EXPECT_THAT(host.calls, ElementsAre("terminate"));
    answer->set_value();
    platform::MainThread::restart();
    EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(20)));
}

TEST_F(AppControllerLockTest, opensNothingOnceItHasTerminated) {
    host.chosen = {{"/a.xml"}};
    controller->applicationDidFinishLaunching();
    controller->applicationWillTerminate();
    runLoopFor(std::chrono::milliseconds(1500));
    controller->openFile();
    EXPECT_FALSE(controller->applicationOpenFile("/b.xml"));
    EXPECT_THAT(host.calls, IsEmpty());
}

TEST_F(AppControllerLockTest, opensNothingOnceItIsTerminating) {
    store(kLock, 1);
    controller->awakeFromNib();
    host.chosen = {{"/a.xml"}};
    EXPECT_FALSE(controller->applicationShouldOpenUntitledFile());
    EXPECT_FALSE(controller->applicationOpenFile("/b.xml"));
    controller->openFile();
    controller->applicationDidFinishLaunching();
    runLoopFor(std::chrono::milliseconds(1500));
    EXPECT_THAT(host.calls, ElementsAre("terminate"));
}

TEST_F(AppControllerLockTest, isLockedByTheNumberOneOfAnyKind) {
    for (const PropertyList& value : {PropertyList(1), PropertyList(true), PropertyList(1.0)}) {
        store(kLock, value);
        const auto locked = AppController::init(host);
        locked->awakeFromNib();
        EXPECT_TRUE(locked->isTerminating());
    }
}

TEST_F(AppControllerLockTest, isNotLockedByAnythingElse) {
    for (const PropertyList& value :
         {PropertyList(0), PropertyList(2), PropertyList(false), PropertyList("1")}) {
        store(kLock, value);
        const auto open = AppController::init(host);
        open->awakeFromNib();
        EXPECT_FALSE(open->isTerminating());
    }
    EXPECT_FALSE(wasAsked());
}

TEST_F(AppControllerLockTest, asksOnceWhateverIsAwakenedLater) {
    authorize(true);
    controller->awakeFromNib();
    store(kLock, 1);
    controller->awakeFromNib();
    controller->awakeFromNib();
    EXPECT_EQ(controller->awakeCount(), 3U);
    EXPECT_FALSE(wasAsked());
    EXPECT_THAT(checkBox->changes, IsEmpty());
}

TEST_F(AppControllerLockTest, asksWithoutACheckBoxAsWell) {
    store(kLock, 1);
    controller->setPrefsAdminPass(nullptr);
    EXPECT_EQ(controller->prefsAdminPass(), nullptr);
    controller->awakeFromNib();
    EXPECT_THAT(host.calls, ElementsAre("terminate"));
}

TEST_F(AppControllerLockTest, keepsTheInterfaceLiveWhileItAsksAtTheLaunch) {
    store(kLock, 1);
    authorize(true);
    answerWhenTheInterfaceIsLive();
    controller->awakeFromNib();
    EXPECT_TRUE(wasLive);
    EXPECT_FALSE(controller->isTerminating());
}

// The check box

TEST_F(AppControllerLockTest, turnsTheLockOnWithoutAuthorization) {
    click(true);
    EXPECT_EQ(stored(kLock), PropertyList(1));
    EXPECT_FALSE(wasAsked());
    EXPECT_THAT(checkBox->changes, IsEmpty());
}

TEST_F(AppControllerLockTest, warnsBeforeItLocksEverybodyOut) {
    authorization->canAsk = false;
    alerts->answer = 0;
    click(true);
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(stored(kLock), std::nullopt);
    EXPECT_THAT(checkBox->changes, ElementsAre(false));
    ASSERT_EQ(alerts->shown.size(), 1U);
    EXPECT_EQ(alerts->shown[0].contents.defaultButtonTitle, "Keep");
    EXPECT_EQ(alerts->shown[0].contents.alternateButtonTitle, "Undo");
    alerts->answer = 1;
    click(true);
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(stored(kLock), PropertyList(1));
    EXPECT_EQ(checkBox->current, true);
}

TEST_F(AppControllerLockTest, warnsOfNothingWhereTheRightsAreThereAlready) {
    authorize(true);
    store(kLock, 1);
    click(false);
    authorization->canAsk = false;
    click(true);
    EXPECT_THAT(alerts->shown, IsEmpty());
    EXPECT_EQ(stored(kLock), PropertyList(1));
}

TEST_F(AppControllerLockTest, turnsTheLockOffWhenAnAdministratorAuthorizes) {
    store(kLock, 1);
    authorize(true);
    click(false);
    EXPECT_TRUE(wasAsked());
    EXPECT_EQ(stored(kLock), PropertyList(0));
    EXPECT_THAT(checkBox->changes, IsEmpty());
}

TEST_F(AppControllerLockTest, leavesTheLockOnWhenItIsRefused) {
    store(kLock, 1);
    click(false);
    EXPECT_TRUE(wasAsked());
    EXPECT_EQ(stored(kLock), PropertyList(1));
    EXPECT_THAT(checkBox->changes, ElementsAre(true));
}

TEST_F(AppControllerLockTest, keepsTheInterfaceLiveWhileItAsks) {
    store(kLock, 1);
    authorize(true);
    answerWhenTheInterfaceIsLive();
    click(false);
    EXPECT_TRUE(wasLive);
    EXPECT_EQ(stored(kLock), PropertyList(0));
}

TEST_F(AppControllerLockTest, asksNoSecondTimeWhileItAsks) {
    store(kLock, 1);
    authorize(true);
    bool wasSetBack = false;
    whileAsked = [this, &wasSetBack] {
        click(false);
        wasSetBack = checkBox->current == true;
        checkBox->current = false;
    };
    answerWhenTheInterfaceIsLive();
    click(false);
    EXPECT_TRUE(wasSetBack);
    EXPECT_EQ(
        std::count_if(authorization->events.begin(), authorization->events.end(),
                      [](const std::string& event) { return event.starts_with("copyRights"); }),
        1);
    EXPECT_EQ(stored(kLock), PropertyList(0));
}

TEST_F(AppControllerLockTest, leavesTheLockOnThatIsTurnedOnAgainWhileItAsks) {
    store(kLock, 1);
    authorize(true);
    whileAsked = [this] { click(true); };
    answerWhenTheInterfaceIsLive();
    click(false);
    EXPECT_EQ(stored(kLock), PropertyList(1));
}

TEST_F(AppControllerLockTest, storesNothingWhenItIsRefusedAndNothingWasStored) {
    click(false);
    EXPECT_EQ(stored(kLock), std::nullopt);
    EXPECT_THAT(checkBox->changes, ElementsAre(true));
}

TEST_F(AppControllerLockTest, asksNoSecondTimeWhileTheAuthorizationLasts) {
    store(kLock, 1);
    authorize(true);
    controller->awakeFromNib();
    authorization->events.clear();
    click(false);
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(stored(kLock), PropertyList(0));
}

TEST_F(AppControllerLockTest, doesNothingForASenderWithoutAState) {
    store(kLock, 1);
    RecordingCheckBox sender(std::nullopt);
    controller->prefsToggleAdminPass(sender);
    EXPECT_FALSE(wasAsked());
    EXPECT_EQ(stored(kLock), PropertyList(1));
    EXPECT_THAT(sender.changes, IsEmpty());
}

TEST_F(AppControllerLockTest, takesTheStateOfItsSender) {
    RecordingCheckBox sender(true);
    controller->prefsToggleAdminPass(sender);
    EXPECT_EQ(stored(kLock), PropertyList(1));
    EXPECT_THAT(checkBox->changes, IsEmpty());
}

TEST_F(AppControllerLockTest, showsTheOldStateWhereTheNewOneCannotBeStored) {
    std::filesystem::remove_all(preferencesFolder());
    std::ofstream(preferencesFolder()) << "in the way";
    click(true);
    EXPECT_THAT(checkBox->changes, ElementsAre(false));
    EXPECT_THAT(alerts->texts(),
                ElementsAre(StartsWith("The preference could not be saved. | The folder ")));
    QMLog::finishWriting();
    EXPECT_THAT(
        test::readBytes(sandbox.home() + "/.local/share/quillmark/Logs/Quillmark/Vornic.1.log"),
        HasSubstr("Unable to save preference requireAdminPassword. "));
}

/// On a machine whose Library everybody may write.
class AppControllerMachineLockTest : protected test::OwnMachineLibrary,
                                     public AppControllerLockTest {
  protected:
    void SetUp() override {
        if (!isMounted()) {
            GTEST_SKIP() << "needs root and the right to mount";
        }
    }
};

TEST_F(AppControllerMachineLockTest, storesTheLockForAnyUser) {
    click(true);
    ErrorSlot error;
    const auto machines = PropertyList::readFile(
        std::string(kFolder) + "/Preferences/com.quillmark.Vornic.plist", error);
    ASSERT_TRUE(machines);
    ASSERT_NE(machines->find(kLock), nullptr);
    EXPECT_EQ(*machines->find(kLock), PropertyList(1));
}

TEST_F(AppControllerMachineLockTest, heedsALockThatAnotherUserTurnedOn) {
    click(true);
    ASSERT_TRUE(std::filesystem::remove(preferencesFolder() + "/com.quillmark.Vornic.plist"));
    controller->awakeFromNib();
    EXPECT_THAT(host.calls, ElementsAre("terminate"));
}

}  // namespace
}  // namespace vornic
