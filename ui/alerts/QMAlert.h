#ifndef VORNIC_UI_ALERTS_QM_ALERT_H
#define VORNIC_UI_ALERTS_QM_ALERT_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vornic {

/// A window that alerts can be attached to. Drawn elsewhere; main thread only.
class AlertWindow {
  public:
    virtual ~AlertWindow() = default;
    [[nodiscard]] virtual bool hasAttachedSheet() const = 0;
    /// Brings the window to the front and makes it the key window.
    virtual void makeKeyAndOrderFront() = 0;
};

/// An alert on the screen. Drawn elsewhere; main thread only.
class AlertPanel {
  public:
    virtual ~AlertPanel() = default;
    /// Shows a check box that reads and at once writes the boolean preference of the key, by
    /// `SuppressionPreference`.
    virtual void showSuppressionCheckBox(const std::string& preferenceKey) = 0;
    /// Shows the alert on the window, or free-standing when it is null, and returns at once.
    /// @param didEnd told the answer once, on the main thread: 1 default, 0 alternate, -1 other.
    virtual void begin(const std::shared_ptr<AlertWindow>& parentWindow,
                       std::function<void(std::int64_t returnCode)> didEnd) = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    /// Takes the alert off the screen without an answer: `didEnd` is told nothing any more.
    virtual void orderOut() = 0;
};

/// What an alert shows. An absent default title stands for the standard OK button, an absent
/// alternate or other title for no button.
struct AlertContents {
    std::string messageText;
    std::optional<std::string> defaultButtonTitle;
    std::optional<std::string> alternateButtonTitle;
    std::optional<std::string> otherButtonTitle;
    std::string informativeText;
    /// The window that a free-standing alert belongs over; null for the one that is in use.
    std::shared_ptr<AlertWindow> over = nullptr;
};

/// While it lives, what the thread that made it asks for free-standing comes over a window.
class AlertPlace {
  public:
    explicit AlertPlace(std::weak_ptr<AlertWindow> window);
    ~AlertPlace();
    AlertPlace(const AlertPlace&) = delete;
    AlertPlace& operator=(const AlertPlace&) = delete;

    /// The window of the calling thread; null for none, and once it has gone.
    [[nodiscard]] static const std::weak_ptr<AlertWindow>& current();

  private:
    std::weak_ptr<AlertWindow> before_;
};

/// Makes the panels of the toolkit in use. Main thread only.
class AlertPanelFactory {
  public:
    virtual ~AlertPanelFactory() = default;
    [[nodiscard]] virtual std::shared_ptr<AlertPanel> makePanel(const AlertContents& contents) = 0;
};

class QMAlert;

/// Somebody who wants to be told when an alert has ended, by operations that it knows by name.
class AlertDelegate {
  public:
    virtual ~AlertDelegate() = default;
    [[nodiscard]] virtual bool respondsToSelector(std::string_view selector) const = 0;
    /// Main thread. A delegate whose alert somebody waits for stores the code and sets `alertEnded`
    /// on the alert object itself, as `QMAlert::alertDidEnd` does.
    virtual void performDidEndSelector(std::string_view selector, QMAlert& alert,
                                       std::int64_t returnCode) = 0;
};

/// Puts a question or a message before the user, from any thread, as a sheet on a window or
/// free-standing, and waits for the answer when asked to, while the interface stays alive.
class QMAlert : public AlertDelegate, public std::enable_shared_from_this<QMAlert> {
  public:
    /// The request that is handed to the main thread; only keys that have a value are in it:
    /// "messageText", "defaultButtonTitle", "alternateButtonTitle", "otherButtonTitle",
    /// "informativeText", "didEndSelector", "suppressionBinding".
    using Dictionary = std::map<std::string, std::string>;
    using Text = std::optional<std::string>;
    using Window = std::shared_ptr<AlertWindow>;

    static constexpr std::string_view kDidEndSelector = "alertDidEnd:returnCode:contextInfo:";

    /// Says how panels are made. Without a factory (programs without a window) no alert can be
    /// shown and every request returns -1 at once. Main thread, before other threads run.
    static void setPanelFactory(std::shared_ptr<AlertPanelFactory> factory);

    QMAlert() = default;
    ~QMAlert() override = default;

    /// The designated operation. The shorter forms leave something out; all may be called from any
    /// thread.
    /// @param parentWindow the alert is free-standing when it is null or has a sheet already
    /// @param delegate null for the alert object itself
    /// @param didEndSelector absent for `kDidEndSelector`
    /// @param block whether to wait for the answer
    /// @param alertObject null for a new one
    /// @param suppressionBinding the preference of a check box; absent for none
    /// @return the answer (1 default, 0 alternate, -1 other) when `block` is true, else -1; -1 also
    /// when the program quits before the answer, and when nothing is shown because the delegate
    /// does not respond to the selector, which the console reports, or there is no factory.
    static std::int64_t alertSheetWithMessageText(
        const Text& messageText, const Text& defaultButton, const Text& alternateButton,
        const Text& otherButton, const Text& informativeText, const Window& parentWindow,
        const std::shared_ptr<AlertDelegate>& delegate, const Text& didEndSelector, bool block,
        const std::shared_ptr<QMAlert>& alertObject, const Text& suppressionBinding);
    static std::int64_t alertSheetWithMessageText(
        const Text& messageText, const Text& defaultButton, const Text& alternateButton,
        const Text& otherButton, const Text& informativeText, const Window& parentWindow,
        const std::shared_ptr<AlertDelegate>& delegate, const Text& didEndSelector, bool block,
        const std::shared_ptr<QMAlert>& alertObject);
    /// Always waits: the delegate, the selector and `block` are not passed on.
    static std::int64_t alertSheetWithMessageText(
        const Text& messageText, const Text& defaultButton, const Text& alternateButton,
        const Text& otherButton, const Text& informativeText, const Window& parentWindow,
        const std::shared_ptr<AlertDelegate>& delegate, const Text& didEndSelector, bool block);
    /// Always waits, whatever `block` says.
    static std::int64_t alertSheetWithMessageText(const Text& messageText,
                                                  const Text& defaultButton,
                                                  const Text& alternateButton,
                                                  const Text& otherButton,
                                                  const Text& informativeText,
                                                  const Window& parentWindow, bool block);
    /// One standard OK button; waits.
    static std::int64_t alertSheetWithMessageText(const Text& messageText,
                                                  const Text& informativeText,
                                                  const Window& parentWindow);
    /// Waits, and answers itself with the default button after `interval` whole seconds.
    static std::int64_t timedAlertSheetWithMessageText(
        const Text& messageText, const Text& defaultButton, const Text& alternateButton,
        const Text& otherButton, const Text& informativeText, const Window& parentWindow,
        std::int64_t interval);

    /// Shows the alert of a request and returns at once; without a factory nothing happens. The
    /// object must be owned by a shared pointer. Main thread.
    void alertSheetWithDictionary(const Dictionary& dictionary);
    /// The built-in end handler: stores the code and marks the alert ended.
    void alertDidEnd(std::int64_t returnCode);
    /// The body of the timer thread: sleeps, then answers with the default button. Returns early,
    /// without an answer, when the program quits.
    void defaultReturnAfterTimeInterval(std::int64_t seconds);
    /// Takes the alert off the screen, if it is there, and lets go of it. Main thread.
    void closeAlert();
    /// Waits, for an alert that was shown without waiting, until it has ended or the program quits,
    /// and takes it off the screen. Any thread.
    /// @return the answer; -1 when the program quits before there is one.
    std::int64_t waitForAnswer();

    [[nodiscard]] const Window& parentWindow() const { return parentWindow_; }
    void setParentWindow(Window window) { parentWindow_ = std::move(window); }
    /// Who is told the answer; the alert itself unless another was given, null before it is asked.
    [[nodiscard]] std::shared_ptr<AlertDelegate> delegate() const;
    void setDelegate(std::shared_ptr<AlertDelegate> delegate);
    [[nodiscard]] bool alertEnded() const { return alertEnded_; }
    void setAlertEnded(bool ended) { alertEnded_ = ended; }
    [[nodiscard]] std::int64_t returnCode() const { return returnCode_; }
    void setReturnCode(std::int64_t code) { returnCode_ = code; }
    [[nodiscard]] const std::shared_ptr<AlertPanel>& alert() const { return alert_; }
    void setAlert(std::shared_ptr<AlertPanel> panel) { alert_ = std::move(panel); }

    [[nodiscard]] bool respondsToSelector(std::string_view selector) const override;
    void performDidEndSelector(std::string_view selector, QMAlert& alert,
                               std::int64_t returnCode) override;

  private:
    Window parentWindow_;
    // Where the alert belongs when it is free-standing.
    std::weak_ptr<AlertWindow> place_;
    // Null while the alert is its own delegate, so that it does not keep itself alive.
    std::shared_ptr<AlertDelegate> delegate_;
    bool isOwnDelegate_ = false;
    std::atomic<bool> alertEnded_ = false;
    std::atomic<std::int64_t> returnCode_ = 0;
    std::atomic<bool> isAsked_ = false;
    std::atomic<bool> isWaitedFor_ = false;
    std::shared_ptr<AlertPanel> alert_;
};

}  // namespace vornic

#endif
