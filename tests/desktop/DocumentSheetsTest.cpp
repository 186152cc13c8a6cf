#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeView>
#include <filesystem>
#include <string>

#include "desktop/MediaFolderSheet.h"
#include "desktop/RelinkSheet.h"
#include "desktop/SalvageSheet.h"
#include "desktop/SetVersionSheet.h"
#include "desktop/VersionSheet.h"
#include "tests/desktop/ApplicationTest.h"
#include "tests/desktop/ProjectTexts.h"
#include "tests/support/machine/FileState.h"

// What a document's window does on sheets of its own: media, versions, salvage.

namespace vornic::test {
namespace {

class DocumentSheetsTest : public ApplicationTest {
  protected:
    DocumentSheetsTest() { application.launch({}); }

    // Opens a file that is not repaired, and waits until it has been checked.
    DocumentMainWindow* checked(const std::string& path) {
        ErrorSlot error;
        EXPECT_TRUE(platform::UserPreferences().setValue("onlyCheckOpenedFiles", 1, error));
        EXPECT_TRUE(application.openDocument(path));
        DocumentMainWindow* const window = application.currentWindow();
        EXPECT_TRUE(waitUntil([&] {
            return header(*window).startsWith(QStringLiteral("Checked, nothing was written"));
        }));
        return window;
    }
    // Opens a file that no repair can take.
    DocumentMainWindow* unable(const std::string& path, const char* offer) {
        DocumentMainWindow* const window = opened(path);
        EXPECT_TRUE(waitUntil([&] { return child<QPushButton>(*window, offer)->isVisible(); }))
            << header(*window).toStdString();
        return window;
    }
    static QString header(const DocumentMainWindow& window) {
        return window.findChild<QLabel*>(QStringLiteral("headerLabel"))->text();
    }
    static QString outcome(const DocumentMainWindow& window) {
        return window.findChild<QLabel*>(QStringLiteral("outcomeLabel"))->text();
    }
    static std::string xmeml(const std::string& mediaPath) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml "
               "version=\"5\">\n<sequence><name>Cut</name><media><video><track>\n<clipitem><file "
               "id=\"f\"><name>x</name><pathurl>file://localhost" +
               mediaPath +
               "</pathurl></file></clipitem>\n</track></video></media></sequence></xmeml>\n";
    }
    // The sheet of a conversion once it has shown what goes.
    static VersionSheet* versionSheet() {
        auto* const sheet = waitFor<VersionSheet>();
        EXPECT_TRUE(waitUntil([&] { return sheet->preview() != nullptr; }));
        return sheet;
    }
    static void chooseVersion(VersionSheet& sheet, const char* version) {
        auto* const menu = child<QComboBox>(sheet, "versionTargets");
        menu->setCurrentIndex(menu->findData(QString::fromLatin1(version)));
        EXPECT_TRUE(waitUntil([&] { return sheet.preview() != nullptr; }));
    }
};

TEST_F(DocumentSheetsTest, listMediaAndRelinkThemToAnotherFolder) {
    std::filesystem::create_directories(sandbox.path("New"));
    sandbox.write("New/x.mov", "x");
    const std::string path = sandbox.write("cut.xml", xmeml("/Volumes/Gone/x.mov"));
    const std::string before = readBytes(path);
    DocumentMainWindow* const window = checked(path);
    window->showPage(DocumentMainWindow::Page::media);
    ASSERT_TRUE(waitUntil([&] { return window->media().isRead(); }));
    const MediaModel& model = window->media().model();
    ASSERT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.data(model.index(0, MediaModel::name), Qt::DisplayRole).toString(),
              QStringLiteral("x.mov"));
    EXPECT_EQ(child<QLabel>(*window, "mediaLabel")->accessibleName(),
              QStringLiteral("1 media file, 1 not there"));
    child<QPushButton>(*window, "changeMediaFolderBtn")->click();
    auto* const folders = waitFor<MediaFolderSheet>();
    EXPECT_EQ(child<QComboBox>(*folders, "oldFolder")->currentText(),
              QStringLiteral("/Volumes/Gone"));
    child<QLineEdit>(*folders, "newFolder")->setText(QString::fromStdString(sandbox.path("New")));
    child<QPushButton>(*folders, "showFolderChangeBtn")->click();
    auto* const relink = waitFor<RelinkSheet>();
    EXPECT_TRUE(child<QLabel>(*relink, "relinkLabel")
                    ->text()
                    .startsWith(QStringLiteral("1 media file gets another place.")));
    EXPECT_FALSE(child<QPushButton>(*relink, "relinkBtn")->isDefault());
    EXPECT_EQ(readBytes(path), before) << "only shown";
    child<QPushButton>(*relink, "relinkBtn")->click();
    ASSERT_TRUE(waitUntil(
        [&] { return header(*window).startsWith(QStringLiteral("1 media file relinked: ")); }));
    EXPECT_NE(readBytes(path).find("/New/x.mov"), std::string::npos);
    ASSERT_TRUE(waitUntil([&] {
        return child<QLabel>(*window, "mediaLabel")->accessibleName() ==
               QStringLiteral("1 media file, all of them there");
    }));
}

TEST_F(DocumentSheetsTest, findMediaInAFolderOrSayThatNothingIsMissing) {
    const std::string there = sandbox.write("x.mov", "x");
    DocumentMainWindow* const window = checked(sandbox.write("cut.xml", xmeml(there)));
    window->findMediaIn(sandbox.path(""), std::nullopt);
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    EXPECT_EQ(visible<QMessageBox>()->text(), QStringLiteral("There is nothing to relink"));
}

TEST_F(DocumentSheetsTest, sayThatAMediumIsNotThereWhenItIsToBeShown) {
    DocumentMainWindow* const window =
        checked(sandbox.write("cut.xml", xmeml("/Volumes/Gone/x.mov")));
    window->showPage(DocumentMainWindow::Page::media);
    ASSERT_TRUE(waitUntil([&] { return window->media().isRead(); }));
    child<QPushButton>(*window, "showMediumBtn")->click();
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    EXPECT_EQ(visible<QMessageBox>()->text(), QStringLiteral("The medium is not there"));
}

TEST_F(DocumentSheetsTest, showWhatAVersionLeavesOutAndCancelByDefault) {
    const std::string path = sandbox.write("cut.fcpxml", kFCPXML);
    const FileState before = fileState(path);
    DocumentMainWindow* const window = checked(path);
    action(*window, "toolsConvertFCPXML")->trigger();
    VersionSheet* const sheet = versionSheet();
    EXPECT_EQ(child<QLabel>(*sheet, "versionCurrent")->text(),
              QStringLiteral("The file is in version 1.13 (Final Cut Pro 11+)."));
    EXPECT_EQ(child<QComboBox>(*sheet, "versionTargets")->currentText(),
              QStringLiteral("1.11 (Final Cut Pro 10.6.6+)"))
        << "the lowest without a loss";
    EXPECT_TRUE(child<QPushButton>(*sheet, "versionConvertBtn")->isDefault());
    chooseVersion(*sheet, "1.10");
    EXPECT_EQ(child<QLabel>(*sheet, "versionResult")->text(),
              QStringLiteral("1 thing goes, which version 1.10 does not have."));
    EXPECT_EQ(child<QTreeWidget>(*sheet, "lossList")->topLevelItemCount(), 1);
    EXPECT_FALSE(child<QPushButton>(*sheet, "versionConvertBtn")->isDefault());
    EXPECT_TRUE(child<QPushButton>(*sheet, "versionCancelBtn")->isDefault());
    QTest::keyClick(sheet, Qt::Key_Return);
    EXPECT_FALSE(sheet->isVisible());
    settle();
    EXPECT_EQ(fileState(path), before);
}

TEST_F(DocumentSheetsTest, convertACopyOrTheFileItself) {
    const std::string path = sandbox.write("cut.fcpxml", kFCPXML);
    DocumentMainWindow* const window = checked(path);
    window->convertFCPXMLVersion();
    VersionSheet* sheet = versionSheet();
    chooseVersion(*sheet, "1.10");
    child<QPushButton>(*sheet, "versionConvertBtn")->click();
    ASSERT_TRUE(waitUntil([&] {
        return outcome(*window).startsWith(
            QStringLiteral("The copy in version 1.10 is called cut (1.10).fcpxml."));
    }));
    EXPECT_EQ(readBytes(path), kFCPXML);
    EXPECT_TRUE(exists(sandbox.path("cut (1.10).fcpxml")));
    ASSERT_TRUE(waitUntil([&] { return visible<VersionSheet>() == nullptr; }));
    window->convertFCPXMLVersion();
    sheet = versionSheet();
    child<QRadioButton>(*sheet, "versionInPlace")->click();
    child<QPushButton>(*sheet, "versionConvertBtn")->click();
    ASSERT_TRUE(waitUntil([&] {
        return header(*window) == QStringLiteral("Converted to version 1.11: sound");
    })) << header(*window).toStdString();
    EXPECT_NE(readBytes(path).find("<fcpxml version=\"1.11\">"), std::string::npos);
}

TEST_F(DocumentSheetsTest, keepTheOriginalOfAConversionWhenAskedTo) {
    const std::string path = sandbox.write("cut.xml", kSound);
    DocumentMainWindow* const window = checked(path);
    window->document()->showConvertDialog();
    auto* const sheet = waitFor<ConvertSheet>();
    auto* const menu = child<QComboBox>(*sheet, "convertVersionPopUp");
    ASSERT_TRUE(waitUntil([&] { return menu->isEnabled(); }));
    child<QCheckBox>(*sheet, "convertKeepOriginal")->click();
    menu->setCurrentIndex(menu->findData(QStringLiteral("4")));
    child<QPushButton>(*sheet, "convertBtn")->click();
    ASSERT_TRUE(waitUntil([&] {
        return child<QLabel>(*sheet, "convertState")->text() ==
               QStringLiteral("Converted to version 4. The original is in the Trash.");
    }));
    EXPECT_NE(readBytes(path).find("<xmeml version=\"4\">"), std::string::npos);
    EXPECT_EQ(readBytes(sandbox.home() + "/.Trash/cut.xml"), kSound);
    EXPECT_EQ(outcome(*window),
              QStringLiteral("Converted to version 4. The original file is in the Trash."));
    child<QPushButton>(*sheet, "convertCloseBtn")->click();
    window->restoreOriginal();
    ASSERT_TRUE(waitUntil([&] { return readBytes(path) == kSound; }));
}

TEST_F(DocumentSheetsTest, sayThatAFileIsNoFCPXML) {
    DocumentMainWindow* const window = checked(sandbox.write("cut.xml", kSound));
    QAction* const convert = action(*window, "toolsConvertFCPXML");
    EXPECT_TRUE(convert->isEnabled());
    convert->trigger();
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    EXPECT_TRUE(visible<QMessageBox>()->informativeText().contains(QStringLiteral("It is XMEML")));
}

TEST_F(DocumentSheetsTest, treatAFileAsWhatItIs) {
    const std::string path = sandbox.write("cut.xml", kFCPXML);
    DocumentMainWindow* const window = unable(path, "treatAsBtn");
    EXPECT_EQ(window->document()->xmlType(), 0);
    EXPECT_EQ(child<QPushButton>(*window, "treatAsBtn")->text(),
              QStringLiteral("Treat as FC&PXML"));
    child<QPushButton>(*window, "treatAsBtn")->click();
    ASSERT_TRUE(waitUntil([&] { return outcome(*window) == QStringLiteral("The file is sound."); }))
        << outcome(*window).toStdString();
    EXPECT_EQ(window->document()->xmlType(), 1);
    EXPECT_EQ(readBytes(path), kFCPXML);
}

TEST_F(DocumentSheetsTest, setTheVersionThatAFileLacks) {
    const std::string path =
        sandbox.write("cut.xml",
                      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml>\n"
                      "    <sequence>\n        <name>Cut</name>\n    </sequence>\n</xmeml>\n");
    DocumentMainWindow* const window = unable(path, "setVersionBtn");
    child<QPushButton>(*window, "setVersionBtn")->click();
    auto* const sheet = waitFor<SetVersionSheet>();
    auto* const menu = child<QComboBox>(*sheet, "versionToSet");
    EXPECT_EQ(menu->count(), 5);
    menu->setCurrentIndex(1);
    child<QPushButton>(*sheet, "setVersionNowBtn")->click();
    ASSERT_TRUE(
        waitUntil([&] { return outcome(*window).startsWith(QStringLiteral("The version was")); }));
    EXPECT_NE(readBytes(path).find("<xmeml version=\"4\">"), std::string::npos);
}

TEST_F(DocumentSheetsTest, showEachGuessBeforeASalvagedCopyIsSaved) {
    const std::string broken =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
        "    <sequence>\n        <name>Cut</name>\n</xmeml>\n";
    const std::string path = sandbox.write("cut.xml", broken);
    DocumentMainWindow* const window = unable(path, "salvageBtn");
    child<QPushButton>(*window, "salvageBtn")->click();
    auto* const sheet = waitFor<SalvageSheet>();
    EXPECT_GT(child<QTreeView>(*sheet, "guessesTree")->model()->rowCount(), 0);
    const QString details = child<QPlainTextEdit>(*sheet, "guessDetails")->toPlainText();
    EXPECT_TRUE(details.contains(QStringLiteral("In the file:"))) << details.toStdString();
    EXPECT_TRUE(details.contains(QStringLiteral("</sequence>"))) << details.toStdString();
    sheet->reject();
    window->saveSalvagedCopyTo(sandbox.path("saved.xml"), previewSalvage(path));
    ASSERT_TRUE(waitUntil([&] { return exists(sandbox.path("saved.xml")); }));
    EXPECT_EQ(readBytes(path), broken);
}

TEST_F(DocumentSheetsTest, fitASmallWindow) {
    DocumentMainWindow* const window = checked(sandbox.write("cut.fcpxml", kFCPXML));
    window->resize(512, 340);
    window->showPage(DocumentMainWindow::Page::media);
    EXPECT_LE(window->minimumSizeHint().width(), 512);
    window->convertFCPXMLVersion();
    const VersionSheet* const sheet = versionSheet();
    EXPECT_LE(sheet->minimumSizeHint().width(), 512);
    EXPECT_LE(sheet->width(), 512);
}

TEST_F(DocumentSheetsTest, narrowALongListBesideTheWindow) {
    std::string names;
    for (int clip = 0; clip < 3000; ++clip) {
        names += "<name>a & b</name>\n";
    }
    DocumentMainWindow* const window =
        checked(sandbox.write("cut.xml", "<xmeml version=\"5\">\n" + names + "</xmeml>\n"));
    const FindingsModel& model = window->findings().model();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() > 1; }));
    child<QLineEdit>(*window, "findingsFilter")->setText(QStringLiteral("stray"));
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == 1; }));
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 3000);
    EXPECT_EQ(model.tickedFindings().size(), 3000U);
    child<QLineEdit>(*window, "findingsFilter")->clear();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() > 1; }));
}

TEST_F(DocumentSheetsTest, speakTheNamesThatAreShown) {
    DocumentMainWindow* const window = checked(sandbox.write("cut.xml", kSound));
    application.showPreferences();
    for (const QWidget* const widget : QApplication::allWidgets()) {
        const auto* const button = qobject_cast<const QAbstractButton*>(widget);
        if (button == nullptr || !button->isVisible() || button->text().isEmpty()) {
            continue;
        }
        const QAccessibleInterface* const spoken =
            QAccessible::queryAccessibleInterface(const_cast<QAbstractButton*>(button));
        ASSERT_NE(spoken, nullptr);
        EXPECT_EQ(spoken->text(QAccessible::Name), QString(button->text()).remove(u'&'))
            << button->objectName().toStdString();
    }
    EXPECT_TRUE(window->isVisible());
}

TEST_F(DocumentSheetsTest, markTheErrorsOfAReportForScreenReaders) {
    ReportView report(nullptr);
    report.append("plain", false, false);
    report.append("\n\nfault", true, true);
    report.flush();
    auto* const spoken = QAccessible::queryAccessibleInterface(&report);
    ASSERT_NE(spoken, nullptr);
    auto* const text = spoken->textInterface();
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(0, text->characterCount()), QStringLiteral("plain\n\nfault"));
    int start = -1;
    int end = -1;
    EXPECT_EQ(text->attributes(1, &start, &end), QString());
    EXPECT_EQ(start, 0);
    EXPECT_TRUE(text->attributes(8, &start, &end).contains(QStringLiteral("invalid:true;")));
    EXPECT_EQ(text->text(start, end).trimmed(), QStringLiteral("fault"));
}

TEST_F(DocumentSheetsTest, letScreenReadersReadTheSourceInView) {
    SourceView source(QStringLiteral("Source"), nullptr);
    source.resize(400, 200);
    source.show();
    source.setSource(SourceText::of("<a>\n<b>x & y</b>\n</a>"));
    source.setMarks({{{9, 1}, Severity::error}});
    auto* const spoken = QAccessible::queryAccessibleInterface(&source);
    ASSERT_NE(spoken, nullptr);
    EXPECT_EQ(spoken->text(QAccessible::Name), QStringLiteral("Source"));
    auto* const text = spoken->textInterface();
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(0, text->characterCount()), QStringLiteral("<a>\n<b>x & y</b>\n</a>\n"));
    int start = -1;
    int end = -1;
    EXPECT_EQ(text->attributes(9, &start, &end), QStringLiteral("invalid:true;"));
    EXPECT_EQ(text->text(start, end), QStringLiteral("&"));
    EXPECT_EQ(text->attributes(5, &start, &end), QString());
    EXPECT_EQ(end, 9);
    source.showLine(2);
    EXPECT_EQ(text->cursorPosition(), 4);
    text->setCursorPosition(19);
    EXPECT_EQ(source.currentLine(), 3U);
}

}  // namespace
}  // namespace vornic::test
