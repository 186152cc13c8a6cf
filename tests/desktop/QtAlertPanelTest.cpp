#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <optional>
#include <thread>

#include "desktop/DocumentMainWindow.h"
#include "desktop/Sheet.h"
#include "platform/settings/UserPreferences.h"
#include "platform/threads/MainThread.h"
#include "tests/desktop/DesktopTest.h"
#include "ui/alerts/QMAlert.h"

namespace vornic::test {
namespace {

QMessageBox* shownBox() {
    for (QWidget* const widget : QApplication::allWidgets()) {
        auto* const box = qobject_cast<QMessageBox*>(widget);
        if (box != nullptr && box->isVisible()) {
            return box;
        }
    }
    return nullptr;
}

QPushButton* buttonNamed(const QMessageBox& box, const QString& title) {
    for (QAbstractButton* const button : box.buttons()) {
        if (button->text().remove(u'&') == title) {
            return qobject_cast<QPushButton*>(button);
        }
    }
    return nullptr;
}

class QtAlertPanelTest : public DesktopTest {
  protected:
    // Asks on the main thread and does something with the alert as soon as it is there.
    static std::int64_t askAnd(const std::function<void(QMessageBox&)>& act,
                               const QMAlert::Window& window = nullptr) {
        platform::MainThread::performAfter(std::chrono::milliseconds(10), [act] {
            ASSERT_NE(shownBox(), nullptr);
            act(*shownBox());
        });
        return QMAlert::alertSheetWithMessageText("Message", "Yes", "No", "Perhaps", "100 %d",
                                                  window, true);
    }

    static std::int64_t answerWith(const QString& title) {
        return askAnd([&title](QMessageBox& box) {
            QPushButton* const button = buttonNamed(box, title);
            ASSERT_NE(button, nullptr);
            button->click();
        });
    }
};

TEST_F(QtAlertPanelTest, givesEachButtonItsAnswer) {
    EXPECT_EQ(answerWith(QStringLiteral("Yes")), 1);
    EXPECT_EQ(answerWith(QStringLiteral("No")), 0);
    EXPECT_EQ(answerWith(QStringLiteral("Perhaps")), -1);
    EXPECT_EQ(shownBox(), nullptr);
}

TEST_F(QtAlertPanelTest, comesOverItsOwnWindowWhereItIsFreeStanding) {
    constexpr int kFrame = 40;
    const auto makeWindow = [this](const char* name, QPoint place) {
        const auto document = Document::create();
        document->setFilePath(sandbox.path(name));
        auto window = std::make_shared<DocumentMainWindow>(document, DocumentMainWindow::Actions{});
        window->setGeometry(QRect(place, QSize(500, 350)));
        window->show();
        return window;
    };
    const auto own = makeWindow("own.xml", QPoint(20, 20));
    const auto other = makeWindow("other.xml", QPoint(280, 240));
    other->activateWindow();
    ASSERT_TRUE(waitUntil([&] { return other->isActiveWindow(); }));
    const auto expectOverOwn = [&](QMessageBox& box) {
        EXPECT_EQ(box.windowModality(), Qt::NonModal);
        EXPECT_NEAR(box.geometry().center().x(), own->geometry().center().x(), kFrame);
        EXPECT_NEAR(box.geometry().center().y(), own->geometry().center().y(), kFrame);
        box.close();
    };
    {
        const AlertPlace place(own);
        askAnd(expectOverOwn);
    }
    // A window that has a sheet takes no other one.
    QDialog sheet(own.get());
    beginSheet(sheet);
    askAnd(expectOverOwn, own);
    sheet.hide();
    // What has failed names the file of that window.
    const AlertPlace place(own);
    platform::MainThread::performAfter(std::chrono::milliseconds(10), [&] {
        ASSERT_NE(shownBox(), nullptr);
        EXPECT_EQ(shownBox()->windowTitle(), QStringLiteral("own.xml"));
        shownBox()->close();
    });
    QMAlert::alertSheetWithMessageText("Unable to save file", "why", nullptr);
}

TEST_F(QtAlertPanelTest, showsTheTextsAsTheyAre) {
    EXPECT_EQ(askAnd([](QMessageBox& box) {
                  EXPECT_EQ(box.text(), QStringLiteral("Message"));
                  EXPECT_EQ(box.informativeText(), QStringLiteral("100 %d"));
                  EXPECT_EQ(box.textFormat(), Qt::PlainText);
                  EXPECT_EQ(box.defaultButton(), buttonNamed(box, QStringLiteral("Yes")));
                  buttonNamed(box, QStringLiteral("Yes"))->click();
              }),
              1);
}

TEST_F(QtAlertPanelTest, wrapsNamesThatAreLongerThanALine) {
    const std::string path = "/tmp/" + std::string(250, 'x') + ".xml";
    platform::MainThread::performAfter(std::chrono::milliseconds(10), [&path] {
        ASSERT_NE(shownBox(), nullptr);
        EXPECT_LT(shownBox()->width(), 800);
        QString text = shownBox()->informativeText();
        EXPECT_EQ(text.remove(QChar(0x200B)).toStdString(), path);
        QTest::keyClick(shownBox(), Qt::Key_Return);
    });
    EXPECT_EQ(QMAlert::alertSheetWithMessageText("Message", path, nullptr), 1);
}

TEST_F(QtAlertPanelTest, takesEscapeForTheAlternateButton) {
    EXPECT_EQ(askAnd([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }), 0);
}

TEST_F(QtAlertPanelTest, hasOneStandardButtonWithoutTitles) {
    platform::MainThread::performAfter(std::chrono::milliseconds(10), [] {
        ASSERT_NE(shownBox(), nullptr);
        EXPECT_EQ(shownBox()->buttons().size(), 1);
        QTest::keyClick(shownBox(), Qt::Key_Return);
    });
    EXPECT_EQ(QMAlert::alertSheetWithMessageText("Message", "", nullptr), 1);
}

TEST_F(QtAlertPanelTest, isASheetOnAWindow) {
    const auto document = Document::create();
    const auto window =
        std::make_shared<DocumentMainWindow>(document, DocumentMainWindow::Actions());
    window->show();
    EXPECT_FALSE(window->hasAttachedSheet());
    EXPECT_EQ(askAnd(
                  [&window](QMessageBox& box) {
                      EXPECT_TRUE(window->hasAttachedSheet());
                      EXPECT_EQ(box.parentWidget(), window.get());
                      EXPECT_EQ(box.windowModality(), Qt::WindowModal);
                      buttonNamed(box, QStringLiteral("No"))->click();
                  },
                  window),
              0);
    EXPECT_FALSE(window->hasAttachedSheet());
}

TEST_F(QtAlertPanelTest, standsByItselfWhereASheetIsAlready) {
    const auto document = Document::create();
    const auto window =
        std::make_shared<DocumentMainWindow>(document, DocumentMainWindow::Actions());
    window->show();
    window->beginProgressSheet();
    EXPECT_EQ(askAnd(
                  [](QMessageBox& box) {
                      EXPECT_EQ(box.parentWidget(), nullptr);
                      EXPECT_EQ(box.windowModality(), Qt::NonModal);
                      buttonNamed(box, QStringLiteral("Yes"))->click();
                  },
                  window),
              1);
    window->endProgressSheet();
}

TEST_F(QtAlertPanelTest, isAskedFromAnotherThread) {
    std::optional<std::int64_t> answer;
    std::thread other([&answer] {
        answer = QMAlert::alertSheetWithMessageText("Message", "Yes", "No", std::nullopt, "",
                                                    nullptr, true);
        platform::MainThread::perform([] {});
    });
    EXPECT_TRUE(waitUntil([] { return shownBox() != nullptr; }));
    buttonNamed(*shownBox(), QStringLiteral("No"))->click();
    EXPECT_TRUE(waitUntil([] { return shownBox() == nullptr; }));
    EXPECT_TRUE(waitUntil([&answer] { return answer.has_value(); }));
    other.join();
    EXPECT_EQ(answer, 0);
}

TEST_F(QtAlertPanelTest, answersItselfAfterItsTime) {
    EXPECT_EQ(QMAlert::timedAlertSheetWithMessageText("Message", "Yes", "No", std::nullopt, "",
                                                      nullptr, 1),
              1);
    EXPECT_EQ(shownBox(), nullptr);
}

TEST_F(QtAlertPanelTest, isGoneOnceAnAlertIsAnsweredThatNobodyWaitsFor) {
    auto object = std::make_shared<QMAlert>();
    const std::weak_ptr<QMAlert> alert = object;
    EXPECT_EQ(QMAlert::alertSheetWithMessageText("Message", "Yes", "No", std::nullopt, "", nullptr,
                                                 nullptr, std::nullopt, false, object),
              -1);
    object.reset();
    ASSERT_NE(shownBox(), nullptr);
    ASSERT_FALSE(alert.expired());
    buttonNamed(*shownBox(), QStringLiteral("No"))->click();
    EXPECT_TRUE(alert.expired());
}

TEST_F(QtAlertPanelTest, writesTheSuppressionAtOnce) {
    const platform::UserPreferences preferences;
    platform::MainThread::performAfter(std::chrono::milliseconds(10), [&preferences] {
        ASSERT_NE(shownBox(), nullptr);
        auto* const tick = qobject_cast<QCheckBox*>(shownBox()->checkBox());
        ASSERT_NE(tick, nullptr);
        EXPECT_FALSE(tick->isChecked());
        tick->click();
        const auto stored = preferences.value("quiet");
        ASSERT_TRUE(stored.has_value());
        EXPECT_EQ(*stored, platform::PropertyList(platform::PropertyList::Value(true)));
        QTest::keyClick(shownBox(), Qt::Key_Return);
    });
    EXPECT_EQ(
        QMAlert::alertSheetWithMessageText("Message", std::nullopt, std::nullopt, std::nullopt, "",
                                           nullptr, nullptr, std::nullopt, true, nullptr, "quiet"),
        1);
}

}  // namespace
}  // namespace vornic::test
