#include "job/SourceFile.h"

#include <cerrno>
#include <utility>

#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"

namespace vornic {

std::optional<SourceFile> SourceFile::open(const std::string& path, ErrorSlot& error) {
    SourceFile source;
    source.path = path;
    const int errorNumber = source.openFile();
    if (errorNumber == 0) {
        return source;
    }
    if (errorNumber == EINVAL) {
        platform::failFileBecause(error, path, "copied", EINVAL, "it is no ordinary file");
    } else {
        platform::failFile(error, path, "copied", errorNumber);
    }
    return std::nullopt;
}

int SourceFile::openFile() {
    const ErrnoOr<platform::FileVersion> there = platform::versionAt(path);
    if (!there) {
        return there.errorNumber();
    }
    entry = there->identity;
    ErrnoOr<platform::FileDescriptor> opened = platform::openRegularFile(path, true);
    if (!opened) {
        return opened.errorNumber();
    }
    file = *std::move(opened);
    const ErrnoOr<platform::FileVersion> own = platform::versionOf(file.get());
    version = own.value().value_or(platform::FileVersion());
    return own.errorNumber();
}

ErrnoOr<Standing> SourceFile::standingAt(const std::string& place) const {
    const ErrnoOr<platform::FileVersion> there = platform::versionAt(place);
    if (!there) {
        return standingUnseen(there.errorNumber());
    }
    if (there->identity != entry) {
        return Standing::another;
    }
    const ErrnoOr<platform::FileDescriptor> opened = platform::openRegularFile(place, true);
    if (opened.errorNumber() == ENOENT || opened.errorNumber() == EINVAL) {
        return Standing::written;
    }
    if (!opened) {
        return Errno{opened.errorNumber()};
    }
    if (platform::identityOf(opened->get()) != version.identity) {
        return Standing::written;
    }
    return standingOfContents(opened->get(), digest);
}

}  // namespace vornic
