#ifndef VORNIC_PLATFORM_FILES_TEMPORARY_FOLDER_H
#define VORNIC_PLATFORM_FILES_TEMPORARY_FOLDER_H

#include <chrono>
#include <string>

#include "base/Error.h"
#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// A hidden folder beside a path, for a folder that is put together in it before it gets that path;
/// goes with all that is in it when the object does. Its name ends with ".parts" and it is locked
/// as long as the object lives, so that one which a killed process has left behind is known. One
/// thread at a time.
class TemporaryFolder {
  public:
    TemporaryFolder() = default;
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Makes it, when those that killed processes have left there are removed. Call once.
    /// @param path what is being made; messages name it
    [[nodiscard]] bool make(const std::string& path, ErrorSlot& error);
    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    std::string path_;
    FileDescriptor folder_;
};

/// Removes the temporary folders that killed processes of this user have left in a folder: those
/// that no process has locked and that nothing has changed for a time. Any thread.
void removeDeadTemporaryFolders(const std::string& folder,
                                std::chrono::seconds age = std::chrono::minutes(10));

}  // namespace vornic::platform

#endif
