#ifndef VORNIC_PLATFORM_PROCESSES_PIPE_READER_H
#define VORNIC_PLATFORM_PROCESSES_PIPE_READER_H

#include <mutex>
#include <string>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// The reading end of a pipe that one thread reads and any other may close meanwhile.
class PipeReader {
  public:
    /// @throws Exception when the system has no descriptor to give.
    explicit PipeReader(FileDescriptor readingEnd);

    /// Reads what is there, at most 64 KiB, after waiting until there is something. One thread at a
    /// time. @return "" at the end of the stream, or once it is closed here.
    /// @throws Exception when the stream cannot be read.
    [[nodiscard]] std::string readAvailable();
    /// Ends the waiting of a reader, who sees the end of the stream from now on. Any thread, any
    /// number of times.
    void close();

  private:
    void finishReading();

    std::mutex mutex_;
    FileDescriptor readingEnd_;
    /// Readable once the reader is to wake.
    FileDescriptor wakeUp_;
    bool closed_ = false;
    bool isBeingRead_ = false;
};

}  // namespace vornic::platform

#endif
