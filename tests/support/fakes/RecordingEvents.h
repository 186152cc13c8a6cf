#ifndef VORNIC_TESTS_SUPPORT_FAKES_RECORDING_EVENTS_H
#define VORNIC_TESTS_SUPPORT_FAKES_RECORDING_EVENTS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Exception.h"
#include "base/StopToken.h"
#include "foundation/log/QMLog.h"
#include "job/Events.h"
#include "report/RuleTable.h"

namespace vornic::test {

/// Writes down what a run tells, and stops it or raises where a test wants that. One thread at a
/// time.
class RecordingEvents : public Events {
  public:
    /// What the run's stop token says.
    bool cancelled = false;

    /// The calls in order, each with its kind in front: "info: ", "bold: ", "error: ",
    /// "bold error: ", "label: ", "max: ", and "indeterminate" by itself.
    std::vector<std::string> calls;
    /// The rules of the lines.
    std::vector<std::string> rules;
    /// The values of the progress bar, in order.
    std::vector<std::int64_t> progressValues;
    std::vector<Verdict> verdicts;
    /// The same calls in order by their rules: that of a line, "label RULE" ("label" where the
    /// label has arguments), "max", and
    /// "indeterminate".
    std::vector<std::string> steps;
    /// When set, this step cancels the run.
    std::optional<std::string> cancelAtStep;
    /// When set, this step raises a `platform::Exception` with the name "Test" and the reason
    /// "raised".
    std::optional<std::string> raiseAtStep;
    /// When set, runs after each step, which it is given.
    std::function<void(const std::string& step)> onStep;
    /// When set, runs after each call is written down, which it is given; may raise.
    std::function<void(const std::string& call)> onCall;
    /// When set, runs whenever the run asks whether it was cancelled.
    std::function<void()> onPoll;

    /// Asks this object, which must outlive the run.
    [[nodiscard]] StopToken stopToken() {
        return StopToken([this] {
            if (onPoll) {
                onPoll();
            }
            return cancelled;
        });
    }

    /// The report lines alone, with their kind in front.
    [[nodiscard]] std::vector<std::string> report() const {
        std::vector<std::string> lines;
        for (const std::string& call : calls) {
            const std::string_view kind = std::string_view(call).substr(0, call.find(':'));
            if (kind == "info" || kind == "bold" || kind == "error" || kind == "bold error") {
                lines.push_back(call);
            }
        }
        return lines;
    }

    void line(const ReportLine& line) override {
        rules.emplace_back(ruleOf(line.rule).id);
        const char* const plain = line.isError ? "error: " : "info: ";
        const char* const bold = line.isError ? "bold error: " : "bold: ";
        steps.emplace_back(ruleOf(line.rule).id);
        note(line.isBold ? bold : plain, line.text);
    }
    void logLine(std::string_view text) override { QMLog::appendLog("%@", text); }
    void label(std::string_view text) override {
        steps.push_back("label" + idOfMessage(text));
        note("label: ", text);
    }
    void progressMaximum(std::int64_t maximum) override {
        steps.emplace_back("max");
        note("max: ", std::to_string(maximum));
    }
    void progressValue(std::int64_t value) override { progressValues.push_back(value); }
    void progressIsBusy() override {
        steps.emplace_back("indeterminate");
        note("indeterminate");
    }
    void verdict(const Verdict& verdict) override { verdicts.push_back(verdict); }

  private:
    // " RULE" for the rule whose message is this text; "" for a message with arguments.
    static std::string idOfMessage(std::string_view text) {
        for (std::size_t index = 0; index < kRuleCount; ++index) {
            const Rule& rule = ruleOf(RuleId{static_cast<std::uint16_t>(index)});
            if (rule.message == text) {
                return " " + std::string(rule.id);
            }
        }
        return "";
    }

    void note(std::string_view kind, std::string_view text = {}) {
        calls.push_back(std::string(kind).append(text));
        if (cancelAtStep == steps.back()) {
            cancelled = true;
        }
        if (raiseAtStep == steps.back()) {
            throw platform::Exception("Test", "raised");
        }
        if (onStep) {
            onStep(steps.back());
        }
        if (onCall) {
            onCall(calls.back());
        }
    }
};

}  // namespace vornic::test

#endif
