#include "job/JournalFiles.h"

#include <cerrno>
#include <vector>

#include <sys/stat.h>

#include "platform/FileDescriptor.h"
#include "platform/FileVersion.h"
#include "platform/PathText.h"

namespace vornic {

namespace {

std::string sidePath(const std::string& file, std::string_view ending) {
    // Short enough for file systems that take less than 255 bytes.
    constexpr std::size_t kKeptOfName = 100;
    std::string name = platform::lastComponent(file);
    if (name.size() > kKeptOfName) {
        const std::uint64_t rest = platform::ContentDigest::of(name)[0];
        name = std::string(platform::truncateUTF8(name, kKeptOfName)) + "-" + std::to_string(rest);
    }
    return platform::joinPath(platform::parentFolder(file), "." + name + std::string(ending));
}

}  // namespace

std::string undoWaitingPath(const std::string& file) {
    return sidePath(file, ".vornic.undo");
}

std::string undoAsidePath(const std::string& file) {
    return sidePath(file, ".vornic.swap");
}

std::optional<JournalFile> journalFileAt(const std::string& path, ErrorSlot& error) {
    struct stat status {};
    if (path.find('\0') != std::string::npos || lstat(path.c_str(), &status) != 0) {
        error = posixError("The file " + path + " cannot be opened", errno);
        return std::nullopt;
    }
    JournalFile file;
    file.identity = {.device = status.st_dev, .inode = status.st_ino};
    file.isLink = S_ISLNK(status.st_mode);
    int errorNumber = 0;
    const platform::FileDescriptor contents =
        platform::openRegularFile(path, file.isLink, errorNumber);
    if (!contents && file.isLink) {
        return file;
    }
    const auto version = contents ? platform::versionOf(contents.get(), errorNumber) : std::nullopt;
    const auto digest =
        version ? platform::ContentDigest::ofFile(contents.get(), errorNumber) : std::nullopt;
    if (!digest) {
        error = posixError("The file " + path + " cannot be read", errorNumber);
        return std::nullopt;
    }
    file.size = version->size;
    file.digest = *digest;
    return file;
}

bool hasContentsOf(const JournalFile& file, const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || S_ISLNK(status.st_mode) != file.isLink) {
        return false;
    }
    if (file.isLink) {
        // In the Trash a link may lead elsewhere; it is known by itself.
        return status.st_ino == file.identity.inode;
    }
    ErrorSlot ignored;
    const std::optional<JournalFile> there = static_cast<std::uint64_t>(status.st_size) == file.size
                                                 ? journalFileAt(path, ignored)
                                                 : std::nullopt;
    return there && there->size == file.size && there->digest == file.digest;
}

bool isSameFile(const JournalFile& file, const std::string& path) {
    const std::optional<platform::FileIdentity> identity = platform::fileIdentity(path);
    return identity && identity->inode == file.identity.inode && hasContentsOf(file, path);
}

std::string findInTrash(const JournalFile& file, const std::string& folder,
                        const std::string& name) {
    const std::string usual = platform::joinPath(folder, name);
    if (hasContentsOf(file, usual)) {
        return usual;
    }
    ErrorSlot ignored;
    const std::vector<std::string> names =
        platform::namesInFolder(folder, ignored).value_or(std::vector<std::string>());
    for (const std::string& other : names) {
        const std::string path = platform::joinPath(folder, other);
        if (isSameFile(file, path)) {
            return path;
        }
    }
    return "";
}

}  // namespace vornic
