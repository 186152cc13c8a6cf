#ifndef VORNIC_JOB_SALVAGE_FILE_H
#define VORNIC_JOB_SALVAGE_FILE_H

#include <optional>
#include <string>
#include <vector>

#include "base/Error.h"
#include "job/ResultFile.h"
#include "report/Report.h"

namespace vornic {

/// How the salvage of a file ended.
struct SalvagedFile {
    /// Every guess, also when nothing could be written. `path` is set, and `copies` holds the paths
    /// of what was written.
    Report report;
    /// One for each root element of the file.
    std::vector<ResultFile> copies;
    /// Why the file could not be read, or no copy of it was written; nothing for a sound file.
    ErrorSlot error;
    /// The file is well-formed; nothing was written.
    bool isSound = false;
};

/// "Cut-salvaged.xml" for "Cut.xml", in the same folder.
[[nodiscard]] std::string salvagedPath(const std::string& path);

/// Makes the likeliest original of a file that is no XML any more, and writes it as a new file,
/// with a number where the name is taken. The file itself is only read. Any thread.
/// @param output the result file or its folder; nothing for `salvagedPath`
/// @param mostOfARule findings of a rule that are kept
[[nodiscard]] SalvagedFile salvageFile(const std::string& path,
                                       const std::optional<std::string>& output,
                                       std::size_t mostOfARule);

}  // namespace vornic

#endif
