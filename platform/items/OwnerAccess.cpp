#include "platform/items/OwnerAccess.h"

#include <cerrno>
#include <string>
#include <tuple>

#include <sys/stat.h>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {
namespace {

/// Lets the owner read and write the open file, and puts its mode back at the end.
class ModeOpener {
  public:
    explicit ModeOpener(int descriptor) : path_(descriptorPath(descriptor)) {
        struct stat status {};
        if (stat(path_.c_str(), &status) == 0) {
            mode_ = status.st_mode & 07777;
            opened_ = chmod(path_.c_str(), mode_ | S_IRUSR | S_IWUSR) == 0;
        }
    }
    ~ModeOpener() {
        if (opened_) {
            std::ignore = chmod(path_.c_str(), mode_);
        }
    }
    ModeOpener(const ModeOpener&) = delete;
    ModeOpener& operator=(const ModeOpener&) = delete;
    [[nodiscard]] bool opened() const { return opened_; }

  private:
    std::string path_;
    mode_t mode_ = 0;
    bool opened_ = false;
};

}  // namespace

int withOwnerAccess(int descriptor, const std::function<int()>& change) {
    const int errorNumber = change();
    if (errorNumber != EACCES) {
        return errorNumber;
    }
    const ModeOpener opener(descriptor);
    return opener.opened() ? change() : errorNumber;
}

}  // namespace vornic::platform
