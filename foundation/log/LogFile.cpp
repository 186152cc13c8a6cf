#include "foundation/log/LogFile.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornic {

std::shared_ptr<LogFile> LogFile::open(const std::string& path) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        return nullptr;
    }
    return std::shared_ptr<LogFile>(new LogFile(platform::FileDescriptor(descriptor)));
}

LogFile::Appended LogFile::append(std::string_view bytes) {
    if (endsInsideLine_) {
        const Appended lineEnd = write("\n");
        if (lineEnd.byteCount == 0) {
            return lineEnd;
        }
        endsInsideLine_ = false;
    }
    const Appended result = write(bytes);
    const bool isCut = result.byteCount > 0 && result.byteCount < bytes.size();
    endsInsideLine_ = isCut && bytes[result.byteCount - 1] != '\n';
    return result;
}

bool LogFile::isAt(const std::string& path) const {
    struct stat own {};
    struct stat other {};
    return fstat(descriptor_.get(), &own) == 0 && stat(path.c_str(), &other) == 0 &&
           own.st_dev == other.st_dev && own.st_ino == other.st_ino;
}

LogFile::Appended LogFile::write(std::string_view bytes) {
    Appended result;
    while (result.byteCount < bytes.size()) {
        const std::string_view rest = bytes.substr(result.byteCount);
        const ssize_t count = ::write(descriptor_.get(), rest.data(), rest.size());
        if (count > 0) {
            result.byteCount += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            result.errorNumber = count == 0 ? EIO : errno;
            break;
        }
    }
    return result;
}

}  // namespace vornic
