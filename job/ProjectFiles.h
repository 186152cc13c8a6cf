#ifndef VORNIC_JOB_PROJECT_FILES_H
#define VORNIC_JOB_PROJECT_FILES_H

#include <string>
#include <vector>

#include "base/StopToken.h"

namespace vornic {

/// What the arguments of a command line, or what a user has dropped, lead to.
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
/// lead there. Any thread.
/// @param stop ends the search; what was found so far is returned
[[nodiscard]] ProjectFiles findProjectFiles(const std::vector<std::string>& arguments,
                                            bool descends, const StopToken& stop = {});

}  // namespace vornic

#endif
