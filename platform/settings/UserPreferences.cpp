#include "platform/settings/UserPreferences.h"

#include <cerrno>
#include <chrono>
#include <map>
#include <mutex>
#include <utility>

#include "base/PathText.h"
#include "platform/files/DamagedFile.h"
#include "platform/files/FileSystem.h"
#include "platform/locks/FileLock.h"
#include "platform/processes/Console.h"
#include "platform/settings/Directories.h"

namespace vornic::platform {
namespace {

constexpr const char* kApplicationDomain = "com.quillmark.Vornic";

/// Keeps a copy of preferences that cannot be made out and are about to be written anew.
bool keepDamaged(const std::string& path, ErrorSlot& error) {
    const std::optional<std::string> copy = keepDamagedList(path, error);
    if (copy) {
        consoleLog("The preferences " + path + " were damaged. They are kept as " + *copy +
                   " and new ones were begun.");
    }
    return copy.has_value();
}

/// The entries that stand in the file; none when it is missing, empty or damaged, and then a copy
/// of it is kept. Nothing when it cannot be read, or not be kept.
std::optional<PropertyList::Dictionary> storedEntries(const std::string& path, ErrorSlot& error) {
    if (!nodeExists(path)) {
        return PropertyList::Dictionary{};
    }
    const std::optional<std::string> bytes = readFile(path, error);
    if (!bytes) {
        return std::nullopt;
    }
    const std::optional<PropertyList> list = PropertyList::parse(*bytes);
    if (list && list->dictionary() != nullptr) {
        return *list->dictionary();
    }
    return bytes->empty() || keepDamaged(path, error) ? std::optional(PropertyList::Dictionary{})
                                                      : std::nullopt;
}

constexpr std::chrono::seconds kLongestWaitForLock{5};

using Path = std::optional<std::string>;

Path preferencesFile(const std::string& domain, SearchPathDomain owner) {
    const std::vector<std::string> library =
        searchPathForDirectories(SearchPathDirectory::library, owner);
    if (library.empty() || domain.empty() || domain.find('/') != std::string::npos) {
        return std::nullopt;
    }
    return joinPath(joinPath(library.front(), "Preferences"), domain + ".plist");
}

std::optional<PropertyList> storedValue(const Path& file, const std::string& key) {
    ErrorSlot ignored;
    const std::optional<PropertyList> list =
        file ? PropertyList::readFile(*file, ignored) : std::nullopt;
    const PropertyList* found = list ? list->find(key) : nullptr;
    return found != nullptr ? std::optional(*found) : std::nullopt;
}

/// Stores the value of a key, or takes the key away where there is no value.
bool storeValue(const std::string& file, const std::string& key,
                const std::optional<PropertyList>& value, ErrorSlot& error) {
    if (!createDirectory(parentFolder(file), error)) {
        return false;
    }
    const std::optional<FileLock> lock = FileLock::acquire(file, kLongestWaitForLock, error);
    std::optional<PropertyList::Dictionary> entries =
        lock ? storedEntries(file, error) : std::nullopt;
    if (!entries) {
        return false;
    }
    const auto stored = entries->find(key);
    const bool isStored = stored != entries->end();
    if (value ? isStored && stored->second == *value : !isStored) {
        return true;
    }
    if (value) {
        entries->insert_or_assign(key, *value);
    } else {
        entries->erase(stored);
    }
    return PropertyList(std::move(*entries)).writeFile(file, error);
}

/// Guards and holds what every instance has registered.
struct RegisteredDefaults {
    std::mutex mutex;
    std::map<std::string, PropertyList::Dictionary> byDomain;
};

RegisteredDefaults& registeredDefaults() {
    static RegisteredDefaults registered;
    return registered;
}

std::optional<PropertyList> registeredDefault(const std::string& domain, const std::string& key) {
    RegisteredDefaults& registered = registeredDefaults();
    const std::lock_guard lock(registered.mutex);
    const auto defaults = registered.byDomain.find(domain);
    if (defaults == registered.byDomain.end()) {
        return std::nullopt;
    }
    const auto found = defaults->second.find(key);
    return found != defaults->second.end() ? std::optional(found->second) : std::nullopt;
}

}  // namespace

UserPreferences::UserPreferences() : UserPreferences(kApplicationDomain) {}

UserPreferences::UserPreferences(std::string domain) : domain_(std::move(domain)) {}

std::optional<std::string> UserPreferences::path() const {
    return preferencesFile(domain_, SearchPathDomain::user);
}

std::optional<std::string> UserPreferences::anyUserPath() const {
    return preferencesFile(domain_, SearchPathDomain::local);
}

std::optional<PropertyList> UserPreferences::value(const std::string& key) const {
    if (std::optional<PropertyList> own = storedValue(path(), key)) {
        return own;
    }
    if (std::optional<PropertyList> anyUsers = storedValue(anyUserPath(), key)) {
        return anyUsers;
    }
    return registeredDefault(domain_, key);
}

bool UserPreferences::setValue(const std::string& key, const PropertyList& value,
                               ErrorSlot& error) const {
    const std::optional<std::string> file = path();
    if (!file) {
        error = posixError("There is no folder for the preferences of " + domain_, ENOENT);
        return false;
    }
    return storeValue(*file, key, value, error);
}

bool UserPreferences::setValueForAnyUser(const std::string& key, const PropertyList& value,
                                         ErrorSlot& error) const {
    const std::optional<std::string> machines = anyUserPath();
    ErrorSlot notWritable;
    if (!machines || !storeValue(*machines, key, value, notWritable)) {
        return setValue(key, value, error);
    }
    const std::optional<std::string> own = path();
    return !own || !storedValue(own, key) || storeValue(*own, key, std::nullopt, error);
}

void UserPreferences::registerDefaults(const PropertyList::Dictionary& defaults) const {
    RegisteredDefaults& registered = registeredDefaults();
    const std::lock_guard lock(registered.mutex);
    for (const auto& [key, value] : defaults) {
        registered.byDomain[domain_].insert_or_assign(key, value);
    }
}

}  // namespace vornic::platform
