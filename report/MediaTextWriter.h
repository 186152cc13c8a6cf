#ifndef VORNIC_REPORT_MEDIA_TEXT_WRITER_H
#define VORNIC_REPORT_MEDIA_TEXT_WRITER_H

#include <cstdint>
#include <string>

#include "report/ReportWriter.h"

namespace vornic {

/// The media files of projects, for people:
///
///     Cut.fcpxml: 2 media files, 1 not there
///       missing  /Volumes/A/Interview.mov
///           3 clips: "Interview" (2), "Cutaway"; 1.25 s to 4.5 s of 10 s
///
/// Text from files and paths is escaped as `escapedForTerminal` does. One thread.
class MediaTextWriter : public ReportWriter {
  public:
    explicit MediaTextWriter(ReportSink sink) : sink_(std::move(sink)) {}

    void file(const Report& report) override;
    void end() override {}

  private:
    void medium(const MediaRecord& record, std::size_t width);
    void relinked(const MediaRecord& record);

    ReportSink sink_;
};

}  // namespace vornic

#endif
