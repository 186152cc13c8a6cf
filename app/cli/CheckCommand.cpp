#include "app/cli/CheckCommand.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <future>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include <unistd.h>

#include "app/StandardStreams.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ProjectFiles.h"
#include "app/cli/RuleSelection.h"
#include "check/Check.h"
#include "formats/fcpxml/Version.h"
#include "foundation/FormatString.h"
#include "foundation/TerminalText.h"
#include "platform/FileSystem.h"
#include "platform/Termination.h"
#include "report/GNUReportWriter.h"
#include "report/JSONReportWriter.h"
#include "report/RuleTable.h"
#include "report/SARIFReportWriter.h"
#include "report/TextReportWriter.h"
#include "ui/CrashReports.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr std::string_view kProgram = "vornic-check";
constexpr int kFound = 1;
constexpr int kWrongUsage = 2;
constexpr int kUnreadable = 3;
constexpr int kSignalStatus = 128;

constexpr std::string_view kUsage =
    "Usage: vornic-check [options] [--] FILE|FOLDER...\n"
    "\n"
    "Says what is wrong with Final Cut Pro XML files (XMEML and FCPXML), where, and what\n"
    "would be right. It writes none of them. \"-\" is standard input.\n"
    "\n"
    "  -r               look into folders: .xml, .fcpxml, .fcpxmld\n"
    "  -j N             check N files at once (default: one for each processor)\n"
    "  --format FORMAT  text (default), json, sarif or gnu\n"
    "  --report FILE    write the report to the file instead of standard output\n"
    "  --only RULES     look at these rules and groups alone, parted by commas\n"
    "  --ignore RULES   leave these out\n"
    "  --least WEIGHT   show findings from error, warning (default) or info on\n"
    "  --fail-on WEIGHT exit with 1 from error (default), warning or info on, or never\n"
    "  --reads VERSION  what a receiver cannot read that knows FCPXML or XMEML up to this\n"
    "                   version is an error\n"
    "  --max N          show N findings of each rule (default 100); all are counted\n"
    "  --list-rules     list the rules and end\n"
    "  --explain RULE   tell what a rule means and end\n"
    "  --help           print this help and end\n"
    "  --version        print the version and end\n"
    "\n"
    "Exit status: 0 when nothing was found that --fail-on counts, 1 when something was,\n"
    "2 for wrong usage, 3 when a file could not be read, 129, 130 or 143 when interrupted.\n";

constexpr std::array kOptions = {
    OptionSpecification{"-r"},
    OptionSpecification{"-j", true},
    OptionSpecification{"--format", true},
    OptionSpecification{"--report", true},
    OptionSpecification{"--only", true},
    OptionSpecification{"--ignore", true},
    OptionSpecification{"--least", true},
    OptionSpecification{"--fail-on", true},
    OptionSpecification{"--max", true},
    OptionSpecification{"--reads", true},
    OptionSpecification{"--list-rules"},
    OptionSpecification{"--explain", true},
    OptionSpecification{"--help"},
    OptionSpecification{"--version"},
};

enum class Format { text, json, sarif, gnu };

struct Settings {
    Format format = Format::text;
    std::optional<std::string> reportPath;
    CheckOptions check;
    Severity least = Severity::warning;
    // Nothing for never.
    std::optional<Severity> failOn = Severity::error;
    std::size_t jobs = 1;
};

void complain(std::string_view text) {
    const std::string line =
        formatString("%@: %@\n", kProgram,
                     isatty(STDERR_FILENO) != 0 ? escapedForTerminal(text) : std::string(text));
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

int printAndEnd(std::string_view text) {
    const bool isWritten =
        std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    return isWritten ? 0 : kUnreadable;
}

std::optional<std::size_t> positive(const std::string& text) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && number != 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<Severity> severityNamed(std::string_view name) {
    for (const Severity severity : {Severity::error, Severity::warning, Severity::info}) {
        if (nameOf(severity) == name) {
            return severity;
        }
    }
    return std::nullopt;
}

// Reads the options' values. @return what is wrong with them, or "".
class SettingsReader {
  public:
    SettingsReader(const CommandLine& line, Settings& settings)
        : line_(line), settings_(settings) {}

    std::string read() {
        settings_.jobs = std::max(1U, std::thread::hardware_concurrency());
        settings_.reportPath = line_.value("--report");
        readFormat();
        readNumber("-j", settings_.jobs);
        readNumber("--max", settings_.check.mostOfARule);
        readLeast();
        readFailOn();
        readReceiver();
        readRules();
        return fault_;
    }

  private:
    void readFormat() {
        const std::string format = line_.value("--format").value_or("text");
        if (format == "json") {
            settings_.format = Format::json;
        } else if (format == "sarif") {
            settings_.format = Format::sarif;
        } else if (format == "gnu") {
            settings_.format = Format::gnu;
        } else if (format != "text") {
            fault_ = "there is no format " + format;
        }
    }

    void readNumber(std::string_view option, std::size_t& number) {
        const std::optional<std::string> value = line_.value(option);
        if (!value) {
            return;
        }
        const std::optional<std::size_t> read = positive(*value);
        if (!read) {
            fault_ = formatString("%@ wants a number above 0, not %@", option, *value);
        }
        number = read.value_or(number);
    }

    void readLeast() {
        const std::string name = line_.value("--least").value_or("warning");
        const std::optional<Severity> least = severityNamed(name);
        if (!least) {
            fault_ = "--least wants error, warning or info, not " + name;
        }
        settings_.least = least.value_or(settings_.least);
    }

    void readFailOn() {
        const std::string name = line_.value("--fail-on").value_or("error");
        settings_.failOn = severityNamed(name);
        if (!settings_.failOn && name != "never") {
            fault_ = "--fail-on wants error, warning, info or never, not " + name;
        }
    }

    void readReceiver() {
        settings_.check.reads = line_.value("--reads");
        const std::string version = settings_.check.reads.value_or("5");
        const bool isXMEML = version.size() == 1 && version >= "1" && version <= "5";
        if (!isXMEML && !fcpxml::Version::parse(version)) {
            fault_ = "--reads wants a version of FCPXML (1.0 to 1.14) or of XMEML (1 to 5), not " +
                     version;
        }
    }

    void readRules() {
        RuleSelection selection;
        for (const std::string& list : line_.values("--only")) {
            fault_ = fault_.empty() ? selection.addOnly(list) : fault_;
        }
        for (const std::string& list : line_.values("--ignore")) {
            fault_ = fault_.empty() ? selection.addIgnored(list) : fault_;
        }
        settings_.check.ignored = selection.ignored();
    }

    const CommandLine& line_;
    Settings& settings_;
    std::string fault_;
};

std::optional<std::string> readStandardInput() {
    std::string bytes;
    std::array<char, 65536> block{};
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), stdin)) {
        bytes.append(block.data(), count);
    }
    return std::ferror(stdin) == 0 ? std::optional(std::move(bytes)) : std::nullopt;
}

struct CheckedFile {
    std::string path;
    Report report;
    // Why there is no report.
    std::string refusal;
};

CheckedFile checkPath(const std::string& path, const CheckOptions& options) {
    CheckedFile file;
    file.path = path;
    try {
        ErrorSlot error;
        std::optional<std::string> bytes =
            path == "-" ? readStandardInput() : platform::readFile(path, error);
        if (!bytes) {
            file.refusal = error ? error->localizedDescription()
                                 : std::string("Standard input cannot be read.");
            return file;
        }
        file.report = checkFile(std::move(*bytes), options);
        file.report.path = path;
    } catch (const std::bad_alloc&) {
        file.refusal = formatString("There is not enough memory to check the file %@.", path);
    }
    return file;
}

std::unique_ptr<ReportWriter> writerFor(const Settings& settings, ReportSink sink,
                                        bool isTerminal) {
    switch (settings.format) {
        case Format::json:
            return std::make_unique<JSONReportWriter>(std::move(sink), kProgram, VORNIC_VERSION,
                                                      settings.least);
        case Format::sarif:
            return std::make_unique<SARIFReportWriter>(std::move(sink), kProgram, VORNIC_VERSION,
                                                       settings.least);
        case Format::gnu:
            return std::make_unique<GNUReportWriter>(std::move(sink), settings.least);
        default:
            const bool isColoured = isTerminal && std::getenv("NO_COLOR") == nullptr;
            return std::make_unique<TextReportWriter>(
                std::move(sink), TextReportWriter::Style{isColoured, settings.least});
    }
}

// Checks files, several at once, and reports in their order.
class Run {
  public:
    Run(const Settings& settings, std::FILE* output) : settings_(settings), output_(output) {
        const auto sink = [this](std::string_view text) {
            isWritten_ =
                std::fwrite(text.data(), 1, text.size(), output_) == text.size() && isWritten_;
        };
        writer_ = writerFor(settings, sink, isatty(fileno(output)) != 0);
    }

    int run(const std::vector<std::string>& paths) {
        std::deque<std::future<CheckedFile>> open;
        for (const std::string& path : paths) {
            if (platform::interruption() != 0) {
                break;
            }
            open.push_back(std::async(std::launch::async,
                                      [this, &path] { return checkPath(path, settings_.check); }));
            if (open.size() >= settings_.jobs) {
                finish(open.front().get());
                open.pop_front();
            }
        }
        for (std::future<CheckedFile>& file : open) {
            finish(file.get());
        }
        writer_->end();
        if (!isWritten_ || std::fflush(output_) != 0) {
            complain("The report could not be written.");
            status_ = kUnreadable;
        }
        return status_;
    }

    /// @param complaint what standard error is told.
    void refuse(const std::string& path, const std::string& reason, const std::string& complaint) {
        complain(complaint);
        writer_->refused(path, reason);
        status_ = kUnreadable;
    }

  private:
    void finish(const CheckedFile& file) {
        if (!file.refusal.empty()) {
            return refuse(file.path, file.refusal, file.refusal);
        }
        writer_->file(file.report);
        for (const Severity severity : {Severity::info, Severity::warning, Severity::error}) {
            if (settings_.failOn && severity >= *settings_.failOn &&
                file.report.findings.count(severity) != 0) {
                status_ = std::max(status_, kFound);
            }
        }
    }

    const Settings& settings_;
    std::FILE* output_;
    std::unique_ptr<ReportWriter> writer_;
    bool isWritten_ = true;
    int status_ = 0;
};

int checkFiles(const Settings& settings, const ProjectFiles& files) {
    std::FILE* output = stdout;
    if (settings.reportPath) {
        output = std::fopen(settings.reportPath->c_str(), "we");
        if (output == nullptr) {
            complain(formatString("The report cannot be written to %@.", *settings.reportPath));
            return kUnreadable;
        }
    }
    Run run(settings, output);
    for (const ProjectFiles::Refusal& refusal : files.refused) {
        run.refuse(refusal.path, refusal.reason,
                   formatString("%@: %@", refusal.path, refusal.reason));
    }
    const int status = run.run(files.paths);
    if (output != stdout && std::fclose(output) != 0) {
        complain(formatString("The report cannot be written to %@.", *settings.reportPath));
        return kUnreadable;
    }
    return status;
}

std::string listOfRules() {
    std::string list;
    for (const Rule& rule : kRuleTable) {
        if (rule.group != RuleGroup::repair) {
            list += formatString("%@ (%@)\n", rule.id, nameOf(rule.severity));
        }
    }
    return list;
}

int explain(const std::string& id) {
    const std::optional<RuleId> rule = findRule(id);
    if (!rule) {
        complain("there is no rule " + id);
        return kWrongUsage;
    }
    const Rule& entry = ruleOf(*rule);
    return printAndEnd(
        formatString("%@ (%@, group %@)\n\n%@\n\nWhat it means: %@\n\nWhat editing programs do: "
                     "%@\n\nHow to mend "
                     "it: %@\n\nSource: %@\n",
                     entry.id, nameOf(entry.severity), nameOf(entry.group), entry.message,
                     entry.meaning, entry.effect, entry.remedy, entry.source));
}

}  // namespace

int CheckCommand::run(const std::vector<std::string>& arguments) {
    const CommandLine line = CommandLine::parse(arguments, kOptions);
    if (line.fault().empty() && line.has("--help")) {
        return printAndEnd(kUsage);
    }
    if (line.fault().empty() && line.has("--version")) {
        return printAndEnd("vornic-check " VORNIC_VERSION "\n");
    }
    if (line.fault().empty() && line.has("--list-rules")) {
        return printAndEnd(listOfRules());
    }
    if (line.fault().empty() && line.has("--explain")) {
        return explain(*line.value("--explain"));
    }
    Settings settings;
    std::string fault = line.fault();
    if (fault.empty()) {
        fault = SettingsReader(line, settings).read();
    }
    if (fault.empty() && line.files().empty()) {
        fault = "no file named";
    }
    if (!fault.empty()) {
        complain(fault);
        static_cast<void>(std::fwrite(kUsage.data(), 1, kUsage.size(), stderr));
        return kWrongUsage;
    }
    secureStandardStreams();
    startCrashReports(kProgram);
    platform::catchInterruptions();
    const int status = checkFiles(settings, findProjectFiles(line.files(), line.has("-r")));
    return platform::interruption() != 0 ? kSignalStatus + platform::interruption() : status;
}

}  // namespace vornic
