#ifndef VORNIC_TESTS_SUPPORT_RECORDING_REPAIR_HOST_H
#define VORNIC_TESTS_SUPPORT_RECORDING_REPAIR_HOST_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Exception.h"
#include "repair/RepairHost.h"

namespace vornic::test {

/// A document that writes down what a run does to it. One thread at a time.
class RecordingRepairHost : public RepairHost {
  public:
    // What the run can see; set it before the run, look at it afterwards.
    bool cancelled = false;
    bool hasErrors = false;
    bool wasRepaired = true;
    int type = 0;

    /// The calls in order, each with its kind in front: "info: ", "bold: ", "error: ",
    /// "bold error: ", "label: ", "max: ", "alert: MESSAGE | INFO", and "clear", "start", "end",
    /// "indeterminate" by themselves.
    std::vector<std::string> calls;
    /// The values of the progress bar, in order.
    std::vector<std::int64_t> progressValues;
    /// When set, the call of exactly this entry cancels the run.
    std::optional<std::string> cancelAtCall;
    /// When set, the call of exactly this entry raises a `platform::Exception` with the name "Test"
    /// and the reason "raised".
    std::optional<std::string> raiseAtCall;
    /// When set, runs after each call is written down, which it is given; may raise.
    std::function<void(const std::string& call)> onCall;
    /// When set, runs whenever the run asks whether it was cancelled.
    std::function<void()> onPoll;

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

    void clearInfoText() override { note("clear"); }
    void appendInfoText(std::string_view text) override { note("info: ", text); }
    void appendBoldInfoText(std::string_view text) override { note("bold: ", text); }
    void appendErrorInfoText(std::string_view text) override { note("error: ", text); }
    void appendBoldErrorInfoText(std::string_view text) override { note("bold error: ", text); }
    void startProgress() override { note("start"); }
    void endProgress() override { note("end"); }
    void setProgressLabel(std::string_view text) override { note("label: ", text); }
    void setProgressMax(std::int64_t maximum) override { note("max: ", std::to_string(maximum)); }
    void setProgressValue(std::int64_t value) override { progressValues.push_back(value); }
    void setIndeterminateProgress() override { note("indeterminate"); }
    void displayAlert(std::optional<std::string_view> message,
                      std::optional<std::string_view> info) override {
        if (message) {
            note("alert: ", std::string(*message) + " | " + std::string(info.value_or("")));
        }
    }
    [[nodiscard]] bool progressCancelled() const override {
        if (onPoll) {
            onPoll();
        }
        return cancelled;
    }
    void setProgressCancelled(bool isCancelled) override { cancelled = isCancelled; }
    [[nodiscard]] bool fileHasErrs() const override { return hasErrors; }
    void setFileHasErrs(bool found) override { hasErrors = found; }
    [[nodiscard]] bool fileWasRepaired() const override { return wasRepaired; }
    void setFileWasRepaired(bool repaired) override { wasRepaired = repaired; }
    [[nodiscard]] int xmlType() const override { return type; }
    void setXmlType(int newType) override { type = newType; }

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
