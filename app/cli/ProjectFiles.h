#ifndef VORNIC_APP_CLI_PROJECT_FILES_H
#define VORNIC_APP_CLI_PROJECT_FILES_H

#include <string>
#include <vector>

namespace vornic {

/// What the arguments of a command line lead to.
struct ProjectFiles {
    struct Refusal {
        std::string path;
        std::string reason;
    };
    /// In the order of the arguments, those of a folder sorted by name.
    std::vector<std::string> paths;
    std::vector<Refusal> refused;
};

/// Finds the project files that arguments name. A file is taken whatever its name is, a bundle
/// (`.fcpxmld`) stands for its `Info.fcpxml`, and "-" for standard input. A folder is looked
/// through only when `descends` is set: `.xml`, `.fcpxml` and `.fcpxmld` in any case, without
/// hidden names and without working copies of repairs; no folder is entered twice, however links
/// lead there.
[[nodiscard]] ProjectFiles findProjectFiles(const std::vector<std::string>& arguments,
                                            bool descends);

}  // namespace vornic

#endif
