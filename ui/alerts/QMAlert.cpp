#include "ui/alerts/QMAlert.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "base/Exception.h"
#include "base/FormatString.h"
#include "foundation/log/QMException.h"
#include "platform/processes/Console.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

namespace {

using platform::MainThread;

constexpr std::int64_t kDefaultReturn = 1;
constexpr std::int64_t kNoAnswer = -1;
constexpr std::chrono::milliseconds kLongestEventWait{10};
constexpr std::chrono::milliseconds kPollInterval{200};
/// A sleeping timer looks this often whether the program is quitting.
constexpr std::chrono::milliseconds kTimerSlice{50};
/// How often a new timer looks whether its alert has been asked for yet.
constexpr std::chrono::milliseconds kGatePoll{1};
constexpr std::int64_t kLongestTimer = std::int64_t{365} * 24 * 60 * 60;

std::shared_ptr<AlertPanelFactory>& panelFactory() {
    static std::shared_ptr<AlertPanelFactory> factory;
    return factory;
}

void setIfPresent(QMAlert::Dictionary& dictionary, const char* key, const QMAlert::Text& value) {
    if (value) {
        dictionary[key] = *value;
    }
}

QMAlert::Text valueOf(const QMAlert::Dictionary& dictionary, const char* key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? QMAlert::Text() : QMAlert::Text(found->second);
}

/// One round of waiting for an answer, which on the main thread keeps the interface alive.
void waitOneRound() {
    if (MainThread::isCurrent()) {
        MainThread::dispatchOne(kLongestEventWait);
    } else {
        std::this_thread::sleep_for(kPollInterval);
    }
}

std::weak_ptr<AlertWindow>& placeOfThisThread() {
    thread_local std::weak_ptr<AlertWindow> place;
    return place;
}

}  // namespace

AlertPlace::AlertPlace(std::weak_ptr<AlertWindow> window)
    : before_(std::exchange(placeOfThisThread(), std::move(window))) {}

AlertPlace::~AlertPlace() {
    placeOfThisThread() = std::move(before_);
}

const std::weak_ptr<AlertWindow>& AlertPlace::current() {
    return placeOfThisThread();
}

void QMAlert::setPanelFactory(std::shared_ptr<AlertPanelFactory> factory) {
    panelFactory() = std::move(factory);
}

std::int64_t QMAlert::alertSheetWithMessageText(
    const Text& messageText, const Text& defaultButton, const Text& alternateButton,
    const Text& otherButton, const Text& informativeText, const Window& parentWindow,
    const std::shared_ptr<AlertDelegate>& delegate, const Text& didEndSelector, bool block,
    const std::shared_ptr<QMAlert>& alertObject, const Text& suppressionBinding) {
    const std::shared_ptr<QMAlert> object = alertObject ? alertObject : std::make_shared<QMAlert>();
    object->setParentWindow(parentWindow);
    object->place_ = parentWindow ? std::weak_ptr(parentWindow) : AlertPlace::current();
    object->setDelegate(delegate ? delegate : object);
    object->setAlertEnded(false);
    const std::string selector = didEndSelector.value_or(std::string(kDidEndSelector));
    if (!object->delegate()->respondsToSelector(selector)) {
        platform::consoleLog(
            formatString("Alert error: delegate does not respond to selector %@", selector));
        return kNoAnswer;
    }
    if (!panelFactory()) {
        return kNoAnswer;
    }
    Dictionary request;
    setIfPresent(request, "messageText", messageText);
    setIfPresent(request, "defaultButtonTitle", defaultButton);
    setIfPresent(request, "alternateButtonTitle", alternateButton);
    setIfPresent(request, "otherButtonTitle", otherButton);
    setIfPresent(request, "informativeText", informativeText);
    setIfPresent(request, "didEndSelector", selector);
    setIfPresent(request, "suppressionBinding", suppressionBinding);
    object->isWaitedFor_ = block;
    object->isAsked_ = true;
    MainThread::performAndWait([&] { object->alertSheetWithDictionary(request); });
    return block ? object->waitForAnswer() : kNoAnswer;
}

std::int64_t QMAlert::alertSheetWithMessageText(
    const Text& messageText, const Text& defaultButton, const Text& alternateButton,
    const Text& otherButton, const Text& informativeText, const Window& parentWindow,
    const std::shared_ptr<AlertDelegate>& delegate, const Text& didEndSelector, bool block,
    const std::shared_ptr<QMAlert>& alertObject) {
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, delegate, didEndSelector, block,
                                     alertObject, std::nullopt);
}

std::int64_t QMAlert::alertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                const Text& alternateButton,
                                                const Text& otherButton,
                                                const Text& informativeText,
                                                const Window& parentWindow,
                                                const std::shared_ptr<AlertDelegate>& /*delegate*/,
                                                const Text& /*didEndSelector*/, bool /*block*/) {
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, nullptr, std::nullopt, true,
                                     nullptr);
}

std::int64_t QMAlert::alertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                const Text& alternateButton,
                                                const Text& otherButton,
                                                const Text& informativeText,
                                                const Window& parentWindow, bool block) {
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, nullptr, std::nullopt, block);
}

std::int64_t QMAlert::alertSheetWithMessageText(const Text& messageText,
                                                const Text& informativeText,
                                                const Window& parentWindow) {
    return alertSheetWithMessageText(messageText, std::nullopt, std::nullopt, std::nullopt,
                                     informativeText, parentWindow, true);
}

std::int64_t QMAlert::timedAlertSheetWithMessageText(
    const Text& messageText, const Text& defaultButton, const Text& alternateButton,
    const Text& otherButton, const Text& informativeText, const Window& parentWindow,
    std::int64_t interval) {
    if (!panelFactory()) {
        return kNoAnswer;
    }
    const auto object = std::make_shared<QMAlert>();
    try {
        platform::detachNewThread([object, interval] {
            // Asking clears the answer, so none may be given before.
            while (!object->isAsked_ && !MainThread::isShutDown()) {
                std::this_thread::sleep_for(kGatePoll);
            }
            object->defaultReturnAfterTimeInterval(interval);
        });
    } catch (const platform::Exception& exception) {
        // Without its timer the alert still waits for the user.
        QMException::logException(exception,
                                  "+[QMAlert timedAlertSheetWithMessageText:defaultButton:"
                                  "alternateButton:otherButton:informativeText:parentWindow:"
                                  "interval:]");
    }
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, nullptr, std::nullopt, true,
                                     object);
}

void QMAlert::alertSheetWithDictionary(const Dictionary& dictionary) {
    if (!panelFactory()) {
        return;
    }
    const AlertContents contents{
        .messageText = valueOf(dictionary, "messageText").value_or(""),
        .defaultButtonTitle = valueOf(dictionary, "defaultButtonTitle"),
        .alternateButtonTitle = valueOf(dictionary, "alternateButtonTitle"),
        .otherButtonTitle = valueOf(dictionary, "otherButtonTitle"),
        .informativeText = formatString("%@", valueOf(dictionary, "informativeText").value_or("")),
        .over = place_.lock(),
    };
    const std::string selector =
        valueOf(dictionary, "didEndSelector").value_or(std::string(kDidEndSelector));
    const std::shared_ptr<AlertPanel> panel = panelFactory()->makePanel(contents);
    setAlert(panel);
    if (const Text key = valueOf(dictionary, "suppressionBinding")) {
        panel->showSuppressionCheckBox(*key);
    }
    if (parentWindow_ && parentWindow_->hasAttachedSheet()) {
        setParentWindow(nullptr);
    }
    if (parentWindow_) {
        parentWindow_->makeKeyAndOrderFront();
    }
    // The panel keeps the alert alive until it has been answered or taken off the screen.
    panel->begin(parentWindow_, [self = shared_from_this(), selector](std::int64_t code) {
        if (const std::shared_ptr<AlertDelegate> told = self->delegate()) {
            told->performDidEndSelector(selector, *self, code);
        }
    });
}

void QMAlert::alertDidEnd(std::int64_t returnCode) {
    setReturnCode(returnCode);
    setAlertEnded(true);
}

/// Sleeps in slices, so that a program that quits need not wait for the rest of the interval.
void QMAlert::defaultReturnAfterTimeInterval(std::int64_t seconds) {
    const auto end = std::chrono::steady_clock::now() +
                     std::chrono::seconds(std::clamp<std::int64_t>(seconds, 0, kLongestTimer));
    while (std::chrono::steady_clock::now() < end) {
        if (MainThread::isShutDown()) {
            return;
        }
        std::this_thread::sleep_until(
            std::min(end, std::chrono::steady_clock::now() + kTimerSlice));
    }
    // An answer that the user gave before is first left to whoever waits for it.
    while (alertEnded_ && isWaitedFor_ && !MainThread::isShutDown()) {
        std::this_thread::sleep_for(kTimerSlice);
    }
    alertDidEnd(kDefaultReturn);
}

void QMAlert::closeAlert() {
    if (!alert_) {
        return;
    }
    const std::shared_ptr<AlertPanel> panel = std::exchange(alert_, nullptr);
    if (panel->isVisible()) {
        panel->orderOut();
    }
}

/// Waits until the alert has ended or the program quits, then takes it off the screen.
std::int64_t QMAlert::waitForAnswer() {
    while (!alertEnded_ && !MainThread::isShutDown()) {
        waitOneRound();
    }
    const bool isAnswered = alertEnded_;
    MainThread::performAndWait([this] { closeAlert(); });
    const std::int64_t answer = isAnswered ? returnCode() : kNoAnswer;
    isWaitedFor_ = false;
    return answer;
}

std::shared_ptr<AlertDelegate> QMAlert::delegate() const {
    if (!isOwnDelegate_) {
        return delegate_;
    }
    return std::const_pointer_cast<QMAlert>(weak_from_this().lock());
}

void QMAlert::setDelegate(std::shared_ptr<AlertDelegate> delegate) {
    isOwnDelegate_ = delegate.get() == this;
    delegate_ = isOwnDelegate_ ? nullptr : std::move(delegate);
}

bool QMAlert::respondsToSelector(std::string_view selector) const {
    return selector == kDidEndSelector;
}

void QMAlert::performDidEndSelector(std::string_view /*selector*/, QMAlert& alert,
                                    std::int64_t returnCode) {
    alert.alertDidEnd(returnCode);
}

}  // namespace vornic
