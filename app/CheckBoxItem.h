#ifndef VORNIC_APP_CHECK_BOX_ITEM_H
#define VORNIC_APP_CHECK_BOX_ITEM_H

#include <optional>

namespace vornic {

/// A menu item or a check box that is on or off. Drawn elsewhere; main thread only.
class CheckBoxItem {
  public:
    virtual ~CheckBoxItem() = default;
    /// Nothing for a sender that has no state.
    [[nodiscard]] virtual std::optional<bool> state() const = 0;
    /// Changes what is shown, without sending the item's action.
    virtual void setState(bool on) = 0;
};

}  // namespace vornic

#endif
