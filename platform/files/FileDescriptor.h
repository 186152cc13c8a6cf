#ifndef VORNIC_PLATFORM_FILES_FILE_DESCRIPTOR_H
#define VORNIC_PLATFORM_FILES_FILE_DESCRIPTOR_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/ErrnoOr.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

/// Owns an open file descriptor and closes it.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor() { static_cast<void>(close()); }
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    [[nodiscard]] int get() const { return descriptor_; }
    [[nodiscard]] explicit operator bool() const { return descriptor_ >= 0; }
    /// Gives the descriptor away.
    [[nodiscard]] int release() { return std::exchange(descriptor_, -1); }
    /// Closes now. @return 0 or the errno value: some file systems tell of a full disk only here.
    int close();

  private:
    int descriptor_ = -1;
};

/// Opens for reading, never waiting for a writer or a device: a pipe or device is refused.
/// @param followLinks whether a link at the path leads to its target; without, a link is an error
/// @return the errno value when it cannot be opened: EISDIR for a folder, EINVAL for what is
/// neither
///     file nor folder.
[[nodiscard]] ErrnoOr<FileDescriptor> openRegularFile(const std::string& path, bool followLinks);

/// Opens whatever stands at the path so that its metadata can be read and changed through the
/// descriptor; the contents may be out of reach. Nothing is waited for and no device is touched.
/// @param followLinks whether a link at the path leads to its target; without, a link is an error
[[nodiscard]] ErrnoOr<FileDescriptor> openForMetadata(const std::string& path, bool followLinks);

/// The path that leads to the file behind an open descriptor, for calls without a descriptor form.
[[nodiscard]] std::string descriptorPath(int descriptor);

/// The identity of an open file.
[[nodiscard]] FileIdentity identityOf(int descriptor);

/// What was read before the file ended or an error came.
struct BlockRead {
    /// Bytes.
    std::size_t length = 0;
    /// 0, or the errno value of the error that ended the reading.
    int errorNumber = 0;
};

/// Reads on from the file's position until `size` bytes are there, the file ends or an error comes,
/// through interruptions and short reads.
[[nodiscard]] BlockRead readBlock(int descriptor, char* buffer, std::size_t size);

/// The whole contents of a regular file, from its first byte on, however long it was said to be.
/// The descriptor must be open for reading; its position stays where it is.
/// @return 0 or the errno value; ENOMEM for contents that memory cannot hold, be they what a broken
///     volume claims.
[[nodiscard]] int readContents(int descriptor, std::string& bytes);

/// Writes all bytes through interruptions and short writes. @return 0 or the errno value.
[[nodiscard]] int writeAll(int descriptor, const char* bytes, std::size_t count);

/// The same for a file that is synced once it is whole: what is written is sent to the disk while
/// more is being written, so that the sync has little to wait for.
[[nodiscard]] int writeAllForSync(int descriptor, std::string_view bytes);

/// `fsync`; a file system that cannot sync is no failure. @return 0 or the errno value.
[[nodiscard]] int synchronize(int descriptor);

/// Syncs the folder so that a renamed or new entry in it survives a loss of power.
[[nodiscard]] int synchronizeFolder(const std::string& folder);

/// The names in an open folder, without "." and "..", in the order of the system.
/// @return 0 or the errno value.
[[nodiscard]] int listFolder(int folder, std::vector<std::string>& names);

}  // namespace vornic::platform

#endif
