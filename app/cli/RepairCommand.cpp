#include "app/cli/RepairCommand.h"

#include <algorithm>
#include <cstdio>
#include <list>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "app/cli/ExitStatus.h"
#include "app/cli/InterruptedRuns.h"
#include "app/cli/SalvageCommand.h"
#include "app/cli/StandardStreams.h"
#include "app/cli/TerminalProgress.h"
#include "app/cli/UndoCommand.h"
#include "base/FormatString.h"
#include "base/PathText.h"
#include "base/TerminalText.h"
#include "foundation/log/QMLog.h"
#include "foundation/log/TaskLog.h"
#include "job/NamedSources.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Termination.h"
#include "platform/settings/Bundle.h"
#include "repair/document/Document.h"
#include "repair/pipeline/RepairResult.h"
#include "ui/support/CrashReports.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr std::string_view kName = "vornic-repair";

constexpr std::string_view kUsage =
    "Usage: vornic-repair [--quiet] [--] FILE...\n"
    "       vornic-repair --undo [--list] [--force] [--quiet] [--] [FILE...]\n"
    "       vornic-repair --salvage [-o FILE|FOLDER] [--format text|json] [--quiet] [--]\n"
    "                     FILE...\n"
    "\n"
    "Finds what is wrong with Final Cut Pro XML files (XMEML and FCPXML) and mends what\n"
    "can be mended. A repaired file takes the place of the damaged one, which goes to the\n"
    "Trash (~/.Trash). A file that is sound or cannot be mended is left untouched.\n"
    "\n"
    "  --quiet    print no report\n"
    "  --undo     bring the original of each file back, or of the file repaired last; what\n"
    "             is there now goes to the Trash\n"
    "  --list     with --undo: show what can be undone, and change nothing\n"
    "  --force    with --undo: do not ask about files that have changed since\n"
    "  --salvage  make a copy that loads, NAME-salvaged.EXT, of a file with lost or crossed\n"
    "             tags, or cut off, and say each guess; the file is not touched\n"
    "  -o         with --salvage: write the copy there\n"
    "  --format   with --salvage: text (default) or json\n"
    "  --help     print this help and end\n"
    "  --version  print the version and end\n"
    "\n"
    "Exit status: 0 when every file is sound or was repaired, 1 when one could not be\n"
    "repaired or the report not be written, 2 for wrong usage, 129, 130 or 143 when\n"
    "interrupted. With --undo: 0 when all was undone or listed, 1 when something was undone\n"
    "and something has to be said, 3 when nothing was undone. With --salvage: 0 when the\n"
    "files are sound, 1 when copies were written, 3 when none could be.\n";

struct Options {
    bool quiet = false;
    bool help = false;
    bool version = false;
    bool undo = false;
    bool list = false;
    bool force = false;
    std::string wrong;
    std::vector<std::string> files;
};

std::string whatIsMissing(const Options& options) {
    if (!options.undo && (options.list || options.force)) {
        return formatString("%@ goes with --undo", options.list ? "--list" : "--force");
    }
    return options.files.empty() && !options.undo ? "no file named" : "";
}

Options parse(const std::vector<std::string>& arguments) {
    Options options;
    bool onlyFiles = false;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (onlyFiles || argument.empty() || argument[0] != '-' || argument == "-") {
            options.files.push_back(argument);
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (argument == "--quiet") {
            options.quiet = true;
        } else if (argument == "--help") {
            options.help = true;
        } else if (argument == "--version") {
            options.version = true;
        } else if (argument == "--undo") {
            options.undo = true;
        } else if (argument == "--list") {
            options.list = true;
        } else if (argument == "--force") {
            options.force = true;
        } else if (options.wrong.empty()) {
            options.wrong = "unknown option " + argument;
        }
    }
    if (options.wrong.empty()) {
        options.wrong = whatIsMissing(options);
    }
    return options;
}

void printError(std::string_view text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

void complain(std::string_view text) {
    printError(formatString("%@: %@\n", kName, textForStream(text, STDERR_FILENO)));
}

// False, with a complaint, when some of what was meant for standard output is lost.
bool isOutputWritten() {
    const ErrorSlot error = standardOutputError();
    if (error) {
        complain(error->localizedDescription());
    }
    return !error;
}

int print(std::string_view text) {
    writeToStandardOutput(text, true);
    return isOutputWritten() ? 0 : kSomethingToSay;
}

// The report, the log and the preferences hold whole paths, wherever the program was started.
std::string absolutePath(const std::string& path) {
    if (path.empty() || path[0] == '/') {
        return path;
    }
    return joinPath(platform::currentDirectory(), path);
}

// Why a repaired file has not taken the place of the damaged one, for somebody who may have asked
// for no report.
std::string complaintAbout(const SwapResult& swap, const std::string& path) {
    switch (swap.end) {
        case SwapEnd::sourceChanged:
            return formatString(
                "The file %@ was changed by another program during the repair and left as it is "
                "now.",
                path);
        case SwapEnd::copyChanged:
        case SwapEnd::unsaved:
            return formatString(
                "There is no repaired file that could take the place of the file %@; the log says "
                "why.",
                path);
        default:
            return formatString(
                "The repaired file %@ could not take the place of the file %@; the log says why.",
                swap.repaired, path);
    }
}

// What has to be said to somebody who sees no alerts, or nothing.
std::string complaintAbout(const RepairResult& result, const std::string& path,
                           const std::string& alert) {
    switch (result.outcome) {
        case RepairOutcome::stopped:
            return alert.empty() ? formatString(
                                       "The repair of the file %@ was stopped by an error "
                                       "that the log describes.",
                                       path)
                                 : alert;
        case RepairOutcome::repairedNotSwapped:
            return complaintAbout(result.swap, path);
        default:
            return {};
    }
}

// Where the original of a repaired file is, for whoever reads the report.
void tellOriginal(const RepairResult& result) {
    if (result.outcome == RepairOutcome::repairedAndSwapped && !result.swap.original.empty()) {
        writeToStandardOutput({}, true);
        printError(formatString(
            "The original is %@%@\n", textForStream(result.swap.original, STDERR_FILENO),
            result.isUndoable ? "; vornic-repair --undo brings it back." : "."));
    }
}

// The report of a run that nobody watches, for View Task Log.
std::optional<TaskLog> makeTaskLog() {
    const bool isWatched = isatty(STDIN_FILENO) != 0 || isatty(STDOUT_FILENO) != 0;
    return isWatched || !QMLog::currentLog() ? std::nullopt
                                             : std::optional<TaskLog>(platform::applicationName());
}

RepairResult runRepair(const std::string& path, bool quiet, std::optional<TaskLog>& taskLog,
                       std::string& complaint) {
    const std::shared_ptr<Document> document = Document::create();
    document->setHasGUI(false);
    document->setInterruptionFlag(platform::interruptionFlag());
    std::string alert;
    document->setAlertOutput([&](std::string_view message, std::string_view info) {
        alert = formatString("%@. %@", message, info);
    });
    TerminalProgress progress(document);
    if (quiet && !taskLog) {
        document->setReportOutput(nullptr);
    } else {
        document->setReportOutput([&](std::string_view line) {
            if (!quiet) {
                progress.printLine(line);
            }
            if (taskLog) {
                taskLog->append(line);
            }
        });
    }
    RepairResult result = document->startRepair(path);
    complaint = complaintAbout(result, path, alert);
    return result;
}

bool repairFile(const std::string& path, bool quiet, std::optional<TaskLog>& taskLog) {
    std::string complaint;
    RepairResult result;
    try {
        result = runRepair(path, quiet, taskLog, complaint);
    } catch (const std::bad_alloc&) {
        complaint = formatString("There is not enough memory to repair the file %@.", path);
    }
    writeToStandardOutput({}, true);
    if (!complaint.empty()) {
        complain(complaint);
        if (taskLog) {
            taskLog->append(complaint);
        }
    }
    if (!quiet) {
        tellOriginal(result);
    }
    return result.outcome == RepairOutcome::sound ||
           result.outcome == RepairOutcome::repairedAndSwapped;
}

int repairFiles(const Options& options) {
    // None of the files may be taken for the old working copy of another one.
    std::list<NamedSource> named;
    for (const std::string& file : options.files) {
        named.emplace_back(absolutePath(file));
    }
    bool allGood = true;
    std::optional<TaskLog> taskLog = makeTaskLog();
    for (const std::string& file : options.files) {
        if (platform::interruption() != 0) {
            break;
        }
        allGood = repairFile(absolutePath(file), options.quiet, taskLog) && allGood;
    }
    return allGood ? 0 : kSomethingToSay;
}

int undo(const Options& options) {
    UndoOptions asked{.list = options.list, .force = options.force, .quiet = options.quiet};
    for (const std::string& file : options.files) {
        asked.files.push_back(absolutePath(file));
    }
    return UndoCommand::run(asked);
}

int runOnFiles(const Options& options) {
    startCrashReports(kRepairProgram);
    platform::catchInterruptions();
    QMLog::createNewLog(platform::applicationName(), options.quiet);
    for (const std::string& sentence : settleInterruptedRuns()) {
        complain(sentence);
    }
    const int status = options.undo ? undo(options) : repairFiles(options);
    QMLog::finishWriting();
    return status;
}

int runWithin(const std::vector<std::string>& arguments) {
    const Options options = parse(arguments);
    if (options.help) {
        return print(kUsage);
    }
    if (options.version) {
        return print("vornic-repair " VORNIC_VERSION "\n");
    }
    if (!options.wrong.empty()) {
        complain(options.wrong);
        printError(kUsage);
        return kWrongUsage;
    }
    secureStandardStreams();
    const int status = runOnFiles(options);
    // A report that did not reach its reader is no good end, whatever became of the files.
    const bool isReported = isOutputWritten();
    return statusUnlessInterrupted(isReported ? status : std::max(status, kSomethingToSay));
}

}  // namespace

int RepairCommand::run(const std::vector<std::string>& arguments) {
    if (SalvageCommand::isMeantBy(arguments)) {
        return SalvageCommand::run(arguments);
    }
    try {
        return runWithin(arguments);
    } catch (const std::bad_alloc&) {
        complainOfMemory(kName);
    }
    try {
        QMLog::finishWriting();
    } catch (const std::bad_alloc&) {
        // There is not even a log.
    }
    return kSomethingToSay;
}

}  // namespace vornic
