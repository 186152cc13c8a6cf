#include "platform/items/ItemInventory.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"

namespace vornic::platform {
namespace {

/// An entry of an open folder, held so that look and listing are about one item.
struct Entry {
    FileDescriptor item;
    FileVersion version;
    bool isFolder = false;
};

/// @return 0 or the errno value.
int openEntry(int folder, const char* name, Entry& entry) {
    entry.item = FileDescriptor(openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!entry.item || fstat(entry.item.get(), &status) != 0) {
        return errno;
    }
    const ErrnoOr<FileVersion> version = versionOf(entry.item.get());
    entry.version = version.value().value_or(FileVersion());
    entry.isFolder = S_ISDIR(status.st_mode);
    return version.errorNumber();
}

/// The names in a folder, which is open for reading afterwards and no longer held as an entry.
/// @return 0 or the errno value.
int openListing(Entry& entry, FileDescriptor& folder, std::vector<std::string>& names) {
    folder = FileDescriptor(
        openat(entry.item.get(), ".", O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        return errno;
    }
    static_cast<void>(entry.item.close());
    return listFolder(folder.get(), names);
}

bool isSameContents(const FileVersion& one, const FileVersion& another) {
    return one.identity == another.identity && one.size == another.size &&
           one.modified == another.modified;
}

}  // namespace

ErrnoOr<ItemInventory> ItemInventory::of(const std::string& path) {
    ItemInventory inventory;
    if (const int errorNumber = inventory.add(AT_FDCWD, path.c_str()); errorNumber != 0) {
        return Errno{errorNumber};
    }
    return inventory;
}

bool ItemInventory::matches(const std::string& path) const {
    std::size_t count = 0;
    return matchesEntry(AT_FDCWD, path.c_str(), true, count) && count == count_;
}

int ItemInventory::removeAt(const std::string& path) const {
    return removeEntry(AT_FDCWD, path.c_str());
}

int ItemInventory::add(int folder, const char* name) {
    Entry entry;
    int errorNumber = openEntry(folder, name, entry);
    if (errorNumber != 0) {
        return errorNumber;
    }
    const FileIdentity& identity = entry.version.identity;
    versions_.insert_or_assign({identity.device, identity.inode}, entry.version);
    ++count_;
    if (!entry.isFolder) {
        return 0;
    }
    FileDescriptor listed;
    std::vector<std::string> names;
    errorNumber = openListing(entry, listed, names);
    for (auto inner = names.begin(); errorNumber == 0 && inner != names.end(); ++inner) {
        errorNumber = add(listed.get(), inner->c_str());
    }
    return errorNumber;
}

const FileVersion* ItemInventory::find(const FileVersion& version) const {
    const auto found = versions_.find({version.identity.device, version.identity.inode});
    return found == versions_.end() ? nullptr : &found->second;
}

bool ItemInventory::matchesEntry(int folder, const char* name, bool isTop,
                                 std::size_t& count) const {
    Entry entry;
    if (openEntry(folder, name, entry) != 0) {
        return false;
    }
    const FileVersion* known = find(entry.version);
    if (known == nullptr || !isSameContents(*known, entry.version) ||
        (!isTop && known->changed != entry.version.changed)) {
        return false;
    }
    ++count;
    if (!entry.isFolder) {
        return true;
    }
    FileDescriptor listed;
    std::vector<std::string> names;
    return openListing(entry, listed, names) == 0 &&
           std::all_of(names.begin(), names.end(), [&](const std::string& inner) {
               return matchesEntry(listed.get(), inner.c_str(), false, count);
           });
}

int ItemInventory::removeEntry(int folder, const char* name) const {
    Entry entry;
    int errorNumber = openEntry(folder, name, entry);
    if (errorNumber != 0) {
        return errorNumber;
    }
    const FileVersion* known = find(entry.version);
    if (known == nullptr || (!entry.isFolder && !isSameContents(*known, entry.version))) {
        return EBUSY;
    }
    if (!entry.isFolder) {
        return unlinkat(folder, name, 0) == 0 ? 0 : errno;
    }
    FileDescriptor listed;
    std::vector<std::string> names;
    errorNumber = openListing(entry, listed, names);
    for (auto inner = names.begin(); errorNumber == 0 && inner != names.end(); ++inner) {
        errorNumber = removeEntry(listed.get(), inner->c_str());
    }
    if (errorNumber == 0 && unlinkat(folder, name, AT_REMOVEDIR) != 0) {
        errorNumber = errno == ENOTEMPTY || errno == EEXIST ? EBUSY : errno;
    }
    return errorNumber;
}

}  // namespace vornic::platform
