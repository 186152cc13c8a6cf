#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/archives/Archive.h"
#include "platform/archives/ArchiveHandle.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {
namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;

/// What is to be archived, and under which name.
struct Item {
    std::string path;
    std::string name;
};

bool collect(const Item& item, std::vector<Item>& items, ErrorSlot& error);

bool collectContents(const Item& folder, std::vector<Item>& items, ErrorSlot& error) {
    const auto names = namesInFolder(folder.path, error);
    return names && std::all_of(names->begin(), names->end(), [&](const std::string& name) {
               return collect({.path = joinPath(folder.path, name),
                               .name = folder.name.empty() ? name : joinPath(folder.name, name)},
                              items, error);
           });
}

/// A folder stands before what it holds.
bool collect(const Item& item, std::vector<Item>& items, ErrorSlot& error) {
    struct stat status {};
    if (lstat(item.path.c_str(), &status) != 0) {
        return failFile(error, item.path, "archived", errno);
    }
    items.push_back(item);
    return !S_ISDIR(status.st_mode) || collectContents(item, items, error);
}

/// The item at the top; of a link its target, under the link's name.
bool collectFrom(const std::string& source, bool includeParent, std::vector<Item>& items,
                 ErrorSlot& error) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(source.c_str(), nullptr),
                                                           &std::free);
    if (!real) {
        return failFile(error, source, "archived", errno);
    }
    std::string name = lastComponent(source);
    if (name == "." || name == "..") {
        name = lastComponent(real.get());
    }
    const bool isFolder = isDirectory(source);
    if (isFolder && (!includeParent || name.empty())) {
        return collectContents({.path = real.get(), .name = ""}, items, error);
    }
    return collect({.path = real.get(), .name = name}, items, error);
}

bool isUTF8(const std::string& name) {
    const ArchiveNames names(ArchiveNames::Encoding::utf8);
    return std::mbstowcs(nullptr, name.c_str(), 0) != static_cast<std::size_t>(-1);
}

/// The archive library's way to the file that is written.
struct Output {
    AtomicFile file;
    ErrorSlot& error;
};

la_ssize_t writeBytes(struct archive* /*archive*/, void* client, const void* bytes,
                      std::size_t count) {
    auto& output = *static_cast<Output*>(client);
    const std::string_view view(static_cast<const char*>(bytes), count);
    // The library is not told of a failure, for it gives its memory back only when an entry ends
    // well; whoever waits for the archive looks at the slot.
    if (!output.error) {
        static_cast<void>(output.file.write(view, output.error));
    }
    return static_cast<la_ssize_t>(count);
}

class ArchiveWriter {
  public:
    explicit ArchiveWriter(ErrorSlot& error) : output_{.file = {}, .error = error} {}

    bool write(const std::vector<Item>& items, const std::string& destination) {
        if (!archive_) {
            return failFile(output_.error, destination, "made", ENOMEM);
        }
        if (!output_.file.open(destination, output_.error)) {
            return false;
        }
        // Without the last one the file is filled up to a whole block.
        const bool opened =
            archive_write_set_format_zip(archive_.get()) == ARCHIVE_OK &&
            archive_write_set_bytes_in_last_block(archive_.get(), 1) == ARCHIVE_OK &&
            archive_write_open(archive_.get(), &output_, nullptr, &writeBytes, nullptr) ==
                ARCHIVE_OK;
        if (!opened) {
            return fail(destination);
        }
        return std::all_of(items.begin(), items.end(),
                           [this](const Item& item) { return writeItem(item); }) &&
               (archive_write_close(archive_.get()) == ARCHIVE_OK || fail(destination)) &&
               !output_.error && output_.file.commit(Durability::synced, output_.error);
    }

  private:
    /// A failed write has told its reason already.
    bool fail(const std::string& path) {
        const char* reason = archive_error_string(archive_.get());
        return output_.error.has_value()
                   ? false
                   : failFileBecause(output_.error, path, "archived", EIO,
                                     reason == nullptr ? "the archive cannot be written" : reason);
    }

    bool writeItem(const Item& item) {
        struct stat status {};
        if (lstat(item.path.c_str(), &status) != 0) {
            return failFile(output_.error, item.path, "archived", errno);
        }
        if (S_ISREG(status.st_mode)) {
            return writeFile(item);
        }
        if (S_ISLNK(status.st_mode)) {
            return writeLink(item, status);
        }
        return S_ISDIR(status.st_mode)
                   ? writeHeader(item, status, nullptr)
                   : failFileBecause(output_.error, item.path, "archived", EINVAL,
                                     "it is neither a file, nor a folder, nor a link");
    }

    bool writeHeader(const Item& item, const struct stat& status, const char* target) {
        const ArchiveEntry entry(archive_entry_new());
        if (!entry) {
            return failFile(output_.error, item.path, "archived", ENOMEM);
        }
        archive_entry_copy_stat(entry.get(), &status);
        archive_entry_unset_atime(entry.get());
        archive_entry_unset_ctime(entry.get());
        archive_entry_set_pathname(entry.get(), item.name.c_str());
        if (target != nullptr) {
            archive_entry_set_symlink(entry.get(), target);
        }
        const ArchiveNames names(isUTF8(item.name) ? ArchiveNames::Encoding::utf8
                                                   : ArchiveNames::Encoding::plain);
        return archive_write_header(archive_.get(), entry.get()) == ARCHIVE_OK || fail(item.path);
    }

    bool writeLink(const Item& item, const struct stat& status) {
        std::array<char, PATH_MAX + 1> target{};
        if (readlink(item.path.c_str(), target.data(), target.size() - 1) < 0) {
            return failFile(output_.error, item.path, "archived", errno);
        }
        return writeHeader(item, status, target.data());
    }

    bool writeFile(const Item& item) {
        const ErrnoOr<FileDescriptor> file = openRegularFile(item.path, false);
        struct stat status {};
        if (!file || fstat(file->get(), &status) != 0) {
            return failFile(output_.error, item.path, "archived",
                            file ? errno : file.errorNumber());
        }
        return writeHeader(item, status, nullptr) &&
               writeData(item.path, file->get(), static_cast<std::size_t>(status.st_size));
    }

    bool writeData(const std::string& path, int file, std::size_t left) {
        while (left > 0) {
            const ssize_t got = ::read(file, buffer_.get(), std::min(left, kBufferSize));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                return failFile(output_.error, path, "read", errno);
            }
            if (got == 0) {
                return failFileBecause(output_.error, path, "archived", EBUSY,
                                       "it was shortened in the meantime");
            }
            const auto count = static_cast<std::size_t>(got);
            if (archive_write_data(archive_.get(), buffer_.get(), count) != got || output_.error) {
                return fail(path);
            }
            left -= count;
        }
        return true;
    }

    Output output_;
    ArchiveHandle archive_{archive_write_new()};
    std::unique_ptr<char[]> buffer_ = std::make_unique<char[]>(kBufferSize);
};

}  // namespace

bool compressItem(const std::string& source, const std::string& destination, bool includeParent,
                  ErrorSlot& error) {
    if (source.find('\0') != std::string::npos || destination.find('\0') != std::string::npos) {
        return failFile(error, source, "archived", EINVAL);
    }
    if (nodeExists(destination)) {
        return failFile(error, destination, "made", EEXIST);
    }
    // All is listed before the archive is begun, which may lie in the folder itself.
    std::vector<Item> items;
    ErrorSlot ownError;
    if (collectFrom(source, includeParent, items, ownError) &&
        ArchiveWriter(ownError).write(items, destination)) {
        return true;
    }
    error = ownError;
    return false;
}

}  // namespace vornic::platform
