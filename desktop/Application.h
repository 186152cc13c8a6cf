#ifndef VORNIC_DESKTOP_APPLICATION_H
#define VORNIC_DESKTOP_APPLICATION_H

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/AppController.h"
#include "app/ApplicationHost.h"
#include "desktop/AboutWindow.h"
#include "desktop/BatchWindow.h"
#include "desktop/DocumentMainWindow.h"
#include "desktop/IncomingFiles.h"
#include "desktop/OpenPanel.h"
#include "desktop/PreferencesWindow.h"
#include "desktop/StartWindow.h"

class QDragMoveEvent;
class QDropEvent;

namespace vornic {

/// The desktop application: its documents and windows. Main thread only.
class Application : public QObject, public ApplicationHost, public FileReceiver {
  public:
    Application();
    ~Application() override;
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Starts the controller and opens what the program was started with.
    /// @param paths absolute.
    void launch(const std::vector<std::string>& paths);
    /// Runs the event loop until the application terminates, unless it has done so already.
    void run();
    /// While the launch is not yet sure of its right to open anything, what is to be told waits for
    /// that, or for the end.
    void whenDecided(std::function<void(bool mayOpen)> told) override;
    /// Opens what a later start of the program was given, instead of what an open panel asks for,
    /// and comes to the front. @return false, and nothing happens, before the application may open
    /// anything and once it ends.
    bool receive(const std::vector<std::string>& paths, const std::string& activation) override;
    /// Closes what is left, after the event loop.
    void finish();

    [[nodiscard]] bool hasKeyWindow() const override;
    [[nodiscard]] std::optional<std::vector<std::string>> runOpenPanel(
        const OpenPanelSettings& settings) override;
    bool openDocument(const std::string& path) override;
    [[nodiscard]] std::shared_ptr<Document> currentDocument() const override;
    void showAboutPanel() override;
    /// Ends the event loop, and all waiting for answers, without a question.
    void terminate() override;

    [[nodiscard]] AppController& controller() { return *controller_; }
    /// The window of the current document, or null.
    [[nodiscard]] DocumentMainWindow* currentWindow() const;
    /// Opens a window each; more than three go to the batch window where the user prefers that.
    void openDocuments(const std::vector<std::string>& paths);
    /// Shows the batch window, and adds files, bundles and folders to it.
    void showBatch(const std::vector<std::string>& paths = {});
    /// The batch window, or null before it was shown.
    [[nodiscard]] BatchWindow* batchWindow() const { return batch_.get(); }
    /// Asks for a bundle, which is opened, or a folder, which goes to the batch window.
    void askForBundleOrFolder();
    void openBundleOrFolder(const std::string& path);
    /// The windows of documents and the batch window, those that were looked at last first.
    [[nodiscard]] std::vector<QMainWindow*> windows() const;
    /// Closes them all; what is at work is asked about.
    void closeAll();
    /// Brings the original of a file back, in a window that does not repair it.
    void restoreOriginalOf(const std::string& path);
    /// Takes a file off the list of recent files, and off the window that shows it.
    void forgetRecentFile(const std::string& path);
    void clearRecentFiles();
    void showPreferences();
    /// Shows a file in its folder.
    void showInFileManager(const std::string& path);
    void showTrash();
    /// Asks about runs that are going on, one window after the other, and ends the application
    /// unless the user wants one to go on.
    void quit();

    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    using WindowPointer = std::shared_ptr<DocumentMainWindow>;

    bool open(const std::string& path, bool isRepaired);
    [[nodiscard]] DocumentMainWindow* windowOf(const std::string& path) const;
    void decide(bool mayOpen);
    void showStartWindow();
    void closeDocument(DocumentMainWindow& window);
    // Another window takes the place of the start window until all of them are closed.
    void leaveStartWindow();
    void bringToFront();
    void endWhenNothingIsOpen();
    // Whether an object is a window or a panel, unlike menus and tool tips.
    [[nodiscard]] static bool isWindow(const QObject& object);
    // The window that the user looks at comes last.
    void putInFront(const QObject* object);
    // Shows where files may be dropped that they are taken, or no longer.
    void showDrag(bool isTaken);
    // @return whether it is about files, so that nobody else is asked.
    bool takesDrag(const QObject& object, QDragMoveEvent& drag);
    bool takesDrop(const QObject& object, QDropEvent& drop);
    void presentError(const QString& message, const QString& info);
    void openInFileManager(const std::string& folder);

    std::shared_ptr<AppController> controller_;
    // Those that the user looked at last come last.
    std::vector<WindowPointer> windows_;
    std::unique_ptr<StartWindow> startWindow_;
    std::unique_ptr<BatchWindow> batch_;
    std::unique_ptr<PreferencesWindow> preferences_;
    std::unique_ptr<AboutWindow> about_;
    QPointer<OpenPanel> openPanel_;
    std::vector<std::function<void(bool mayOpen)>> undecided_;
    bool mayOpen_ = false;
    bool isLaunched_ = false;
    bool isRunning_ = false;
    bool isEnding_ = false;
    // Whether what is open was opened from the start window.
    bool returnsToStart_ = false;
};

}  // namespace vornic

#endif
