#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <filesystem>
#include <memory>
#include <set>
#include <string>

#include "desktop/PreferencesWindow.h"
#include "desktop/ShortcutKeyTable.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "platform/threads/Thread.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/fakes/ChosenKeyboard.h"
#include "tests/support/programs/StandInProgram.h"
#include "ui/shortcuts/ShortcutWatchList.h"

// The pane of the shortcut keys in the preferences, with key events as a display would send them.

namespace vornic::test {
namespace {

constexpr quint32 kF5Code = 71;
constexpr quint32 kACode = 38;

class ShortcutKeysTest : public DesktopTest {
  protected:
    ~ShortcutKeysTest() override {
        window.reset();
        platform::joinDetachedThreads(std::chrono::seconds(20));
    }

    // Opens the preferences at their second pane.
    void open() {
        window = std::make_unique<PreferencesWindow>([](CheckBoxItem&) {});
        window->show();
        QApplication::setActiveWindow(window.get());
        EXPECT_TRUE(waitUntil([this] { return window->isActiveWindow(); }));
        panes().setCurrentIndex(1);
        EXPECT_TRUE(waitUntil([this] { return table().isVisible(); }));
    }
    [[nodiscard]] QTabWidget& panes() const {
        return *window->findChild<QTabWidget*>(QStringLiteral("preferencesPanes"));
    }
    [[nodiscard]] ShortcutKeyTable& table() const {
        return *dynamic_cast<ShortcutKeyTable*>(
            window->findChild<QTableView*>(QStringLiteral("shortcutKeyTable")));
    }
    [[nodiscard]] QLabel& label(const char* name) const {
        return *window->findChild<QLabel*>(QString::fromLatin1(name));
    }
    [[nodiscard]] QPushButton& button(const char* name) const {
        return *window->findChild<QPushButton*>(QString::fromLatin1(name));
    }
    // The editor in a cell, without those that are on their way out.
    [[nodiscard]] QWidget* capture() const {
        for (QLineEdit* const each :
             window->findChildren<QLineEdit*>(QStringLiteral("shortcutKeyCapture"))) {
            if (each->isVisible()) {
                return each;
            }
        }
        return nullptr;
    }
    [[nodiscard]] QString cell(int row, int column, int role = Qt::DisplayRole) const {
        return table().model()->index(row, column).data(role).toString();
    }
    [[nodiscard]] QString shortcut(int row) const { return cell(row, ShortcutKeyModel::keyColumn); }
    // A press and a release as the display reports them.
    static void press(QWidget& widget, int key, quint32 code, Qt::KeyboardModifiers held = {},
                      quint32 symbol = 0) {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, held, code, symbol, 0);
            QApplication::sendEvent(&widget, &event);
        }
    }
    void assign(int row, int key, quint32 code, Qt::KeyboardModifiers held = {}) const {
        table().selectRow(row);
        table().setFocus();
        QTest::keyClick(&table(), Qt::Key_Return);
        ASSERT_NE(capture(), nullptr);
        press(*capture(), key, code, held);
        EXPECT_TRUE(waitUntil([this] { return capture() == nullptr; }));
    }
    [[nodiscard]] static ShortcutWatchList::Array entries() {
        ErrorSlot error;
        return ShortcutWatchList::entries(error).value_or(ShortcutWatchList::Array());
    }

    ChosenKeyboard keyboard{"us"};
    StandInProgram manager{sandbox.home() +
                               "/.local/share/quillmark/Application Support/Quillmark/"
                               "Shared Resources/QMShortcutKeyManager",
                           sandbox.path("arguments")};
    std::unique_ptr<PreferencesWindow> window;
};

TEST_F(ShortcutKeysTest, listsTheApplicationsCommands) {
    open();
    EXPECT_EQ(table().model()->rowCount(), 47);
    EXPECT_EQ(cell(0, 0), QStringLiteral("Open a file"));
    EXPECT_EQ(shortcut(0), QString());
    EXPECT_EQ(table().selectedRow(), 0U);
    EXPECT_TRUE(label("managerNotice").isHidden());
    EXPECT_TRUE(label("conflictLabel").isHidden());
    EXPECT_TRUE(label("shortcutFailureLabel").isHidden());
}

TEST_F(ShortcutKeysTest, takesTheKeyThatIsPressedInTheCell) {
    open();
    assign(1, Qt::Key_F5, kF5Code, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(shortcut(1), QStringLiteral("Ctrl+Shift+F5"));
    ASSERT_EQ(entries().size(), 1U);
    EXPECT_EQ(entries().front(), platform::PropertyList(platform::PropertyList::Dictionary{
                                     {"bundleid", "com.quillmark.Vornic"},
                                     {"commandid", "fileSaveReport"},
                                     {"keycode", 71},
                                     {"modifiers", 4096 + 512}}));
    EXPECT_EQ(manager.takeArguments(), std::vector<std::string>{"-setup"});
    EXPECT_TRUE(table().hasFocus());
}

TEST_F(ShortcutKeysTest, takesAltAndSuperAsOptionAndCommand) {
    open();
    assign(0, Qt::Key_A, kACode, Qt::AltModifier | Qt::MetaModifier);
    EXPECT_EQ(shortcut(0), QStringLiteral("Alt+Cmd+A"));
    EXPECT_EQ(*entries().front().find("modifiers"), platform::PropertyList(2048 + 256));
}

TEST_F(ShortcutKeysTest, takesKeysThatMeanSomethingElsewhere) {
    open();
    assign(0, Qt::Key_Return, 36);
    EXPECT_EQ(shortcut(0), QStringLiteral("Enter"));
    assign(0, Qt::Key_W, 25, Qt::ControlModifier);
    EXPECT_EQ(shortcut(0), QStringLiteral("Ctrl+W"));
    assign(0, Qt::Key_Escape, 9, Qt::ControlModifier);
    EXPECT_EQ(shortcut(0), QStringLiteral("Ctrl+Escape"));
    assign(0, Qt::Key_Delete, 119, Qt::ControlModifier);
    EXPECT_EQ(shortcut(0), QStringLiteral("Ctrl+Delete"));
    assign(0, Qt::Key_unknown, 172);
    EXPECT_EQ(shortcut(0), QStringLiteral("XF86AudioPlay"));
    EXPECT_TRUE(window->isVisible());
}

TEST_F(ShortcutKeysTest, waitsForMoreThanTheKeysThatAreHeld) {
    open();
    table().beginCapture();
    for (const int key : {Qt::Key_Control, Qt::Key_Shift, Qt::Key_Alt, Qt::Key_Meta,
                          Qt::Key_Super_L, Qt::Key_AltGr, Qt::Key_CapsLock, Qt::Key_NumLock}) {
        press(*capture(), key, 37);
        ASSERT_NE(capture(), nullptr) << key;
    }
    for (const quint32 symbol : {0xFE08U, 0xFE0AU, 0xFE11U}) {
        press(*capture(), Qt::Key_unknown, 50, Qt::AltModifier, symbol);
        ASSERT_NE(capture(), nullptr) << "a key that switches the layout " << symbol;
    }
    press(*capture(), Qt::Key_A, 0);
    EXPECT_NE(capture(), nullptr) << "a key whose code the display does not tell";
    EXPECT_TRUE(entries().empty());
}

TEST_F(ShortcutKeysTest, leavesTheCellWithoutAChange) {
    open();
    assign(0, Qt::Key_F5, kF5Code);
    const auto leave = [this](int key, quint32 code, Qt::KeyboardModifiers held = {}) {
        table().beginCapture();
        ASSERT_NE(capture(), nullptr);
        press(*capture(), key, code, held);
        EXPECT_TRUE(waitUntil([this] { return capture() == nullptr; }));
        EXPECT_EQ(shortcut(0), QStringLiteral("F5"));
        EXPECT_TRUE(table().hasFocus());
        EXPECT_TRUE(window->isVisible());
    };
    leave(Qt::Key_Escape, 9);
    leave(Qt::Key_Tab, 23);
    leave(Qt::Key_Backtab, 23, Qt::ShiftModifier);
}

TEST_F(ShortcutKeysTest, leavesTheCellWhenTheUserGoesElsewhere) {
    open();
    table().beginCapture();
    ASSERT_NE(capture(), nullptr);
    button("changeShortcutBtn").setFocus();
    EXPECT_TRUE(waitUntil([this] { return capture() == nullptr; }));
    EXPECT_TRUE(entries().empty());
}

TEST_F(ShortcutKeysTest, clearsWithTheDeleteKeys) {
    open();
    for (const int key : {Qt::Key_Delete, Qt::Key_Backspace}) {
        assign(0, Qt::Key_F5, kF5Code);
        QTest::keyClick(&table(), static_cast<Qt::Key>(key));
        EXPECT_EQ(shortcut(0), QString());
        EXPECT_TRUE(entries().empty());
        assign(0, Qt::Key_F5, kF5Code);
        assign(0, key, 119);
        EXPECT_EQ(shortcut(0), QString()) << "in the cell, too";
    }
}

TEST_F(ShortcutKeysTest, canBeUsedByItsButtons) {
    open();
    table().selectRow(2);
    QTest::mouseClick(&button("changeShortcutBtn"), Qt::LeftButton);
    ASSERT_NE(capture(), nullptr);
    press(*capture(), Qt::Key_F5, kF5Code);
    EXPECT_EQ(shortcut(2), QStringLiteral("F5"));
    QTest::mouseClick(&button("clearShortcutBtn"), Qt::LeftButton);
    EXPECT_EQ(shortcut(2), QString());
}

TEST_F(ShortcutKeysTest, canBeUsedByItsButtonsAndTheKeyboard) {
    open();
    button("changeShortcutBtn").setFocus();
    QTest::keyClick(&button("changeShortcutBtn"), Qt::Key_Return);
    ASSERT_NE(capture(), nullptr);
    press(*capture(), Qt::Key_F5, kF5Code);
    EXPECT_EQ(shortcut(0), QStringLiteral("F5"));
    button("clearShortcutBtn").setFocus();
    QTest::keyClick(&button("clearShortcutBtn"), Qt::Key_Return);
    EXPECT_EQ(shortcut(0), QString());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(ShortcutKeysTest, closesWithEscapeAndReturnWhereNothingElseTakesThem) {
    open();
    QTest::keyClick(&table(), Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    window->show();
    panes().setCurrentIndex(0);
    QTest::keyClick(window.get(), Qt::Key_Return);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(ShortcutKeysTest, makesRoomForWhatThereIsToSay) {
    open();
    const QSize before = window->size();
    for (const int row : {0, 2, 4, 6, 8}) {
        assign(row, Qt::Key_F5, kF5Code);
    }
    QApplication::processEvents();
    EXPECT_EQ(window->size(), before);
    const QLabel& text = label("conflictLabel");
    EXPECT_FALSE(text.geometry().intersects(table().geometry()));
    EXPECT_GE(text.height(), text.heightForWidth(text.width()));
}

TEST_F(ShortcutKeysTest, beginsWithADoubleClick) {
    open();
    const QRect place = table().visualRect(table().model()->index(3, 0));
    QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, place.center());
    QTest::mouseDClick(table().viewport(), Qt::LeftButton, {}, place.center());
    ASSERT_NE(capture(), nullptr);
    EXPECT_EQ(table().selectedRow(), 3U);
}

TEST_F(ShortcutKeysTest, beginsWithTheKeysThatBeginEditing) {
    open();
    table().setFocus();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_F2}) {
        QTest::keyClick(&table(), key);
        ASSERT_NE(capture(), nullptr) << key;
        press(*capture(), Qt::Key_Escape, 9);
        EXPECT_TRUE(waitUntil([this] { return capture() == nullptr; }));
    }
}

TEST_F(ShortcutKeysTest, marksShortcutsThatTwoCommandsHave) {
    open();
    assign(0, Qt::Key_F5, kF5Code);
    assign(4, Qt::Key_F5, kF5Code);
    EXPECT_EQ(label("conflictLabel").text(),
              QStringLiteral("F5 is the shortcut of “Open a file” and “Close the window”."));
    EXPECT_TRUE(label("conflictLabel").isVisible());
    for (const int row : {0, 4}) {
        const QModelIndex index = table().model()->index(row, ShortcutKeyModel::keyColumn);
        EXPECT_FALSE(index.data(Qt::DecorationRole).isNull());
        EXPECT_TRUE(index.data(Qt::FontRole).value<QFont>().bold());
        EXPECT_TRUE(table().model()->index(row, 0).data(Qt::FontRole).isNull());
        EXPECT_EQ(cell(row, 1, Qt::AccessibleTextRole),
                  QStringLiteral("F5, also the shortcut of another command"));
    }
    EXPECT_TRUE(table().model()->index(1, 1).data(Qt::DecorationRole).isNull());
    assign(4, Qt::Key_F6, 72);
    EXPECT_TRUE(label("conflictLabel").isHidden());
    EXPECT_TRUE(table().model()->index(0, 1).data(Qt::DecorationRole).isNull());
}

TEST_F(ShortcutKeysTest, saysThatTheManagerIsMissingAndCannotBeEdited) {
    std::filesystem::remove_all(sandbox.home() + "/.local/share/quillmark/Application Support");
    open();
    EXPECT_TRUE(label("managerNotice").isVisible());
    EXPECT_TRUE(label("managerNotice").text().contains(QStringLiteral("reinstall")));
    const auto expectRefusal = [this](const char* way) {
        const auto* const alert = window->findChild<QMessageBox*>();
        ASSERT_NE(alert, nullptr) << way;
        EXPECT_TRUE(alert->informativeText().contains(QStringLiteral("manager is missing"))) << way;
        EXPECT_EQ(capture(), nullptr) << way;
        delete alert;
    };
    table().setFocus();
    QTest::keyClick(&table(), Qt::Key_Return);
    expectRefusal("Return");
    QTest::keyClick(&table(), Qt::Key_Delete);
    expectRefusal("Delete");
    button("changeShortcutBtn").click();
    expectRefusal("the button");
    button("clearShortcutBtn").click();
    expectRefusal("the other button");
    EXPECT_FALSE(exists(*ShortcutWatchList::path()));
    EXPECT_TRUE(table().isEnabled()) << "it can be read";
}

TEST_F(ShortcutKeysTest, saysWhyAShortcutCouldNotBeKept) {
    open();
    std::filesystem::create_directories(*ShortcutWatchList::path());
    assign(0, Qt::Key_F5, kF5Code);
    EXPECT_EQ(shortcut(0), QString());
    EXPECT_TRUE(label("shortcutFailureLabel").isVisible());
    EXPECT_TRUE(label("shortcutFailureLabel")
                    .text()
                    .contains(QStringLiteral("com.quillmark.shortcutkeys.plist")));
}

TEST_F(ShortcutKeysTest, readsTheListAnewWhenTheWindowIsShownAgain) {
    open();
    window->hide();
    ErrorSlot error;
    EXPECT_TRUE(ShortcutWatchList::assign(
        {.bundleId = "com.quillmark.Vornic", .id = "fileOpen", .params = std::nullopt},
        {.keyCode = kF5Code}, error));
    window->show();
    EXPECT_EQ(shortcut(0), QStringLiteral("F5"));
    EXPECT_EQ(panes().count(), 2) << "the pane is made once";
}

TEST_F(ShortcutKeysTest, isReachedByTheKeyboardInTheOrderOfTheWindow) {
    open();
    panes().tabBar()->setFocus();
    std::vector<QString> names;
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        names.push_back(QApplication::focusWidget()->objectName());
    }
    EXPECT_EQ(names[0], QStringLiteral("shortcutKeyTable"));
    EXPECT_EQ(names[1], QStringLiteral("changeShortcutBtn"));
    EXPECT_EQ(names[2], QStringLiteral("clearShortcutBtn"));
    const auto* const last = dynamic_cast<QPushButton*>(QApplication::focusWidget());
    ASSERT_NE(last, nullptr);
    EXPECT_TRUE(last->text().contains(QStringLiteral("Close")));
}

TEST_F(ShortcutKeysTest, warnsInItsRowOfAKeyThatIsTypedWith) {
    open();
    assign(0, Qt::Key_A, kACode);
    EXPECT_EQ(entries().size(), 1U) << "stored as given";
    EXPECT_TRUE(shortcut(0).endsWith(QStringLiteral("cannot be typed any more")));
    EXPECT_EQ(cell(0, ShortcutKeyModel::keyColumn, Qt::AccessibleTextRole), shortcut(0));
    assign(0, Qt::Key_A, kACode, Qt::AltModifier);
    EXPECT_FALSE(shortcut(0).contains(QStringLiteral("typed")));
}

TEST_F(ShortcutKeysTest, hasANameForWhateverTakesTheFocus) {
    open();
    table().beginCapture();
    for (QWidget* const widget :
         {static_cast<QWidget*>(&table()), static_cast<QWidget*>(&button("changeShortcutBtn")),
          static_cast<QWidget*>(&button("clearShortcutBtn")), capture()}) {
        ASSERT_NE(widget, nullptr);
        EXPECT_FALSE(
            QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).isEmpty())
            << widget->objectName().toStdString();
    }
    EXPECT_EQ(cell(0, 1, Qt::AccessibleTextRole), QStringLiteral("no shortcut"));
}

}  // namespace
}  // namespace vornic::test
