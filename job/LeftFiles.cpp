#include "job/LeftFiles.h"

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

std::vector<Note> clearLeftFiles(const std::string& folder) {
    platform::removeDeadTemporaries(folder);
    std::vector<Note> notes;
    for (const platform::LeftFile& left : platform::filesLeftAside(folder)) {
        const std::string name = usersName(left.original);
        const std::string file = joinPath(folder, name);
        if (name == left.original && mayComeBack(left) &&
            platform::renameWithoutReplacing(left.path, file) == 0) {
            notes.push_back({"repair-change-brought-back"_rule, {{"path", file}}});
            continue;
        }
        ErrorSlot ignored;
        const auto placed = moveToTrash(left.path, name, ignored);
        notes.push_back(
            placed ? Note{"repair-change-in-trash"_rule, {{"path", file}, {"left", *placed}}}
                   : Note{"repair-change-left-aside"_rule, {{"path", file}, {"left", left.path}}});
    }
    return notes;
}

}  // namespace vornic
