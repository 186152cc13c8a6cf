#include "app/cli/ConversionCommand.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <thread>

#include "app/cli/CommandLine.h"
#include "app/cli/Complaint.h"
#include "app/cli/ExitStatus.h"
#include "app/cli/InterruptedRuns.h"
#include "app/cli/Program.h"
#include "app/cli/ReportOutput.h"
#include "app/cli/StandardStreams.h"
#include "base/FormatString.h"
#include "base/TerminalText.h"
#include "foundation/log/QMLog.h"
#include "job/ConvertFile.h"
#include "job/JournaledSwap.h"
#include "job/ProjectFiles.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Termination.h"
#include "report/JSONReportWriter.h"
#include "report/TextReportWriter.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr std::string_view kProgram = "vornic-convert";
constexpr std::size_t kMostShown = 100;

constexpr std::string_view kUsage =
    "Usage: vornic-convert --to VERSION [options] [--] FILE...\n"
    "       vornic-convert --lowest [--assume VERSION] [--format FORMAT] [--] FILE...\n"
    "\n"
    "Writes project files in another version of their format, FCPXML 1.6 to 1.14 or XMEML 1\n"
    "to 5, and tells everything that the version has no place for. All other bytes stay as\n"
    "they are. The result is NAME (VERSION).EXT beside the file.\n"
    "\n"
    "  --to VERSION     the version that the result is in\n"
    "  --lowest         tell the lowest version that loses nothing, and write nothing\n"
    "  --assume VERSION read the files as this version, whatever they declare\n"
    "  --strict         write nothing when something would be lost\n"
    "  --strip          leave out what is newer than the version of XMEML\n"
    "  --dry-run        tell what would be lost and write nothing\n"
    "  -o FILE|FOLDER   where the result goes\n"
    "  --in-place       put the result in the file's place; the original goes to the Trash,\n"
    "                   from where vornic-repair --undo brings it back\n"
    "  --bundle         write a bundle (.fcpxmld), from FCPXML 1.10 on\n"
    "  --no-bundle      write a file, also of a bundle\n"
    "  --format FORMAT  text (default) or json\n"
    "  --max N          show N findings of each rule (default 100; with json all)\n"
    "  --help           print this help and end\n"
    "  --version        print the version and end\n"
    "\n"
    "Exit status: 0 when nothing is lost, 1 when a result has lost something, 2 for wrong\n"
    "usage, 3 when something was not written, 129, 130 or 143 when interrupted.\n";

constexpr std::array kOptions = {
    OptionForm{"--to", true},  OptionForm{"--lowest"},       OptionForm{"--assume", true},
    OptionForm{"--strict"},    OptionForm{"--strip"},        OptionForm{"--dry-run"},
    OptionForm{"-o", true},    OptionForm{"--in-place"},     OptionForm{"--bundle"},
    OptionForm{"--no-bundle"}, OptionForm{"--format", true}, OptionForm{"--max", true},
    OptionForm{"--help"},      OptionForm{"--version"},
};

constexpr Program kConvert{.name = kProgram, .usage = kUsage, .options = kOptions, .log = kProgram};

// The log has it, too.
void complainToLog(std::string_view text) {
    QMLog::appendLog("%@", text);
    complain(kProgram, text);
}

void note(std::string_view text) {
    QMLog::appendLog("%@", text);
    printErrorLine(text);
}

struct Settings {
    ConvertFileRequest request;
    bool isJSON = false;
};

class SettingsReader {
  public:
    SettingsReader(const CommandLine& line, Settings& settings)
        : line_(line), settings_(settings) {}

    /// @return what is wrong with the options, or "".
    std::string read() {
        readFormat();
        readVersions();
        readResult();
        readMost();
        return fault_;
    }

  private:
    void readFormat() {
        const std::string format = line_.value("--format").value_or("text");
        settings_.isJSON = format == "json";
        if (format != "text" && format != "json") {
            refuse(formatString("--format wants text or json, not %@", format));
        }
    }

    void readVersions() {
        ConversionRequest& conversion = settings_.request.conversion;
        conversion.assumed = line_.value("--assume");
        conversion.to = line_.value("--to").value_or("");
        conversion.strips = line_.has("--strip");
        // Files are converted one after the other.
        conversion.usesThreads = std::thread::hardware_concurrency() > 1;
        if (line_.has("--lowest") == line_.has("--to")) {
            return refuse(line_.has("--to") ? "--to and --lowest exclude each other"
                                            : "no version is named; --to VERSION does");
        }
        if (line_.has("--to") && !isFCPXMLTarget(conversion.to) && !isXMEMLTarget(conversion.to)) {
            refuse(formatString("--to wants FCPXML 1.6 to 1.14 or XMEML 1 to 5, not %@",
                                conversion.to));
        }
        if (conversion.assumed && !isProjectVersion(*conversion.assumed)) {
            refuse(formatString("--assume wants FCPXML 1.0 to 1.14 or XMEML 1 to 5, not %@",
                                *conversion.assumed));
        }
    }

    void readResult() {
        ConvertFileRequest& request = settings_.request;
        request.isDryRun = line_.has("--dry-run");
        request.isStrict = line_.has("--strict");
        request.isInPlace = line_.has("--in-place");
        request.output = line_.value("-o");
        request.form = line_.has("--bundle")      ? BundleForm::bundle
                       : line_.has("--no-bundle") ? BundleForm::file
                                                  : BundleForm::asTheFile;
        if (line_.has("--bundle") && line_.has("--no-bundle")) {
            refuse("--bundle and --no-bundle exclude each other");
        }
        if (request.isInPlace && (request.output || request.form != BundleForm::asTheFile)) {
            refuse("--in-place excludes -o, --bundle and --no-bundle");
        }
        if (request.output && request.output->empty()) {
            refuse("-o wants a file or a folder");
        }
        if (line_.has("--lowest") &&
            (request.isInPlace || request.output || request.form != BundleForm::asTheFile)) {
            refuse("--lowest writes nothing");
        }
    }

    void readMost() {
        std::size_t& most = settings_.request.conversion.mostOfARule;
        most = settings_.isJSON ? std::numeric_limits<std::size_t>::max() : kMostShown;
        if (const std::optional<std::string> text = line_.value("--max")) {
            const char* const end = text->data() + text->size();
            const auto read = std::from_chars(text->data(), end, most);
            if (read.ec != std::errc() || read.ptr != end || most == 0) {
                refuse(formatString("--max wants a number from 1 on, not %@", *text));
            }
        }
    }

    void refuse(std::string fault) { fault_ = fault_.empty() ? std::move(fault) : fault_; }

    const CommandLine& line_;
    Settings& settings_;
    std::string fault_;
};

// Converts the files in their order and reports on each.
class Run {
  public:
    explicit Run(const Settings& settings) : settings_(settings) {
        const auto sink = [this](std::string_view text) { output_.write(text); };
        if (settings.isJSON) {
            writer_ = std::make_unique<JSONReportWriter>(sink, kProgram, VORNIC_VERSION);
        } else {
            const bool isColoured = output_.isTerminal() && std::getenv("NO_COLOR") == nullptr;
            writer_ = std::make_unique<TextReportWriter>(
                sink, TextReportWriter::Style{isColoured, Severity::info});
        }
    }

    int run(const ProjectFiles& files) {
        for (const ProjectFiles::Refusal& refusal : files.refused) {
            refuse(refusal.path, formatString("%@: %@", refusal.path, refusal.reason));
        }
        for (const std::string& path : files.paths) {
            if (platform::interruption() != 0 || output_.hasFailed()) {
                break;
            }
            convert(path);
        }
        return finish();
    }

  private:
    void convert(const std::string& path) {
        try {
            JournaledSwap journaled(std::string(kProgram), VORNIC_VERSION,
                                    JournalEntry::Action::convert);
            // The run that has the file may take long; only an interruption ends the waiting.
            const Waiting waiting{.tell =
                                      [](const std::string& file) {
                                          note(
                                              formatString("Waiting for another program that uses "
                                                           "the file %@...",
                                                           file));
                                      },
                                  .stop = untilInterrupted()};
            const ConvertedFile file = convertFile(path, settings_.request, waiting, journaled);
            tell(file, journaled.isWrittenDown());
        } catch (const std::bad_alloc&) {
            refuse(path, formatString("There is not enough memory to convert the file %@.", path));
        }
    }

    void tell(const ConvertedFile& file, bool canBeUndone) {
        const std::string& path = file.report.path;
        const auto& conversion = file.report.conversion;
        if (conversion && conversion->lowest && !settings_.isJSON) {
            const std::string line = conversion->lowest->empty()
                                         ? formatString("%@: every version loses something\n", path)
                                         : formatString("%@: %@\n", path, *conversion->lowest);
            output_.write(output_.isTerminal()
                              ? escapedForTerminal(line.substr(0, line.size() - 1)) + "\n"
                              : line);
            isLowest_ = true;
        } else if (!file.report.groups.empty()) {
            // What could not be read has no report.
            writer_->file(file.report);
        }
        output_.flush();
        for (const std::string& sentence : file.notes) {
            note(sentence);
        }
        if (!file.refusal.empty()) {
            return refuse(path, file.refusal);
        }
        if (conversion && !conversion->result.empty()) {
            note(formatString("The converted file is %@", conversion->result));
        }
        if (!file.original.empty()) {
            note(formatString("The original is %@%@", file.original,
                              canBeUndone ? "; vornic-repair --undo brings it back." : "."));
        }
        status_ = std::max(status_, file.losses != 0 ? kSomethingToSay : 0);
    }

    void refuse(const std::string& path, const std::string& reason) {
        complainToLog(reason);
        writer_->refused(path, reason);
        status_ = kNotDone;
    }

    int finish() {
        if (!isLowest_) {
            writer_->end();
        }
        if (const ErrorSlot error = output_.finish()) {
            complainToLog(error->localizedDescription());
            status_ = std::max(status_, kSomethingToSay);
        }
        return statusUnlessInterrupted(status_);
    }

    const Settings& settings_;
    ReportOutput output_;
    std::unique_ptr<ReportWriter> writer_;
    int status_ = 0;
    bool isLowest_ = false;
};

std::string faultOf(const Settings& settings, const std::vector<std::string>& arguments,
                    const std::vector<std::string>& paths) {
    if (arguments.empty()) {
        return "no file named";
    }
    if (std::count(arguments.begin(), arguments.end(), "-") != 0) {
        return "standard input cannot be converted; name a file";
    }
    const auto& output = settings.request.output;
    return output && paths.size() > 1 && !platform::isDirectory(*output)
               ? "-o wants a folder for more than one file"
               : "";
}

int convert(const CommandLine& line) {
    Settings settings;
    std::string fault = SettingsReader(line, settings).read();
    if (!fault.empty()) {
        return kConvert.refuseUsage(fault);
    }
    const ProjectFiles files = findProjectFiles(line.files(), false);
    fault = faultOf(settings, line.files(), files.paths);
    if (!fault.empty()) {
        return kConvert.refuseUsage(fault);
    }
    return kConvert.runOnFiles(settings.request.isInPlace,
                               [&] { return Run(settings).run(files); });
}

}  // namespace

int ConversionCommand::run(const std::vector<std::string>& arguments) {
    return kConvert.run(arguments, convert);
}

}  // namespace vornic
