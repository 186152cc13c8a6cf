#include <QAccessible>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "desktop/DocumentMainWindow.h"
#include "desktop/FileIcons.h"
#include "desktop/WindowSize.h"
#include "platform/settings/UserPreferences.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/ProjectTexts.h"

// Real documents in their windows.

namespace vornic::test {
namespace {

std::string damaged(std::string text) {
    return text.replace(text.find("Cut"), 3, "C\x0But");
}

class DocumentMainWindowTest : public DesktopTest {
  protected:
    ~DocumentMainWindowTest() override {
        if (document) {
            document->close();
            window->keepDocument(nullptr);
        }
        document.reset();
        window.reset();
        settle();
    }

    void open(const std::string& path) {
        document = Document::create();
        document->setFilePath(path);
        window = std::make_shared<DocumentMainWindow>(
            document, DocumentMainWindow::Actions{
                          .closed = [this](DocumentMainWindow&) { ++closings; },
                          .showFile = [this](const std::string& file) { shownFile = file; },
                          .showTrash = [this] { ++trashShown; }});
        document->setWindow(window);
        window->keepDocument(document);
        window->show();
        document->readFromURL(path, "", nullptr);
    }

    template <typename Widget>
    Widget& child(const char* objectName) {
        auto* const found = window->findChild<Widget*>(QString::fromLatin1(objectName));
        EXPECT_NE(found, nullptr) << objectName;
        return *found;
    }

    // The alert on the screen, a sheet or not.
    static QMessageBox* alert() {
        for (QWidget* const widget : QApplication::allWidgets()) {
            auto* const box = qobject_cast<QMessageBox*>(widget);
            if (box != nullptr && box->isVisible()) {
                return box;
            }
        }
        return nullptr;
    }

    // Waits for the end of a run and for its alert, which is answered.
    QString alertAtTheEnd() {
        EXPECT_TRUE(waitUntil([this] {
            return !child<QLabel>("outcomeLabel").text().isEmpty() && alert() != nullptr;
        }));
        const QString text = alert() != nullptr ? alert()->text() : QString();
        if (alert() != nullptr) {
            QTest::keyClick(alert(), Qt::Key_Return);
        }
        return text;
    }

    // Waits until the file has been looked at after a run, and tells the sign in the header.
    OutcomeBadge::Kind sign() {
        auto& badge = child<OutcomeBadge>("outcomeBadge");
        EXPECT_TRUE(waitUntil([&] {
            return !child<QLabel>("fileFactsLabel").text().isEmpty() &&
                   badge.kind() != OutcomeBadge::Kind::none &&
                   !header().startsWith(QStringLiteral("Looking"));
        }));
        return badge.kind();
    }
    QString header() { return child<QLabel>("headerLabel").text(); }

    QString report() {
        window->report().flush();
        return window->report().toPlainText();
    }

    std::shared_ptr<Document> document;
    std::shared_ptr<DocumentMainWindow> window;
    int closings = 0;
    std::string shownFile;
    int trashShown = 0;
};

TEST_F(DocumentMainWindowTest, showsASoundFileAndItsOutcome) {
    open(sandbox.write("My cut.xml", kSound));
    EXPECT_EQ(alertAtTheEnd(), QStringLiteral("No repair was necessary"));
    EXPECT_TRUE(report().startsWith(QStringLiteral("Starting repair for file ")));
    EXPECT_TRUE(report().contains(QStringLiteral("...\n\nCreating temporary file...\n\n")));
    EXPECT_TRUE(report().endsWith(
        QStringLiteral("No repair was necessary. No critical errors were found in the file.")));
    EXPECT_EQ(sign(), OutcomeBadge::Kind::good);
    EXPECT_TRUE(window->windowTitle().startsWith(QStringLiteral("My cut.xml")));
    EXPECT_EQ(child<QLabel>("fileNameLabel").text(), QStringLiteral("My cut.xml"));
    EXPECT_TRUE(child<QLabel>("fileKindLabel").text().contains(QStringLiteral("XMEML")));
    EXPECT_FALSE(window->progressSheetIsVisible());
    EXPECT_FALSE(child<QPushButton>("showFileBtn").isVisible());
    EXPECT_FALSE(child<QPushButton>("showTrashBtn").isVisible());
}

TEST_F(DocumentMainWindowTest, repairsADamagedFile) {
    const std::string path = sandbox.write("cut.xml", damaged(kSound));
    open(path);
    EXPECT_EQ(alertAtTheEnd(), QStringLiteral("The file was repaired successfully"));
    EXPECT_EQ(readBytes(path), kSound);
    EXPECT_EQ(sign(), OutcomeBadge::Kind::good);
    const std::size_t place = damaged(kSound).find('\v');
    EXPECT_TRUE(
        report().contains(QStringLiteral("Invalid character at byte %1 removed.").arg(place)));
}

TEST_F(DocumentMainWindowTest, leadsToTheRepairedFileAndToTheTrash) {
    const std::string path = sandbox.write("cut.xml", damaged(kSound));
    open(path);
    alertAtTheEnd();
    ASSERT_TRUE(child<QPushButton>("showFileBtn").isVisible());
    ASSERT_TRUE(child<QPushButton>("showTrashBtn").isVisible());
    child<QPushButton>("showFileBtn").click();
    EXPECT_EQ(shownFile, path);
    child<QPushButton>("showTrashBtn").click();
    EXPECT_EQ(trashShown, 1);
    child<QPushButton>("repairBtn").click();
    EXPECT_EQ(alertAtTheEnd(), QStringLiteral("No repair was necessary"));
    EXPECT_FALSE(child<QPushButton>("showTrashBtn").isVisible());
}

TEST_F(DocumentMainWindowTest, savesTheReport) {
    open(sandbox.write("cut.xml", kSound));
    alertAtTheEnd();
    window->saveReport();
    auto& panel = child<QFileDialog>("saveReportPanel");
    EXPECT_EQ(panel.windowModality(), Qt::WindowModal);
    EXPECT_NE(dynamic_cast<FileIcons*>(panel.iconProvider()), nullptr);
    EXPECT_TRUE(panel.selectedFiles().first().endsWith(QStringLiteral("/cut report.txt")));
    panel.selectFile(QStringLiteral("mine.txt"));
    QTest::keyClick(&panel, Qt::Key_Return);
    ASSERT_TRUE(waitUntil([this] { return exists(sandbox.path("mine.txt")); }));
    EXPECT_EQ(readBytes(sandbox.path("mine.txt")), report().toStdString() + "\n");
}

TEST_F(DocumentMainWindowTest, reportsWhyTheReportCannotBeSaved) {
    open(sandbox.write("cut.xml", kSound));
    alertAtTheEnd();
    window->saveReport();
    auto& panel = child<QFileDialog>("saveReportPanel");
    Q_EMIT panel.fileSelected(QString::fromStdString(sandbox.path("no folder/report.txt")));
    ASSERT_NE(alert(), nullptr);
    EXPECT_EQ(alert()->text(), QStringLiteral("Unable to save the report"));
    EXPECT_FALSE(alert()->informativeText().isEmpty());
}

TEST_F(DocumentMainWindowTest, proposesToSaveBesideABundleAndNotInIt) {
    std::filesystem::create_directory(sandbox.path("Cut.fcpxmld"));
    open(sandbox.write("Cut.fcpxmld/Info.fcpxml", kFCPXML));
    alertAtTheEnd();
    window->saveReport();
    EXPECT_EQ(child<QFileDialog>("saveReportPanel").selectedFiles().first(),
              QString::fromStdString(sandbox.path("Cut report.txt")));
}

TEST_F(DocumentMainWindowTest, savesNoReportInThePlaceOfTheFile) {
    const std::string path = sandbox.write("cut.xml", kSound);
    open(path);
    alertAtTheEnd();
    window->saveReport();
    Q_EMIT child<QFileDialog>("saveReportPanel").fileSelected(QString::fromStdString(path));
    ASSERT_NE(alert(), nullptr);
    EXPECT_EQ(alert()->informativeText(),
              QStringLiteral("It would take the place of the project file."));
    EXPECT_EQ(readBytes(path), kSound);
}

TEST_F(DocumentMainWindowTest, showsANameThatLooksLikeMarkupAsItIs) {
    open(sandbox.write("<b>[*]\n.xml", kSound));
    alertAtTheEnd();
    EXPECT_EQ(child<QLabel>("fileNameLabel").text(), QStringLiteral("<b>[*]\uFFFD.xml"));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("<b>[*][*]\uFFFD.xml — Vornic"));
    EXPECT_TRUE(
        child<QLabel>("fileNameLabel").toolTip().contains(QStringLiteral("&lt;b&gt;[*]\n.xml")));
}

TEST_F(DocumentMainWindowTest, reportsWhenItCannotRepair) {
    const std::string path = sandbox.write("cut.xml", "<xmeml version=\"5\"><sequence>");
    open(path);
    EXPECT_EQ(alertAtTheEnd(), QStringLiteral("Unable to repair file"));
    EXPECT_EQ(sign(), OutcomeBadge::Kind::bad);
    EXPECT_EQ(readBytes(path), "<xmeml version=\"5\"><sequence>");
}

TEST_F(DocumentMainWindowTest, namesTheFileInTheTitleOfAFailureAlone) {
    open(sandbox.write("cut.xml", "<xmeml version=\"5\"><sequence>"));
    ASSERT_TRUE(waitUntil([] { return alert() != nullptr; }));
    EXPECT_EQ(alert()->windowTitle(), QStringLiteral("cut.xml"));
    alertAtTheEnd();
    window->beginAlertSheet("No repair was necessary", "");
    EXPECT_EQ(alert()->windowTitle(), QStringLiteral("Vornic"));
}

TEST_F(DocumentMainWindowTest, reportsTheKindOfAFinalCutProXFile) {
    open(sandbox.write("cut.FCPXML", "<fcpxml/>"));
    alertAtTheEnd();
    EXPECT_TRUE(child<QLabel>("fileKindLabel").text().contains(QStringLiteral("FCPXML")));
}

TEST_F(DocumentMainWindowTest, repairsAgainByItsButton) {
    const std::string path = sandbox.write("cut.xml", kSound);
    open(path);
    alertAtTheEnd();
    sandbox.write("cut.xml", damaged(kSound));
    EXPECT_TRUE(child<QPushButton>("repairBtn").isEnabled());
    child<QPushButton>("repairBtn").click();
    EXPECT_EQ(alertAtTheEnd(), QStringLiteral("The file was repaired successfully"));
    EXPECT_EQ(readBytes(path), kSound);
}

TEST_F(DocumentMainWindowTest, reportsThatTheFileHasGone) {
    const std::string path = sandbox.write("cut.xml", kSound);
    open(path);
    alertAtTheEnd();
    ASSERT_EQ(std::remove(path.c_str()), 0);
    child<QPushButton>("repairBtn").click();
    EXPECT_TRUE(waitUntil([this] { return alert() != nullptr; }));
    ASSERT_NE(alert(), nullptr);
    EXPECT_EQ(alert()->text(), QStringLiteral("Unable to locate file"));
}

TEST_F(DocumentMainWindowTest, closesAtOnceWhenNothingRuns) {
    open(sandbox.write("cut.xml", kSound));
    alertAtTheEnd();
    EXPECT_TRUE(window->close());
    EXPECT_EQ(closings, 1);
}

TEST_F(DocumentMainWindowTest, asksBeforeItClosesDuringARun) {
    open(sandbox.write("cut.xml", kSound));
    alertAtTheEnd();
    document->startProgress();
    for (const bool quits : {false, true}) {
        platform::MainThread::performAfter(std::chrono::milliseconds(20), [this, quits] {
            ASSERT_NE(alert(), nullptr);
            EXPECT_EQ(alert()->text(),
                      QStringLiteral("A repair is running. Are you sure you wish to quit?"));
            EXPECT_EQ(alert()->informativeText(), QStringLiteral("This will cancel the repair."));
            // Asked once, however often it is to be closed meanwhile.
            window->close();
            QTest::keyClick(alert(), quits ? Qt::Key_Return : Qt::Key_Escape);
        });
        EXPECT_EQ(window->close(), quits);
        EXPECT_EQ(alert(), nullptr);
    }
    EXPECT_EQ(closings, 1);
    document->endProgress();
}

TEST_F(DocumentMainWindowTest, showsTheVersionsOfTheFileInTheConversionDialog) {
    open(sandbox.write("cut.xml", kSound));
    alertAtTheEnd();
    document->showConvertDialog();
    auto& menu = child<QComboBox>("convertVersionPopUp");
    EXPECT_TRUE(waitUntil([&menu] { return menu.isEnabled() && menu.count() > 4; }));
    EXPECT_TRUE(child<QLabel>("convertCurVersion")
                    .text()
                    .startsWith(QStringLiteral("Current XML version: 5 (Final Cut Pro ")));
    EXPECT_TRUE(window->hasAttachedSheet());
    document->closeConvertDialog();
    EXPECT_FALSE(window->hasAttachedSheet());
}

TEST_F(DocumentMainWindowTest, convertsTheFileToTheChosenVersion) {
    const std::string path = sandbox.write("cut.xml", kSound);
    open(path);
    alertAtTheEnd();
    document->showConvertDialog();
    auto& menu = child<QComboBox>("convertVersionPopUp");
    EXPECT_TRUE(waitUntil([&menu] { return menu.findData(QStringLiteral("4")) >= 0; }));
    auto& button = child<QPushButton>("convertBtn");
    EXPECT_TRUE(waitUntil([&button] { return button.isEnabled(); }));
    menu.setCurrentIndex(menu.findData(QStringLiteral("4")));
    button.click();
    EXPECT_TRUE(waitUntil([this] {
        return child<QLabel>("convertCurVersion")
            .text()
            .startsWith(QStringLiteral("Current XML version: 4"));
    }));
    EXPECT_NE(readBytes(path).find("<xmeml version=\"4\">"), std::string::npos);
    EXPECT_TRUE(waitUntil([&button] { return button.isEnabled(); }));
    EXPECT_TRUE(child<QDialog>("windowConvert").isVisible()) << "it closes by its button alone";
}

TEST_F(DocumentMainWindowTest, reportsAConversionThatWasWrittenWhenItsDialogWasClosed) {
    open(sandbox.write("cut.xml", kSound));
    alertAtTheEnd();
    window->showConverted({.version = "4", .original = {}, .isUndoable = false, .notes = {}});
    EXPECT_EQ(child<QLabel>("outcomeLabel").text(), QStringLiteral("Converted to version 4."));
}

TEST_F(DocumentMainWindowTest, convertsNothingOnceTheDialogIsClosed) {
    const std::string path = sandbox.write("cut.xml", kSound);
    open(path);
    alertAtTheEnd();
    document->showConvertDialog();
    auto& menu = child<QComboBox>("convertVersionPopUp");
    auto& button = child<QPushButton>("convertBtn");
    EXPECT_TRUE(waitUntil([&button] { return button.isEnabled(); }));
    menu.setCurrentIndex(menu.findData(QStringLiteral("4")));
    const std::string before = readBytes(path);
    button.click();
    QTest::keyClick(&child<QDialog>("windowConvert"), Qt::Key_Escape);
    EXPECT_FALSE(child<QDialog>("windowConvert").isVisible());
    EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::minutes(2)));
    EXPECT_EQ(readBytes(path), before);
    // The dialog can be opened and used again.
    document->showConvertDialog();
    EXPECT_TRUE(waitUntil([&button] { return button.isEnabled(); }));
    EXPECT_EQ(menu.count(), 9) << "filled by one analysis";
}

TEST_F(DocumentMainWindowTest, showsAnEmptyDialogForAFileThatCannotBeAnalysed) {
    const std::string path = sandbox.write("cut.xml", kSound);
    open(path);
    alertAtTheEnd();
    document->showConvertDialog();
    auto& button = child<QPushButton>("convertBtn");
    EXPECT_TRUE(waitUntil([&button] { return button.isEnabled(); }));
    document->closeConvertDialog();
    sandbox.write("cut.xml", "<other/>");
    document->showConvertDialog();
    EXPECT_TRUE(waitUntil([] { return alert() != nullptr; }));
    ASSERT_NE(alert(), nullptr);
    QTest::keyClick(alert(), Qt::Key_Return);
    auto& spinner = child<QWidget>("convertSpinner");
    EXPECT_TRUE(waitUntil([&spinner] { return !spinner.isVisible(); }));
    EXPECT_TRUE(child<QDialog>("windowConvert").isVisible());
    EXPECT_EQ(child<QLabel>("convertCurVersion").text(), QString());
    EXPECT_EQ(child<QLabel>("convertDowngradeVersion").text(), QString());
    EXPECT_EQ(child<QComboBox>("convertVersionPopUp").count(), 0);
    EXPECT_FALSE(child<QComboBox>("convertVersionPopUp").isEnabled());
    EXPECT_FALSE(button.isEnabled());
}

TEST_F(DocumentMainWindowTest, showsNoDialogForAFileThatHasGone) {
    const std::string path = sandbox.write("cut.xml", kSound);
    open(path);
    alertAtTheEnd();
    ASSERT_EQ(std::remove(path.c_str()), 0);
    document->showConvertDialog();
    EXPECT_TRUE(waitUntil([this] { return alert() != nullptr; }));
    ASSERT_NE(alert(), nullptr);
    EXPECT_EQ(alert()->text(), QStringLiteral("Unable to locate file"));
    EXPECT_FALSE(child<QDialog>("windowConvert").isVisible());
}

TEST_F(DocumentMainWindowTest, leavesRoomForItsFrameOnTheScreen) {
    const platform::UserPreferences preferences;
    ErrorSlot error;
    for (const std::int64_t length : {std::int64_t{16000}, std::int64_t{1} << 40U}) {
        ASSERT_TRUE(preferences.setValue("window.windowMain.width", length, error));
        ASSERT_TRUE(preferences.setValue("window.windowMain.height", length, error));
        const DocumentMainWindow shown(Document::create(), {});
        EXPECT_EQ(shown.size(), shown.screen()->availableSize() - kWindowFrame) << length;
    }
}

TEST_F(DocumentMainWindowTest, keepsItsSizeForTheNextOne) {
    open(sandbox.write("cut.xml", kSound));
    alertAtTheEnd();
    window->resize(701, 555);
    EXPECT_TRUE(window->close());
    DocumentMainWindow next(document, {});
    EXPECT_EQ(next.size(), QSize(701, 555));
}

TEST_F(DocumentMainWindowTest, isNotMadeWiderByALongName) {
    const std::string name = std::string(200, 'n') + ".xml";
    open(sandbox.write(name, kSound));
    alertAtTheEnd();
    EXPECT_LT(window->minimumSizeHint().width(), 600);
    EXPECT_TRUE(child<QLabel>("fileNameLabel").text().contains(u'…'));
    EXPECT_TRUE(child<QLabel>("fileNameLabel").toolTip().contains(QString::fromStdString(name)));
}

TEST_F(DocumentMainWindowTest, givesEveryControlANameForThoseWhoCannotSeeIt) {
    open(sandbox.write("cut.xml", kSound));
    alertAtTheEnd();
    for (const char* const name :
         {"infoText", "repairBtn", "progressBar", "progressCancelBtn", "convertVersionPopUp",
          "convertBtn", "convertSpinner", "windowProgress", "windowConvert"}) {
        const auto* const spoken = QAccessible::queryAccessibleInterface(&child<QWidget>(name));
        ASSERT_NE(spoken, nullptr);
        EXPECT_FALSE(spoken->text(QAccessible::Name).isEmpty()) << name;
    }
    EXPECT_EQ(window->objectName(), QStringLiteral("windowMain"));
}

TEST_F(DocumentMainWindowTest, saysInItsHeaderWhatWasRepaired) {
    open(sandbox.write("cut.xml", damaged(kSound)));
    alertAtTheEnd();
    EXPECT_EQ(sign(), OutcomeBadge::Kind::good);
    EXPECT_EQ(header(), QStringLiteral("1 problem found, 1 repaired, with 1 warning left"));
    EXPECT_TRUE(child<QLabel>("fileFactsLabel").text().startsWith(QStringLiteral("version 5 · ")));
    EXPECT_TRUE(child<QPushButton>("restoreBtn").isVisible());
    EXPECT_EQ(window->findings().model().rowCount(), 2) << "one is gone, one is left";
    ASSERT_TRUE(waitUntil([this] { return window->changes().changeCount() == 1; }));
}

TEST_F(DocumentMainWindowTest, saysInItsHeaderWhatTheRepairCannotTake) {
    open(sandbox.write("cut.xml",
                       "<xmeml version=\"1.0\"><sequence><name>Cut</name></sequence></xmeml>"));
    alertAtTheEnd();
    EXPECT_EQ(sign(), OutcomeBadge::Kind::warning);
    EXPECT_TRUE(header().contains(QStringLiteral(
        "only the repair cannot take it: Unrecognized XML Interchange version 1.0.")))
        << header().toStdString();
}

TEST_F(DocumentMainWindowTest, restoresTheOriginal) {
    const std::string path = sandbox.write("cut.xml", damaged(kSound));
    open(path);
    alertAtTheEnd();
    sign();
    child<QPushButton>("restoreBtn").click();
    ASSERT_TRUE(waitUntil([this] { return header().startsWith(QStringLiteral("The original")); }));
    EXPECT_EQ(readBytes(path), damaged(kSound));
    EXPECT_EQ(header(), QStringLiteral("The original is back: 1 problem needs you"));
    EXPECT_EQ(sign(), OutcomeBadge::Kind::warning);
    EXPECT_EQ(child<QLabel>("outcomeLabel").text(),
              QStringLiteral("The original is back. What was there is in the Trash."));
}

TEST_F(DocumentMainWindowTest, hasNoTickWhenLegalCharactersWereRemovedAndBringsThemBack) {
    std::string text = kSound;
    text.replace(text.find("Cut"), 3, "R & D \xEF\xBC\x81");
    const std::string path = sandbox.write("cut.xml", text);
    open(path);
    alertAtTheEnd();
    EXPECT_EQ(sign(), OutcomeBadge::Kind::warning);
    EXPECT_EQ(header(), QStringLiteral("1 legal character was removed from 1 name"));
    child<QPushButton>("showRemovedBtn").click();
    EXPECT_EQ(window->page(), DocumentMainWindow::Page::changes);
    ASSERT_TRUE(waitUntil([this] { return window->changes().original().currentLine() == 5; }));
    child<QPushButton>("bringBackBtn").click();
    ASSERT_TRUE(waitUntil([this] { return header().contains(QStringLiteral("mended")); }));
    EXPECT_EQ(header(), QStringLiteral("1 problem found, 1 mended, with 1 warning left"));
    EXPECT_EQ(sign(), OutcomeBadge::Kind::good);
    EXPECT_EQ(readBytes(path), text.replace(text.find('&'), 1, "&amp;"));
}

TEST_F(DocumentMainWindowTest, showsWhatTickedMendsWouldDoAndMakesThemOnlyThen) {
    const std::string path =
        sandbox.write("cut.xml", "<xmeml version=\"5\"><sequence><name>a & b</name></xmeml>");
    const std::string before = readBytes(path);
    open(path);
    alertAtTheEnd();
    EXPECT_EQ(sign(), OutcomeBadge::Kind::bad);
    auto& button = child<QPushButton>("mendSelectedBtn");
    ASSERT_TRUE(button.isEnabled());
    for (const bool mends : {false, true}) {
        button.click();
        ASSERT_TRUE(waitUntil([this] {
            auto* const sheet = window->findChild<QDialog*>(QStringLiteral("mendSheet"));
            return sheet != nullptr && sheet->isVisible();
        }));
        auto* const sheet = window->findChild<QDialog*>(QStringLiteral("mendSheet"));
        EXPECT_TRUE(sheet->findChild<QPlainTextEdit*>(QStringLiteral("mendDifference"))
                        ->toPlainText()
                        .contains(QStringLiteral("+<xmeml")));
        EXPECT_EQ(readBytes(path), before);
        if (mends) {
            sheet->findChild<QPushButton*>(QStringLiteral("makeMendsBtn"))->click();
        } else {
            QTest::keyClick(sheet, Qt::Key_Return);  // the default is to leave the file
        }
        ASSERT_TRUE(waitUntil([this] {
            return window->findChild<QDialog*>(QStringLiteral("mendSheet")) == nullptr;
        }));
    }
    ASSERT_TRUE(waitUntil([this] { return header().contains(QStringLiteral("mended")); }));
    EXPECT_NE(readBytes(path).find("a &amp; b"), std::string::npos);
}

TEST_F(DocumentMainWindowTest, noticesWhatAnotherProgramDoesToTheFile) {
    const std::string path = sandbox.write("cut.xml", kSound);
    open(path);
    alertAtTheEnd();
    EXPECT_EQ(sign(), OutcomeBadge::Kind::good);
    sandbox.write("cut.xml", damaged(kSound));
    ASSERT_TRUE(
        waitUntil([this] { return header().startsWith(QStringLiteral("Another program")); }));
    EXPECT_EQ(sign(), OutcomeBadge::Kind::warning);
    ASSERT_EQ(std::remove(path.c_str()), 0);
    ASSERT_TRUE(waitUntil([this] { return header().startsWith(QStringLiteral("The file is")); }));
    EXPECT_EQ(header(), QStringLiteral("The file is not where it was"));
}

// A name of its own would be read out in the place of the label's text.
TEST_F(DocumentMainWindowTest, describesItsLabelsAndReadsOutTheirText) {
    open(sandbox.write("cut.xml", kSound));
    alertAtTheEnd();
    for (const char* const name :
         {"fileNameLabel", "fileKindLabel", "outcomeLabel", "progressStatusText",
          "convertCurVersion", "convertDowngradeVersion"}) {
        EXPECT_FALSE(child<QLabel>(name).accessibleDescription().isEmpty()) << name;
    }
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&child<QLabel>("outcomeLabel"))
                  ->text(QAccessible::Name),
              QStringLiteral("The file is sound."));
}

}  // namespace
}  // namespace vornic::test
