#ifndef VORNIC_TESTS_SUPPORT_FAKES_CHOSEN_KEYBOARD_H
#define VORNIC_TESTS_SUPPORT_FAKES_CHOSEN_KEYBOARD_H

#include <string>

#include "tests/support/machine/ScopedEnvironment.h"

namespace vornic::test {

/// The keyboard of a machine without a display while the object lives.
class ChosenKeyboard {
  public:
    explicit ChosenKeyboard(const std::string& layout, const std::string& variant = "")
        : layout_("XKB_DEFAULT_LAYOUT", layout), variant_("XKB_DEFAULT_VARIANT", variant) {}

  private:
    ScopedEnvironment display_{"DISPLAY", ""};
    ScopedEnvironment layout_;
    ScopedEnvironment variant_;
};

}  // namespace vornic::test

#endif
