#include "platform/locks/FileWriters.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>

namespace vornic::platform {

bool isOpenForWriting(int descriptor) {
    // Who opens the file while the lease is there has a signal sent; this one nobody notices.
    if (fcntl(descriptor, F_SETSIG, SIGURG) != 0) {
        return false;
    }
    if (fcntl(descriptor, F_SETLEASE, F_RDLCK) != 0) {
        return errno == EAGAIN;
    }
    // Who has begun to open the file since then waits until the lease is given back.
    const bool isAwaited = fcntl(descriptor, F_GETLEASE) != F_RDLCK;
    static_cast<void>(fcntl(descriptor, F_SETLEASE, F_UNLCK));
    return isAwaited;
}

}  // namespace vornic::platform
