#include "platform/processes/RandomBytes.h"

#include <cerrno>
#include <random>

#include <sys/random.h>

namespace vornic::platform {

void fillWithRandomBytes(unsigned char* bytes, std::size_t count) {
    std::size_t filled = 0;
    while (filled < count) {
        const ssize_t got = getrandom(bytes + filled, count - filled, 0);
        if (got > 0) {
            filled += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            break;
        }
    }
    if (filled == count) {
        return;
    }
    // A system without the call still has a random device or instruction, slow to set up.
    std::random_device device;
    for (; filled < count; ++filled) {
        bytes[filled] = static_cast<unsigned char>(device());
    }
}

}  // namespace vornic::platform
