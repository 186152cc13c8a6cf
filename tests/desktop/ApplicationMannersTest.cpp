#include <QFileDialog>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTreeWidget>
#include <QUrl>
#include <filesystem>

#include "desktop/DropArea.h"
#include "desktop/RecentFiles.h"
#include "desktop/ShortcutsWindow.h"
#include "tests/desktop/ApplicationTest.h"

// What a desktop's programs have in common: windows, keys, recent files, drops.

namespace vornic::test {
namespace {

namespace fs = std::filesystem;

class ApplicationMannersTest : public ApplicationTest {
  protected:
    ApplicationMannersTest() { application.launch({}); }
    // No alert that nobody has answered keeps the application of another test open.
    ~ApplicationMannersTest() override {
        application.finish();
        settle();
        while (auto* const alert = visible<QMessageBox>()) {
            alert->reject();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // What is on the screen, for the text of a failure.
    static std::string onScreen() {
        QStringList names;
        for (const QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible()) {
                names += QString::fromLatin1(widget->metaObject()->className()) + u' ' +
                         widget->objectName() + u' ' + widget->windowTitle();
            }
        }
        return names.join(u'\n').toStdString();
    }
    // The titles of a menu as it comes up.
    static QStringList entries(const QWidget& window, const char* id) {
        auto* const menu = window.findChild<QMenu*>(QString::fromLatin1(id));
        EXPECT_NE(menu, nullptr) << id;
        Q_EMIT menu->aboutToShow();
        QStringList titles;
        for (const QAction* const action : menu->actions()) {
            titles += action->text();
        }
        return titles;
    }
    [[nodiscard]] bool waitForRows(int count) const {
        return waitUntil([&] {
            const BatchWindow* const batch = application.batchWindow();
            return batch != nullptr && application.batchWindow()->model().rowCount() == count;
        });
    }
    std::vector<std::string> fourFiles() {
        std::vector<std::string> paths;
        for (const char* const name : {"a.xml", "b.xml", "c.xml", "d.xml"}) {
            paths.push_back(sandbox.write(name, kSound));
        }
        return paths;
    }
    static void openManyInBatch() {
        ErrorSlot error;
        EXPECT_TRUE(platform::UserPreferences().setValue("openManyFilesInBatch", 1, error));
    }
};

TEST_F(ApplicationMannersTest, sendsMoreThanThreeFilesToTheBatchWhereThatIsPreferred) {
    openManyInBatch();
    application.openDocuments(fourFiles());
    EXPECT_TRUE(waitForRows(4));
    EXPECT_EQ(application.currentWindow(), nullptr);
    application.openDocuments(
        {sandbox.path("a.xml"), sandbox.path("b.xml"), sandbox.path("c.xml")});
    EXPECT_NE(application.currentWindow(), nullptr) << "three have windows of their own";
}

TEST_F(ApplicationMannersTest, bringsTheBatchToTheFrontThatHasTakenWhatWasHandedOver) {
    openManyInBatch();
    opened(sandbox.write("open.xml", kSound));
    ASSERT_TRUE(application.receive(fourFiles(), ""));
    EXPECT_TRUE(waitForRows(4));
    EXPECT_TRUE(waitUntil([&] { return application.batchWindow()->isActiveWindow(); }));
}

TEST_F(ApplicationMannersTest, opensEachOfManyFilesWhereNothingIsPreferred) {
    application.openDocuments(fourFiles());
    EXPECT_EQ(application.windows().size(), 4U);
    EXPECT_EQ(application.batchWindow(), nullptr);
}

TEST_F(ApplicationMannersTest, takesADropOnTheBatchWindowForTheBatch) {
    application.showBatch();
    EXPECT_EQ(visible<StartWindow>(), nullptr);
    sandbox.write("a.xml", kSound);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(sandbox.path("")))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(application.batchWindow(), &enter);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(application.batchWindow(), &drop);
    EXPECT_TRUE(waitForRows(1));
    EXPECT_EQ(application.currentWindow(), nullptr);
}

TEST_F(ApplicationMannersTest, opensABundlesProjectAndPutsAFolderInTheBatch) {
    fs::create_directories(sandbox.path("Cut.fcpxmld"));
    sandbox.write("Cut.fcpxmld/Info.fcpxml", kFCPXML);
    application.openBundleOrFolder(sandbox.path("Cut.fcpxmld"));
    ASSERT_NE(application.currentWindow(), nullptr);
    EXPECT_EQ(application.currentWindow()->path(), sandbox.path("Cut.fcpxmld/Info.fcpxml"));
    application.openBundleOrFolder(sandbox.path(""));
    EXPECT_TRUE(waitForRows(1));
    action(*application.batchWindow(), "fileOpenFolder")->trigger();
    auto* const panel = visible<QFileDialog>();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->fileMode(), QFileDialog::Directory);
    panel->reject();
}

TEST_F(ApplicationMannersTest, listsItsWindowsAndClosesThemAll) {
    opened(sandbox.write("a.xml", kSound));
    DocumentMainWindow* const window = opened(sandbox.write("b.xml", kSound));
    application.showBatch();
    const QStringList titles = entries(*window, "windowMenu");
    EXPECT_EQ(titles.size(), 5) << titles.join(u'|').toStdString();
    EXPECT_TRUE(titles.contains(QStringLiteral("a.xml — Vornic")));
    EXPECT_TRUE(titles.contains(QStringLiteral("Batch — Vornic")));
    EXPECT_EQ(entries(*window, "windowMenu").size(), 5) << "made anew each time";
    action(*window, "windowCloseAll")->trigger();
    EXPECT_TRUE(application.windows().empty());
    EXPECT_TRUE(waitUntil([] { return visible<StartWindow>() != nullptr; }))
        << "it comes back when the last window that it opened is closed\n"
        << onScreen();
}

TEST_F(ApplicationMannersTest, listsEachKeyOfItsMenus) {
    action(*visible<StartWindow>(), "helpShortcuts")->trigger();
    auto* const shown = visible<ShortcutsWindow>();
    ASSERT_NE(shown, nullptr);
    const auto* const list = shown->findChild<QTreeWidget*>();
    for (const char* const key :
         {"Ctrl+B", "Ctrl+O", "Ctrl+F", "F10", "Shift+F10", "Ctrl++, Ctrl+-", "Backspace"}) {
        EXPECT_EQ(
            list->findItems(QString::fromLatin1(key), Qt::MatchExactly | Qt::MatchRecursive, 1)
                .size(),
            1)
            << key;
    }
}

TEST_F(ApplicationMannersTest, goesToTheMenusByF10) {
    auto* const window = visible<StartWindow>();
    window->activateWindow();
    ASSERT_TRUE(waitUntil([&] { return window->isActiveWindow(); }));
    EXPECT_EQ(window->menuBar()->activeAction(), nullptr);
    QTest::keyClick(window, Qt::Key_F10);
    ASSERT_NE(window->menuBar()->activeAction(), nullptr);
    EXPECT_EQ(window->menuBar()->activeAction()->menu()->objectName(), QStringLiteral("fileMenu"));
}

TEST_F(ApplicationMannersTest, remembersFolderAndOutcomeOfRecentFilesAndForgetsThem) {
    const std::string path = sandbox.write("a.xml", kSound);
    DocumentMainWindow* const window = opened(path);
    ASSERT_TRUE(waitUntil([&] {
        return RecentFiles::about(path).endsWith(QStringLiteral("Sound, with 1 warning"));
    })) << RecentFiles::about(path).toStdString();
    EXPECT_TRUE(RecentFiles::about(path).startsWith(
        QString::fromStdString(fs::path(path).parent_path().string())));
    window->close();
    ASSERT_TRUE(waitUntil([] { return visible<StartWindow>() != nullptr; }));
    auto* const list = visible<StartWindow>()->findChild<QListWidget*>();
    ASSERT_EQ(list->count(), 1);
    EXPECT_TRUE(list->item(0)->text().contains(QStringLiteral("Sound, with 1 warning")));
    EXPECT_TRUE(entries(*visible<StartWindow>(), "fileOpenRecent")
                    .first()
                    .contains(QStringLiteral("Sound")));
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(list->count(), 0);
    EXPECT_TRUE(RecentFiles::paths().empty());
    EXPECT_TRUE(exists(path));
}

TEST_F(ApplicationMannersTest, forgetsRecentFilesFromTheMenuOfTheStartWindow) {
    for (const char* const name : {"a.xml", "b.xml", "c.xml"}) {
        RecentFiles::add(sandbox.write(name, kSound));
    }
    auto* const window = visible<StartWindow>();
    window->showRecentFiles();
    auto* const list = window->findChild<QListWidget*>();
    ASSERT_EQ(list->count(), 3);
    entries(*window, "fileOpenRecent");
    const QList<QAction*> files =
        window->findChild<QMenu*>(QStringLiteral("fileForgetRecent"))->actions();
    ASSERT_EQ(files.size(), 3);
    files.first()->trigger();
    ASSERT_EQ(list->count(), 2);
    EXPECT_TRUE(list->item(0)->text().startsWith(QStringLiteral("b.xml")));
    entries(*window, "fileOpenRecent");
    window->findChild<QMenu*>(QStringLiteral("fileOpenRecent"))->actions().last()->trigger();
    EXPECT_EQ(list->count(), 0);
}

TEST_F(ApplicationMannersTest, showsMenusOfRowsByShiftAndF10) {
    RecentFiles::add(sandbox.write("a.xml", kSound));
    visible<StartWindow>()->showRecentFiles();
    auto* const list = visible<StartWindow>()->findChild<QListWidget*>();
    list->setFocus();
    QTest::keyClick(list, Qt::Key_F10, Qt::ShiftModifier);
    auto* const menu = visible<StartWindow>()->findChild<QMenu*>(QStringLiteral("recentFileMenu"));
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->isVisible());
    menu->close();
}

TEST_F(ApplicationMannersTest, showsMenusOnEveryPageOfADocument) {
    std::string faulty = kSound;
    faulty.insert(faulty.find("<sequence>"), "&");
    DocumentMainWindow* const window = opened(sandbox.write("a.xml", faulty));
    ASSERT_TRUE(waitUntil([&] { return window->findings().model().rowCount() > 0; }));
    using Page = DocumentMainWindow::Page;
    const auto commandsOf = [&](Page page, QWidget& widget, const char* name) {
        window->showPage(page);
        widget.setFocus();
        QTest::keyClick(&widget, Qt::Key_F10, Qt::ShiftModifier);
        auto* const menu = widget.findChild<QMenu*>(QString::fromLatin1(name));
        QStringList commands;
        for (const QAction* const action : menu != nullptr ? menu->actions() : QList<QAction*>()) {
            commands += action->text().remove(u'&');
        }
        delete menu;
        return commands.join(u'|').toStdString();
    };
    EXPECT_EQ(commandsOf(Page::findings, window->findings().tree(), "findingMenu"),
              "Show Place|Mend Selected…|Copy");
    EXPECT_EQ(commandsOf(Page::source, window->source(), "sourceMenu"), "Copy|Select All");
    EXPECT_EQ(commandsOf(Page::timeline, window->timeline().area(), "clipMenu"),
              "Open Clip|Show Finding|Show in Source|Copy");
    auto* const media = window->findChild<QTreeView*>(QStringLiteral("mediaTable"));
    ASSERT_NE(media, nullptr);
    EXPECT_EQ(commandsOf(Page::media, *media, "mediumMenu"),
              "Show in Source|Show in File Manager|Copy");
    window->findings().tree().setCurrentIndex(window->findings().model().index(0, 0));
    window->showPage(Page::findings);
    QTest::keyClick(&window->findings().tree(), Qt::Key_F10, Qt::ShiftModifier);
    auto* const menu = window->findChild<QMenu*>(QStringLiteral("findingMenu"));
    ASSERT_NE(menu, nullptr);
    menu->actions().front()->trigger();
    EXPECT_EQ(window->page(), Page::changes) << "the repair has mended it";
}

TEST_F(ApplicationMannersTest, showsThatADropWouldBeTaken) {
    auto* const window = visible<StartWindow>();
    const auto* const area = dynamic_cast<DropArea*>(
        window->findChild<QLabel*>(QStringLiteral("dropLabel"))->parentWidget());
    ASSERT_NE(area, nullptr);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/a.xml"))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &enter);
    EXPECT_TRUE(area->takesDrop());
    QDragLeaveEvent leave;
    QApplication::sendEvent(window, &leave);
    EXPECT_FALSE(area->takesDrop());
}

TEST_F(ApplicationMannersTest, findsWhileTheUserTypes) {
    DocumentMainWindow* const window = opened(sandbox.write("a.xml", kSound));
    window->showPage(DocumentMainWindow::Page::source);
    ASSERT_TRUE(waitUntil([&] { return window->source().source() != nullptr; }));
    window->findBar().begin();
    auto* const text = window->findBar().findChild<QLineEdit*>();
    for (const char* const letters : {"s", "se", "seq"}) {
        QTest::keyClicks(text, QString::fromLatin1(letters).last(1));
        EXPECT_TRUE(waitUntil([&] {
            return window->source().selectedText() == QString::fromLatin1(letters);
        })) << letters;
    }
    EXPECT_EQ(window->source().currentLine(), 4U) << "it stays at the first place";
    EXPECT_EQ(text->text(), QStringLiteral("seq"));
}

}  // namespace
}  // namespace vornic::test
