#ifndef VORNIC_TESTS_SUPPORT_FAKES_RECORDING_DOCUMENT_WINDOW_H
#define VORNIC_TESTS_SUPPORT_FAKES_RECORDING_DOCUMENT_WINDOW_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/threads/MainThread.h"
#include "repair/document/DocumentWindow.h"

namespace vornic::test {

/// A document's window that writes down what it is told. A call from another thread than the main
/// one fails the running test.
class RecordingDocumentWindow : public DocumentWindow, public ConversionDialog {
  public:
    // What the document can see; set it before, look at it afterwards.
    bool sheetIsVisible = false;
    bool sheetIsSheet = false;
    std::optional<std::string> selectedKey;
    bool keepsTheOriginal = false;

    /// The text of the report as it stands.
    std::string report;
    /// The calls in order: "clear", "insert: TEXT" with " [error]", " [bold]" behind it,
    /// "cancel button on", "cancel button off", "start", "stop", "indeterminate", "determinate",
    /// "status: TEXT", "begin sheet", "end sheet", "alert: MESSAGE | INFO", "begin convert",
    /// "end convert", "start spinner", "stop spinner", "current: TEXT", "offer: LOWEST VERSION",
    /// "interface on", "interface off", "converted: VERSION".
    std::vector<std::string> calls;
    /// What the conversion dialog was given to show, in order.
    std::vector<ConversionOffer> offers;
    /// What the conversion dialog was told of its state and of results, in order.
    std::vector<std::string> states;
    std::vector<std::string> results;
    std::vector<DialogConversion> conversions;
    /// How runs have ended, in order.
    std::vector<RepairResult> outcomes;
    /// When set, runs after each call, which it is given; may raise.
    std::function<void(const std::string& call)> onCall;

    /// The calls that begin with a text, without it.
    [[nodiscard]] std::vector<std::string> callsOf(std::string_view kind) const {
        std::vector<std::string> found;
        for (const std::string& call : calls) {
            if (call.starts_with(kind)) {
                found.push_back(call.substr(kind.size()));
            }
        }
        return found;
    }

    [[nodiscard]] bool hasAttachedSheet() const override { return sheetIsSheet; }
    void makeKeyAndOrderFront() override { note("front"); }

    void clearReport() override {
        report.clear();
        note("clear");
    }
    [[nodiscard]] bool reportIsEmpty() const override { return report.empty(); }
    void insertReportText(std::string_view text, bool isError, bool isBold) override {
        report.append(text);
        note(std::string("insert: ")
                 .append(text)
                 .append(isError ? " [error]" : "")
                 .append(isBold ? " [bold]" : ""));
    }

    void setProgressCancelEnabled(bool enabled) override {
        note(enabled ? "cancel button on" : "cancel button off");
    }
    void startProgressAnimation() override { note("start"); }
    void stopProgressAnimation() override { note("stop"); }
    void setProgressIndeterminate(bool indeterminate) override {
        note(indeterminate ? "indeterminate" : "determinate");
    }
    void setProgressStatusText(std::string_view text) override { note("status: ", text); }
    [[nodiscard]] bool progressSheetIsVisible() const override { return sheetIsVisible; }
    [[nodiscard]] bool progressSheetIsSheet() const override { return sheetIsSheet; }
    void beginProgressSheet() override {
        sheetIsVisible = true;
        sheetIsSheet = true;
        note("begin sheet");
    }
    void endProgressSheet() override {
        sheetIsVisible = false;
        sheetIsSheet = false;
        note("end sheet");
    }
    void showOutcome(const RepairResult& result) override { outcomes.push_back(result); }
    void beginAlertSheet(std::string_view message, std::string_view info) override {
        note("alert: ", std::string(message).append(" | ").append(info));
    }

    [[nodiscard]] ConversionDialog& conversionDialog() override { return *this; }
    void showConverted(const DialogConversion& conversion) override {
        conversions.push_back(conversion);
        note("converted: ", conversion.version);
    }

    void beginConvertSheet() override { note("begin convert"); }
    void endConvertSheet() override { note("end convert"); }
    void startConvertSpinner() override { note("start spinner"); }
    void stopConvertSpinner() override { note("stop spinner"); }
    void setConvertState(std::string_view text) override { states.emplace_back(text); }
    void showConvertResult(std::string_view text) override { results.emplace_back(text); }
    [[nodiscard]] bool keepsOriginal() const override { return keepsTheOriginal; }
    void setConvertCurVersion(std::string_view text) override { note("current: ", text); }
    void showOffer(const ConversionOffer& offer) override {
        offers.push_back(offer);
        note("offer: ", offer.lowestText());
    }
    [[nodiscard]] std::optional<std::string> selectedConvertVersionKey() const override {
        return selectedKey;
    }
    void setConvertInterfaceEnabled(bool enabled) override {
        note(enabled ? "interface on" : "interface off");
    }

  private:
    void note(std::string_view kind, std::string_view text = {}) {
        calls.push_back(std::string(kind).append(text));
        EXPECT_TRUE(platform::MainThread::isCurrent()) << calls.back();
        if (onCall) {
            // A copy, for the reaction may make further calls.
            const std::string call = calls.back();
            onCall(call);
        }
    }
};

}  // namespace vornic::test

#endif
