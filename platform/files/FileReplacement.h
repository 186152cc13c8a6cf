#ifndef VORNIC_PLATFORM_FILES_FILE_REPLACEMENT_H
#define VORNIC_PLATFORM_FILES_FILE_REPLACEMENT_H

#include <memory>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "platform/files/FileSnapshot.h"

namespace vornic::platform {

/// Replaces the contents of a file that was read before, and only as long as the file still is what
/// was read: what another program has written there since stays. Works like `AtomicFile`, with
/// these differences: the names of old and new are exchanged, what came out is compared with what
/// was read, and given back when it differs; mode, attributes and owner that could be kept and are
/// not are a failure; what killed processes have left in the folder is removed. The new contents
/// are synced.
///
/// Order of calls: `open`, `write` as often as needed, `commit`. One thread at a time.
class FileReplacement {
  public:
    /// The moments of a commit at which a test can do what another program might.
    enum class Moment { beforeExchange, afterExchange, beforeReturn };
    using Hook = void (*)(Moment moment);
    /// For tests: called at each moment of each commit; null for none. Any thread.
    static void setHook(Hook hook);

    FileReplacement();
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Makes the temporary file. Fails as `AtomicFile::open` does.
    [[nodiscard]] bool open(const std::string& path, ErrorSlot& error);
    /// Appends bytes. After a failure nothing but the destruction is allowed.
    [[nodiscard]] bool write(std::string_view bytes, ErrorSlot& error);
    /// Puts the new contents in place of what was read. After a failure the target is what it was
    /// or what another program has made of it, and nothing of the temporary file is left.
    [[nodiscard]] bool commit(const FileSnapshot& expected, ErrorSlot& error);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace vornic::platform

#endif
