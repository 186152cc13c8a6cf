#include "platform/processes/Pipe.h"

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/Exception.h"

namespace vornic::platform {
namespace {

[[noreturn]] void raise(std::string_view whatFailed, int errorNumber) {
    throw Exception("NSFileHandleOperationException",
                    posixError(whatFailed, errorNumber).description);
}

}  // namespace

Pipe makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        raise("A pipe cannot be made", errno);
    }
    Pipe pipe{.readingEnd = FileDescriptor(ends[0]), .writingEnd = FileDescriptor(ends[1])};
    pipe.readingEnd = aboveStandardStreams(std::move(pipe.readingEnd));
    pipe.writingEnd = aboveStandardStreams(std::move(pipe.writingEnd));
    return pipe;
}

FileDescriptor aboveStandardStreams(FileDescriptor descriptor) {
    if (descriptor.get() > STDERR_FILENO) {
        return descriptor;
    }
    FileDescriptor higher(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!higher) {
        raise("A stream cannot be duplicated", errno);
    }
    return higher;
}

std::string readAvailable(int descriptor) {
    constexpr std::size_t kLargestRead = 65536;
    std::array<char, kLargestRead> buffer;  // NOLINT: filled by the system
    ssize_t count = 0;
    do {
        count = read(descriptor, buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        raise("A stream cannot be read", errno);
    }
    return {buffer.data(), static_cast<std::size_t>(count)};
}

Readable waitUntilReadable(int first, int second) {
    std::array<pollfd, 2> waited{{{first, POLLIN, 0}, {second, POLLIN, 0}}};
    while (poll(waited.data(), waited.size(), -1) < 0) {
        if (errno != EINTR) {
            raise("A stream cannot be waited for", errno);
        }
    }
    return {.first = waited[0].revents != 0, .second = waited[1].revents != 0};
}

}  // namespace vornic::platform
