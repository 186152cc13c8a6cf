#ifndef VORNIC_PLATFORM_FILES_ATOMIC_FILE_H
#define VORNIC_PLATFORM_FILES_ATOMIC_FILE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

/// Whether `AtomicFile::commit` waits until the data are on the disk.
enum class Durability {
    /// File and folder are synced: after the commit a loss of power keeps the new contents.
    synced,
    /// The swap of old and new is atomic for every process, but not yet safe from a loss of power.
    /// For files that can be made again, and for those that `synchronizeFile` secures later.
    buffered,
    /// Like `buffered`, and nothing is sent on its way to the disk: for a file that will most
    /// likely
    /// be removed again soon, which would have to wait for that.
    passing,
};

/// Replaces the contents of a file as a whole: whoever opens the path sees the old bytes or the new
/// ones, never a part. The bytes go to a temporary file in the target's folder, which gets the
/// mode, owner and extended attributes of an existing target and takes its name in `commit`.
/// Destroyed or aborted before that, it removes the temporary file and leaves the target as it was.
/// A target that is a symbolic link has its target rewritten and stays a link. An owner that can't
/// be kept is no failure. Without an existing target the mode is 0666 less the umask.
///
/// Order of calls: `open`, `write` as often as needed, `commit`. One thread at a time.
class AtomicFile {
  public:
    AtomicFile();
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Makes the temporary file, and removes those that killed processes have left in the folder
    /// (`removeDeadTemporaries`). Fails when the folder cannot be written or the target exists and
    /// is no regular file.
    [[nodiscard]] bool open(const std::string& path, ErrorSlot& error);
    /// Appends bytes. After a failure the object only takes `abort`.
    [[nodiscard]] bool write(std::string_view bytes, ErrorSlot& error);
    /// Puts the new contents in place. After a failure the target is as it was and nothing of the
    /// temporary file is left.
    [[nodiscard]] bool commit(Durability durability, ErrorSlot& error);
    /// Gives up: removes the temporary file. Does nothing after `commit`.
    void abort();
    /// The identity of the new file, known after a successful `commit`.
    [[nodiscard]] std::optional<FileIdentity> identity() const { return identity_; }

  private:
    struct State;
    std::unique_ptr<State> state_;
    std::optional<FileIdentity> identity_;
};

/// `AtomicFile` for bytes that are all there.
[[nodiscard]] bool writeFileAtomically(const std::string& path, std::string_view bytes,
                                       Durability durability, ErrorSlot& error);

}  // namespace vornic::platform

#endif
