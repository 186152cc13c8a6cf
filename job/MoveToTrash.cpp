#include "job/MoveToTrash.h"

#include <cerrno>

#include "base/PathText.h"
#include "platform/files/Failure.h"
#include "platform/rights/HeldPath.h"
#include "platform/settings/Directories.h"
#include "platform/volumes/Trash.h"

namespace vornic {

std::optional<std::string> moveToTrash(const std::string& path, const std::string& originalName,
                                       ErrorSlot& error) {
    const std::string place = platform::expandingTildeInPath("~/.Trash");
    const std::optional<platform::Trash> trash = platform::Trash::open(place, error);
    const std::optional<platform::HeldPath> item =
        trash ? platform::holdPath(path) : std::optional<platform::HeldPath>();
    if (!item) {
        if (trash) {
            platform::failFile(error, path, "moved to the Trash", ENOENT);
        }
        return std::nullopt;
    }
    const auto taken = trash->take(*item, originalName, error);
    return taken ? std::optional(joinPath(place, taken->name)) : std::nullopt;
}

}  // namespace vornic
