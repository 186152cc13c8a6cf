#ifndef VORNIC_FOUNDATION_PLACES_GLOBAL_PREFERENCES_H
#define VORNIC_FOUNDATION_PLACES_GLOBAL_PREFERENCES_H

#include <optional>
#include <string_view>

#include "platform/settings/PropertyList.h"

/// The preference file that all programs of the family share, "com.quillmark.global.plist" in the
/// user's Preferences folder. It is read anew on every call. Any thread.
namespace vornic {

/// The value of a key; nothing when file or key is missing or the file cannot be read.
[[nodiscard]] std::optional<platform::PropertyList> globalPreference(std::string_view key);

/// True when the key holds the text "1" or a number equal to true, and for nothing else.
[[nodiscard]] bool isGlobalSwitchOn(std::string_view key);

/// True when the key holds a number equal to false, and for nothing else: texts do not switch off.
[[nodiscard]] bool isGlobalSwitchOff(std::string_view key);

}  // namespace vornic

#endif
