#include "media/PathMap.h"

#include <algorithm>

#include "base/CanonicalText.h"

namespace vornic {

namespace {

bool isAbsolute(const MediaPath& path) {
    return path.style == PathStyle::posix || path.style == PathStyle::windows ||
           path.style == PathStyle::unc;
}

// The last "=" could belong to the new path, and the first to the old one.
std::size_t partingOf(std::string_view rule) {
    for (std::size_t at = rule.find('='); at != std::string_view::npos;
         at = rule.find('=', at + 1)) {
        if (isAbsolute(readTypedPath(rule.substr(at + 1)))) {
            return at;
        }
    }
    return rule.find('=');
}

std::vector<std::string> keysOf(const MediaPath& path, std::size_t count) {
    std::vector<std::string> keys;
    for (std::size_t index = 0; index < count; ++index) {
        const std::string& name = path.components[index];
        keys.push_back(path.style == PathStyle::posix ? canonicallyDecomposed(name)
                                                      : foldedName(name));
    }
    return keys;
}

}  // namespace

std::string PathMap::add(std::string_view rule) {
    const std::size_t parting = partingOf(rule);
    if (parting == std::string_view::npos) {
        return "--map wants OLD=NEW, not " + std::string(rule);
    }
    const MediaPath oldPath = readTypedPath(rule.substr(0, parting));
    const MediaPath newPath = readTypedPath(rule.substr(parting + 1));
    if (!isAbsolute(oldPath) || !isAbsolute(newPath)) {
        return "--map wants two absolute paths, not " + std::string(rule);
    }
    return add(oldPath, newPath) ? "" : "--map gives two new places to " + oldPath.text();
}

bool PathMap::add(const MediaPath& oldPath, const MediaPath& newPath) {
    Rule made{oldPath, keysOf(oldPath, oldPath.components.size()), newPath};
    const bool hasOtherPlace =
        std::any_of(rules_.begin(), rules_.end(), [&made](const Rule& other) {
            return other.oldPath.style == made.oldPath.style && other.keys == made.keys &&
                   other.newPath != made.newPath;
        });
    if (!isAbsolute(oldPath) || !isAbsolute(newPath) || hasOtherPlace) {
        return false;
    }
    rules_.push_back(std::move(made));
    return true;
}

std::optional<MediaPath> PathMap::apply(const MediaPath& path) const {
    const Rule* best = nullptr;
    for (const Rule& rule : rules_) {
        const std::size_t length = rule.keys.size();
        if (rule.oldPath.style == path.style && length <= path.components.size() &&
            (best == nullptr || length > best->keys.size()) && keysOf(path, length) == rule.keys) {
            best = &rule;
        }
    }
    if (best == nullptr) {
        return std::nullopt;
    }
    MediaPath moved = best->newPath;
    moved.components.insert(
        moved.components.end(),
        path.components.begin() + static_cast<std::ptrdiff_t>(best->keys.size()),
        path.components.end());
    return moved;
}

}  // namespace vornic
