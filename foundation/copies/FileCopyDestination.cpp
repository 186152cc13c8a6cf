#include "foundation/copies/FileCopyDestination.h"

#include <cerrno>
#include <tuple>

#include <fcntl.h>
#include <unistd.h>

#include "base/FormatString.h"
#include "platform/items/FileMetadata.h"
#include "platform/processes/Console.h"
#include "platform/rights/ProtectedPaths.h"

namespace vornic {

using platform::consoleLog;

namespace {

/// Whether the path leads to a file of the system that must keep its contents.
bool leadsToGuardedFile(const std::string& path) {
    return platform::fileExists(path) && platform::leadsToProtectedPath(path);
}

}  // namespace

bool FileCopyDestination::open(mode_t modeOfNew) {
    if (path_.find('\0') != std::string::npos) {
        return false;
    }
    if (leadsToGuardedFile(path_)) {
        return false;
    }
    struct stat status {};
    // A pipe or a device is not even opened, which alone could start something.
    if (stat(path_.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        return false;
    }
    constexpr int kFlags = O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    file_ = platform::FileDescriptor(::open(path_.c_str(), kFlags));
    if (!file_ && errno == ENOENT) {
        file_ =
            platform::FileDescriptor(::open(path_.c_str(), kFlags | O_CREAT | O_EXCL, modeOfNew));
        isNew_ = static_cast<bool>(file_);
    }
    if (!file_ && errno == EEXIST) {
        // A link that leads nowhere: its target is made.
        file_ = platform::FileDescriptor(::open(path_.c_str(), kFlags | O_CREAT, modeOfNew));
    }
    if (!file_ || fstat(file_.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    identity_ = platform::identityOf(file_.get());
    return true;
}

bool FileCopyDestination::truncate() {
    return ftruncate(file_.get(), 0) == 0;
}

void FileCopyDestination::abandon() {
    if (isNew_) {
        std::ignore = unlink(path_.c_str());
    }
    static_cast<void>(file_.close());
}

void FileCopyDestination::noteWriteError() {
    errorIndicator_ = 1;
    consoleLog(formatString("Error writing file %@: %i", path_, errorIndicator_));
}

bool FileCopyDestination::write(const char* block, std::size_t count) {
    blockStart_ = lseek(file_.get(), 0, SEEK_CUR);
    if (platform::writeAll(file_.get(), block, count) == 0) {
        return true;
    }
    noteWriteError();
    return false;
}

std::size_t FileCopyDestination::readBack(char* block, std::size_t count) {
    const off_t position = lseek(file_.get(), blockStart_, SEEK_SET);
    if (position != blockStart_ || position < 0) {
        const int seekError = errno;
        consoleLog(formatString("Error: unable to seek within file %@", path_));
        consoleLog(formatString("cur pos: %llu", static_cast<unsigned long long>(blockStart_)));
        consoleLog(formatString("read size: %zu", count));
        consoleLog(formatString("errno: %i", seekError));
        consoleLog(formatString("err: %i", errorIndicator_));
    }
    const platform::BlockRead read = platform::readBlock(file_.get(), block, count);
    if (read.errorNumber != 0) {
        errorIndicator_ = 1;
    }
    return read.length;
}

void FileCopyDestination::close() {
    if (file_.close() != 0) {
        noteWriteError();
    }
}

bool FileCopyDestination::synchronizeAndClose() {
    const bool isKept = platform::synchronize(file_.get()) == 0;
    if (file_.close() == 0 && isKept) {
        return true;
    }
    noteWriteError();
    return false;
}

bool FileCopyDestination::copyMetadata(int source, const struct stat& status,
                                       ErrorSlot& error) const {
    const ErrnoOr<platform::FileDescriptor> file = platform::openForMetadata(path_, true);
    if (file && platform::identityOf(file->get()) != identity_) {
        error = posixError("Another file stands at " + path_, ESTALE);
        return false;
    }
    int errorNumber = file.errorNumber();
    if (file) {
        errorNumber = platform::copyOwnerAttributesAndMode(source, status, file->get());
        const int timesError = platform::copyTimes(status, file->get());
        errorNumber = errorNumber != 0 ? errorNumber : timesError;
    }
    if (errorNumber == 0) {
        return true;
    }
    error = posixError("The dates and permissions of the file " + path_ + " cannot be set",
                       errorNumber);
    return false;
}

}  // namespace vornic
