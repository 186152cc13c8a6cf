#include "foundation/GlobalPreferences.h"

#include <string>
#include <variant>

#include "foundation/QMLocalPaths.h"
#include "foundation/Text.h"
#include "platform/Error.h"

namespace vornic {

std::optional<platform::PropertyList> globalPreference(std::string_view key) {
    const std::optional<std::string> folder = QMLocalPaths::prefsDirectory(true);
    if (!folder) {
        return std::nullopt;
    }
    ErrorSlot ignored;
    const std::optional<platform::PropertyList> preferences = platform::PropertyList::readFile(
        appendingPathComponent(*folder, "com.quillmark.global.plist"), ignored);
    const platform::PropertyList* value = preferences ? preferences->find(key) : nullptr;
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

bool isGlobalSwitchOn(std::string_view key) {
    const std::optional<platform::PropertyList> value = globalPreference(key);
    if (!value) {
        return false;
    }
    const auto* real = std::get_if<double>(&value->value());
    return (value->string() != nullptr && *value->string() == "1") ||
           (value->boolean() != nullptr && *value->boolean()) ||
           (value->integer() != nullptr && *value->integer() == 1) ||
           (real != nullptr && *real == 1.0);
}

}  // namespace vornic
