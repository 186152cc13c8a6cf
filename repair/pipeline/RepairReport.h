#ifndef VORNIC_REPAIR_PIPELINE_REPAIR_REPORT_H
#define VORNIC_REPAIR_PIPELINE_REPAIR_REPORT_H

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "job/Events.h"
#include "job/Note.h"
#include "repair/pipeline/RepairFinding.h"
#include "repair/pipeline/SourcePlaces.h"
#include "report/Findings.h"
#include "report/Message.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextSpan.h"

namespace vornic {

/// What a repair says and finds: sends each sentence of the table to the events, as a line in the
/// rule's style, and keeps verdict and findings for the result of the run. One thread.
class RepairReport {
  public:
    /// How many findings of a rule are kept.
    static constexpr std::size_t kKeptFindings = 100;

    explicit RepairReport(Events& events, const Verdict& verdict = {})
        : events_(events), verdict_(verdict) {}

    using ArgumentList = std::initializer_list<MessageArgument>;

    void say(RuleId rule, ArgumentList arguments = {});
    /// For the line of a step that is made because of an error.
    void sayAsError(RuleId rule, ArgumentList arguments = {});
    void log(RuleId rule, ArgumentList arguments = {});
    void label(RuleId rule, ArgumentList arguments = {});
    /// The line first, then the label.
    void sayAndLabel(RuleId rule);

    void say(const Note& note);
    /// What was wrong with the markup and how it was read, as a line of the mend's own rule.
    void sayMend(const XMLMend& mend);
    /// Why a step failed; an empty line for an empty slot.
    void sayReason(const ErrorSlot& error);
    /// Changes the verdict as a finding's effect says, and says its line. Counts nothing: for what
    /// is said of a file that can't be read.
    void say(const RepairFinding& finding);

    /// Counts a finding and says it.
    void add(const RepairFinding& finding);
    /// The same for a finding at some bytes of a text; costs no memory once enough findings of the
    /// rule are kept.
    void add(RuleId rule, FindingEffect effect, TextSpan where, SourcePlaces& places,
             ArgumentList arguments);
    /// Counts what a reading of the markup has found, which is said in other words, and makes its
    /// places and edits those of the file. A single one that is known by its rule at its place is
    /// not counted again.
    /// @param places of a text without mends in it
    void count(Findings found, SourcePlaces places);

    [[nodiscard]] const Verdict& verdict() const { return verdict_; }
    /// Tells the events, also when nothing changes.
    void setVerdict(const Verdict& verdict);
    /// Something was found; whether it can be mended is left open.
    void noteErrors() { setVerdict({true, verdict_.wasRepaired}); }
    /// Something was found that can't be mended.
    void giveUp() { setVerdict({true, false}); }

    [[nodiscard]] Findings& findings() { return findings_; }
    /// The message of the first finding that can't be mended; empty while there is none.
    [[nodiscard]] const std::string& obstacle() const { return obstacle_; }

    [[nodiscard]] Events& events() { return events_; }

  private:
    void line(RuleId rule, std::string_view text, bool isError);
    void takeEffect(FindingEffect effect);
    [[nodiscard]] bool isFirstObstacle(FindingEffect effect) const;
    [[nodiscard]] bool knows(const Finding& finding) const;

    Events& events_;
    Verdict verdict_;
    Findings findings_{kKeptFindings};
    std::string obstacle_;
};

}  // namespace vornic

#endif
