#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/ui/shortcuts/RecordingShortcutKeyPane.h"
#include "tests/ui/shortcuts/ShortcutKeyFixture.h"
#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kMissingManager =
    "Unable to setup shortcut keys - shortcut key manager doesn't exist. Please reinstall this "
    "software.";

// The controller with a pane, on whose first row the selection stands.
class QMShortcutKeyTableDelegateTest : public test::ShortcutKeyFixture {
  protected:
    // Makes the pane, which reads the data.
    void showPane() {
        view.emplace(pane);
        pane.selection = 0;
    }
    [[nodiscard]] std::string value(const char* column, std::size_t row) const {
        return controller.tableViewObjectValueForTableColumn(column, row).value_or("(none)");
    }
    [[nodiscard]] std::vector<std::string> keyNames() const {
        std::vector<std::string> names;
        for (std::size_t row = 0; row < controller.numberOfRowsInTableView(); ++row) {
            names.push_back(value("keyname", row));
        }
        return names;
    }
    void press(const ShortcutKey& key) const { controller.customFieldEditor()->keyDown(key); }
    [[nodiscard]] bool assign(const QMShortcutKeyTableDelegate::Text& id,
                              const QMShortcutKeyTableDelegate::Params& params = std::nullopt) {
        return controller.setKeyboardShortcutWithID(id, params, 71, true, false, false, true);
    }

    QMShortcutKeyTableDelegate& controller = QMShortcutKeyTableDelegate::sharedController();
    test::RecordingShortcutKeyPane pane;
    std::optional<QMShortcutKeyContainerView> view;
};

TEST_F(QMShortcutKeyTableDelegateTest, isOneForTheProcess) {
    EXPECT_EQ(&QMShortcutKeyTableDelegate::sharedController(), &controller);
    static_assert(!std::is_default_constructible_v<QMShortcutKeyTableDelegate>);
    static_assert(!std::is_copy_constructible_v<QMShortcutKeyTableDelegate>);
}

TEST_F(QMShortcutKeyTableDelegateTest, makesItsFieldEditor) {
    showPane();
    ASSERT_NE(controller.customFieldEditor(), nullptr);
    EXPECT_EQ(&controller.customFieldEditor()->delegate(), &controller);
}

TEST_F(QMShortcutKeyTableDelegateTest, listsTheCommands) {
    showPane();
    ASSERT_EQ(controller.numberOfRowsInTableView(), 3U);
    EXPECT_EQ(value("description", 0), "Open a file");
    EXPECT_EQ(value("id", 2), "print");
    EXPECT_EQ(value("keyname", 0), "(none)");
    EXPECT_EQ(value("shortcutkey", 0), "(none)");
    EXPECT_EQ(value("description", 3), "(none)");
    EXPECT_EQ(value("missing", 0), "(none)");
}

TEST_F(QMShortcutKeyTableDelegateTest, passesOverWhatIsNoCommand) {
    writeCommands(Array{"text", List(Dictionary{{"id", "only"}}),
                        List(Dictionary{{"description", "only"}}), command("open", "Open a file")});
    showPane();
    EXPECT_EQ(controller.numberOfRowsInTableView(), 1U);
}

TEST_F(QMShortcutKeyTableDelegateTest, isEmptyWithoutTheListOfCommands) {
    fs::remove(bundle + "/Contents/Resources/QMKeys.plist");
    test::ConsoleCapture console;
    showPane();
    EXPECT_EQ(controller.numberOfRowsInTableView(), 0U);
    EXPECT_THAT(console.lines(),
                ElementsAre("The list of the application's commands cannot be read"));
}

TEST_F(QMShortcutKeyTableDelegateTest, saysThatTheManagerIsMissingAndAllowsNoEditing) {
    showPane();
    EXPECT_EQ(pane.isNoticeHidden, false);
    EXPECT_EQ(pane.isEditingEnabled, false);
    EXPECT_EQ(controller.numberOfRowsInTableView(), 3U) << "the rows are there to be read";
    const auto program = installManager();
    controller.populateKeyData();
    EXPECT_EQ(pane.isNoticeHidden, true);
    EXPECT_EQ(pane.isEditingEnabled, true);
}

TEST_F(QMShortcutKeyTableDelegateTest, showsTheShortcutsOfItsOwnCommands) {
    writeWatchList({ownEntry("close", 71, 4096 + 512), ownEntry("gone", 24, 0),
                    entry("com.example.Other", "open", 24, 0), "no entry",
                    ownEntry("print", 93, 0)});
    test::ConsoleCapture console;
    showPane();
    EXPECT_THAT(keyNames(), ElementsAre("(none)", "Ctrl+Shift+F5", "Unknown"));
    EXPECT_THAT(console.lines(), ElementsAre("Couldn't find a translation for the '93' key code"));
}

TEST_F(QMShortcutKeyTableDelegateTest, showsUnknownForEveryKeyWithoutALayout) {
    const test::ChosenKeyboard none("no-such-layout");
    writeWatchList({ownEntry("open", 71, 4096)});
    showPane();
    EXPECT_THAT(keyNames(), ElementsAre("Unknown", "(none)", "(none)"));
}

TEST_F(QMShortcutKeyTableDelegateTest, readsAnewWheneverItIsFilled) {
    showPane();
    writeWatchList({ownEntry("open", 71, 0)});
    const int reloads = pane.reloads;
    controller.populateKeyData();
    EXPECT_THAT(keyNames(), ElementsAre("F5", "(none)", "(none)"));
    EXPECT_EQ(pane.reloads, reloads + 1);
    writeWatchList({});
    controller.populateKeyData();
    EXPECT_THAT(keyNames(), ElementsAre("(none)", "(none)", "(none)"));
}

TEST_F(QMShortcutKeyTableDelegateTest, saysThatTheWatchListIsDamaged) {
    fs::create_directories(preferences);
    test::writeBytes(watchList, "damaged");
    showPane();
    EXPECT_THAT(pane.failure, HasSubstr("it is no list of shortcut keys"));
    EXPECT_TRUE(log.contains(pane.failure));
    EXPECT_EQ(test::readBytes(watchList), "damaged");
    EXPECT_EQ(controller.numberOfRowsInTableView(), 3U);
}

TEST_F(QMShortcutKeyTableDelegateTest, fillsACellBeforeItIsDrawn) {
    writeWatchList({ownEntry("open", 71, 0), ownEntry("close", 71, 0), ownEntry("print", 71, 256)});
    showPane();
    QMShortcutKeyTextCell cell;
    controller.tableViewWillDisplayCell(cell, "keyname", 0);
    EXPECT_EQ(cell.stringValue(), "F5");
    EXPECT_TRUE(cell.isConflicting());
    controller.tableViewWillDisplayCell(cell, "description", 2);
    EXPECT_EQ(cell.stringValue(), "Print the report");
    EXPECT_FALSE(cell.isConflicting()) << "the same key with another modifier";
    controller.tableViewWillDisplayCell(cell, "description", 7);
    EXPECT_EQ(cell.stringValue(), "");
}

TEST_F(QMShortcutKeyTableDelegateTest, saysWhichShortcutsAreInConflict) {
    writeWatchList({ownEntry("open", 71, 4096), ownEntry("close", 71, 4096)});
    showPane();
    EXPECT_EQ(pane.conflicts, "Ctrl+F5 is the shortcut of “Open a file” and “Close the window”.");
    pane.selection = 2;
    press({.keyCode = 71, .ctrl = true});
    EXPECT_EQ(pane.conflicts,
              "Ctrl+F5 is the shortcut of “Open a file”, “Close the window” and “Print the "
              "report”.");
    press({.keyCode = 72});
    pane.selection = 0;
    press({.keyCode = 72});
    EXPECT_EQ(pane.conflicts, "F6 is the shortcut of “Open a file” and “Print the report”.");
    controller.clearShortcutKey();
    EXPECT_EQ(pane.conflicts, "");
}

TEST_F(QMShortcutKeyTableDelegateTest, takesNoOtherApplicationsKeyForAConflict) {
    writeWatchList({ownEntry("open", 71, 0), entry("com.example.Other", "close", 71, 0)});
    showPane();
    EXPECT_EQ(pane.conflicts, "");
}

TEST_F(QMShortcutKeyTableDelegateTest, givesTheSelectedRowTheKeyThatIsPressed) {
    const auto program = installManager();
    showPane();
    pane.selection = 1;
    press({.keyCode = 71, .shift = true, .ctrl = true});
    EXPECT_THAT(keyNames(), ElementsAre("(none)", "Ctrl+Shift+F5", "(none)"));
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("close", 71, 4096 + 512)));
    EXPECT_THAT(program.takeArguments(), ElementsAre("-setup"));
}

TEST_F(QMShortcutKeyTableDelegateTest, givesAKeyWithoutANameAllTheSame) {
    const auto program = installManager();
    showPane();
    press({.keyCode = 93});
    EXPECT_EQ(value("keyname", 0), "Unknown");
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("open", 93, 0)));
}

TEST_F(QMShortcutKeyTableDelegateTest, givesNothingWhereNoRowIsSelected) {
    const auto program = installManager();
    showPane();
    for (const std::optional<std::size_t> row : {std::optional<std::size_t>(), {7}}) {
        pane.selection = row;
        press({.keyCode = 71});
        EXPECT_TRUE(pane.keyDown("\b"));
    }
    EXPECT_FALSE(test::exists(watchList));
    EXPECT_FALSE(program.wasRun());
}

TEST_F(QMShortcutKeyTableDelegateTest, hasOneEntryForACommandAtMost) {
    const auto program = installManager();
    writeWatchList({ownEntry("open", 1, 0), entry("com.example.Other", "open", 2, 0)});
    showPane();
    press({.keyCode = 71});
    press({.keyCode = 72});
    EXPECT_THAT(storedEntries(),
                ElementsAre(entry("com.example.Other", "open", 2, 0), ownEntry("open", 72, 0)));
}

TEST_F(QMShortcutKeyTableDelegateTest, takesTheSelectedRowsKeyAwayForTheDeleteKey) {
    writeWatchList({ownEntry("open", 71, 0), ownEntry("close", 72, 0)});
    const auto program = installManager();
    showPane();
    int reloads = 0;
    const NotificationCenter::Observation observation(
        "QMShortcutKeysReload", [&](const NotificationCenter::UserInfo&) { ++reloads; });
    EXPECT_TRUE(pane.keyDown("\b"));
    EXPECT_THAT(keyNames(), ElementsAre("(none)", "F6", "(none)"));
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("close", 72, 0)));
    EXPECT_EQ(reloads, 1);
    EXPECT_THAT(program.takeArguments(), ElementsAre("-setup"));
}

TEST_F(QMShortcutKeyTableDelegateTest, writesTheListThenReportsItThenRunsTheManager) {
    const auto program = installManager();
    bool wasWritten = false;
    bool wasRun = true;
    const NotificationCenter::Observation observation(
        "QMShortcutKeysReload", [&](const NotificationCenter::UserInfo&) {
            wasWritten = storedEntries() == Array{ownEntry("open", 71, 4096 + 512)};
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            wasRun = program.wasRun();
        });
    EXPECT_TRUE(assign("open"));
    EXPECT_TRUE(wasWritten);
    EXPECT_FALSE(wasRun);
    EXPECT_THAT(program.takeArguments(), ElementsAre("-setup"));
}

TEST_F(QMShortcutKeyTableDelegateTest, writesTheListWithoutAManagerToo) {
    int reloads = 0;
    const NotificationCenter::Observation observation(
        "QMShortcutKeysReload", [&](const NotificationCenter::UserInfo&) { ++reloads; });
    test::ConsoleCapture console;
    EXPECT_TRUE(assign("open"));
    EXPECT_THAT(console.lines(), ElementsAre(kMissingManager));
    EXPECT_EQ(reloads, 1);
    EXPECT_THAT(storedEntries(), ElementsAre(ownEntry("open", 71, 4096 + 512)));
}

TEST_F(QMShortcutKeyTableDelegateTest, writesCommandsByTheirParameters) {
    EXPECT_TRUE(assign(std::nullopt, Array{"a"}));
    EXPECT_TRUE(assign(std::nullopt, Array{"a"}));
    const List stored = List(Dictionary{{"bundleid", "com.example.Cutter"},
                                        {"commandparams", List(Array{"a"})},
                                        {"keycode", 71},
                                        {"modifiers", 4096 + 512}});
    EXPECT_THAT(storedEntries(), ElementsAre(stored));
}

TEST_F(QMShortcutKeyTableDelegateTest, writesNothingForNoCommand) {
    EXPECT_FALSE(assign(std::nullopt));
    EXPECT_FALSE(test::exists(watchList));
}

TEST_F(QMShortcutKeyTableDelegateTest, keepsTheOldKeyWhenTheListCannotBeWritten) {
    writeWatchList({ownEntry("open", 71, 0)});
    const auto program = installManager();
    showPane();
    int reloads = 0;
    const NotificationCenter::Observation observation(
        "QMShortcutKeysReload", [&](const NotificationCenter::UserInfo&) { ++reloads; });
    fs::permissions(preferences, fs::perms(0500));
    press({.keyCode = 72});
    EXPECT_EQ(value("keyname", 0), "F5");
    EXPECT_THAT(pane.failure, HasSubstr("permission denied"));
    EXPECT_TRUE(log.contains(pane.failure));
    EXPECT_TRUE(pane.keyDown("\b"));
    EXPECT_EQ(value("keyname", 0), "F5");
    fs::permissions(preferences, fs::perms(0700));
    EXPECT_EQ(reloads, 0);
    EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(20)));
    EXPECT_FALSE(program.wasRun());
    press({.keyCode = 72});
    EXPECT_EQ(value("keyname", 0), "F6");
    EXPECT_EQ(pane.failure, "");
}

TEST_F(QMShortcutKeyTableDelegateTest, namesKeysInTheLayoutInUse) {
    EXPECT_EQ(QMShortcutKeyTableDelegate::nameForKeyCode(24, 4096), "Ctrl+Q");
    EXPECT_EQ(QMShortcutKeyTableDelegate::stringForKeyCode(24, 512), "Q");
    const test::ChosenKeyboard french("fr");
    EXPECT_EQ(QMShortcutKeyTableDelegate::nameForKeyCode(24, 4096), "Ctrl+A");
    EXPECT_EQ(QMShortcutKeyTableDelegate::stringForKeyCode(24, 0), "a");
}

}  // namespace
}  // namespace vornic
