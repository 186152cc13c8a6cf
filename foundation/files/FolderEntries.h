#ifndef VORNIC_FOUNDATION_FILES_FOLDER_ENTRIES_H
#define VORNIC_FOUNDATION_FILES_FOLDER_ENTRIES_H

#include <string>
#include <vector>

namespace vornic {

/// The names in a folder, sorted byte for byte; none when it is empty or cannot be read.
[[nodiscard]] std::vector<std::string> folderEntries(const std::string& folder);

}  // namespace vornic

#endif
