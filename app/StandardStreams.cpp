#include "app/StandardStreams.h"

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace vornic {

void secureStandardStreams() {
    // The system gives out the lowest free number, so this fills the gaps among the first three.
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) {
        close(descriptor);
    }
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

}  // namespace vornic
