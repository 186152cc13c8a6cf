#include <QLabel>
#include <QToolTip>
#include <set>
#include <string>

#include "tests/desktop/ApplicationTest.h"

// Texts that come from files are shown as they are, by every label there is.

namespace vornic::test {
namespace {

class LabelsTest : public ApplicationTest {
  protected:
    // Tool tips, whose texts are made for them, and the pictures of alerts.
    static bool isToolkits(const QString& name) {
        return name == QStringLiteral("qtooltip_label") ||
               name == QStringLiteral("qt_msgboxex_icon_label");
    }

    // The labels of all windows.
    static std::set<std::string> expectPlainLabels() {
        std::set<std::string> windows;
        for (const QWidget* const widget : QApplication::allWidgets()) {
            const auto* const label = qobject_cast<const QLabel*>(widget);
            if (label != nullptr && !isToolkits(label->objectName())) {
                EXPECT_EQ(label->textFormat(), Qt::PlainText)
                    << label->window()->objectName().toStdString() << ": "
                    << label->objectName().toStdString() << " " << label->text().toStdString();
                windows.insert(label->window()->objectName().toStdString());
            }
        }
        return windows;
    }
};

TEST_F(LabelsTest, takeNoTextForMarkup) {
    application.launch({});
    DocumentMainWindow* const window = opened(sandbox.write("<b>cut.xml", kSound));
    window->document()->showConvertDialog();
    window->document()->displayAlert("<b>bold", "a <link> to nothing");
    application.showPreferences();
    application.showAboutPanel();
    const std::set<std::string> windows = expectPlainLabels();
    for (const char* const name : {"startWindow", "windowMain", "windowProgress", "windowConvert",
                                   "alert", "preferencesWindow", "aboutWindow"}) {
        EXPECT_TRUE(windows.contains(name)) << name;
    }
}

TEST_F(LabelsTest, ofAnAlertShowWhatLooksLikeMarkup) {
    application.launch({});
    EXPECT_FALSE(application.openDocument(sandbox.path("<i>gone</i>.xml")));
    const auto* const alert = visible<QMessageBox>();
    ASSERT_NE(alert, nullptr);
    const auto* const below =
        alert->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
    ASSERT_NE(below, nullptr);
    EXPECT_EQ(below->textFormat(), Qt::PlainText);
    EXPECT_TRUE(below->text().contains(QStringLiteral("<i>gone</i>.xml")));
    visible<QMessageBox>()->close();
}

}  // namespace
}  // namespace vornic::test
