#ifndef VORNIC_APP_CLI_MEDIA_RUN_H
#define VORNIC_APP_CLI_MEDIA_RUN_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/cli/MediaSettings.h"
#include "app/cli/ReportOutput.h"
#include "job/MediaLook.h"
#include "job/ProjectFiles.h"
#include "job/ProjectText.h"
#include "job/Relink.h"
#include "job/Waiting.h"
#include "report/ReportWriter.h"

namespace vornic {

inline constexpr std::string_view kMediaProgram = "vornic-media";

/// Does what a command line of `vornic-media` asks for, file after file, and reports.
class MediaRun {
  public:
    MediaRun(const MediaSettings& settings, ReportOutput& output);

    /// Main thread. A signal that asks the program to end does so behind the file at work.
    /// @return the exit status.
    int run(const ProjectFiles& files);

  private:
    /// @return null for a file that was refused.
    std::unique_ptr<ProjectText> read(const std::string& path, std::string& bytes);
    void take(const std::string& path);
    [[nodiscard]] Report list(const ProjectText& project, std::size_t bytes) const;
    [[nodiscard]] Report missing(const std::string& path, const ProjectText& project,
                                 std::size_t bytes);
    /// Tells the relinker of all projects, so that it searches once.
    void prepare(const std::vector<std::string>& paths);
    void relink(const std::string& path, const ProjectText& project, const std::string& bytes);
    bool write(const std::string& path, const std::string& oldBytes, const std::string& newBytes);
    [[nodiscard]] static Waiting waiting();
    bool writeInPlace(const std::string& path, const std::string& oldBytes,
                      const std::string& newBytes);
    bool writeCopy(const std::string& path, const std::string& newBytes);
    void tell(const std::string& line) const;
    void tellLost(const std::string& path, const std::string& lostMetadata) const;
    void refuse(const std::string& path, const std::string& reason);
    void report(Report report, const std::string& path);
    // Only one of the formats has room for them.
    [[nodiscard]] bool needsPlaces() const { return settings_.format == MediaFormat::json; }
    void raise(int status);
    void finish();

    const MediaSettings& settings_;
    ReportOutput& output_;
    std::unique_ptr<ReportWriter> writer_;
    MediaLook look_;
    Relinker relinker_;
    std::size_t size_ = 0;
    int status_ = 0;
};

}  // namespace vornic

#endif
