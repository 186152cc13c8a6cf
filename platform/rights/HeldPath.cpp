#include "platform/rights/HeldPath.h"

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "base/PathText.h"

namespace vornic::platform {
namespace {

/// "" for a folder that has been removed, or lies outside the process's root.
std::string pathOfFolder(const FileDescriptor& folder) {
    struct stat status {};
    std::error_code error;
    std::string path = std::filesystem::read_symlink(descriptorPath(folder.get()), error).string();
    const bool isThere = fstat(folder.get(), &status) == 0 && status.st_nlink > 0;
    return !error && isThere && path.starts_with('/') ? std::move(path) : std::string();
}

SeenNode look(const std::string& path, int flags) {
    struct stat status {};
    if (path.find('\0') != std::string::npos) {
        return {};
    }
    if (fstatat(AT_FDCWD, path.c_str(), &status, flags) == 0) {
        return {.state = SeenNode::State::there,
                .identity = {.device = status.st_dev, .inode = status.st_ino}};
    }
    return {.state = errno == ENOENT ? SeenNode::State::missing : SeenNode::State::unknown,
            .identity = {}};
}

std::string describe(const SeenNode& node) {
    switch (node.state) {
        case SeenNode::State::unknown:
            return "?";
        case SeenNode::State::missing:
            return "-";
        default:
            return std::to_string(node.identity.device) + ":" + std::to_string(node.identity.inode);
    }
}

bool readNumber(std::string_view text, std::uint64_t& number) {
    const char* end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && next == end;
}

std::optional<SeenNode> seenNodeFrom(std::string_view text) {
    if (text == "?") {
        return SeenNode{};
    }
    SeenNode node{.state = SeenNode::State::missing, .identity = {}};
    if (text == "-") {
        return node;
    }
    node.state = SeenNode::State::there;
    const std::size_t colon = text.find(':');
    return colon != std::string_view::npos &&
                   readNumber(text.substr(0, colon), node.identity.device) &&
                   readNumber(text.substr(colon + 1), node.identity.inode)
               ? std::optional(node)
               : std::nullopt;
}

}  // namespace

std::string HeldPath::path() const {
    return joinPath(folderPath, name);
}

std::optional<HeldPath> holdPath(const std::string& path) {
    const std::string last = lastComponent(path);
    if (path.find('\0') != std::string::npos || last.empty() || last == "." || last == "..") {
        return std::nullopt;
    }
    HeldPath held;
    held.folder =
        FileDescriptor(::open(parentFolder(path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!held.folder) {
        return std::nullopt;
    }
    held.folderPath = pathOfFolder(held.folder);
    held.name = last;
    return held.folderPath.empty() ? std::nullopt : std::optional(std::move(held));
}

SeenPath lookAtPath(const std::string& path) {
    const std::string item = withoutTrailingSlashes(path);
    SeenPath seen{.folder = look(parentFolder(item), 0), .item = {}};
    if (seen.folder.state == SeenNode::State::missing) {
        seen.item.state = SeenNode::State::missing;
    } else if (seen.folder.state == SeenNode::State::there) {
        seen.item = look(item, AT_SYMLINK_NOFOLLOW);
    }
    return seen;
}

SeenPath lookAtNearestFolder(const std::string& path) {
    std::string folder = withoutTrailingSlashes(path);
    SeenPath seen{.folder = look(folder, 0), .item = {}};
    while (seen.folder.state == SeenNode::State::missing && folder != "/" && folder != ".") {
        folder = parentFolder(folder);
        seen.folder = look(folder, 0);
    }
    return seen;
}

std::string describe(const SeenPath& seen) {
    return describe(seen.folder) + " " + describe(seen.item);
}

std::optional<SeenPath> seenPathFrom(std::string_view text) {
    const std::size_t blank = text.find(' ');
    if (blank == std::string_view::npos) {
        return std::nullopt;
    }
    const std::optional<SeenNode> folder = seenNodeFrom(text.substr(0, blank));
    const std::optional<SeenNode> item = seenNodeFrom(text.substr(blank + 1));
    return folder && item ? std::optional(SeenPath{.folder = *folder, .item = *item})
                          : std::nullopt;
}

}  // namespace vornic::platform
