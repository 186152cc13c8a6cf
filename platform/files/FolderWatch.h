#ifndef VORNIC_PLATFORM_FILES_FOLDER_WATCH_H
#define VORNIC_PLATFORM_FILES_FOLDER_WATCH_H

#include <optional>
#include <string>
#include <vector>

#include "base/Error.h"
#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// Tells what is written, named, renamed or removed in a folder from now on, whoever does it (Linux
/// inotify). What another machine does on a shared volume is not seen. One thread at a time.
class FolderWatch {
  public:
    /// @return nothing, with the slot filled, when the folder cannot be watched. May wait for the
    ///     volume.
    [[nodiscard]] static std::optional<FolderWatch> of(const std::string& folder, ErrorSlot& error);

    /// Readable whenever something has changed.
    [[nodiscard]] int descriptor() const { return file_.get(); }
    /// Names in the folder that something has happened to since the last call; "" stands for the
    /// folder itself, and for more changes than the system has kept. Does not wait.
    [[nodiscard]] std::vector<std::string> takeChanges();

  private:
    explicit FolderWatch(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

}  // namespace vornic::platform

#endif
