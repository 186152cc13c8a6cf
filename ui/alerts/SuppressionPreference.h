#ifndef VORNIC_UI_ALERTS_SUPPRESSION_PREFERENCE_H
#define VORNIC_UI_ALERTS_SUPPRESSION_PREFERENCE_H

#include <string>
#include <utility>

namespace vornic {

/// What the suppression check box of an alert stands for: a boolean of the user's preferences, read
/// when the box is shown and written at once when it is ticked, not when the alert ends.
class SuppressionPreference {
  public:
    explicit SuppressionPreference(std::string key) : key_(std::move(key)) {}

    /// True when the preference is a true boolean, a number other than 0 or a text that reads as
    /// such ("1", "YES").
    [[nodiscard]] bool isTicked() const;
    /// Writes the preference. A failure is logged and leaves the preference as it was.
    void setTicked(bool ticked) const;

  private:
    std::string key_;
};

}  // namespace vornic

#endif
