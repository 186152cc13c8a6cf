#include "ui/support/CrashReports.h"

#include <string>

#include "base/PathText.h"
#include "foundation/log/LogGenerations.h"
#include "foundation/places/QMLocalPaths.h"
#include "platform/crash/CrashReporter.h"
#include "platform/settings/Bundle.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

void startCrashReports(std::string_view program) {
    startCrashReports(program, platform::applicationName());
}

void startCrashReports(std::string_view program, std::string_view logName) {
    const QMLocalPaths::Path logs = QMLocalPaths::logDirectory(true);
    if (!logs) {
        return;
    }
    platform::installCrashReporter({.program = std::string(program),
                                    .version = VORNIC_VERSION,
                                    .folder = joinPath(*logs, kDiagnosticReportsFolder),
                                    .log = currentLogPath(std::string(logName)).value_or("")});
}

}  // namespace vornic
