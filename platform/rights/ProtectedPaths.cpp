#include "platform/rights/ProtectedPaths.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "base/PathText.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/rights/HeldPath.h"

namespace vornic::platform {
namespace {

constexpr std::array<const char*, 10> kTrees{"/etc", "/boot", "/dev", "/proc",  "/sys",
                                             "/bin", "/sbin", "/lib", "/lib64", "/usr"};
/// The administrator's own part of a tree.
constexpr const char* kOpenTree = "/usr/local";
constexpr std::array<const char*, 10> kFolders{"/home", "/root", "/run", "/mnt", "/media",
                                               "/srv",  "/opt",  "/tmp", "/var", kOpenTree};
/// Its folders are protected as themselves.
constexpr const char* kFolderOfFolders = "/var";

std::string withSingleSlashes(std::string_view path) {
    std::string result;
    result.reserve(path.size());
    for (const char character : path) {
        if (character != '/' || !result.ends_with('/')) {
            result += character;
        }
    }
    return withoutTrailingSlashes(result);
}

bool isInTree(std::string_view path, std::string_view tree) {
    return path == tree || (path.starts_with(tree) && path[tree.size()] == '/');
}

/// The path with every link followed; nothing when it leads nowhere.
std::optional<std::string> resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? std::optional<std::string>(real.get()) : std::nullopt;
}

/// Without "." and "..", as if no component were a link: for what cannot be resolved yet.
std::string lexicallyNormal(const std::string& path) {
    return withoutTrailingSlashes(std::filesystem::path(path).lexically_normal().string());
}

bool saysFolder(const std::string& path) {
    const std::string last = lastComponent(path);
    return path.ends_with('/') || last.empty() || last == "." || last == "..";
}

void add(std::vector<std::string>& forms, std::string form) {
    if (std::find(forms.begin(), forms.end(), form) == forms.end()) {
        forms.push_back(std::move(form));
    }
}

/// What is protected, known by device and inode, whatever name leads there.
class ProtectedNodes {
  public:
    ProtectedNodes() {
        add("/", itself_);
        for (const char* tree : kTrees) {
            add(tree, itself_);
            add(tree, trees_);
        }
        for (const char* folder : kFolders) {
            add(folder, itself_);
        }
        add(kOpenTree, open_);
        add(kFolderOfFolders, ofFolders_);
    }

    [[nodiscard]] bool isItself(const FileIdentity& identity) const {
        return contains(itself_, identity);
    }
    [[nodiscard]] bool holdsFolders(const FileIdentity& identity) const {
        return contains(ofFolders_, identity);
    }
    /// Whether an open folder is a protected tree or lies in one.
    [[nodiscard]] bool isInTree(int folder) const {
        FileDescriptor place(openat(folder, ".", kPlace));
        while (place) {
            const FileIdentity identity = identityOf(place.get());
            if (contains(trees_, identity)) {
                return true;
            }
            FileDescriptor above(openat(place.get(), "..", kPlace));
            if (contains(open_, identity) || !above || identityOf(above.get()) == identity) {
                return false;
            }
            place = std::move(above);
        }
        return false;
    }

  private:
    static constexpr int kPlace = O_PATH | O_DIRECTORY | O_CLOEXEC;
    using Identities = std::vector<FileIdentity>;

    /// A name that is a link stands for itself and for what it leads to.
    static void add(const char* path, Identities& identities) {
        struct stat status {};
        for (const int flags : {0, AT_SYMLINK_NOFOLLOW}) {
            if (fstatat(AT_FDCWD, path, &status, flags) == 0) {
                identities.push_back({.device = status.st_dev, .inode = status.st_ino});
            }
        }
    }
    static bool contains(const Identities& identities, const FileIdentity& identity) {
        return std::find(identities.begin(), identities.end(), identity) != identities.end();
    }

    Identities itself_;
    Identities trees_;
    Identities open_;
    Identities ofFolders_;
};

}  // namespace

bool isProtectedPath(std::string_view path) {
    const std::string compared = withSingleSlashes(path);
    if (isInTree(compared, kOpenTree) && compared != kOpenTree) {
        return false;
    }
    const auto holds = [&](std::string_view tree) { return isInTree(compared, tree); };
    return compared == "/" || std::any_of(kTrees.begin(), kTrees.end(), holds) ||
           std::find(kFolders.begin(), kFolders.end(), compared) != kFolders.end() ||
           (compared.find('/', 1) != std::string::npos &&
            parentFolder(compared) == kFolderOfFolders);
}

std::vector<std::string> formsOfPath(const std::string& path) {
    std::vector<std::string> forms{path};
    if (path.empty()) {
        return forms;
    }
    const std::string absolute = absolutePath(path).value_or("/" + path);
    const std::string last = lastComponent(absolute);
    const std::optional<std::string> folder = resolved(parentFolder(absolute));
    if (!folder) {
        add(forms, lexicallyNormal(absolute));
    } else if (!last.empty() && last != "." && last != "..") {
        add(forms, joinPath(*folder, last));
    }
    if (saysFolder(absolute)) {
        add(forms, resolved(absolute).value_or(lexicallyNormal(absolute)));
    }
    return forms;
}

bool isProtectedEntry(int folder, const std::string& name) {
    struct stat status {};
    const ProtectedNodes nodes;
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        nodes.isItself({.device = status.st_dev, .inode = status.st_ino})) {
        return true;
    }
    return nodes.holdsFolders(identityOf(folder)) || nodes.isInTree(folder);
}

bool isProtectedItem(const std::string& path) {
    const std::vector<std::string> forms = formsOfPath(path);
    return std::any_of(forms.begin(), forms.end(), [](const std::string& form) {
        if (isProtectedPath(form)) {
            return true;
        }
        const std::optional<HeldPath> held = form.starts_with('/') ? holdPath(form) : std::nullopt;
        return held && isProtectedEntry(held->folder.get(), held->name);
    });
}

bool leadsToProtectedPath(const std::string& path) {
    const std::optional<std::string> target = resolveFinalLink(path).value();
    return isProtectedItem(path) || (target && target != path && isProtectedItem(*target));
}

bool writingLeadsToProtectedPath(const std::string& source, const std::string& destination) {
    return leadsToProtectedPath(destination) ||
           (isDirectory(destination) &&
            leadsToProtectedPath(joinPath(destination, lastComponent(source))));
}

bool makingLeadsToProtectedPath(const std::string& folder) {
    std::string first = withoutTrailingSlashes(folder);
    for (std::string above = parentFolder(first); !nodeExists(above) && above != first;
         above = parentFolder(first)) {
        first = above;
    }
    return leadsToProtectedPath(folder) || leadsToProtectedPath(first);
}

}  // namespace vornic::platform
