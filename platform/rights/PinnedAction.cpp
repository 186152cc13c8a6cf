#include "platform/rights/PinnedAction.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <memory>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Exception.h"
#include "base/PathText.h"
#include "platform/files/TemporaryName.h"
#include "platform/processes/Process.h"
#include "platform/processes/SystemTool.h"

namespace vornic::platform {
namespace {

constexpr int kPlace = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
/// What the only entry of a hidden folder is called.
constexpr const char* kItem = "item";

bool standsAt(int folder, const std::string& name, const FileIdentity& identity) {
    struct stat status {};
    return fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           FileIdentity{.device = status.st_dev, .inode = status.st_ino} == identity;
}

bool isThere(int folder, const std::string& name) {
    struct stat status {};
    return fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

/// @return 0 or the errno value. Where the volume cannot refuse to replace, it is looked at first.
int renameToFreeName(int from, const std::string& name, int to, const std::string& newName) {
    if (renameat2(from, name.c_str(), to, newName.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    if (isThere(to, newName)) {
        return EEXIST;
    }
    return renameat(from, name.c_str(), to, newName.c_str()) == 0 ? 0 : errno;
}

/// Gives somebody's item its name back, or a numbered one when that is taken by now: it must not
/// stay where its owner cannot look. Such a name may be taken as well, by whoever means to keep it
/// there.
void putBack(int hidden, int folder, const std::string& name) {
    constexpr long kMostTries = 1000;
    const SplitName parts = splitExtension(name);
    std::string place = name;
    for (long number = 2; number < kMostTries; ++number) {
        if (renameToFreeName(hidden, kItem, folder, place) != EEXIST) {
            return;
        }
        place = parts.stem + " " + std::to_string(number) + parts.extension;
    }
}

bool exchange(int one, const std::string& name, int other, const std::string& otherName) {
    return renameat2(one, name.c_str(), other, otherName.c_str(), RENAME_EXCHANGE) == 0;
}

FileDescriptor duplicate(int descriptor) {
    return FileDescriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
}

std::vector<FileDescriptor> duplicates(std::initializer_list<int> descriptors) {
    std::vector<FileDescriptor> list;
    for (const int descriptor : descriptors) {
        list.push_back(duplicate(descriptor));
    }
    return list;
}

/// The path of an entry of the folder that a tool is given as the descriptor of that number.
std::string inFolder(int number, const std::string& name) {
    return joinPath(descriptorPath(STDERR_FILENO + number), name);
}

/// A link that says what another says.
bool copyLink(const PinnedItem& link, int folder, const char* name) {
    std::array<char, PATH_MAX> target{};
    struct stat status {};
    if (readlinkat(link.node.get(), "", target.data(), target.size() - 1) <= 0 ||
        fstat(link.node.get(), &status) != 0 || symlinkat(target.data(), folder, name) != 0) {
        return false;
    }
    const std::array<struct timespec, 2> times{status.st_atim, status.st_mtim};
    static_cast<void>(fchownat(folder, name, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW) ==
                      0);
    std::ignore = utimensat(folder, name, times.data(), AT_SYMLINK_NOFOLLOW);
    return true;
}

}  // namespace

class PinnedAction::HiddenFolder {
  public:
    /// @return nothing when there can be none.
    static std::shared_ptr<HiddenFolder> make(const FileDescriptor& around) {
        auto hidden = std::make_shared<HiddenFolder>(around);
        return hidden->folder_ ? hidden : nullptr;
    }
    explicit HiddenFolder(const FileDescriptor& around)
        : around_(duplicate(around.get())), name_(temporaryName("vornic")) {
        struct stat status {};
        if (mkdirat(around_.get(), name_.c_str(), 0700) != 0) {
            return;
        }
        folder_ = FileDescriptor(openat(around_.get(), name_.c_str(), kPlace));
        const bool isOurs = folder_ && fstat(folder_.get(), &status) == 0 &&
                            status.st_uid == geteuid() && (status.st_mode & 077) == 0;
        if (!isOurs) {
            folder_.close();
        }
    }
    ~HiddenFolder() { std::ignore = unlinkat(around_.get(), name_.c_str(), AT_REMOVEDIR); }
    HiddenFolder(const HiddenFolder&) = delete;
    HiddenFolder& operator=(const HiddenFolder&) = delete;

    [[nodiscard]] int get() const { return folder_.get(); }

  private:
    FileDescriptor around_;
    std::string name_;
    FileDescriptor folder_;
};

bool runSystemTool(const std::string& tool, const std::vector<std::string>& arguments,
                   std::vector<FileDescriptor> folders) {
    try {
        Process process;
        process.setLaunchPath(systemToolPath(tool));
        process.setArguments(arguments);
        process.setEnvironment(
            Process::Environment{{"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"}, {"LC_ALL", "C"}});
        process.setNullDevice(StandardStream::input);
        process.setNullDevice(StandardStream::output);
        process.setNullDevice(StandardStream::error);
        process.setOwnSession(true);
        for (FileDescriptor& folder : folders) {
            static_cast<void>(process.addDescriptor(std::move(folder)));
        }
        process.launch();
        process.waitUntilExit();
        return process.terminationStatus() == 0;
    } catch (const Exception&) {
        return false;
    }
}

AuthorizationStatus PinnedAction::begin() {
    switch (run_.action) {
        case PrivilegedAction::makeFolder:
            return makeFolders();
        case PrivilegedAction::touch:
            return touch();
        case PrivilegedAction::remove:
            return takeAside();
        case PrivilegedAction::move:
            return rename();
        default:
            copies_ = run_.source.exists();
            return kAuthorizationSuccess;
    }
}

void PinnedAction::finish() {
    if (copies_ && copyToDestination() && removesAfterwards_) {
        // The copy is to be on the disk before the original goes.
        std::ignore = syncfs(run_.destination.place.folder.get());
        run_.tool = "/bin/rm";
        run_.options = {"-Rdf"};
        static_cast<void>(takeAside());
    }
    removeAside();
}

/// Takes what is to be removed out of everybody's reach.
AuthorizationStatus PinnedAction::takeAside() {
    const PinnedItem& item = run_.source;
    if (!item.exists()) {
        return kAuthorizationSuccess;
    }
    aside_ = HiddenFolder::make(item.place.folder);
    if (!aside_) {
        // A full volume has no room for another folder, and this may be what gives it some.
        removesInPlace_ = standsAt(item.place.folder.get(), item.place.name, item.identity);
        return removesInPlace_ ? kAuthorizationSuccess : kAuthorizationDenied;
    }
    if (renameToFreeName(item.place.folder.get(), item.place.name, aside_->get(), kItem) != 0) {
        aside_ = nullptr;
        return kAuthorizationSuccess;
    }
    if (standsAt(aside_->get(), kItem, item.identity)) {
        return kAuthorizationSuccess;
    }
    putBack(aside_->get(), item.place.folder.get(), item.place.name);
    aside_ = nullptr;
    return kAuthorizationDenied;
}

void PinnedAction::removeAside() {
    std::vector<std::string> arguments = run_.options;
    if (removesInPlace_) {
        arguments.push_back(inFolder(1, run_.source.place.name));
        static_cast<void>(
            runTool_(run_.tool, arguments, duplicates({run_.source.place.folder.get()})));
    }
    if (!aside_) {
        return;
    }
    arguments.push_back(inFolder(1, kItem));
    static_cast<void>(runTool_(run_.tool, arguments, duplicates({aside_->get()})));
    // What could not be removed goes back to where it was.
    if (isThere(aside_->get(), kItem)) {
        putBack(aside_->get(), run_.source.place.folder.get(), run_.source.place.name);
    }
    aside_ = nullptr;
}

AuthorizationStatus PinnedAction::rename() {
    const PinnedItem& source = run_.source;
    const PinnedItem& destination = run_.destination;
    if (!source.exists()) {
        return kAuthorizationSuccess;
    }
    if (destination.exists()) {
        return replaceByRenaming();
    }
    const int from = source.place.folder.get();
    const int to = destination.place.folder.get();
    const int errorNumber = renameToFreeName(from, source.place.name, to, destination.place.name);
    copies_ = removesAfterwards_ = errorNumber == EXDEV;
    if (errorNumber != 0 || standsAt(to, destination.place.name, source.identity)) {
        return kAuthorizationSuccess;
    }
    static_cast<void>(renameToFreeName(to, destination.place.name, from, source.place.name));
    return kAuthorizationDenied;
}

/// Exchanges the two names, so that neither is lost, and removes what was replaced.
AuthorizationStatus PinnedAction::replaceByRenaming() {
    const PinnedItem& source = run_.source;
    const PinnedItem& destination = run_.destination;
    const int from = source.place.folder.get();
    const int to = destination.place.folder.get();
    if (source.identity == destination.identity) {
        return kAuthorizationSuccess;
    }
    if (!exchange(from, source.place.name, to, destination.place.name)) {
        // Another volume, or one that cannot exchange names: by way of a copy.
        copies_ = removesAfterwards_ = errno == EXDEV || errno == EINVAL || errno == ENOSYS;
        return kAuthorizationSuccess;
    }
    if (!standsAt(to, destination.place.name, source.identity) ||
        !standsAt(from, source.place.name, destination.identity)) {
        static_cast<void>(exchange(from, source.place.name, to, destination.place.name));
        return kAuthorizationDenied;
    }
    run_.tool = "/bin/rm";
    run_.options = {"-Rdf"};
    run_.source.identity = destination.identity;
    return takeAside();
}

/// @return whether the whole item stands in the hidden folder.
bool PinnedAction::copyInto(const HiddenFolder& hidden) {
    const PinnedItem& source = run_.source;
    if (S_ISLNK(source.type)) {
        return copyLink(source, hidden.get(), kItem);
    }
    std::vector<std::string> arguments{"-f", "-p", "-R"};
    if (S_ISDIR(source.type)) {
        arguments.push_back(inFolder(1, "."));
    } else {
        // The descriptor's own name is a link, which is to be followed.
        arguments.insert(arguments.end(), {"-H", descriptorPath(STDERR_FILENO + 1)});
    }
    arguments.push_back(inFolder(2, kItem));
    return runTool_("/bin/cp", arguments, duplicates({source.node.get(), hidden.get()}));
}

bool PinnedAction::copyToDestination() {
    const PinnedItem& destination = run_.destination;
    const int to = destination.place.folder.get();
    const std::string& name = destination.place.name;
    const std::shared_ptr<HiddenFolder> hidden = HiddenFolder::make(destination.place.folder);
    if (!hidden) {
        return false;
    }
    bool isPlaced = copyInto(*hidden);
    if (isPlaced && !destination.exists()) {
        isPlaced = renameToFreeName(hidden->get(), kItem, to, name) == 0;
    } else if (isPlaced && exchange(hidden->get(), kItem, to, name)) {
        isPlaced = standsAt(hidden->get(), kItem, destination.identity);
        if (!isPlaced && !exchange(hidden->get(), kItem, to, name)) {
            putBack(hidden->get(), to, name);
            return false;
        }
    } else if (isPlaced) {
        isPlaced = standsAt(to, name, destination.identity) &&
                   renameat(hidden->get(), kItem, to, name.c_str()) == 0;
    }
    if (isThere(hidden->get(), kItem)) {
        static_cast<void>(
            runTool_("/bin/rm", {"-Rdf", inFolder(1, kItem)}, duplicates({hidden->get()})));
    }
    return isPlaced;
}

AuthorizationStatus PinnedAction::makeFolders() {
    constexpr mode_t kUsualMode = 0777;
    FileDescriptor place = std::move(run_.folder);
    for (const std::string& name : run_.newFolders) {
        if (mkdirat(place.get(), name.c_str(), kUsualMode) != 0 && errno != EEXIST) {
            return kAuthorizationSuccess;
        }
        place = FileDescriptor(openat(place.get(), name.c_str(), kPlace));
        if (!place) {
            return kAuthorizationDenied;
        }
    }
    return kAuthorizationSuccess;
}

AuthorizationStatus PinnedAction::touch() {
    if (S_ISLNK(run_.source.type)) {
        return kAuthorizationDenied;
    }
    if (run_.source.exists()) {
        static_cast<void>(
            utimensat(AT_FDCWD, descriptorPath(run_.source.node.get()).c_str(), nullptr, 0) == 0);
    }
    return kAuthorizationSuccess;
}

}  // namespace vornic::platform
