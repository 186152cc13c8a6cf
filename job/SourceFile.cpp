#include "job/SourceFile.h"

#include <cerrno>
#include <utility>

#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"

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

Standing SourceFile::standingAt(const std::string& place, int& errorNumber) const {
    const auto there = platform::versionAt(place, errorNumber);
    if (!there) {
        return errorNumber == ENOENT ? Standing::nothing : Standing::unknown;
    }
    if (there->identity != entry) {
        return Standing::another;
    }
    const platform::FileDescriptor opened = platform::openRegularFile(place, true, errorNumber);
    if (!opened) {
        return errorNumber == ENOENT || errorNumber == EINVAL ? Standing::written
                                                              : Standing::unknown;
    }
    if (platform::identityOf(opened.get()) != version.identity) {
        return Standing::written;
    }
    auto now = platform::ContentDigest::ofFile(opened.get(), errorNumber);
    if (!now) {
        now = platform::ContentDigest::ofFile(opened.get(), errorNumber);
    }
    if (!now) {
        return Standing::unknown;
    }
    return now == digest ? Standing::asExpected : Standing::written;
}

}  // namespace vornic
