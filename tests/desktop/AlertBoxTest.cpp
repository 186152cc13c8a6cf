#include <QImage>
#include <QMessageBox>
#include <QPixmap>
#include <algorithm>

#include "desktop/AlertBox.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

// How many points of a picture are of a green that nobody takes for anything else.
int greenPoints(const QPixmap& pixmap) {
    const QImage image = pixmap.toImage();
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            constexpr int kMore = 40;
            const QColor color = image.pixelColor(x, y);
            count +=
                color.alpha() > kMore && color.green() > std::max(color.red(), color.blue()) + kMore
                    ? 1
                    : 0;
        }
    }
    return count;
}

class AlertBoxTest : public DesktopTest {
  protected:
    AlertBoxTest() {
        QPixmap tick(48, 48);
        tick.fill(Qt::green);
        QApplication::setWindowIcon(tick);
    }
    ~AlertBoxTest() override { QApplication::setWindowIcon(QIcon()); }

    // The sign of an alert, as it is shown on a window.
    static QPixmap signOf(const QString& headline) {
        QMessageBox box;
        prepareAlertBox(box, headline, QString());
        if (tellsFailure(headline)) {
            markAsFailure(box, QString());
        }
        return box.iconPixmap();
    }
};

TEST_F(AlertBoxTest, hasNoGreenTickBesideAFailure) {
    for (const char* const headline :
         {"Unable to repair file", "Unable to convert file", "Unable to locate file",
          "Error reading file", "Version not set", "The mends cannot be made",
          "The file cannot be converted to another version of FCPXML", "No editor could be opened",
          "The document “cut.xml” could not be opened.", "The folder could not be shown.",
          "The file “cut.txt” cannot be chosen.", "The preference could not be saved."}) {
        EXPECT_EQ(greenPoints(signOf(QString::fromUtf8(headline))), 0) << headline;
    }
}

TEST_F(AlertBoxTest, keepsTheSignOfTheApplicationElsewhere) {
    for (const char* const headline :
         {"No repair was necessary", "The file was repaired successfully", "Operation cancelled",
          "There is nothing to mend", "Nothing is selected"}) {
        EXPECT_GT(greenPoints(signOf(QString::fromUtf8(headline))), 1000) << headline;
    }
}

}  // namespace
}  // namespace vornic::test
