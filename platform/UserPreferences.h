#ifndef VORNIC_PLATFORM_USER_PREFERENCES_H
#define VORNIC_PLATFORM_USER_PREFERENCES_H

#include <optional>
#include <string>

#include "platform/PropertyList.h"

namespace vornic::platform {

/// The user's preferences of one domain: the property list `<domain>.plist` in the user's
/// Preferences folder. Nothing is cached; every call reads or rewrites the file, which is written
/// atomically, so that two programs that write never leave a broken file. Any thread.
class UserPreferences {
  public:
    /// The application's own domain, "com.quillmark.Vornic".
    UserPreferences();
    explicit UserPreferences(std::string domain);

    /// The stored value, or nothing.
    [[nodiscard]] std::optional<PropertyList> value(const std::string& key) const;
    /// Stores a value and writes the preferences out at once; all other keys are kept. Writers of
    /// one domain exclude each other through a lock file, so that no write loses another's key.
    /// @return false when they could not be written, with the slot filled.
    bool setValue(const std::string& key, const PropertyList& value, ErrorSlot& error) const;
    /// The file that holds this domain; nothing when the user has no Preferences folder.
    [[nodiscard]] std::optional<std::string> path() const;

  private:
    std::string domain_;
};

}  // namespace vornic::platform

#endif
