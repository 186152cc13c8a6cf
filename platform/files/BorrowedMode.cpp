#include "platform/files/BorrowedMode.h"

#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>

namespace vornic::platform {

namespace {

constexpr mode_t kPermissions = 07777;

}  // namespace

BorrowedMode::BorrowedMode(const std::string& folder)
    : folder_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)) {
    struct stat status {};
    if (fstat(folder_.get(), &status) != 0) {
        return;
    }
    mode_ = status.st_mode & kPermissions;
    std::ignore = fchmod(folder_.get(), mode_ | S_IRWXU);
}

void BorrowedMode::giveBack() const {
    std::ignore = fchmod(folder_.get(), mode_);
}

}  // namespace vornic::platform
