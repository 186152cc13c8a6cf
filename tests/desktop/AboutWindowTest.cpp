#include <QLabel>
#include <QPixmap>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextCursor>
#include <QTextEdit>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "desktop/AboutWindow.h"
#include "platform/settings/Bundle.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

/// The about panel of a bundle of the test's own.
class AboutWindowTest : public DesktopTest {
  protected:
    AboutWindowTest() {
        platform::Bundle::setMainBundle(platform::Bundle(sandbox.path("Vornic.app")));
        write("Info.plist",
              "<plist><dict><key>CFBundleExecutable</key><string>Vornic</string>"
              "<key>CFBundleShortVersionString</key><string>2.1</string>"
              "<key>CFBundleVersion</key><string>347</string></dict></plist>");
    }
    ~AboutWindowTest() override { platform::Bundle::setMainBundle(std::nullopt); }

    void write(const std::string& name, std::string_view bytes) const {
        std::filesystem::create_directories(sandbox.path("Vornic.app/Contents/Resources"));
        static_cast<void>(sandbox.write("Vornic.app/Contents/" + name, bytes));
    }
    template <typename Widget>
    static Widget& child(const AboutWindow& window, const char* objectName) {
        auto* const found = window.findChild<Widget*>(QString::fromLatin1(objectName));
        EXPECT_NE(found, nullptr) << objectName;
        return *found;
    }
};

TEST_F(AboutWindowTest, showsNameAndVersions) {
    const AboutWindow window;
    EXPECT_EQ(window.windowTitle(), QStringLiteral("About Vornic"));
    EXPECT_EQ(child<QLabel>(window, "appNameLabel").text(), QStringLiteral("Vornic"));
    EXPECT_EQ(child<QLabel>(window, "verLabel").text(),
              QStringLiteral("2.1 (347)\n\nBrindle Tools  ()"));
}

TEST_F(AboutWindowTest, showsTheCreditsFromTheirBeginning) {
    std::string rtf = R"({\rtf1 \b Thanks\b0  to all)";
    for (int line = 0; line < 200; ++line) {
        rtf += "\\\nline";
    }
    write("Resources/Credits.rtf", rtf + "}");
    AboutWindow window;
    window.show();
    EXPECT_TRUE(child<QScrollArea>(window, "creditsScrollView").isVisible());
    EXPECT_GT(window.height(), 250);
    auto& credits = child<QTextEdit>(window, "creditsTextView");
    EXPECT_TRUE(credits.toPlainText().startsWith(QStringLiteral("Thanks to all\nline\nline\n")));
    EXPECT_TRUE(credits.isReadOnly());
    EXPECT_TRUE(waitUntil([&credits] { return credits.verticalScrollBar()->maximum() > 0; }));
    EXPECT_EQ(credits.verticalScrollBar()->value(), 0);
    QTextCursor cursor(credits.document());
    cursor.setPosition(3);
    EXPECT_EQ(cursor.charFormat().fontWeight(), QFont::Bold);
    cursor.setPosition(10);
    EXPECT_EQ(cursor.charFormat().fontWeight(), QFont::Normal);
}

TEST_F(AboutWindowTest, shrinksTo250PointsWithoutCredits) {
    AboutWindow window;
    const int width = window.width();
    window.show();
    EXPECT_FALSE(child<QScrollArea>(window, "creditsScrollView").isVisible());
    EXPECT_EQ(window.height(), 250);
    EXPECT_EQ(window.width(), width);
}

TEST_F(AboutWindowTest, showsTheIconOfTheApplication) {
    QPixmap red(64, 64);
    red.fill(Qt::red);
    const QIcon before = QApplication::windowIcon();
    QApplication::setWindowIcon(red);
    const AboutWindow window;
    QApplication::setWindowIcon(before);
    const QPixmap shown = child<QLabel>(window, "appIconView").pixmap(Qt::ReturnByValue);
    ASSERT_FALSE(shown.isNull());
    EXPECT_EQ(shown.toImage().pixelColor(shown.width() / 2, shown.height() / 2), QColor(Qt::red));
}

}  // namespace
}  // namespace vornic::test
