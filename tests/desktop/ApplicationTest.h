#ifndef VORNIC_TESTS_DESKTOP_APPLICATION_TEST_H
#define VORNIC_TESTS_DESKTOP_APPLICATION_TEST_H

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QTest>
#include <string>

#include <gtest/gtest.h>

#include "desktop/Application.h"
#include "platform/settings/UserPreferences.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/ProjectTexts.h"

namespace vornic::test {

/// A widget of a kind that is on the screen, or null.
template <typename Widget>
Widget* visible() {
    for (QWidget* const widget : QApplication::allWidgets()) {
        auto* const found = dynamic_cast<Widget*>(widget);
        if (found != nullptr && found->isVisible()) {
            return found;
        }
    }
    return nullptr;
}

/// Base class of tests of the application with real documents.
class ApplicationTest : public DesktopTest {
  protected:
    ApplicationTest() { showOpenPanelAtStart(false); }
    ~ApplicationTest() override {
        application.finish();
        settle();
    }

    void showOpenPanelAtStart(bool shows) {
        ErrorSlot error;
        EXPECT_TRUE(platform::UserPreferences().setValue(AppController::kShowOpenDialogPreference,
                                                         shows ? 1 : 0, error));
    }

    // Opens a file and waits for the end of its repair; the alert is answered.
    DocumentMainWindow* opened(const std::string& path) {
        EXPECT_TRUE(application.openDocument(path));
        DocumentMainWindow* const window = application.currentWindow();
        auto* const outcome = window->findChild<QLabel*>(QStringLiteral("outcomeLabel"));
        EXPECT_TRUE(waitUntil(
            [&] { return !outcome->text().isEmpty() && visible<QMessageBox>() != nullptr; }));
        QTest::keyClick(visible<QMessageBox>(), Qt::Key_Return);
        return window;
    }

    static QAction* action(const QWidget& window, const char* id) {
        auto* const found = window.findChild<QAction*>(QString::fromLatin1(id));
        EXPECT_NE(found, nullptr) << id;
        return found;
    }

    template <typename Widget>
    static Widget* child(const QWidget& parent, const char* name) {
        auto* const found = parent.findChild<Widget*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    // A window or sheet of a kind, once it is on the screen.
    template <typename Sheet>
    static Sheet* waitFor() {
        EXPECT_TRUE(waitUntil([] { return visible<Sheet>() != nullptr; }));
        return visible<Sheet>();
    }

    Application application;
};

}  // namespace vornic::test

#endif
