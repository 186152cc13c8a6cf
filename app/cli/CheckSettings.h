#ifndef VORNIC_APP_CLI_CHECK_SETTINGS_H
#define VORNIC_APP_CLI_CHECK_SETTINGS_H

#include <cstddef>
#include <optional>
#include <string>

#include "app/cli/CommandLine.h"
#include "app/cli/FileMending.h"
#include "check/Check.h"
#include "report/Severity.h"

namespace vornic {

/// None for --quiet.
enum class ReportFormat { text, json, sarif, gnu, none };

/// What the options of `vornic-check` ask for.
struct CheckSettings {
    ReportFormat format = ReportFormat::text;
    /// Nothing, and "-", for standard output.
    std::optional<std::string> reportPath;
    /// Where a picture of the timeline goes; "-" for standard output. Nothing for none.
    std::optional<std::string> timelinePath;
    CheckOptions check;
    /// Findings of less weight are not shown.
    Severity least = Severity::warning;
    /// From which weight on a finding is a failure; nothing for never.
    std::optional<Severity> failOn = Severity::error;
    /// How many files are checked at once.
    std::size_t jobs = 1;
    /// Whether the media that a project names are looked for.
    bool looksForMedia = false;
    /// Nothing where files are only looked at.
    std::optional<FixSettings> fix;

    /// Whether differences are shown in place of a report.
    [[nodiscard]] bool showsDifferences() const {
        return fix && fix->isDryRun &&
               (format == ReportFormat::text || format == ReportFormat::gnu);
    }
};

/// Reads the values of options.
/// @return what is wrong with them, as a sentence without a full stop; "" when nothing is.
[[nodiscard]] std::string readCheckSettings(const CommandLine& line, CheckSettings& settings);

}  // namespace vornic

#endif
