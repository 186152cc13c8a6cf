#ifndef VORNIC_REPORT_JSON_REPORT_WRITER_H
#define VORNIC_REPORT_JSON_REPORT_WRITER_H

#include <string_view>

#include "report/JSONText.h"
#include "report/ReportWriter.h"

namespace vornic {

/// For scripts: one object, `{"report":1,"tool":{…},"files":[…]}`, as the schema
/// `share/vornic/schema/report-1.json` describes it. UTF-8; invalid bytes of paths become
/// U+FFFD. Text is not escaped beyond what JSON asks for: readers of JSON have no terminal.
class JSONReportWriter : public ReportWriter {
  public:
    /// @param tool the program's name. @param version the program's version.
    /// @param least findings of less weight are left out; they count all the same.
    JSONReportWriter(ReportSink sink, std::string_view tool, std::string_view version,
                     Severity least = Severity::info);

    void file(const Report& report) override;
    void end() override;

  private:
    void head(const Report& report);
    void finding(const Finding& finding);
    void record(const MendRecord& record);
    void conversion(const ConversionRecord& conversion);
    void mend(const Mend& mend);
    void medium(const MediaRecord& record);
    void count(std::string_view name, std::optional<std::uint64_t> number);
    // Hands over what is written so far.
    void pass() { sink_(json_.take()); }

    ReportSink sink_;
    Severity least_;
    JSONText json_;
};

}  // namespace vornic

#endif
