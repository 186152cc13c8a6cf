#include "job/LeftFiles.h"

#include "base/FormatString.h"
#include "base/PathText.h"
#include "job/MoveToTrash.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryFile.h"

namespace vornic {

namespace {

/// Where names cannot be exchanged a kill can leave nothing at the path. A working copy is no file
/// to bring back, and a long name may be cut.
bool mayComeBack(const platform::LeftFile& left) {
    constexpr std::size_t kSurelyWhole = 90;
    return left.original.find("-backup.") == std::string::npos &&
           left.original.size() <= kSurelyWhole;
}

/// What the user calls a file whose name was hidden already when it was set aside: "Cut.xml" for
/// ".Cut.xml.vornic.swap".
std::string usersName(const std::string& name) {
    const std::size_t mark = name.rfind(".vornic.");
    return name.starts_with('.') && mark != std::string::npos && mark > 1 ? name.substr(1, mark - 1)
                                                                          : name;
}

}  // namespace

std::vector<std::string> clearLeftFiles(const std::string& folder) {
    platform::removeDeadTemporaries(folder);
    std::vector<std::string> lines;
    for (const platform::LeftFile& left : platform::filesLeftAside(folder)) {
        const std::string name = usersName(left.original);
        const std::string file = platform::joinPath(folder, name);
        if (name == left.original && mayComeBack(left) &&
            platform::renameWithoutReplacing(left.path, file) == 0) {
            lines.push_back(
                formatString("An earlier change of the file %@ was interrupted. The "
                             "file was brought back.",
                             file));
            continue;
        }
        ErrorSlot ignored;
        const auto placed = moveToTrash(left.path, name, ignored);
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
