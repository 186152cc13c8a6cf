#include "job/LeftFiles.h"

#include "foundation/FormatString.h"
#include "job/MoveToTrash.h"
#include "platform/PathText.h"
#include "platform/TemporaryFile.h"

namespace vornic {

std::vector<std::string> clearLeftFiles(const std::string& folder) {
    platform::removeDeadTemporaries(folder);
    std::vector<std::string> lines;
    for (const platform::LeftFile& left : platform::filesLeftAside(folder)) {
        const std::string file = platform::joinPath(folder, left.original);
        ErrorSlot ignored;
        const auto placed = moveToTrash(left.path, left.original, ignored);
        lines.push_back(
            placed ? formatString("An earlier change of the file %@ was interrupted. What it left "
                                  "aside was moved to the Trash: %@",
                                  file, *placed)
                   : formatString("An earlier change of the file %@ was interrupted. What it left "
                                  "aside is %@.",
                                  file, left.path));
    }
    return lines;
}

}  // namespace vornic
