#ifndef VORNIC_TESTS_SUPPORT_RECORDING_CONVERSION_HOST_H
#define VORNIC_TESTS_SUPPORT_RECORDING_CONVERSION_HOST_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "convert/ConversionHost.h"

namespace vornic::test {

/// A document that writes down what the conversion engines do to it. One thread at a time.
class RecordingConversionHost : public ConversionHost {
  public:
    /// An entry of the version menu.
    struct MenuItem {
        std::string title;
        std::string key;
        friend bool operator==(const MenuItem&, const MenuItem&) = default;
    };

    // What the engines can see; set it before a run, look at it afterwards.
    bool gui = true;
    int type = 0;
    std::int64_t minimum = 0;
    QMAlert::Window window;
    std::string curVersion;
    std::string downgradeVersion;
    std::vector<MenuItem> menu;
    bool isEnabled = false;
    bool isSpinning = false;

    /// The calls in order: "start spinner", "stop spinner", "stop spinner later",
    /// "current: TEXT", "downgrade: TEXT", "minimum: N", "clear menu", "add: TITLE", "key: KEY",
    /// "enable".
    std::vector<std::string> calls;
    /// When set, runs after each call, which it is given; may raise.
    std::function<void(const std::string& call)> onCall;

    [[nodiscard]] bool hasGUI() const override { return gui; }
    [[nodiscard]] int xmlType() const override { return type; }
    [[nodiscard]] std::int64_t minDowngradeVersion() const override { return minimum; }
    void setMinDowngradeVersion(std::int64_t version) override {
        minimum = version;
        note("minimum: ", std::to_string(version));
    }
    [[nodiscard]] QMAlert::Window windowMain() const override { return window; }
    void startConvertSpinner() override {
        isSpinning = true;
        note("start spinner");
    }
    void stopConvertSpinner() override {
        isSpinning = false;
        note("stop spinner");
    }
    void stopConvertSpinnerLater() override {
        isSpinning = false;
        note("stop spinner later");
    }
    void setConvertCurVersion(std::string_view text) override {
        curVersion = text;
        note("current: ", text);
    }
    void setConvertDowngradeVersion(std::string_view text) override {
        downgradeVersion = text;
        note("downgrade: ", text);
    }
    void removeAllConvertVersions() override {
        menu.clear();
        note("clear menu");
    }
    void addConvertVersion(std::string_view title) override {
        menu.push_back({std::string(title), {}});
        note("add: ", title);
    }
    void setLastConvertVersionKey(std::string_view key) override {
        menu.back().key = key;
        note("key: ", key);
    }
    void enableConvertInterface() override {
        isEnabled = true;
        note("enable");
    }

  private:
    void note(std::string_view kind, std::string_view text = {}) {
        calls.push_back(std::string(kind).append(text));
        if (onCall) {
            onCall(calls.back());
        }
    }
};

}  // namespace vornic::test

#endif
