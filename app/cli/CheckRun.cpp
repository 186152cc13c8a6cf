#include "app/cli/CheckRun.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "app/cli/Complaint.h"
#include "app/cli/ExitStatus.h"
#include "app/cli/TimelineDrawing.h"
#include "base/FormatString.h"
#include "base/PathText.h"
#include "foundation/log/QMLog.h"
#include "platform/crash/CrashStack.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Termination.h"
#include "report/GNUReportWriter.h"
#include "report/JSONReportWriter.h"
#include "report/SARIFReportWriter.h"
#include "report/TextReportWriter.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr std::chrono::milliseconds kLookForSignals{20};

class SilentReportWriter : public ReportWriter {
  public:
    void file(const Report& /*report*/) override {}
    void end() override {}
};

std::unique_ptr<ReportWriter> writerFor(const CheckSettings& settings, ReportSink sink,
                                        bool isTerminal) {
    switch (settings.format) {
        case ReportFormat::json:
            return std::make_unique<JSONReportWriter>(std::move(sink), kCheckProgram,
                                                      VORNIC_VERSION, settings.least);
        case ReportFormat::sarif:
            return std::make_unique<SARIFReportWriter>(std::move(sink), kCheckProgram,
                                                       VORNIC_VERSION, settings.least);
        case ReportFormat::none:
            return std::make_unique<SilentReportWriter>();
        case ReportFormat::gnu:
            return std::make_unique<GNUReportWriter>(std::move(sink), settings.least);
        default:
            const bool isColoured = isTerminal && std::getenv("NO_COLOR") == nullptr;
            return std::make_unique<TextReportWriter>(
                std::move(sink), TextReportWriter::Style{isColoured, settings.least});
    }
}

}  // namespace

void complainOfCheck(std::string_view text) {
    complain(kCheckProgram, text);
}

std::optional<std::string> readProjectFile(const std::string& path, ErrorSlot& error) {
    if (path != "-") {
        return platform::readFile(path, error);
    }
    std::string bytes;
    std::array<char, 65536> block{};
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), stdin)) {
        bytes.append(block.data(), count);
    }
    if (std::ferror(stdin) == 0) {
        return bytes;
    }
    error = posixError("Standard input cannot be read", errno);
    return std::nullopt;
}

CheckRun::CheckRun(const CheckSettings& settings, ReportOutput& output, ReportOutput& picture)
    : settings_(settings), output_(output), picture_(picture) {
    const auto sink = [this](std::string_view text) { output_.write(text); };
    writer_ = writerFor(settings, sink, output.isTerminal());
}

int CheckRun::run(const ProjectFiles& files) {
    fileCount_ = files.paths.size();
    bar_ = std::make_unique<TerminalBar>([this] { return progress(); });
    for (const ProjectFiles::Refusal& refusal : files.refused) {
        refuse(refusal.path, refusal.reason, formatString("%@: %@", refusal.path, refusal.reason));
    }
    checkAll(files.paths);
    finish();
    bar_.reset();
    return status_;
}

CheckRun::CheckedFile CheckRun::check(const std::string& path) const {
    CheckedFile file;
    file.path = path;
    try {
        if (settings_.fix) {
            return fix(path);
        }
        ErrorSlot error;
        std::optional<std::string> bytes = readProjectFile(path, error);
        if (!bytes) {
            file.refusal = error->localizedDescription();
            return file;
        }
        CheckOptions options = optionsOfRun();
        options.fileName = path == "-" ? "" : lastComponent(path);
        if (settings_.looksForMedia) {
            options.media = media_.checkOf(path);
        }
        file.report = checkFile(*bytes, options);
        file.report.path = path;
        if (settings_.timelinePath) {
            file.picture = drawTimeline(*bytes, file.report, lastComponent(path));
        }
    } catch (const std::bad_alloc&) {
        // In the middle of a mend, or after one.
        file.refusal =
            formatString(settings_.fix ? "There was not enough memory while the file %@ was mended."
                                       : "There is not enough memory to check the file %@.",
                         path);
    }
    return file;
}

CheckOptions CheckRun::optionsOfRun() const {
    CheckOptions options = settings_.check;
    // Files are mended one after the other, so that the other processors are idle.
    options.usesThreads =
        settings_.fix ? std::thread::hardware_concurrency() > 1 : fileCount_ < settings_.jobs;
    return options;
}

CheckRun::CheckedFile CheckRun::fix(const std::string& path) const {
    FixedFile fixed = fixFile(path, optionsOfRun(), *settings_.fix);
    return {.path = path,
            .report = std::move(fixed.report),
            .refusal = std::move(fixed.refusal),
            .lines = std::move(fixed.lines),
            .difference = std::move(fixed.difference),
            .picture = ""};
}

std::future<CheckRun::CheckedFile> CheckRun::start(const std::string& path) const {
    try {
        return std::async(std::launch::async, [this, &path] {
            const platform::CrashStack crashStack;
            return check(path);
        });
    } catch (const std::system_error&) {
        // The system has no thread to give.
        std::promise<CheckedFile> file;
        file.set_value(check(path));
        return file.get_future();
    }
}

void CheckRun::checkAll(const std::vector<std::string>& paths) {
    std::deque<std::future<CheckedFile>> open;
    for (const std::string& path : paths) {
        open.push_back(start(path));
        if (open.size() >= settings_.jobs) {
            await(open.front());
            open.pop_front();
        }
        // Nobody reads any more.
        if (output_.hasFailed() && !settings_.fix) {
            return;
        }
    }
    for (std::future<CheckedFile>& file : open) {
        await(file);
    }
}

void CheckRun::await(std::future<CheckedFile>& file) {
    while (file.wait_for(kLookForSignals) != std::future_status::ready) {
        // A file that is being written is written to its end.
        if (const int signal = platform::interruption(); signal != 0 && !settings_.fix) {
            leave(signal);
        }
    }
    add(file.get());
    if (const int signal = platform::interruption(); signal != 0) {
        leave(signal);
    }
}

void CheckRun::add(const CheckedFile& file) {
    ++filesDone_;
    for (const std::string& line : file.lines) {
        bar_->aside([&] { printErrorLine(line); });
    }
    // A file that was not written has been checked all the same, with each mend that was not made.
    const bool isChecked = file.refusal.empty() || !file.report.groups.empty();
    if (isChecked) {
        report(file);
    }
    if (!file.refusal.empty()) {
        refuse(file.path, file.refusal, file.refusal);
    }
}

void CheckRun::report(const CheckedFile& file) {
    hasPicture_ = !file.picture.empty();
    picture_.write(file.picture);
    const Findings& findings = file.report.findings;
    QMLog::appendLog("%@: %llu errors, %llu warnings, %llu notes", file.path,
                     findings.count(Severity::error), findings.count(Severity::warning),
                     findings.count(Severity::info));
    bar_->aside([&] {
        if (settings_.showsDifferences()) {
            output_.write(file.difference);
        } else {
            writer_->file(file.report);
        }
        output_.flush();
    });
    for (const Severity severity : {Severity::info, Severity::warning, Severity::error}) {
        if (settings_.failOn && severity >= *settings_.failOn && findings.count(severity) != 0) {
            status_ = std::max(status_, kSomethingToSay);
        }
    }
}

void CheckRun::refuse(const std::string& path, const std::string& reason,
                      const std::string& complaint) {
    QMLog::appendLog("%@", complaint);
    bar_->aside([&] { complainOfCheck(complaint); });
    writer_->refused(path, reason);
    status_ = kNotDone;
}

void CheckRun::finish() {
    bar_->aside([&] {
        if (!settings_.showsDifferences()) {
            writer_->end();
        }
    });
    finish(output_);
    if (hasPicture_) {
        finish(picture_);
    } else if (settings_.timelinePath && status_ != kNotDone) {
        bar_->aside([&] { complainOfCheck("There is no text to draw a timeline of."); });
        status_ = kNotDone;
    }
}

void CheckRun::finish(ReportOutput& output) {
    ErrorSlot error;
    bar_->aside([&] { error = output.finish(); });
    if (error) {
        bar_->aside([&] { complainOfCheck(error->localizedDescription()); });
        status_ = std::max(status_, output.isStandardOutput() ? kSomethingToSay : kNotDone);
    }
}

// The files at work need not be waited for: nothing is lost with them. A report that is not whole
// does not take the place of an older one.
void CheckRun::leave(int signal) {
    output_.abandon();
    picture_.abandon();
    bar_.reset();
    QMLog::finishWriting();
    std::_Exit(kSignalStatus + signal);
}

std::string CheckRun::progress() const {
    if (fileCount_ < 2) {
        return "Checking...";
    }
    const std::size_t done = filesDone_;
    return TerminalBar::cells(static_cast<std::int64_t>(done),
                              static_cast<std::int64_t>(fileCount_)) +
           formatString(" %zu of %zu files", done, fileCount_);
}

}  // namespace vornic
