#include <QAccessible>
#include <QComboBox>
#include <QHelpEvent>
#include <QImage>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>
#include <fstream>
#include <string>

#include "check/Check.h"
#include "desktop/timeline/TimelineExport.h"
#include "picture/TimelineSVG.h"
#include "tests/desktop/ApplicationTest.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

// A project with a hole before "late", and a compound clip over "late".
const std::string kProject =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n"
    "<fcpxml version=\"1.10\"><resources>\n"
    "<format id=\"r1\" frameDuration=\"1001/30000s\"/>\n"
    "<media id=\"r2\" name=\"Inner\"><sequence format=\"r1\"><spine>\n"
    "<gap name=\"inside\" offset=\"0s\" duration=\"60060/30000s\"/>\n"
    "</spine></sequence></media></resources>\n"
    "<project name=\"Main\"><sequence format=\"r1\" tcFormat=\"DF\"><spine>\n"
    "<gap name=\"early\" offset=\"0s\" duration=\"60060/30000s\"/>\n"
    "<gap name=\"late\" offset=\"1801800/30000s\" duration=\"60060/30000s\">\n"
    "<ref-clip name=\"whole\" ref=\"r2\" lane=\"1\" offset=\"0s\" duration=\"30030/30000s\"/>\n"
    "</gap></spine></sequence></project></fcpxml>\n";

constexpr std::uint32_t kEarly = 0;
constexpr std::uint32_t kLate = 1;
constexpr std::uint32_t kWhole = 2;

std::shared_ptr<const Inspection> inspectionOf(const std::string& bytes) {
    auto inspection = std::make_shared<Inspection>();
    inspection->file.path = "/projects/a.fcpxml";
    inspection->file.source = SourceText::of(bytes);
    CheckOptions options;
    options.fileName = "a.fcpxml";
    inspection->file.report = checkFile(bytes, options);
    return inspection;
}

class TimelinePageTest : public DesktopTest {
  protected:
    TimelinePageTest() {
        page.resize(900, 500);
        page.show();
    }
    ~TimelinePageTest() override { settle(); }

    void show(const std::string& bytes) {
        page.setInspection(inspectionOf(bytes));
        ASSERT_TRUE(waitUntil([this] { return page.timeline() != nullptr; }));
    }
    TimelineArea& area() { return page.area(); }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&area(), static_cast<Qt::Key>(key), modifiers);
    }
    void click(std::uint32_t clip) {
        QTest::mouseClick(area().viewport(), Qt::LeftButton, Qt::NoModifier,
                          area().rectOf(clip).center());
    }
    QPushButton& button(const char* name) {
        return *page.findChild<QPushButton*>(QString::fromLatin1(name));
    }

    std::vector<std::size_t> looked;
    std::vector<std::size_t> lines;
    std::vector<std::string> findings;
    int saves = 0;
    TimelinePage page{
        {.looked = [this](std::size_t line) { looked.push_back(line); },
         .showLine = [this](std::size_t line) { lines.push_back(line); },
         .showFinding = [this](const Finding& finding) { findings.push_back(finding.message()); },
         .savePicture = [this] { ++saves; }},
        nullptr};
};

TEST_F(TimelinePageTest, showsTheProjectFirst) {
    show(kProject);
    EXPECT_EQ(page.sequence(), 1U);
    auto* const sequences = page.findChild<QComboBox*>(QStringLiteral("timelineSequence"));
    EXPECT_EQ(sequences->currentText(), QStringLiteral("Main"));
    EXPECT_EQ(sequences->count(), 2);
    EXPECT_NE(page.details().indexOf(QStringLiteral("whole")), -1) << "the topmost clip";
}

TEST_F(TimelinePageTest, putsClipsWhereTheirTimesSay) {
    show(kProject);
    // The sequence takes 62.062 s, the clips 2.002 s each.
    const QRect early = area().rectOf(kEarly);
    const QRect late = area().rectOf(kLate);
    const double width = late.right() - early.left();
    EXPECT_NEAR(early.width(), width * 2.002 / 62.062, 3);
    EXPECT_NEAR(late.left() - early.left(), width * 60.06 / 62.062, 3);
    EXPECT_LT(area().rectOf(kWhole).bottom(), late.top()) << "a lane above";
    EXPECT_LE(late.right(), area().viewport()->width());
}

TEST_F(TimelinePageTest, isWalkedWithTheKeyboard) {
    show(kProject);
    EXPECT_EQ(area().cursor(), kWhole);
    press(Qt::Key_Down);
    EXPECT_EQ(area().cursor(), kLate);
    press(Qt::Key_Left);
    EXPECT_EQ(area().cursor(), kEarly);
    press(Qt::Key_End);
    EXPECT_EQ(area().cursor(), kLate);
    press(Qt::Key_Home);
    EXPECT_EQ(area().cursor(), kEarly);
    press(Qt::Key_Right);
    press(Qt::Key_Up);
    EXPECT_EQ(area().cursor(), kWhole);
    EXPECT_EQ(looked.back(), 11U) << "the source goes along";
}

TEST_F(TimelinePageTest, reportsWhatAClipIs) {
    show(kProject);
    click(kLate);
    EXPECT_EQ(area().cursor(), kLate);
    const QString details = page.details();
    EXPECT_TRUE(
        details.startsWith(QStringLiteral("gap\nlate\nat 00:01:00;02\nlength 00:00:02;00\n")))
        << details.toStdString();
    EXPECT_TRUE(details.contains(QStringLiteral("\n> 10  <gap name=\"late\"")));
    QHelpEvent help(QEvent::ToolTip, area().rectOf(kLate).center(),
                    area().viewport()->mapToGlobal(area().rectOf(kLate).center()));
    QApplication::sendEvent(area().viewport(), &help);
    EXPECT_TRUE(QToolTip::text().contains(QStringLiteral("<br>at 00:01:00;02<br>")));
    QToolTip::hideText();
}

TEST_F(TimelinePageTest, goesFromAClipToItsFindingAndItsSource) {
    show(kProject);
    area().setCursorClip(kLate);
    button("timelineFindingBtn").click();
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_NE(page.details().indexOf(QString::fromStdString(findings[0])), -1);
    button("timelineSourceBtn").click();
    press(Qt::Key_Return);
    EXPECT_EQ(lines, (std::vector<std::size_t>{10, 10}));
    area().setCursorClip(kEarly);
    EXPECT_FALSE(button("timelineFindingBtn").isEnabled());
}

TEST_F(TimelinePageTest, goesToTheFindingWhenItsSignIsClicked) {
    show(kProject);
    for (int step = 0; step < 12; ++step) {
        press(Qt::Key_Plus, Qt::ControlModifier);
    }
    area().setCursorClip(kLate);
    const QRect box = area().rectOf(kLate);
    const QPoint sign(std::min(box.right(), area().viewport()->width() - 1) - 8, box.top() + 8);
    ASSERT_TRUE(area().isOnSign(sign));
    QTest::mouseClick(area().viewport(), Qt::LeftButton, Qt::NoModifier, sign);
    EXPECT_EQ(findings.size(), 1U);
    QTest::mouseClick(area().viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(sign.x(), box.bottom() - 3));
    EXPECT_EQ(findings.size(), 1U) << "beside the sign";
}

TEST_F(TimelinePageTest, opensACompoundClipAndLeadsBack) {
    show(kProject);
    EXPECT_FALSE(button("timelineBackBtn").isEnabled());
    QTest::mouseDClick(area().viewport(), Qt::LeftButton, Qt::NoModifier,
                       area().rectOf(kWhole).center());
    EXPECT_EQ(page.sequence(), 0U);
    EXPECT_EQ(area().picture()->titleOf(area().cursor()), "inside");
    press(Qt::Key_Backspace);
    EXPECT_EQ(page.sequence(), 1U);
    EXPECT_EQ(area().cursor(), kWhole);
    press(Qt::Key_Return);
    EXPECT_EQ(page.sequence(), 0U);
    button("timelineBackBtn").click();
    EXPECT_EQ(page.sequence(), 1U);
    EXPECT_TRUE(lines.empty());
}

TEST_F(TimelinePageTest, staysAtTheClipWhenTheFileIsReadAnew) {
    show(kProject);
    EXPECT_TRUE(looked.empty()) << "nobody has looked at a clip yet";
    area().setCursorClip(kLate);
    std::string changed = kProject;
    changed.replace(changed.find("early"), 5, "later");
    show(changed);
    EXPECT_EQ(page.sequence(), 1U);
    EXPECT_EQ(area().cursor(), kLate);
    changed.replace(changed.find("\"late\""), 6, "\"new\"");
    show(changed);
    EXPECT_EQ(area().cursor(), kWhole) << "another clip has its number";
}

TEST_F(TimelinePageTest, reportsMarkersOnTheirClipAndUnderThePointer) {
    std::string marked = kProject;
    marked.insert(marked.find("<ref-clip"),
                  "<marker start=\"30030/30000s\" duration=\"1001/30000s\" value=\"Here\"/>");
    show(marked);
    area().setCursorClip(kLate);
    EXPECT_TRUE(page.details().contains(QStringLiteral("\nmarker Here at 00:01:01;02")))
        << page.details().toStdString();
    for (int step = 0; step < 12; ++step) {
        press(Qt::Key_Plus, Qt::ControlModifier);
    }
    area().setCursorClip(kLate);
    const QRect box = area().rectOf(kLate);
    const QPoint place(box.left() + box.width() / 2, box.top() + 6);
    QHelpEvent help(QEvent::ToolTip, place, area().viewport()->mapToGlobal(place));
    QApplication::sendEvent(area().viewport(), &help);
    EXPECT_TRUE(QToolTip::text().startsWith(QStringLiteral("marker")) ||
                QToolTip::text().contains(QStringLiteral(">marker")))
        << QToolTip::text().toStdString();
    QToolTip::hideText();
}

TEST_F(TimelinePageTest, zoomsAroundTheCursor) {
    show(kProject);
    area().setCursorClip(kLate);
    const double fitted = area().scale();
    const int before = area().rectOf(kLate).center().x();
    press(Qt::Key_Plus, Qt::ControlModifier);
    press(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_NEAR(area().scale(), fitted * 1.25 * 1.25, 1e-6);
    EXPECT_NEAR(area().rectOf(kLate).center().x(), before, 45) << "as far as there is room";
    EXPECT_TRUE(area().rectOf(kEarly).isEmpty()) << "scrolled away";
    press(Qt::Key_Home);
    EXPECT_FALSE(area().rectOf(kEarly).isEmpty()) << "the cursor is brought into view";
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(area().scale(), fitted);
    press(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(area().scale(), fitted) << "nothing is beyond the whole";
    for (int step = 0; step < 100; ++step) {
        press(Qt::Key_Plus, Qt::ControlModifier);
    }
    EXPECT_NEAR(area().scale(), 100 * 30000 / 1001.0, 1) << "100 pixels a frame";
    QWheelEvent wheel(QPointF(400, 80), area().viewport()->mapToGlobal(QPointF(400, 80)), {},
                      QPoint(0, -120), Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(area().viewport(), &wheel);
    EXPECT_NEAR(area().scale(), 100 * 30000 / 1001.0 / 1.25, 1);
}

TEST_F(TimelinePageTest, letsScreenReadersWalkTheClips) {
    show(kProject);
    QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(&area());
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->role(), QAccessible::List);
    ASSERT_EQ(list->childCount(), 3);
    QAccessibleInterface* const late = list->child(kLate);
    ASSERT_NE(late, nullptr);
    EXPECT_EQ(late->text(QAccessible::Name), QStringLiteral("late, Storyline"));
    EXPECT_TRUE(late->text(QAccessible::Description)
                    .startsWith(QStringLiteral("gap, late, at 00:01:00;02, length")));
    EXPECT_EQ(late->parent(), list);
    EXPECT_EQ(list->indexOfChild(late), static_cast<int>(kLate));
    EXPECT_EQ(list->child(kLate), late);
    EXPECT_EQ(list->childAt(late->rect().center().x(), late->rect().center().y()), late);
    EXPECT_FALSE(late->state().selected);
    late->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_EQ(area().cursor(), kLate);
    EXPECT_TRUE(late->state().selected);
    list->child(kWhole)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(page.sequence(), 0U);
    EXPECT_FALSE(late->isValid()) << "its sequence is not shown any more";
}

TEST_F(TimelinePageTest, saysWhatThereIsNot) {
    show("<fcpxml version=\"1.10\"><resources/></fcpxml>");
    EXPECT_EQ(area().picture(), nullptr);
    EXPECT_FALSE(button("timelineSaveBtn").isEnabled());
    press(Qt::Key_Right);
    press(Qt::Key_Plus, Qt::ControlModifier);
    press(Qt::Key_Return);
    show("no markup at all");
    EXPECT_EQ(area().picture(), nullptr);
    EXPECT_TRUE(page.details().isEmpty());
}

TEST_F(TimelinePageTest, drawsItsPicturesInEachScheme) {
    show(kProject);
    area().setCursorClip(kEarly);
    const QImage light = area().viewport()->grab().toImage();
    QPalette dark = page.palette();
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Text, Qt::white);
    page.setPalette(dark);
    const QImage drawn = area().viewport()->grab().toImage();
    EXPECT_LT(qGray(drawn.pixel(3, drawn.height() - 3)), 80);
    EXPECT_GT(qGray(light.pixel(3, light.height() - 3)), 200);
}

TEST_F(TimelinePageTest, leavesTheTracksMostOfALowPage) {
    show(kProject);
    auto* const legend = page.findChild<QWidget*>(QStringLiteral("timelineLegend"));
    auto* const details = page.findChild<QWidget*>(QStringLiteral("timelineDetails"));
    EXPECT_TRUE(legend->isVisible());
    page.resize(614, 220);
    EXPECT_TRUE(waitUntil([&] { return !legend->isVisible(); }));
    EXPECT_GE(area().height(), 130) << "three tracks, the times and a scroll bar";
    EXPECT_GE(area().width(), 360);
    EXPECT_GE(details->width(), 120) << "beside the tracks";
    EXPECT_EQ(details->height(), area().height());
    page.resize(900, 600);
    EXPECT_TRUE(waitUntil([&] { return legend->isVisible(); }));
    EXPECT_GT(area().height(), details->height());
    EXPECT_EQ(details->width(), area().width());
}

TEST_F(TimelinePageTest, laysOutSomeOfManyTextsInEachTurn) {
    std::string project =
        "<fcpxml version=\"1.10\"><resources><format id=\"r1\" frameDuration=\"1/25s\"/>"
        "</resources><project><sequence format=\"r1\"><spine>";
    constexpr int kClips = 400;
    for (int clip = 0; clip < kClips; ++clip) {
        project += "<gap name=\"W " + std::to_string(clip) + "\" offset=\"" + std::to_string(clip) +
                   "s\" duration=\"1s\"/>";
    }
    show(project + "</spine></sequence></project></fcpxml>");
    page.resize(3000, 500);
    area().zoomBy(5);
    const KeptShapes& kept = area().kept();
    QScrollBar& bar = *area().horizontalScrollBar();
    ASSERT_TRUE(waitUntil([&] { return !kept.isIncomplete(); }));
    bar.setValue(bar.maximum());
    area().viewport()->repaint();
    EXPECT_EQ(kept.newTexts(), KeptShapes::kMostNewTexts);
    EXPECT_TRUE(kept.isIncomplete()) << "the view has more than that";
    const QImage begun = area().viewport()->grab().toImage();
    ASSERT_TRUE(waitUntil([&] { return !kept.isIncomplete(); })) << "the others follow";
    const QImage whole = area().viewport()->grab().toImage();
    EXPECT_NE(begun, whole);
    EXPECT_EQ(kept.newTexts(), 0U) << "what is seen again is known";
    bar.setValue(0);
    bar.setValue(bar.maximum());
    EXPECT_EQ(area().viewport()->grab().toImage(), whole);
}

TEST_F(TimelinePageTest, drawsSharpEdgesAtEveryScaleOfTheDevice) {
    show(kProject);
    area().setCursorClip(kLate);
    const QRect box = area().rectOf(kEarly);
    QImage drawn(area().viewport()->size() * 2, QImage::Format_RGB32);
    drawn.setDevicePixelRatio(2);
    area().viewport()->render(&drawn);
    ASSERT_TRUE(waitUntil([&] { return !area().kept().isIncomplete(); }));
    const QRgb track = drawn.pixel(2 * box.right() + 60, 2 * box.center().y());
    const QRgb clip = drawn.pixel(2 * box.left() + 6, 2 * box.bottom() - 16);
    EXPECT_NE(track, clip);
    int others = 0;
    for (int x = 2 * box.right() - 8; x < 2 * box.right() + 12; ++x) {
        const QRgb pixel = drawn.pixel(x, 2 * box.bottom() - 16);
        others += pixel != track && pixel != clip ? 1 : 0;
    }
    EXPECT_LE(others, 4) << "the edge alone, with nothing blurred beside it";
}

TEST_F(TimelinePageTest, savesTheSamePictureAsTheProgram) {
    show(kProject);
    const std::string svg = sandbox.path("a.svg");
    EXPECT_EQ(writeTimelinePicture(*page.timeline(), svg), "");
    std::ifstream file(svg);
    const std::string written((std::istreambuf_iterator<char>(file)), {});
    EXPECT_EQ(written,
              timelineSVG(page.timeline()->timeline(), page.timeline()->marks(), "a.fcpxml"));
    const std::string png = sandbox.path("a.PNG");
    EXPECT_EQ(writeTimelinePicture(*page.timeline(), png), "");
    const QImage image(QString::fromStdString(png));
    EXPECT_EQ(image.width(), 2 * 1232);
    const QImage small =
        image.scaled(image.size() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    EXPECT_GT(qGray(small.pixel(2, 2)), 250) << "white paper";
    const std::string pdf = sandbox.path("a.pdf");
    EXPECT_EQ(writeTimelinePicture(*page.timeline(), pdf), "");
    std::ifstream document(pdf);
    const std::string bytes((std::istreambuf_iterator<char>(document)), {});
    EXPECT_TRUE(bytes.starts_with("%PDF-"));
    EXPECT_NE(bytes.find("/MediaBox [0 0 924"), std::string::npos) << "as large as the picture";
    EXPECT_NE(writeTimelinePicture(*page.timeline(), sandbox.path("none/a.svg")), "");
}

class TimelineWindowTest : public ApplicationTest {
  protected:
    TimelineWindowTest() { application.launch({}); }
};

TEST_F(TimelineWindowTest, goesFromTheTimelineToFindingsAndSource) {
    ErrorSlot error;
    EXPECT_TRUE(platform::UserPreferences().setValue("onlyCheckOpenedFiles", 1, error));
    const std::string path = sandbox.write("a.fcpxml", kProject);
    ASSERT_TRUE(application.openDocument(path));
    DocumentMainWindow* const window = application.currentWindow();
    ASSERT_TRUE(waitUntil([&] { return window->findings().model().rowCount() > 0; }));
    window->showPage(DocumentMainWindow::Page::timeline);
    ASSERT_TRUE(waitUntil([&] { return window->timeline().timeline() != nullptr; }));
    window->timeline().area().setCursorClip(kLate);
    EXPECT_EQ(window->source().currentLine(), 10U);
    window->findChild<QLineEdit*>(QStringLiteral("findingsFilter"))
        ->setText(QStringLiteral("nothing has this"));
    ASSERT_EQ(window->findings().model().rowCount(), 0);
    window->timeline().showFinding();
    EXPECT_EQ(window->page(), DocumentMainWindow::Page::findings);
    const ListedFinding* const chosen =
        window->findings().model().findingAt(window->findings().tree().currentIndex());
    ASSERT_NE(chosen, nullptr) << "what the filter hid is shown";
    EXPECT_EQ(chosen->finding->where.line, 10U);
    window->timeline().showSource();
    EXPECT_EQ(window->page(), DocumentMainWindow::Page::source);
    window->savePictureTo(path);
    auto* const refusal = visible<QMessageBox>();
    ASSERT_NE(refusal, nullptr) << "the project stays";
    refusal->close();
    std::ifstream project(path);
    EXPECT_EQ(std::string((std::istreambuf_iterator<char>(project)), {}), kProject);
    const std::string picture = sandbox.path("p.svg");
    window->savePictureTo(picture);
    EXPECT_TRUE(waitUntil([&] { return std::ifstream(picture).good(); }));
}

}  // namespace
}  // namespace vornic::test
