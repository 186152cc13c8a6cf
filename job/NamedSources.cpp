#include "job/NamedSources.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <set>
#include <utility>

#include <sys/stat.h>

#include "base/PathText.h"
#include "platform/files/FileSystem.h"

namespace vornic {

namespace {

struct Named {
    std::mutex mutex;
    std::multiset<std::string> paths;
};

Named& named() {
    static Named all;
    return all;
}

/// True when both paths are the same entry of the same folder.
bool areOneEntry(const std::string& one, const std::string& another) {
    struct stat first {};
    struct stat second {};
    if (lstat(one.c_str(), &first) != 0 || lstat(another.c_str(), &second) != 0 ||
        first.st_dev != second.st_dev || first.st_ino != second.st_ino) {
        return false;
    }
    // A file with one link has one entry, which a volume may know under capitals and others.
    return first.st_nlink == 1 || (lastComponent(one) == lastComponent(another) &&
                                   platform::fileIdentity(parentFolder(one)) ==
                                       platform::fileIdentity(parentFolder(another)));
}

bool leadsTo(const std::string& source, const std::string& path) {
    if (areOneEntry(source, path)) {
        return true;
    }
    const ErrnoOr<std::string> target = platform::resolveFinalLink(source);
    return target && *target != source && areOneEntry(*target, path);
}

}  // namespace

NamedSource::NamedSource(std::string path) : path_(std::move(path)) {
    const std::lock_guard lock(named().mutex);
    named().paths.insert(path_);
}

NamedSource::~NamedSource() {
    const std::lock_guard lock(named().mutex);
    named().paths.erase(named().paths.find(path_));
}

bool NamedSource::isAt(const std::string& path) {
    std::set<std::string> paths;
    {
        const std::lock_guard lock(named().mutex);
        paths.insert(named().paths.begin(), named().paths.end());
    }
    return std::any_of(paths.begin(), paths.end(),
                       [&](const std::string& source) { return leadsTo(source, path); });
}

}  // namespace vornic
