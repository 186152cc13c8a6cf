#include "job/ResultFile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryFile.h"
#include "platform/files/TemporaryName.h"
#include "platform/items/FileMetadata.h"
#include "platform/volumes/FileTransfer.h"

namespace vornic {

namespace {

constexpr long kMostNumbers = 10000;

// Gives the file the first name that is free. @return 0 or the errno value.
int place(platform::TemporaryFile& file, ResultFile& result) {
    const std::string name = lastComponent(result.path);
    const std::string folder = result.path.substr(0, result.path.size() - name.size());
    int errorNumber = EEXIST;
    for (long number = 1; errorNumber == EEXIST && number <= kMostNumbers; ++number) {
        result.path = folder + numberedName(name, number, kLongestName);
        errorNumber = platform::renameWithoutReplacing(file.temporary, result.path);
    }
    if (errorNumber == 0) {
        file.temporary.clear();
    }
    return errorNumber;
}

}  // namespace

std::optional<ResultFile> writeResultFile(const std::string& path, std::string_view bytes,
                                          const std::string& from, ErrorSlot& error) {
    const auto write = [bytes](const WorkingCopy::Sink& sink) { return sink(bytes); };
    return writeResultFile(path, write, from, error);
}

std::optional<ResultFile> writeResultFile(const std::string& path, const WorkingCopy::Writer& write,
                                          const std::string& from, ErrorSlot& error) {
    const platform::FileDescriptor source(
        from.empty() ? -1 : ::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!from.empty() && (!source || fstat(source.get(), &status) != 0)) {
        platform::failFile(error, from, "read", errno);
        return std::nullopt;
    }
    // What killed runs have left there.
    platform::removeDeadTemporaries(parentFolder(path));
    platform::TemporaryFile file;
    // A name of its own: what stands at the path is nobody's business until the end.
    const std::string own =
        joinPath(parentFolder(path), platform::temporaryName(lastComponent(path)));
    if (ErrorSlot reason; !file.open(own, reason)) {
        platform::failFile(error, path, "written", static_cast<int>(reason->code));
        return std::nullopt;
    }
    ResultFile result{.path = path, .lostMetadata = ""};
    int errorNumber = 0;
    const bool isWhole = write([&](std::string_view piece) {
        errorNumber = platform::writeAllForSync(file.file.get(), piece);
        return errorNumber == 0;
    });
    if (!isWhole && errorNumber == 0) {
        errorNumber = EILSEQ;
    }
    if (errorNumber == 0) {
        if (source) {
            result.lostMetadata = platform::copyMetadata(source.get(), status, file.file.get());
        }
        errorNumber = fsync(file.file.get()) == 0 ? 0 : errno;
    }
    if (errorNumber == 0) {
        errorNumber = place(file, result);
    }
    if (errorNumber != 0) {
        platform::failFile(error, path, "written", errorNumber);
        return std::nullopt;
    }
    return result;
}

}  // namespace vornic
