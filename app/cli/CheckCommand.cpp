#include "app/cli/CheckCommand.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "app/cli/CheckRun.h"
#include "app/cli/CheckSettings.h"
#include "app/cli/CommandLine.h"
#include "app/cli/InterruptedRuns.h"
#include "app/cli/PathLookup.h"
#include "app/cli/ProjectFiles.h"
#include "app/cli/ReportOutput.h"
#include "app/cli/RuleSelection.h"
#include "app/cli/StandardStreams.h"
#include "foundation/log/QMLog.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Termination.h"
#include "report/RulePage.h"
#include "ui/support/CrashReports.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;
constexpr int kUnreadable = 3;

constexpr std::string_view kUsage =
    "Usage: vornic-check [options] [--] FILE|FOLDER...\n"
    "       vornic-check --where PATH [--] FILE\n"
    "\n"
    "Says what is wrong with Final Cut Pro XML files (XMEML and FCPXML), where, and what\n"
    "would be right. It writes none of them unless --fix is given. \"-\" is standard input.\n"
    "\n"
    "  -r               look into folders: .xml, .fcpxml, .fcpxmld\n"
    "  -j N             check N files at once (default: one for each processor)\n"
    "  --format FORMAT  text (default), json, sarif or gnu\n"
    "  --report FILE    write the report to the file instead of standard output\n"
    "  --quiet          write no report; the exit status tells\n"
    "  --only RULES     look at these rules and groups alone, parted by commas\n"
    "  --ignore RULES   leave these out\n"
    "  --least WEIGHT   show findings from error, warning (default) or info on\n"
    "  --fail-on WEIGHT exit with 1 from error (default), warning or info on, or never\n"
    "  --max N          show N findings of each rule (default 100); all are counted\n"
    "  --reads VERSION  what a receiver cannot read that knows FCPXML or XMEML up to this\n"
    "                   version is an error\n"
    "  --media          also look for the media files that the project names (group media)\n"
    "  --fix[=RULES]    make the mends that drop and guess nothing, and those of the named\n"
    "                   rules that ask; the original goes to the Trash, from where\n"
    "                   vornic-repair --undo brings it back; \"encoding\" writes UTF-8,\n"
    "                   \"extension\" a copy with the ending that the contents ask for\n"
    "  --set-version VERSION  with --fix: write this version where a file declares none\n"
    "  --dry-run        with --fix: show the difference and write nothing\n"
    "  -o FILE|FOLDER   with --fix: write a copy and leave the file as it is\n"
    "  --timeline FILE  draw the sequences of one file as an SVG, with what was found\n"
    "  --where PATH     show the line of an element or attribute, such as\n"
    "                   /fcpxml[1]/library[1]/event[1]/project[2]/@name, and end\n"
    "  --list-rules     list the rules and end\n"
    "  --explain RULE   tell what a rule means, or each of a group, and end\n"
    "  --help           print this help and end\n"
    "  --version        print the version and end\n"
    "\n"
    "Exit status: 0 when nothing was found that --fail-on counts, 1 when something was or\n"
    "the report got lost on its way, 2 for wrong usage, 3 when a file could not be read or\n"
    "mended or the report file not be written, 129, 130 or 143 when interrupted. With --fix\n"
    "it is about the file after the mends.\n";

constexpr std::array kOptions = {
    OptionSpecification{"-r"},
    OptionSpecification{"-j", true},
    OptionSpecification{"--format", true},
    OptionSpecification{"--report", true},
    OptionSpecification{"--quiet"},
    OptionSpecification{"--only", true},
    OptionSpecification{"--ignore", true},
    OptionSpecification{"--least", true},
    OptionSpecification{"--fail-on", true},
    OptionSpecification{"--max", true},
    OptionSpecification{"--reads", true},
    OptionSpecification{"--media"},
    OptionSpecification{.name = "--fix", .isValueOptional = true},
    OptionSpecification{"--set-version", true},
    OptionSpecification{"--dry-run"},
    OptionSpecification{"-o", true},
    OptionSpecification{"--timeline", true},
    OptionSpecification{"--where", true},
    OptionSpecification{"--list-rules"},
    OptionSpecification{"--explain", true},
    OptionSpecification{"--help"},
    OptionSpecification{"--version"},
};

int refuseUsage(const std::string& fault) {
    complainOfCheck(fault);
    static_cast<void>(std::fwrite(kUsage.data(), 1, kUsage.size(), stderr));
    return kWrongUsage;
}

// Writes what was asked for to standard output.
int print(std::string_view text, int status = 0) {
    writeToStandardOutput(text, true);
    if (const ErrorSlot error = standardOutputError()) {
        complainOfCheck(error->localizedDescription());
        return std::max(status, kFailure);
    }
    return status;
}

int explain(const std::string& name) {
    RuleSelection selection(RuleSelection::Scope::allPrograms);
    if (const std::string fault = selection.addOnly(name); !fault.empty()) {
        complainOfCheck(fault);
        return kWrongUsage;
    }
    std::string pages;
    for (const Rule* const rule : selection.only()) {
        pages += (pages.empty() ? "" : "\n\n") + pageOf(*rule);
    }
    return print(pages);
}

int showWhere(const std::string& path, const std::vector<std::string>& files) {
    if (files.size() != 1) {
        return refuseUsage("--where wants one file");
    }
    if (!isElementPath(path)) {
        return refuseUsage("--where wants a path such as /fcpxml[1]/event[1]/@name, not " + path);
    }
    const ProjectFiles found = findProjectFiles(files, false);
    if (!found.refused.empty()) {
        complainOfCheck(files[0] + ": It is a folder.");
        return kUnreadable;
    }
    ErrorSlot error;
    std::optional<std::string> bytes = readProjectFile(found.paths[0], error);
    if (!bytes) {
        complainOfCheck(error->localizedDescription());
        return kUnreadable;
    }
    const PathLookup lookup = lookUpPath(std::move(*bytes), found.paths[0], path);
    if (!lookup.isFound) {
        static_cast<void>(std::fwrite(lookup.text.data(), 1, lookup.text.size(), stderr));
        return lookup.isText ? kFailure : kUnreadable;
    }
    return print(lookup.text);
}

std::string faultOfTimeline(const CheckSettings& settings, const std::vector<std::string>& paths,
                            bool isInput) {
    if (!settings.timelinePath) {
        return "";
    }
    if (paths.size() != 1) {
        return "--timeline wants one file";
    }
    if (isInput) {
        return "the picture would take the place of a file that is checked";
    }
    const bool isReport = settings.reportPath && *settings.timelinePath != "-" &&
                          std::filesystem::path(*settings.reportPath).lexically_normal() ==
                              std::filesystem::path(*settings.timelinePath).lexically_normal();
    return isReport ? "the picture would take the place of the report" : "";
}

// What is wrong with the files and the place of the report taken together, or "".
std::string faultOf(const CheckSettings& settings, const std::vector<std::string>& arguments,
                    const std::vector<std::string>& paths) {
    if (arguments.empty()) {
        return "no file named";
    }
    if (std::count(paths.begin(), paths.end(), "-") > 1) {
        return "standard input can be checked only once";
    }
    if (settings.fix && std::count(paths.begin(), paths.end(), "-") != 0) {
        return "--fix wants files, and standard input is none";
    }
    if (settings.fix && settings.fix->output && paths.size() > 1 &&
        !platform::isDirectory(*settings.fix->output)) {
        return "-o wants a folder for more than one file";
    }
    const auto isInput = [&paths](const std::optional<std::string>& output) {
        return output && std::any_of(paths.begin(), paths.end(), [&](const std::string& path) {
                   std::error_code unknown;
                   return std::filesystem::equivalent(path, *output, unknown);
               });
    };
    if (isInput(settings.reportPath)) {
        return "the report would take the place of a file that is checked";
    }
    return faultOfTimeline(settings, paths, isInput(settings.timelinePath));
}

int checkFiles(const CheckSettings& settings, const ProjectFiles& files) {
    ReportOutput output;
    ErrorSlot error;
    ReportOutput picture("timeline");
    if (!output.open(settings.reportPath, error) || !picture.open(settings.timelinePath, error)) {
        complainOfCheck(error->localizedDescription());
        return kUnreadable;
    }
    return CheckRun(settings, output, picture).run(files);
}

int check(const CommandLine& line) {
    CheckSettings settings;
    std::string fault = readCheckSettings(line, settings);
    if (!fault.empty()) {
        return refuseUsage(fault);
    }
    const ProjectFiles files = findProjectFiles(line.files(), line.has("-r"));
    fault = faultOf(settings, line.files(), files.paths);
    if (!fault.empty()) {
        return refuseUsage(fault);
    }
    startCrashReports(kCheckProgram, kCheckProgram);
    platform::catchInterruptions();
    // A name of its own, so that no run moves on the logs of the programs that change files.
    QMLog::sharedController().setAppName(std::string(kCheckProgram));
    QMLog::createNewLog(kCheckProgram, true);
    if (settings.fix) {
        for (const std::string& sentence : settleInterruptedRuns()) {
            complainOfCheck(sentence);
        }
    }
    const int status = checkFiles(settings, files);
    QMLog::finishWriting();
    return status;
}

int runWithin(const std::vector<std::string>& arguments) {
    const CommandLine line = CommandLine::parse(arguments, kOptions);
    if (!line.fault().empty()) {
        return refuseUsage(line.fault());
    }
    if (line.has("--help")) {
        return print(kUsage);
    }
    if (line.has("--version")) {
        return print("vornic-check " VORNIC_VERSION "\n");
    }
    if (line.has("--list-rules")) {
        return print(listOfRules());
    }
    if (const std::optional<std::string> rule = line.value("--explain")) {
        return explain(*rule);
    }
    if (const std::optional<std::string> path = line.value("--where")) {
        return showWhere(*path, line.files());
    }
    return check(line);
}

}  // namespace

int CheckCommand::run(const std::vector<std::string>& arguments) {
    secureStandardStreams();
    try {
        return runWithin(arguments);
    } catch (const std::bad_alloc&) {
        complainOfMemory(kCheckProgram);
        return kUnreadable;
    }
}

}  // namespace vornic
