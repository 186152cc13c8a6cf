#ifndef VORNIC_TESTS_REPAIR_PIPELINE_TEST_H
#define VORNIC_TESTS_REPAIR_PIPELINE_TEST_H

#include <string>
#include <string_view>
#include <vector>

#include "repair/pipeline/RepairPipeline.h"
#include "tests/support/fakes/RecordingEvents.h"
#include "tests/support/fakes/RecordingSwapObserver.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/texts/EngineTest.h"
#include "xml/reader/XMLReader.h"

namespace vornic::test {

using Strings = std::vector<std::string>;

inline constexpr std::string_view kSoundXMEML =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "    <sequence>\n        <name>Cut</name>\n    </sequence>\n</xmeml>\n";
inline constexpr std::string_view kSoundFCPXML =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n<fcpxml version=\"1.8\">\n"
    "    <resources/>\n    <library>\n        <event>\n            <project name=\"Cut\"/>\n"
    "        </event>\n    </library>\n</fcpxml>\n";

/// Runs the pipeline on real files, and writes down what they tell.
class PipelineTest : public EngineTest {
  protected:
    void SetUp() override { writeUsualCatalogue(); }

    RepairOutcome run(const std::string& path) {
        result = RepairPipeline(path, events, events.stopToken(), observer).run();
        return result.outcome;
    }
    /// Writes a file and runs the pipeline on it.
    RepairOutcome runOn(std::string_view name, std::string_view bytes) {
        return run(sandbox.write(name, bytes));
    }

    [[nodiscard]] std::string trash() const { return sandbox.home() + "/.Trash"; }
    [[nodiscard]] Strings namesInTrash() const { return namesIn(trash()); }
    /// The names in the folder of the user's files.
    [[nodiscard]] Strings names() const {
        Strings found = namesIn(sandbox.folder());
        std::erase(found, "Vornic.app");
        return found;
    }
    /// The description of what is wrong with a text.
    [[nodiscard]] static std::string faultOf(std::string_view text, XMLMode mode) {
        const XMLReading reading = readXML(text, mode);
        EXPECT_TRUE(reading.fault.has_value()) << text;
        return reading.fault ? reading.fault->localizedDescription() : "";
    }
    /// "TITLE | INFORMATION"; "" for a run without.
    [[nodiscard]] std::string closing() const {
        return result.closing ? result.closing->title + " | " + result.closing->information : "";
    }
    void expectFlags(bool hasErrors, bool wasRepaired) const {
        EXPECT_EQ(result.verdict, (Verdict{hasErrors, wasRepaired}));
        ASSERT_FALSE(events.verdicts.empty());
        EXPECT_EQ(events.verdicts.back(), result.verdict);
    }

    RecordingEvents events;
    RecordingSwapObserver observer;
    /// Of the last run.
    RepairResult result;
};

/// What every run on an existing file says first.
inline Strings openingCalls(const std::string& path) {
    return {"bold: Starting repair for file " + path + "...",
            "label: Starting repair for file " + path + "...", "label: Creating temporary file...",
            "info: Creating temporary file..."};
}

inline Strings openingSteps() {
    return {"repair-start", "label", "label repair-making-copy", "repair-making-copy"};
}

inline const std::string kSoundLine =
    "bold: No repair was necessary. No critical errors were found in the file.";
inline const std::string kRepairedLine =
    "bold: The file was repaired successfully. Errors were found in the file and were successfully "
    "repaired.";
inline const std::string kUnableLine =
    "bold error: Unable to repair file. Errors were found in the file and Vornic was unable to fix "
    "them.";
inline const std::string kSoundClosing =
    "No repair was necessary | No critical errors were found in the file.";
inline const std::string kRepairedClosing =
    "The file was repaired successfully | Errors were found in the file and were "
    "successfully repaired.";
inline const std::string kUnableClosing =
    "Unable to repair file | Errors were found in the file and Vornic was unable to fix "
    "them.";

/// Lists one after the other.
inline Strings joined(std::initializer_list<Strings> lists) {
    Strings all;
    for (const Strings& list : lists) {
        all.insert(all.end(), list.begin(), list.end());
    }
    return all;
}

}  // namespace vornic::test

#endif
