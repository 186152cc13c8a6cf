#ifndef VORNIC_PLATFORM_LOCKS_FOLDER_LOCK_H
#define VORNIC_PLATFORM_LOCKS_FOLDER_LOCK_H

#include <string>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// A turn at the files of a folder: while one thread of any process holds it, others that ask for
/// one wait. It binds only those who ask. Any thread; a thread must not ask twice.
///
/// A folder that cannot be opened, a volume without locks and a holder that does not let go within
/// half a minute give a turn all the same: the lock keeps programs from getting in each other's way
/// and must not keep them from working.
class FolderLock {
  public:
    explicit FolderLock(const std::string& folder);

    /// False when the turn could not be had for this one alone.
    [[nodiscard]] bool isHeld() const { return static_cast<bool>(folder_); }

  private:
    FileDescriptor folder_;
};

}  // namespace vornic::platform

#endif
