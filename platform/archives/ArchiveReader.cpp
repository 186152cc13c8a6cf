#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/archives/Archive.h"
#include "platform/archives/ArchiveHandle.h"
#include "platform/archives/ArchivedLinks.h"
#include "platform/archives/BeneathFolder.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryName.h"

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

std::string folderOf(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    return slash == std::string::npos ? "" : name.substr(0, slash);
}

/// Everything about an entry can be kept out of the disk's way: the folder that is filled has a
/// name that nobody knows and is held open, no link on the way to an entry is followed, and links
/// are made last.
class Extraction {
  public:
    /// @param folder the folder to be filled, open
    Extraction(std::string archive, const FileDescriptor& folder, const ArchiveLimits& limits,
               ErrorSlot& error)
        : path_(std::move(archive)), folder_(folder.get()), limits_(limits), error_(error) {}

    /// Fills the folder.
    bool extract() {
        const ArchiveNames names(ArchiveNames::Encoding::utf8);
        return open() && extractEntries() && makeLinks();
    }

    /// Gives the folders their modes and times, once nothing more is made in them.
    void finishFolders() const {
        // What lies in a folder has a longer name, and hence stands behind it.
        std::for_each(folders_.rbegin(), folders_.rend(), [this](const auto& entry) {
            const EntryMetadata& metadata = entry.second;
            const FileDescriptor folder = openBeneath(folder_, entry.first, O_RDONLY | O_DIRECTORY);
            if (folder) {
                std::ignore = futimens(folder.get(), metadata.times.data());
                if (metadata.mode != 0) {
                    std::ignore = fchmod(folder.get(), metadata.mode);
                }
            }
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
    bool refuseEntries() {
        return failFileBecause(
            error_, path_, "extracted", EFBIG,
            "it makes more than " + std::to_string(limits_.entries) + " files and folders");
    }
    bool failEntry(const std::string& name, int errorNumber) {
        if (nodes_ > limits_.entries) {
            return refuseEntries();
        }
        error_ = posixError(
            "The file " + path_ + " cannot be extracted: its entry " + name + " cannot be made",
            errorNumber);
        return false;
    }

    bool open() {
        ErrnoOr<FileDescriptor> file = openRegularFile(path_, true);
        struct stat status {};
        if (!file || fstat(file->get(), &status) != 0) {
            return failFile(error_, path_, "opened", file ? errno : file.errorNumber());
        }
        file_ = *std::move(file);
        bytesLeft_ = std::max(limits_.bytes,
                              static_cast<std::uint64_t>(status.st_size) * limits_.timesItsSize);
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
        if (!checkText(*name)) {
            return false;
        }
        names_.insert(*name);
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

    /// A path, or the text of a link, that the system would take, and not so many that keeping them
    /// fills the memory.
    bool checkText(const std::string& text) {
        if (text.size() > limits_.textLength || depthOf(text) > limits_.depth) {
            return refuse(text.substr(0, kShownText) + "...", "has too long a name");
        }
        if (text.size() > limits_.allText - textKept_) {
            return failFileBecause(error_, path_, "extracted", EFBIG,
                                   "the names of its entries are too long");
        }
        textKept_ += text.size();
        return true;
    }
    bool countNode() { return ++nodes_ <= limits_.entries; }

    FileDescriptor makeFolders(const std::string& name) {
        return makeFoldersBeneath(folder_, name, [this] { return countNode(); });
    }

    bool extractFolder(const std::string& name, const EntryMetadata& metadata) {
        if (name.empty()) {
            return true;
        }
        folders_[name] = metadata;
        return makeFolders(name) ? true : failEntry(name, errno);
    }

    bool keepLink(const std::string& name, struct archive_entry* entry) {
        const char* target = archive_entry_symlink(entry);
        if (name.empty() || target == nullptr || *target == '\0') {
            return refuse(name, "is a link without a target");
        }
        if (!checkText(target)) {
            return false;
        }
        if (!countNode()) {
            return refuseEntries();
        }
        links_[name] = target;
        linkTimes_[name] = metadataOf(entry);
        return true;
    }

    /// An entry whose name comes twice replaces the earlier one.
    bool extractFile(const std::string& name, const EntryMetadata& metadata) {
        if (!countNode()) {
            return refuseEntries();
        }
        const FileDescriptor place = makeFolders(folderOf(name));
        if (!place) {
            return failEntry(name, errno);
        }
        const std::string last = lastComponent(name);
        std::ignore = unlinkat(place.get(), last.c_str(), 0);
        FileDescriptor file(openat(place.get(), last.c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (!file) {
            return failEntry(name, errno);
        }
        if (!extractData(name, file.get())) {
            return false;
        }
        if (metadata.mode != 0) {
            std::ignore = fchmod(file.get(), metadata.mode);
        }
        std::ignore = futimens(file.get(), metadata.times.data());
        const int errorNumber = file.close();
        return errorNumber == 0 || failEntry(name, errorNumber);
    }

    bool extractData(const std::string& name, int file) {
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
            if (count > bytesLeft_) {
                return failFileBecause(error_, path_, "extracted", EFBIG,
                                       "it holds far more than its size lets expect");
            }
            bytesLeft_ -= count;
            const int errorNumber = writeAll(file, static_cast<const char*>(bytes), count);
            if (errorNumber != 0) {
                return failEntry(name, errorNumber);
            }
        }
    }

    bool makeLinks() {
        const std::optional<std::string> below = entryBelowLink(names_, links_);
        if (below) {
            return refuse(*below, "lies below a link");
        }
        const std::optional<std::string> out = linkOutOfFolder(links_);
        if (out) {
            return refuse(*out, "is a link that leads out of the folder");
        }
        return std::all_of(links_.begin(), links_.end(), [this](const auto& link) {
            return makeLink(link.second, link.first, linkTimes_.at(link.first));
        });
    }

    bool makeLink(const std::string& target, const std::string& name,
                  const EntryMetadata& metadata) {
        const FileDescriptor place = makeFolders(folderOf(name));
        const std::string last = lastComponent(name);
        if (!place || symlinkat(target.c_str(), place.get(), last.c_str()) != 0) {
            return failEntry(name, errno);
        }
        std::ignore =
            utimensat(place.get(), last.c_str(), metadata.times.data(), AT_SYMLINK_NOFOLLOW);
        return true;
    }

    /// How much of a text that is too long stands in a message.
    static constexpr std::size_t kShownText = 64;

    std::string path_;
    int folder_;
    const ArchiveLimits& limits_;
    ErrorSlot& error_;
    FileDescriptor file_;
    ArchiveHandle archive_{archive_read_new()};
    std::uint64_t bytesLeft_ = 0;
    std::uint64_t nodes_ = 0;
    std::size_t textKept_ = 0;
    std::set<std::string> names_;
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
            std::ignore = removeItem(path_, ignored);
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

bool extractArchive(const std::string& archive, const std::string& destination, ErrorSlot& error,
                    const ArchiveLimits& limits) {
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
    if (!around.isMade() || !createDirectory(filled, error)) {
        return false;
    }
    const FileDescriptor folder(
        ::open(filled.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        return failFolder(error, target, "made", errno);
    }
    Extraction extraction(archive, folder, limits, error);
    if (!extraction.extract()) {
        return false;
    }
    const int errorNumber = renameWithoutReplacing(filled, target);
    if (errorNumber != 0) {
        return failFolder(error, target, "made", errorNumber);
    }
    extraction.finishFolders();
    return true;
}

}  // namespace vornic::platform
