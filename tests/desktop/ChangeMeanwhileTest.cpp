#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <cstdio>
#include <filesystem>
#include <string>

#include "desktop/MediaFolderSheet.h"
#include "desktop/MendSheet.h"
#include "desktop/RelinkSheet.h"
#include "desktop/SalvageSheet.h"
#include "tests/desktop/ApplicationTest.h"

// What another program does to the file while a sheet of its window is open or a job is at work.

namespace vornic::test {
namespace {

const std::string kWithMedia =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "<sequence><name>a & b</name><media><video><track>\n<clipitem><file id=\"f\"><name>x</name>"
    "<pathurl>file://localhost/Volumes/Gone/x.mov</pathurl></file></clipitem>\n"
    "</track></video></media></sequence></xmeml>\n";

class ChangeMeanwhileTest : public ApplicationTest {
  protected:
    ChangeMeanwhileTest() { application.launch({}); }

    DocumentMainWindow* checked(const std::string& text) {
        sandbox.write("cut.xml", text);
        ErrorSlot error;
        EXPECT_TRUE(platform::UserPreferences().setValue("onlyCheckOpenedFiles", 1, error));
        EXPECT_TRUE(application.openDocument(path));
        window = application.currentWindow();
        EXPECT_TRUE(waitUntil([&] { return headerBegins("Checked"); })) << header();
        return window;
    }
    [[nodiscard]] std::string header() const {
        return window->findChild<QLabel*>(QStringLiteral("headerLabel"))->text().toStdString();
    }
    [[nodiscard]] bool headerBegins(const char* text) const { return header().starts_with(text); }
    // As programs do that save with care.
    void replaceFile(const std::string& text) const {
        sandbox.write("other.part", text);
        std::filesystem::rename(sandbox.path("other.part"), path);
    }
    static void expectAlert(const char* headline) {
        auto* const alert = waitFor<QMessageBox>();
        ASSERT_NE(alert, nullptr);
        EXPECT_EQ(alert->text(), QString::fromLatin1(headline));
        QTest::keyClick(alert, Qt::Key_Return);
    }
    RelinkSheet* relinkSheet() {
        std::filesystem::create_directories(sandbox.path("New"));
        sandbox.write("New/x.mov", "x");
        window->changeMediaFolder();
        auto* const folders = waitFor<MediaFolderSheet>();
        child<QComboBox>(*folders, "oldFolder")->setEditText(QStringLiteral("/Volumes/Gone"));
        child<QLineEdit>(*folders, "newFolder")
            ->setText(QString::fromStdString(sandbox.path("New")));
        child<QPushButton>(*folders, "showFolderChangeBtn")->click();
        return waitFor<RelinkSheet>();
    }

    const std::string path = sandbox.path("cut.xml");
    DocumentMainWindow* window = nullptr;
};

TEST_F(ChangeMeanwhileTest, isReportedWhileMediaAreLookedAtAndNothingIsRelinked) {
    checked(kWithMedia);
    auto* const sheet = relinkSheet();
    ASSERT_NE(sheet, nullptr);
    replaceFile(kSound);
    ASSERT_TRUE(waitUntil([&] { return headerBegins("Another program"); })) << header();
    child<QPushButton>(*sheet, "relinkBtn")->click();
    expectAlert("Unable to relink the media");
    EXPECT_EQ(readBytes(path), kSound);
    EXPECT_TRUE(waitUntil([&] { return headerBegins("Another program"); })) << header();
}

TEST_F(ChangeMeanwhileTest, leavesAFileThatHasGoneWhileMediaAreLookedAt) {
    checked(kWithMedia);
    auto* const sheet = relinkSheet();
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(std::filesystem::remove(path));
    child<QPushButton>(*sheet, "relinkBtn")->click();
    expectAlert("Unable to relink the media");
    EXPECT_FALSE(exists(path));
    EXPECT_TRUE(waitUntil([&] { return header() == "The file is not where it was"; })) << header();
}

TEST_F(ChangeMeanwhileTest, isReportedWhileMendsAreLookedAtAndNothingIsMended) {
    checked(kWithMedia);
    window->mendSafely();
    auto* const sheet = waitFor<MendSheet>();
    ASSERT_NE(sheet, nullptr);
    replaceFile(kSound);
    ASSERT_TRUE(waitUntil([&] { return headerBegins("Another program"); })) << header();
    child<QPushButton>(*sheet, "makeMendsBtn")->click();
    expectAlert("Unable to mend the file");
    EXPECT_EQ(readBytes(path), kSound);
}

TEST_F(ChangeMeanwhileTest, leavesAFileThatHasGoneWhileMendsAreLookedAt) {
    checked(kWithMedia);
    window->mendSafely();
    auto* const sheet = waitFor<MendSheet>();
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(std::filesystem::remove(path));
    child<QPushButton>(*sheet, "makeMendsBtn")->click();
    expectAlert("Unable to mend the file");
    EXPECT_FALSE(exists(path));
    EXPECT_TRUE(waitUntil([&] { return header() == "The file is not where it was"; })) << header();
}

TEST_F(ChangeMeanwhileTest, isReportedBesideASalvageWhoseCopyCanStillBeSaved) {
    checked(
        "<?xml version=\"1.0\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n<sequence>\n"
        "<name>Cut</name>\n</xmeml>\n");
    window->saveSalvagedCopy();
    auto* const sheet = waitFor<SalvageSheet>();
    ASSERT_NE(sheet, nullptr);
    const SalvagePreview preview = previewSalvage(path);
    ASSERT_TRUE(std::filesystem::remove(path));
    ASSERT_TRUE(waitUntil([&] { return header() == "The file is not where it was"; })) << header();
    sheet->reject();
    window->saveSalvagedCopyTo(sandbox.path("saved.xml"), preview);
    auto* const outcome = child<QLabel>(*window, "outcomeLabel");
    ASSERT_TRUE(waitUntil([&] { return !outcome->text().isEmpty(); }));
    EXPECT_EQ(outcome->text(),
              QStringLiteral("The salvaged copy is called saved.xml. The file itself was not "
                             "written."));
    EXPECT_NE(readBytes(sandbox.path("saved.xml")).find("</sequence>"), std::string::npos);
    EXPECT_EQ(header(), "The file is not where it was");
}

TEST_F(ChangeMeanwhileTest, isReportedOnceAConversionHasEndedThatWasGoingOn) {
    std::string text = kSound;
    text.insert(text.find("    </sequence>"), "<synctype>1</synctype>\n");
    checked(text);
    const auto document = window->document();
    document->showConvertDialog();
    auto* const menu = child<QComboBox>(*window, "convertVersionPopUp");
    auto* const convert = child<QPushButton>(*window, "convertBtn");
    ASSERT_TRUE(waitUntil([&] { return convert->isEnabled(); }));
    menu->setCurrentIndex(menu->findData(QStringLiteral("1")));
    convert->click();
    auto* const question = waitFor<QMessageBox>();
    ASSERT_NE(question, nullptr);
    EXPECT_TRUE(document->isConverting());
    replaceFile(kSound);
    QTest::qWait(800);
    EXPECT_TRUE(headerBegins("Checked")) << "it may be the conversion's own: " << header();
    QTest::keyClick(question, Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return headerBegins("Another program"); })) << header();
    EXPECT_EQ(readBytes(path), kSound);
}

TEST_F(ChangeMeanwhileTest, isNotReportedForAConversionOfTheWindow) {
    checked(kSound);
    const auto document = window->document();
    document->showConvertDialog();
    auto* const menu = child<QComboBox>(*window, "convertVersionPopUp");
    auto* const convert = child<QPushButton>(*window, "convertBtn");
    ASSERT_TRUE(waitUntil([&] { return convert->isEnabled(); }));
    menu->setCurrentIndex(menu->findData(QStringLiteral("4")));
    convert->click();
    ASSERT_TRUE(waitUntil([&] { return headerBegins("Converted"); })) << header();
    QTest::qWait(800);
    EXPECT_TRUE(headerBegins("Converted")) << header();
}

TEST_F(ChangeMeanwhileTest, letsNoMendBeChosenUntilTheNewFileIsKnown) {
    checked(kWithMedia);
    window->check();
    window->mendTicked();
    expectAlert("There are no findings yet");
    EXPECT_EQ(readBytes(path), kWithMedia);
}

}  // namespace
}  // namespace vornic::test
