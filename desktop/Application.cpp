#include "desktop/Application.h"

#include <QApplication>
#include <QMessageBox>
#include <algorithm>
#include <utility>

#include <sys/stat.h>

#include "base/PathText.h"
#include "desktop/AlertBox.h"
#include "desktop/DesktopNotification.h"
#include "desktop/FileIcons.h"
#include "desktop/FileManager.h"
#include "desktop/MainMenu.h"
#include "desktop/QtText.h"
#include "desktop/ReadableText.h"
#include "desktop/RecentFiles.h"
#include "desktop/SettingsPortal.h"
#include "desktop/Sheet.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/QMLocalPaths.h"
#include "job/ProjectFiles.h"
#include "platform/files/FileSystem.h"
#include "platform/items/ItemStatus.h"
#include "platform/session/WorkspaceOpener.h"
#include "platform/threads/MainThread.h"
#include "ui/support/QMSoftwareUpdate.h"

namespace vornic {

namespace {

constexpr const char* kActivationToken = "XDG_ACTIVATION_TOKEN";

// Ends the document's life on the screen; a run that is going on ends at its next check point.
void letGo(DocumentMainWindow& window) {
    if (const auto document = window.document()) {
        document->close();
    }
    // A thread may wait for the answer to an alert that nobody can see any more.
    for (QMessageBox* const alert : window.findChildren<QMessageBox*>()) {
        alert->reject();
    }
    window.keepDocument(nullptr);
}

// Why what stands at a path is no document; "" when it may be one.
QString reasonNotToOpen(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        return S_ISDIR(status.st_mode)
                   ? Application::tr("It is a folder: %1").arg(pathToQString(path))
                   : QString();
    }
    const ErrorSlot unseen = platform::failedLook(path);
    return unseen ? toQString(unseen->localizedDescription())
                  : Application::tr("There is no such file: %1").arg(pathToQString(path));
}

// A bundle's document is the project in it.
std::string documentAt(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return path;
    }
    const ProjectFiles found = findProjectFiles({path}, false);
    return found.paths.size() == 1 ? found.paths.front() : path;
}

// Many files at once, where the user wants them in one window.
bool goesToBatch(const std::vector<std::string>& paths) {
    constexpr std::size_t kMostWindows = 3;
    return paths.size() > kMostWindows && PreferencesWindow::opensManyInBatch();
}

}  // namespace

Application::Application() {
    installReadableTexts();
    qApp->installEventFilter(this);
}

Application::~Application() {
    qApp->removeEventFilter(this);
}

void Application::launch(const std::vector<std::string>& paths) {
    controller_ = AppController::init(*this);
    preferences_ = std::make_unique<PreferencesWindow>(
        [this](CheckBoxItem& sender) { controller_->prefsToggleAdminPass(sender); });
    controller_->setPrefsAdminPass(preferences_->prefsAdminPass());
    controller_->awakeFromNib();
    if (isEnding_) {
        // Once more: while an administrator was asked, there was no loop to be ended.
        terminate();
        return;
    }
    QMSoftwareUpdate().awakeFromNib();
    decide(true);
    openDocuments(paths);
    if (paths.empty()) {
        controller_->applicationShouldOpenUntitledFile();
    }
    controller_->applicationDidFinishLaunching();
    showStartWindow();
    isLaunched_ = true;
}

// Settles whether anything is opened here, and tells those who wait to know.
void Application::decide(bool mayOpen) {
    mayOpen_ = mayOpen;
    for (const auto& told : std::exchange(undecided_, {})) {
        told(mayOpen);
    }
}

void Application::whenDecided(std::function<void(bool mayOpen)> told) {
    if (mayOpen_ || isEnding_) {
        told(mayOpen_ && !isEnding_);
    } else {
        undecided_.push_back(std::move(told));
    }
}

void Application::run() {
    if (!isEnding_) {
        isRunning_ = true;
        QApplication::exec();
        isRunning_ = false;
    }
}

bool Application::receive(const std::vector<std::string>& paths, const std::string& activation) {
    if (isEnding_ || !mayOpen_) {
        return false;
    }
    if (!activation.empty()) {
        // The toolkit takes it with the next window that it activates.
        qputenv(kActivationToken, QByteArray::fromStdString(activation));
    }
    if (openPanel_ && !paths.empty()) {
        openPanel_->reject();
    }
    const bool isForBatch = goesToBatch(paths);
    openDocuments(paths);
    if (!isForBatch) {
        bringToFront();
    }
    qunsetenv(kActivationToken);
    return true;
}

void Application::bringToFront() {
    if (openPanel_) {
        openPanel_->raise();
        openPanel_->activateWindow();
    } else if (DocumentMainWindow* const window = currentWindow()) {
        window->makeKeyAndOrderFront();
    } else if (batch_ && batch_->isVisible()) {
        batch_->raise();
        batch_->activateWindow();
    } else if (startWindow_) {
        startWindow_->raise();
        startWindow_->activateWindow();
    }
}

void Application::finish() {
    isEnding_ = true;
    decide(false);
    if (controller_) {
        controller_->applicationWillTerminate();
    }
    for (const WindowPointer& window : std::exchange(windows_, {})) {
        letGo(*window);
    }
    preferences_.reset();
    about_.reset();
    batch_.reset();
    startWindow_.reset();
}

bool Application::hasKeyWindow() const {
    const QWidgetList all = QApplication::topLevelWidgets();
    return std::any_of(all.begin(), all.end(), [](const QWidget* widget) {
        return widget->isVisible() && isWindow(*widget);
    });
}

std::optional<std::vector<std::string>> Application::runOpenPanel(
    const OpenPanelSettings& settings) {
    if (isEnding_) {
        return std::nullopt;
    }
    OpenPanel panel(settings);
    openPanel_ = &panel;
    const bool confirmed = panel.exec() == QDialog::Accepted;
    openPanel_ = nullptr;
    if (!confirmed || isEnding_) {
        return std::nullopt;
    }
    if (goesToBatch(panel.paths())) {
        showBatch(panel.paths());
        return std::nullopt;
    }
    return panel.paths();
}

bool Application::openDocument(const std::string& path) {
    return open(documentAt(path), !PreferencesWindow::onlyChecksOpenedFiles());
}

void Application::forgetRecentFile(const std::string& path) {
    RecentFiles::forget(path);
    if (startWindow_) {
        startWindow_->showRecentFiles();
    }
}

void Application::clearRecentFiles() {
    RecentFiles::clear();
    if (startWindow_) {
        startWindow_->showRecentFiles();
    }
}

void Application::restoreOriginalOf(const std::string& path) {
    if (open(path, false)) {
        if (DocumentMainWindow* const window = windowOf(path)) {
            window->restoreOriginal();
        }
    }
}

bool Application::open(const std::string& path, bool isRepaired) {
    if (DocumentMainWindow* const open = windowOf(path)) {
        open->makeKeyAndOrderFront();
        return true;
    }
    if (const QString reason = reasonNotToOpen(path); !reason.isEmpty()) {
        presentError(tr("The document “%1” could not be opened.").arg(fileNameOf(path)), reason);
        return false;
    }
    const std::shared_ptr<Document> document = Document::create();
    document->setFilePath(path);
    const WindowPointer window(
        new DocumentMainWindow(
            document, {.closed = [this](DocumentMainWindow& closed) { closeDocument(closed); },
                       .showFile = [this](const std::string& file) { showInFileManager(file); },
                       .showTrash = [this] { showTrash(); },
                       .tellOutcome = &RecentFiles::setOutcome}),
        [](DocumentMainWindow* gone) {
            gone->hide();
            gone->deleteLater();
        });
    document->setWindow(window);
    makeMainMenu(*window, *this);
    // The window keeps its document; the document's threads keep it, too.
    window->keepDocument(document);
    windows_.push_back(window);
    window->show();
    leaveStartWindow();
    RecentFiles::add(path);
    if (!isRepaired) {
        window->check();
        return true;
    }
    Error ignored;  // filled although the document opens
    return document->readFromURL(path, "", &ignored);
}

std::shared_ptr<Document> Application::currentDocument() const {
    const DocumentMainWindow* const window = currentWindow();
    return window != nullptr ? window->document() : nullptr;
}

DocumentMainWindow* Application::currentWindow() const {
    return windows_.empty() ? nullptr : windows_.back().get();
}

void Application::showAboutPanel() {
    if (!about_) {
        about_ = std::make_unique<AboutWindow>();
    }
    about_->show();
    about_->raise();
    about_->activateWindow();
}

void Application::terminate() {
    isEnding_ = true;
    decide(false);
    platform::MainThread::shutdown();
    // Not `quit`, which a window that does not close, such as the sheet of a run, would stop.
    const auto endLoops = [this] {
        if (openPanel_) {
            openPanel_->reject();
        }
        if (isRunning_) {
            QApplication::exit();
        }
    };
    QMetaObject::invokeMethod(this, endLoops, Qt::QueuedConnection);
}

void Application::openDocuments(const std::vector<std::string>& paths) {
    if (goesToBatch(paths)) {
        showBatch(paths);
        return;
    }
    for (const std::string& path : paths) {
        controller_->applicationOpenFile(path);
    }
}

void Application::showBatch(const std::vector<std::string>& paths) {
    if (isEnding_) {
        return;
    }
    if (!batch_) {
        batch_ = std::make_unique<BatchWindow>(BatchWindow::Actions{
            .open = [this](const std::string& path) { controller_->applicationOpenFile(path); },
            .showFile = [this](const std::string& path) { showInFileManager(path); },
            .notify =
                [](const QString& title, const QString& text) {
                    notifyDesktop(SettingsPortal::sessionBus(), title, text);
                }});
        makeMainMenu(*batch_, *this);
    }
    batch_->show();
    leaveStartWindow();
    batch_->raise();
    batch_->activateWindow();
    if (!paths.empty()) {
        batch_->add(paths);
    }
}

void Application::askForBundleOrFolder() {
    auto* const panel = new QFileDialog(nullptr, tr("Open Bundle or Folder"));
    panel->setObjectName(QStringLiteral("openFolderPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    FileIcons::useIn(*panel);
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& chosen) { openBundleOrFolder(pathFromQString(chosen)); });
    panel->open();
}

void Application::openBundleOrFolder(const std::string& path) {
    if (const std::string document = documentAt(path); document != path) {
        controller_->applicationOpenFile(document);
    } else {
        showBatch({path});
    }
}

std::vector<QMainWindow*> Application::windows() const {
    std::vector<QMainWindow*> open;
    for (auto window = windows_.rbegin(); window != windows_.rend(); ++window) {
        open.push_back(window->get());
    }
    if (batch_ && batch_->isVisible()) {
        open.push_back(batch_.get());
    }
    return open;
}

void Application::closeAll() {
    for (QMainWindow* const window : windows()) {
        window->close();
    }
}

void Application::leaveStartWindow() {
    if (startWindow_ && startWindow_->isVisible()) {
        returnsToStart_ = true;
        startWindow_->hide();
    }
}

void Application::showPreferences() {
    preferences_->show();
    preferences_->raise();
    preferences_->activateWindow();
}

void Application::showInFileManager(const std::string& path) {
    revealInFileManager(path, this, [this, path] { openInFileManager(parentFolder(path)); });
}

void Application::showTrash() {
    const std::string trash = QMLocalPaths::trashDirectory().value_or("");
    if (!platform::fileExists(trash)) {
        presentError(tr("The Trash is empty."), QString());
        return;
    }
    openInFileManager(trash);
}

void Application::quit() {
    returnsToStart_ = false;
    while (!windows_.empty()) {
        const WindowPointer window = windows_.back();
        window->close();
        // Also when the question about it is on the screen already.
        if (std::find(windows_.begin(), windows_.end(), window) != windows_.end()) {
            return;
        }
    }
    if (batch_ && !batch_->close()) {
        return;
    }
    terminate();
}

DocumentMainWindow* Application::windowOf(const std::string& path) const {
    const auto identity = platform::fileIdentity(path);
    const auto found =
        std::find_if(windows_.begin(), windows_.end(), [&](const WindowPointer& window) {
            return window->path() == path ||
                   (identity && platform::fileIdentity(window->path()) == identity);
        });
    return found != windows_.end() ? found->get() : nullptr;
}

void Application::showStartWindow() {
    if (isEnding_ || !windows().empty()) {
        return;
    }
    returnsToStart_ = false;
    if (!startWindow_) {
        startWindow_ = std::make_unique<StartWindow>(
            [this] { controller_->openFile(); },
            [this](const std::string& path) { openDocuments({path}); });
        makeMainMenu(*startWindow_, *this);
    }
    startWindow_->showRecentFiles();
    // What has to be told comes first.
    startWindow_->setAttribute(Qt::WA_ShowWithoutActivating, hasKeyWindow());
    startWindow_->show();
}

void Application::closeDocument(DocumentMainWindow& window) {
    const auto found =
        std::find_if(windows_.begin(), windows_.end(),
                     [&window](const WindowPointer& each) { return each.get() == &window; });
    if (found == windows_.end()) {
        return;
    }
    const WindowPointer closed = std::move(*found);
    windows_.erase(found);
    letGo(*closed);
}

void Application::endWhenNothingIsOpen() {
    const QWidgetList all = QApplication::topLevelWidgets();
    const bool isOpen = std::any_of(all.begin(), all.end(), [](const QWidget* widget) {
        return widget->isVisible() && widget->isWindow();
    });
    if (!windows_.empty() || openPanel_ || isOpen) {
        return;
    }
    if (returnsToStart_) {
        showStartWindow();
    } else {
        terminate();
    }
}

void Application::presentError(const QString& message, const QString& info) {
    QMLog::appendLog("%@ %@", message.toStdString(), info.toStdString());
    tell(nullptr, message, info);
}

void Application::openInFileManager(const std::string& folder) {
    ErrorSlot error;
    if (!platform::WorkspaceOpener::shared()->openFile(folder, error)) {
        presentError(tr("The folder could not be shown."),
                     error ? toQString(error->localizedDescription()) : QString());
    }
}

}  // namespace vornic
