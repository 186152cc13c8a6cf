#include "foundation/log/TaskLog.h"

#include <optional>
#include <string>

#include "base/FormatString.h"
#include "foundation/log/LogGenerations.h"
#include "platform/files/AtomicFile.h"

namespace vornic {

TaskLog::TaskLog(std::string_view name) {
    const std::optional<std::string> folder = logFolder(true);
    if (!folder) {
        return;
    }
    ErrorSlot ignored;
    const std::string path = formatString("%@/%@.1.task.log", *folder, name);
    // A new file, so that a run that still writes to the old one spoils nothing.
    if (platform::writeFileAtomically(path, "", platform::Durability::buffered, ignored)) {
        file_ = LogFile::open(path);
    }
}

void TaskLog::append(std::string_view line) {
    if (file_) {
        static_cast<void>(file_->append(formatString("%@\n", line)));
    }
}

}  // namespace vornic
