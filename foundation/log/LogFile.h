#ifndef VORNIC_FOUNDATION_LOG_FILE_H
#define VORNIC_FOUNDATION_LOG_FILE_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/files/FileDescriptor.h"

namespace vornic {

/// An open log file. Bytes always go to its end, wherever other programs that write to it have got
/// to, and to the same file after it was renamed. What is appended after a line that went in only
/// in part begins on a line of its own. Any thread.
class LogFile {
  public:
    /// Opens an existing file for writing at its end. @return null when there is none or it cannot
    /// be written.
    [[nodiscard]] static std::shared_ptr<LogFile> open(const std::string& path);

    /// What an append came to: how many of the bytes are in the file, and the errno value that kept
    /// the others out, or 0.
    struct Appended {
        std::size_t byteCount = 0;
        int errorNumber = 0;
    };
    [[nodiscard]] Appended append(std::string_view bytes);

    /// Whether the file at a path is this one.
    [[nodiscard]] bool isAt(const std::string& path) const;
    [[nodiscard]] int descriptor() const { return descriptor_.get(); }

  private:
    explicit LogFile(platform::FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}
    [[nodiscard]] Appended write(std::string_view bytes);

    platform::FileDescriptor descriptor_;
    std::atomic<bool> endsInsideLine_ = false;
};

}  // namespace vornic

#endif
