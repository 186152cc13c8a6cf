#include "media/MediaMatch.h"

#include <algorithm>

#include "base/CanonicalText.h"

namespace vornic {

namespace {

std::vector<std::string> foldedNames(const MediaPath& path) {
    std::vector<std::string> names;
    for (const std::string& name : path.components) {
        names.push_back(foldedName(name));
    }
    return names;
}

// How many names at the end are the same, however they are spelt.
std::size_t tailOf(const std::vector<std::string>& medium, const std::string& path) {
    const std::vector<std::string> names = foldedNames(localPath(path));
    const auto [mine, theirs] =
        std::mismatch(medium.rbegin(), medium.rend(), names.rbegin(), names.rend());
    return static_cast<std::size_t>(mine - medium.rbegin());
}

// The only one with the greatest value; nothing when several have it.
template <typename Value>
std::optional<std::size_t> onlyGreatest(const std::vector<std::size_t>& files, Value value) {
    std::optional<std::size_t> best;
    bool isAlone = false;
    for (const std::size_t file : files) {
        if (!best || value(file) > value(*best)) {
            best = file;
            isAlone = true;
        } else if (value(file) == value(*best)) {
            isAlone = false;
        }
    }
    return isAlone ? best : std::nullopt;
}

}  // namespace

MediaMatch matchOf(const MediaPath& medium, const std::vector<FoundFile>& files,
                   std::optional<Pick> pick) {
    std::vector<std::size_t> exact;
    std::vector<std::size_t> all;
    for (std::size_t file = 0; file < files.size(); ++file) {
        all.push_back(file);
        if (localPath(files[file].path).name() == medium.name()) {
            exact.push_back(file);
        }
    }
    const std::vector<std::size_t>& named = exact.empty() ? all : exact;
    if (named.size() < 2) {
        return {named.empty() ? std::nullopt : std::optional(named[0]), {}};
    }
    const std::vector<std::string> names = foldedNames(medium);
    std::vector<std::size_t> tails(files.size());
    for (const std::size_t file : named) {
        tails[file] = tailOf(names, files[file].path);
    }
    const std::optional<std::size_t> longest =
        onlyGreatest(named, [&](std::size_t file) { return tails[file]; });
    if (longest) {
        const std::size_t length = localPath(files[*longest].path).components.size();
        const std::size_t below = length - std::min(length, files[*longest].depth);
        if (pick == Pick::longestTail || (below > 1 && tails[*longest] >= below)) {
            return {longest, {}};
        }
    }
    const std::optional<std::size_t> newest =
        pick != Pick::newest
            ? std::nullopt
            : onlyGreatest(named, [&](std::size_t file) { return files[file].modified; });
    return newest ? MediaMatch{newest, {}} : MediaMatch{std::nullopt, named};
}

}  // namespace vornic
