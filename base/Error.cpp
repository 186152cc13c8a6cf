#include "base/Error.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace vornic {
namespace {

struct Reason {
    int errorNumber;
    std::string_view text;
};

constexpr std::array kReasons{
    Reason{EPERM, "the operation is not permitted"},
    Reason{ENOENT, "no such file or folder"},
    Reason{EINTR, "the operation was interrupted"},
    Reason{EIO, "the disk or network reported an error"},
    Reason{ENXIO, "no such device"},
    Reason{E2BIG, "too many arguments"},
    Reason{ENOEXEC, "it is no program that can be run"},
    Reason{EBADF, "the file is not open"},
    Reason{ECHILD, "no such child process"},
    Reason{EAGAIN, "it is busy at the moment"},
    Reason{ENOMEM, "not enough memory"},
    Reason{EACCES, "permission denied"},
    Reason{EFAULT, "bad address"},
    Reason{EBUSY, "it is in use"},
    Reason{EEXIST, "a file of that name exists already"},
    Reason{EXDEV, "it lies on another volume"},
    Reason{ENODEV, "no such device"},
    Reason{ENOTDIR, "a part of the path is not a folder"},
    Reason{EISDIR, "it is a folder"},
    Reason{EINVAL, "invalid name or argument"},
    Reason{ENFILE, "too many files are open on this computer"},
    Reason{EMFILE, "too many files are open"},
    Reason{ENOTTY, "not a terminal"},
    Reason{ETXTBSY, "it is a program that is running"},
    Reason{EFBIG, "the file would be too large"},
    Reason{ENOSPC, "no space left on the volume"},
    Reason{ESPIPE, "the position in the file cannot be changed"},
    Reason{EROFS, "the volume is read-only"},
    Reason{EMLINK, "too many links"},
    Reason{EPIPE, "the other end is closed"},
    Reason{ERANGE, "the value is out of range"},
    Reason{EDEADLK, "it would wait for itself"},
    Reason{ENAMETOOLONG, "the name is too long"},
    Reason{ENOLCK, "no locks are available"},
    Reason{ENOSYS, "this system does not support it"},
    Reason{ENOTEMPTY, "the folder is not empty"},
    Reason{ELOOP, "too many symbolic links lead to each other"},
    Reason{ENODATA, "no data available"},
    Reason{EOVERFLOW, "the value is too large"},
    Reason{EILSEQ, "the text is not valid"},
    Reason{EOPNOTSUPP, "the volume does not support it"},
    Reason{ETIMEDOUT, "it took too long"},
    Reason{ECONNREFUSED, "the connection was refused"},
    Reason{ECONNRESET, "the connection was closed"},
    Reason{EHOSTUNREACH, "the server cannot be reached"},
    Reason{ESTALE, "the file is no longer on its server"},
    Reason{EDQUOT, "the disk quota is used up"},
    Reason{ECANCELED, "it was cancelled"},
};

std::string reasonFor(int errorNumber) {
    const auto* found = std::find_if(
        kReasons.begin(), kReasons.end(),
        [errorNumber](const Reason& reason) { return reason.errorNumber == errorNumber; });
    if (found != kReasons.end()) {
        return std::string(found->text);
    }
    return "system error " + std::to_string(errorNumber);
}

}  // namespace

Error posixError(std::string_view whatFailed, int errorNumber) {
    Error error;
    error.domain = kPosixErrorDomain;
    error.code = errorNumber;
    error.description = std::string(whatFailed) + ": " + reasonFor(errorNumber) + ".";
    return error;
}

}  // namespace vornic
