#include "platform/rights/PinnedRun.h"

#include <algorithm>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "base/PathText.h"
#include "platform/archives/BeneathFolder.h"
#include "platform/rights/ProtectedPaths.h"

namespace vornic::platform {
namespace {

using State = SeenNode::State;

/// Whether no link stands on the way to a folder, so that it is the one that its path says.
bool isReachedWithoutLinks(const std::string& folder, const FileIdentity& identity) {
    const FileDescriptor top(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const std::size_t start = folder.find_first_not_of('/');
    const std::string name = start == std::string::npos ? "" : folder.substr(start);
    const FileDescriptor direct = openBeneath(top.get(), name, O_PATH | O_DIRECTORY);
    return direct && identityOf(direct.get()) == identity;
}

/// Whether a folder is the one that was seen. One that its sender could not look at must be reached
/// without any link.
bool isAsSeen(const SeenNode& seen, const std::string& path, const FileDescriptor& folder) {
    const FileIdentity identity = identityOf(folder.get());
    return seen.state == State::unknown ? isReachedWithoutLinks(path, identity)
                                        : seen.state == State::there && seen.identity == identity;
}

/// Takes hold of what stands at the place.
void holdItem(PinnedItem& item) {
    struct stat status {};
    item.node = FileDescriptor(
        openat(item.place.folder.get(), item.place.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (item.node && fstat(item.node.get(), &status) == 0) {
        item.identity = {.device = status.st_dev, .inode = status.st_ino};
        item.type = status.st_mode & S_IFMT;
    }
}

AuthorizationStatus pinItem(const std::string& path, const SeenPath& seen, PinnedItem& item) {
    std::optional<HeldPath> held = holdPath(path);
    if (!held) {
        return kAuthorizationToolExecuteFailure;
    }
    item.place = std::move(*held);
    holdItem(item);
    const bool isSame =
        seen.item.state == State::unknown || (seen.item.state == State::there) == item.exists();
    const bool isOther =
        seen.item.state == State::there && item.exists() && seen.item.identity != item.identity;
    return isAsSeen(seen.folder, parentFolder(withoutTrailingSlashes(path)), item.place.folder) &&
                   isSame && !isOther
               ? kAuthorizationSuccess
               : kAuthorizationDenied;
}

bool isForbidden(const PinnedItem& item, const std::string& path, const PathGuards& guards,
                 const std::function<bool(const std::string&)>& isForbiddenPath) {
    const std::string held = item.place.path();
    return isForbiddenPath(path) || (held != path && isForbiddenPath(held)) ||
           isProtectedEntry(item.place.folder.get(), item.place.name) ||
           (item.exists() && std::find(guards.folders.begin(), guards.folders.end(),
                                       item.identity) != guards.folders.end());
}

/// The entry of the source's name in a folder that is held.
PinnedItem insideOf(PinnedItem folder, const std::string& name) {
    PinnedItem item;
    item.place.folderPath = folder.place.path();
    item.place.name = name;
    item.place.folder = std::move(folder.node);
    holdItem(item);
    return item;
}

bool leadsToFolder(const PinnedItem& link) {
    struct stat status {};
    return fstatat(link.place.folder.get(), link.place.name.c_str(), &status, 0) == 0 &&
           S_ISDIR(status.st_mode);
}

/// Whether a run may put something in the place of what stands at its destination. A link is never
/// followed, folders are not merged, and nothing is written into a pipe or device.
AuthorizationStatus checkReplaced(const PinnedRun& run) {
    const PinnedItem& replaced = run.destination;
    if (!replaced.exists()) {
        return kAuthorizationSuccess;
    }
    if (S_ISLNK(replaced.type)) {
        return run.action == PrivilegedAction::move && !leadsToFolder(replaced)
                   ? kAuthorizationSuccess
                   : kAuthorizationDenied;
    }
    const bool isOfOneKind = !S_ISDIR(replaced.type) && !S_ISDIR(run.source.type);
    return isOfOneKind && (run.action == PrivilegedAction::move || S_ISREG(replaced.type))
               ? kAuthorizationSuccess
               : kAuthorizationDenied;
}

AuthorizationStatus pinDestination(const std::string& path, const SeenPath& seen,
                                   const PathGuards& guards, PinnedRun& run) {
    if (const AuthorizationStatus status = pinItem(path, seen, run.destination);
        status != kAuthorizationSuccess) {
        return status == kAuthorizationToolExecuteFailure && guards.replacing(path)
                   ? kAuthorizationDenied
                   : status;
    }
    std::string written = path;
    if (S_ISDIR(run.destination.type)) {
        run.destination = insideOf(std::move(run.destination), run.source.place.name);
        written = run.destination.place.path();
    }
    return isForbidden(run.destination, written, guards, guards.replacing) ? kAuthorizationDenied
                                                                           : checkReplaced(run);
}

AuthorizationStatus pinSource(const std::string& path, const SeenPath& seen,
                              const PathGuards& guards, bool isTakenAway, PinnedRun& run) {
    const AuthorizationStatus status = pinItem(path, seen, run.source);
    if (!isTakenAway) {
        return status;
    }
    if (status == kAuthorizationToolExecuteFailure) {
        return guards.takingAway(path) ? kAuthorizationDenied : status;
    }
    return isForbidden(run.source, path, guards, guards.takingAway) ? kAuthorizationDenied : status;
}

AuthorizationStatus pinNewFolders(const std::string& path, const SeenPath& seen,
                                  const PathGuards& guards, PinnedRun& run) {
    std::string nearest = withoutTrailingSlashes(path);
    for (;;) {
        run.folder = FileDescriptor(::open(nearest.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (run.folder || errno != ENOENT || nearest == "/") {
            break;
        }
        run.newFolders.insert(run.newFolders.begin(), lastComponent(nearest));
        nearest = parentFolder(nearest);
    }
    if (!run.folder || !std::all_of(run.newFolders.begin(), run.newFolders.end(), isPlainName)) {
        return kAuthorizationToolExecuteFailure;
    }
    if (run.newFolders.empty()) {
        return kAuthorizationSuccess;
    }
    return !isAsSeen(seen.folder, nearest, run.folder) || guards.replacing(path) ||
                   isProtectedEntry(run.folder.get(), run.newFolders.front())
               ? kAuthorizationDenied
               : kAuthorizationSuccess;
}

}  // namespace

AuthorizationStatus pinRun(const ToolRequest& request, const PathGuards& guards, PinnedRun& run) {
    const std::vector<std::string>& arguments = request.arguments;
    const std::optional<PrivilegedRun> allowed = allowedPrivilegedRun(request.tool, arguments);
    if (!allowed || request.seen.size() != arguments.size()) {
        return kAuthorizationDenied;
    }
    const std::size_t first = allowed->firstPath;
    run.action = allowed->action;
    run.tool = request.tool;
    run.options.assign(arguments.begin(), arguments.begin() + static_cast<std::ptrdiff_t>(first));
    if (run.action == PrivilegedAction::makeFolder) {
        return pinNewFolders(arguments[first], request.seen[first], guards, run);
    }
    const AuthorizationStatus status = pinSource(arguments[first], request.seen[first], guards,
                                                 allowed->takenAway.has_value(), run);
    if (status != kAuthorizationSuccess || !allowed->replaced) {
        return status;
    }
    return pinDestination(arguments[first + 1], request.seen[first + 1], guards, run);
}

}  // namespace vornic::platform
