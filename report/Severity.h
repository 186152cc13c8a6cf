#ifndef VORNIC_REPORT_SEVERITY_H
#define VORNIC_REPORT_SEVERITY_H

#include <cstddef>
#include <string_view>

namespace vornic {

/// How much a finding weighs; the greater one is the worse one.
enum class Severity {
    /// Worth knowing, and nothing to be done. Counted as "notes".
    info,
    /// The file is read, but perhaps not as it is meant.
    warning,
    /// An editing program refuses the file, or drops or breaks what is in it.
    error,
};

inline constexpr std::size_t kSeverityCount = 3;

/// "info", "warning", "error": the names in every format of a report.
[[nodiscard]] constexpr std::string_view nameOf(Severity severity) {
    switch (severity) {
        case Severity::error:
            return "error";
        case Severity::warning:
            return "warning";
        default:
            return "info";
    }
}

}  // namespace vornic

#endif
