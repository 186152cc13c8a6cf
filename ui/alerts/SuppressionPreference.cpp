#include "ui/alerts/SuppressionPreference.h"

#include <optional>

#include "base/Text.h"
#include "foundation/places/PreferenceValues.h"
#include "platform/settings/PropertyList.h"
#include "platform/settings/UserPreferences.h"

namespace vornic {

bool SuppressionPreference::isTicked() const {
    const std::optional<platform::PropertyList> value = platform::UserPreferences().value(key_);
    if (!value) {
        return false;
    }
    if (const bool* boolean = value->boolean()) {
        return *boolean;
    }
    if (const std::int64_t* integer = value->integer()) {
        return *integer != 0;
    }
    const std::string* text = value->string();
    return text != nullptr &&
           (caseInsensitiveCompare(*text, "YES") == 0 ||
            caseInsensitiveCompare(*text, "true") == 0 || integerValue(*text) != 0);
}

void SuppressionPreference::setTicked(bool ticked) const {
    ErrorSlot error;
    if (!platform::UserPreferences().setValue(key_, platform::PropertyList(ticked), error)) {
        logUnsavedPreference(key_, error);
    }
}

}  // namespace vornic
