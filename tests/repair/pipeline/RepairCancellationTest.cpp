#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "base/Text.h"
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

/// A cancellation at one call of a run, and the calls that must follow before the end ("PATH" is
/// the file's).
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
    events.cancelAtCall = point.at;
    const RepairOutcome outcome = run(path);
    expectCancelled(path, before, outcome);
    const auto call = std::find(events.calls.begin(), events.calls.end(), point.at);
    ASSERT_NE(call, events.calls.end());
    Strings expected = point.followedBy;
    for (std::string& line : expected) {
        line = replacingOccurrences(line, "PATH", path);
    }
    EXPECT_EQ(Strings(call + 1, events.calls.end()), expected);
    EXPECT_EQ(hasWorkingCopy(), point.leavesWorkingCopy);
}

const std::vector<CancelPoint> kCancelPoints = {
    {"a.xml",
     std::string(kSoundXMEML),
     "label: Creating temporary file...",
     {"info: Creating temporary file..."},
     false},
    {"a.xml", std::string(kSoundXMEML), "info: Creating temporary file...", {}, false},
    {"a.xml", std::string(kSoundXMEML), "info: Checking file...", {"label: Checking file..."}},
    {"a.xml", std::string(kSoundXMEML), "label: Checking file...", {}},
    {"a.xml", std::string(kSoundXMEML), "info: File loaded successfully.", {}},
    {"a.xml",
     std::string(kSoundXMEML),
     "info: Filtering invalid characters...",
     {"label: Filtering invalid characters..."}},
    {"a.xml", std::string(kSoundXMEML), "label: Filtering invalid characters...", {}},
    {"a.xml", std::string(kSoundXMEML), "indeterminate", {}},
    {"a.xml",
     std::string(kSoundXMEML),
     "info: Checking header tags...",
     {"label: Checking header tags..."}},
    {"a.xml", std::string(kSoundXMEML), "label: Checking header tags...", {}},
    {"a.xml",
     kWithoutDeclaration,
     "error: Invalid DTD... repairing",
     {"info: Checking version tags...", "label: Checking version tags..."}},
    {"a.xml",
     std::string(kSoundXMEML),
     "info: Checking version tags...",
     {"label: Checking version tags..."}},
    {"a.xml", std::string(kSoundXMEML), "label: Checking version tags...", {}},
    {"a.xml",
     "<!DOCTYPE xmeml><xmeml version=\"9\"><sequence/></xmeml>",
     "bold error: Unrecognized XML Interchange version 9.",
     {}},
    {"a.xml",
     std::string(kSoundXMEML),
     "info: Updating type/creator codes...",
     {"label: Updating type/creator codes..."}},
    {"a.xml", std::string(kSoundXMEML), "label: Updating type/creator codes...", {}},
    {"a.fcpxml", std::string(kSoundFCPXML), "label: Checking header tags...", {}},
    {"a.fcpxml", "<fcpxml/>", "error: No project node found in file", {}},
    {"a.fcpxml", std::string(kSoundFCPXML), "info: Checking for FCPX-specific errors...", {}},
    {"a.xml",
     kNotWellFormed,
     "label: File did not load successfully - beginning repair...",
     {"error: File did not load successfully - beginning repair..."}},
    {"a.xml", kNotWellFormed, "error: File did not load successfully - beginning repair...", {}},
    {"a.xml",
     kNotWellFormed,
     "error: Filtering invalid characters...",
     {"label: Filtering invalid characters..."}},
    {"a.xml", kNotWellFormed, "label: Filtering invalid characters...", {}},
    {"a.xml", kNotWellFormed, "indeterminate", {}},
    {"a.xml", kNotWellFormed, "error: Unable to load XML data", {}},
    {"a.xml", "<a\xEE\x80\x80/>", "error: Invalid character at byte 2 removed.", {}},
    {"a.xml",
     "<!DOCTYPE xmeml><xmeml><b>&</b><b>&</b></xmeml>",
     "error: Line 1, column 27: an ampersand that begins no entity was read as text",
     {}},
};

INSTANTIATE_TEST_SUITE_P(Calls, RepairCancelledAt, ::testing::ValuesIn(kCancelPoints),
                         [](const auto& point) { return "Point" + std::to_string(point.index); });

TEST_F(RepairCancellationTest, isTooLateFromTheLabelFinishingOn) {
    events.cancelAtCall = "label: Finishing...";
    EXPECT_EQ(runOn("a.xml", kWithoutDeclaration), RepairOutcome::repairedAndSwapped);
    events = {};
    events.cancelAtCall = "label: Finishing...";
    EXPECT_EQ(runOn("a.xml", kSoundXMEML), RepairOutcome::sound);
}

TEST_F(RepairCancellationTest, afterAFailedSaveEndsTheRun) {
    // The error of the failed first parse makes the save fail.
    const std::string text = "<!DOCTYPE xmeml><xmeml version=\"5\"><a\uE000/></xmeml>";
    events.onCall = [this](const std::string& call) {
        events.cancelled =
            events.cancelled || call.starts_with("bold error: Unable to save file: ");
    };
    const std::string path = sandbox.write("a.xml", text);
    const FileState before = fileState(path);
    const RepairOutcome outcome = run(path);
    expectCancelled(path, before, outcome);
    EXPECT_TRUE(events.calls.back().starts_with("bold error: Unable to save"));
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
        events.onCall = [&](const std::string& call) {
            if (call == "info: File loaded successfully.") {
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
    events.onCall = [this](const std::string& call) {
        events.cancelled = call == "error: Invalid character at byte 23 removed.";
    };
    bool asked = false;
    events.onPoll = [this, &asked] {
        if (asked) {
            events.cancelled = false;
        }
        asked = events.cancelled;
    };
    EXPECT_EQ(runOn("a.xml", "<!DOCTYPE xmeml><xmeml>\x01 text</xmeml>"), RepairOutcome::cancelled);
    EXPECT_EQ(events.report().back(), "error: Invalid character at byte 23 removed.");
}

}  // namespace
}  // namespace vornic
