#include "app/cli/MediaCommand.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "app/cli/CommandLine.h"
#include "app/cli/Complaint.h"
#include "app/cli/ExitStatus.h"
#include "app/cli/MediaRun.h"
#include "app/cli/MediaSettings.h"
#include "app/cli/Program.h"
#include "app/cli/ReportOutput.h"
#include "job/ProjectFiles.h"
#include "platform/files/FileSystem.h"

namespace vornic {

namespace {

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
    OptionForm{"-r"},
    OptionForm{"--format", true},
    OptionForm{"--report", true},
    OptionForm{"--quiet"},
    OptionForm{"--unused"},
    OptionForm{"--map", true},
    OptionForm{"--search", true},
    OptionForm{"--pick", true},
    OptionForm{"--form", true},
    OptionForm{"--dry-run"},
    OptionForm{"-o", true},
    OptionForm{"--in-place"},
    OptionForm{"--help"},
    OptionForm{"--version"},
};

constexpr Program kMedia{
    .name = kMediaProgram, .usage = kUsage, .options = kOptions, .log = kMediaProgram};

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
        return kNotDone;
    }
    return MediaRun(settings, output).run(files);
}

int act(const CommandLine& line) {
    MediaSettings settings;
    std::string fault = readMediaSettings(line, settings);
    if (!fault.empty()) {
        return kMedia.refuseUsage(fault);
    }
    const ProjectFiles files = findProjectFiles(settings.files, line.has("-r"));
    fault = faultOf(settings, files.paths);
    if (!fault.empty()) {
        return kMedia.refuseUsage(fault);
    }
    return kMedia.runOnFiles(settings.isInPlace, [&] { return runOn(settings, files); });
}

}  // namespace

int MediaCommand::run(const std::vector<std::string>& arguments) {
    return kMedia.run(arguments, act);
}

}  // namespace vornic
