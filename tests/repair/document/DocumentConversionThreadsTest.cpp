#include <filesystem>
#include <new>
#include <stdexcept>

#include "platform/threads/MainThread.h"
#include "tests/repair/document/DocumentTest.h"
#include "tests/support/machine/FileState.h"

/// What becomes of a conversion when its dialog or its window is closed, when the dialog is opened
/// anew, when it is asked for twice, and when memory runs out.
namespace vornic {
namespace {

using test::Strings;

const std::string kVersion5 =
    "<!DOCTYPE xmeml><xmeml version=\"5\"><sequence><multiclip>a</multiclip></sequence></xmeml>";
constexpr const char* kQuestion = "You cannot downgrade without losing information";

class DocumentConversionThreadsTest : public test::DocumentTest {
  protected:
    void SetUp() override {
        DocumentTest::SetUp();
        path = sandbox.write("Cut.xml", kVersion5);
        document->setFilePath(path);
    }
    /// Does something when the window is told this for the first time.
    void when(const std::string& call, std::function<void()> action) {
        window->onCall = [call, action = std::move(action),
                          isDone = false](const std::string& made) mutable {
            if (made.starts_with(call) && !std::exchange(isDone, true)) {
                action();
            }
        };
    }
    /// Does something when the question about a loss is put.
    void whenAsked(std::function<void()> action) {
        document->setMinDowngradeVersion(2);
        window->selectedKey = "1";
        alerts->onShow = [action = std::move(action)](const AlertContents& alert) {
            if (alert.messageText == kQuestion) {
                action();
            }
        };
    }
    [[nodiscard]] bool isConvertedTo(const std::string& version) const {
        return test::readBytes(path).find("<xmeml version=\"" + version + "\">") !=
               std::string::npos;
    }
    /// The keys of the menu as it was shown last.
    [[nodiscard]] Strings menuKeys() const {
        Strings keys;
        for (const ConversionOffer::Version& version : window->offers.back().versions) {
            keys.insert(keys.end(), static_cast<std::size_t>(version.menuItems), version.key);
        }
        return keys;
    }

    std::string path;
};

TEST_F(DocumentConversionThreadsTest, closingTheDialogStopsAConversionBeforeItWrites) {
    window->selectedKey = "4";
    when("start spinner", [this] { document->closeConvertDialog(); });
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_EQ(test::readBytes(path), kVersion5);
    EXPECT_EQ(window->calls, (Strings{"start spinner", "end convert"}));
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentConversionThreadsTest, closingTheWindowStopsAConversionBeforeItWrites) {
    window->selectedKey = "4";
    when("start spinner", [this] { document->close(); });
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_EQ(test::readBytes(path), kVersion5);
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentConversionThreadsTest, aWindowThatClosesAtOnceIsNoVersionThatIsNotSet) {
    window->selectedKey = "4";
    document->convertVersionOnThread();
    document->close();
    waitForThreads();
    EXPECT_EQ(test::readBytes(path), kVersion5);
    EXPECT_TRUE(alerts->shown.empty());
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(DocumentConversionThreadsTest, closingTheDialogTakesTheQuestionBackAndConvertsNothing) {
    // The answer is an agreement, which comes too late.
    whenAsked([this] { document->closeConvertDialog(); });
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_EQ(test::readBytes(path), kVersion5);
    EXPECT_EQ(window->calls, (Strings{"start spinner", "end convert"}));
}

TEST_F(DocumentConversionThreadsTest, aConversionThatWasStoppedAsksNothing) {
    document->setMinDowngradeVersion(2);
    window->selectedKey = "1";
    when("start spinner", [this] { document->closeConvertDialog(); });
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_TRUE(alerts->shown.empty());
    EXPECT_EQ(test::readBytes(path), kVersion5);
}

TEST_F(DocumentConversionThreadsTest, aWindowReportsAConversionThatWasWrittenWhenItsDialogClosed) {
    window->selectedKey = "4";
    // The second start is that of the analysis after the conversion.
    int starts = 0;
    window->onCall = [&](const std::string& call) {
        if (call == "start spinner" && ++starts == 2) {
            document->closeConvertDialog();
        }
    };
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_TRUE(isConvertedTo("4"));
    EXPECT_EQ(window->calls,
              (Strings{"start spinner", "converted: 4", "start spinner", "end convert"}));
    EXPECT_EQ(log.entries().back(), "The file " + path + " was converted to version 4.");
}

TEST_F(DocumentConversionThreadsTest, anExportThatComesDuringTheQuestionStays) {
    const std::string newer =
        "<xmeml version=\"5\"><sequence><name>newer</name></sequence></xmeml>";
    whenAsked([&] { std::filesystem::rename(sandbox.write("export", newer), path); });
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_EQ(test::readBytes(path), newer);
    const std::string reason = "The file " + path +
                               " cannot be written: another program has changed it since it was "
                               "read.";
    EXPECT_EQ(alerts->texts().back(), "Unable to save file | " + reason);
    EXPECT_TRUE(log.contains("Unable to save file " + path + " - " + reason));
    EXPECT_TRUE(log.contains("Unable to load attributes for file " + path + " - " + reason));
    EXPECT_EQ(window->callsOf("current: ").back(), "Current XML version: 5 (Final Cut Pro 7+)");
}

TEST_F(DocumentConversionThreadsTest, theVersionIsTheOneOfTheClick) {
    window->selectedKey = "4";
    document->convertVersionOnThread();
    window->selectedKey = "3";
    waitForThreads();
    EXPECT_TRUE(isConvertedTo("4"));
}

TEST_F(DocumentConversionThreadsTest, aSecondConversionIsNotBegunWhileOneIsAtWork) {
    window->selectedKey = "4";
    document->convertVersionOnThread();
    document->convertVersionOnThread();
    document->convertVersion();
    waitForThreads();
    EXPECT_EQ(window->callsOf("start spinner").size(), 2U) << "of it and of its analysis";
    EXPECT_TRUE(isConvertedTo("4"));
    // Afterwards the next one may come.
    window->selectedKey = "3";
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_TRUE(isConvertedTo("3"));
}

TEST_F(DocumentConversionThreadsTest, aRepairIsNotBegunBesideAConversionThatWaits) {
    whenAsked([this] {
        document->repair();
        alerts->answer = 0;
    });
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_TRUE(window->callsOf("begin sheet").empty());
    document->repair();
    waitForThreads();
    EXPECT_EQ(window->callsOf("begin sheet").size(), 1U);
}

TEST_F(DocumentConversionThreadsTest, aConversionIsNotBegunBesideARepair) {
    window->selectedKey = "4";
    document->startProgress();
    document->convertVersionOnThread();
    document->endProgress();
    waitForThreads();
    EXPECT_TRUE(window->callsOf("start spinner").empty());
    EXPECT_EQ(test::readBytes(path), kVersion5);
}

TEST_F(DocumentConversionThreadsTest, aDialogThatIsOpenedAnewIsFilledByItsOwnAnalysisAlone) {
    // Wherever the first analysis is when the dialog is closed and opened again.
    for (const char* const moment : {"start spinner", "current: ", "offer: ", "stop spinner"}) {
        window->calls.clear();
        when(moment, [this] {
            document->closeConvertDialog();
            document->showConvertDialog();
        });
        document->showConvertDialog();
        waitForThreads();
        EXPECT_EQ(menuKeys(), (Strings{"5", "4", "4", "3", "3", "2", "2", "1", "1"})) << moment;
        EXPECT_EQ(window->calls.back(), "stop spinner") << moment;
        EXPECT_EQ(document->minDowngradeVersion(), 2);
    }
}

TEST_F(DocumentConversionThreadsTest, theMinimumOfAnAnalysisWhoseDialogWasClosedIsDropped) {
    when("offer: ", [this] { document->closeConvertDialog(); });
    document->showConvertDialog();
    waitForThreads();
    EXPECT_EQ(document->minDowngradeVersion(), 0);
    EXPECT_EQ(window->calls.back(), "end convert");
}

TEST_F(DocumentConversionThreadsTest, aRunWithoutMemoryStopsItsSpinnerAndReportsIt) {
    window->selectedKey = "1";
    document->setMinDowngradeVersion(2);
    alerts->onShow = [](const AlertContents& /*alert*/) { throw std::bad_alloc(); };
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_EQ(window->calls, (Strings{"start spinner",
                                      "alert: Unable to convert file | There is not enough memory.",
                                      "stop spinner"}));
    EXPECT_TRUE(
        log.contains("Exception in -[Document convertVersion:]. std::bad_alloc - not "
                     "enough memory."));
    EXPECT_EQ(test::readBytes(path), kVersion5);
}

TEST_F(DocumentConversionThreadsTest, aRunWithoutMemoryEvenForItsMessageStopsItsSpinner) {
    window->selectedKey = "4";
    window->onCall = [](const std::string& call) {
        if (call == "start spinner" || call.starts_with("alert: ")) {
            throw std::bad_alloc();
        }
    };
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_EQ(window->calls.back(), "stop spinner");
    EXPECT_EQ(test::readBytes(path), kVersion5);
    // It counts as ended.
    window->onCall = nullptr;
    document->convertVersionOnThread();
    waitForThreads();
    EXPECT_TRUE(isConvertedTo("4"));
}

TEST_F(DocumentConversionThreadsTest, anAnalysisWithoutMemoryReportsItAndStopsItsSpinner) {
    when("offer: ", [] { throw std::bad_alloc(); });
    document->showConvertDialog();
    waitForThreads();
    EXPECT_EQ(alerts->texts(),
              Strings{"Error loading XML file | There is not enough memory.\n\nPlease try "
                      "repairing it first before attempting a conversion."});
    EXPECT_EQ(window->calls.back(), "stop spinner");
}

TEST_F(DocumentConversionThreadsTest, anAnalysisStopsItsSpinnerAfterAnyException) {
    when("offer: ", [] { throw std::runtime_error("other"); });
    document->showConvertDialog();
    waitForThreads();
    EXPECT_EQ(window->calls.back(), "stop spinner");
    EXPECT_TRUE(log.contains(
        "Exception in -[Document populateConversionDataForFile:]. std::exception - other."));
}

}  // namespace
}  // namespace vornic
