#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <string>
#include <vector>

#include "desktop/RecentFiles.h"
#include "desktop/StartWindow.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

class StartWindowTest : public DesktopTest {
  protected:
    QListWidget& list() { return *window.findChild<QListWidget*>(); }

    std::vector<std::string> opened;
    int browsed = 0;
    StartWindow window{[this] { ++browsed; },
                       [this](const std::string& path) { opened.push_back(path); }};
};

TEST_F(StartWindowTest, hasNoListWhereNothingWasOpened) {
    window.show();
    EXPECT_FALSE(list().isVisible());
    QTest::keyClick(&window, Qt::Key_Return);
    window.findChild<QPushButton*>()->click();
    EXPECT_EQ(browsed, 1);
}

TEST_F(StartWindowTest, opensARecentFileByTheKeyboardWithoutMarkingItBefore) {
    const std::string path = sandbox.write("a.xml", "<xmeml/>");
    RecentFiles::add(path);
    window.showRecentFiles();
    window.show();
    ASSERT_TRUE(list().isVisible());
    EXPECT_TRUE(list().selectedItems().isEmpty());
    list().setFocus();
    QTest::keyClick(&list(), Qt::Key_Return);
    EXPECT_EQ(opened, std::vector<std::string>{path});
}

}  // namespace
}  // namespace vornic::test
