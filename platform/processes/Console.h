#ifndef VORNIC_PLATFORM_PROCESSES_CONSOLE_H
#define VORNIC_PLATFORM_PROCESSES_CONSOLE_H

#include <string_view>

namespace vornic::platform {

/// Writes one line to the console, which is standard error here: local date and time with
/// milliseconds, process name and id, then the text ("2026-11-21 07:05:00.123 vornic[4711] text"),
/// in one write. Any thread.
void consoleLog(std::string_view text);

}  // namespace vornic::platform

#endif
