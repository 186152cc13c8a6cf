#ifndef VORNIC_PLATFORM_PROCESSES_PIPE_H
#define VORNIC_PLATFORM_PROCESSES_PIPE_H

#include <string>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// A one-way channel of bytes. Both ends are close-on-exec and numbered above the standard streams,
/// so that a child gets an end only where it was given one.
struct Pipe {
    FileDescriptor readingEnd;
    FileDescriptor writingEnd;
};

/// @throws Exception when the system has no descriptor to give.
[[nodiscard]] Pipe makePipe();

/// The same file under a close-on-exec descriptor above those of the standard streams.
/// @throws Exception when the system has no descriptor to give.
[[nodiscard]] FileDescriptor aboveStandardStreams(FileDescriptor descriptor);

/// Reads what is there, at most 64 KiB, after waiting until there is something.
/// @return "" at the end of the stream. @throws Exception when it cannot be read.
[[nodiscard]] std::string readAvailable(int descriptor);

/// Which of two descriptors can be read without waiting, be it their end.
struct Readable {
    bool first = false;
    bool second = false;
};

/// Waits until at least one of them can be read. A negative number stands for none; not both may.
/// @throws Exception when the system cannot wait.
[[nodiscard]] Readable waitUntilReadable(int first, int second);

}  // namespace vornic::platform

#endif
