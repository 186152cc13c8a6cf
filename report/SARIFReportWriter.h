#ifndef VORNIC_REPORT_SARIF_REPORT_WRITER_H
#define VORNIC_REPORT_SARIF_REPORT_WRITER_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "report/JSONText.h"
#include "report/ReportWriter.h"

namespace vornic {

/// For servers that collect the results of many tools: the Static Analysis Results Interchange
/// Format 2.1.0 (OASIS standard). One run, with every rule of a check described in it. A finding
/// about the file as a whole has no region; what is not shown or was not looked at, and files that
/// could not be read, are notifications of the invocation. Mends become fixes where the file is
/// UTF-8, since a fix holds the bytes that are written.
class SARIFReportWriter : public ReportWriter {
  public:
    /// @param tool the program's name. @param version the program's version.
    /// @param least findings of less weight are left out.
    SARIFReportWriter(ReportSink sink, std::string_view tool, std::string_view version,
                      Severity least);

    void file(const Report& report) override;
    void refused(std::string_view path, std::string_view reason) override;
    void end() override;

    /// The path as a URI reference (RFC 3986): "file:///a/b%20c.xml" for one that begins with "/",
    /// else a relative one.
    [[nodiscard]] static std::string uriOf(std::string_view path);

  private:
    struct Artifact {
        std::string path;
        std::uint64_t bytes;
        std::string encoding;
        std::vector<GroupRun> notRun;
    };
    // What there is to say of a file beside its findings.
    struct Notification {
        std::string path;
        std::string_view level;
        std::string text;
        std::optional<RuleId> rule;
    };

    void describeRules();
    void result(const Report& report, const Finding& finding);
    void location(const Report& report, const Place& place);
    void fix(const Report& report, const Mend& mend);
    void artifactLocation(std::string_view path, std::string_view name = "artifactLocation");
    void describeArtifact(const Artifact& artifact);
    void notify(const Notification& notification);
    void pass() { sink_(json_.take()); }

    ReportSink sink_;
    Severity least_;
    JSONText json_;
    std::vector<Artifact> artifacts_;
    std::vector<Notification> notifications_;
    // No file was refused.
    bool isWhole_ = true;
};

}  // namespace vornic

#endif
