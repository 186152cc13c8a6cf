#include "tests/repair/document/DocumentTest.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <thread>

#include "base/Exception.h"

namespace vornic {
namespace {

using test::Strings;

using DocumentTest = test::DocumentTest;

TEST_F(DocumentTest, beginsWithAWindowAndNothingElse) {
    EXPECT_TRUE(document->hasGUI());
    EXPECT_EQ(document->xmlType(), 0);
    EXPECT_FALSE(document->fileHasErrs());
    EXPECT_FALSE(document->fileWasRepaired());
    EXPECT_FALSE(document->isRunning());
    EXPECT_FALSE(document->progressCancelled());
    EXPECT_EQ(document->minDowngradeVersion(), 0);
    EXPECT_EQ(document->filePath(), std::nullopt);
    EXPECT_EQ(window->calls, Strings{});
}

TEST_F(DocumentTest, isMadeFromTheInterfaceDocument) {
    EXPECT_EQ(Document::windowNibName(), "Document");
}

TEST_F(DocumentTest, cannotBePrinted) {
    EXPECT_EQ(Document::printOperationWithSettings(), nullptr);
}

TEST_F(DocumentTest, countsACancellationAClosingAndAnInterruption) {
    document->setProgressCancelled(true);
    EXPECT_TRUE(document->progressCancelled());
    document->setProgressCancelled(false);
    EXPECT_FALSE(document->progressCancelled());
    std::atomic<int> signal = 0;
    document->setInterruptionFlag(&signal);
    EXPECT_FALSE(document->progressCancelled());
    signal = SIGINT;
    EXPECT_TRUE(document->progressCancelled());
    signal = 0;
    document->close();
    EXPECT_TRUE(document->progressCancelled());
    document->setProgressCancelled(false);
    EXPECT_TRUE(document->progressCancelled());
}

using DocumentWindowShouldClose = DocumentTest;

TEST_F(DocumentWindowShouldClose, withoutAQuestionWhenNothingRuns) {
    EXPECT_TRUE(document->windowShouldClose());
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentWindowShouldClose, asksWhileARepairRuns) {
    document->startProgress();
    EXPECT_TRUE(document->windowShouldClose());
    ASSERT_EQ(alerts->shown.size(), 1U);
    const AlertContents& contents = alerts->shown[0].contents;
    EXPECT_EQ(contents.messageText, "A repair is running. Are you sure you wish to quit?");
    EXPECT_EQ(contents.informativeText, "This will cancel the repair.");
    EXPECT_EQ(contents.defaultButtonTitle, "Quit");
    EXPECT_EQ(contents.alternateButtonTitle, "Cancel");
    EXPECT_EQ(contents.otherButtonTitle, std::nullopt);
    // The progress sheet is on the window already.
    EXPECT_EQ(alerts->shown[0].parentWindow, nullptr);
    window->sheetIsSheet = false;
    EXPECT_TRUE(document->windowShouldClose());
    EXPECT_EQ(alerts->shown.at(1).parentWindow, window);
}

TEST_F(DocumentWindowShouldClose, onlyNotForTheAlternateButton) {
    document->startProgress();
    for (const auto& [answer, closes] : {std::pair{1, true}, {0, false}, {-1, true}}) {
        alerts->answer = answer;
        EXPECT_EQ(document->windowShouldClose(), closes) << answer;
        EXPECT_TRUE(document->isRunning());
    }
}

using DocumentProgress = DocumentTest;

TEST_F(DocumentProgress, startsWithABusySheet) {
    document->setProgressCancelled(true);
    document->startProgress();
    EXPECT_TRUE(document->isRunning());
    EXPECT_FALSE(document->progressCancelled());
    EXPECT_EQ(window->calls, (Strings{"cancel button on", "stop", "indeterminate", "start",
                                      "status: Repairing...", "begin sheet"}));
    EXPECT_EQ(document->progressMax(), 0);
}

TEST_F(DocumentProgress, leavesASheetThatIsThere) {
    for (const auto& [isVisible, isSheet] :
         {std::pair{true, true}, {true, false}, {false, true}, {false, false}}) {
        window->calls.clear();
        window->sheetIsVisible = isVisible;
        window->sheetIsSheet = isSheet;
        document->startProgress();
        EXPECT_EQ(window->calls.back() == "begin sheet", !(isVisible && isSheet));
    }
}

TEST_F(DocumentProgress, endsTheSheetWhenThereIsOne) {
    for (const auto& [isVisible, isSheet] : {std::pair{true, true}, {true, false}, {false, true}}) {
        document->startProgress();
        window->calls.clear();
        window->sheetIsVisible = isVisible;
        window->sheetIsSheet = isSheet;
        document->endProgress();
        EXPECT_EQ(window->calls, (Strings{"stop", "end sheet"}));
        EXPECT_FALSE(document->isRunning());
    }
    window->calls.clear();
    document->endProgress();
    EXPECT_EQ(window->calls, Strings{"stop"});
}

TEST_F(DocumentProgress, showsALabel) {
    document->setProgressLabel("100%d %@");
    EXPECT_EQ(window->calls, Strings{"status: 100%d %@"});
}

TEST_F(DocumentProgress, becomesDeterminateWithAMaximum) {
    document->setProgressValue(9);
    document->setProgressMax(600000);
    EXPECT_EQ(window->calls, (Strings{"stop", "determinate", "start"}));
    EXPECT_EQ(document->progressMax(), 600000);
    EXPECT_EQ(document->progressValue(), 0);
}

TEST_F(DocumentProgress, becomesIndeterminateAgain) {
    document->setProgressMax(600000);
    window->calls.clear();
    document->setIndeterminateProgress();
    EXPECT_EQ(window->calls, (Strings{"stop", "indeterminate", "start"}));
    EXPECT_EQ(document->progressMax(), 0);
}

TEST_F(DocumentProgress, countsUp) {
    document->setProgressValue(41);
    EXPECT_EQ(document->progressValue(), 41);
    document->incrementProgress();
    EXPECT_EQ(document->progressValue(), 42);
    EXPECT_EQ(window->calls, Strings{});
}

TEST_F(DocumentProgress, isCancelledByItsButton) {
    document->startProgress();
    window->calls.clear();
    document->cancelProgress();
    EXPECT_TRUE(document->progressCancelled());
    EXPECT_TRUE(document->isRunning());
    EXPECT_EQ(window->calls, (Strings{"cancel button off", "insert: The repair was cancelled."}));
}

using DocumentReport = DocumentTest;

TEST_F(DocumentReport, marksErrorsAndBoldLines) {
    document->appendInfoText("a");
    document->appendBoldInfoText("b");
    document->appendErrorInfoText("c");
    document->appendBoldErrorInfoText("d");
    EXPECT_EQ(insertions(), (Strings{"a", "b [bold]", "c [error]", "d [error] [bold]"}));
}

TEST_F(DocumentReport, separatesEntriesByAnEmptyLine) {
    document->appendInfoText("first");
    document->appendErrorInfoText("second");
    document->appendBoldInfoText("third");
    EXPECT_EQ(window->report, "first\n\nsecond\n\nthird");
}

TEST_F(DocumentReport, beginsAnewWhenItIsCleared) {
    document->appendInfoText("first");
    document->clearInfoText();
    document->appendInfoText("second");
    EXPECT_EQ(window->report, "second");
}

TEST_F(DocumentReport, isLoggedWhateverTheWindowShows) {
    document->appendInfoText("50% of %@, 100%d");
    document->setWindow(nullptr);
    document->appendErrorInfoText("without a window");
    document->setHasGUI(false);
    document->setReportOutput(nullptr);
    document->appendBoldInfoText("headless");
    EXPECT_EQ(log.entries(), (Strings{"50% of %@, 100%d", "without a window", "headless"}));
}

TEST_F(DocumentReport, goesToStandardOutputWithoutAnInterface) {
    document->setHasGUI(false);
    ::testing::internal::CaptureStdout();
    document->appendInfoText("Caf\u00E9 50% %d");
    document->appendBoldErrorInfoText("two\nlines");
    document->appendInfoText("");
    std::fflush(stdout);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Caf\u00E9 50% %d\ntwo\nlines\n\n");
    EXPECT_EQ(window->calls, Strings{});
}

TEST_F(DocumentReport, goesToAnotherOutputThatIsGiven) {
    document->setHasGUI(false);
    Strings lines;
    document->setReportOutput([&lines](std::string_view line) { lines.emplace_back(line); });
    document->appendErrorInfoText("a");
    document->appendInfoText("b");
    EXPECT_EQ(lines, (Strings{"a", "b"}));
}

TEST_F(DocumentReport, logsAnExceptionOfItsOwnKind) {
    window->onCall = [](const std::string&) { throw platform::Exception("Test", "raised"); };
    document->appendErrorInfoText("line");
    EXPECT_EQ(log.entries(),
              (Strings{"line",
                       "Exception in -[Document appendInfoText:isError:isBold:]. Test - raised."}));
    document->setHasGUI(false);
    document->setReportOutput(
        [](std::string_view) { throw platform::Exception("Test", "raised"); });
    document->appendInfoText("headless");
    EXPECT_EQ(log.entries().back(),
              "Exception in -[Document appendInfoText:isError:isBold:]. Test - raised.");
}

TEST_F(DocumentReport, passesOtherExceptionsOn) {
    window->onCall = [](const std::string&) { throw std::runtime_error("other"); };
    EXPECT_THROW(document->appendInfoText("line"), std::runtime_error);
}

using DocumentAlert = DocumentTest;

TEST_F(DocumentAlert, withoutAMessageIsNone) {
    document->displayAlert(std::nullopt, "info");
    document->displayAlertOnMainThread({{"infotext", "info"}});
    document->displayAlertOnMainThread({});
    EXPECT_EQ(window->calls, Strings{});
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(DocumentAlert, isASheetAndALogEntry) {
    document->displayAlert("Message", "Info");
    EXPECT_EQ(window->calls, Strings{"alert: Message | Info"});
    EXPECT_EQ(log.entries(), Strings{"Message. Info"});
    EXPECT_TRUE(alerts->shown.empty());
}

TEST_F(DocumentAlert, withoutInformationShowsTheEmptyString) {
    document->displayAlert("Message", std::nullopt);
    document->displayAlertOnMainThread({{"message", "Another"}});
    EXPECT_EQ(window->calls, (Strings{"alert: Message | ", "alert: Another | "}));
    EXPECT_EQ(log.entries(), (Strings{"Message.", "Another."}));
}

TEST_F(DocumentAlert, replacesTheProgressSheet) {
    document->startProgress();
    window->calls.clear();
    document->displayAlert("Message", "Info");
    EXPECT_EQ(window->calls, (Strings{"end sheet", "alert: Message | Info"}));
    EXPECT_TRUE(document->isRunning());
}

TEST_F(DocumentAlert, readsItsInformationAsAFormat) {
    document->displayAlert("100%% %d", "100%% of %@ and %d");
    EXPECT_EQ(window->calls, Strings{"alert: 100%% %d | 100% of %@ and %d"});
    EXPECT_EQ(log.entries(), Strings{"100%% %d. 100%% of %@ and %d"});
}

TEST_F(DocumentAlert, isShownToWhoeverStandsForTheUserOfAHeadlessDocument) {
    document->setHasGUI(false);
    document->displayAlert("Nobody", "listens");
    Strings told;
    document->setAlertOutput([&told](std::string_view message, std::string_view info) {
        told.push_back(std::string(message).append(" | ").append(info));
    });
    document->displayAlert("Message", "50%%");
    EXPECT_EQ(told, Strings{"Message | 50%%"});
    EXPECT_EQ(window->calls, Strings{});
    EXPECT_EQ(log.entries(), (Strings{"Nobody. listens", "Message. 50%%"}));
}

TEST_F(DocumentTest, strippingAndFilteringAreOperationsOfTheDocument) {
    EXPECT_EQ(document->stripInvalidCharsFromData("a\nb\xFF"), "ab");
    EXPECT_EQ(document->filterInvalidCharsInString("a\x01&"), "a&amp;");
    EXPECT_TRUE(document->fileHasErrs());
    EXPECT_TRUE(document->fileWasRepaired());
    EXPECT_EQ(insertions(), Strings{"Invalid character at byte 1 removed. [error]"});
    document->setProgressCancelled(true);
    EXPECT_EQ(document->filterInvalidCharsInString("a"), std::nullopt);
}

TEST_F(DocumentTest, aRepairClearsAnOldCancellationAndTakesTheKindFromTheName) {
    document->setProgressCancelled(true);
    document->setXmlType(7);
    EXPECT_EQ(document->startRepair(sandbox.write("Cut.xml", test::kSoundXMEML)).outcome,
              RepairOutcome::sound);
    EXPECT_FALSE(document->progressCancelled());
    EXPECT_EQ(document->xmlType(), 0);
    EXPECT_EQ(document->startRepair(sandbox.write("Cut.FCPXML", test::kSoundFCPXML)).outcome,
              RepairOutcome::sound);
    EXPECT_EQ(document->xmlType(), 1);
}

TEST_F(DocumentTest, aMissingFileIsAnAlertAndLeavesFlagsAndReportAlone) {
    document->setFileHasErrs(true);
    document->setFileWasRepaired(true);
    const std::string path = sandbox.path("None.xml");
    EXPECT_EQ(document->startRepair(path).outcome, RepairOutcome::stopped);
    const std::string info = "The file " + path + " cannot be found.";
    EXPECT_EQ(window->calls, (Strings{"cancel button on", "stop", "indeterminate", "start",
                                      "status: Repairing...", "begin sheet", "end sheet",
                                      "alert: Unable to locate file | " + info, "stop"}));
    EXPECT_EQ(log.entries(), (Strings{"Beginning repair for file " + path + "...", info,
                                      "Unable to locate file. " + info}));
    EXPECT_TRUE(document->fileHasErrs());
    EXPECT_TRUE(document->fileWasRepaired());
}

TEST_F(DocumentTest, theFlagsFollowARepairWhileItRuns) {
    Strings flags;
    window->onCall = [&](const std::string& call) {
        if (call.starts_with("insert: ")) {
            flags.push_back(std::string(document->fileHasErrs() ? "errors, " : "no errors, ") +
                            (document->fileWasRepaired() ? "repaired" : "not repaired"));
        }
    };
    EXPECT_EQ(document->startRepair(sandbox.write("Cut.xml", "<xmeml/>")).outcome,
              RepairOutcome::unable);
    EXPECT_EQ(insertions().at(6), "Invalid DTD... repairing [error]");
    EXPECT_EQ(
        flags,
        (Strings{"no errors, not repaired", "no errors, not repaired", "no errors, not repaired",
                 "no errors, repaired", "no errors, repaired", "no errors, repaired",
                 "errors, repaired", "errors, not repaired", "errors, not repaired",
                 "errors, not repaired", "errors, not repaired", "errors, not repaired"}));
}

TEST_F(DocumentTest, reportsTheTruthAboutASwapThatAnAlertRaisedAfter) {
    window->onCall = [](const std::string& call) {
        if (call.starts_with("alert: ")) {
            throw platform::Exception("Test", "raised");
        }
    };
    const std::string path = sandbox.write("Cut.xml", "<xmeml version=\"5\"><sequence/></xmeml>");
    EXPECT_EQ(document->startRepair(path).outcome, RepairOutcome::repairedAndSwapped);
    EXPECT_EQ(log.entries().back(), "Exception in -[Document startRepair:]. Test - raised.");
    EXPECT_FALSE(document->isRunning());
    ASSERT_EQ(window->outcomes.size(), 1U);
    EXPECT_EQ(window->outcomes.front().outcome, RepairOutcome::repairedAndSwapped);
}

TEST_F(DocumentTest, endsARunOnceThatAnotherExceptionEnded) {
    window->onCall = [](const std::string& call) {
        if (call == "status: Checking file...") {
            throw std::runtime_error("other");
        }
    };
    const std::string path = sandbox.write("Cut.xml", test::kSoundXMEML);
    EXPECT_THROW(static_cast<void>(document->startRepair(path)), std::runtime_error);
    EXPECT_EQ(window->callsOf("end sheet").size(), 1U);
    EXPECT_FALSE(document->isRunning());
    ASSERT_EQ(window->outcomes.size(), 1U);
    EXPECT_EQ(window->outcomes.front().outcome, RepairOutcome::stopped);
}

TEST_F(DocumentTest, withoutAnInterfaceWorksOnAnyThreadWithoutAMainLoop) {
    document->setHasGUI(false);
    document->setReportOutput(nullptr);
    RepairOutcome outcome = RepairOutcome::stopped;
    const std::string path = sandbox.write("Cut.xml", test::kSoundXMEML);
    std::thread([&] { outcome = document->startRepair(path).outcome; }).join();
    EXPECT_EQ(outcome, RepairOutcome::sound);
    EXPECT_EQ(window->calls, Strings{});
    EXPECT_FALSE(document->isRunning());
    EXPECT_EQ(document->windowMain(), nullptr);
}

}  // namespace
}  // namespace vornic
