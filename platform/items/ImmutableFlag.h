#ifndef VORNIC_PLATFORM_ITEMS_IMMUTABLE_FLAG_H
#define VORNIC_PLATFORM_ITEMS_IMMUTABLE_FLAG_H

#include <string>

#include "base/Error.h"

/// The file system's own immutable attribute of files and folders: an item that has it cannot be
/// changed, renamed or removed, by root neither. Setting it takes a right that usually only root
/// has (CAP_LINUX_IMMUTABLE), and a volume that knows it. Permission bits have nothing to do with
/// it. Links are not followed and never have it. Any thread.
namespace vornic::platform {

/// True when the item has the attribute; false also when it cannot be asked.
[[nodiscard]] bool isImmutable(const std::string& path);

/// Sets or clears the attribute. An item that is already as asked is success whatever the
/// process's rights.
[[nodiscard]] bool setImmutable(const std::string& path, bool immutable, ErrorSlot& error);

}  // namespace vornic::platform

#endif
