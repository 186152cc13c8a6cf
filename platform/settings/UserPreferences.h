#ifndef VORNIC_PLATFORM_SETTINGS_USER_PREFERENCES_H
#define VORNIC_PLATFORM_SETTINGS_USER_PREFERENCES_H

#include <optional>
#include <string>

#include "platform/settings/PropertyList.h"

namespace vornic::platform {

/// The preferences of one domain: the property list `<domain>.plist` in the user's Preferences
/// folder, the one of the same name for any user in the machine's, and the registered defaults.
/// A key is looked up in this order, so that a user's own value goes before the machine's. Nothing
/// but the defaults is cached; every call reads or rewrites the files, which are written
/// atomically, so that two programs that write never leave a broken file. A damaged file reads as
/// an empty one; before it is written anew a copy of it is kept beside it, which the console is
/// told. Any thread.
class UserPreferences {
  public:
    /// The application's own domain, "com.quillmark.Vornic".
    UserPreferences();
    explicit UserPreferences(std::string domain);

    /// The value: the user's own, else any user's, else the registered default; or nothing.
    [[nodiscard]] std::optional<PropertyList> value(const std::string& key) const;
    /// Stores a value of the user and writes the preferences out at once; all other keys are kept.
    /// Writers of one domain exclude each other through a lock file, so that no write loses
    /// another's key.
    /// @return false when they could not be written, with the slot filled.
    [[nodiscard]] bool setValue(const std::string& key, const PropertyList& value,
                                ErrorSlot& error) const;
    /// Stores a value for any user of this machine, where the machine's Preferences folder can be
    /// written, and takes the user's own value away, which would hide it. Elsewhere it is stored as
    /// the user's own.
    /// @return false when neither could be written, with the slot filled.
    [[nodiscard]] bool setValueForAnyUser(const std::string& key, const PropertyList& value,
                                          ErrorSlot& error) const;
    /// Says what the domain's keys stand for while nothing is stored, until the process ends. Keys
    /// that were registered before and are not among these keep their defaults.
    void registerDefaults(const PropertyList::Dictionary& defaults) const;

    /// The file that holds the user's values; nothing when the user has no Preferences folder or
    /// the domain is no file name.
    [[nodiscard]] std::optional<std::string> path() const;
    /// The file that holds the values of any user, likewise.
    [[nodiscard]] std::optional<std::string> anyUserPath() const;

  private:
    std::string domain_;
};

}  // namespace vornic::platform

#endif
