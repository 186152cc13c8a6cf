#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/Archive.h"
#include "platform/ArchiveHandle.h"
#include "platform/ArchivedLinks.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "platform/FileSystem.h"
#include "platform/FileTransfer.h"
#include "platform/PathText.h"

namespace vornic::platform {
namespace {

/// What is kept of an entry besides its contents.
struct EntryMetadata {
    mode_t mode = 0;
    std::array<struct timespec, 2> times{};
};

EntryMetadata metadataOf(struct archive_entry* entry) {
    struct timespec modified {};
    modified.tv_nsec = UTIME_OMIT;
    if (archive_entry_mtime_is_set(entry) != 0) {
        modified.tv_sec = archive_entry_mtime(entry);
        modified.tv_nsec = archive_entry_mtime_nsec(entry);
    }
    return {.mode = archive_entry_perm(entry) & 0777, .times = {modified, modified}};
}

/// Everything about an entry can be kept out of the disk's way: the folder that is filled has a
/// name that nobody knows, and links are made last, so that nothing is written through one.
class Extraction {
  public:
    Extraction(std::string archive, std::string folder, ErrorSlot& error)
        : path_(std::move(archive)), folder_(std::move(folder)), error_(error) {}

    /// Fills the folder.
    bool extract() {
        const ArchiveNames names(ArchiveNames::Encoding::utf8);
        return open() && extractEntries() && makeLinks();
    }

    /// Gives the folders their modes and times, once nothing more is made in them.
    /// @param folder where the filled folder stands now
    void finishFolders(const std::string& folder) const {
        // What lies in a folder has a longer name, and hence stands behind it.
        std::for_each(folders_.rbegin(), folders_.rend(), [&folder](const auto& entry) {
            const std::string path = joinPath(folder, entry.first);
            const EntryMetadata& metadata = entry.second;
            static_cast<void>(
                utimensat(AT_FDCWD, path.c_str(), metadata.times.data(), AT_SYMLINK_NOFOLLOW) == 0);
            static_cast<void>(metadata.mode == 0 || chmod(path.c_str(), metadata.mode) == 0);
        });
    }

  private:
    bool fail() {
        const char* reason = archive_error_string(archive_.get());
        return failFileBecause(error_, path_, "extracted", EIO,
                               reason == nullptr ? "it cannot be read" : reason);
    }
    bool refuse(const std::string& name, std::string_view reason) {
        return failFileBecause(
            error_, path_, "extracted", EINVAL,
            (name.empty() ? "an entry " : "its entry " + name + " ") + std::string(reason));
    }

    bool open() {
        int errorNumber = 0;
        file_ = openRegularFile(path_, true, errorNumber);
        if (!file_) {
            return failFile(error_, path_, "opened", errorNumber);
        }
        constexpr std::size_t kBlockSize = std::size_t{256} * 1024;
        return (archive_ && archive_read_support_format_zip(archive_.get()) == ARCHIVE_OK &&
                archive_read_open_fd(archive_.get(), file_.get(), kBlockSize) == ARCHIVE_OK) ||
               fail();
    }

    bool extractEntries() {
        for (;;) {
            struct archive_entry* entry = nullptr;
            const int result = archive_read_next_header(archive_.get(), &entry);
            if (result == ARCHIVE_EOF) {
                return true;
            }
            if (result != ARCHIVE_OK && result != ARCHIVE_WARN) {
                return fail();
            }
            if (!extractEntry(entry)) {
                return false;
            }
        }
    }

    bool extractEntry(struct archive_entry* entry) {
        const char* text = archive_entry_pathname(entry);
        const std::string given = text == nullptr ? "" : text;
        const std::optional<std::string> name = nameInsideFolder(given);
        if (given.empty()) {
            return refuse(given, "has no name that can be read");
        }
        if (!name) {
            return refuse(given, "leads out of the folder");
        }
        if (archive_entry_hardlink(entry) != nullptr) {
            return refuse(given, "is of a kind that is not known");
        }
        switch (archive_entry_filetype(entry)) {
            case AE_IFDIR:
                return extractFolder(*name, metadataOf(entry));
            case AE_IFREG:
                return extractFile(*name, metadataOf(entry));
            case AE_IFLNK:
                return keepLink(*name, entry);
            default:
                return refuse(given, "is of a kind that is not known");
        }
    }

    bool extractFolder(const std::string& name, const EntryMetadata& metadata) {
        if (name.empty()) {
            return true;
        }
        folders_[name] = metadata;
        return createDirectory(joinPath(folder_, name), error_);
    }

    bool keepLink(const std::string& name, struct archive_entry* entry) {
        const char* target = archive_entry_symlink(entry);
        if (name.empty() || target == nullptr || *target == '\0') {
            return refuse(name, "is a link without a target");
        }
        links_[name] = target;
        linkTimes_[name] = metadataOf(entry);
        return true;
    }

    /// An entry whose name comes twice replaces the earlier one.
    bool extractFile(const std::string& name, const EntryMetadata& metadata) {
        const std::string path = joinPath(folder_, name);
        if (!createDirectory(parentFolder(path), error_)) {
            return false;
        }
        static_cast<void>(unlink(path.c_str()) == 0);
        FileDescriptor file(
            ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (!file) {
            return failFile(error_, path, "made", errno);
        }
        if (!extractData(path, file.get())) {
            return false;
        }
        static_cast<void>(metadata.mode == 0 || fchmod(file.get(), metadata.mode) == 0);
        static_cast<void>(futimens(file.get(), metadata.times.data()) == 0);
        const int errorNumber = file.close();
        return errorNumber == 0 || failFile(error_, path, "written", errorNumber);
    }

    bool extractData(const std::string& path, int file) {
        for (;;) {
            const void* bytes = nullptr;
            std::size_t count = 0;
            la_int64_t offset = 0;
            const int result = archive_read_data_block(archive_.get(), &bytes, &count, &offset);
            if (result == ARCHIVE_EOF) {
                return true;
            }
            if (result != ARCHIVE_OK) {
                return fail();
            }
            const int errorNumber = writeAll(file, static_cast<const char*>(bytes), count);
            if (errorNumber != 0) {
                return failFile(error_, path, "written", errorNumber);
            }
        }
    }

    bool makeLinks() {
        const std::optional<std::string> out = linkOutOfFolder(links_);
        if (out) {
            return refuse(*out, "is a link that leads out of the folder");
        }
        return std::all_of(links_.begin(), links_.end(), [this](const auto& link) {
            return makeLink(link.second, joinPath(folder_, link.first), linkTimes_.at(link.first));
        });
    }

    bool makeLink(const std::string& target, const std::string& path,
                  const EntryMetadata& metadata) {
        if (!createDirectory(parentFolder(path), error_)) {
            return false;
        }
        if (symlink(target.c_str(), path.c_str()) != 0) {
            return failFile(error_, path, "made", errno);
        }
        static_cast<void>(
            utimensat(AT_FDCWD, path.c_str(), metadata.times.data(), AT_SYMLINK_NOFOLLOW) == 0);
        return true;
    }

    std::string path_;
    std::string folder_;
    ErrorSlot& error_;
    FileDescriptor file_;
    ArchiveHandle archive_{archive_read_new()};
    std::map<std::string, EntryMetadata> folders_;
    ArchivedLinks links_;
    std::map<std::string, EntryMetadata> linkTimes_;
};

/// A folder that nobody else can look into, removed with everything in it at the end.
class PrivateFolder {
  public:
    PrivateFolder(std::string path, ErrorSlot& error) : path_(std::move(path)) {
        made_ = mkdir(path_.c_str(), 0700) == 0 || failFolder(error, path_, "made", errno);
    }
    ~PrivateFolder() {
        ErrorSlot ignored;
        if (made_) {
            removeItem(path_, ignored);
        }
    }
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    [[nodiscard]] bool isMade() const { return made_; }

  private:
    std::string path_;
    bool made_ = false;
};

}  // namespace

bool extractArchive(const std::string& archive, const std::string& destination, ErrorSlot& error) {
    const std::string target = withoutTrailingSlashes(destination);
    if (target.find('\0') != std::string::npos || nodeExists(target) || target.empty()) {
        return failFolder(error, target, "made", nodeExists(target) ? EEXIST : EINVAL);
    }
    const std::string parent = parentFolder(target);
    if (!createDirectory(parent, error)) {
        return false;
    }
    const std::string hidden = joinPath(parent, temporaryName(lastComponent(target)));
    const PrivateFolder around(hidden, error);
    // One in the other, so that the folder gets the process's usual mode and is out of reach still.
    const std::string filled = joinPath(hidden, "contents");
    Extraction extraction(archive, filled, error);
    if (!around.isMade() || !createDirectory(filled, error) || !extraction.extract()) {
        return false;
    }
    const int errorNumber = renameWithoutReplacing(filled, target);
    if (errorNumber != 0) {
        return failFolder(error, target, "made", errorNumber);
    }
    extraction.finishFolders(target);
    return true;
}

}  // namespace vornic::platform
