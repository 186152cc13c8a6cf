#ifndef VORNIC_PLATFORM_FILES_FILE_CHANGE_NOTICE_H
#define VORNIC_PLATFORM_FILES_FILE_CHANGE_NOTICE_H

#include <functional>
#include <optional>
#include <string>

namespace vornic::platform {

/// Called with the path of a file or folder that has changed; nothing: anything may have.
using FileChangeObserver = std::function<void(const std::optional<std::string>& path)>;

/// Tells the observer that something has changed, on the calling thread. Without an observer nobody
/// has to be told: the file managers of this platform watch the folders that they show. Any thread.
void noteFileSystemChanged(const std::optional<std::string>& path);

/// Whom `noteFileSystemChanged` tells from now on; an empty function: nobody.
void setFileChangeObserver(FileChangeObserver observer);

}  // namespace vornic::platform

#endif
