#include "app/cli/UndoCommand.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <optional>
#include <set>
#include <string_view>

#include <poll.h>
#include <unistd.h>

#include "app/cli/ExitStatus.h"
#include "app/cli/StandardStreams.h"
#include "base/FormatString.h"
#include "base/TerminalText.h"
#include "foundation/log/QMLog.h"
#include "foundation/places/QMLocalPaths.h"
#include "job/Journal.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Termination.h"
#include "platform/rights/HeldPath.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

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
            return "undone   ";
        case JournalEntry::Action::mend:
            return "mended   ";
        case JournalEntry::Action::relink:
            return "relinked ";
        case JournalEntry::Action::convert:
            return "converted";
        default:
            return "repaired ";
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

/// A line from the terminal. @return "" at the end of the input and for an interruption.
std::string readAnswer() {
    std::array<pollfd, 2> waited{
        {{STDIN_FILENO, POLLIN, 0}, {platform::interruptionDescriptor(), POLLIN, 0}}};
    while (platform::interruption() == 0 && poll(waited.data(), waited.size(), -1) < 0 &&
           errno == EINTR) {
    }
    std::array<char, 256> answer{};
    const ssize_t length =
        platform::interruption() == 0 ? read(STDIN_FILENO, answer.data(), answer.size()) : -1;
    return length > 0 ? std::string(answer.data(), static_cast<std::size_t>(length)) : "";
}

bool isGone(const std::string& file) {
    return !platform::nodeExists(file);
}

/// Asks on the terminal. Without one nobody can agree.
bool askAbout(const JournalEntry& entry) {
    if (!isAtTerminal()) {
        return false;
    }
    printError(formatString(isGone(entry.file)
                                ? "The file %@ is no longer there. Bring back the original? [y/N] "
                                : "The file %@ has changed since. Bring back the original all the "
                                  "same? What is there now goes to the Trash. [y/N] ",
                            textForStream(entry.file, STDERR_FILENO)));
    const std::string answer = readAnswer();
    if (!answer.ends_with('\n')) {
        printError("\n");
    }
    return answer.starts_with('y') || answer.starts_with('Y');
}

/// Why a file was left alone; an interruption says enough.
std::string refusalOf(const std::string& file) {
    if (platform::interruption() != 0) {
        return "";
    }
    return formatString(isGone(file)
                            ? "The file %@ is no longer there; --force brings the original back."
                            : "The file %@ has changed since and was left as it is; --force "
                              "brings the original back all the same.",
                        file);
}

/// Why a file was not put back.
std::string failureOf(const UndoResult& result) {
    switch (result.end) {
        case UndoResult::End::undone:
            return result.error ? result.error->localizedDescription() : "";
        case UndoResult::End::nothingToUndo:
            return result.file.empty()
                       ? "There is nothing to undo."
                       : formatString("There is nothing to undo for the file %@.", result.file);
        case UndoResult::End::emptied:
            return formatString("The original of the file %@ is no longer in the Trash.",
                                result.file);
        case UndoResult::End::changed:
            return refusalOf(result.file);
        case UndoResult::End::failed:
            return result.error ? result.error->localizedDescription()
                                : formatString("The file %@ could not be put back.", result.file);
    }
    return "";
}

}  // namespace

std::vector<std::string> complaintsAbout(const UndoResult& result) {
    const bool isUndone = result.end == UndoResult::End::undone;
    std::vector<std::string> complaints{failureOf(result)};
    if (isUndone && result.hadChanged && !result.result.empty()) {
        complaints.push_back(formatString("The file %@ had changed since.", result.file));
    }
    if (!result.losses.empty()) {
        complaints.push_back(
            formatString("The file %@ is not all that it was. %@", result.file, result.losses));
    }
    if (result.isBeside) {
        complaints.push_back(formatString(
            "What was there could not be moved to the Trash and is %@", result.result));
    } else if (!isUndone && !result.result.empty()) {
        complaints.push_back(
            formatString("What another program has replaced is %@", result.result));
    }
    std::erase(complaints, std::string());
    return complaints;
}

namespace {

std::vector<std::string> linesAbout(const UndoResult& result) {
    std::vector<std::string> lines{formatString("The original is back: %@", result.file)};
    if (!result.result.empty() && !result.isBeside) {
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
            return kNotDone;
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
        for (const std::string& complaint : complaintsAbout(result)) {
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
    const auto changes = undo.changes(error, pathsOf(options.files));
    if (!changes) {
        complain(error->localizedDescription());
        return kNotDone;
    }
    for (const UndoableChange& change : *changes) {
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
        return kNotDone;
    }
    Undo undo(*journal, QMLocalPaths::trashDirectory().value_or(""), "vornic-repair",
              VORNIC_VERSION);
    return options.list ? list(options, undo) : UndoRun(options, undo).run();
}

}  // namespace vornic
