#ifndef VORNIC_REPORT_GNU_REPORT_WRITER_H
#define VORNIC_REPORT_GNU_REPORT_WRITER_H

#include <string_view>
#include <utility>

#include "report/ReportWriter.h"

namespace vornic {

/// For editors and build servers, a line for each finding as the GNU coding standards have it:
///
///     Cut.fcpxml:17:9: error: what is wrong; what would be right [references-dangling]
///
/// A finding about the file as a whole stands at line 1, column 1, and so do notes on how many
/// findings are not shown and which groups of rules did not run.
class GNUReportWriter : public ReportWriter {
  public:
    /// @param least findings of less weight are left out.
    GNUReportWriter(ReportSink sink, Severity least) : sink_(std::move(sink)), least_(least) {}

    void file(const Report& report) override;
    void end() override {}

  private:
    void aboutTheFile(const Report& report, std::string_view note);

    ReportSink sink_;
    Severity least_;
};

}  // namespace vornic

#endif
