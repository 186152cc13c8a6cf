#include <algorithm>

#include "base/PathText.h"
#include "base/Utf8.h"
#include "foundation/files/FolderEntries.h"
#include "foundation/files/QMFileManager.h"

namespace vornic {
namespace {

using Path = QMFileManager::Path;
using Paths = QMFileManager::Paths;

bool hasWildcard(std::string_view text) {
    return text.find('*') != std::string_view::npos;
}

/// "*" stands for any run of characters, "?" for one; everything else for itself.
bool matches(std::string_view name, std::string_view pattern) {
    std::size_t at = 0;
    std::size_t next = 0;
    // Where the last "*" stands, and how far its run has been taken.
    std::size_t star = std::string_view::npos;
    std::size_t runEnd = 0;
    while (at < name.size()) {
        if (next < pattern.size() && pattern[next] == '*') {
            star = next++;
            runEnd = at;
        } else if (next < pattern.size() && pattern[next] == '?') {
            at += utf8CharacterAt(name, at).length;
            ++next;
        } else if (next < pattern.size() && pattern[next] == name[at]) {
            ++at;
            ++next;
        } else if (star != std::string_view::npos) {
            runEnd += utf8CharacterAt(name, runEnd).length;
            at = runEnd;
            next = star + 1;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', next) == std::string_view::npos;
}

Paths componentsOf(std::string_view path) {
    Paths components;
    for (std::size_t start = path.find_first_not_of('/'); start != std::string_view::npos;) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        components.emplace_back(path.substr(start, end - start));
        start = path.find_first_not_of('/', end);
    }
    return components;
}

void addIfThere(Paths& paths, std::string path) {
    if (QMFileManager::fileExistsAtPath(path)) {
        paths.push_back(std::move(path));
    }
}

Paths oneStep(const Paths& candidates, const std::string& component) {
    Paths found;
    for (const std::string& candidate : candidates) {
        if (!hasWildcard(component)) {
            addIfThere(found, joinPath(candidate, component));
            continue;
        }
        for (const std::string& name : folderEntries(candidate)) {
            if (matches(name, component)) {
                addIfThere(found, joinPath(candidate, name));
            }
        }
    }
    return found;
}

std::string fullPath(const std::string& pattern, const Path& base) {
    return base ? joinPath(*base, pattern) : pattern;
}

}  // namespace

Paths QMFileManager::filesMatchingWildcardPath(const std::string& pattern) {
    return filesMatchingWildcardPath(pattern, std::nullopt);
}

Paths QMFileManager::filesMatchingWildcardPath(const std::string& pattern,
                                               const Path& fromBasePath) {
    return filesMatchingWildcardPath(pattern, fromBasePath, false);
}

Paths QMFileManager::filesMatchingWildcardPath(const std::string& pattern, const Path& fromBasePath,
                                               bool /*searchSubdirs*/) {
    if (!hasWildcard(pattern)) {
        return {fullPath(pattern, fromBasePath)};
    }
    Paths candidates{fromBasePath.value_or("/")};
    for (const std::string& component : componentsOf(pattern)) {
        candidates = oneStep(candidates, component);
    }
    return candidates;
}

std::string QMFileManager::decodeWildcardPath(const std::string& pattern,
                                              const Path& fromBasePath) {
    const Paths found = filesMatchingWildcardPath(pattern, fromBasePath);
    return found.empty() ? fullPath(pattern, fromBasePath) : found.front();
}

}  // namespace vornic
