#ifndef VORNIC_APP_CLI_CHECK_RUN_H
#define VORNIC_APP_CLI_CHECK_RUN_H

#include <atomic>
#include <cstddef>
#include <future>
#include <memory>
#include <string>

#include "app/cli/CheckSettings.h"
#include "app/cli/ReportOutput.h"
#include "app/cli/TerminalBar.h"
#include "job/MediaLook.h"
#include "job/ProjectFiles.h"
#include "report/ReportWriter.h"

namespace vornic {

inline constexpr std::string_view kCheckProgram = "vornic-check";

/// Writes a line to standard error with the program's name in front.
void complainOfCheck(std::string_view text);

/// Standard input to its end, or the whole file.
/// @return nothing, with the slot filled, when it cannot be read.
[[nodiscard]] std::optional<std::string> readProjectFile(const std::string& path, ErrorSlot& error);

/// Checks files, several at once, and reports on them in their order.
class CheckRun {
  public:
    /// @param picture where a timeline is drawn to when the settings ask for one.
    CheckRun(const CheckSettings& settings, ReportOutput& output, ReportOutput& picture);

    /// Main thread. A signal that asks the program to end leaves the report unfinished and ends the
    /// process, since nothing is written that would have to be finished.
    /// @return the exit status.
    int run(const ProjectFiles& files);

  private:
    struct CheckedFile {
        std::string path;
        Report report;
        // Why there is no report.
        std::string refusal;
        // What mending has to say, and would do.
        std::vector<std::string> lines;
        std::string difference;
        std::string picture = {};
    };

    [[nodiscard]] CheckedFile check(const std::string& path) const;
    [[nodiscard]] std::future<CheckedFile> start(const std::string& path) const;
    void checkAll(const std::vector<std::string>& paths);
    void await(std::future<CheckedFile>& file);
    /// What is asked of every file.
    [[nodiscard]] CheckOptions optionsOfRun() const;
    [[nodiscard]] CheckedFile fix(const std::string& path) const;
    void add(const CheckedFile& file);
    void report(const CheckedFile& file);
    /// @param complaint what standard error is told.
    void refuse(const std::string& path, const std::string& reason, const std::string& complaint);
    void finish();
    void finish(ReportOutput& output);
    [[noreturn]] void leave(int signal);
    [[nodiscard]] std::string progress() const;

    const CheckSettings& settings_;
    ReportOutput& output_;
    ReportOutput& picture_;
    mutable MediaLook media_;
    std::atomic<std::size_t> filesDone_ = 0;
    std::size_t fileCount_ = 0;
    int status_ = 0;
    bool hasPicture_ = false;
    std::unique_ptr<ReportWriter> writer_;
    std::unique_ptr<TerminalBar> bar_;
};

}  // namespace vornic

#endif
