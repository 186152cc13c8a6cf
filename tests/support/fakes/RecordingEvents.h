#ifndef VORNIC_TESTS_SUPPORT_FAKES_RECORDING_EVENTS_H
#define VORNIC_TESTS_SUPPORT_FAKES_RECORDING_EVENTS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Exception.h"
#include "foundation/log/QMLog.h"
#include "job/Events.h"
#include "base/StopToken.h"
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
    /// When set, the call of exactly this entry cancels the run.
    std::optional<std::string> cancelAtCall;
    /// When set, the call of exactly this entry raises a `platform::Exception` with the name "Test"
    /// and the reason "raised".
    std::optional<std::string> raiseAtCall;
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
        note(line.isBold ? bold : plain, line.text);
    }
    void logLine(std::string_view text) override { QMLog::appendLog("%@", text); }
    void label(std::string_view text) override { note("label: ", text); }
    void progressMaximum(std::int64_t maximum) override { note("max: ", std::to_string(maximum)); }
    void progressValue(std::int64_t value) override { progressValues.push_back(value); }
    void progressIsBusy() override { note("indeterminate"); }
    void verdict(const Verdict& verdict) override { verdicts.push_back(verdict); }

  private:
    void note(std::string_view kind, std::string_view text = {}) {
        calls.push_back(std::string(kind).append(text));
        if (cancelAtCall == calls.back()) {
            cancelled = true;
        }
        if (raiseAtCall == calls.back()) {
            throw platform::Exception("Test", "raised");
        }
        if (onCall) {
            onCall(calls.back());
        }
    }
};

}  // namespace vornic::test

#endif
