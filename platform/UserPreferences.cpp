#include "platform/UserPreferences.h"

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

#include "platform/Directories.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "platform/FileSystem.h"
#include "platform/PathText.h"

namespace vornic::platform {
namespace {

constexpr const char* kApplicationDomain = "com.quillmark.Vornic";

/// The entries that stand in the file; none when it is missing or holds no dictionary, from which
/// nothing could be kept. Nothing when it cannot be read.
std::optional<PropertyList::Dictionary> storedEntries(const std::string& path, ErrorSlot& error) {
    if (!nodeExists(path)) {
        return PropertyList::Dictionary{};
    }
    const std::optional<std::string> bytes = readFile(path, error);
    if (!bytes) {
        return std::nullopt;
    }
    const std::optional<PropertyList> list = PropertyList::parse(*bytes);
    const PropertyList::Dictionary* entries = list ? list->dictionary() : nullptr;
    return entries != nullptr ? *entries : PropertyList::Dictionary{};
}

/// Waits for the lock, but not for a program that never gives it back.
/// @return an empty object with the slot filled when it could not be had.
FileDescriptor lockDomain(const std::string& path, ErrorSlot& error) {
    constexpr std::chrono::seconds kLongestWait{5};
    constexpr std::chrono::milliseconds kPause{5};
    const std::string lockPath = joinPath(parentFolder(path), "." + lastComponent(path) + ".lock");
    FileDescriptor file(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) {
        failFile(error, lockPath, "opened", errno);
        return {};
    }
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == ENOLCK || errno == ENOSYS || errno == EOPNOTSUPP) {
            break;  // A volume without locks: the write itself is still atomic.
        }
        const bool busy = errno == EWOULDBLOCK || errno == EINTR;
        if (!busy || std::chrono::steady_clock::now() >= deadline) {
            failFile(error, lockPath, "locked", errno);
            return {};
        }
        std::this_thread::sleep_for(kPause);
    }
    return file;
}

}  // namespace

UserPreferences::UserPreferences() : UserPreferences(kApplicationDomain) {}

UserPreferences::UserPreferences(std::string domain) : domain_(std::move(domain)) {}

std::optional<std::string> UserPreferences::path() const {
    const std::vector<std::string> library =
        searchPathForDirectories(SearchPathDirectory::library, SearchPathDomain::user);
    if (library.empty() || domain_.empty() || domain_.find('/') != std::string::npos) {
        return std::nullopt;
    }
    return joinPath(joinPath(library.front(), "Preferences"), domain_ + ".plist");
}

std::optional<PropertyList> UserPreferences::value(const std::string& key) const {
    const std::optional<std::string> file = path();
    ErrorSlot ignored;
    const std::optional<PropertyList> list =
        file ? PropertyList::readFile(*file, ignored) : std::nullopt;
    const PropertyList* found = list ? list->find(key) : nullptr;
    return found != nullptr ? std::optional(*found) : std::nullopt;
}

bool UserPreferences::setValue(const std::string& key, const PropertyList& value,
                               ErrorSlot& error) const {
    const std::optional<std::string> file = path();
    if (!file) {
        error = posixError("There is no folder for the preferences of " + domain_, ENOENT);
        return false;
    }
    if (!createDirectory(parentFolder(*file), error)) {
        return false;
    }
    const FileDescriptor lock = lockDomain(*file, error);
    std::optional<PropertyList::Dictionary> entries =
        lock ? storedEntries(*file, error) : std::nullopt;
    if (!entries) {
        return false;
    }
    const auto stored = entries->find(key);
    if (stored != entries->end() && stored->second == value) {
        return true;
    }
    entries->insert_or_assign(key, value);
    return PropertyList(std::move(*entries)).writeFile(*file, error);
}

}  // namespace vornic::platform
