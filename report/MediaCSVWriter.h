#ifndef VORNIC_REPORT_MEDIA_CSV_WRITER_H
#define VORNIC_REPORT_MEDIA_CSV_WRITER_H

#include <string>

#include "report/ReportWriter.h"

namespace vornic {

/// The media files of projects as a table (RFC 4180), with a header. Cells that a spreadsheet would
/// take for a formula are quoted; bytes of paths stay as they are. One thread.
class MediaCSVWriter : public ReportWriter {
  public:
    explicit MediaCSVWriter(ReportSink sink);

    void file(const Report& report) override;
    void end() override {}

  private:
    ReportSink sink_;
};

}  // namespace vornic

#endif
