#include "app/cli/TerminalProgress.h"

#include <sys/stat.h>
#include <unistd.h>

#include "app/cli/StandardStreams.h"
#include "base/TerminalText.h"

namespace vornic {

namespace {

bool isRegularFile(int fileDescriptor) {
    struct stat status {};
    return fstat(fileDescriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

TerminalProgress::TerminalProgress(const std::shared_ptr<const Document>& document)
    : stdoutIsFile_(isRegularFile(STDOUT_FILENO)),
      stdoutIsTerminal_(isatty(STDOUT_FILENO) != 0),
      bar_([document] { return bar(document->progressValue(), document->progressMax()); }) {}

void TerminalProgress::printLine(std::string_view line) {
    bar_.aside([this, line] {
        if (stdoutIsTerminal_) {
            writeToStandardOutput(escapedForTerminal(line), false);
        } else {
            writeToStandardOutput(line, false);
        }
        writeToStandardOutput("\n", !stdoutIsFile_);
    });
}

std::string TerminalProgress::bar(std::int64_t value, std::int64_t maximum) {
    return maximum <= 0 ? "Repairing..." : TerminalBar::cells(value, maximum);
}

}  // namespace vornic
