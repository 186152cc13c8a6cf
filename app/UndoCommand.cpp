#include "app/UndoCommand.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <optional>
#include <set>
#include <string_view>

#include <unistd.h>

#include "app/StandardStreams.h"
#include "foundation/FormatString.h"
#include "foundation/QMLocalPaths.h"
#include "foundation/QMLog.h"
#include "foundation/TerminalText.h"
#include "job/Journal.h"
#include "job/JournalRecovery.h"
#include "job/Undo.h"
#include "platform/HeldPath.h"
#include "platform/Termination.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr int kSomethingToSay = 1;
constexpr int kNothingUndone = 3;

void printError(const std::string& text) {
    writeToStandardOutput({}, true);
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

/// To standard error and to the log.
void complain(const std::string& sentence) {
    printError(formatString("vornic-repair: %@\n", textForStream(sentence, STDERR_FILENO)));
    QMLog::appendLog("%@", sentence);
}

/// All of one width, for a table.
std::string_view participleOf(JournalEntry::Action action) {
    switch (action) {
        case JournalEntry::Action::undo:
            return "undone  ";
        case JournalEntry::Action::mend:
            return "mended  ";
        default:
            return "repaired";
    }
}

std::string localDate(std::int64_t date) {
    const auto time = static_cast<std::time_t>(date);
    struct tm parts {};
    std::array<char, 32> text{};
    localtime_r(&time, &parts);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

bool isAtTerminal() {
    return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1;
}

/// Asks on the terminal. Without one nobody can agree.
bool askAbout(const JournalEntry& entry) {
    if (!isAtTerminal()) {
        return false;
    }
    printError(
        formatString("The file %@ has changed since. Bring back the original all the "
                     "same? What is there now goes to the Trash. [y/N] ",
                     textForStream(entry.file, STDERR_FILENO)));
    std::array<char, 16> answer{};
    return std::fgets(answer.data(), answer.size(), stdin) != nullptr &&
           (answer[0] == 'y' || answer[0] == 'Y');
}

std::string complaintAbout(const UndoResult& result) {
    switch (result.end) {
        case UndoResult::End::undone:
            return result.hadChanged && !result.result.empty()
                       ? formatString("The file %@ had changed since.", result.file)
                       : "";
        case UndoResult::End::nothingToUndo:
            return result.file.empty()
                       ? "There is nothing to undo."
                       : formatString("There is nothing to undo for the file %@.", result.file);
        case UndoResult::End::emptied:
            return formatString("The original of the file %@ is no longer in the Trash.",
                                result.file);
        case UndoResult::End::changed:
            return formatString(
                "The file %@ has changed since and was left as it is; --force "
                "brings the original back all the same.",
                result.file);
        case UndoResult::End::failed:
            return result.error ? result.error->localizedDescription()
                                : formatString("The file %@ could not be put back.", result.file);
    }
    return "";
}

std::vector<std::string> linesAbout(const UndoResult& result) {
    std::vector<std::string> lines{formatString("The original is back: %@", result.file)};
    if (!result.result.empty()) {
        lines.push_back(formatString("What was there is %@", result.result));
    }
    return lines;
}

void printLine(const std::string& line) {
    writeToStandardOutput(textForStream(line, STDOUT_FILENO) + "\n", false);
}

/// Takes back one change after the other and counts.
class UndoRun {
  public:
    UndoRun(const UndoOptions& options, Undo& undo) : options_(options), undo_(undo) {}

    int run() {
        const Undo::Question question = [this](const JournalEntry& entry) {
            return options_.force || askAbout(entry);
        };
        if (options_.files.empty()) {
            tell(undo_.undoNewest(question));
        }
        for (const std::string& file : options_.files) {
            if (platform::interruption() != 0) {
                break;
            }
            tell(undo_.undo(file, question));
        }
        if (undone_ == 0) {
            return kNothingUndone;
        }
        return hasComplaint_ ? kSomethingToSay : 0;
    }

  private:
    void tell(const UndoResult& result) {
        if (result.end == UndoResult::End::undone) {
            ++undone_;
            for (const std::string& line : linesAbout(result)) {
                QMLog::appendLog("%@", line);
                if (!options_.quiet) {
                    printLine(line);
                }
            }
        }
        const std::string complaint = complaintAbout(result);
        if (!complaint.empty()) {
            hasComplaint_ = true;
            complain(complaint);
        }
    }

    const UndoOptions& options_;
    Undo& undo_;
    int undone_ = 0;
    bool hasComplaint_ = false;
};

/// The paths as the journal may know them.
std::set<std::string> pathsOf(const std::vector<std::string>& files) {
    std::set<std::string> paths(files.begin(), files.end());
    for (const std::string& file : files) {
        if (const std::optional<platform::HeldPath> held = platform::holdPath(file)) {
            paths.insert(held->path());
        }
    }
    return paths;
}

int list(const UndoOptions& options, Undo& undo) {
    ErrorSlot error;
    const auto changes = undo.changes(error);
    if (!changes) {
        complain(error->localizedDescription());
        return kNothingUndone;
    }
    const std::set<std::string> asked = pathsOf(options.files);
    for (const UndoableChange& change : *changes) {
        if (!asked.empty() && !asked.contains(change.entry.file)) {
            continue;
        }
        printLine(formatString("%@  %@  %@", localDate(change.entry.date),
                               participleOf(change.entry.action), change.entry.file));
        printLine(change.original.empty() ? std::string("    no longer in the Trash")
                                          : formatString("    original: %@", change.original));
    }
    return 0;
}

}  // namespace

int UndoCommand::run(const UndoOptions& options) {
    const std::optional<Journal> journal = Journal::ofUser();
    if (!journal) {
        complain("There is nothing to undo, since there is no home folder.");
        return kNothingUndone;
    }
    Undo undo(*journal, QMLocalPaths::trashDirectory().value_or(""), "vornic-repair",
              VORNIC_VERSION);
    return options.list ? list(options, undo) : UndoRun(options, undo).run();
}

void UndoCommand::settleInterruptedRuns() {
    const std::optional<Journal> journal = Journal::ofUser();
    if (!journal) {
        return;
    }
    for (const RecoveredRun& run :
         recoverInterrupted(*journal, QMLocalPaths::trashDirectory().value_or(""))) {
        switch (run.end) {
            case RecoveredRun::End::takenBack:
                complain(
                    formatString("An earlier run with the file %@ was interrupted and has "
                                 "been taken back.",
                                 run.file));
                break;
            case RecoveredRun::End::finished:
                complain(
                    formatString("An earlier run with the file %@ was interrupted and has "
                                 "been finished. The original is %@.",
                                 run.file, run.original));
                break;
            case RecoveredRun::End::lost:
                complain(
                    formatString("An earlier run with the file %@ was interrupted. Its "
                                 "original is neither in its place nor in the Trash.",
                                 run.file));
                break;
        }
    }
}

}  // namespace vornic
