#include "platform/files/TemporaryFolder.h"

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/files/TemporaryName.h"

namespace vornic::platform {

namespace {

constexpr std::string_view kPartsEnding = ".parts";
constexpr mode_t kPrivate = 0700;

FileDescriptor openFolder(int parent, const std::string& name) {
    return FileDescriptor(
        openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool isPartsName(std::string_view name) {
    return name.ends_with(kPartsEnding) &&
           isTemporaryName(name.substr(0, name.size() - kPartsEnding.size()));
}

/// True for a folder of this user that nothing has changed for long and nobody holds.
bool isDead(int folder, std::chrono::seconds age) {
    struct stat status {};
    return fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
           status.st_ctim.tv_sec + age.count() <= time(nullptr) &&
           flock(folder, LOCK_EX | LOCK_NB) == 0;
}

// Copies of folders that nobody may change have to be emptied all the same.
void removeWhole(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code fault;
    for (fs::recursive_directory_iterator entry(path, fault), end; !fault && entry != end;
         entry.increment(fault)) {
        if (fs::is_directory(entry->symlink_status(fault))) {
            fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, fault);
        }
    }
    ErrorSlot ignored;
    static_cast<void>(removeItem(path, ignored));
}

}  // namespace

TemporaryFolder::~TemporaryFolder() {
    if (!path_.empty()) {
        removeWhole(path_);
    }
}

bool TemporaryFolder::make(const std::string& path, ErrorSlot& error) {
    constexpr int kMostTries = 100;
    const std::string parent = parentFolder(path);
    removeDeadTemporaryFolders(parent);
    for (int attempt = 0; attempt < kMostTries; ++attempt) {
        std::string candidate =
            joinPath(parent, temporaryName(lastComponent(path))).append(kPartsEnding);
        if (mkdir(candidate.c_str(), kPrivate) == 0) {
            folder_ = openFolder(AT_FDCWD, candidate);
            // Where folders cannot be locked, the age alone tells the living from the dead.
            if (folder_) {
                std::ignore = flock(folder_.get(), LOCK_EX | LOCK_NB);
            }
            path_ = std::move(candidate);
            return true;
        }
        if (errno != EEXIST && errno != EINTR) {
            return failFile(error, path, "written", errno);
        }
    }
    return failFile(error, path, "written", EEXIST);
}

void removeDeadTemporaryFolders(const std::string& folder, std::chrono::seconds age) {
    const FileDescriptor opened(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    std::vector<std::string> names;
    if (!opened || listFolder(opened.get(), names) != 0) {
        return;
    }
    for (const std::string& name : names) {
        const FileDescriptor left =
            isPartsName(name) ? openFolder(opened.get(), name) : FileDescriptor();
        if (left && isDead(left.get(), age)) {
            removeWhole(joinPath(descriptorPath(opened.get()), name));
        }
    }
}

}  // namespace vornic::platform
