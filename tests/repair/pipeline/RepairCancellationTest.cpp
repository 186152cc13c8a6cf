#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/repair/pipeline/PipelineTest.h"

/// Where a run looks whether it was cancelled, and how it ends when it was.
namespace vornic {
namespace {

using test::fileState;
using test::FileState;
using test::kSoundFCPXML;
using test::kSoundXMEML;
using test::Strings;

const std::string kWithoutDeclaration = "<xmeml version=\"5\"><sequence/></xmeml>";
const std::string kNotWellFormed = "<xmeml version=\"5\"><sequence></xmeml>";

/// A cancellation at one step of a run, and the steps that must follow before the end.
struct CancelPoint {
    std::string name;
    std::string text;
    std::string at;
    Strings followedBy;
    bool leavesWorkingCopy = true;

    friend std::ostream& operator<<(std::ostream& stream, const CancelPoint& point) {
        return stream << point.at;
    }
};

class RepairCancellationTest : public test::PipelineTest {
  protected:
    /// Ends as a cancelled run must.
    void expectCancelled(const std::string& path, const FileState& before, RepairOutcome outcome) {
        EXPECT_EQ(outcome, RepairOutcome::cancelled);
        EXPECT_EQ(fileState(path), before);
        EXPECT_FALSE(test::exists(trash()));
        EXPECT_EQ(closing(), "");
        EXPECT_EQ(result.original, path);
        EXPECT_EQ(result.workingCopy, hasWorkingCopy() ? sandbox.path(workingCopyName()) : "");
    }
    [[nodiscard]] std::string workingCopyName() const {
        const Strings found = names();
        const auto copy = std::find_if(found.begin(), found.end(), [](const std::string& name) {
            return name.find("-backup.") != std::string::npos;
        });
        return copy == found.end() ? "" : *copy;
    }
    [[nodiscard]] bool hasWorkingCopy() const { return !workingCopyName().empty(); }
};

class RepairCancelledAt : public RepairCancellationTest,
                          public ::testing::WithParamInterface<CancelPoint> {};

TEST_P(RepairCancelledAt, endsAtTheNextCheckPoint) {
    const CancelPoint& point = GetParam();
    const std::string path = sandbox.write(point.name, point.text);
    const FileState before = fileState(path);
    events.cancelAtStep = point.at;
    const RepairOutcome outcome = run(path);
    expectCancelled(path, before, outcome);
    const auto call = std::find(events.steps.begin(), events.steps.end(), point.at);
    ASSERT_NE(call, events.steps.end());
    EXPECT_EQ(Strings(call + 1, events.steps.end()), point.followedBy);
    EXPECT_EQ(hasWorkingCopy(), point.leavesWorkingCopy);
}

const std::vector<CancelPoint> kCancelPoints = {
    {"a.xml", std::string(kSoundXMEML), "label repair-making-copy", {"repair-making-copy"}, false},
    {"a.xml", std::string(kSoundXMEML), "repair-making-copy", {}, false},
    {"a.xml", std::string(kSoundXMEML), "repair-checking-file", {"label repair-checking-file"}},
    {"a.xml", std::string(kSoundXMEML), "label repair-checking-file", {}},
    {"a.xml", std::string(kSoundXMEML), "repair-loaded", {}},
    {"a.xml", std::string(kSoundXMEML), "repair-filtering", {"label repair-filtering"}},
    {"a.xml", std::string(kSoundXMEML), "label repair-filtering", {}},
    {"a.xml", std::string(kSoundXMEML), "indeterminate", {}},
    {"a.xml", std::string(kSoundXMEML), "repair-checking-header", {"label repair-checking-header"}},
    {"a.xml", std::string(kSoundXMEML), "label repair-checking-header", {}},
    {"a.xml",
     kWithoutDeclaration,
     "repair-document-type",
     {"repair-checking-version", "label repair-checking-version"}},
    {"a.xml",
     std::string(kSoundXMEML),
     "repair-checking-version",
     {"label repair-checking-version"}},
    {"a.xml", std::string(kSoundXMEML), "label repair-checking-version", {}},
    {"a.xml",
     "<!DOCTYPE xmeml><xmeml version=\"9\"><sequence/></xmeml>",
     "repair-version-unknown",
     {}},
    {"a.xml", std::string(kSoundXMEML), "repair-updating-codes", {"label repair-updating-codes"}},
    {"a.xml", std::string(kSoundXMEML), "label repair-updating-codes", {}},
    {"a.fcpxml", std::string(kSoundFCPXML), "label repair-checking-header", {}},
    {"a.fcpxml", "<fcpxml/>", "repair-no-project", {}},
    {"a.fcpxml", std::string(kSoundFCPXML), "repair-checking-events", {}},
    {"a.xml", kNotWellFormed, "label repair-beginning-repair", {"repair-beginning-repair"}},
    {"a.xml", kNotWellFormed, "repair-beginning-repair", {}},
    {"a.xml", kNotWellFormed, "repair-filtering", {"label repair-filtering"}},
    {"a.xml", kNotWellFormed, "label repair-filtering", {}},
    {"a.xml", kNotWellFormed, "indeterminate", {}},
    {"a.xml", kNotWellFormed, "repair-not-loaded", {}},
    {"a.xml", "<a\xEE\x80\x80/>", "repair-character-removed", {}},
    {"a.xml", "<!DOCTYPE xmeml><xmeml><b>&</b><b>&</b></xmeml>", "xml-stray-ampersand", {}},
};

INSTANTIATE_TEST_SUITE_P(Calls, RepairCancelledAt, ::testing::ValuesIn(kCancelPoints),
                         [](const auto& point) { return "Point" + std::to_string(point.index); });

TEST_F(RepairCancellationTest, isTooLateFromTheLabelFinishingOn) {
    events.cancelAtStep = "label repair-finishing";
    EXPECT_EQ(runOn("a.xml", kWithoutDeclaration), RepairOutcome::repairedAndSwapped);
    events = {};
    events.cancelAtStep = "label repair-finishing";
    EXPECT_EQ(runOn("a.xml", kSoundXMEML), RepairOutcome::sound);
}

TEST_F(RepairCancellationTest, afterAFailedSaveEndsTheRun) {
    // The error of the failed first parse makes the save fail.
    const std::string text = "<!DOCTYPE xmeml><xmeml version=\"5\"><a\uE000/></xmeml>";
    events.onStep = [this](const std::string& step) {
        events.cancelled = events.cancelled || step == "repair-save-failed";
    };
    const std::string path = sandbox.write("a.xml", text);
    const FileState before = fileState(path);
    const RepairOutcome outcome = run(path);
    expectCancelled(path, before, outcome);
    EXPECT_EQ(events.steps.back(), "repair-save-failed");
}

struct Fixture {
    std::string name;
    std::string text;
    friend std::ostream& operator<<(std::ostream& stream, const Fixture& fixture) {
        return stream << fixture.name;
    }
};

/// Cancels when the run asks for the n-th time.
class RepairCancelledAtPoll : public RepairCancellationTest,
                              public ::testing::WithParamInterface<Fixture> {};

TEST_P(RepairCancelledAtPoll, saysNothingMoreAndLeavesTheFileAlone) {
    const std::string path = sandbox.path("a.xml");
    for (std::size_t number = 1;; ++number) {
        sandbox.write("a.xml", GetParam().text);
        const FileState before = fileState(path);
        events = {};
        std::size_t polls = 0;
        std::size_t callsThen = 0;
        events.onPoll = [&] {
            if (++polls == number) {
                events.cancelled = true;
                callsThen = events.calls.size();
            }
        };
        const RepairOutcome outcome = run(path);
        if (polls < number) {
            // The run did not ask as often as that.
            EXPECT_NE(outcome, RepairOutcome::cancelled);
            EXPECT_GE(number, 12U);
            break;
        }
        expectCancelled(path, before, outcome);
        EXPECT_EQ(events.calls.size(), callsThen) << "poll " << number;
        std::filesystem::remove(sandbox.path("a-backup.xml"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, RepairCancelledAtPoll,
    ::testing::Values(Fixture{"Sound", std::string(kSoundXMEML)},
                      Fixture{"WithoutDeclaration", kWithoutDeclaration},
                      Fixture{"NotUTF8", "<xmeml><sequence>\xE9</sequence></xmeml>"},
                      Fixture{"Mended", "<!DOCTYPE xmeml><xmeml><a>&</a><b>&</b></xmeml>"}),
    [](const auto& fixture) { return fixture.param.name; });

class RepairPolls : public RepairCancellationTest {
  protected:
    /// How often a run asks before it says that the file loaded.
    std::size_t pollsUntilLoaded(std::string_view text) {
        std::size_t polls = 0;
        std::size_t pollsThen = 0;
        events.onPoll = [&polls] { ++polls; };
        events.onStep = [&](const std::string& step) {
            if (step == "repair-loaded") {
                pollsThen = polls;
            }
        };
        static_cast<void>(runOn("a.xml", text));
        return pollsThen;
    }
};

TEST_F(RepairPolls, comeBeforeTheCopyAndBeforeAndAfterTheReading) {
    EXPECT_EQ(pollsUntilLoaded(kSoundXMEML), 3U);
}

TEST_F(RepairPolls, comeBeforeAndAfterTheStrippingAndBeforeTheParseOfRawBytesToo) {
    EXPECT_EQ(pollsUntilLoaded("<xmeml><sequence>\xE9</sequence></xmeml>"), 6U);
}

TEST_F(RepairPolls, endTheRawBytesRouteBeforeTheStripping) {
    std::size_t polls = 0;
    events.onPoll = [&] { events.cancelled = ++polls == 4; };
    EXPECT_EQ(runOn("a.xml", "<xmeml>\xE9</xmeml>"), RepairOutcome::cancelled);
    EXPECT_FALSE(log.contains("Stripping invalid characters from data..."));
}

TEST_F(RepairCancellationTest, ofAFilterThatAnotherRunHasTakenBackStillEndsTheRun) {
    // Two runs of one document share the flag; the second clears it when it starts.
    events.onStep = [this](const std::string& step) {
        events.cancelled = step == "repair-character-removed";
    };
    bool asked = false;
    events.onPoll = [this, &asked] {
        if (asked) {
            events.cancelled = false;
        }
        asked = events.cancelled;
    };
    EXPECT_EQ(runOn("a.xml", "<!DOCTYPE xmeml><xmeml>\x01 text</xmeml>"), RepairOutcome::cancelled);
    EXPECT_EQ(events.rules.back(), "repair-character-removed");
}

}  // namespace
}  // namespace vornic
