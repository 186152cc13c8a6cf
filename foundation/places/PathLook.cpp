#include "foundation/places/PathLook.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <fcntl.h>
#include <linux/stat.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/CanonicalText.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/ChildAnswers.h"
#include "platform/volumes/MountTable.h"

namespace vornic {

namespace {

using platform::MountedVolume;

// As many links as the kernel follows.
constexpr int kMostLinks = 40;
constexpr std::size_t kLongestPath = 65536;

bool lieIn(std::string_view path, std::string_view folder) {
    return folder == "/" || (path.starts_with(folder) &&
                             (path.size() == folder.size() || path[folder.size()] == '/'));
}

std::vector<std::string> namesOn(std::string_view path) {
    std::vector<std::string> names;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (const std::string_view name = path.substr(0, end); !name.empty() && name != ".") {
            names.emplace_back(name);
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return names;
}

std::string below(const std::string& folder, const std::string& name) {
    return folder == "/" ? folder + name : folder + "/" + name;
}

// What a child says of a path: a sight, or where a link or another volume leads on.
struct Step {
    PathSight sight;
    bool leadsOn = false;
    int links = 0;
    bool hasOtherName = false;
};

// Walks from a volume's mount point to a path on it, name by name, in the child.
class Walk {
  public:
    Walk(std::string mountPoint, const std::vector<MountedVolume>& volumes)
        : mountPoint_(std::move(mountPoint)) {
        for (const MountedVolume& volume : volumes) {
            mountPoints_.insert(volume.mountPoint);
        }
    }

    [[nodiscard]] Step walk(const std::string& path, int links) {
        Step step;
        step.links = links;
        std::string folder = mountPoint_;
        std::vector<std::string> open = namesOn(path.substr(mountPoint_.size()));
        std::reverse(open.begin(), open.end());
        if (open.empty()) {
            step.sight = {PathSight::Kind::folder, folder};
        }
        while (!open.empty()) {
            std::string name = std::move(open.back());
            open.pop_back();
            if (!enter(folder, std::move(name), open, step)) {
                break;
            }
        }
        step.sight.hasOtherName = step.hasOtherName;
        return step;
    }

  private:
    using Kind = PathSight::Kind;

    // @return whether the way goes on in `folder`.
    bool enter(std::string& folder, std::string name, std::vector<std::string>& open, Step& step) {
        if (name == "..") {
            return leadOn(folder.substr(0, std::max<std::size_t>(folder.rfind('/'), 1)), open,
                          step);
        }
        std::string place = below(folder, name);
        if (open.empty() || known_.find(place) == known_.end()) {
            struct statx status {};
            int error = look(place, status);
            if (error == ENOENT && takeOtherName(folder, name)) {
                step.hasOtherName = true;
                place = below(folder, name);
                error = look(place, status);
            }
            if (error != 0) {
                step.sight.kind = kindOf(error);
                return false;
            }
            if (S_ISLNK(status.stx_mode)) {
                return follow(folder, place, open, step);
            }
            if (mountPoints_.count(place) != 0) {
                return leadOn(place, open, step);
            }
            if ((status.stx_attributes_mask & status.stx_attributes & STATX_ATTR_AUTOMOUNT) != 0) {
                step.sight.kind = Kind::notMounted;
                return false;
            }
            if (open.empty()) {
                step.sight = sightOf(place, status);
                return false;
            }
            if (!S_ISDIR(status.stx_mode)) {
                step.sight.kind = Kind::missing;
                return false;
            }
            known_.insert(place);
        }
        folder = std::move(place);
        return true;
    }

    static int look(const std::string& place, struct statx& status) {
        const unsigned int asked = STATX_TYPE | STATX_MODE | STATX_SIZE | STATX_MTIME;
        return statx(AT_FDCWD, place.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, asked,
                     &status) == 0
                   ? 0
                   : errno;
    }

    static Kind kindOf(int error) {
        switch (error) {
            case ENOENT:
            case ENOTDIR:
            case ENAMETOOLONG:
            case EINVAL:
                return Kind::missing;
            case EACCES:
            case EPERM:
                return Kind::unreadable;
            default:
                return Kind::noAnswer;
        }
    }

    static PathSight sightOf(const std::string& place, const struct statx& status) {
        constexpr std::int64_t kSecond = 1000000000;
        PathSight sight;
        sight.path = place;
        sight.size = status.stx_size;
        sight.modified = status.stx_mtime.tv_sec * kSecond + status.stx_mtime.tv_nsec;
        if (S_ISDIR(status.stx_mode)) {
            sight.kind = Kind::folder;
            sight.isEmpty = isEmpty(place);
        } else if (!S_ISREG(status.stx_mode)) {
            sight.kind = Kind::special;
        } else {
            const bool mayRead = faccessat(AT_FDCWD, place.c_str(), R_OK, AT_EACCESS) == 0;
            sight.kind = mayRead ? Kind::file : Kind::unreadable;
        }
        return sight;
    }

    static bool isEmpty(const std::string& folder) {
        const platform::FileDescriptor opened(
            open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
        std::vector<std::string> names;
        return opened && platform::listFolder(opened.get(), names) == 0 && names.empty();
    }

    // The rest of the way is for another walk.
    bool leadOn(const std::string& folder, std::vector<std::string>& open, Step& step) const {
        step.leadsOn = true;
        step.sight.path = folder;
        while (!open.empty()) {
            step.sight.path = below(step.sight.path, open.back());
            open.pop_back();
        }
        return false;
    }

    bool follow(const std::string& folder, const std::string& link, std::vector<std::string>& open,
                Step& step) const {
        std::array<char, 4096> text{};
        const ssize_t length = readlink(link.c_str(), text.data(), text.size());
        if (length <= 0 || ++step.links > kMostLinks) {
            step.sight.kind = Kind::missing;
            return false;
        }
        const std::string_view target(text.data(), static_cast<std::size_t>(length));
        std::vector<std::string> names = namesOn(target);
        open.insert(open.end(), names.rbegin(), names.rend());
        return leadOn(target.starts_with('/') ? "/" : folder, open, step);
    }

    // Looks for the one name in the folder that differs by normalisation only, else for the first
    // that differs by case as well.
    bool takeOtherName(const std::string& folder, std::string& name) {
        const auto [listing, isNew] = listings_.try_emplace(folder);
        if (isNew) {
            ErrorSlot ignored;
            const auto names = platform::namesInFolder(folder, ignored);
            for (const std::string& entry : names.value_or(std::vector<std::string>())) {
                listing->second[foldedName(entry)].push_back(entry);
            }
        }
        const auto found = listing->second.find(foldedName(name));
        if (found == listing->second.end()) {
            return false;
        }
        const std::string decomposed = canonicallyDecomposed(name);
        const auto& entries = found->second;
        const auto same = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) {
            return canonicallyDecomposed(entry) == decomposed;
        });
        name = same == entries.end() ? entries.front() : *same;
        return true;
    }

    std::string mountPoint_;
    std::unordered_set<std::string> mountPoints_;
    // Folders that were entered before.
    std::unordered_set<std::string> known_;
    // By folder and folded name.
    std::unordered_map<std::string, std::unordered_map<std::string, std::vector<std::string>>>
        listings_;
};

template <typename Value>
void append(std::string& text, const Value& value) {
    text.append(reinterpret_cast<const char*>(&value), sizeof(value));
}

template <typename Value>
void take(std::string_view& text, Value& value) {
    std::memcpy(&value, text.data(), sizeof(value));
    text.remove_prefix(sizeof(value));
}

// Between two halves of one program.
std::string packed(const Step& step) {
    std::string text;
    append(text, step.sight.kind);
    append(text, step.sight.hasOtherName);
    append(text, step.sight.isEmpty);
    append(text, step.sight.size);
    append(text, step.sight.modified);
    append(text, step.leadsOn);
    append(text, step.links);
    return text + step.sight.path;
}

Step unpacked(std::string_view text) {
    Step step;
    take(text, step.sight.kind);
    take(text, step.sight.hasOtherName);
    take(text, step.sight.isEmpty);
    take(text, step.sight.size);
    take(text, step.sight.modified);
    take(text, step.leadsOn);
    take(text, step.links);
    step.sight.path = text;
    step.hasOtherName = step.sight.hasOtherName;
    return step;
}

// A path on its way through links and volumes.
struct Traveller {
    std::size_t number = 0;
    std::string path;
    int links = 0;
    bool hasOtherName = false;
};

// One look at many paths.
class Look {
  public:
    Look(const std::vector<std::string>& paths, std::chrono::milliseconds limit,
         std::set<std::string>& silent)
        : volumes_(platform::mountedVolumes()),
          limit_(limit),
          silent_(silent),
          sights_(paths.size()) {
        // Tables of names that children must find complete.
        static_cast<void>(foldedName("\u00C9"));
        for (std::size_t number = 0; number < paths.size(); ++number) {
            travellers_.push_back({number, paths[number], 0, false});
        }
    }

    std::vector<PathSight> run() {
        while (!travellers_.empty()) {
            askVolumes();
        }
        return std::move(sights_);
    }

  private:
    using Kind = PathSight::Kind;

    struct Group {
        const MountedVolume* volume = nullptr;
        std::vector<Traveller> travellers;
        std::unique_ptr<platform::ChildAnswers> answers;
    };

    // All volumes at once, so that several silent ones cost the time of one.
    void askVolumes() {
        std::map<std::string, Group> groups;
        for (Traveller& traveller : std::exchange(travellers_, {})) {
            const MountedVolume* const volume = volumeOf(traveller.path);
            if (const std::optional<Kind> kind = kindWithoutLook(traveller, volume)) {
                sights_[traveller.number].kind = *kind;
                continue;
            }
            Group& group = groups[volume->mountPoint];
            group.volume = volume;
            group.travellers.push_back(std::move(traveller));
        }
        for (auto& [mountPoint, group] : groups) {
            start(group);
        }
        for (auto& [mountPoint, group] : groups) {
            collect(mountPoint, group);
        }
    }

    [[nodiscard]] const MountedVolume* volumeOf(const std::string& path) const {
        const auto found = std::find_if(
            volumes_.begin(), volumes_.end(),
            [&](const MountedVolume& volume) { return lieIn(path, volume.mountPoint); });
        return found == volumes_.end() ? nullptr : &*found;
    }

    // A volume that is mounted when somebody enters it is not entered.
    [[nodiscard]] std::optional<Kind> kindWithoutLook(const Traveller& traveller,
                                                      const MountedVolume* volume) const {
        if (traveller.path.find('\0') != std::string::npos || !traveller.path.starts_with('/') ||
            traveller.path.size() > kLongestPath) {
            return Kind::missing;
        }
        if (volume == nullptr || volume->filesystemType == "autofs") {
            return Kind::notMounted;
        }
        return silent_.count(volume->mountPoint) != 0 ? std::optional(Kind::noAnswer)
                                                      : std::nullopt;
    }

    void start(Group& group) const {
        auto walk = std::make_shared<Walk>(group.volume->mountPoint, volumes_);
        const std::vector<Traveller>& travellers = group.travellers;
        group.answers = std::make_unique<platform::ChildAnswers>(
            [walk, &travellers](std::size_t index) -> std::optional<std::string> {
                if (index == travellers.size()) {
                    return std::nullopt;
                }
                return packed(walk->walk(travellers[index].path, travellers[index].links));
            });
    }

    void collect(const std::string& mountPoint, Group& group) {
        for (Traveller& traveller : group.travellers) {
            const std::optional<std::string> answer = group.answers->next(limit_);
            if (!answer) {
                silent_.insert(mountPoint);
                sights_[traveller.number].kind = Kind::noAnswer;
                continue;
            }
            Step step = unpacked(*answer);
            traveller.hasOtherName = traveller.hasOtherName || step.hasOtherName;
            if (step.leadsOn) {
                travellers_.push_back({traveller.number, std::move(step.sight.path), step.links,
                                       traveller.hasOtherName});
                continue;
            }
            step.sight.hasOtherName = traveller.hasOtherName;
            sights_[traveller.number] = std::move(step.sight);
        }
    }

    const std::vector<MountedVolume> volumes_;
    const std::chrono::milliseconds limit_;
    std::set<std::string>& silent_;
    std::vector<PathSight> sights_;
    std::vector<Traveller> travellers_;
};

// The folder of the volume that the path should be on, where nothing is mounted there; "" for
// paths that do not tell.
std::string unmountedFolderOf(const std::string& path, const std::vector<MountedVolume>& volumes) {
    constexpr std::array<std::pair<std::string_view, int>, 4> kPlaces = {
        {{"/Volumes/", 1}, {"/run/media/", 2}, {"/media/", 2}, {"/mnt/", 1}}};
    for (const auto& [place, depth] : kPlaces) {
        if (!path.starts_with(place)) {
            continue;
        }
        std::size_t end = place.size() - 1;
        for (int level = 0; level < depth && end != std::string::npos; ++level) {
            end = path.find('/', end + 1);
        }
        const bool isMounted = std::any_of(
            volumes.begin(), volumes.end(),
            [&path, least = place.size()](const MountedVolume& volume) {
                return volume.mountPoint.size() > least && lieIn(path, volume.mountPoint);
            });
        return end == std::string::npos || isMounted ? "" : path.substr(0, end);
    }
    return "";
}

}  // namespace

std::vector<PathSight> PathLook::lookAt(const std::vector<std::string>& paths) {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<PathSight> sights = Look(paths, limit_, silent_).run();
    findUnmounted(paths, sights);
    return sights;
}

void PathLook::findUnmounted(const std::vector<std::string>& paths,
                             std::vector<PathSight>& sights) {
    const std::vector<MountedVolume> volumes = platform::mountedVolumes();
    // The paths of each folder.
    std::map<std::string, std::vector<std::size_t>> missing;
    for (std::size_t number = 0; number < paths.size(); ++number) {
        if (sights[number].kind == PathSight::Kind::missing) {
            if (std::string folder = unmountedFolderOf(paths[number], volumes); !folder.empty()) {
                missing[std::move(folder)].push_back(number);
            }
        }
    }
    std::vector<std::string> folders;
    for (const auto& [folder, numbers] : missing) {
        folders.push_back(folder);
    }
    const std::vector<PathSight> seen = Look(folders, limit_, silent_).run();
    for (std::size_t index = 0; index < folders.size(); ++index) {
        const PathSight& folder = seen[index];
        const bool isThere = folder.kind == PathSight::Kind::folder && !folder.isEmpty;
        for (const std::size_t number : missing[folders[index]]) {
            sights[number].kind = isThere ? PathSight::Kind::missing : PathSight::Kind::notMounted;
        }
    }
}

}  // namespace vornic
