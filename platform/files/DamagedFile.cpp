#include "platform/files/DamagedFile.h"

#include <cerrno>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"

namespace vornic::platform {

std::optional<std::string> keepDamagedList(const std::string& path, ErrorSlot& error) {
    constexpr int kMostCopies = 1000;
    const std::string name = std::string(splitExtension(lastComponent(path)).stem) + "-damaged";
    for (int number = 1; number < kMostCopies; ++number) {
        std::string copy =
            joinPath(parentFolder(path),
                     name + (number == 1 ? "" : "-" + std::to_string(number)) + ".plist");
        if (nodeExists(copy)) {
            continue;
        }
        return copyFile(path, copy, error) ? std::optional(std::move(copy)) : std::nullopt;
    }
    failFileBecause(error, path, "replaced", EEXIST,
                    "it is damaged and there are too many copies of it");
    return std::nullopt;
}

}  // namespace vornic::platform
