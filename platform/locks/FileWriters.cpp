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
    static_cast<void>(fcntl(descriptor, F_SETLEASE, F_UNLCK));
    return false;
}

}  // namespace vornic::platform
