#include "ui/shortcuts/ShortcutWatchList.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "foundation/places/QMLocalPaths.h"
#include "platform/files/DamagedFile.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/locks/FileLock.h"
#include "ui/shortcuts/ShortcutKeyMessage.h"

namespace vornic {

using platform::PropertyList;

namespace {

constexpr const char* kEntriesKey = "watchlist";

/// What stands in the file.
struct StoredList {
    PropertyList::Dictionary root;
    ShortcutWatchList::Array entries;
    bool isDamaged = false;
    bool canBeWrittenAgain = true;
};

StoredList parse(const std::string& bytes) {
    StoredList stored;
    if (bytes.empty()) {
        return stored;
    }
    const std::optional<PropertyList> list = PropertyList::parse(bytes);
    const PropertyList::Dictionary* const root = list ? list->dictionary() : nullptr;
    if (root == nullptr) {
        stored.isDamaged = true;
        return stored;
    }
    stored.root = *root;
    stored.canBeWrittenAgain = PropertyList::canBeWrittenAgain(bytes);
    if (const PropertyList* const entries = list->find(kEntriesKey)) {
        stored.isDamaged = entries->array() == nullptr;
        stored.entries = stored.isDamaged ? ShortcutWatchList::Array() : *entries->array();
    }
    return stored;
}

/// @return nothing, with the slot filled, when there is a list that cannot be read.
std::optional<StoredList> read(const std::string& path, ErrorSlot& error) {
    if (!platform::nodeExists(path)) {
        return StoredList();
    }
    const std::optional<std::string> bytes = platform::readFile(path, error);
    return bytes ? std::optional(parse(*bytes)) : std::nullopt;
}

/// Copies a damaged list to a name that is free.
bool keepDamagedList(const std::string& path, ErrorSlot& error) {
    const std::optional<std::string> copy = platform::keepDamagedList(path, error);
    if (copy) {
        tellOfShortcutKeys(formatString(
            "The list of shortcut keys %@ was damaged. It is kept as %@ and a new one was begun.",
            path, *copy));
    }
    return copy.has_value();
}

bool holdsText(const PropertyList& entry, const char* key, const std::string& text) {
    const PropertyList* const value = entry.find(key);
    return value != nullptr && value->string() != nullptr && *value->string() == text;
}

bool isEntryOf(const PropertyList& entry, const ShortcutWatchList::Command& command) {
    if (!holdsText(entry, "bundleid", command.bundleId)) {
        return false;
    }
    if (command.id) {
        return holdsText(entry, "commandid", *command.id);
    }
    const PropertyList* const params = entry.find("commandparams");
    return command.params && params != nullptr && params->array() != nullptr &&
           *params->array() == *command.params;
}

PropertyList makeEntry(const ShortcutWatchList::Command& command, const ShortcutKey& key) {
    PropertyList::Dictionary entry{{"bundleid", PropertyList(command.bundleId)},
                                   {"keycode", key.keyCode},
                                   {"modifiers", key.modifiers()}};
    if (command.id) {
        entry["commandid"] = PropertyList(*command.id);
    }
    if (command.params) {
        entry["commandparams"] = PropertyList(*command.params);
    }
    return PropertyList(std::move(entry));
}

/// Takes the command's entries out of the list, puts the new one in, if any, and writes the list.
bool change(const ShortcutWatchList::Command& command, const std::optional<PropertyList>& entry,
            ErrorSlot& error) {
    // Nobody holds the lock for longer than it takes to write a small file.
    constexpr std::chrono::seconds kLongestWaitForLock{2};
    const std::optional<std::string> path = ShortcutWatchList::path();
    if (!path) {
        error = posixError("There is no folder for the list of shortcut keys", ENOENT);
        return false;
    }
    if (command.bundleId.empty()) {
        error =
            posixError("The shortcut cannot be kept: the application has no identifier", EINVAL);
        return false;
    }
    if (!platform::createDirectory(parentFolder(*path), error)) {
        return false;
    }
    const auto lock = platform::FileLock::acquire(*path, kLongestWaitForLock, error);
    std::optional<StoredList> stored = lock ? read(*path, error) : std::nullopt;
    if (!stored || (stored->isDamaged && !keepDamagedList(*path, error))) {
        return false;
    }
    if (!stored->isDamaged && !stored->canBeWrittenAgain) {
        return platform::failFileBecause(error, *path, "written", EINVAL,
                                         "it holds values that would be lost");
    }
    auto& entries = stored->entries;
    entries.erase(
        std::remove_if(entries.begin(), entries.end(),
                       [&](const PropertyList& each) { return isEntryOf(each, command); }),
        entries.end());
    if (entry) {
        entries.push_back(*entry);
    }
    stored->root[kEntriesKey] = PropertyList(std::move(entries));
    return PropertyList(std::move(stored->root)).writeFile(*path, error);
}

}  // namespace

std::optional<std::string> ShortcutWatchList::path() {
    const std::optional<std::string> folder = QMLocalPaths::prefsDirectory(true);
    return folder ? std::optional(joinPath(*folder, "com.quillmark.shortcutkeys.plist"))
                  : std::nullopt;
}

std::optional<ShortcutWatchList::Array> ShortcutWatchList::entries(ErrorSlot& error) {
    const std::optional<std::string> file = path();
    std::optional<StoredList> stored = file ? read(*file, error) : StoredList();
    if (stored && stored->isDamaged) {
        platform::failFileBecause(error, *file, "read", EINVAL, "it is no list of shortcut keys");
        return std::nullopt;
    }
    return stored ? std::optional(std::move(stored->entries)) : std::nullopt;
}

bool ShortcutWatchList::assign(const Command& command, const ShortcutKey& key, ErrorSlot& error) {
    return change(command, makeEntry(command, key), error);
}

bool ShortcutWatchList::remove(const Command& command, ErrorSlot& error) {
    return change(command, std::nullopt, error);
}

}  // namespace vornic
