#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

#include <sys/resource.h>

#include "platform/threads/MainThread.h"
#include "tests/repair/document/DocumentTest.h"
#include "tests/support/machine/FileState.h"

/// Repairs on threads of their own.
namespace vornic {
namespace {

using platform::MainThread;
using test::kSoundXMEML;
using test::Strings;

const std::string kDamaged = "<xmeml version=\"5\"><sequence/></xmeml>";

class DocumentThreadsTest : public test::DocumentTest {
  protected:
    [[nodiscard]] bool isInTrash(std::string_view name) const {
        return test::exists(sandbox.home() + "/.Trash/" + std::string(name));
    }
};

TEST_F(DocumentThreadsTest, readingAFileStartsItsRepairAndIsASuccessWithAnError) {
    const std::string path = sandbox.write("Cut.xml", kDamaged);
    Error error;
    EXPECT_TRUE(document->readFromURL(path, "xml", &error));
    EXPECT_EQ(error.domain, kOSStatusErrorDomain);
    EXPECT_EQ(error.code, -4);
    EXPECT_EQ(document->filePath(), path);
    // Nothing is drawn before the main thread gets to it.
    EXPECT_EQ(window->calls, Strings{});
    waitForThreads();
    EXPECT_EQ(
        insertions(),
        (Strings{"Starting repair for file " + path + "... [bold]", "Creating temporary file...",
                 "Checking file...", "File loaded successfully.", "Filtering invalid characters...",
                 "Checking header tags...", "Invalid DTD... repairing [error]",
                 "Checking version tags...", "Updating type/creator codes...",
                 "The file was repaired successfully. Errors were found in the file and were "
                 "successfully repaired. [bold]"}));
    EXPECT_EQ(window->callsOf("alert: "),
              Strings{"The file was repaired successfully | Errors were found in the file and were "
                      "successfully repaired."});
    EXPECT_TRUE(isInTrash("Cut.xml"));
    EXPECT_FALSE(document->isRunning());
    EXPECT_FALSE(window->sheetIsVisible);
}

TEST_F(DocumentThreadsTest, readingTakesNoErrorToFill) {
    const std::string path = sandbox.write("Cut.xml", kSoundXMEML);
    EXPECT_TRUE(document->readFromURL(path, "xml", nullptr));
    waitForThreads();
    EXPECT_EQ(window->callsOf("alert: ").size(), 1U);
}

TEST_F(DocumentThreadsTest, aDocumentWithoutAFileHasNothingToRepair) {
    document->repair();
    document->setFilePath("");
    document->repair();
    waitForThreads();
    EXPECT_EQ(window->calls, Strings{});
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(DocumentThreadsTest, theRepairButtonRunsTheSameRepairAgain) {
    document->setFilePath(sandbox.write("Cut.xml", kDamaged));
    document->repair();
    waitForThreads();
    document->repair();
    waitForThreads();
    const Strings outcomes = window->callsOf("alert: ");
    ASSERT_EQ(outcomes.size(), 2U);
    EXPECT_TRUE(outcomes[0].starts_with("The file was repaired successfully"));
    EXPECT_TRUE(outcomes[1].starts_with("No repair was necessary"));
    EXPECT_TRUE(window->report.starts_with("Starting repair"));
    EXPECT_EQ(window->callsOf("clear").size(), 2U);
}

TEST_F(DocumentThreadsTest, theCallsOfARunComeInItsOrder) {
    document->setFilePath(sandbox.write("Cut.xml", kSoundXMEML));
    document->repair();
    waitForThreads();
    const std::string start = "Starting repair for file " + sandbox.path("Cut.xml") + "...";
    EXPECT_EQ(
        window->calls,
        (Strings{"cancel button on",
                 "stop",
                 "indeterminate",
                 "start",
                 "status: Repairing...",
                 "begin sheet",
                 "clear",
                 "insert: " + start + " [bold]",
                 "status: " + start,
                 "status: Creating temporary file...",
                 "insert: \n\nCreating temporary file...",
                 "insert: \n\nChecking file...",
                 "status: Checking file...",
                 "insert: \n\nFile loaded successfully.",
                 "insert: \n\nFiltering invalid characters...",
                 "status: Filtering invalid characters...",
                 "stop",
                 "indeterminate",
                 "start",
                 "insert: \n\nChecking header tags...",
                 "status: Checking header tags...",
                 "insert: \n\nChecking version tags...",
                 "status: Checking version tags...",
                 "insert: \n\nUpdating type/creator codes...",
                 "status: Updating type/creator codes...",
                 "status: Finishing...",
                 "insert: \n\nNo repair was necessary. No critical errors were found in the "
                 "file. [bold]",
                 "end sheet",
                 "alert: No repair was necessary | No critical errors were found in the file.",
                 "stop"}));
}

TEST_F(DocumentThreadsTest, aLongTextMakesTheBarDeterminate) {
    const std::string text = "<!DOCTYPE xmeml><xmeml version=\"5\"><sequence><name>" +
                             std::string(600000, 'a') + "</name></sequence></xmeml>";
    std::int64_t largest = 0;
    window->onCall = [&](const std::string& call) {
        if (call == "determinate") {
            largest = document->progressMax();
        }
    };
    document->setFilePath(sandbox.write("Cut.xml", text));
    document->repair();
    waitForThreads();
    EXPECT_EQ(largest, static_cast<std::int64_t>(text.size()));
    EXPECT_EQ(document->progressValue(), static_cast<std::int64_t>(text.size()) - 1);
    EXPECT_EQ(document->progressMax(), 0);
}

TEST_F(DocumentThreadsTest, aRunKeepsItsDocumentAliveAndLetsGoOfItOnTheMainThread) {
    const std::weak_ptr<Document> weak = document;
    document->setFilePath(sandbox.write("Cut.xml", kDamaged));
    document->repair();
    document.reset();
    EXPECT_FALSE(weak.expired());
    waitForThreads();
    EXPECT_TRUE(weak.expired());
    EXPECT_TRUE(isInTrash("Cut.xml"));
}

TEST_F(DocumentThreadsTest, theCancelButtonEndsTheRunAtItsNextCheckPoint) {
    const std::string path = sandbox.write("Cut.xml", kDamaged);
    document->setFilePath(path);
    window->onCall = [&](const std::string& call) {
        if (call == "status: Checking file...") {
            document->cancelProgress();
        }
    };
    document->repair();
    waitForThreads();
    EXPECT_EQ(Strings(window->calls.end() - 5, window->calls.end()),
              (Strings{"status: Checking file...", "cancel button off",
                       "insert: \n\nThe repair was cancelled.", "stop", "end sheet"}));
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_TRUE(test::exists(sandbox.path("Cut-backup.xml")));
    EXPECT_FALSE(isInTrash("Cut.xml"));
    EXPECT_FALSE(document->isRunning());
}

TEST_F(DocumentThreadsTest, closingDuringARunEndsItWithoutAWindow) {
    const std::string path = sandbox.write("Cut.xml", kDamaged);
    const std::weak_ptr<Document> weak = document;
    document->setFilePath(path);
    window->onCall = [&](const std::string& call) {
        if (call == "insert: \n\nChecking file...") {
            document->close();
            document.reset();
        }
    };
    const std::weak_ptr<test::RecordingDocumentWindow> weakWindow = window;
    document->repair();
    waitForThreads();
    EXPECT_EQ(window->calls.back(), "insert: \n\nChecking file...");
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(test::readBytes(path), kDamaged);
    EXPECT_FALSE(isInTrash("Cut.xml"));
    // The document has let go of its window too.
    window.reset();
    EXPECT_TRUE(weakWindow.expired());
}

TEST_F(DocumentThreadsTest, theQuestionBeforeClosingKeepsTheRunGoing) {
    document->setFilePath(sandbox.write("Cut.xml", kDamaged));
    alerts->answer = 0;
    bool closes = true;
    window->onCall = [&](const std::string& call) {
        if (call == "insert: \n\nChecking file...") {
            closes = document->windowShouldClose();
        }
    };
    document->repair();
    waitForThreads();
    EXPECT_FALSE(closes);
    EXPECT_TRUE(isInTrash("Cut.xml"));
}

TEST_F(DocumentThreadsTest, twoRepairsOfOneDocumentAtOnceBothEndAndTheFileIsSafe) {
    for (int time = 0; time < 20; ++time) {
        const std::string path = sandbox.write("Cut.xml", kDamaged);
        document->setFilePath(path);
        document->repair();
        document->repair();
        waitForThreads();
        EXPECT_FALSE(document->isRunning());
        const std::string trashed = sandbox.home() + "/.Trash/Cut.xml";
        if (test::exists(trashed)) {
            EXPECT_EQ(test::readBytes(trashed), kDamaged);
            EXPECT_NE(test::readBytes(path).find("<!DOCTYPE xmeml>"), std::string::npos);
        } else {
            EXPECT_EQ(test::readBytes(path), kDamaged);
        }
        test::removeTrash(sandbox.home());
        std::filesystem::remove(sandbox.path("Cut-backup.xml"));
    }
}

TEST_F(DocumentThreadsTest, documentsAreRepairedSideBySide) {
    constexpr int kDocuments = 8;
    std::vector<std::shared_ptr<Document>> documents;
    std::vector<std::shared_ptr<test::RecordingDocumentWindow>> windows;
    for (int number = 0; number < kDocuments; ++number) {
        windows.push_back(std::make_shared<test::RecordingDocumentWindow>());
        documents.push_back(Document::create());
        documents.back()->setWindow(windows.back());
        documents.back()->readFromURL(
            sandbox.write("Cut" + std::to_string(number) + ".xml", kDamaged), "xml", nullptr);
    }
    waitForThreads();
    for (const auto& recorded : windows) {
        EXPECT_TRUE(recorded->callsOf("alert: ").at(0).starts_with("The file was repaired"));
        EXPECT_EQ(recorded->callsOf("insert: ").size(), 10U);
    }
}

TEST_F(DocumentThreadsTest, aShutDownMainThreadKeepsNoRunWaiting) {
    document->setFilePath(sandbox.write("Cut.xml", kSoundXMEML));
    document->repair();
    document->close();
    MainThread::shutdown();
    const auto start = std::chrono::steady_clock::now();
    waitForThreads();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    MainThread::restart();
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), kSoundXMEML);
}

TEST_F(DocumentThreadsTest, aShutDownMainThreadLosesNothingThatIsToBeLogged) {
    MainThread::shutdown();
    std::thread([this] {
        document->appendErrorInfoText("late, 100%d");
        document->displayAlert("Message", "Info");
        document->displayAlert(std::nullopt, "Info");
    }).join();
    MainThread::restart();
    EXPECT_EQ(window->calls, Strings{});
    EXPECT_EQ(log.entries(), (Strings{"late, 100%d", "Message. Info"}));
}

TEST_F(DocumentThreadsTest, anExceptionOfAnotherKindEndsTheRunAndNotTheProgram) {
    document->setFilePath(sandbox.write("Cut.xml", kSoundXMEML));
    window->onCall = [](const std::string& call) {
        if (call == "status: Checking file...") {
            throw std::runtime_error("other");
        }
    };
    document->repair();
    waitForThreads();
    EXPECT_TRUE(log.contains("Exception in a document's thread: other"));
    EXPECT_FALSE(document->isRunning());
    EXPECT_EQ(test::readBytes(sandbox.path("Cut.xml")), kSoundXMEML);
}

TEST_F(DocumentThreadsTest, aSystemWithoutAThreadToGiveIsLoggedAndReported) {
    document->setFilePath(sandbox.write("Cut.xml", kSoundXMEML));
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NPROC, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NPROC, &none), 0);
    document->repair();
    document->readFromURL(sandbox.path("Cut.xml"), "xml", nullptr);
    document->showConvertDialog();
    ASSERT_EQ(setrlimit(RLIMIT_NPROC, &before), 0);
    Strings logged = log.entries();
    std::erase_if(logged,
                  [](const std::string& entry) { return !entry.starts_with("Exception in "); });
    ASSERT_EQ(logged.size(), 3U);
    EXPECT_TRUE(logged[0].starts_with("Exception in -[Document repair:]. ")) << logged[0];
    EXPECT_TRUE(logged[1].starts_with("Exception in -[Document readFromURL:ofType:error:]. "));
    EXPECT_TRUE(logged[2].starts_with("Exception in -[Document showConvertDialog:]. "));
    const std::string reason = " | The system has no thread to give for the file " +
                               sandbox.path("Cut.xml") +
                               ". Please close other programs and try again.";
    EXPECT_EQ(window->callsOf("alert: "),
              (Strings{"Unable to repair file" + reason, "Unable to repair file" + reason,
                       "Unable to convert file" + reason}));
}

TEST_F(DocumentThreadsTest, alertsMayComeFromAnyThread) {
    std::atomic<bool> done = false;
    std::thread thread([&] {
        document->displayAlert("Message", "Info");
        done = true;
    });
    while (!done) {
        MainThread::dispatchOne(std::chrono::milliseconds(10));
    }
    thread.join();
    EXPECT_EQ(window->calls, Strings{"alert: Message | Info"});
}

}  // namespace
}  // namespace vornic
