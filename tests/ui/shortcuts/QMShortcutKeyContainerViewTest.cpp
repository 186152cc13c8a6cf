#include <gmock/gmock.h>

#include "tests/ui/shortcuts/RecordingShortcutKeyPane.h"
#include "tests/ui/shortcuts/ShortcutKeyFixture.h"
#include "ui/shortcuts/QMShortcutKeyContainerView.h"
#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"

namespace vornic {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class QMShortcutKeyContainerViewTest : public test::ShortcutKeyFixture {
  protected:
    QMShortcutKeyTableDelegate& controller = QMShortcutKeyTableDelegate::sharedController();
    test::RecordingShortcutKeyPane pane;
};

TEST_F(QMShortcutKeyContainerViewTest, loadsItsInterfaceAndIsFilledByIt) {
    const QMShortcutKeyContainerView view(pane);
    EXPECT_THAT(pane.loaded, ElementsAre("QMShortcutKeyConfig"));
    EXPECT_THAT(pane.added, ElementsAre(&pane));
    EXPECT_EQ(view.pane(), &pane);
}

TEST_F(QMShortcutKeyContainerViewTest, hasItsDataShown) {
    const QMShortcutKeyContainerView view(pane);
    EXPECT_EQ(controller.parentView(), &view);
    EXPECT_EQ(controller.numberOfRowsInTableView(), 3U);
    EXPECT_EQ(pane.reloads, 1);
    EXPECT_TRUE(pane.dataCell("description").isLeaf());
    EXPECT_FALSE(pane.dataCell("keyname").isLeaf());
}

TEST_F(QMShortcutKeyContainerViewTest, reportsThatTheInterfaceCannotBeLoaded) {
    constexpr const char* kMessage = "Error: unable to load keyboard shortcut interface";
    pane.isThere = false;
    test::ConsoleCapture console;
    const QMShortcutKeyContainerView view(pane);
    EXPECT_THAT(console.lines(), ElementsAre(kMessage));
    EXPECT_TRUE(log.contains(kMessage));
    EXPECT_EQ(view.pane(), nullptr);
    EXPECT_THAT(pane.added, IsEmpty());
    EXPECT_EQ(controller.parentView(), nullptr);
}

TEST_F(QMShortcutKeyContainerViewTest, letsGoOfTheControllerWithItsEnd) {
    { const QMShortcutKeyContainerView view(pane); }
    EXPECT_EQ(controller.parentView(), nullptr);
    pane.selection = 0;
    controller.keyChanged(ShortcutKey{.keyCode = 71}.userInfo());
    EXPECT_FALSE(test::exists(watchList));
}

}  // namespace
}  // namespace vornic
