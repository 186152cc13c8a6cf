#ifndef VORNIC_FOUNDATION_LOG_GENERATIONS_H
#define VORNIC_FOUNDATION_LOG_GENERATIONS_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/log/LogFile.h"

/// The log files of an application: "NAME.1.log", the current one, to "NAME.5.log", the oldest, in
/// the user's log folder. The super-user's current one lies in the machine's log folder instead,
/// while his folder check and his older generations stay in the user's. Any thread.
namespace vornic {

/// The folder of the logs of the whole family, of the user or of the machine; nothing when the
/// platform knows none.
[[nodiscard]] std::optional<std::string> logFolder(bool userDomain);

/// The path of the current generation; nothing when the platform knows no folder for it.
[[nodiscard]] std::optional<std::string> currentLogPath(std::string_view name);

/// The paths of the generations that exist in the user's log folder, newest first.
[[nodiscard]] std::vector<std::string> existingLogPaths(std::string_view name);

/// What starting a generation came to. Without a file there is a failure to be shown, except when
/// the new file is there but cannot be opened.
struct StartedGeneration {
    std::shared_ptr<LogFile> file;
    std::optional<std::string> failure;
};

/// Makes the log folder when it is missing, moves the older generations one place on, the oldest
/// going, when there is a current one, and opens an empty file as the current one.
[[nodiscard]] StartedGeneration startGeneration(std::string_view name);

}  // namespace vornic

#endif
