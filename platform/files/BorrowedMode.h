#ifndef VORNIC_PLATFORM_FILES_BORROWED_MODE_H
#define VORNIC_PLATFORM_FILES_BORROWED_MODE_H

#include <string>

#include <sys/types.h>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {

/// Lets the owner change what is in a folder whose mode forbids it, until the mode is given back.
/// The folder is held open: it may be renamed meanwhile, and what then stands in its old place is
/// not touched. One thread at a time.
class BorrowedMode {
  public:
    /// A folder that is not there, that is a link or that cannot be read stays as it is.
    explicit BorrowedMode(const std::string& folder);

    /// Sets the mode that the folder had. Failures are ignored: the folder may only be changed
    /// more freely than before.
    void giveBack() const;

  private:
    FileDescriptor folder_;
    mode_t mode_ = 0;
};

}  // namespace vornic::platform

#endif
