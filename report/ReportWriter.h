#ifndef VORNIC_REPORT_REPORT_WRITER_H
#define VORNIC_REPORT_REPORT_WRITER_H

#include <functional>
#include <string_view>

#include "report/Report.h"

namespace vornic {

/// Takes a report in pieces, in their order.
using ReportSink = std::function<void(std::string_view)>;

/// Writes the reports of several files in one format. Each finding is written by itself, so that a
/// huge report takes no more memory than its longest finding. Call `file` for each file in the
/// order of the output, then `end` once. One thread.
class ReportWriter {
  public:
    ReportWriter() = default;
    ReportWriter(const ReportWriter&) = delete;
    ReportWriter& operator=(const ReportWriter&) = delete;
    virtual ~ReportWriter() = default;

    virtual void file(const Report& report) = 0;
    /// Tells of a file for which there is no report. Formats without a place for that pass it over.
    /// @param reason a sentence, which standard error tells, too.
    virtual void refused(std::string_view /*path*/, std::string_view /*reason*/) {}
    /// Writes what ends the whole report.
    virtual void end() = 0;
};

}  // namespace vornic

#endif
