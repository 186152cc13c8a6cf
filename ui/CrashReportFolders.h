#ifndef VORNIC_UI_CRASH_REPORT_FOLDERS_H
#define VORNIC_UI_CRASH_REPORT_FOLDERS_H

#include <string_view>

/// The folders of crash reports in a log folder.
namespace vornic {

inline constexpr std::string_view kCrashReporterFolder = "CrashReporter";
inline constexpr std::string_view kDiagnosticReportsFolder = "DiagnosticReports";

}  // namespace vornic

#endif
