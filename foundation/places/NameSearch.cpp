#include "foundation/places/NameSearch.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "base/CanonicalText.h"
#include "platform/processes/ChildAnswers.h"
#include "platform/volumes/MountTable.h"

namespace vornic {

namespace {

// What a line of an answer tells: a file, or a folder that may not be read.
constexpr char kFile = 'f';
constexpr char kUnread = 'u';
constexpr char kEnd = '\0';

bool lieIn(std::string_view path, std::string_view folder) {
    return folder == "/" || (path.starts_with(folder) &&
                             (path.size() == folder.size() || path[folder.size()] == '/'));
}

// Looks through what lies on one volume, in the child; some entries at a time, so that a large
// folder is not taken for a silent one.
class VolumeSearch {
  public:
    VolumeSearch(std::string folder, const std::unordered_set<std::string>& names,
                 const std::vector<platform::MountedVolume>& volumes)
        : names_(names) {
        for (const platform::MountedVolume& volume : volumes) {
            if (volume.mountPoint != folder) {
                others_.insert(volume.mountPoint);
            }
        }
        open_.push_back(std::move(folder));
    }

    std::optional<std::string> next() {
        constexpr int kEntries = 1000;
        answer_.clear();
        for (int count = 0; count < kEntries; ++count) {
            if (current_ == nullptr && !enter()) {
                break;
            }
            if (current_ != nullptr) {
                readEntry();
            }
        }
        const bool isDone = current_ == nullptr && open_.empty() && answer_.empty();
        return isDone ? std::nullopt : std::optional(answer_);
    }

  private:
    // @return false when there is no folder left.
    bool enter() {
        if (open_.empty()) {
            return false;
        }
        folder_ = std::move(open_.back());
        open_.pop_back();
        current_.reset(opendir(folder_.c_str()));
        if (current_ == nullptr) {
            tell(kUnread, folder_, 0);
        }
        return true;
    }

    void readEntry() {
        errno = 0;
        const dirent* const entry = readdir(current_.get());
        if (entry == nullptr) {
            if (errno != 0) {
                tell(kUnread, folder_, 0);
            }
            current_.reset();
            return;
        }
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") {
            return;
        }
        const bool isWanted = names_.count(foldedName(name)) != 0;
        if (entry->d_type == DT_REG && !isWanted) {
            return;
        }
        take(std::string(name), entry->d_type, isWanted);
    }

    void take(const std::string& name, unsigned char type, bool isWanted) {
        std::string path = folder_ == "/" ? folder_ + name : folder_ + "/" + name;
        struct stat status {};
        if (type != DT_DIR && (isWanted || type == DT_UNKNOWN)) {
            const int flags = AT_NO_AUTOMOUNT | (isWanted ? 0 : AT_SYMLINK_NOFOLLOW);
            if (fstatat(AT_FDCWD, path.c_str(), &status, flags) != 0) {
                return;
            }
            if (isWanted && S_ISREG(status.st_mode)) {
                constexpr std::int64_t kSecond = 1000000000;
                tell(kFile, path, status.st_mtim.tv_sec * kSecond + status.st_mtim.tv_nsec);
            }
        }
        const bool isFolder = type == DT_DIR || (type == DT_UNKNOWN && S_ISDIR(status.st_mode));
        if (isFolder && !name.starts_with('.') && others_.count(path) == 0) {
            open_.push_back(std::move(path));
        }
    }

    void tell(char what, const std::string& path, std::int64_t modified) {
        answer_ += what;
        answer_ += std::to_string(modified);
        answer_ += kEnd;
        answer_ += path;
        answer_ += kEnd;
    }

    struct Closing {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    const std::unordered_set<std::string>& names_;
    std::unordered_set<std::string> others_;
    std::vector<std::string> open_;
    std::unique_ptr<DIR, Closing> current_;
    std::string folder_;
    std::string answer_;
};

void takeAnswer(std::string_view answer, NameSearchResult& result) {
    const auto part = [&answer] {
        const std::size_t end = std::min(answer.find(kEnd), answer.size());
        const std::string text(answer.substr(0, end));
        answer.remove_prefix(std::min(end + 1, answer.size()));
        return text;
    };
    while (!answer.empty()) {
        const std::string head = part();
        std::string path = part();
        if (head[0] == kUnread) {
            result.unread.push_back(std::move(path));
        } else {
            result.files.push_back({std::move(path), std::stoll(head.substr(1))});
        }
    }
}

// What the kernel makes up holds no files of anybody's.
bool isOfKernel(std::string_view mountPoint) {
    return lieIn(mountPoint, "/proc") || lieIn(mountPoint, "/sys") || lieIn(mountPoint, "/dev");
}

bool isHiddenBelow(std::string_view path, std::string_view folder) {
    return path.find("/.", folder == "/" ? 0 : folder.size()) != std::string_view::npos;
}

}  // namespace

NameSearchResult findNames(const std::string& folder, const std::unordered_set<std::string>& names,
                           std::chrono::milliseconds limit, const StopToken& stop) {
    // A table that children must find complete.
    static_cast<void>(foldedName("\u00C9"));
    const std::vector<platform::MountedVolume> volumes = platform::mountedVolumes();
    std::vector<std::string> roots{folder};
    for (const platform::MountedVolume& volume : volumes) {
        if (lieIn(volume.mountPoint, folder) && volume.mountPoint != folder &&
            volume.filesystemType != "autofs" && !isOfKernel(volume.mountPoint) &&
            !isHiddenBelow(volume.mountPoint, folder)) {
            roots.push_back(volume.mountPoint);
        }
    }
    NameSearchResult result;
    for (const std::string& root : roots) {
        const auto search = std::make_shared<VolumeSearch>(root, names, volumes);
        platform::ChildAnswers answers([search](std::size_t) { return search->next(); });
        for (auto answer = answers.next(limit); answer && !stop.stopRequested();
             answer = answers.next(limit)) {
            takeAnswer(*answer, result);
        }
        if (stop.stopRequested()) {
            break;
        }
        if (answers.isSilent()) {
            result.unread.push_back(root);
        }
    }
    std::sort(result.files.begin(), result.files.end(),
              [](const NamedFile& left, const NamedFile& right) { return left.path < right.path; });
    return result;
}

}  // namespace vornic
