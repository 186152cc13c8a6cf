#include "app/cli/MediaRun.h"

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

#include "app/cli/CheckRun.h"
#include "app/cli/Complaint.h"
#include "app/cli/ExitStatus.h"
#include "base/FormatString.h"
#include "base/PathText.h"
#include "formats/PlaceFinder.h"
#include "foundation/log/QMLog.h"
#include "job/JournaledSwap.h"
#include "job/MediaReport.h"
#include "job/RelinkFile.h"
#include "job/ResultFile.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Termination.h"
#include "report/JSONReportWriter.h"
#include "report/MediaCSVWriter.h"
#include "report/MediaTextWriter.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

class SilentReportWriter : public ReportWriter {
  public:
    void file(const Report& /*report*/) override {}
    void end() override {}
};

std::unique_ptr<ReportWriter> writerFor(MediaFormat format, ReportSink sink) {
    switch (format) {
        case MediaFormat::json:
            return std::make_unique<JSONReportWriter>(std::move(sink), kMediaProgram,
                                                      VORNIC_VERSION);
        case MediaFormat::csv:
            return std::make_unique<MediaCSVWriter>(std::move(sink));
        case MediaFormat::text:
            return std::make_unique<MediaTextWriter>(std::move(sink));
        default:
            return std::make_unique<SilentReportWriter>();
    }
}

}  // namespace

MediaRun::MediaRun(const MediaSettings& settings, ReportOutput& output)
    : settings_(settings),
      output_(output),
      writer_(writerFor(settings.format, [this](std::string_view text) { output_.write(text); })),
      relinker_(settings.relink) {}

int MediaRun::run(const ProjectFiles& files) {
    for (const ProjectFiles::Refusal& refusal : files.refused) {
        refuse(refusal.path, formatString("%@: %@", refusal.path, refusal.reason));
    }
    if (settings_.action == MediaAction::relink) {
        prepare(files.paths);
    }
    for (const std::string& path : files.paths) {
        try {
            take(path);
        } catch (const std::bad_alloc&) {
            refuse(path, formatString("There is not enough memory to read the file %@.", path));
        }
        // Nobody reads any more; what is to be written is written all the same.
        const bool isUnread = output_.hasFailed() && settings_.action != MediaAction::relink;
        if (platform::interruption() != 0 || isUnread) {
            break;
        }
    }
    if (platform::interruption() != 0) {
        output_.abandon();
        return statusUnlessInterrupted(status_);
    }
    finish();
    return status_;
}

std::unique_ptr<ProjectText> MediaRun::read(const std::string& path, std::string& bytes) {
    ErrorSlot error;
    std::optional<std::string> contents = readProjectFile(path, error);
    if (!contents) {
        refuse(path, error->localizedDescription());
        return nullptr;
    }
    // Kept for what is written into them.
    bytes = settings_.action == MediaAction::relink ? *contents : "";
    size_ = contents->size();
    std::unique_ptr<ProjectText> project = ProjectText::read(std::move(*contents), error);
    if (!project) {
        refuse(path, formatString("%@: %@", path, error->localizedDescription()));
        return nullptr;
    }
    const FileKind kind = project->index().kind();
    if (kind != FileKind::fcpxml && kind != FileKind::xmeml) {
        refuse(path, formatString("%@: It is neither XMEML nor FCPXML.", path));
        return nullptr;
    }
    return project;
}

void MediaRun::take(const std::string& path) {
    std::string bytes;
    const std::unique_ptr<ProjectText> project = read(path, bytes);
    if (project == nullptr) {
        return;
    }
    if (settings_.action == MediaAction::relink) {
        return relink(path, *project, bytes);
    }
    if (project->fault()) {
        complain(kMediaProgram, formatString("%@: %@ What follows was not read.", path,
                                             project->fault()->localizedDescription()));
        raise(kNotDone);
    }
    report(settings_.action == MediaAction::list ? list(*project, size_)
                                                 : missing(path, *project, size_),
           path);
}

void MediaRun::prepare(const std::vector<std::string>& paths) {
    if (settings_.relink.folders.empty()) {
        return;
    }
    for (const std::string& path : paths) {
        // What is wrong with a file is told when its turn comes.
        ErrorSlot ignored;
        if (std::optional<std::string> bytes = readProjectFile(path, ignored)) {
            if (const auto project = ProjectText::read(std::move(*bytes), ignored)) {
                relinker_.prepare(*project, path);
            }
        }
    }
    for (const std::string& folder : relinker_.search()) {
        complain(kMediaProgram, formatString("%@ could not be looked through.", folder));
        raise(kSomethingToSay);
    }
}

void MediaRun::relink(const std::string& path, const ProjectText& project,
                      const std::string& bytes) {
    if (project.fault()) {
        return refuse(path, formatString("%@: %@ Nothing was relinked; repair the file first.",
                                         path, project.fault()->localizedDescription()));
    }
    RelinkedBytes relinked = relinker_.relink(project, bytes, path);
    if (!relinked.refusal.empty()) {
        return refuse(path, formatString("%@: Nothing was relinked: %@.", path, relinked.refusal));
    }
    if (platform::interruption() != 0) {
        return;
    }
    if (relinked.left != 0) {
        raise(kSomethingToSay);
    }
    const bool isChanged = relinked.bytes != bytes;
    if (isChanged && settings_.isDryRun) {
        tell(formatString("Nothing was written to or for %@: --dry-run.", path));
    }
    if (isChanged && !settings_.isDryRun && !write(path, bytes, relinked.bytes)) {
        return;
    }
    if (!isChanged && !settings_.isDryRun && settings_.isInPlace) {
        for (const std::string& note : clearLeftByRelinking(path, waiting())) {
            tell(note);
        }
    }
    report(std::move(relinked.report), path);
}

// The run that has the file may take long; only an interruption ends the waiting.
Waiting MediaRun::waiting() {
    return {.tell =
                [](const std::string& file) {
                    printErrorLine(
                        formatString("Waiting for another program that uses the file %@.", file));
                },
            .stop = untilInterrupted()};
}

bool MediaRun::write(const std::string& path, const std::string& oldBytes,
                     const std::string& newBytes) {
    return settings_.isInPlace ? writeInPlace(path, oldBytes, newBytes) : writeCopy(path, newBytes);
}

bool MediaRun::writeInPlace(const std::string& path, const std::string& oldBytes,
                            const std::string& newBytes) {
    JournaledSwap journaled(std::string(kMediaProgram), VORNIC_VERSION,
                            JournalEntry::Action::relink);
    const InPlaceResult result = relinkInPlace(path, oldBytes, newBytes, waiting(), journaled);
    for (const std::string& note : result.notes) {
        tell(note);
    }
    if (result.error || result.isCancelled || !result.swap) {
        refuse(path, result.error ? result.error->localizedDescription()
                                  : formatString("The file %@ was not relinked.", path));
        return false;
    }
    tell(formatString("The original is %@%@", result.swap->original,
                      journaled.isWrittenDown() ? "; vornic-repair --undo brings it back." : "."));
    tellLost(path, result.lostMetadata);
    return true;
}

bool MediaRun::writeCopy(const std::string& path, const std::string& newBytes) {
    std::string wanted = relinkedPath(path);
    if (settings_.output) {
        wanted = platform::isDirectory(*settings_.output)
                     ? joinPath(*settings_.output, lastComponent(wanted))
                     : *settings_.output;
    }
    ErrorSlot error;
    const std::optional<ResultFile> written = writeResultFile(wanted, newBytes, path, error);
    if (!written) {
        refuse(path, error->localizedDescription());
        return false;
    }
    tell(formatString("The relinked file is %@", written->path));
    tellLost(path, written->lostMetadata);
    return true;
}

void MediaRun::tell(const std::string& line) const {
    QMLog::appendLog("%@", line);
    printErrorLine(line);
}

void MediaRun::tellLost(const std::string& path, const std::string& lostMetadata) const {
    if (!lostMetadata.empty()) {
        tell(formatString("Something of the file %@ was not kept. %@", path, lostMetadata));
    }
}

Report MediaRun::list(const ProjectText& project, std::size_t bytes) const {
    std::vector<Medium> media = mediaOf(project.index(), !project.fault());
    if (settings_.onlyUnused) {
        std::erase_if(media, [](const Medium& medium) { return medium.uses != 0; });
    }
    Report report = headOf(project, bytes);
    report.media = recordsOf(media, project, needsPlaces());
    return report;
}

// What is there is not told.
Report MediaRun::missing(const std::string& path, const ProjectText& project, std::size_t bytes) {
    const std::vector<Medium> media = mediaOf(project.index(), !project.fault());
    const std::vector<MediaSight> sights = look_.lookFor(media, path);
    Report report = headOf(project, bytes);
    report.groups.back() = {RuleGroup::media, true, ""};
    report.media = recordsOf(media, project, needsPlaces());
    takeSights(sights, *report.media);
    std::erase_if(*report.media,
                  [](const MediaRecord& record) { return record.state == MediaState::there; });
    addMediaFindings(media, sights, report.findings);
    PlaceFinder(project.index(), project.source().decoding).place(report.findings);
    if (!report.media->empty()) {
        raise(kSomethingToSay);
    }
    return report;
}

void MediaRun::report(Report report, const std::string& path) {
    report.path = path;
    QMLog::appendLog("%@: %zu media files", path, report.media->size());
    writer_->file(report);
    output_.flush();
}

void MediaRun::refuse(const std::string& path, const std::string& reason) {
    QMLog::appendLog("%@", reason);
    complain(kMediaProgram, reason);
    writer_->refused(path, reason);
    raise(kNotDone);
}

void MediaRun::raise(int status) {
    status_ = std::max(status_, status);
}

void MediaRun::finish() {
    writer_->end();
    if (const ErrorSlot error = output_.finish()) {
        complain(kMediaProgram, error->localizedDescription());
        raise(output_.isStandardOutput() ? kSomethingToSay : kNotDone);
    }
}

}  // namespace vornic
