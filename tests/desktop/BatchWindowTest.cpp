#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <algorithm>
#include <filesystem>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "desktop/BatchWindow.h"
#include "desktop/SureCall.h"
#include "tests/desktop/ApplicationTest.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::test {
namespace {

namespace fs = std::filesystem;

const std::string kFault =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "    <sequence>\n        <name>a & b</name>\n    </sequence>\n</xmeml>\n";

class BatchWindowTest : public DesktopTest {
  protected:
    ~BatchWindowTest() override {
        window.reset();
        settle();
    }

    void add(const std::vector<std::string>& paths) {
        const std::size_t before = window->model().shown().size();
        window->add(paths);
        EXPECT_TRUE(waitUntil(
            [&] { return !window->isAdding() && window->model().shown().size() != before; }));
    }
    // Begins an action and answers the alert at its end.
    // @return what the alert says.
    QString run(BatchAction action) {
        window->begin(action);
        return answerEnd();
    }
    static QString answerEnd() {
        EXPECT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
        QMessageBox* const alert = visible<QMessageBox>();
        const QString text = alert != nullptr ? alert->informativeText() : QString();
        if (alert != nullptr) {
            QTest::keyClick(alert, Qt::Key_Return);
        }
        EXPECT_TRUE(waitUntil([] { return visible<QMessageBox>() == nullptr; }));
        return text;
    }
    [[nodiscard]] QString text(int row, int column) const {
        const BatchModel& model = window->model();
        return model.data(model.index(row, column), Qt::DisplayRole).toString();
    }
    template <typename Widget>
    Widget& child(const char* name) {
        auto* const found = window->findChild<Widget*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return *found;
    }
    // Three files: sound, faulty, and a link to the first one.
    std::string makeFolder() {
        fs::create_directories(sandbox.path("cuts"));
        sandbox.write("cuts/a.xml", kSound);
        sandbox.write("cuts/b.xml", kFault);
        fs::create_symlink("a.xml", sandbox.path("cuts/c.xml"));
        return sandbox.path("cuts");
    }

    std::vector<std::string> opened;
    std::vector<QString> notes;
    std::unique_ptr<BatchWindow> window = [this] {
        auto made = std::make_unique<BatchWindow>(BatchWindow::Actions{
            .open = [this](const std::string& path) { opened.push_back(path); },
            .showFile = {},
            .notify = [this](const QString& title,
                             const QString& text) { notes.push_back(title + u'|' + text); }});
        made->show();
        return made;
    }();
};

TEST_F(BatchWindowTest, showsAFileAndItsLinksInOneRowAndWhatCameOfThem) {
    add({makeFolder()});
    ASSERT_EQ(window->model().rowCount(), 2);
    EXPECT_EQ(text(0, BatchModel::name), QStringLiteral("a.xml"));
    EXPECT_EQ(text(0, BatchModel::folder), QString::fromStdString(sandbox.path("cuts")));
    EXPECT_EQ(text(0, BatchModel::result), QString());
    EXPECT_TRUE(window->model()
                    .data(window->model().index(0, BatchModel::name), Qt::ToolTipRole)
                    .toString()
                    .contains(QStringLiteral("c.xml")));
    const QString sentence = QStringLiteral("2 files checked: 1 sound, 1 with problems.");
    EXPECT_EQ(run(BatchAction::check), sentence);
    EXPECT_EQ(notes, std::vector<QString>{QStringLiteral("The batch has ended|") + sentence});
    EXPECT_EQ(text(0, BatchModel::result), QStringLiteral("Sound, with 1 warning"));
    EXPECT_EQ(text(1, BatchModel::result), QStringLiteral("Problems"));
    EXPECT_EQ(text(1, BatchModel::kind), QStringLiteral("XMEML"));
    EXPECT_EQ(text(1, BatchModel::progress), QStringLiteral("Done"));
    EXPECT_GT(text(1, BatchModel::problems).toInt(), 0);
    const BatchModel& model = window->model();
    EXPECT_TRUE(model.data(model.index(1, BatchModel::result), Qt::DecorationRole).isValid());
    EXPECT_FALSE(model.data(model.index(0, BatchModel::result), Qt::DecorationRole).isValid());
}

TEST_F(BatchWindowTest, narrowsByTextAndToFailures) {
    add({makeFolder()});
    run(BatchAction::check);
    child<QCheckBox>("batchOnlyFailures").click();
    ASSERT_TRUE(waitUntil([&] { return window->model().rowCount() == 1; }));
    EXPECT_EQ(text(0, BatchModel::name), QStringLiteral("b.xml"));
    child<QCheckBox>("batchOnlyFailures").click();
    child<QLineEdit>("batchFilter").setText(QStringLiteral("A.XM"));
    ASSERT_TRUE(waitUntil([&] {
        return window->model().rowCount() == 1 &&
               text(0, BatchModel::name) == QStringLiteral("a.xml");
    }));
}

TEST_F(BatchWindowTest, worksOnTheChosenRowsAlone) {
    add({makeFolder()});
    window->table().setCurrentIndex(window->model().index(1, 0));
    EXPECT_EQ(window->chosenRows(), std::vector<std::size_t>{1});
    EXPECT_EQ(run(BatchAction::mend), QStringLiteral("Mending of 1 file: 1 mended."));
    EXPECT_NE(readBytes(sandbox.path("cuts/b.xml")).find("a &amp; b"), std::string::npos);
    EXPECT_EQ(text(0, BatchModel::result), QString());
    EXPECT_EQ(run(BatchAction::restore), QStringLiteral("Restoring of 1 file: 1 restored."));
    EXPECT_TRUE(
        child<QLabel>("batchDetails").text().contains(QStringLiteral("What stood there before is")))
        << "and is no original";
    EXPECT_EQ(readBytes(sandbox.path("cuts/b.xml")), kFault);
    window->selectAll();
    EXPECT_EQ(run(BatchAction::repair), QStringLiteral("Repair of 2 files: 1 sound, 1 repaired."));
}

TEST_F(BatchWindowTest, keepsTheChoiceWhenRowsGo) {
    add({makeFolder()});
    run(BatchAction::check);
    window->table().setCurrentIndex(window->model().index(1, 0));
    child<QCheckBox>("batchOnlyFailures").click();
    ASSERT_TRUE(waitUntil([&] { return window->model().rowCount() == 1; }));
    EXPECT_EQ(window->chosenRows(), std::vector<std::size_t>{1});
    EXPECT_EQ(window->model().numberAt(window->table().currentIndex()), 1U);
}

TEST_F(BatchWindowTest, opensADocumentByTheKeyboard) {
    add({makeFolder()});
    window->table().setFocus();
    window->table().setCurrentIndex(window->model().index(1, 0));
    QTest::keyClick(&window->table(), Qt::Key_Return);
    EXPECT_EQ(opened, std::vector<std::string>{sandbox.path("cuts/b.xml")});
    window->copy();
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith(QStringLiteral("b.xml\t")));
}

TEST_F(BatchWindowTest, convertsAndRelinksByWhatItsSheetsAsk) {
    add({makeFolder()});
    window->table().setCurrentIndex(window->model().index(0, 0));
    child<QPushButton>("batchConvertBtn").click();
    auto* sheet = window->findChild<QDialog*>(QStringLiteral("batchConvertSheet"));
    ASSERT_NE(sheet, nullptr);
    auto* const versions = sheet->findChild<QComboBox*>(QStringLiteral("batchVersion"));
    const int four = versions->findText(QStringLiteral("XMEML 4"), Qt::MatchStartsWith);
    ASSERT_GE(four, 0);
    versions->setCurrentIndex(four);
    auto* begin = sheet->findChild<QPushButton*>(QStringLiteral("batchBeginBtn"));
    EXPECT_FALSE(begin->isDefault());
    begin->click();
    EXPECT_EQ(answerEnd(), QStringLiteral("Conversion of 1 file: 1 converted."));
    EXPECT_EQ(readBytes(sandbox.path("cuts/a.xml")), kSound);
    EXPECT_TRUE(exists(sandbox.path("cuts/a (4).xml")));
    child<QPushButton>("batchRelinkBtn").click();
    sheet = window->findChild<QDialog*>(QStringLiteral("batchRelinkSheet"));
    ASSERT_NE(sheet, nullptr);
    begin = sheet->findChild<QPushButton*>(QStringLiteral("batchBeginBtn"));
    begin->click();
    EXPECT_TRUE(sheet->findChild<QLabel*>(QStringLiteral("batchRelinkLabel"))->isVisible())
        << "nothing to go by";
    sheet->findChild<QLineEdit*>(QStringLiteral("batchSearch"))
        ->setText(QString::fromStdString(sandbox.path("cuts")));
    begin->click();
    EXPECT_TRUE(answerEnd().startsWith(QStringLiteral("Relinking of 1 file: ")));
}

TEST_F(BatchWindowTest, savesAllReportsAsOneDocument) {
    add({makeFolder()});
    run(BatchAction::check);
    const std::string path = sandbox.path("all.html");
    window->saveReportsTo(path);
    ASSERT_TRUE(waitUntil([&] { return exists(path); }));
    const std::string html = readBytes(path);
    EXPECT_NE(html.find("b.xml"), std::string::npos);
    EXPECT_NE(html.find("</html>"), std::string::npos);
    ASSERT_TRUE(waitUntil([&] { return child<QPushButton>("batchSaveBtn").isEnabled(); }));
    window->saveReportsTo(sandbox.path("no/all.html"));
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    EXPECT_EQ(visible<QMessageBox>()->text(), QStringLiteral("Unable to save the reports"));
}

TEST_F(BatchWindowTest, savesNoReportsInThePlaceOfItsFiles) {
    add({makeFolder()});
    run(BatchAction::check);
    // An editor has saved it: another file, by the same name.
    sandbox.write("cuts/new", kFault);
    fs::rename(sandbox.path("cuts/new"), sandbox.path("cuts/b.xml"));
    for (const char* const name : {"cuts/b.xml", "cuts/c.xml"}) {
        window->saveReportsTo(sandbox.path(name));
        ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; })) << name;
        EXPECT_EQ(visible<QMessageBox>()->text(), QStringLiteral("Unable to save the reports"));
        EXPECT_EQ(visible<QMessageBox>()->informativeText(),
                  QStringLiteral("They would take the place of a file of the batch."));
        visible<QMessageBox>()->close();
        ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() == nullptr; }));
    }
    EXPECT_EQ(readBytes(sandbox.path("cuts/b.xml")), kFault);
    EXPECT_TRUE(fs::is_symlink(sandbox.path("cuts/c.xml")));
}

class UnprivilegedBatchWindowTest : public Unprivileged, public BatchWindowTest {};

TEST_F(UnprivilegedBatchWindowTest, saysWhatCouldNotBeAddedAndThatThereIsNothingToDo) {
    window->begin(BatchAction::check);
    ASSERT_NE(visible<QMessageBox>(), nullptr);
    EXPECT_EQ(visible<QMessageBox>()->text(), QStringLiteral("There is no file to work on"));
    QTest::keyClick(visible<QMessageBox>(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() == nullptr; }));
    fs::create_directories(sandbox.path("closed"));
    fs::permissions(sandbox.path("closed"), fs::perms::none);
    window->add({sandbox.path("closed")});
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    EXPECT_EQ(visible<QMessageBox>()->text(), QStringLiteral("Not all could be added"));
}

TEST_F(BatchWindowTest, asksBeforeItClosesDuringARunAndStopsIt) {
    fs::create_directories(sandbox.path("many"));
    for (int file = 0; file < 400; ++file) {
        sandbox.write("many/" + std::to_string(file) + ".xml", kFault);
    }
    add({sandbox.path("many")});
    window->begin(BatchAction::mend);
    ASSERT_TRUE(window->isRunning());
    EXPECT_FALSE(window->close());
    auto* const question = visible<QMessageBox>();
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->text(), QStringLiteral("The batch is still at work"));
    for (QAbstractButton* const button : question->buttons()) {
        if (question->buttonRole(button) == QMessageBox::DestructiveRole) {
            EXPECT_NE(question->defaultButton(), button);
            button->click();
        }
    }
    ASSERT_TRUE(waitUntil([&] { return !window->isVisible(); }));
    EXPECT_FALSE(window->isRunning());
    EXPECT_TRUE(notes.empty());
    for (int file = 0; file < 400; ++file) {
        const std::string bytes = readBytes(sandbox.path("many/" + std::to_string(file) + ".xml"));
        EXPECT_TRUE(bytes == kFault || bytes.find("a &amp; b") != std::string::npos) << file;
    }
}

TEST_F(BatchWindowTest, keepsNothingOfASearchDuringWhichItWasClosed) {
    window->add({makeFolder()});
    ASSERT_TRUE(window->isAdding());
    EXPECT_TRUE(window->close());
    ASSERT_TRUE(waitUntil([&] { return !window->isAdding(); }));
    window->show();
    EXPECT_EQ(window->model().rowCount(), 0);
    window->begin(BatchAction::check);
    ASSERT_NE(visible<QMessageBox>(), nullptr);
    EXPECT_EQ(visible<QMessageBox>()->text(), QStringLiteral("There is no file to work on"));
}

TEST_F(BatchWindowTest, endsWhatIsAtWorkWhenItGoes) {
    fs::create_directories(sandbox.path("many"));
    for (int file = 0; file < 200; ++file) {
        sandbox.write("many/" + std::to_string(file) + ".xml", kFault);
    }
    add({sandbox.path("many")});
    window->begin(BatchAction::mend);
    window.reset();
    EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(20)));
    EXPECT_EQ(readBytes(sandbox.path("many/199.xml")), kFault) << "it was stopped before";
}

TEST_F(BatchWindowTest, namesEveryControl) {
    add({makeFolder()});
    window->resize(window->minimumSize());
    QApplication::processEvents();
    std::size_t count = 0;
    for (const QAbstractButton* const button : window->findChildren<QAbstractButton*>()) {
        if (button->isVisible() && !button->text().isEmpty()) {
            ++count;
            EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
            EXPECT_TRUE(
                window->rect().contains({button->mapTo(window.get(), QPoint()), button->size()}))
                << button->text().toStdString();
            EXPECT_NE(button->focusPolicy(), Qt::NoFocus) << button->text().toStdString();
        }
    }
    EXPECT_EQ(count, 12U);
    EXPECT_FALSE(window->table().accessibleName().isEmpty());
}

// Copied without memory three times.
struct ScarceCall {
    ScarceCall(int& called, int& shortages) : calls(&called), left(&shortages) {}
    ScarceCall(const ScarceCall& other) : calls(other.calls), left(other.left) {
        if ((*left)-- > 0) {
            throw std::bad_alloc();
        }
    }
    ScarceCall& operator=(const ScarceCall&) = delete;
    ~ScarceCall() = default;
    void operator()() const { ++*calls; }

    int* calls;
    int* left;
};

TEST_F(BatchWindowTest, isToldOfAnEndForWhichThereWasNoMemoryAtFirst) {
    int calls = 0;
    int shortages = 3;
    const ScarceCall call(calls, shortages);
    std::thread worker([&] { performSurely([&] { return std::function<void()>(call); }); });
    EXPECT_TRUE(waitUntil([&] { return calls == 1; }));
    worker.join();
    EXPECT_LE(shortages, 0);
}

TEST_F(BatchWindowTest, showsTenThousandFilesAndTellsTheirChangesTogether) {
    constexpr int kFiles = 10'000;
    for (int file = 0; file < kFiles; ++file) {
        const std::string folder = "many/" + std::to_string(file / 500);
        if (file % 500 == 0) {
            fs::create_directories(sandbox.path(folder));
        }
        sandbox.write(folder + "/" + std::to_string(file) + ".xml", file % 3 ? kSound : kFault);
    }
    const auto widgets = window->findChildren<QWidget*>().size();
    const BatchModel& model = window->model();
    auto& onlyFailures = child<QCheckBox>("batchOnlyFailures");
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    window->add({sandbox.path("many")});
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == kFiles; }));
    EXPECT_EQ(window->findChildren<QWidget*>().size(), widgets) << "no widget for a row";
    window->begin(BatchAction::check);
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    QTest::keyClick(visible<QMessageBox>(), Qt::Key_Return);
    onlyFailures.click();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == (kFiles + 2) / 3; }));
    window->selectAll();
    window->begin(BatchAction::check);
    ASSERT_TRUE(waitUntil([] { return visible<QMessageBox>() != nullptr; }));
    QTest::keyClick(visible<QMessageBox>(), Qt::Key_Return);
    child<QLineEdit>("batchFilter").setText(QStringLiteral("99.xml"));
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() < kFiles / 10; }));
    EXPECT_GT(model.rowCount(), 0);
    EXPECT_GT(changes.count(), 0);
    EXPECT_LT(changes.count(), kFiles / 5) << "each turn of the window tells of many rows";
    EXPECT_EQ(window->findChildren<QWidget*>().size(), widgets);
}

}  // namespace
}  // namespace vornic::test
