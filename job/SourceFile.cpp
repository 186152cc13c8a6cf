#include "job/SourceFile.h"

#include <cerrno>
#include <utility>

#include "platform/Failure.h"
#include "platform/FileSystem.h"

namespace vornic {

std::optional<SourceFile> SourceFile::open(const std::string& path, ErrorSlot& error) {
    SourceFile source;
    source.path = path;
    int errorNumber = 0;
    const auto entry = platform::versionAt(path, errorNumber);
    if (entry) {
        source.entry = entry->identity;
        source.file = platform::openRegularFile(path, true, errorNumber);
    }
    const auto version =
        source.file ? platform::versionOf(source.file.get(), errorNumber) : std::nullopt;
    if (version) {
        source.version = *version;
        return source;
    }
    if (errorNumber == EINVAL) {
        platform::failFileBecause(error, path, "copied", EINVAL, "it is no ordinary file");
    } else {
        platform::failFile(error, path, "copied", errorNumber);
    }
    return std::nullopt;
}

bool SourceFile::isAt(const std::string& place) const {
    int ignored = 0;
    if (!digest || !hasEntryAt(place)) {
        return false;
    }
    const platform::FileDescriptor opened = platform::openRegularFile(place, true, ignored);
    return opened && platform::identityOf(opened.get()) == version.identity &&
           platform::ContentDigest::ofFile(opened.get(), ignored) == digest;
}

}  // namespace vornic
