#ifndef VORNIC_UI_SUPPORT_CRASH_REPORTS_H
#define VORNIC_UI_SUPPORT_CRASH_REPORTS_H

#include <string_view>

/// Crash reports of this system's own programs. The desktop application looks for those whose names
/// begin with its name and "_"; the command-line tools' begin otherwise, so that it never takes
/// them for its own.
namespace vornic {

inline constexpr std::string_view kCrashReporterFolder = "CrashReporter";
inline constexpr std::string_view kDiagnosticReportsFolder = "DiagnosticReports";

inline constexpr std::string_view kDesktopProgram = "Vornic";
inline constexpr std::string_view kRepairProgram = "vornic-repair";
inline constexpr std::string_view kConvertProgram = "vornic-convert";

/// From now on a crash of this process leaves a report "PROGRAM_DATE.crash" in the folder
/// "DiagnosticReports" of the user's log folder (`platform::installCrashReporter`). Called first
/// in `main`. Does nothing when the user has no log folder.
void startCrashReports(std::string_view program);
/// The same for a program whose log has a name of its own.
void startCrashReports(std::string_view program, std::string_view logName);

}  // namespace vornic

#endif
