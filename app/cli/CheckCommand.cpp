#include "app/cli/CheckCommand.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "app/cli/CheckRun.h"
#include "app/cli/CheckSettings.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ExitStatus.h"
#include "app/cli/InterruptedRuns.h"
#include "app/cli/PathLookup.h"
#include "app/cli/Program.h"
#include "app/cli/ReportOutput.h"
#include "app/cli/RuleSelection.h"
#include "app/cli/StandardStreams.h"
#include "job/ProjectFiles.h"
#include "platform/files/FileSystem.h"
#include "report/RulePage.h"

namespace vornic {

namespace {

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
    OptionForm{"-r"},
    OptionForm{"-j", true},
    OptionForm{"--format", true},
    OptionForm{"--report", true},
    OptionForm{"--quiet"},
    OptionForm{"--only", true},
    OptionForm{"--ignore", true},
    OptionForm{"--least", true},
    OptionForm{"--fail-on", true},
    OptionForm{"--max", true},
    OptionForm{"--reads", true},
    OptionForm{"--media"},
    OptionForm{.name = "--fix", .isValueOptional = true},
    OptionForm{"--set-version", true},
    OptionForm{"--dry-run"},
    OptionForm{"-o", true},
    OptionForm{"--timeline", true},
    OptionForm{"--where", true},
    OptionForm{"--list-rules"},
    OptionForm{"--explain", true},
    OptionForm{"--help"},
    OptionForm{"--version"},
};

constexpr Program kCheck{
    .name = kCheckProgram, .usage = kUsage, .options = kOptions, .log = kCheckProgram};

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
    return kCheck.print(pages);
}

int showWhere(const std::string& path, const std::vector<std::string>& files) {
    if (files.size() != 1) {
        return kCheck.refuseUsage("--where wants one file");
    }
    if (!isElementPath(path)) {
        return kCheck.refuseUsage("--where wants a path such as /fcpxml[1]/event[1]/@name, not " +
                                  path);
    }
    const ProjectFiles found = findProjectFiles(files, false);
    if (!found.refused.empty()) {
        complainOfCheck(files[0] + ": It is a folder.");
        return kNotDone;
    }
    ErrorSlot error;
    std::optional<std::string> bytes = readProjectFile(found.paths[0], error);
    if (!bytes) {
        complainOfCheck(error->localizedDescription());
        return kNotDone;
    }
    const PathLookup lookup = lookUpPath(std::move(*bytes), found.paths[0], path);
    if (!lookup.isFound) {
        static_cast<void>(std::fwrite(lookup.text.data(), 1, lookup.text.size(), stderr));
        return lookup.isText ? kSomethingToSay : kNotDone;
    }
    return kCheck.print(lookup.text);
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
        return kNotDone;
    }
    return CheckRun(settings, output, picture).run(files);
}

int check(const CommandLine& line) {
    CheckSettings settings;
    std::string fault = readCheckSettings(line, settings);
    if (!fault.empty()) {
        return kCheck.refuseUsage(fault);
    }
    const ProjectFiles files = findProjectFiles(line.files(), line.has("-r"));
    fault = faultOf(settings, line.files(), files.paths);
    if (!fault.empty()) {
        return kCheck.refuseUsage(fault);
    }
    return kCheck.runOnFiles(settings.fix.has_value(), [&] { return checkFiles(settings, files); });
}

int act(const CommandLine& line) {
    if (line.has("--list-rules")) {
        return kCheck.print(listOfRules());
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
    return kCheck.run(arguments, act);
}

}  // namespace vornic
