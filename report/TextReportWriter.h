#ifndef VORNIC_REPORT_TEXT_REPORT_WRITER_H
#define VORNIC_REPORT_TEXT_REPORT_WRITER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "report/ReportWriter.h"

namespace vornic {

/// For people:
///
///     ERROR(references-dangling): Cut.fcpxml(17,9): what is wrong; what would be right
///         /fcpxml[1]/library[1]/event[1]/project[1]  01:00:04:12
///     2 errors, 1 warning, 3 notes in 1 file
///
/// Text from files and paths is escaped as `escapedForTerminal` does. A rule of which more was
/// found than is shown says so after the file's findings, and so do groups that could not run. Of a
/// file that was mended each mend is told first, with its place in the old file.
class TextReportWriter : public ReportWriter {
  public:
    struct Style {
        /// Colours, for a terminal.
        bool isColoured = false;
        /// Findings of less weight are left out; they count all the same.
        Severity least = Severity::warning;
    };

    TextReportWriter(ReportSink sink, Style style) : sink_(std::move(sink)), style_(style) {}

    void file(const Report& report) override;
    void end() override;

  private:
    void finding(const Report& report, const Finding& finding);
    void remainders(const Report& report);
    void notRun(const Report& report);
    void mends(const Report& report);
    void whatWasNotMended(const Report& report);
    [[nodiscard]] std::string coloured(std::string_view colour, std::string text) const;

    ReportSink sink_;
    Style style_;
    std::array<std::uint64_t, kSeverityCount> counts_{};
    std::uint64_t files_ = 0;
    std::optional<std::uint64_t> mended_;
};

}  // namespace vornic

#endif
