#include "tests/desktop/ApplicationTest.h"

#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "desktop/Application.h"
#include "desktop/FileIcons.h"
#include "foundation/log/QMLog.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "platform/settings/UserPreferences.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

// The application with real documents.

namespace vornic::test {
namespace {

TEST_F(ApplicationTest, offersToOpenSomethingWhenNothingIsOpen) {
    application.launch({});
    ASSERT_NE(visible<StartWindow>(), nullptr);
    EXPECT_EQ(visible<QFileDialog>(), nullptr);
    EXPECT_TRUE(application.hasKeyWindow());
    EXPECT_EQ(application.currentDocument(), nullptr);
}

TEST_F(ApplicationTest, showsTheOpenPanelAndGoesOnWhenItIsCancelled) {
    showOpenPanelAtStart(true);
    platform::MainThread::performAfter(std::chrono::milliseconds(100), [this] {
        QFileDialog* const panel = visible<QFileDialog>();
        ASSERT_NE(panel, nullptr);
        EXPECT_TRUE(application.hasKeyWindow());
        EXPECT_EQ(panel->windowTitle(),
                  QStringLiteral("Browse for a Final Cut Pro 7 or X XML file"));
        EXPECT_EQ(panel->fileMode(), QFileDialog::ExistingFiles);
        EXPECT_NE(dynamic_cast<FileIcons*>(panel->iconProvider()), nullptr);
        panel->reject();
    });
    application.launch({});
    EXPECT_NE(visible<StartWindow>(), nullptr);
}

TEST_F(ApplicationTest, offersFoldersAndTheFilesThatMayBeOpened) {
    const std::string folder = sandbox.path("offered");
    std::filesystem::create_directories(folder + "/folder");
    for (const char* const name : {"a.xml", "b.FCPXML", "c.txt", "d"}) {
        sandbox.write(std::string("offered/") + name, "");
    }
    platform::MainThread::performAfter(std::chrono::milliseconds(100), [&folder] {
        QFileDialog* const panel = visible<QFileDialog>();
        ASSERT_NE(panel, nullptr);
        EXPECT_TRUE(panel->testOption(QFileDialog::ReadOnly)) << "no folder may be made";
        panel->setDirectory(QString::fromStdString(folder));
        auto* const list = panel->findChild<QListView*>(QStringLiteral("listView"));
        QStringList names;
        EXPECT_TRUE(waitUntil([list, &names] {
            names.clear();
            for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row) {
                names << list->model()->index(row, 0, list->rootIndex()).data().toString();
            }
            names.sort();
            return names.size() == 3;
        })) << names.join(u' ').toStdString();
        EXPECT_EQ(names, (QStringList{QStringLiteral("a.xml"), QStringLiteral("b.FCPXML"),
                                      QStringLiteral("folder")}));
        auto* const name = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        name->setText(QStringLiteral("c.txt"));
        QTest::keyClick(name, Qt::Key_Return);
        EXPECT_TRUE(panel->isVisible()) << "a file that is not offered was taken";
        auto* const refusal = visible<QMessageBox>();
        ASSERT_NE(refusal, nullptr);
        EXPECT_EQ(refusal->parentWidget(), panel);
        EXPECT_TRUE(refusal->text().contains(QStringLiteral("c.txt")));
        QTest::keyClick(refusal, Qt::Key_Return);
        EXPECT_EQ(visible<QMessageBox>(), nullptr);
        name->setText(QStringLiteral("b.FCPXML"));
        QTest::keyClick(name, Qt::Key_Return);
        if (panel->isVisible()) {
            ADD_FAILURE() << "the panel is still there";
            panel->reject();
        }
    });
    using Kind = AllowedFileType::Kind;
    const auto chosen = application.runOpenPanel(
        {.message = "Choose",
         .allowedFileTypes = {{Kind::extension, "xml"}, {Kind::extension, "fcpxml"}}});
    EXPECT_EQ(chosen, std::vector<std::string>{folder + "/b.FCPXML"});
}

TEST_F(ApplicationTest, opensTheFilesThatItIsStartedWith) {
    const std::string first = sandbox.write("a.xml", kSound);
    const std::string second = sandbox.write("b.fcpxml", "<fcpxml/>");
    application.launch({first, second});
    EXPECT_EQ(visible<StartWindow>(), nullptr);
    EXPECT_TRUE(application.hasKeyWindow());
    ASSERT_NE(application.currentDocument(), nullptr);
    EXPECT_EQ(application.currentDocument()->filePath(), second);
}

TEST_F(ApplicationTest, opensAFileOnce) {
    application.launch({});
    const std::string path = sandbox.write("a.xml", kSound);
    DocumentMainWindow* const window = opened(path);
    EXPECT_TRUE(application.openDocument(sandbox.path("./a.xml")));
    EXPECT_EQ(application.currentWindow(), window);
}

TEST_F(ApplicationTest, reportsThatAFileCannotBeOpened) {
    application.launch({});
    EXPECT_FALSE(application.openDocument(sandbox.path("gone.xml")));
    ASSERT_NE(visible<QMessageBox>(), nullptr);
    EXPECT_TRUE(visible<QMessageBox>()->text().contains(QStringLiteral("gone.xml")));
    visible<QMessageBox>()->close();
    EXPECT_FALSE(application.openDocument(sandbox.folder()));
    ASSERT_NE(visible<QMessageBox>(), nullptr);
    visible<QMessageBox>()->close();
    EXPECT_EQ(application.currentWindow(), nullptr);
}

TEST_F(ApplicationTest, reportsWhyItCannotSeeWhetherAFileIsThere) {
    application.launch({});
    std::filesystem::create_symlink("loop.xml", sandbox.path("loop.xml"));
    EXPECT_FALSE(application.openDocument(sandbox.path("loop.xml")));
    ASSERT_NE(visible<QMessageBox>(), nullptr);
    EXPECT_TRUE(visible<QMessageBox>()->informativeText().contains(
        QStringLiteral("too many symbolic links")));
    visible<QMessageBox>()->close();
}

TEST_F(ApplicationTest, givesEveryCommandAnIdOfItsOwn) {
    application.launch({});
    DocumentMainWindow* const window = opened(sandbox.write("a.xml", kSound));
    std::set<QString> ids;
    for (const QAction* const menu : window->menuBar()->actions()) {
        for (const QAction* const item : menu->menu()->actions()) {
            if (!item->isSeparator() && item->menu() == nullptr) {
                EXPECT_FALSE(item->objectName().isEmpty()) << item->text().toStdString();
                EXPECT_TRUE(ids.insert(item->objectName()).second);
            }
        }
    }
    for (const char* const id :
         {"fileOpen", "toolsRepair", "toolsConvert", "troubleshootingViewLog",
          "troubleshootingViewTaskLog", "troubleshootingGatherLogs", "helpUserManual",
          "helpSuiteHome", "helpReportBug", "helpSuggestFeature", "helpSupport", "helpQMHome",
          "helpAbout", "editPreferences"}) {
        EXPECT_EQ(ids.count(QString::fromLatin1(id)), 1U) << id;
    }
}

TEST_F(ApplicationTest, offersAShortcutKeyForEveryCommand) {
    application.launch({});
    std::multiset<std::string> ofMenus;
    const QWidget* const window = visible<StartWindow>();
    ASSERT_NE(window, nullptr);
    for (const QAction* const menu :
         dynamic_cast<const QMainWindow*>(window)->menuBar()->actions()) {
        for (const QAction* const item : menu->menu()->actions()) {
            if (!item->isSeparator() && item->menu() == nullptr) {
                ofMenus.insert(item->objectName().toStdString());
            }
        }
    }
    ErrorSlot error;
    const auto path = platform::Bundle::mainBundle().pathForResource("QMKeys", "plist");
    const auto list = platform::PropertyList::readFile(path.value_or(""), error);
    ASSERT_TRUE(list);
    std::multiset<std::string> ofList;
    for (const platform::PropertyList& command : *list->find("QMKeys")->array()) {
        ofList.insert(*command.find("id")->string());
        EXPECT_FALSE(command.find("description")->string()->empty());
    }
    EXPECT_EQ(ofMenus, ofList);
}

TEST_F(ApplicationTest, convertsOnlyFilesOfFinalCutPro7) {
    application.launch({});
    DocumentMainWindow* window = opened(sandbox.write("a.xml", kSound));
    action(*window, "toolsConvert")->trigger();
    EXPECT_TRUE(window->hasAttachedSheet());
    window->document()->closeConvertDialog();
    window = opened(sandbox.write("b.fcpxml", "<fcpxml/>"));
    action(*window, "toolsConvert")->trigger();
    EXPECT_FALSE(window->hasAttachedSheet());
}

TEST_F(ApplicationTest, opensWhatIsDroppedOnAWindow) {
    application.launch({});
    const std::string path = sandbox.write("a b.xml", kSound);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(visible<StartWindow>(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(visible<StartWindow>(), &drop);
    EXPECT_TRUE(drop.isAccepted());
    ASSERT_TRUE(waitUntil([this] { return application.currentWindow() != nullptr; }));
    EXPECT_EQ(application.currentDocument()->filePath(), path);
    EXPECT_EQ(visible<StartWindow>(), nullptr);
}

TEST_F(ApplicationTest, opensTheFilesOfALaterStart) {
    application.launch({});
    const std::string path = sandbox.write("a.xml", kSound);
    application.receive({path}, "");
    ASSERT_NE(application.currentDocument(), nullptr);
    EXPECT_EQ(application.currentDocument()->filePath(), path);
}

TEST_F(ApplicationTest, opensTheFilesOfALaterStartInsteadOfWhatThePanelAsksFor) {
    showOpenPanelAtStart(true);
    const std::string path = sandbox.write("a.xml", kSound);
    platform::MainThread::performAfter(std::chrono::milliseconds(100), [this, path] {
        application.receive({}, "");
        EXPECT_NE(visible<QFileDialog>(), nullptr);
        application.receive({path}, "");
    });
    application.launch({});
    EXPECT_EQ(visible<QFileDialog>(), nullptr);
    EXPECT_EQ(visible<StartWindow>(), nullptr);
    ASSERT_NE(application.currentDocument(), nullptr);
    EXPECT_EQ(application.currentDocument()->filePath(), path);
}

TEST_F(ApplicationTest, reportsThatItMayOpenFilesOnceItIsLaunched) {
    const std::string path = sandbox.write("a.xml", kSound);
    std::optional<bool> told;
    application.whenDecided([&told](bool mayOpen) { told = mayOpen; });
    EXPECT_EQ(told, std::nullopt);
    EXPECT_FALSE(application.receive({path}, ""));
    application.launch({});
    EXPECT_EQ(told, true);
    EXPECT_TRUE(application.receive({path}, ""));
    EXPECT_EQ(application.currentDocument()->filePath(), path);
}

TEST_F(ApplicationTest, takesNoFilesOnceItEnds) {
    std::optional<bool> told;
    application.whenDecided([&told](bool mayOpen) { told = mayOpen; });
    application.terminate();
    EXPECT_EQ(told, false);
    platform::MainThread::restart();
    application.launch({});
    application.terminate();
    application.whenDecided([&told](bool mayOpen) { told = mayOpen; });
    EXPECT_EQ(told, false);
    EXPECT_FALSE(application.receive({sandbox.write("a.xml", kSound)}, ""));
    EXPECT_EQ(application.currentWindow(), nullptr);
}

TEST_F(ApplicationTest, showsNoOpenPanelOnceItEnds) {
    showOpenPanelAtStart(true);
    application.launch({sandbox.write("a.xml", kSound)});
    // The check a second after the launch comes when all windows have gone.
    application.finish();
    EXPECT_FALSE(waitUntil([] { return visible<QFileDialog>() != nullptr; },
                           std::chrono::milliseconds(1500)));
    EXPECT_EQ(application.runOpenPanel({}), std::nullopt);
}

TEST_F(ApplicationTest, copiesWhatIsDroppedWhateverKeysAreHeld) {
    application.launch({});
    const std::string path = sandbox.write("a.xml", kSound);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                          Qt::ShiftModifier);
    EXPECT_EQ(enter.proposedAction(), Qt::MoveAction);
    QApplication::sendEvent(visible<StartWindow>(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_EQ(enter.dropAction(), Qt::CopyAction);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                    Qt::ShiftModifier);
    QApplication::sendEvent(visible<StartWindow>(), &drop);
    EXPECT_TRUE(drop.isAccepted());
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    EXPECT_TRUE(waitUntil([this] { return application.currentWindow() != nullptr; }));
}

TEST_F(ApplicationTest, takesNothingThatCanOnlyBeMoved) {
    application.launch({});
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(sandbox.write("a.xml", kSound)))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(visible<StartWindow>(), &enter);
    EXPECT_FALSE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(visible<StartWindow>(), &drop);
    EXPECT_FALSE(drop.isAccepted());
    settle();
    EXPECT_EQ(application.currentWindow(), nullptr);
}

TEST_F(ApplicationTest, takesTheQuestionAboutARunAwayWhenTheRunHasEnded) {
    application.launch({});
    DocumentMainWindow* const window = opened(sandbox.write("a.xml", kSound));
    window->document()->startProgress();
    platform::MainThread::performAfter(std::chrono::milliseconds(50), [window] {
        EXPECT_NE(visible<QMessageBox>(), nullptr);
        window->document()->endProgress();
    });
    EXPECT_FALSE(window->close());
    EXPECT_EQ(visible<QMessageBox>(), nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(window->hasAttachedSheet());
    EXPECT_TRUE(window->close());
}

class LastWindowTest : public ApplicationTest {
  protected:
    // Whether the application ends within a moment.
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
};

TEST_F(LastWindowTest, endsWithAPanelThatWasLeftOpen) {
    const std::string path = sandbox.write("a.xml", kSound);
    application.launch({path});
    DocumentMainWindow* const window = opened(path);
    application.showPreferences();
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(ends());
    visible<PreferencesWindow>()->reject();
    EXPECT_TRUE(ends());
}

TEST_F(LastWindowTest, endsWithTheStartWindow) {
    application.launch({});
    EXPECT_FALSE(ends());
    visible<StartWindow>()->close();
    EXPECT_TRUE(ends());
}

TEST_F(ApplicationTest, takesDropsOnEveryWindow) {
    application.launch({});
    application.showPreferences();
    application.showAboutPanel();
    EXPECT_TRUE(visible<PreferencesWindow>()->acceptDrops());
    EXPECT_TRUE(visible<AboutWindow>()->acceptDrops());
    EXPECT_TRUE(opened(sandbox.write("a.xml", kSound))->acceptDrops());
}

TEST_F(ApplicationTest, asksOnlyOnceWhetherARunIsToBeEnded) {
    application.launch({});
    DocumentMainWindow* const window = opened(sandbox.write("a.xml", kSound));
    window->document()->startProgress();
    int questions = 0;
    platform::MainThread::performAfter(std::chrono::milliseconds(100), [&] {
        window->close();
        for (const QWidget* const widget : QApplication::topLevelWidgets()) {
            questions += widget->isVisible() && qobject_cast<const QMessageBox*>(widget) ? 1 : 0;
        }
        QTest::keyClick(visible<QMessageBox>(), Qt::Key_Escape);
    });
    EXPECT_FALSE(window->close());
    EXPECT_EQ(questions, 1);
    window->document()->endProgress();
}

TEST_F(ApplicationTest, knowsTheWindowInFront) {
    application.launch({});
    DocumentMainWindow* const first = opened(sandbox.write("a.xml", kSound));
    DocumentMainWindow* const second = opened(sandbox.write("b.xml", kSound));
    EXPECT_EQ(application.currentWindow(), second);
    QEvent activation(QEvent::WindowActivate);
    QApplication::sendEvent(first, &activation);
    EXPECT_EQ(application.currentWindow(), first);
}

TEST_F(ApplicationTest, forgetsAClosedDocument) {
    application.launch({});
    DocumentMainWindow* const window = opened(sandbox.write("a.xml", kSound));
    const std::weak_ptr<Document> document = window->document();
    EXPECT_TRUE(window->close());
    EXPECT_EQ(application.currentWindow(), nullptr);
    EXPECT_TRUE(waitUntil([&document] { return document.expired(); }));
}

TEST_F(ApplicationTest, survivesTheClosingOfADocumentThatIsBeingRepaired) {
    application.launch({});
    std::string large =
        "<?xml version=\"1.0\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\"><sequence>";
    for (int clip = 0; clip < 200000; ++clip) {
        large += "<name>Cut</name>";
    }
    const std::string path = sandbox.write("a.xml", large + "</sequence></xmeml>");
    EXPECT_TRUE(application.openDocument(path));
    const std::weak_ptr<Document> document = application.currentDocument();
    application.finish();
    EXPECT_TRUE(waitUntil([&document] { return document.expired(); }));
    EXPECT_EQ(readBytes(path).size(), large.size() + 19);
    EXPECT_FALSE(exists(sandbox.path("a-backup.xml")));
}

TEST_F(ApplicationTest, storesPreferencesAtOnce) {
    application.launch({});
    application.showPreferences();
    auto* const window = visible<PreferencesWindow>();
    ASSERT_NE(window, nullptr);
    auto* const box = window->findChild<QCheckBox*>(QStringLiteral("prefsShowOpenPanel"));
    ASSERT_NE(box, nullptr);
    EXPECT_FALSE(box->isChecked());
    box->click();
    const auto stored = platform::UserPreferences().value(AppController::kShowOpenDialogPreference);
    EXPECT_EQ(stored, platform::PropertyList(1));
}

TEST_F(ApplicationTest, reportsThatAPreferenceCannotBeStored) {
    application.launch({});
    application.showPreferences();
    auto* const window = visible<PreferencesWindow>();
    auto* const box = window->findChild<QCheckBox*>(QStringLiteral("prefsShowOpenPanel"));
    const std::string folder = sandbox.home() + "/.local/share/quillmark/Preferences";
    ASSERT_TRUE(exists(folder));
    std::filesystem::remove_all(folder);
    std::ofstream(folder) << "in the way";
    box->click();
    auto* const alert = visible<QMessageBox>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text(), QStringLiteral("The preference could not be saved."));
    EXPECT_FALSE(alert->informativeText().isEmpty());
    EXPECT_EQ(alert->parentWidget(), window);
    alert->reject();
}

TEST_F(ApplicationTest, answersTheAlertsOfAClosedWindow) {
    application.launch({});
    DocumentMainWindow* const window = opened(sandbox.write("a.xml", kSound));
    std::optional<std::int64_t> answer;
    std::thread asking([&answer, shown = window->document()->windowMain()] {
        answer = QMAlert::alertSheetWithMessageText("Go on?", "Yes", "No", std::nullopt, "", shown,
                                                    true);
        platform::MainThread::perform([] {});
    });
    EXPECT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    window->close();
    EXPECT_TRUE(waitUntil([&answer] { return answer.has_value(); }));
    asking.join();
    EXPECT_EQ(answer, 0);
}

TEST_F(ApplicationTest, showsTheAboutPanel) {
    application.launch({});
    application.controller().showAboutDialog();
    auto* const about = visible<AboutWindow>();
    ASSERT_NE(about, nullptr);
    EXPECT_EQ(about->windowTitle(), QStringLiteral("About Vornic"));
    EXPECT_EQ(about->findChild<QLabel*>(QStringLiteral("appNameLabel"))->text(),
              QStringLiteral("Vornic"));
    EXPECT_TRUE(about->findChild<QLabel*>(QStringLiteral("verLabel"))
                    ->text()
                    .contains(QStringLiteral(")\n\nBrindle Tools ")));
    EXPECT_FALSE(
        about->findChild<QTextEdit*>(QStringLiteral("creditsTextView"))->toPlainText().isEmpty());
}

}  // namespace
}  // namespace vornic::test
