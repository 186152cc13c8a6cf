#include "platform/archives/BeneathFolder.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "base/PathText.h"

namespace vornic::platform {
namespace {

constexpr int kPlace = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// @return the first component, which is taken off the text.
std::string takeComponent(std::string_view& path) {
    std::string component(path.substr(0, path.find('/')));
    path.remove_prefix(std::min(component.size() + 1, path.size()));
    return component;
}

FileDescriptor refuse(int errorNumber) {
    errno = errorNumber;
    return {};
}

/// The folder itself under a descriptor of its own.
FileDescriptor samePlace(int folder) {
    return FileDescriptor(openat(folder, ".", kPlace));
}

/// What a kernel, or a filter that knows no such call, answers.
bool isUnknownCall(int errorNumber) {
    return errorNumber == ENOSYS || errorNumber == EPERM;
}

}  // namespace

FileDescriptor openBeneath(int folder, const std::string& name, int flags, mode_t mode) {
    struct open_how how {};
    how.flags = static_cast<unsigned>(flags | O_NOFOLLOW | O_CLOEXEC);
    how.mode = (flags & O_CREAT) != 0 ? mode : 0;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    const std::string path = name.empty() ? "." : name;
    for (;;) {
        const long opened = syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how);
        if (opened >= 0) {
            return FileDescriptor(static_cast<int>(opened));
        }
        if (isUnknownCall(errno)) {
            return openBeneathStepwise(folder, name, flags, mode);
        }
        // Something was renamed on the way, so that the kernel cannot say whether it is below.
        if (errno != EAGAIN && errno != EINTR) {
            return {};
        }
    }
}

FileDescriptor openBeneathStepwise(int folder, const std::string& name, int flags, mode_t mode) {
    const std::string last = lastComponent(name);
    FileDescriptor place = samePlace(folder);
    std::string_view way = name;
    while (place && !way.empty()) {
        const std::string component = takeComponent(way);
        if (component == "..") {
            return refuse(EXDEV);
        }
        if (way.empty()) {
            break;
        }
        place = FileDescriptor(openat(place.get(), component.c_str(), kPlace));
    }
    if (!place) {
        return {};
    }
    return FileDescriptor(openat(place.get(), last.empty() ? "." : last.c_str(),
                                 flags | O_NOFOLLOW | O_CLOEXEC, mode));
}

FileDescriptor makeFoldersBeneath(int folder, const std::string& name,
                                  const std::function<bool()>& whenMade) {
    FileDescriptor place = openBeneath(folder, name, O_PATH | O_DIRECTORY);
    if (place || errno != ENOENT) {
        return place;
    }
    constexpr mode_t kUsualMode = 0777;
    place = samePlace(folder);
    std::string_view way = name;
    while (place && !way.empty()) {
        const std::string component = takeComponent(way);
        if (component == "..") {
            return refuse(EXDEV);
        }
        if (mkdirat(place.get(), component.c_str(), kUsualMode) == 0) {
            if (!whenMade()) {
                return refuse(EFBIG);
            }
        } else if (errno != EEXIST) {
            return {};
        }
        place = FileDescriptor(openat(place.get(), component.c_str(), kPlace));
    }
    return place;
}

}  // namespace vornic::platform
