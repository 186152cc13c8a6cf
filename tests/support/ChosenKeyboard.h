#ifndef VORNIC_TESTS_SUPPORT_CHOSEN_KEYBOARD_H
#define VORNIC_TESTS_SUPPORT_CHOSEN_KEYBOARD_H

#include <cstdlib>
#include <optional>
#include <string>

namespace vornic::test {

/// An environment variable with another value while the object lives.
class ScopedVariable {
  public:
    ScopedVariable(std::string name, const std::string& value) : name_(std::move(name)) {
        if (const char* const before = std::getenv(name_.c_str())) {
            before_ = before;
        }
        setenv(name_.c_str(), value.c_str(), 1);
    }
    ~ScopedVariable() {
        if (before_) {
            setenv(name_.c_str(), before_->c_str(), 1);
        } else {
            unsetenv(name_.c_str());
        }
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    std::string name_;
    std::optional<std::string> before_;
};

/// The keyboard of a machine without a display while the object lives.
class ChosenKeyboard {
  public:
    explicit ChosenKeyboard(const std::string& layout, const std::string& variant = "")
        : layout_("XKB_DEFAULT_LAYOUT", layout), variant_("XKB_DEFAULT_VARIANT", variant) {}

  private:
    ScopedVariable display_{"DISPLAY", ""};
    ScopedVariable layout_;
    ScopedVariable variant_;
};

}  // namespace vornic::test

#endif
