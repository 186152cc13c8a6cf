#include "job/JournalFiles.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include <sys/stat.h>

#include "base/PathText.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileVersion.h"
#include "platform/files/TemporaryName.h"

namespace vornic {

namespace {

std::string sidePath(const std::string& file, std::string_view ending) {
    // Short enough for file systems that take less than 255 bytes.
    constexpr std::size_t kKeptOfName = 100;
    std::string name = lastComponent(file);
    if (name.size() > kKeptOfName) {
        const std::uint64_t rest = platform::ContentDigest::of(name)[0];
        name = std::string(truncateUTF8(name, kKeptOfName)) + "-" + std::to_string(rest);
    }
    return joinPath(parentFolder(file), "." + name + std::string(ending));
}

std::string linkTextAt(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::read_symlink(path, ignored).string();
}

/// The number in "Cut 2.xml" for "Cut.xml", 1 for that itself, 0 for any other name.
unsigned long numberIn(std::string_view candidate, const SplitName& name) {
    constexpr std::size_t kMostDigits = 9;
    if (candidate == name.stem + name.extension) {
        return 1;
    }
    const std::string beginning = name.stem + " ";
    if (candidate.size() <= beginning.size() + name.extension.size() ||
        !candidate.starts_with(beginning) || !candidate.ends_with(name.extension)) {
        return 0;
    }
    candidate.remove_prefix(beginning.size());
    candidate.remove_suffix(name.extension.size());
    const bool isNumber = candidate.size() <= kMostDigits &&
                          candidate.find_first_not_of("0123456789") == std::string_view::npos;
    return isNumber ? std::stoul(std::string(candidate)) : 0;
}

std::vector<std::string> namesIn(const std::string& folder) {
    ErrorSlot ignored;
    return platform::namesInFolder(folder, ignored).value_or(std::vector<std::string>());
}

// Takes down size and digest of an open file. @return 0 or the errno value.
int takeContents(JournalFile& file, int descriptor) {
    const ErrnoOr<platform::FileVersion> version = platform::versionOf(descriptor);
    if (!version) {
        return version.errorNumber();
    }
    const ErrnoOr<platform::ContentDigest::Value> digest =
        platform::ContentDigest::ofFile(descriptor);
    if (!digest) {
        return digest.errorNumber();
    }
    file.size = version->size;
    file.digest = *digest;
    return 0;
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
    file.linkText = file.isLink ? linkTextAt(path) : "";
    const ErrnoOr<platform::FileDescriptor> contents = platform::openRegularFile(path, file.isLink);
    if (!contents && file.isLink) {
        return file;
    }
    if (const int errorNumber =
            contents ? takeContents(file, contents->get()) : contents.errorNumber();
        errorNumber != 0) {
        error = posixError("The file " + path + " cannot be read", errorNumber);
        return std::nullopt;
    }
    return file;
}

bool hasContentsOf(const JournalFile& file, const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || S_ISLNK(status.st_mode) != file.isLink) {
        return false;
    }
    if (file.isLink) {
        // In the Trash a link may lead elsewhere; it is known by itself.
        return file.linkText.empty() ? status.st_ino == file.identity.inode
                                     : linkTextAt(path) == file.linkText;
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
    const std::string usual = joinPath(folder, name);
    if (hasContentsOf(file, usual)) {
        return usual;
    }
    for (const std::string& other : namesIn(folder)) {
        const std::string path = joinPath(folder, other);
        if (isSameFile(file, path)) {
            return path;
        }
    }
    return "";
}

std::string findCopyInTrash(const JournalFile& file, const std::string& folder,
                            const std::string& name) {
    std::string found = findInTrash(file, folder, name);
    if (!found.empty()) {
        return found;
    }
    const SplitName parts = splitExtension(name);
    unsigned long highest = 0;
    for (const std::string& other : namesIn(folder)) {
        const unsigned long number = numberIn(other, parts);
        if (number > highest && hasContentsOf(file, joinPath(folder, other))) {
            highest = number;
            found = joinPath(folder, other);
        }
    }
    return found;
}

std::string findHidden(const JournalFile& file, const std::string& folder) {
    for (const std::string& name : namesIn(folder)) {
        const std::string path = joinPath(folder, name);
        if (platform::isTemporaryName(name) && isSameFile(file, path)) {
            return path;
        }
    }
    return "";
}

}  // namespace vornic
