#include "desktop/RecentFiles.h"

#include <utility>

#include "foundation/Utf8.h"
#include "platform/FileSystem.h"
#include "platform/PropertyList.h"
#include "platform/UserPreferences.h"

namespace vornic {

namespace {

constexpr const char* kKey = "recentFiles";

std::vector<std::string> stored() {
    std::vector<std::string> paths;
    const std::optional<platform::PropertyList> value = platform::UserPreferences().value(kKey);
    const platform::PropertyList::Array* const entries = value ? value->array() : nullptr;
    if (entries != nullptr) {
        for (const platform::PropertyList& entry : *entries) {
            if (const std::string* const path = entry.string()) {
                paths.push_back(*path);
            }
        }
    }
    return paths;
}

void store(const std::vector<std::string>& paths) {
    platform::PropertyList::Array entries;
    for (const std::string& path : paths) {
        entries.emplace_back(path);
    }
    ErrorSlot ignored;  // a list that cannot be stored is one that is not there next time
    platform::UserPreferences().setValue(kKey, platform::PropertyList(std::move(entries)), ignored);
}

}  // namespace

std::vector<std::string> RecentFiles::paths() {
    std::vector<std::string> paths = stored();
    std::erase_if(paths, [](const std::string& path) { return !platform::fileExists(path); });
    return paths;
}

void RecentFiles::add(const std::string& path) {
    std::string text;
    appendAsValidUtf8(text, path);
    if (text != path) {
        return;
    }
    std::vector<std::string> paths = stored();
    std::erase(paths, path);
    paths.insert(paths.begin(), path);
    if (paths.size() > kMost) {
        paths.resize(kMost);
    }
    store(paths);
}

void RecentFiles::clear() {
    store({});
}

}  // namespace vornic
