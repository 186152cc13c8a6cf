#include "app/RepairCommand.h"

#include <cstdio>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "app/StandardStreams.h"
#include "app/TerminalProgress.h"
#include "foundation/FormatString.h"
#include "foundation/QMLog.h"
#include "foundation/Text.h"
#include "platform/Bundle.h"
#include "platform/FileSystem.h"
#include "platform/Termination.h"
#include "repair/Document.h"
#include "repair/RepairPipeline.h"
#include "ui/CrashReports.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr int kWrongUsage = 2;
constexpr int kSignalStatus = 128;

constexpr std::string_view kUsage =
    "Usage: vornic-repair [--quiet] [--] FILE...\n"
    "\n"
    "Finds what is wrong with Final Cut Pro XML files (XMEML and FCPXML) and mends what\n"
    "can be mended. A repaired file takes the place of the damaged one, which goes to the\n"
    "Trash (~/.Trash). A file that is sound or cannot be mended is left untouched.\n"
    "\n"
    "  --quiet    print no report\n"
    "  --help     print this help and end\n"
    "  --version  print the version and end\n"
    "\n"
    "Exit status: 0 when every file is sound or was repaired, 1 when one could not be\n"
    "repaired, 2 for wrong usage, 130 or 143 when interrupted.\n";

struct Options {
    bool quiet = false;
    bool help = false;
    bool version = false;
    std::string wrong;
    std::vector<std::string> files;
};

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
        } else if (options.wrong.empty()) {
            options.wrong = "unknown option " + argument;
        }
    }
    if (options.files.empty() && options.wrong.empty()) {
        options.wrong = "no file named";
    }
    return options;
}

int print(std::FILE* stream, std::string_view text, int status) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stream));
    return status;
}

void complain(std::string_view text) {
    print(stderr, formatString("vornic-repair: %@\n", text), 0);
}

// The report, the log and the preferences hold whole paths, wherever the program was started.
std::string absolutePath(const std::string& path) {
    if (path.empty() || path[0] == '/') {
        return path;
    }
    return appendingPathComponent(platform::currentDirectory(), path);
}

// What has to be said to somebody who sees no alerts, or nothing.
std::string complaintAbout(RepairOutcome outcome, const std::string& path, int xmlType,
                           const std::string& alert) {
    switch (outcome) {
        case RepairOutcome::stopped:
            return alert.empty() ? formatString(
                                       "The repair of the file %@ was stopped by an error "
                                       "that the log describes.",
                                       path)
                                 : alert;
        case RepairOutcome::repairedNotSwapped:
            return formatString(
                "The repaired file %@ could not take the place of the file %@; the log says why.",
                RepairPipeline::workingCopyPath(path, xmlType), path);
        default:
            return {};
    }
}

RepairOutcome runRepair(const std::string& path, bool quiet, std::string& complaint) {
    const std::shared_ptr<Document> document = Document::create();
    document->setHasGUI(false);
    document->setInterruptionFlag(platform::interruptionFlag());
    std::string alert;
    document->setAlertOutput([&](std::string_view message, std::string_view info) {
        alert = formatString("%@. %@", message, info);
    });
    TerminalProgress progress(document);
    if (quiet) {
        document->setReportOutput(nullptr);
    } else {
        document->setReportOutput([&](std::string_view line) { progress.printLine(line); });
    }
    const RepairOutcome outcome = document->startRepair(path);
    complaint = complaintAbout(outcome, path, document->xmlType(), alert);
    return outcome;
}

bool repairFile(const std::string& path, bool quiet) {
    std::string complaint;
    RepairOutcome outcome = RepairOutcome::stopped;
    try {
        outcome = runRepair(path, quiet, complaint);
    } catch (const std::bad_alloc&) {
        complaint = formatString("There is not enough memory to repair the file %@.", path);
        QMLog::appendLog("%@", complaint);
    }
    static_cast<void>(std::fflush(stdout));
    if (!complaint.empty()) {
        complain(complaint);
    }
    return outcome == RepairOutcome::sound || outcome == RepairOutcome::repairedAndSwapped;
}

}  // namespace

int RepairCommand::run(const std::vector<std::string>& arguments) {
    const Options options = parse(arguments);
    if (options.help) {
        return print(stdout, kUsage, 0);
    }
    if (options.version) {
        return print(stdout, "vornic-repair " VORNIC_VERSION "\n", 0);
    }
    if (!options.wrong.empty()) {
        complain(options.wrong);
        return print(stderr, kUsage, kWrongUsage);
    }
    secureStandardStreams();
    startCrashReports(kRepairProgram);
    platform::catchInterruptions();
    QMLog::createNewLog(platform::applicationName(), options.quiet);
    bool allGood = true;
    for (const std::string& file : options.files) {
        if (platform::interruption() != 0) {
            break;
        }
        allGood = repairFile(absolutePath(file), options.quiet) && allGood;
    }
    QMLog::finishWriting();
    if (platform::interruption() != 0) {
        return kSignalStatus + platform::interruption();
    }
    return allGood ? 0 : 1;
}

}  // namespace vornic
