#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>

#include <gmock/gmock.h>

#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "tests/ui/alerts/HeldAlertPanels.h"
#include "ui/alerts/QMAlert.h"

namespace vornic {
namespace {

using namespace std::chrono_literals;
using platform::MainThread;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class QMAlertTest : public ::testing::Test {
  protected:
    QMAlertTest() { QMAlert::setPanelFactory(panels); }
    ~QMAlertTest() override {
        QMAlert::setPanelFactory(nullptr);
        MainThread::shutdown();
        EXPECT_TRUE(platform::joinDetachedThreads(10s));
        MainThread::restart();
    }

    /// Presses a button of the latest panel with the next event of the main thread.
    void answerSoon(std::int64_t returnCode) const {
        MainThread::perform([this, returnCode] { panels->panels.back()->answer(returnCode); });
    }

    /// Runs a function on a thread while the main thread dispatches its events.
    template <typename Function>
    static auto onAnotherThread(const Function& function) {
        std::atomic<bool> isDone = false;
        std::invoke_result_t<Function> result{};
        std::thread thread([&] {
            result = function();
            isDone = true;
        });
        while (!isDone) {
            MainThread::dispatchOne(1ms);
        }
        thread.join();
        return result;
    }

    /// The designated operation with titles for three buttons.
    std::int64_t ask(const std::shared_ptr<AlertDelegate>& delegate, const QMAlert::Text& selector,
                     bool block, const std::shared_ptr<QMAlert>& object,
                     const QMAlert::Text& suppression = std::nullopt) const {
        return QMAlert::alertSheetWithMessageText("message", "Yes", "No", "Cancel", "information",
                                                  window, delegate, selector, block, object,
                                                  suppression);
    }

    std::shared_ptr<test::HeldAlertPanels> panels = std::make_shared<test::HeldAlertPanels>();
    std::shared_ptr<test::TestWindow> window =
        std::make_shared<test::TestWindow>(panels->happenings);
};

/// A delegate that knows one operation besides the usual one.
class TestDelegate : public AlertDelegate {
  public:
    [[nodiscard]] bool respondsToSelector(std::string_view selector) const override {
        return selector == "questionDidEnd:" || selector == QMAlert::kDidEndSelector;
    }
    void performDidEndSelector(std::string_view selector, QMAlert& alert,
                               std::int64_t returnCode) override {
        told.push_back(std::string(selector) + " " + std::to_string(returnCode));
        if (marksEnded) {
            alert.setReturnCode(returnCode);
            alert.setAlertEnded(true);
        }
    }
    std::vector<std::string> told;
    bool marksEnded = true;
};

// What is shown

TEST_F(QMAlertTest, showsTextsAndTitlesOnTheWindow) {
    answerSoon(1);
    EXPECT_EQ(ask(nullptr, std::nullopt, true, nullptr), 1);
    ASSERT_EQ(panels->panels.size(), 1U);
    const AlertContents& contents = panels->panels[0]->contents;
    EXPECT_EQ(contents.messageText, "message");
    EXPECT_EQ(contents.informativeText, "information");
    EXPECT_EQ(contents.defaultButtonTitle, "Yes");
    EXPECT_EQ(contents.alternateButtonTitle, "No");
    EXPECT_EQ(contents.otherButtonTitle, "Cancel");
    EXPECT_THAT(panels->happenings,
                ElementsAre("make panel", "window to the front", "begin on the window"));
}

TEST_F(QMAlertTest, showsOneStandardButtonWithoutTitles) {
    answerSoon(1);
    EXPECT_EQ(QMAlert::alertSheetWithMessageText(std::nullopt, std::nullopt, std::nullopt,
                                                 std::nullopt, std::nullopt, nullptr, nullptr,
                                                 std::nullopt, true, nullptr, std::nullopt),
              1);
    const AlertContents& contents = panels->panels.at(0)->contents;
    EXPECT_EQ(contents.messageText, "");
    EXPECT_EQ(contents.informativeText, "");
    EXPECT_EQ(contents.defaultButtonTitle, std::nullopt);
    EXPECT_EQ(contents.alternateButtonTitle, std::nullopt);
    EXPECT_EQ(contents.otherButtonTitle, std::nullopt);
    EXPECT_THAT(panels->happenings, ElementsAre("make panel", "begin free-standing"));
}

TEST_F(QMAlertTest, distinguishesAnEmptyTitleFromNone) {
    answerSoon(1);
    QMAlert::alertSheetWithMessageText("m", "", std::nullopt, std::nullopt, "i", nullptr, true);
    EXPECT_EQ(panels->panels.at(0)->contents.defaultButtonTitle, "");
}

TEST_F(QMAlertTest, showsPercentSignsAsTheyAreWritten) {
    answerSoon(1);
    QMAlert::alertSheetWithMessageText("5% of %@", "%d is 100%% of %s", nullptr);
    EXPECT_EQ(panels->panels.at(0)->contents.messageText, "5% of %@");
    EXPECT_EQ(panels->panels.at(0)->contents.informativeText, "%d is 100%% of %s");
}

TEST_F(QMAlertTest, showsAFreeStandingAlertForAWindowThatHasASheet) {
    window->hasSheet = true;
    const auto object = std::make_shared<QMAlert>();
    answerSoon(0);
    EXPECT_EQ(ask(nullptr, std::nullopt, true, object), 0);
    EXPECT_THAT(panels->happenings, ElementsAre("make panel", "begin free-standing"));
    EXPECT_EQ(object->parentWindow(), nullptr);
}

TEST_F(QMAlertTest, showsTheSuppressionCheckBoxOnlyForAKey) {
    answerSoon(1);
    ask(nullptr, std::nullopt, true, nullptr, "dontAskAgain");
    EXPECT_THAT(panels->happenings, ElementsAre("make panel", "check box for dontAskAgain",
                                                "window to the front", "begin on the window"));
}

TEST_F(QMAlertTest, showsARequestByItsKeys) {
    const auto object = std::make_shared<QMAlert>();
    const auto delegate = std::make_shared<TestDelegate>();
    object->setDelegate(delegate);
    object->alertSheetWithDictionary({{"messageText", "message"},
                                      {"defaultButtonTitle", "Yes"},
                                      {"alternateButtonTitle", "No"},
                                      {"otherButtonTitle", "Cancel"},
                                      {"informativeText", "information"},
                                      {"didEndSelector", "questionDidEnd:"},
                                      {"suppressionBinding", "dontAskAgain"}});
    const AlertContents& contents = panels->panels.at(0)->contents;
    EXPECT_EQ(contents.messageText, "message");
    EXPECT_EQ(contents.defaultButtonTitle, "Yes");
    EXPECT_EQ(contents.alternateButtonTitle, "No");
    EXPECT_EQ(contents.otherButtonTitle, "Cancel");
    EXPECT_EQ(contents.informativeText, "information");
    EXPECT_THAT(panels->happenings,
                ElementsAre("make panel", "check box for dontAskAgain", "begin free-standing"));
    panels->panels[0]->answer(-1);
    EXPECT_THAT(delegate->told, ElementsAre("questionDidEnd: -1"));
    object->closeAlert();
}

TEST_F(QMAlertTest, showsARequestThatHasNoKey) {
    const auto object = std::make_shared<QMAlert>();
    object->alertSheetWithDictionary({});
    ASSERT_EQ(panels->panels.size(), 1U);
    EXPECT_EQ(object->alert(), panels->panels[0]);
    EXPECT_EQ(panels->panels[0]->contents.messageText, "");
    object->setDelegate(object);
    panels->panels[0]->answer(0);
    EXPECT_TRUE(object->alertEnded());
    EXPECT_EQ(object->returnCode(), 0);
    object->closeAlert();
}

// Answers

TEST_F(QMAlertTest, returnsTheButtonThatWasPressed) {
    for (const std::int64_t code : {1, 0, -1}) {
        answerSoon(code);
        EXPECT_EQ(ask(nullptr, std::nullopt, true, nullptr), code);
    }
}

TEST_F(QMAlertTest, waitsOnAnotherThreadForTheAnswer) {
    panels->onShown = [this] {
        std::this_thread::sleep_for(50ms);
        panels->panels.at(0)->answer(0);
    };
    const auto start = std::chrono::steady_clock::now();
    const std::int64_t code =
        onAnotherThread([this] { return ask(nullptr, std::nullopt, true, nullptr); });
    EXPECT_EQ(code, 0);
    // It looks again after 0.2 seconds.
    EXPECT_GE(std::chrono::steady_clock::now() - start, 190ms);
    EXPECT_THAT(panels->happenings, ::testing::Contains("begin on the window"));
}

TEST_F(QMAlertTest, keepsTheMainThreadsEventsGoingWhileItWaitsThere) {
    std::vector<int> dispatched;
    MainThread::perform([&] { dispatched.push_back(1); });
    MainThread::perform([&] {
        dispatched.push_back(2);
        answerSoon(1);
    });
    EXPECT_EQ(ask(nullptr, std::nullopt, true, nullptr), 1);
    EXPECT_THAT(dispatched, ElementsAre(1, 2));
}

TEST_F(QMAlertTest, dispatchesNoEventAfterTheAnswer) {
    bool isDispatched = false;
    answerSoon(1);
    MainThread::perform([&] { isDispatched = true; });
    ask(nullptr, std::nullopt, true, nullptr);
    EXPECT_FALSE(isDispatched);
    EXPECT_TRUE(MainThread::dispatchOne(0ms));
}

TEST_F(QMAlertTest, returnsAtOnceWhenItShallNotWait) {
    const auto delegate = std::make_shared<TestDelegate>();
    EXPECT_EQ(ask(delegate, "questionDidEnd:", false, nullptr), -1);
    ASSERT_EQ(panels->panels.size(), 1U);
    EXPECT_TRUE(panels->panels[0]->isOnScreen);
    EXPECT_THAT(delegate->told, IsEmpty());
    panels->panels[0]->answer(0);
    EXPECT_THAT(delegate->told, ElementsAre("questionDidEnd: 0"));
}

TEST_F(QMAlertTest, keepsAnAlertThatNobodyWaitsForUntilItIsAnswered) {
    auto object = std::make_shared<QMAlert>();
    const std::weak_ptr<QMAlert> alert = object;
    ask(nullptr, std::nullopt, false, object);
    object.reset();
    ASSERT_FALSE(alert.expired());
    panels->panels.at(0)->answer(-1);
    panels->panels.clear();
    EXPECT_TRUE(alert.expired());
}

TEST_F(QMAlertTest, startsAnewWithAnObjectThatHasEnded) {
    const auto object = std::make_shared<QMAlert>();
    object->alertDidEnd(1);
    answerSoon(0);
    EXPECT_EQ(ask(nullptr, std::nullopt, true, object), 0);
    EXPECT_EQ(object->returnCode(), 0);
    EXPECT_TRUE(object->alertEnded());
}

// Delegates

TEST_F(QMAlertTest, isItsOwnDelegateWhenThereIsNone) {
    const auto object = std::make_shared<QMAlert>();
    answerSoon(1);
    ask(nullptr, std::nullopt, true, object);
    EXPECT_EQ(object->delegate(), object);
    EXPECT_TRUE(object->respondsToSelector("alertDidEnd:returnCode:contextInfo:"));
    EXPECT_FALSE(object->respondsToSelector("questionDidEnd:"));
}

TEST_F(QMAlertTest, notifiesItsDelegateByTheUsualOperationWithoutASelector) {
    const auto delegate = std::make_shared<TestDelegate>();
    answerSoon(0);
    EXPECT_EQ(ask(delegate, std::nullopt, true, nullptr), 0);
    EXPECT_THAT(delegate->told, ElementsAre("alertDidEnd:returnCode:contextInfo: 0"));
}

TEST_F(QMAlertTest, goesOnWaitingUntilTheDelegateSaysThatTheAlertHasEnded) {
    const auto delegate = std::make_shared<TestDelegate>();
    const auto object = std::make_shared<QMAlert>();
    delegate->marksEnded = false;
    answerSoon(0);
    MainThread::perform([&] { object->alertDidEnd(5); });
    EXPECT_EQ(ask(delegate, "questionDidEnd:", true, object), 5);
    EXPECT_THAT(delegate->told, ElementsAre("questionDidEnd: 0"));
}

TEST_F(QMAlertTest, refusesADelegateThatLacksTheSelector) {
    ::testing::internal::CaptureStderr();
    const auto delegate = std::make_shared<TestDelegate>();
    EXPECT_EQ(ask(delegate, "somethingElse:", true, nullptr), -1);
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                ::testing::MatchesRegex("[^\n]* Alert error: delegate does not respond to selector "
                                        "somethingElse:\n"));
    EXPECT_THAT(panels->happenings, IsEmpty());
}

TEST_F(QMAlertTest, refusesASelectorThatTheAlertItselfLacks) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(ask(nullptr, "questionDidEnd:", true, nullptr), -1);
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                ::testing::HasSubstr("does not respond to selector questionDidEnd:\n"));
    EXPECT_THAT(panels->happenings, IsEmpty());
}

TEST_F(QMAlertTest, letsGoOfEverythingWithItsEnd) {
    auto delegate = std::make_shared<TestDelegate>();
    auto object = std::make_shared<QMAlert>();
    answerSoon(1);
    ask(delegate, std::nullopt, true, object);
    const std::weak_ptr<TestDelegate> told = delegate;
    const std::weak_ptr<test::TestWindow> shownOn = window;
    const std::weak_ptr<test::HeldPanel> shown = panels->panels.at(0);
    delegate.reset();
    window.reset();
    panels->panels.clear();
    EXPECT_TRUE(shown.expired());
    EXPECT_FALSE(told.expired() || shownOn.expired());
    object.reset();
    EXPECT_TRUE(told.expired() && shownOn.expired());
}

// The shorter forms

TEST_F(QMAlertTest, passesEverythingButTheSuppressionOnInTheFormWithAnObject) {
    const auto delegate = std::make_shared<TestDelegate>();
    const auto object = std::make_shared<QMAlert>();
    EXPECT_EQ(QMAlert::alertSheetWithMessageText("m", "Yes", "No", "Cancel", "i", window, delegate,
                                                 "questionDidEnd:", false, object),
              -1);
    EXPECT_THAT(panels->happenings,
                ElementsAre("make panel", "window to the front", "begin on the window"));
    EXPECT_EQ(panels->panels.at(0)->contents.otherButtonTitle, "Cancel");
    EXPECT_EQ(object->alert(), panels->panels[0]);
    panels->panels[0]->answer(1);
    EXPECT_THAT(delegate->told, ElementsAre("questionDidEnd: 1"));
    object->closeAlert();
}

TEST_F(QMAlertTest, alwaysWaitsInTheFormWithABlockFlagAndNoObject) {
    const auto delegate = std::make_shared<TestDelegate>();
    answerSoon(0);
    EXPECT_EQ(QMAlert::alertSheetWithMessageText("m", "Yes", "No", std::nullopt, "i", window,
                                                 delegate, "somethingElse:", false),
              0);
    EXPECT_THAT(delegate->told, IsEmpty());
    EXPECT_EQ(panels->panels.at(0)->contents.alternateButtonTitle, "No");
}

TEST_F(QMAlertTest, alwaysWaitsInTheFormWithABlockFlagAndNoDelegate) {
    answerSoon(-1);
    const auto start = panels->panels.size();
    EXPECT_EQ(QMAlert::alertSheetWithMessageText("m", "Yes", "No", "Cancel", "i", window, false),
              -1);
    ASSERT_EQ(panels->panels.size(), start + 1);
    EXPECT_FALSE(panels->panels.back()->isOnScreen) << "it returned before the answer";
}

TEST_F(QMAlertTest, showsOneButtonInTheShortestForm) {
    answerSoon(1);
    EXPECT_EQ(QMAlert::alertSheetWithMessageText("m", "i", window), 1);
    const AlertContents& contents = panels->panels.at(0)->contents;
    EXPECT_EQ(contents.messageText, "m");
    EXPECT_EQ(contents.informativeText, "i");
    EXPECT_EQ(contents.defaultButtonTitle, std::nullopt);
    EXPECT_EQ(contents.alternateButtonTitle, std::nullopt);
    EXPECT_EQ(contents.otherButtonTitle, std::nullopt);
}

// Closing

TEST_F(QMAlertTest, takesAVisibleAlertOffTheScreenAndLetsGoOfIt) {
    const auto object = std::make_shared<QMAlert>();
    ask(nullptr, std::nullopt, false, object);
    ASSERT_TRUE(panels->panels.at(0)->isOnScreen);
    panels->happenings.clear();
    object->closeAlert();
    EXPECT_THAT(panels->happenings, ElementsAre("order out"));
    EXPECT_EQ(object->alert(), nullptr);
    object->closeAlert();
    EXPECT_THAT(panels->happenings, ElementsAre("order out"));
}

TEST_F(QMAlertTest, doesNotTakeOffWhatIsNotOnTheScreen) {
    const auto object = std::make_shared<QMAlert>();
    answerSoon(1);
    ask(nullptr, std::nullopt, true, object);
    EXPECT_THAT(panels->happenings, ::testing::Not(::testing::Contains("order out")));
    EXPECT_EQ(object->alert(), nullptr);
}

// Timed alerts

TEST_F(QMAlertTest, answersATimedAlertItselfAfterItsInterval) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(
        QMAlert::timedAlertSheetWithMessageText("m", "Quit", "Stay", std::nullopt, "i", window, 1),
        1);
    const auto lasted = std::chrono::steady_clock::now() - start;
    EXPECT_GE(lasted, 1s);
    EXPECT_LT(lasted, 5s);
    EXPECT_THAT(panels->happenings, ElementsAre("make panel", "window to the front",
                                                "begin on the window", "order out"));
    EXPECT_EQ(panels->panels.at(0)->contents.alternateButtonTitle, "Stay");
}

TEST_F(QMAlertTest, answersATimedAlertOfAnotherThreadToo) {
    EXPECT_EQ(onAnotherThread([this] {
                  return QMAlert::timedAlertSheetWithMessageText("m", std::nullopt, std::nullopt,
                                                                 std::nullopt, "i", window, 0);
              }),
              1);
    EXPECT_FALSE(panels->panels.at(0)->isOnScreen);
}

TEST_F(QMAlertTest, losesNoAnswerOfATimerThatFiresAtOnce) {
    for (int i = 0; i < 300; ++i) {
        ASSERT_EQ(QMAlert::timedAlertSheetWithMessageText("m", std::nullopt, std::nullopt,
                                                          std::nullopt, "i", nullptr, 0),
                  1);
    }
}

TEST_F(QMAlertTest, returnsTheUsersAnswerToATimedAlertWhenItComesFirst) {
    answerSoon(0);
    EXPECT_EQ(QMAlert::timedAlertSheetWithMessageText("m", "Quit", "Stay", std::nullopt, "i",
                                                      window, 3600),
              0);
}

TEST_F(QMAlertTest, letsTheTimerFireIntoAnAlertThatNobodyReadsAnyMore) {
    const auto object = std::make_shared<QMAlert>();
    object->alertDidEnd(0);
    object->defaultReturnAfterTimeInterval(0);
    EXPECT_EQ(object->returnCode(), 1);
    EXPECT_TRUE(object->alertEnded());
}

TEST_F(QMAlertTest, leavesTheUsersAnswerToTheOneWhoWaitsWhenTheTimerFiresBehindIt) {
    const auto object = std::make_shared<QMAlert>();
    std::thread timer;
    panels->onShown = [&] {
        // Between the answer and the moment in which the waiting thread looks, the timer fires.
        panels->panels.at(0)->answer(0);
        timer = std::thread([&] { object->defaultReturnAfterTimeInterval(0); });
    };
    const std::int64_t code =
        onAnotherThread([&] { return ask(nullptr, std::nullopt, true, object); });
    EXPECT_EQ(code, 0);
    timer.join();
    EXPECT_EQ(object->returnCode(), 1);
}

TEST_F(QMAlertTest, neverKeepsAQuittingProgramWaitingForATimer) {
    answerSoon(1);
    QMAlert::timedAlertSheetWithMessageText("m", std::nullopt, std::nullopt, std::nullopt, "i",
                                            window, 3600);
    MainThread::shutdown();
    EXPECT_TRUE(platform::joinDetachedThreads(5s));
}

// The program's end, and programs without windows

TEST_F(QMAlertTest, endsWaitingWhenTheProgramQuits) {
    MainThread::perform([] { MainThread::shutdown(); });
    EXPECT_EQ(ask(nullptr, std::nullopt, true, nullptr), -1);
    EXPECT_FALSE(panels->panels.at(0)->isOnScreen);
}

TEST_F(QMAlertTest, endsWaitingOnAnotherThreadWhenTheProgramQuits) {
    panels->onShown = [] { MainThread::shutdown(); };
    EXPECT_EQ(onAnotherThread([this] { return ask(nullptr, std::nullopt, true, nullptr); }), -1);
    panels->panels.at(0)->answer(0);
}

TEST_F(QMAlertTest, showsNothingFromAnotherThreadOnceTheProgramQuits) {
    MainThread::shutdown();
    EXPECT_EQ(onAnotherThread([this] { return ask(nullptr, std::nullopt, true, nullptr); }), -1);
    EXPECT_THAT(panels->happenings, IsEmpty());
}

TEST_F(QMAlertTest, returnsAtOnceInAProgramWithoutPanels) {
    QMAlert::setPanelFactory(nullptr);
    EXPECT_EQ(ask(nullptr, std::nullopt, true, nullptr), -1);
    EXPECT_EQ(QMAlert::alertSheetWithMessageText("m", "i", nullptr), -1);
    EXPECT_EQ(QMAlert::timedAlertSheetWithMessageText("m", std::nullopt, std::nullopt, std::nullopt,
                                                      "i", nullptr, 3600),
              -1);
    EXPECT_EQ(onAnotherThread([this] { return ask(nullptr, std::nullopt, true, nullptr); }), -1);
    EXPECT_TRUE(platform::joinDetachedThreads(1s)) << "a timer runs for nobody";
    const auto object = std::make_shared<QMAlert>();
    object->alertSheetWithDictionary({});
    EXPECT_EQ(object->alert(), nullptr);
}

}  // namespace
}  // namespace vornic
