#ifndef VORNIC_PLATFORM_ITEMS_ITEM_INVENTORY_H
#define VORNIC_PLATFORM_ITEMS_ITEM_INVENTORY_H

#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "base/ErrnoOr.h"
#include "platform/files/FileVersion.h"

namespace vornic::platform {

/// A file, a link or a folder with everything in it, as it was at one moment: which items there
/// were, and which version of each. One thread at a time.
class ItemInventory {
  public:
    /// Takes down what stands at the path. No link is followed.
    /// @return the errno value when a part cannot be looked at.
    [[nodiscard]] static ErrnoOr<ItemInventory> of(const std::string& path);

    /// Whether all of it stands at the path, unchanged, and nothing else. The item itself may have
    /// been renamed since; an item inside may not.
    [[nodiscard]] bool matches(const std::string& path) const;

    /// Removes what stands at the path, looking at each item once more before it goes. What was not
    /// taken down, or has other contents by now, is never removed and ends the work.
    /// @return 0; EBUSY when something new or changed was met; or the errno value. After a failure
    ///     a part may be gone.
    [[nodiscard]] int removeAt(const std::string& path) const;

  private:
    using Key = std::pair<std::uint64_t, std::uint64_t>;

    /// @return 0 or the errno value.
    [[nodiscard]] int add(int folder, const char* name);
    [[nodiscard]] const FileVersion* find(const FileVersion& version) const;
    [[nodiscard]] bool matchesEntry(int folder, const char* name, bool isTop,
                                    std::size_t& count) const;
    [[nodiscard]] int removeEntry(int folder, const char* name) const;

    // By device and inode.
    std::map<Key, FileVersion> versions_;
    // How many names there are; an item may have several.
    std::size_t count_ = 0;
};

}  // namespace vornic::platform

#endif
