#ifndef VORNIC_TESTS_REPAIR_PIPELINE_CHECK_OF_REPAIR_TEST_H
#define VORNIC_TESTS_REPAIR_PIPELINE_CHECK_OF_REPAIR_TEST_H

#include <optional>
#include <string>
#include <vector>

#include "base/Exception.h"
#include "repair/pipeline/RepairReport.h"
#include "report/RuleTable.h"
#include "tests/support/fakes/RecordingEvents.h"
#include "tests/support/texts/EngineTest.h"

namespace vornic::test {

/// Writes down what a check of the repair finds, and what becomes of the verdict.
class CheckOfRepairTest : public EngineTest {
  protected:
    /// The findings in order: the rule's id, and the arguments behind it.
    [[nodiscard]] std::vector<std::string> findings() const { return findings_; }
    void expectFlags(bool hasErrors, bool wasRepaired) const {
        EXPECT_EQ(report.verdict(), (Verdict{hasErrors, wasRepaired}));
    }

    /// When set, this finding raises a `platform::Exception` with the name "Test" and the reason
    /// "raised".
    std::optional<std::string> raiseAtFinding;
    RecordingEvents events;
    RepairReport report{events, {false, true}};
    FoundInRepair found = [this](const RepairFinding& finding) {
        std::string words(ruleOf(finding.rule).id);
        for (const Argument& argument : finding.arguments) {
            words.append(" ").append(argument.value);
        }
        findings_.push_back(words);
        if (raiseAtFinding == words) {
            throw platform::Exception("Test", "raised");
        }
        report.add(finding);
    };

  private:
    std::vector<std::string> findings_;
};

}  // namespace vornic::test

#endif
