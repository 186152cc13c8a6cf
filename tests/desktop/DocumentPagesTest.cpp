#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QPushButton>
#include <QTabBar>
#include <QToolButton>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/desktop/ApplicationTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/ScopedEnvironment.h"

// The pages of a document's window, opened by the application.

namespace vornic::test {
namespace {

const std::string kTwoFaults =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "    <sequence>\n        <name>a & b & c</name>\n    </sequence>\n</xmeml>\n";

class DocumentPagesTest : public ApplicationTest {
  protected:
    DocumentPagesTest() { application.launch({}); }

    static void onlyCheck() {
        ErrorSlot error;
        EXPECT_TRUE(platform::UserPreferences().setValue("onlyCheckOpenedFiles", 1, error));
    }
    // Opens a file that is not repaired, and waits until it has been checked.
    DocumentMainWindow* checked() {
        onlyCheck();
        EXPECT_TRUE(application.openDocument(path));
        DocumentMainWindow* const window = application.currentWindow();
        EXPECT_TRUE(waitUntil([&] { return window->findings().model().rowCount() > 0; }));
        return window;
    }
    static QString header(const DocumentMainWindow& window) {
        return window.findChild<QLabel*>(QStringLiteral("headerLabel"))->text();
    }

    const std::string path = sandbox.write("cut.xml", kTwoFaults);
};

TEST_F(DocumentPagesTest, onlyCheckAFileWhereThatIsPreferred) {
    const FileState before = fileState(path);
    DocumentMainWindow* const window = checked();
    EXPECT_EQ(header(*window), QStringLiteral("Checked, nothing was written: 2 problems need you"));
    EXPECT_EQ(fileState(path), before);
    EXPECT_EQ(visible<QMessageBox>(), nullptr);
    EXPECT_TRUE(child<QPushButton>(*window, "mendFileBtn")->isVisible());
    EXPECT_TRUE(child<QPushButton>(*window, "saveCopyBtn")->isVisible());
    EXPECT_TRUE(child<QPushButton>(*window, "repairBtn")->isEnabled());
}

TEST_F(DocumentPagesTest, keepThePreferenceThatIsChosen) {
    application.showPreferences();
    auto* const preferences = visible<PreferencesWindow>();
    ASSERT_NE(preferences, nullptr);
    auto* const menu = child<QComboBox>(*preferences, "prefsWhenOpened");
    EXPECT_EQ(menu->currentIndex(), 0);
    Q_EMIT menu->activated(1);
    EXPECT_TRUE(PreferencesWindow::onlyChecksOpenedFiles());
    Q_EMIT menu->activated(0);
    EXPECT_FALSE(PreferencesWindow::onlyChecksOpenedFiles());
}

TEST_F(DocumentPagesTest, narrowTheFindings) {
    DocumentMainWindow* const window = checked();
    FindingsModel& model = window->findings().model();
    const int all = model.rowCount();
    ASSERT_GT(all, 1);
    child<QToolButton>(*window, "errorSwitch")->click();
    EXPECT_EQ(model.rowCount(), all - 1);
    child<QToolButton>(*window, "errorSwitch")->click();
    child<QLineEdit>(*window, "findingsFilter")->setText(QStringLiteral("stray"));
    ASSERT_EQ(model.rowCount(), 1);
    EXPECT_TRUE(model.data(model.index(0, FindingsModel::what), Qt::DisplayRole)
                    .toString()
                    .startsWith(QStringLiteral("2 × ")));
    EXPECT_EQ(model.data(model.index(0, FindingsModel::severity), Qt::DisplayRole).toString(),
              QStringLiteral("Error"));
}

TEST_F(DocumentPagesTest, tickMendsOneByOneAndByGroups) {
    DocumentMainWindow* const window = checked();
    FindingsModel& model = window->findings().model();
    child<QLineEdit>(*window, "findingsFilter")->setText(QStringLiteral("stray"));
    const QModelIndex group = model.index(0, 0);
    const QModelIndex first = model.index(0, 0, group);
    EXPECT_EQ(model.tickedFindings().size(), 2U) << "safe ones are ticked";
    EXPECT_TRUE(model.setData(first, Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_EQ(model.tickedFindings().size(), 1U);
    EXPECT_EQ(model.data(group, Qt::CheckStateRole).toInt(), Qt::PartiallyChecked);
    EXPECT_TRUE(model.setData(group, Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_TRUE(model.tickedFindings().empty());
    EXPECT_FALSE(child<QPushButton>(*window, "mendSelectedBtn")->isEnabled());
}

TEST_F(DocumentPagesTest, explainAFindingAndShowItsPlace) {
    DocumentMainWindow* const window = checked();
    child<QLineEdit>(*window, "findingsFilter")->setText(QStringLiteral("stray"));
    QTreeView& tree = window->findings().tree();
    const QModelIndex first = tree.model()->index(0, 0, tree.model()->index(0, 0));
    tree.setCurrentIndex(first);
    const QString details = child<QPlainTextEdit>(*window, "findingDetails")->toPlainText();
    EXPECT_TRUE(details.contains(QStringLiteral("What to do:")));
    EXPECT_TRUE(details.contains(QStringLiteral("> 5          <name>a & b & c</name>")));
    EXPECT_EQ(window->currentLine(), 5U);
    Q_EMIT tree.activated(first);
    EXPECT_EQ(window->page(), DocumentMainWindow::Page::source);
    EXPECT_EQ(window->source().currentLine(), 5U);
}

TEST_F(DocumentPagesTest, copyTheFindingsThatAreSelected) {
    DocumentMainWindow* const window = checked();
    window->showPage(DocumentMainWindow::Page::findings);
    window->findings().selectAll();
    const QString text = window->findings().selectedText();
    EXPECT_TRUE(text.contains(QStringLiteral("Error\t")));
    EXPECT_EQ(text.count(u'\n'), window->findings().tree().selectionModel()->selectedRows().size());
}

TEST_F(DocumentPagesTest, saveTheFindingsByTheEndingOfTheName) {
    DocumentMainWindow* const window = checked();
    const std::pair<const char*, const char*> kinds[] = {
        {"f.txt", "File: "}, {"f.html", "<!DOCTYPE html>"}, {"f.json", "{"}, {"f.pdf", "%PDF"}};
    for (const auto& [name, beginning] : kinds) {
        window->saveFindingsTo(sandbox.path(name));
        ASSERT_TRUE(waitUntil([&, file = name] { return exists(sandbox.path(file)); })) << name;
        EXPECT_TRUE(readBytes(sandbox.path(name)).starts_with(beginning)) << name;
    }
    window->saveFindingsTo(sandbox.path("no folder/f.txt"));
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    EXPECT_EQ(visible<QMessageBox>()->text(), QStringLiteral("Unable to save the findings"));
}

TEST_F(DocumentPagesTest, saveNoFindingsInThePlaceOfTheFile) {
    DocumentMainWindow* const window = checked();
    std::filesystem::create_symlink("cut.xml", sandbox.path("link.xml"));
    const FileState before = fileState(path);
    for (const std::string& place : {path, sandbox.path("link.xml")}) {
        window->saveFindingsTo(place);
        QMessageBox* const refusal = waitFor<QMessageBox>();
        ASSERT_NE(refusal, nullptr) << place;
        EXPECT_EQ(refusal->text(), QStringLiteral("Unable to save the findings"));
        refusal->close();
        ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() == nullptr; }));
    }
    EXPECT_EQ(fileState(path), before);
}

TEST_F(DocumentPagesTest, saveARepairedCopyAndLeaveTheFile) {
    const FileState before = fileState(path);
    DocumentMainWindow* const window = checked();
    window->saveMendedCopyTo(sandbox.path("copy.xml"));
    ASSERT_TRUE(waitUntil([&] {
        return child<QLabel>(*window, "outcomeLabel")
            ->text()
            .startsWith(QStringLiteral("The copy"));
    }));
    EXPECT_NE(readBytes(sandbox.path("copy.xml")).find("a &amp; b &amp; c"), std::string::npos);
    EXPECT_EQ(fileState(path), before);
}

TEST_F(DocumentPagesTest, openTheFileInAnEditorAtTheLineInView) {
    const std::string told = sandbox.path("told");
    std::filesystem::create_directory(sandbox.path("programs"));
    const std::string editor =
        sandbox.write("programs/kate", "#!/bin/sh\nprintf '%s\\n' \"$@\" >'" + told +
                                           ".part'\nmv '" + told + ".part' '" + told + "'\n");
    std::filesystem::permissions(editor, std::filesystem::perms(0755));
    const ScopedEnvironment programs("PATH", sandbox.path("programs") + ":" + getenv("PATH"));
    DocumentMainWindow* const window = checked();
    window->showPage(DocumentMainWindow::Page::source);
    window->source().showLine(5);
    action(*window, "toolsOpenInEditor")->trigger();
    ASSERT_TRUE(waitUntil([&] { return exists(told); }));
    EXPECT_EQ(readBytes(told), "-l\n5\n" + path + "\n");
}

TEST_F(DocumentPagesTest, bringBackAnOriginalWithoutARepair) {
    DocumentMainWindow* const window = opened(path);
    EXPECT_NE(readBytes(path), kTwoFaults);
    ASSERT_TRUE(waitUntil([&] { return window->findings().model().rowCount() > 0; }));
    window->close();
    application.restoreOriginalOf(path);
    ASSERT_TRUE(waitUntil([&] { return readBytes(path) == kTwoFaults; }));
    DocumentMainWindow* const restored = application.currentWindow();
    ASSERT_TRUE(waitUntil([&] {
        return header(*restored) == QStringLiteral("The original is back: 2 problems need you");
    }));
}

TEST_F(DocumentPagesTest, sayThatThereIsNothingToRestoreOrToCompareWith) {
    DocumentMainWindow* const window = checked();
    action(*window, "toolsRestore")->trigger();
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    EXPECT_EQ(visible<QMessageBox>()->text(), QStringLiteral("Unable to restore the original"));
    visible<QMessageBox>()->close();
    QApplication::processEvents();
    action(*window, "toolsCompare")->trigger();
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    EXPECT_EQ(visible<QMessageBox>()->text(),
              QStringLiteral("There is no original to compare with"));
}

TEST_F(DocumentPagesTest, fitASmallScreen) {
    DocumentMainWindow* const window = checked();
    for (const auto page : {DocumentMainWindow::Page::findings, DocumentMainWindow::Page::source,
                            DocumentMainWindow::Page::changes}) {
        window->showPage(page);
        EXPECT_LE(window->minimumSizeHint().width(), 640);
        EXPECT_LE(window->minimumSizeHint().height(), 400);
    }
}

TEST_F(DocumentPagesTest, cutNoButtonOffInTheNarrowestWindow) {
    DocumentMainWindow* const window = checked();
    window->resize(window->minimumSize());
    ASSERT_TRUE(waitUntil([&] { return window->width() == window->minimumWidth(); }));
    int count = 0;
    for (const auto page : {DocumentMainWindow::Page::findings, DocumentMainWindow::Page::changes,
                            DocumentMainWindow::Page::media}) {
        window->showPage(page);
        QApplication::processEvents();
        for (const QAbstractButton* const button : window->findChildren<QAbstractButton*>()) {
            const bool isText = !button->text().isEmpty() && button->isVisible();
            const QRect place(button->mapTo(window, QPoint()), button->size());
            if (isText && qobject_cast<const QTabBar*>(button->parent()) == nullptr) {
                ++count;
                EXPECT_GE(button->width(), button->sizeHint().width())
                    << button->objectName().toStdString();
                EXPECT_TRUE(window->rect().contains(place)) << button->objectName().toStdString();
            }
        }
    }
    EXPECT_GT(count, 10);
}

}  // namespace
}  // namespace vornic::test
