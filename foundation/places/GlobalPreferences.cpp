#include "foundation/places/GlobalPreferences.h"

#include <string>

#include "base/Error.h"
#include "base/PathText.h"
#include "foundation/places/PreferenceValues.h"
#include "foundation/places/QMLocalPaths.h"

namespace vornic {

std::optional<platform::PropertyList> globalPreference(std::string_view key) {
    const std::optional<std::string> folder = QMLocalPaths::prefsDirectory(true);
    if (!folder) {
        return std::nullopt;
    }
    ErrorSlot ignored;
    const std::optional<platform::PropertyList> preferences =
        platform::PropertyList::readFile(joinPath(*folder, "com.quillmark.global.plist"), ignored);
    const platform::PropertyList* value = preferences ? preferences->find(key) : nullptr;
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

bool isGlobalSwitchOn(std::string_view key) {
    const std::optional<platform::PropertyList> value = globalPreference(key);
    const std::string* text = value ? value->string() : nullptr;
    return (text != nullptr && *text == "1") || isNumberEqualTo(value, 1);
}

bool isGlobalSwitchOff(std::string_view key) {
    return isNumberEqualTo(globalPreference(key), 0);
}

}  // namespace vornic
