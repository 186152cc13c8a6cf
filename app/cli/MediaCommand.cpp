#include "app/cli/MediaCommand.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>

#include "app/cli/CommandLine.h"
#include "app/cli/Complaint.h"
#include "app/cli/InterruptedRuns.h"
#include "app/cli/MediaRun.h"
#include "app/cli/MediaSettings.h"
#include "app/cli/ProjectFiles.h"
#include "app/cli/ReportOutput.h"
#include "app/cli/StandardStreams.h"
#include "foundation/log/QMLog.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Termination.h"
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
    "Usage: vornic-media list|missing|relink [options] [--] FILE|FOLDER...\n"
    "\n"
    "Tells which media files Final Cut Pro XML files (XMEML and FCPXML) name, which of them\n"
    "are not there, and leads the files to where they went. \"-\" is standard input.\n"
    "\n"
    "  list             every media file once: its path, how that is written, the clips that\n"
    "                   use it, what they show of it, how long it should be\n"
    "  missing          those that are not where the project says, or under another name;\n"
    "                   nothing is mounted, and a volume that does not answer for two\n"
    "                   seconds is not waited for\n"
    "  relink           write other paths into the files, and nothing else; the result is a\n"
    "                   new file, \"NAME (relinked).EXT\"\n"
    "\n"
    "  -r               look into folders: .xml, .fcpxml, .fcpxmld\n"
    "  --format FORMAT  text (default), json or csv\n"
    "  --report FILE    write the report to the file instead of standard output\n"
    "  --quiet          write no report; the exit status tells\n"
    "  --unused         with list: media alone that no sequence uses\n"
    "\n"
    "With relink:\n"
    "  --map OLD=NEW    what lies in the folder OLD lies in NEW; may be given again, and the\n"
    "                   longest OLD counts. Both may be paths of macOS, Linux or Windows,\n"
    "                   shares (\\\\server\\share) or file URLs\n"
    "  --search FOLDER  look through the folder for what is not there, by name, then\n"
    "                   without regard to case; may be given again\n"
    "  --pick WHICH     of several files of one name take the newest, or the one with the\n"
    "                   longest-tail: most folders in common with the path; without it they\n"
    "                   are listed and nothing is guessed\n"
    "  --form FORM      write changed paths as localhost (file://localhost/...),\n"
    "                   triple-slash (file:///...) or windows (file://localhost/C%3a/...);\n"
    "                   alone, all paths\n"
    "  --dry-run        tell what would be done, and write nothing\n"
    "  -o FILE|FOLDER   where the result goes\n"
    "  --in-place       the result takes the place of the file; the original goes to the\n"
    "                   Trash, from where vornic-repair --undo brings it back\n"
    "\n"
    "  --help           print this help and end\n"
    "  --version        print the version and end\n"
    "\n"
    "Exit status: 0 when all went well and nothing is missing or left, 1 when something is\n"
    "or the report got lost on its way, 2 for wrong usage, 3 when a file could not be read\n"
    "to its end or relinked, or the report file not be written, 129, 130 or 143 when\n"
    "interrupted.\n";

constexpr std::array kOptions = {
    OptionSpecification{"-r"},
    OptionSpecification{"--format", true},
    OptionSpecification{"--report", true},
    OptionSpecification{"--quiet"},
    OptionSpecification{"--unused"},
    OptionSpecification{"--map", true},
    OptionSpecification{"--search", true},
    OptionSpecification{"--pick", true},
    OptionSpecification{"--form", true},
    OptionSpecification{"--dry-run"},
    OptionSpecification{"-o", true},
    OptionSpecification{"--in-place"},
    OptionSpecification{"--help"},
    OptionSpecification{"--version"},
};

int refuseUsage(const std::string& fault) {
    complain(kMediaProgram, fault);
    static_cast<void>(std::fwrite(kUsage.data(), 1, kUsage.size(), stderr));
    return kWrongUsage;
}

int print(std::string_view text) {
    writeToStandardOutput(text, true);
    if (const ErrorSlot error = standardOutputError()) {
        complain(kMediaProgram, error->localizedDescription());
        return kFailure;
    }
    return 0;
}

// What is wrong with the files and the place of the report taken together, or "".
std::string faultOf(const MediaSettings& settings, const std::vector<std::string>& paths) {
    if (std::count(paths.begin(), paths.end(), "-") > 1) {
        return "standard input can be read only once";
    }
    const bool isRelinking = settings.action == MediaAction::relink;
    if (isRelinking && std::count(paths.begin(), paths.end(), "-") != 0) {
        return "relink wants files, and standard input is none";
    }
    if (settings.output && paths.size() > 1 && !platform::isDirectory(*settings.output)) {
        return "-o wants a folder for more than one file";
    }
    const bool isInput =
        settings.reportPath &&
        std::any_of(paths.begin(), paths.end(), [&](const std::string& path) {
            std::error_code unknown;
            return std::filesystem::equivalent(path, *settings.reportPath, unknown);
        });
    return isInput ? "the report would take the place of a file that is read" : "";
}

int runOn(const MediaSettings& settings, const ProjectFiles& files) {
    ReportOutput output;
    ErrorSlot error;
    if (!output.open(settings.reportPath, error)) {
        complain(kMediaProgram, error->localizedDescription());
        return kUnreadable;
    }
    return MediaRun(settings, output).run(files);
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
        return print("vornic-media " VORNIC_VERSION "\n");
    }
    MediaSettings settings;
    std::string fault = readMediaSettings(line, settings);
    if (!fault.empty()) {
        return refuseUsage(fault);
    }
    const ProjectFiles files = findProjectFiles(settings.files, line.has("-r"));
    fault = faultOf(settings, files.paths);
    if (!fault.empty()) {
        return refuseUsage(fault);
    }
    startCrashReports(kMediaProgram, kMediaProgram);
    platform::catchInterruptions();
    // A name of its own, so that no run moves on the logs of the programs that change files.
    QMLog::sharedController().setAppName(std::string(kMediaProgram));
    QMLog::createNewLog(kMediaProgram, true);
    if (settings.isInPlace) {
        for (const std::string& sentence : settleInterruptedRuns()) {
            complain(kMediaProgram, sentence);
        }
    }
    const int status = runOn(settings, files);
    QMLog::finishWriting();
    return status;
}

}  // namespace

int MediaCommand::run(const std::vector<std::string>& arguments) {
    secureStandardStreams();
    try {
        return runWithin(arguments);
    } catch (const std::bad_alloc&) {
        complainOfMemory(kMediaProgram);
        return kUnreadable;
    }
}

}  // namespace vornic
