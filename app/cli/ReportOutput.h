#ifndef VORNIC_APP_CLI_REPORT_OUTPUT_H
#define VORNIC_APP_CLI_REPORT_OUTPUT_H

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "platform/files/AtomicFile.h"

namespace vornic {

/// Where a report goes: standard output, or a file that takes its place as a whole once the report
/// is complete. What is no regular file (a pipe, a device) is written to as it is. One thread.
class ReportOutput {
  public:
    /// @param noun what is written, as complaints call it.
    explicit ReportOutput(std::string_view noun = "report") : noun_(noun) {}
    /// Takes back what is not finished.
    ~ReportOutput();
    ReportOutput(const ReportOutput&) = delete;
    ReportOutput& operator=(const ReportOutput&) = delete;

    /// @param path nothing for standard output. A project file that stands there is no place for a
    ///     report.
    /// @return false, with the slot filled, when nothing can be written there.
    [[nodiscard]] bool open(const std::optional<std::string>& path, ErrorSlot& error);

    [[nodiscard]] bool isStandardOutput() const { return stream_ == nullptr && file_ == nullptr; }
    [[nodiscard]] bool isTerminal() const;

    /// After a failure nothing more is written, and `finish` says why.
    void write(std::string_view text);
    /// Hands over what is written so far, where somebody may read along.
    void flush();
    [[nodiscard]] bool hasFailed() const { return error_.has_value(); }
    /// Takes back a report that is not finished; what went to a stream stays there.
    void abandon();
    /// Ends the report.
    /// @return why not all of it is where it belongs, or nothing.
    [[nodiscard]] ErrorSlot finish();

  private:
    std::unique_ptr<platform::AtomicFile> file_;
    std::FILE* stream_ = nullptr;
    [[nodiscard]] std::string unwritable() const;

    std::string noun_;
    std::string path_;
    ErrorSlot error_;
};

}  // namespace vornic

#endif
