#ifndef VORNIC_FOUNDATION_COPIES_FILE_COPY_DESTINATION_H
#define VORNIC_FOUNDATION_COPIES_FILE_COPY_DESTINATION_H

#include <cstddef>
#include <string>

#include <sys/stat.h>
#include <sys/types.h>

#include "base/Error.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"

namespace vornic {

/// One of the files that a copy is written to. Faults of writing and seeking go to the console and
/// do not stop the copy: what is read back shows what became of it.
///
/// Order of calls: `open`, `truncate`, `write` and `readBack` in turn, `close`, `copyMetadata`.
class FileCopyDestination {
  public:
    explicit FileCopyDestination(std::string path) : path_(std::move(path)) {}

    [[nodiscard]] const std::string& path() const { return path_; }
    /// Opens for reading and writing, links followed, and changes nothing in a file that exists.
    /// Only regular files can be opened, and no file of the system that exists
    /// (`leadsToProtectedPath`).
    /// @param modeOfNew of a file that did not exist, before the umask
    [[nodiscard]] bool open(mode_t modeOfNew);
    [[nodiscard]] platform::FileIdentity identity() const { return identity_; }
    [[nodiscard]] bool truncate();
    /// Closes, and removes the file when `open` made it.
    void abandon();

    /// Appends a block. @return false when not all of it could be written.
    bool write(const char* block, std::size_t count);
    /// Reads what the last `write` of that many bytes has left in the file.
    /// @return how many bytes there were.
    [[nodiscard]] std::size_t readBack(char* block, std::size_t count);
    void close();
    /// Closes when all that was written has come through to the disk.
    /// @return false when the system could not keep it, which is reported like a fault of writing.
    [[nodiscard]] bool synchronizeAndClose();
    /// Gives the closed file the owner, extended attributes, mode and times of the source.
    [[nodiscard]] bool copyMetadata(int source, const struct stat& status, ErrorSlot& error) const;

  private:
    void noteWriteError();

    std::string path_;
    platform::FileDescriptor file_;
    platform::FileIdentity identity_;
    bool isNew_ = false;
    /// Where the last block was written.
    off_t blockStart_ = 0;
    /// 1 from the first failed call on, as a stream's error indicator.
    int errorIndicator_ = 0;
};

}  // namespace vornic

#endif
