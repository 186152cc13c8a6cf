#include "desktop/MainMenu.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>
#include <functional>
#include <utility>

#include "desktop/AlertBox.h"
#include "desktop/Application.h"
#include "desktop/QtText.h"
#include "desktop/RecentFiles.h"
#include "desktop/ShortcutsWindow.h"
#include "ui/support/QMSoftwareUpdate.h"

namespace vornic {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("MainMenu", text);
}

// A title without the mark of its letter.
QString plain(QString title) {
    return title.remove(u'&');
}

// Builds the menus of one window.
class MenuBuilder {
  public:
    MenuBuilder(QMainWindow& window, Application& application)
        : window_(window), application_(application) {}

    void build() {
        buildFileMenu();
        buildEditMenu();
        buildViewMenu();
        buildToolsMenu();
        buildTroubleshootingMenu();
        buildWindowMenu();
        buildHelpMenu();
        addMenuKey();
        offerDuringRuns();
    }

  private:
    using Command = std::function<void()>;
    using DocumentCommand = std::function<void(DocumentMainWindow&)>;

    QMenu& begin(const QString& title, const char* id) {
        QMenu* const menu = window_.menuBar()->addMenu(title);
        menu->setObjectName(QString::fromLatin1(id));
        return *menu;
    }

    QAction& add(QMenu& menu, const char* id, const QString& title, const QKeySequence& keys,
                 Command command) {
        QAction* const action = menu.addAction(title);
        action->setObjectName(QString::fromLatin1(id));
        action->setShortcut(keys);
        QObject::connect(action, &QAction::triggered, &window_,
                         [command = std::move(command)] { command(); });
        return *action;
    }

    // A command for the window's own document. Where there is none it says so.
    QAction& addForDocument(QMenu& menu, const char* id, const QString& title,
                            const QKeySequence& keys, DocumentCommand command) {
        auto* const own = dynamic_cast<DocumentMainWindow*>(&window_);
        QAction& action = add(menu, id, title, keys, [own, command = std::move(command), title] {
            if (own != nullptr) {
                command(*own);
            } else {
                tell(nullptr, tr("No file is open"),
                     tr("“%1” works on an open file. Open one first.").arg(plain(title)));
            }
        });
        return action;
    }

    // The same for a command that the batch window has, too.
    void addForBoth(QMenu& menu, const char* id, const QString& title, const QKeySequence& keys,
                    DocumentCommand command, const std::function<void(BatchWindow&)>& ofBatch) {
        if (auto* const batch = dynamic_cast<BatchWindow*>(&window_)) {
            add(menu, id, title, keys, [batch, ofBatch] { ofBatch(*batch); });
        } else {
            addForDocument(menu, id, title, keys, std::move(command));
        }
    }

    void buildFileMenu() {
        AppController& controller = application_.controller();
        QMenu& menu = begin(tr("&File"), "fileMenu");
        add(menu, "fileOpen", tr("&Open…"), QKeySequence::Open,
            [&controller] { controller.openFile(); });
        add(menu, "fileOpenFolder", tr("Open &Bundle or Folder…"), {},
            [application = &application_] { application->askForBundleOrFolder(); });
        buildRecentMenu(menu);
        add(menu, "fileBatch", tr("Batc&h…"), QKeySequence(Qt::CTRL | Qt::Key_B),
            [application = &application_] { application->showBatch(); });
        menu.addSeparator();
        addForDocument(menu, "fileSaveReport", tr("&Save Report…"), QKeySequence::Save,
                       [](DocumentMainWindow& window) { window.saveReport(); });
        addForDocument(menu, "fileSaveFindings", tr("Save F&indings…"), {},
                       [](DocumentMainWindow& window) { window.saveFindings(); });
        addForDocument(menu, "fileSavePicture", tr("Save Pict&ure…"), {},
                       [](DocumentMainWindow& window) { window.savePicture(); });
        addForDocument(menu, "fileSaveCopy", tr("Save Re&paired Copy As…"), {},
                       [](DocumentMainWindow& window) { window.saveMendedCopy(); });
        addForDocument(menu, "fileSaveSalvaged", tr("Save a Sal&vaged Copy…"), {},
                       [](DocumentMainWindow& window) { window.saveSalvagedCopy(); });
        addForDocument(menu, "fileShowInFileManager", tr("Show in &File Manager"), {},
                       [application = &application_](DocumentMainWindow& window) {
                           application->showInFileManager(window.path());
                       });
        add(menu, "fileShowTrash", tr("Show &Trash"), {},
            [application = &application_] { application->showTrash(); });
        menu.addSeparator();
        add(menu, "fileClose", tr("&Close"), QKeySequence::Close,
            [window = &window_] { window->close(); });
        add(menu, "fileQuit", tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q),
            [application = &application_] { application->quit(); })
            .setMenuRole(QAction::QuitRole);
    }

    void buildRecentMenu(QMenu& menu) {
        QMenu* const recent = menu.addMenu(tr("Open &Recent"));
        recent->setObjectName(QStringLiteral("fileOpenRecent"));
        Application* const application = &application_;
        QObject::connect(recent, &QMenu::aboutToShow, &window_, [recent, application] {
            recent->clear();
            // What has gone since is left out the next time.
            RecentFiles::look(*recent, [] {});
            for (const std::string& path : RecentFiles::paths()) {
                QAction& action = addRecent(*recent, path, RecentFiles::about(path));
                QObject::connect(&action, &QAction::triggered, recent,
                                 [application, path] { application->openDocuments({path}); });
            }
            addRestoring(*recent, application);
            addForgetting(*recent, application);
            if (recent->isEmpty()) {
                recent->addAction(tr("No recent files"))->setEnabled(false);
                return;
            }
            recent->addSeparator();
            QObject::connect(recent->addAction(tr("&Clear Menu")), &QAction::triggered, recent,
                             [application] { application->clearRecentFiles(); });
        });
    }

    // @param about what stands behind the name
    static QAction& addRecent(QMenu& menu, const std::string& path, const QString& about) {
        constexpr int kLongest = 60;
        const QFontMetrics metrics = menu.fontMetrics();
        const int room = kLongest * metrics.averageCharWidth();
        QString text = metrics.elidedText(fileNameOf(path), Qt::ElideMiddle, room);
        if (!about.isEmpty()) {
            text += QStringLiteral(" — ") + metrics.elidedText(about, Qt::ElideMiddle, room);
        }
        QAction* const action = menu.addAction(text.replace(u'&', QStringLiteral("&&")));
        action->setToolTip(toolTipOf(path));
        return *action;
    }

    static void addForgetting(QMenu& recent, Application* application) {
        if (recent.isEmpty()) {
            return;
        }
        QMenu* const forgetting = recent.addMenu(tr("&Forget"));
        forgetting->setObjectName(QStringLiteral("fileForgetRecent"));
        for (const std::string& path : RecentFiles::paths()) {
            QObject::connect(&addRecent(*forgetting, path, QString()), &QAction::triggered,
                             forgetting,
                             [application, path] { application->forgetRecentFile(path); });
        }
    }

    // A file's original can be brought back without repairing the file first.
    static void addRestoring(QMenu& recent, Application* application) {
        if (recent.isEmpty()) {
            return;
        }
        QMenu* const restoring = recent.addMenu(tr("Restore &Original Of"));
        restoring->setObjectName(QStringLiteral("fileRestoreRecent"));
        for (const std::string& path : RecentFiles::paths()) {
            QObject::connect(&addRecent(*restoring, path, QString()), &QAction::triggered,
                             restoring,
                             [application, path] { application->restoreOriginalOf(path); });
        }
    }

    void buildEditMenu() {
        QMenu& menu = begin(tr("&Edit"), "editMenu");
        addForBoth(
            menu, "editCopy", tr("&Copy"), QKeySequence::Copy,
            [](DocumentMainWindow& window) { window.copy(); },
            [](BatchWindow& batch) { batch.copy(); });
        addForBoth(
            menu, "editSelectAll", tr("Select &All"), QKeySequence::SelectAll,
            [](DocumentMainWindow& window) { window.selectAll(); },
            [](BatchWindow& batch) { batch.selectAll(); });
        menu.addSeparator();
        addForBoth(
            menu, "editFind", tr("&Find…"), QKeySequence::Find,
            [](DocumentMainWindow& window) { window.findBar().begin(); },
            [](BatchWindow& batch) { batch.beginFilter(); });
        addForDocument(menu, "editFindNext", tr("Find &Next"), QKeySequence::FindNext,
                       [](DocumentMainWindow& window) { window.findBar().findNext(); });
        addForDocument(menu, "editFindPrevious", tr("Find &Previous"), QKeySequence::FindPrevious,
                       [](DocumentMainWindow& window) { window.findBar().findPrevious(); });
        menu.addSeparator();
        add(menu, "editPreferences", tr("Pr&eferences…"), QKeySequence(Qt::CTRL | Qt::Key_Comma),
            [application = &application_] { application->showPreferences(); })
            .setMenuRole(QAction::PreferencesRole);
    }

    void buildViewMenu() {
        using Page = DocumentMainWindow::Page;
        QMenu& menu = begin(tr("&View"), "viewMenu");
        const auto addPage = [&](const char* id, const QString& title, Qt::Key key, Page page) {
            addForDocument(menu, id, title, QKeySequence(Qt::CTRL | key),
                           [page](DocumentMainWindow& window) { window.showPage(page); });
        };
        addPage("viewFindings", tr("&Findings and Report"), Qt::Key_1, Page::findings);
        addPage("viewSource", tr("&Source"), Qt::Key_2, Page::source);
        addPage("viewChanges", tr("&Changes"), Qt::Key_3, Page::changes);
        addPage("viewMedia", tr("&Media"), Qt::Key_4, Page::media);
        addPage("viewTimeline", tr("&Timeline"), Qt::Key_5, Page::timeline);
    }

    void buildToolsMenu() {
        AppController& controller = application_.controller();
        QMenu& menu = begin(tr("&Tools"), "toolsMenu");
        addForDocument(menu, "toolsRepair", tr("&Repair"), QKeySequence(Qt::CTRL | Qt::Key_R),
                       [](DocumentMainWindow& window) {
                           const auto document = window.document();
                           if (document && !document->isRunning()) {
                               document->repair();
                           }
                       });
        const auto isEnabled = [&controller] {
            return controller.validateUserInterfaceItem(AppController::kShowConvertDialogAction);
        };
        QAction& convert =
            addForDocument(menu, "toolsConvert", tr("&Convert XML Interchange Version"),
                           QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C),
                           [&controller, isEnabled](DocumentMainWindow&) {
                               if (isEnabled()) {
                                   controller.showConvertDialog();
                               }
                           });
        QObject::connect(&menu, &QMenu::aboutToShow, &window_,
                         [&convert, isEnabled] { convert.setEnabled(isEnabled()); });
        const bool hasDocument = dynamic_cast<DocumentMainWindow*>(&window_) != nullptr;
        convert.setEnabled(hasDocument);
        addForDocument(menu, "toolsConvertFCPXML", tr("Convert &FCPXML Version…"), {},
                       [](DocumentMainWindow& window) { window.convertFCPXMLVersion(); });
        addForDocument(menu, "toolsSetVersion", tr("Set &Version…"), {},
                       [](DocumentMainWindow& window) { window.setVersion(); });
        menu.addSeparator();
        addForDocument(menu, "toolsCheck", tr("Chec&k"), QKeySequence(Qt::CTRL | Qt::Key_K),
                       [](DocumentMainWindow& window) { window.check(); });
        addForDocument(menu, "toolsMend", tr("&Mend Selected…"), QKeySequence(Qt::CTRL | Qt::Key_M),
                       [](DocumentMainWindow& window) { window.mendTicked(); });
        menu.addSeparator();
        addForDocument(menu, "toolsFindMedia", tr("F&ind Media in Folder…"), {},
                       [](DocumentMainWindow& window) { window.findMediaInFolder(); });
        addForDocument(menu, "toolsChangeMediaFolder", tr("C&hange Media Folder…"), {},
                       [](DocumentMainWindow& window) { window.changeMediaFolder(); });
        menu.addSeparator();
        addForDocument(menu, "toolsRestore", tr("Restore &Original…"), {},
                       [](DocumentMainWindow& window) { window.restoreOriginal(); });
        addForDocument(menu, "toolsCompare", tr("Com&pare with Original"), {},
                       [](DocumentMainWindow& window) { window.compareWithOriginal(); });
        QAction& editor = addForDocument(menu, "toolsOpenInEditor", tr("Open in &Editor"), {},
                                         [](DocumentMainWindow& window) { window.openInEditor(); });
        QObject::connect(
            &menu, &QMenu::aboutToShow, &window_,
            [&editor, own = dynamic_cast<DocumentMainWindow*>(&window_)] {
                if (own != nullptr) {
                    editor.setText(tr("Open in &Editor at Line %1").arg(own->currentLine()));
                }
            });
        // Its shortcut asks again, whatever was shown last.
        QObject::connect(&menu, &QMenu::aboutToHide, &window_,
                         [&convert, hasDocument] { convert.setEnabled(hasDocument); });
    }

    void buildTroubleshootingMenu() {
        AppController& controller = application_.controller();
        QMenu& menu = begin(tr("Trou&bleshooting"), "troubleshootingMenu");
        add(menu, "troubleshootingViewLog", tr("View &Log"), {},
            [&controller] { controller.viewLog(); });
        add(menu, "troubleshootingViewTaskLog", tr("View &Task Log"), {},
            [&controller] { controller.viewTaskLog(); });
        add(menu, "troubleshootingGatherLogs", tr("&Gather Logs…"), {},
            [&controller] { controller.gatherLogs(); });
    }

    // The windows that are open, that of the menu marked.
    void buildWindowMenu() {
        QMenu& menu = begin(tr("&Window"), "windowMenu");
        Application* const application = &application_;
        add(menu, "windowCloseAll", tr("Close &All"), {},
            [application] { application->closeAll(); });
        QAction* const separator = menu.addSeparator();
        QObject::connect(&menu, &QMenu::aboutToShow, &window_,
                         [this_ = &window_, &menu, separator, application] {
                             const QList<QAction*> actions = menu.actions();
                             for (qsizetype at = actions.indexOf(separator) + 1;
                                  at < actions.size(); ++at) {
                                 delete actions[at];
                             }
                             for (QMainWindow* const window : application->windows()) {
                                 addWindow(menu, *window, window == this_);
                             }
                         });
    }

    static void addWindow(QMenu& menu, QMainWindow& window, bool isOwn) {
        constexpr int kLongest = 60;
        const QString title = menu.fontMetrics().elidedText(
            window.windowTitle().replace(QLatin1String("[*][*]"), QLatin1String("[*]")),
            Qt::ElideMiddle, kLongest * menu.fontMetrics().averageCharWidth());
        QAction* const action = menu.addAction(QString(title).replace(u'&', QStringLiteral("&&")));
        action->setCheckable(true);
        action->setChecked(isOwn);
        QObject::connect(action, &QAction::triggered, &window, [&window] {
            if (window.isMinimized()) {
                window.showNormal();
            }
            window.raise();
            window.activateWindow();
        });
    }

    // F10 goes to the menus, as elsewhere on the desktop.
    void addMenuKey() {
        auto* const key = new QShortcut(QKeySequence(Qt::Key_F10), &window_);
        QObject::connect(key, &QShortcut::activated, &window_, [bar = window_.menuBar()] {
            bar->setFocus(Qt::MenuBarFocusReason);
            bar->setActiveAction(bar->actions().constFirst());
        });
    }

    void buildHelpMenu() {
        AppController& controller = application_.controller();
        QMenu& menu = begin(tr("&Help"), "helpMenu");
        add(menu, "helpUserManual", tr("User &Manual"), QKeySequence::HelpContents,
            [&controller] { controller.helpUserManual(); });
        add(menu, "helpShortcuts", tr("&Keyboard Shortcuts"), {},
            [window = &window_] { (new ShortcutsWindow(*window))->show(); });
        add(menu, "helpSuiteHome", tr("&Brindle Tools on the Web"), {},
            [&controller] { controller.helpSuiteHome(); });
        add(menu, "helpSupport", tr("&Support"), {}, [&controller] { controller.helpSupport(); });
        add(menu, "helpQMHome", tr("&Quillmark on the Web"), {},
            [&controller] { controller.helpQMHome(); });
        menu.addSeparator();
        add(menu, "helpReportBug", tr("&Report a Bug"), {},
            [&controller] { controller.helpReportBug(); });
        add(menu, "helpSuggestFeature", tr("Suggest a &Feature"), {},
            [&controller] { controller.helpSuggestFeature(); });
        menu.addSeparator();
        add(menu, "helpCheckForUpdates", tr("Check for &Updates…"), {},
            [] { QMSoftwareUpdate().manualUpdateCheck(); });
        add(menu, "helpAbout", tr("&About Vornic"), {}, [&controller] {
            controller.showAboutDialog();
        }).setMenuRole(QAction::AboutRole);
    }

    // The sheet of a run, which holds up its window, knows the keys of these commands, too.
    void offerDuringRuns() {
        if (auto* const sheet = window_.findChild<QDialog*>(QStringLiteral("windowProgress"))) {
            for (const char* const id : {"fileOpen", "fileClose", "fileQuit"}) {
                sheet->addAction(window_.findChild<QAction*>(QString::fromLatin1(id)));
            }
        }
    }

    QMainWindow& window_;
    Application& application_;
};

}  // namespace

void makeMainMenu(QMainWindow& window, Application& application) {
    MenuBuilder(window, application).build();
}

}  // namespace vornic
