#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <string>

#include <gmock/gmock.h>

#include "desktop/CrashReportWindow.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

using ::testing::HasSubstr;

class CrashReportWindowTest : public DesktopTest {
  protected:
    template <typename Widget>
    static Widget& child(const QWidget& window, const char* objectName) {
        auto* const found = window.findChild<Widget*>(QString::fromLatin1(objectName));
        EXPECT_NE(found, nullptr) << objectName;
        return *found;
    }
    static std::string shown(const CrashReportWindow& window) {
        return child<QPlainTextEdit>(window, "crashReport").toPlainText().toStdString();
    }
};

TEST_F(CrashReportWindowTest, showsTheReportAndWhatToDo) {
    const std::string path =
        sandbox.write("vornic_2026.crash", "Cause: caf\u00e9 \u2013 SIGSEGV\n");
    const CrashReportWindow window(path);
    EXPECT_EQ(shown(window), "Cause: caf\u00e9 \u2013 SIGSEGV\n");
    EXPECT_THAT(child<QLabel>(window, "crashMessage").text().toStdString(),
                HasSubstr("Help > Report a Bug"));
}

TEST_F(CrashReportWindowTest, copiesTheReport) {
    const CrashReportWindow window(sandbox.write("vornic_2026.crash", "Cause: SIGSEGV"));
    child<QPushButton>(window, "crashCopy").click();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "Cause: SIGSEGV");
    EXPECT_THAT(child<QLabel>(window, "crashDone").text().toStdString(), HasSubstr("copied"));
}

TEST_F(CrashReportWindowTest, saysThatAReportCannotBeRead) {
    const CrashReportWindow window(sandbox.path("none.crash"));
    EXPECT_THAT(shown(window), HasSubstr("none.crash cannot be read"));
}

TEST_F(CrashReportWindowTest, showsNoMoreOfAReportThanCanBeRead) {
    const std::string path = sandbox.write(
        "vornic_2026.crash",
        std::string(static_cast<std::size_t>(CrashReportWindow::kLongestReport) + 10, 'x'));
    const CrashReportWindow window(path);
    EXPECT_EQ(shown(window).size(), static_cast<std::size_t>(CrashReportWindow::kLongestReport));
}

TEST_F(CrashReportWindowTest, closes) {
    CrashReportWindow window(sandbox.write("vornic_2026.crash", "Cause"));
    window.show();
    child<QPushButton>(window, "crashClose").click();
    EXPECT_FALSE(window.isVisible());
}

}  // namespace
}  // namespace vornic::test
