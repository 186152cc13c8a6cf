#include <gtest/gtest.h>

#include "foundation/places/NotificationCenter.h"
#include "tests/ui/shortcuts/RecordingShortcutKeyPane.h"
#include "ui/shortcuts/QMShortcutKeyTableview.h"

namespace vornic {
namespace {

class QMShortcutKeyTableviewTest : public ::testing::Test {
  protected:
    test::RecordingShortcutKeyPane table;
    int cleared = 0;
    NotificationCenter::Observation observation{
        "QMShortcutKeyCleared", [this](const NotificationCenter::UserInfo&) { ++cleared; }};
};

TEST_F(QMShortcutKeyTableviewTest, turnsTheDeleteKeyIntoAClear) {
    EXPECT_TRUE(table.keyDown("\b"));
    EXPECT_TRUE(table.keyDown("\x7F"));
    EXPECT_EQ(cleared, 2);
}

TEST_F(QMShortcutKeyTableviewTest, leavesEveryOtherKeyAlone) {
    for (const char* const characters : {"", "a", "\r", "\x1B", " ", "\b\b"}) {
        EXPECT_FALSE(table.keyDown(characters));
    }
    EXPECT_EQ(cleared, 0);
}

TEST_F(QMShortcutKeyTableviewTest, hasACellForEachColumn) {
    table.dataCell("description").setLeaf(true);
    EXPECT_TRUE(table.dataCell("description").isLeaf());
    EXPECT_FALSE(table.dataCell("keyname").isLeaf());
}

}  // namespace
}  // namespace vornic
