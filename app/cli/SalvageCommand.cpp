#include "app/cli/SalvageCommand.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <string_view>

#include "app/cli/CommandLine.h"
#include "app/cli/Complaint.h"
#include "app/cli/ExitStatus.h"
#include "app/cli/InterruptedRuns.h"
#include "app/cli/Program.h"
#include "app/cli/ReportOutput.h"
#include "app/cli/StandardStreams.h"
#include "app/cli/TerminalBar.h"
#include "base/FormatString.h"
#include "foundation/log/QMLog.h"
#include "job/ProjectFiles.h"
#include "job/SalvageFile.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Termination.h"
#include "report/JSONReportWriter.h"
#include "report/TextReportWriter.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr std::string_view kName = "vornic-repair";
constexpr std::string_view kSalvage = "--salvage";
constexpr std::size_t kMostOfARule = 100;

constexpr std::string_view kUsage =
    "Usage: vornic-repair --salvage [-o FILE|FOLDER] [--format text|json] [--quiet] [--] FILE...\n"
    "\n"
    "Makes a copy that loads, NAME-salvaged.EXT, of a Final Cut Pro XML file that is no XML\n"
    "any more: with tags lost, crossed or misspelt, or cut off. It keeps every character of\n"
    "content and says each guess. The file itself is never touched.\n"
    "\n"
    "  -o FILE|FOLDER   write the copy there\n"
    "  --format FORMAT  text (default) or json\n"
    "  --quiet          write no report\n"
    "  --help           print this help and end\n"
    "\n"
    "Exit status: 0 when the files are sound, and nothing was written, 1 when copies were\n"
    "written, or the report got lost on its way, 2 for wrong usage, 3 when a file could not\n"
    "be read or no copy of it be written, 129, 130 or 143 when interrupted.\n";

constexpr std::array kOptions = {
    OptionForm{kSalvage},  OptionForm{"-o", true}, OptionForm{"--format", true},
    OptionForm{"--quiet"}, OptionForm{"--help"},   OptionForm{"--version"},
};

constexpr Program kProgram{.name = kName, .usage = kUsage, .options = kOptions, .log = ""};

std::string faultOf(const CommandLine& line) {
    const std::vector<std::string>& files = line.files();
    const std::optional<std::string> format = line.value("--format");
    if (format && *format != "text" && *format != "json") {
        return "--format wants text or json, not " + *format;
    }
    if (files.empty()) {
        return "no file named";
    }
    if (std::count(files.begin(), files.end(), "-") != 0) {
        return "--salvage wants files, and standard input is none";
    }
    const std::optional<std::string> output = line.value("-o");
    if (output && output->empty()) {
        return "-o wants a file or a folder";
    }
    return output && files.size() > 1 && !platform::isDirectory(*output)
               ? "-o wants a folder for more than one file"
               : "";
}

class SilentReportWriter final : public ReportWriter {
  public:
    void file(const Report& /*report*/) override {}
    void end() override {}
};

// Salvages one file after the other.
class SalvageRun {
  public:
    explicit SalvageRun(const CommandLine& line)
        : output_(line.value("-o")),
          isQuiet_(line.has("--quiet")),
          bar_([this] { return progress(); }) {
        ErrorSlot error;
        static_cast<void>(report_.open(std::nullopt, error));
        const auto sink = [this](std::string_view text) { report_.write(text); };
        const bool isColoured = report_.isTerminal() && std::getenv("NO_COLOR") == nullptr;
        if (isQuiet_) {
            writer_ = std::make_unique<SilentReportWriter>();
        } else if (line.value("--format") == "json") {
            writer_ =
                std::make_unique<JSONReportWriter>(sink, kName, VORNIC_VERSION, Severity::info);
        } else {
            writer_ = std::make_unique<TextReportWriter>(
                sink, TextReportWriter::Style{isColoured, Severity::info});
        }
    }

    int run(const ProjectFiles& files) {
        count_ = files.paths.size();
        for (const ProjectFiles::Refusal& refusal : files.refused) {
            refuse(refusal.path, formatString("%@: %@", refusal.path, refusal.reason));
        }
        for (const std::string& path : files.paths) {
            if (platform::interruption() != 0) {
                break;
            }
            salvage(path);
            ++done_;
        }
        finish();
        return status_;
    }

  private:
    void salvage(const std::string& path) {
        SalvagedFile salvaged;
        try {
            salvaged = salvageFile(path, output_, kMostOfARule);
        } catch (const std::bad_alloc&) {
            return refuse(path,
                          formatString("There is not enough memory to salvage the file %@.", path));
        }
        bar_.aside([&] {
            if (!salvaged.error || !salvaged.copies.empty()) {
                writer_->file(salvaged.report);
            }
            report_.flush();
        });
        for (const ResultFile& copy : salvaged.copies) {
            say(formatString("The salvaged copy is %@", copy.path));
            if (!copy.lostMetadata.empty()) {
                say(formatString("Something of the file %@ was not kept. %@", path,
                                 copy.lostMetadata));
            }
            status_ = std::max(status_, kSomethingToSay);
        }
        if (salvaged.isSound) {
            say(formatString("The file %@ is sound; there is nothing to salvage.", path));
        }
        if (salvaged.error) {
            refuse(path, salvaged.error->localizedDescription());
        }
    }

    // For somebody who sees no report as well as beside one.
    void say(const std::string& sentence) {
        QMLog::appendLog("%@", sentence);
        if (!isQuiet_) {
            bar_.aside([&] { printErrorLine(sentence); });
        }
    }

    void refuse(const std::string& path, const std::string& reason) {
        QMLog::appendLog("%@", reason);
        bar_.aside([&] {
            complain(kName, reason);
            writer_->refused(path, reason);
        });
        status_ = kNotDone;
    }

    void finish() {
        bar_.aside([&] {
            writer_->end();
            if (const ErrorSlot error = report_.finish()) {
                complain(kName, error->localizedDescription());
                status_ = std::max(status_, kSomethingToSay);
            }
        });
    }

    [[nodiscard]] std::string progress() const {
        return count_ < 2 ? std::string("Salvaging...")
                          : TerminalBar::cells(static_cast<std::int64_t>(done_.load()),
                                               static_cast<std::int64_t>(count_.load())) +
                                formatString(" %zu of %zu files", done_.load(), count_.load());
    }

    std::optional<std::string> output_;
    bool isQuiet_;
    ReportOutput report_;
    std::unique_ptr<ReportWriter> writer_;
    int status_ = 0;
    std::atomic<std::size_t> done_{0};
    std::atomic<std::size_t> count_{1};
    TerminalBar bar_;
};

int salvage(const CommandLine& line) {
    if (const std::string fault = faultOf(line); !fault.empty()) {
        return kProgram.refuseUsage(fault);
    }
    const ProjectFiles files = findProjectFiles(line.files(), false);
    return kProgram.runOnFiles(
        true, [&] { return statusUnlessInterrupted(SalvageRun(line).run(files)); });
}

}  // namespace

bool SalvageCommand::isMeantBy(const std::vector<std::string>& arguments) {
    const auto files = std::find(arguments.begin(), arguments.end(), "--");
    return std::find(arguments.begin(), files, kSalvage) != files;
}

int SalvageCommand::run(const std::vector<std::string>& arguments) {
    return kProgram.run(arguments, salvage);
}

}  // namespace vornic
