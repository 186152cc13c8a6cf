#include <QAbstractButton>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QtGlobal>
#include <string>

#include "desktop/Application.h"
#include "desktop/MainMenu.h"
#include "platform/settings/UserPreferences.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

// The underlined letters, which must differ from each other where they can be typed.
class Mnemonics {
  public:
    void add(const QString& text) {
        const QKeySequence key = QKeySequence::mnemonic(text);
        if (!key.isEmpty()) {
            EXPECT_FALSE(keys_.contains(key)) << text.toStdString();
            keys_.append(key);
        }
    }
    [[nodiscard]] qsizetype count() const { return keys_.size(); }

  private:
    QList<QKeySequence> keys_;
};

void addWidgets(const QWidget& window, Mnemonics& mnemonics) {
    for (const auto* const button : window.findChildren<QAbstractButton*>()) {
        mnemonics.add(button->text());
    }
    for (const auto* const label : window.findChildren<QLabel*>()) {
        if (label->buddy() != nullptr) {
            mnemonics.add(label->text());
        }
    }
}

class MainMenuTest : public DesktopTest {
  protected:
    MainMenuTest() {
        ErrorSlot error;
        EXPECT_TRUE(platform::UserPreferences().setValue(AppController::kShowOpenDialogPreference,
                                                         0, error));
    }
    ~MainMenuTest() override {
        application.finish();
        settle();
    }

    Application application;
};

TEST_F(MainMenuTest, hasNoTwoCommandsUnderOneLetter) {
    application.launch({});
    StartWindow start([] {}, [](const std::string&) {});
    makeMainMenu(start, application);
    Mnemonics window;
    addWidgets(*start.centralWidget(), window);
    for (const QAction* const menu : start.menuBar()->actions()) {
        window.add(menu->text());
        Mnemonics commands;
        for (const QAction* const command : menu->menu()->actions()) {
            commands.add(command->text());
        }
        EXPECT_GT(commands.count(), 0) << menu->text().toStdString();
    }
    EXPECT_EQ(window.count(), 9);
}

TEST_F(MainMenuTest, hasNoMenuUnderALetterOfTheDocumentsWindow) {
    application.launch({});
    const auto document = Document::create();
    DocumentMainWindow documents(document, {});
    makeMainMenu(documents, application);
    Mnemonics window;
    addWidgets(*documents.centralWidget(), window);
    for (const QAction* const menu : documents.menuBar()->actions()) {
        window.add(menu->text());
    }
    EXPECT_EQ(window.count(), 20);
}

}  // namespace
}  // namespace vornic::test
