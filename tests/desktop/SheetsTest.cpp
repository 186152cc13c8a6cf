#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <optional>

#include "desktop/ConvertSheet.h"
#include "desktop/ProgressSheet.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "tests/desktop/DesktopTest.h"

// The progress sheet and the conversion dialog.

namespace vornic::test {
namespace {

template <typename Widget>
Widget& child(const QWidget& parent, const char* objectName) {
    auto* const found = parent.findChild<Widget*>(QString::fromLatin1(objectName));
    EXPECT_NE(found, nullptr) << objectName;
    return *found;
}

class ProgressSheetTest : public DesktopTest {
  protected:
    QWidget window;
    ProgressSheet::State state{0, 0};
    int cancellations = 0;
    ProgressSheet sheet{&window, [this] { return state; }, [this] { ++cancellations; }};
    QProgressBar& bar = child<QProgressBar>(sheet, "progressBar");
};

TEST_F(ProgressSheetTest, isModalToItsWindowAlone) {
    window.resize(600, 400);
    window.show();
    EXPECT_FALSE(hasSheet(window));
    beginSheet(sheet);
    EXPECT_TRUE(hasSheet(window));
    EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);
    EXPECT_TRUE(window.geometry().contains(sheet.geometry().center()));
    sheet.hide();
    EXPECT_FALSE(hasSheet(window));
}

TEST_F(ProgressSheetTest, showsTheShareOfWhatIsDone) {
    sheet.setIndeterminate(false);
    sheet.setAnimated(true);
    state = {4'000'000'000, 1'000'000'000};
    EXPECT_TRUE(waitUntil([this] { return bar.value() * 4 == bar.maximum(); }));
    state.second = state.first + 5;
    EXPECT_TRUE(waitUntil([this] { return bar.value() == bar.maximum(); }));
}

TEST_F(ProgressSheetTest, isBusyWithoutAMeasureWhileIndeterminate) {
    EXPECT_EQ(bar.maximum(), 0);
    sheet.setIndeterminate(false);
    EXPECT_GT(bar.maximum(), 0);
    EXPECT_EQ(bar.value(), 0);
    sheet.setIndeterminate(true);
    EXPECT_EQ(bar.maximum(), 0);
}

TEST_F(ProgressSheetTest, cancelsByItsButtonAndByEscape) {
    beginSheet(sheet);
    QTest::keyClick(&sheet, Qt::Key_Escape);
    EXPECT_EQ(cancellations, 1);
    EXPECT_TRUE(sheet.isVisible());
    child<QPushButton>(sheet, "progressCancelBtn").click();
    EXPECT_EQ(cancellations, 2);
    sheet.setCancelEnabled(false);
    QTest::keyClick(&sheet, Qt::Key_Escape);
    EXPECT_EQ(cancellations, 2);
    EXPECT_TRUE(sheet.isVisible());
}

TEST_F(ProgressSheetTest, keepsALongLabelInside) {
    beginSheet(sheet);
    const int width = sheet.width();
    const std::string path = "Starting repair for file /" + std::string(4000, 'x') + ".xml...";
    sheet.setStatusText(path);
    EXPECT_TRUE(waitUntil([] { return true; }));
    EXPECT_EQ(sheet.width(), width);
    EXPECT_EQ(child<QLabel>(sheet, "progressStatusText").toolTip(), toolTipOf(path));
    sheet.setStatusText("Repairing...");
    EXPECT_EQ(child<QLabel>(sheet, "progressStatusText").text(), QStringLiteral("Repairing..."));
}

class ConvertSheetTest : public DesktopTest {
  protected:
    QWidget window;
    int conversions = 0;
    int closings = 0;
    ConvertSheet sheet{sandbox.path("none.xml"), &window, [this] { ++conversions; },
                       [this] { ++closings; }};
    QPushButton& button = child<QPushButton>(sheet, "convertBtn");
    QComboBox& menu = child<QComboBox>(sheet, "convertVersionPopUp");
};

const ConversionOffer kOffer{
    .version = "5",
    .release = "6",
    .versions = {{.key = "5", .title = "5 (Final Cut Pro 6+)", .test = {}, .menuItems = 1},
                 {.key = "4", .title = "4 (Final Cut Pro 5.1+)", .test = {}, .menuItems = 2}},
    .lowest = 1};

TEST_F(ConvertSheetTest, isEmptyAndDisabledAtFirst) {
    EXPECT_FALSE(button.isEnabled());
    EXPECT_FALSE(menu.isEnabled());
    EXPECT_EQ(menu.count(), 0);
    EXPECT_EQ(child<QLabel>(sheet, "convertCurVersion").text(), QString());
    EXPECT_EQ(child<QLabel>(sheet, "convertDowngradeVersion").text(), QString());
    EXPECT_EQ(sheet.selectedConvertVersionKey(), std::nullopt);
}

TEST_F(ConvertSheetTest, knowsTheKeyOfTheChosenVersion) {
    EXPECT_EQ(sheet.selectedConvertVersionKey(), std::nullopt);
    sheet.showOffer(kOffer);
    ASSERT_EQ(menu.count(), 3);
    EXPECT_EQ(menu.itemText(0), QStringLiteral("5 (Final Cut Pro 6+)"));
    EXPECT_EQ(menu.itemText(1), menu.itemText(2));
    EXPECT_EQ(
        child<QLabel>(sheet, "convertDowngradeVersion").text(),
        QStringLiteral("Can be downgraded without changes to version: 4 (Final Cut Pro 5.1+)"));
    EXPECT_TRUE(menu.isEnabled());
    EXPECT_TRUE(button.isEnabled());
    EXPECT_EQ(sheet.selectedConvertVersionKey(), "5");
    menu.setCurrentIndex(1);
    EXPECT_EQ(sheet.selectedConvertVersionKey(), "4");
    sheet.showOffer({});
    EXPECT_EQ(sheet.selectedConvertVersionKey(), std::nullopt);
}

TEST_F(ConvertSheetTest, hasRoomForTextsOfSeveralLines) {
    window.show();
    beginSheet(sheet);
    const std::string text =
        "Can be downgraded without changes to version: 3 (Final Cut Pro 5.1.2+)";
    sheet.setConvertCurVersion(text + " " + text);
    ConversionOffer offer = kOffer;
    offer.versions[1].title = text + " " + text;
    sheet.showOffer(offer);
    QApplication::processEvents();
    for (const char* const name : {"convertCurVersion", "convertDowngradeVersion"}) {
        const auto& label = child<QLabel>(sheet, name);
        EXPECT_GE(label.height(), label.heightForWidth(label.width())) << name;
    }
}

TEST_F(ConvertSheetTest, startsNoSecondConversionWhileItIsBusy) {
    sheet.setConvertInterfaceEnabled(true);
    EXPECT_TRUE(button.isEnabled());
    sheet.startConvertSpinner();
    EXPECT_FALSE(button.isEnabled());
    button.click();
    EXPECT_EQ(conversions, 0);
    sheet.stopConvertSpinner();
    button.click();
    EXPECT_EQ(conversions, 1);
}

TEST_F(ConvertSheetTest, takesADoubleClickForOneClick) {
    sheet.setConvertInterfaceEnabled(true);
    beginSheet(sheet);
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::keyClick(&sheet, Qt::Key_Return);
    EXPECT_EQ(conversions, 1);
    EXPECT_FALSE(menu.isEnabled()) << "the version stays the one that was chosen";
    sheet.stopConvertSpinner();
    EXPECT_TRUE(menu.isEnabled());
    // A short conversion is over before the second click comes.
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(conversions, 1);
    const int interval = QApplication::doubleClickInterval();
    QApplication::setDoubleClickInterval(0);
    QTest::mouseClick(&button, Qt::LeftButton);
    QApplication::setDoubleClickInterval(interval);
    EXPECT_EQ(conversions, 2);
}

TEST_F(ConvertSheetTest, isEmptyAndIdleWheneverItIsShown) {
    sheet.showOffer(kOffer);
    sheet.setConvertCurVersion("5");
    sheet.setConvertInterfaceEnabled(true);
    sheet.startConvertSpinner();
    window.show();
    sheet.beginConvertSheet();
    EXPECT_TRUE(sheet.isVisible());
    EXPECT_FALSE(child<QProgressBar>(sheet, "convertSpinner").isVisible());
    EXPECT_FALSE(menu.isEnabled());
    EXPECT_FALSE(button.isEnabled());
    EXPECT_EQ(menu.count(), 0);
    EXPECT_EQ(child<QLabel>(sheet, "convertCurVersion").text(), QString());
    EXPECT_EQ(child<QLabel>(sheet, "convertDowngradeVersion").text(), QString());
    sheet.endConvertSheet();
    EXPECT_FALSE(sheet.isVisible());
}

TEST_F(ConvertSheetTest, showsThatItIsBusy) {
    beginSheet(sheet);
    auto& spinner = child<QProgressBar>(sheet, "convertSpinner");
    EXPECT_FALSE(spinner.isVisible());
    sheet.startConvertSpinner();
    EXPECT_TRUE(spinner.isVisible());
}

TEST_F(ConvertSheetTest, listsWhatTheChosenVersionLeavesOut) {
    sandbox.write("none.xml",
                  "<xmeml version=\"5\"><sequence><name>Cut</name><synctype>1</synctype>"
                  "</sequence></xmeml>\n");
    ConversionOffer offer = kOffer;
    offer.versions.push_back({.key = "1", .title = "1", .test = {}, .menuItems = 2});
    sheet.showOffer(offer);
    const auto& losses = child<QTreeWidget>(sheet, "lossList");
    const auto& loss = child<QLabel>(sheet, "convertLoss");
    ASSERT_TRUE(waitUntil([this] { return sheet.preview() != nullptr; }));
    EXPECT_EQ(loss.text(), QStringLiteral("Nothing is lost.")) << "the version that it has";
    EXPECT_EQ(losses.topLevelItemCount(), 0);
    menu.setCurrentIndex(menu.findData(QStringLiteral("1")));
    ASSERT_TRUE(waitUntil([this] { return sheet.preview() != nullptr; }));
    EXPECT_EQ(loss.text(), QStringLiteral("1 thing goes, which version 1 does not have."));
    ASSERT_EQ(losses.topLevelItemCount(), 1);
    EXPECT_TRUE(losses.topLevelItem(0)->text(1).contains(QStringLiteral("synctype")));
    sandbox.write("none.xml", "<xmeml version=\"5\"><sequence/></xmeml>\n");
    sheet.lookAgain();
    ASSERT_TRUE(waitUntil([this] { return sheet.preview() != nullptr; }));
    EXPECT_EQ(loss.text(), QStringLiteral("Nothing is lost.")) << "after the file has changed";
}

TEST_F(ConvertSheetTest, saysWhyNothingCanBeListed) {
    ConversionOffer offer = kOffer;
    offer.versions[0].key = "1";
    sheet.showOffer(offer);
    ASSERT_TRUE(waitUntil([this] { return sheet.preview() != nullptr; }));
    EXPECT_TRUE(child<QLabel>(sheet, "convertLoss")
                    .text()
                    .startsWith(QStringLiteral("What is left out cannot be listed: The file ")));
    EXPECT_TRUE(button.isEnabled());
}

TEST_F(ConvertSheetTest, reportsItsStateAndTheResult) {
    sheet.setConvertInterfaceEnabled(true);
    beginSheet(sheet);
    const auto& state = child<QLabel>(sheet, "convertState");
    sheet.startConvertSpinner();
    sheet.setConvertState("Converting to version 4…");
    EXPECT_EQ(state.text(), QStringLiteral("Converting to version 4…"));
    sheet.showConvertResult("Converted to version 4.");
    EXPECT_EQ(state.text(), QStringLiteral("Converting to version 4…"));
    sheet.stopConvertSpinner();
    EXPECT_EQ(state.text(), QStringLiteral("Converted to version 4."));
    button.click();
    EXPECT_EQ(state.text(), QString()) << "that was the one before";
}

TEST_F(ConvertSheetTest, keepsNoOriginalUnlessItIsAskedTo) {
    auto& keeps = child<QCheckBox>(sheet, "convertKeepOriginal");
    EXPECT_EQ(keeps.text().remove(u'&'), QStringLiteral("Keep the original in the Trash"));
    EXPECT_FALSE(sheet.keepsOriginal());
    keeps.click();
    EXPECT_TRUE(sheet.keepsOriginal());
    sheet.startConvertSpinner();
    EXPECT_FALSE(keeps.isEnabled());
    window.show();
    sheet.beginConvertSheet();
    EXPECT_FALSE(sheet.keepsOriginal()) << "whenever the dialog is shown";
}

TEST_F(ConvertSheetTest, isClosedByItsDocument) {
    beginSheet(sheet);
    QTest::keyClick(&sheet, Qt::Key_Escape);
    EXPECT_EQ(closings, 1);
    EXPECT_TRUE(sheet.isVisible());
    child<QPushButton>(sheet, "convertCloseBtn").click();
    EXPECT_EQ(closings, 2);
}

}  // namespace
}  // namespace vornic::test
