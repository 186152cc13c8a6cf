#include "tests/faults/SceneFolder.h"

#include <cstdlib>
#include <filesystem>

#include <sys/xattr.h>
#include <unistd.h>

namespace vornic::test {

namespace {

constexpr const char* kOptions = "size=512m,mode=1777";
constexpr const char* kSharedMemory = "/dev/shm";

std::string makeFolderIn(const std::string& folder) {
    std::string pattern = folder + "/vornic-scenes-XXXXXX";
    return mkdtemp(pattern.data()) == nullptr ? std::string() : pattern;
}

bool keepsAttributes(const std::string& folder) {
    const std::string probe = makeFolderIn(folder);
    if (probe.empty()) {
        return false;
    }
    const bool keeps = setxattr(probe.c_str(), "user.label", "blue", 4, 0) == 0;
    rmdir(probe.c_str());
    return keeps;
}

}  // namespace

SceneFolder::SceneFolder(const PrivateMounts& mounts, const std::string& wanted)
    : mounts_(mounts), path_(wanted) {
    if (path_.empty() && !mountOwn()) {
        path_ = keepsAttributes(kSharedMemory) ? std::string(kSharedMemory)
                                               : std::filesystem::temp_directory_path().string();
    }
}

SceneFolder::~SceneFolder() {
    if (!mounted_.empty()) {
        static_cast<void>(mounts_.unmountVolume(mounted_));
        rmdir(mounted_.c_str());
    }
}

bool SceneFolder::mountOwn() {
    const std::string folder = makeFolderIn(std::filesystem::temp_directory_path());
    if (folder.empty()) {
        return false;
    }
    const bool isMounted = mounts_.mountVolume(folder, "tmpfs", kOptions);
    if (isMounted && keepsAttributes(folder)) {
        path_ = mounted_ = folder;
        return true;
    }
    if (isMounted) {
        static_cast<void>(mounts_.unmountVolume(folder));
    }
    rmdir(folder.c_str());
    return false;
}

}  // namespace vornic::test
